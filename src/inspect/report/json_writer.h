#ifndef FILTER_INSPECT_SRC_REPORT_JSON_WRITER_H_
#define FILTER_INSPECT_SRC_REPORT_JSON_WRITER_H_

// Writes JSON from the first byte to the last, indented by two blanks a level, and builds no tree.
// A tree of nlohmann-json needs memory even for its destruction, and ends the process if there is
// none.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace FiltersInspect {

class JsonWriter {
 public:
  // Writes either an indented text or a single line.
  explicit JsonWriter(bool isLine = false) : is_line_(isLine) {}

  // Begins or ends an object or an array: '{' and '}', '[' and ']'.
  void open(char bracket);
  void close(char bracket);
  // The key of the next value, inside an object.
  void key(std::string_view name);
  // Bytes that are not UTF-8 are replaced.
  void value(std::string_view text);
  void value(std::uint64_t number);
  void signedValue(std::int64_t number);
  void flag(bool value);

  // The whole text, with a newline at the end.
  std::string take();
 private:
  void begin();
  void startLine();

  std::string text_;
  std::size_t depth_ = 0;
  bool first_ = true;  // of the innermost bracket
  bool keyed_ = false;
  const bool is_line_;
};

}  // namespace FiltersInspect

#endif  // FILTER_INSPECT_SRC_REPORT_JSON_WRITER_H_
