#ifndef FILTER_INSPECT_SRC_REPORT_HEX_H_
#define FILTER_INSPECT_SRC_REPORT_HEX_H_

// Converts bytes and numbers to digits, and digits to bytes.

#include <charconv>
#include <cstdint>
#include <iterator>
#include <limits>
#include <optional>
#include <string>
#include <string_view>

namespace FiltersInspect {

// Writes the two lower-case digits of a byte, and returns the position after the digits.
char* writeHexByte(unsigned char byte, char* digits);

// Appends two lower-case digits for each byte, without separators.
void appendHex(std::string_view bytes, std::string* out);

// The bytes that pairs of hexadecimal digits stand for. Upper-case digits are read too. Returns
// nothing for any other text.
std::optional<std::string> parseHex(std::string_view digits);

// The byte that two hexadecimal digits stand for.
std::optional<unsigned char> parseHexByte(const char* digits);

// Appends "0x0800": as many digits as the number needs, but at least `digits`.
void appendHexNumber(std::uint32_t value, int digits, std::string* out);

// Appends the decimal digits of a number, with '-' before a negative number.
template <class Number>
void appendDecimal(Number number, std::string* out) {
  char digits[std::numeric_limits<Number>::digits10 + 2];
  out->append(digits, std::to_chars(digits, std::end(digits), number).ptr);
}

}  // namespace FiltersInspect

#endif  // FILTER_INSPECT_SRC_REPORT_HEX_H_
