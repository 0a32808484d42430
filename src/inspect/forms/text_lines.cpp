#include "text_lines.h"

#include <algorithm>

#include "catalogue/in_quotes.h"
#include "group_builder.h"
#include "utf8_mark.h"
#include "value_text.h"

namespace FiltersInspect {

TextLines::TextLines(std::string_view text, std::string_view kind, int version)
    : rest_(text.substr(lengthOfMark(text))), kind_(kind), version_(version) {}

std::string TextLines::firstLine() const {
  return "the first line must be `" + std::string(kind_) + ' ' + std::to_string(version_) + '`';
}

bool TextLines::readVersion() {
  nextLine();
  while (word_.empty() && nextLine()) continue;
  if (!take(kind_)) return failWord(firstLine());
  if (word_ != std::to_string(version_)) {
    return fail(Code::kTextVersion, word_,
                "only version " + std::to_string(version_) + " is read here: " + firstLine());
  }
  nextWord();
  return word_.empty() || failWord(firstLine() + " alone");
}

bool TextLines::nextLine() {
  if (position_.line != 0 && rest_.empty()) return false;
  ++position_.line;
  const std::size_t end = std::min(rest_.find('\n'), rest_.size());
  line_ = rest_.substr(0, end);
  rest_.remove_prefix(std::min(end + 1, rest_.size()));
  if (!line_.empty() && line_.back() == '\r') line_.remove_suffix(1);
  const std::size_t comment = std::min(line_.find('#'), line_.size());
  words_ = line_.substr(0, comment);
  const std::size_t zero = line_.find('\0', comment);
  if (zero != line_.npos) fail(Code::kTextSyntax, line_.substr(zero), kZeroByte);
  nextWord();
  return true;
}

void TextLines::nextWord() { word_ = takeWord(&words_); }

bool TextLines::take(std::string_view word) {
  if (word_ != word) return false;
  nextWord();
  return true;
}

TextPosition TextLines::positionOf(std::string_view piece) const {
  return {position_.line, static_cast<std::size_t>(piece.data() - line_.data()) + 1};
}

bool TextLines::fail(Code code, std::string_view piece, std::string message) {
  const std::size_t zero = piece.find('\0');
  if (zero != piece.npos) {
    piece = piece.substr(zero, 1);
    code = Code::kTextSyntax;
    message = kZeroByte;
  } else if (piece.find('\r') != piece.npos) {
    message = "a carriage return stands inside of the line";
  }
  report(code, positionOf(piece), piece, std::move(message));
  return false;
}

bool TextLines::failFirstWord(const std::vector<std::string_view>& beginnings) {
  if (word_ == kind_) return failWord("a second first line: remove it");
  return failWord("no line begins with " + inQuotes(word_) + suggestion(word_, beginnings));
}

std::optional<std::uint32_t> TextLines::number(std::string_view key, unsigned bits) {
  const auto text = behind(key);
  if (!text) return std::nullopt;
  const auto value = parseNumber(*text, bits);
  if (!value) fail(Code::kTextValue, *text, noNumber(*text, bits));
  nextWord();
  return value;
}

std::optional<std::uint32_t> TextLines::named(std::string_view key, const Enumeration& names) {
  const auto text = behind(key);
  if (!text) return std::nullopt;
  const auto value = parseName(names, *text);
  if (!value) {
    fail(Code::kTextValue, *text, noName(key.substr(0, key.size() - 1), names, *text, 32));
  }
  nextWord();
  return value;
}

std::optional<std::string_view> TextLines::behind(std::string_view key) {
  if (word_.empty() || word_.substr(0, key.size()) != key) {
    const bool isOther = !word_.empty() && !key.empty();
    failWord((key.empty() ? "an id" : '`' + std::string(key) + '`') + " is missing here" +
             (isOther ? ", where " + inQuotes(word_) + " stands" : "") + "; an example is " +
             example_);
    return std::nullopt;
  }
  return word_.substr(key.size());
}

}  // namespace FiltersInspect
