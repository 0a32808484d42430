#include "json_writer.h"

#include <algorithm>
#include <utility>

#include <nlohmann/json.hpp>

namespace FiltersInspect {

using Json = nlohmann::json;

void JsonWriter::open(char bracket) {
  begin();
  text_ += bracket;
  ++depth_;
  first_ = true;
}

void JsonWriter::close(char bracket) {
  --depth_;
  if (!first_) startLine();
  text_ += bracket;
  first_ = false;
}

void JsonWriter::key(std::string_view name) {
  value(name);
  text_ += ": ";
  keyed_ = true;
}

void JsonWriter::value(std::string_view text) {
  begin();
  const auto isPlain = [](char c) { return ' ' <= c && c <= '~' && c != '"' && c != '\\'; };
  if (std::all_of(text.begin(), text.end(), isPlain)) {
    text_.append(1, '"').append(text).append(1, '"');
    return;
  }
  text_ += Json(text).dump(-1, ' ', false, Json::error_handler_t::replace);
}

void JsonWriter::value(std::uint64_t number) {
  begin();
  text_ += std::to_string(number);
}

void JsonWriter::signedValue(std::int64_t number) {
  begin();
  text_ += std::to_string(number);
}

void JsonWriter::flag(bool value) {
  begin();
  text_ += value ? "true" : "false";
}

std::string JsonWriter::take() {
  text_ += '\n';
  return std::move(text_);
}

void JsonWriter::begin() {
  if (!std::exchange(keyed_, false)) {
    if (!first_) text_ += ',';
    if (depth_ != 0) startLine();
  }
  first_ = false;
}

void JsonWriter::startLine() {
  if (is_line_) {
    if (text_.back() == ',') text_ += ' ';
    return;
  }
  text_ += '\n';
  text_.append(2 * depth_, ' ');
}

}  // namespace FiltersInspect
