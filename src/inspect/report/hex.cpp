#include "hex.h"

namespace FiltersInspect {
namespace {

char digitOf(unsigned value) { return "0123456789abcdef"[value & 15]; }

// The value of a digit; more than 15 for any other character.
unsigned valueOf(char digit) {
  if ('0' <= digit && digit <= '9') return static_cast<unsigned>(digit - '0');
  const char lower = static_cast<char>(digit | ' ');
  return 'a' <= lower && lower <= 'f' ? static_cast<unsigned>(lower - 'a' + 10) : 16;
}

}  // namespace

char* writeHexByte(unsigned char byte, char* digits) {
  *digits++ = digitOf(byte >> 4);
  *digits++ = digitOf(byte);
  return digits;
}

void appendHex(std::string_view bytes, std::string* out) {
  const std::size_t size = out->size();
  out->resize(size + 2 * bytes.size());
  char* digits = &(*out)[size];
  for (const char byte : bytes) digits = writeHexByte(static_cast<unsigned char>(byte), digits);
}

std::optional<unsigned char> parseHexByte(const char* digits) {
  const unsigned high = valueOf(digits[0]), low = valueOf(digits[1]);
  if (high > 15 || low > 15) return std::nullopt;
  return static_cast<unsigned char>(high << 4 | low);
}

std::optional<std::string> parseHex(std::string_view digits) {
  if (digits.size() % 2 != 0) return std::nullopt;
  std::string bytes(digits.size() / 2, '\0');
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    const auto byte = parseHexByte(&digits[2 * i]);
    if (!byte) return std::nullopt;
    bytes[i] = static_cast<char>(*byte);
  }
  return bytes;
}

void appendHexNumber(std::uint32_t value, int digits, std::string* out) {
  char text[] = "0x00000000";
  char* end = text + 2;
  for (int digit = 7; digit >= 0; --digit) {
    if (digit < digits || value >> 4 * digit != 0) *end++ = digitOf(value >> 4 * digit);
  }
  out->append(text, end);
}

}  // namespace FiltersInspect
