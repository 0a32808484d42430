#ifndef FILTER_INSPECT_SRC_FORMS_JSON_TOKENS_H_
#define FILTER_INSPECT_SRC_FORMS_JSON_TOKENS_H_

// The characters that the JSON parser reads, and the positions of its tokens.

#include <cstddef>
#include <iterator>
#include <string_view>

#include <filter_inspect/filter_text.h>

#include "utf8_mark.h"

namespace FiltersInspect {

// The characters of the text, with line ends and tabs as blanks. The parser keeps all characters
// since the last token for its error message, and a line end or tab in that message would take
// eight bytes. A zero byte becomes the character 1, because the parser reads a zero as the end of
// the text and would ignore what follows.
class Characters {
 public:
  using iterator_category = std::input_iterator_tag;
  using value_type = char;
  using difference_type = std::ptrdiff_t;
  using pointer = const char*;
  using reference = char;

  explicit Characters(const char* at) : at_(at) {}
  char operator*() const {
    if (*at_ == '\0') return '\x01';
    const bool isBlank = *at_ == '\n' || *at_ == '\r' || *at_ == '\t';
    return isBlank && !in_text_ ? ' ' : *at_;
  }
  Characters& operator++() {
    if (*at_ == '"' && !escaped_) in_text_ = !in_text_;
    escaped_ = in_text_ && *at_ == '\\' && !escaped_;
    ++at_;
    return *this;
  }
  friend bool operator==(const Characters& a, const Characters& b) { return a.at_ == b.at_; }
  friend bool operator!=(const Characters& a, const Characters& b) { return !(a == b); }
 private:
  const char* at_;
  bool in_text_ = false;
  bool escaped_ = false;  // a backslash precedes
};

// Finds the position of each token that the parser reports. The parser has checked the tokens, and
// only blanks, commas and colons are between them.
class TokenPositions {
 public:
  explicit TokenPositions(std::string_view text)
      : text_(text), at_(lengthOfMark(text)), line_start_(at_) {}

  TextPosition next();
  // The token whose position was found last, and what follows it.
  std::string_view token() const { return text_.substr(start_, at_ - start_); }
  std::string_view rest() const { return text_.substr(at_); }

  // The position after this text.
  static TextPosition of(std::string_view before);
 private:
  static constexpr std::string_view kBetween = " \t\r\n,:";

  std::string_view text_;
  std::size_t at_;
  std::size_t start_ = 0;
  std::size_t line_ = 1;
  std::size_t line_start_;
};

}  // namespace FiltersInspect

#endif  // FILTER_INSPECT_SRC_FORMS_JSON_TOKENS_H_
