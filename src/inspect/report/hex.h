#ifndef FILTER_INSPECT_SRC_REPORT_HEX_H_
#define FILTER_INSPECT_SRC_REPORT_HEX_H_

// Bytes and numbers in hexadecimal digits.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace FiltersInspect {

// Two lower-case digits a byte, without anything between them.
void appendHex(std::string_view bytes, std::string* out);

// The bytes of such text; upper-case digits are read too. Nothing if the text is no such digits.
std::optional<std::string> parseHex(std::string_view digits);

// "0x0800": as many digits as the number needs, but at least `digits`.
void appendHexNumber(std::uint32_t value, int digits, std::string* out);

}  // namespace FiltersInspect

#endif  // FILTER_INSPECT_SRC_REPORT_HEX_H_
