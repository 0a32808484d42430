#include "json_writer.h"

#include <algorithm>
#include <utility>

#include <nlohmann/json.hpp>

#include "hex.h"

namespace FiltersInspect {

void JsonWriter::open(char bracket) {
  begin();
  text_ += bracket;
  line_ += "  ";
  first_ = true;
}

void JsonWriter::close(char bracket) {
  line_.resize(line_.size() - 2);
  if (!first_) startLine();
  text_ += bracket;
  first_ = false;
}

void JsonWriter::key(std::string_view name) {
  begin();
  quote(name, style_ == JsonStyle::kCompact ? "\":" : "\": ");
  keyed_ = true;
}

void JsonWriter::value(std::string_view text) {
  begin();
  const auto isPlain = [](char c) { return ' ' <= c && c <= '~' && c != '"' && c != '\\'; };
  if (std::all_of(text.begin(), text.end(), isPlain)) return quote(text, "\"");
  text_ += nlohmann::json(text).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

void JsonWriter::value(std::uint64_t number) {
  begin();
  appendDecimal(number, &text_);
}

void JsonWriter::signedValue(std::int64_t number) {
  begin();
  appendDecimal(number, &text_);
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
    if (line_.size() > 1) startLine();
  }
  first_ = false;
}

void JsonWriter::startLine() {
  if (style_ == JsonStyle::kIndented) {
    text_ += line_;
  } else if (style_ == JsonStyle::kLine && text_.back() == ',') {
    text_ += ' ';
  }
}

// `end` is the text after the value, and begins with the closing quotation mark.
void JsonWriter::quote(std::string_view text, std::string_view end) {
  text_ += '"';
  text_ += text;
  text_ += end;
}

}  // namespace FiltersInspect
