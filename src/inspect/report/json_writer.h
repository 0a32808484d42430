#ifndef FILTER_INSPECT_SRC_REPORT_JSON_WRITER_H_
#define FILTER_INSPECT_SRC_REPORT_JSON_WRITER_H_

// Writes JSON from the first byte to the last, without building a tree. A tree of nlohmann-json
// needs memory even for its destruction, and ends the process if memory runs out.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace FiltersInspect {

enum class JsonStyle : std::uint8_t {
  kIndented,  // by two blanks a level
  kLine,      // a single line, with a blank behind each ',' and ':'
  kCompact,   // a single line without blanks
};

class JsonWriter {
 public:
  explicit JsonWriter(JsonStyle style = JsonStyle::kIndented) : style_(style) {}

  // Begins or ends an object or an array: '{' and '}', '[' and ']'.
  void open(char bracket);
  void close(char bracket);
  // The key of the next value, inside an object. It has no characters that JSON would escape.
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
  void quote(std::string_view text, std::string_view end);

  std::string text_;
  std::string line_ = "\n";  // a line end, and the blanks that begin the next line
  bool first_ = true;        // of the innermost bracket
  bool keyed_ = false;
  const JsonStyle style_;
};

}  // namespace FiltersInspect

#endif  // FILTER_INSPECT_SRC_REPORT_JSON_WRITER_H_
