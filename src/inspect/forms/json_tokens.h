#ifndef FILTER_INSPECT_SRC_FORMS_JSON_TOKENS_H_
#define FILTER_INSPECT_SRC_FORMS_JSON_TOKENS_H_

// The text that the parser of JSON reads, and where its tokens stand in it.

#include <cstddef>
#include <iterator>
#include <string_view>

#include <filter_inspect/filter_text.h>

namespace FiltersInspect {

// What the parser reads: the text, with blanks alone between tokens. Of line ends and tabs, all of
// which it keeps until the next text or number, its message about a fault would take eight bytes
// each, and some copies of them. A zero byte becomes another that stands nowhere: the parser takes
// a zero for the end of the text, and would not say what stands behind it.
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
  bool escaped_ = false;  // by a backslash
};

// Finds the place of each token that the parser hands over. The parser has held the tokens to be
// well-formed, and between two of them stand blanks, commas and colons alone.
class TokenPositions {
 public:
  explicit TokenPositions(std::string_view text)
      : text_(text), at_(lengthOfMark(text)), line_start_(at_) {}

  TextPosition next();

  // Of an offset that the parser tells.
  static TextPosition of(std::string_view before);
 private:
  static constexpr std::string_view kBetween = " \t\r\n,:";

  // The length of the byte-order mark of UTF-8, which the parser skips and no column counts.
  static std::size_t lengthOfMark(std::string_view text) {
    return text.substr(0, 3) == "\xef\xbb\xbf" ? 3 : 0;
  }

  std::string_view text_;
  std::size_t at_;
  std::size_t line_ = 1;
  std::size_t line_start_;
};

}  // namespace FiltersInspect

#endif  // FILTER_INSPECT_SRC_FORMS_JSON_TOKENS_H_
