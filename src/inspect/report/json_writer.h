#ifndef FILTER_INSPECT_SRC_REPORT_JSON_WRITER_H_
#define FILTER_INSPECT_SRC_REPORT_JSON_WRITER_H_

// Writes JSON from the first byte to the last, two blanks a level, without building a tree of it:
// trees of nlohmann-json need memory to be taken down, and end the process when there is none.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace FiltersInspect {

class JsonWriter {
 public:
  // An object or an array, and its end: '{' and '}', '[' and ']'.
  void open(char bracket);
  void close(char bracket);
  // Of the value that follows, in an object.
  void key(std::string_view name);
  // What is no UTF-8 is replaced.
  void value(std::string_view text);
  void value(std::uint64_t number);
  void signedValue(std::int64_t number);
  void flag(bool value);

  // All of it, with a newline at the end.
  std::string take();
 private:
  void begin();
  void startLine();

  std::string text_;
  std::size_t depth_ = 0;
  bool first_ = true;  // of what the innermost bracket holds
  bool keyed_ = false;
};

}  // namespace FiltersInspect

#endif  // FILTER_INSPECT_SRC_REPORT_JSON_WRITER_H_
