#ifndef FILTER_INSPECT_SRC_FORMS_JSON_TOKENS_H_
#define FILTER_INSPECT_SRC_FORMS_JSON_TOKENS_H_

// Reads JSON (RFC 8259) token by token, with the position of each token.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include <filter_inspect/filter_text.h>

namespace FiltersInspect {

class JsonTokens {
 public:
  explicit JsonTokens(std::string_view text);

  // The result of next() for a token that is not a single character.
  enum Kind : char {
    kEnd = '\0',
    kFault = '!',     // no token: there is a character that JSON does not allow here
    kText = '"',      // text() is its value
    kWhole = '0',     // number() is its value
    kFraction = '.',  // a number with a fraction or an exponent
    kTrue = 't',
    kFalse = 'f',
    kNull = 'n',
  };
  // Goes to the next token. Returns its kind, or the token itself if it is one of the characters
  // {}[]:,
  char next();

  std::string_view text() const { return value_; }
  // The nearest number of 64 bits.
  std::int64_t number() const { return number_; }

  // The beginning of the token, as an offset and as a position.
  std::size_t start() const { return start_; }
  TextPosition position() const { return {line_, start_ - line_start_ + 1}; }
  // The offset of the token's last character, of the fault, or of the end.
  std::size_t reached() const { return reached_; }

  // The token that begins at the offset, with everything up to the next blank or bracket, colon or
  // comma.
  std::string_view wordAt(std::size_t start) const;
  TextPosition positionOf(std::size_t offset) const;
 private:
  char peek() const { return at_ < text_.size() ? text_[at_] : '\0'; }
  char read();
  bool readText();
  bool readUnusualText();
  char readNumber();
  bool readDigits();
  bool readLiteral(std::string_view word);

  const std::string_view text_;
  std::size_t at_;  // what is behind the token begins here
  std::size_t start_ = 0;
  std::size_t reached_ = 0;
  std::size_t line_ = 1;
  std::size_t line_start_;
  std::string_view value_;
  std::string unescaped_;  // holds the value of a text with escapes
  std::int64_t number_ = 0;
};

}  // namespace FiltersInspect

#endif  // FILTER_INSPECT_SRC_FORMS_JSON_TOKENS_H_
