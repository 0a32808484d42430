#include "xml.h"

#include <cstdint>

namespace FilterInspectTool {
namespace {

// Takes one UTF-8 character (RFC 3629) from the beginning of the text. If there is no valid
// character, takes one byte and returns 0.
std::uint32_t takeCharacter(std::string_view* text) {
  const auto byte = [&](std::size_t at) { return static_cast<unsigned char>((*text)[at]); };
  const std::uint32_t first = byte(0);
  const std::size_t length = first < 0x80 ? 1 : first < 0xe0 ? 2 : first < 0xf0 ? 3 : 4;
  constexpr std::uint32_t kLeast[] = {0, 0, 0x80, 0x800, 0x10000};
  std::uint32_t character = length == 1 ? first : first & (0x7fU >> length);
  bool whole = length <= text->size() && (length == 1 || (0xc0 <= first && first < 0xf8));
  for (std::size_t i = 1; whole && i < length; ++i) {
    whole = (byte(i) & 0xc0) == 0x80;
    character = character << 6 | (byte(i) & 0x3fU);
  }
  whole = whole && character >= kLeast[length];
  text->remove_prefix(whole ? length : 1);
  return whole ? character : 0;
}

// XML 1.0, section 2.2.
bool isAdmitted(std::uint32_t character) {
  return (0x20 <= character && character < 0xd800) || (0xe000 <= character && character < 0xfffe) ||
         (0x10000 <= character && character < 0x110000);
}

}  // namespace

std::string inXml(std::string_view text) {
  std::string result;
  while (!text.empty()) {
    const std::uint32_t character = takeCharacter(&text);
    const bool isMarkup =
        character == '&' || character == '<' || character == '>' || character == '"';
    if (!isAdmitted(character)) {
      result += '?';
    } else if (isMarkup || character > '~') {
      result += "&#" + std::to_string(character) + ';';
    } else {
      result += static_cast<char>(character);
    }
  }
  return result;
}

}  // namespace FilterInspectTool
