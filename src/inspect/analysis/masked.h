#ifndef FILTER_INSPECT_SRC_ANALYSIS_MASKED_H_
#define FILTER_INSPECT_SRC_ANALYSIS_MASKED_H_

// Addresses and ports under masks: which packets they take, and what the sender probably meant.

#include <cstddef>
#include <string>

#include "forms/value_text.h"

namespace FiltersInspect {

struct Masked {
  ValueForm form;
  std::size_t size;  // in bytes
  AddressBytes value, mask;

  unsigned bits() const { return static_cast<unsigned>(8 * size); }
  // The value with all bits outside of the mask cleared.
  AddressBytes taken() const;
  bool isOne() const { return leadingOnes(mask, size) == bits(); }
  // True if everything that is taken begins with the first `length` bits of this byte.
  bool isOf(unsigned char first, unsigned length) const;
  // True if the mask has a 0 before a 1 and that is unusual. It is usual for the group bit and the
  // local bit of MAC addresses (IEEE 802), and for interface identifiers of IPv6 behind any prefix.
  bool hasHole() const;
  // The length of the shortest usual prefix under which all of the value counts.
  unsigned lengthForAll() const;
  // The masks that were probably meant by one with a hole: "255.255.255.240 or 255.255.255.248".
  std::string meantMasks() const;
};

bool hasMask(const FormRow& row);
// The value and the mask of a match with such a row.
Masked maskedIn(const MatchPB& match, const FormRow& row);
// The text of the match with this value and mask, without its name.
std::string maskedText(const FormRow& row, const AddressBytes& value, const AddressBytes& mask);

}  // namespace FiltersInspect

#endif  // FILTER_INSPECT_SRC_ANALYSIS_MASKED_H_
