#include "json_tokens.h"

#include <algorithm>
#include <charconv>
#include <limits>

#include <nlohmann/json.hpp>

#include "utf8_mark.h"

namespace FiltersInspect {
namespace {

using Json = nlohmann::json;

constexpr bool isDigit(char c) { return '0' <= c && c <= '9'; }

}  // namespace

JsonTokens::JsonTokens(std::string_view text)
    : text_(text), at_(lengthOfMark(text)), line_start_(at_) {}

char JsonTokens::next() {
  std::size_t at = at_;
  for (; at < text_.size(); ++at) {
    const char c = text_[at];
    if (c == ' ') continue;
    if (c == '\n') {
      ++line_;
      line_start_ = at + 1;
    } else if (c != '\t' && c != '\r') {
      break;
    }
  }
  start_ = at_ = at;
  const char kind = at_ < text_.size() ? read() : char{kEnd};
  reached_ = kind == kFault || kind == kEnd ? at_ : at_ - 1;
  return kind;
}

// Reads the token that begins here. After a fault, at_ is the position of the fault.
char JsonTokens::read() {
  const char first = text_[at_];
  switch (first) {
    case '{':
    case '}':
    case '[':
    case ']':
    case ':':
    case ',':
      ++at_;
      return first;
    case '"':
      return readText() ? kText : kFault;
    case 't':
      return readLiteral("true") ? kTrue : kFault;
    case 'f':
      return readLiteral("false") ? kFalse : kFault;
    case 'n':
      return readLiteral("null") ? kNull : kFault;
    default:
      if (first == '-' || isDigit(first)) return readNumber();
      // If the text begins with an incomplete byte-order mark, the fault is after its last byte.
      while (start_ == 0 && at_ < kUtf8Mark.size() && peek() == kUtf8Mark[at_]) ++at_;
      return kFault;
  }
}

bool JsonTokens::readText() {
  const auto isPlain = [](char c) {
    return static_cast<signed char>(c) >= ' ' && c != '"' && c != '\\';
  };
  std::size_t end = start_ + 1;
  while (end < text_.size() && isPlain(text_[end])) ++end;
  if (end == text_.size() || text_[end] != '"') return readUnusualText();
  value_ = text_.substr(start_ + 1, end - start_ - 1);
  at_ = end + 1;
  return true;
}

// Reads a string with escapes or with characters that are not ASCII, or a string that is not valid
// JSON.
bool JsonTokens::readUnusualText() {
  const std::string_view word = wordAt(start_);
  try {
    unescaped_ = Json::parse(word).get_ref<const std::string&>();
  } catch (const Json::parse_error& fault) {
    at_ = start_ + std::min(fault.byte - 1, word.size());
    return false;
  }
  value_ = unescaped_;
  at_ = start_ + word.size();
  return true;
}

char JsonTokens::readNumber() {
  const bool isNegative = peek() == '-';
  if (isNegative) ++at_;
  const std::size_t zero = at_;
  if (!readDigits()) return kFault;
  if (text_[zero] == '0') at_ = zero + 1;  // a further digit would be the next token
  bool isWhole = true;
  if (peek() == '.') {
    isWhole = false;
    ++at_;
    if (!readDigits()) return kFault;
  }
  if (peek() == 'e' || peek() == 'E') {
    isWhole = false;
    ++at_;
    if (peek() == '+' || peek() == '-') ++at_;
    if (!readDigits()) return kFault;
  }
  const std::string_view word = text_.substr(start_, at_ - start_);
  if (isWhole) {
    const auto fault = std::from_chars(word.data(), word.data() + word.size(), number_).ec;
    if (fault == std::errc()) return kWhole;
  }
  if (!Json::accept(word)) {
    --at_;  // it is too large for a floating-point number
    return kFault;
  }
  using Limits = std::numeric_limits<std::int64_t>;
  number_ = isNegative ? Limits::min() : Limits::max();
  return isWhole ? kWhole : kFraction;
}

bool JsonTokens::readDigits() {
  const std::size_t begin = at_;
  while (isDigit(peek())) ++at_;
  return at_ != begin;
}

bool JsonTokens::readLiteral(std::string_view word) {
  for (const char c : word) {
    if (peek() != c) return false;
    ++at_;
  }
  return true;
}

std::string_view JsonTokens::wordAt(std::size_t start) const {
  std::size_t end = start + 1;
  const char first = start < text_.size() ? text_[start] : '\0';
  if (first == '"') {
    while (end < text_.size() && text_[end] != '"') end += text_[end] == '\\' ? 2 : 1;
    ++end;
  } else if (first != '{' && first != '[' && first != '}' && first != ']') {
    end = text_.find_first_of(" \t\r\n,:]}", end);
  }
  return text_.substr(start, end - start);
}

TextPosition JsonTokens::positionOf(std::size_t offset) const {
  const std::string_view before = text_.substr(0, offset);
  const std::size_t end = before.rfind('\n');
  const std::size_t line = end == before.npos ? lengthOfMark(before) : end + 1;
  const auto lines = std::count(before.begin(), before.end(), '\n');
  return {static_cast<std::size_t>(lines) + 1, before.size() - line + 1};
}

}  // namespace FiltersInspect
