#include "json_text.h"

#include <utility>

#include <nlohmann/json.hpp>

namespace FiltersInspect {

using Json = nlohmann::json;

void JsonText::open(char bracket) {
  begin();
  text_ += bracket;
  ++depth_;
  first_ = true;
}

void JsonText::close(char bracket) {
  --depth_;
  if (!first_) startLine();
  text_ += bracket;
  first_ = false;
}

void JsonText::key(std::string_view name) {
  value(name);
  text_ += ": ";
  keyed_ = true;
}

void JsonText::value(std::string_view text) {
  begin();
  text_ += Json(text).dump(-1, ' ', false, Json::error_handler_t::replace);
}

void JsonText::value(std::uint64_t number) {
  begin();
  text_ += std::to_string(number);
}

std::string JsonText::take() {
  text_ += '\n';
  return std::move(text_);
}

void JsonText::begin() {
  if (!std::exchange(keyed_, false)) {
    if (!first_) text_ += ',';
    if (depth_ != 0) startLine();
  }
  first_ = false;
}

void JsonText::startLine() {
  text_ += '\n';
  text_.append(2 * depth_, ' ');
}

}  // namespace FiltersInspect
