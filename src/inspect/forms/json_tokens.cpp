#include "json_tokens.h"

#include <algorithm>

namespace FiltersInspect {

TextPosition TokenPositions::next() {
  for (; at_ < text_.size() && kBetween.find(text_[at_]) != kBetween.npos; ++at_) {
    if (text_[at_] == '\n') ++line_, line_start_ = at_ + 1;
  }
  const std::size_t start = start_ = std::min(at_++, text_.size());
  const char first = start < text_.size() ? text_[start] : '\0';
  if (first == '"') {
    while (at_ < text_.size() && text_[at_] != '"') at_ += text_[at_] == '\\' ? 2 : 1;
    ++at_;
  } else if (first != '{' && first != '[' && first != '}' && first != ']') {
    at_ = text_.find_first_of(" \t\r\n,:]}", at_);
  }
  at_ = std::min(at_, text_.size());
  return {line_, start - line_start_ + 1};
}

TextPosition TokenPositions::of(std::string_view before) {
  const std::size_t end = before.rfind('\n');
  const std::size_t line = end == before.npos ? lengthOfMark(before) : end + 1;
  const auto lines = std::count(before.begin(), before.end(), '\n');
  return {static_cast<std::size_t>(lines) + 1, before.size() - line + 1};
}

}  // namespace FiltersInspect
