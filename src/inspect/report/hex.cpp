#include "hex.h"

#include <charconv>

namespace FiltersInspect {
namespace {

char digitOf(unsigned value) { return "0123456789abcdef"[value & 15]; }

}  // namespace

void appendHex(std::string_view bytes, std::string* out) {
  for (const char c : bytes) {
    const auto byte = static_cast<unsigned char>(c);
    *out += digitOf(byte >> 4);
    *out += digitOf(byte);
  }
}

std::optional<std::string> parseHex(std::string_view digits) {
  if (digits.size() % 2 != 0) return std::nullopt;
  std::string bytes;
  bytes.reserve(digits.size() / 2);
  for (; !digits.empty(); digits.remove_prefix(2)) {
    unsigned char byte = 0;
    const auto [end, fault] = std::from_chars(digits.data(), digits.data() + 2, byte, 16);
    if (fault != std::errc() || end != digits.data() + 2) return std::nullopt;
    bytes += static_cast<char>(byte);
  }
  return bytes;
}

void appendHexNumber(std::uint32_t value, int digits, std::string* out) {
  *out += "0x";
  for (int digit = 7; digit >= 0; --digit) {
    if (digit < digits || value >> 4 * digit != 0) *out += digitOf(value >> 4 * digit);
  }
}

}  // namespace FiltersInspect
