#ifndef FILTER_INSPECT_SRC_FORMS_ADDRESSES_H_
#define FILTER_INSPECT_SRC_FORMS_ADDRESSES_H_

// Addresses as bytes and as text: MAC, IPv4 and IPv6.

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "form_rows.h"

namespace FiltersInspect {

// The bytes of an address in the order of transmission; bytes after the address are 0.
using AddressBytes = std::array<unsigned char, 16>;
constexpr std::size_t sizeOf(ValueForm address) { return bitsOf(address) / 8; }

// For a mask of `size` bytes: the number of 1s before the first 0, and the number of bits up to the
// last 1. If the two numbers are equal, the mask is a prefix of that length.
unsigned leadingOnes(const AddressBytes& bytes, std::size_t size);
unsigned bitsToLastOne(const AddressBytes& bytes, std::size_t size);
AddressBytes prefixMask(unsigned length);

// An address as text in its usual form: "00:1b:21:0a:ff:42", "192.0.2.1", "2001:db8::1".
std::optional<AddressBytes> parseAddress(ValueForm form, std::string_view text);
void appendAddress(ValueForm form, const AddressBytes& bytes, std::string* out);

}  // namespace FiltersInspect

#endif  // FILTER_INSPECT_SRC_FORMS_ADDRESSES_H_
