#ifndef FILTER_INSPECT_SRC_FORMS_TEXT_LINES_H_
#define FILTER_INSPECT_SRC_FORMS_TEXT_LINES_H_

// The common part of the readers of files that people write. Such a file has a first line with a
// version, then lines of words, and comments after '#'. Faults have a line and a column.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <filter_inspect/filter_text.h>

#include "form_rows.h"

namespace FiltersInspect {

// Goes through a text word by word. The reader of each kind of file derives from this class.
class TextLines {
 public:
  TextLines(const TextLines&) = delete;
  TextLines& operator=(const TextLines&) = delete;
 protected:
  // The first line is the word `kind` and a version.
  TextLines(std::string_view text, std::string_view kind, int version);
  virtual ~TextLines() = default;
  virtual void report(Code code, TextPosition position, std::string_view word,
                      std::string message) = 0;

  // Goes to the first line that is not empty, and reads the version. Returns false if the version
  // is unknown.
  bool readVersion();
  // Goes to the next line and drops its comment. Returns false after the last line.
  bool nextLine();
  // Goes to the next word of the line. After the last word, word_ is empty.
  void nextWord();
  bool take(std::string_view word);

  TextPosition positionOf(std::string_view piece) const;
  // Reports that a piece of the line is wrong, and returns false.
  bool fail(Code code, std::string_view piece, std::string message);
  bool failWord(std::string message) { return fail(Code::kTextSyntax, word_, std::move(message)); }
  // Reports that no line begins with this word.
  bool failFirstWord(const std::vector<std::string_view>& beginnings);

  // These functions read the current word. The number and the name may follow a key such as
  // "priority=".
  std::optional<std::uint32_t> number(std::string_view key, unsigned bits);
  std::optional<std::uint32_t> named(std::string_view key, const Enumeration& names);
  std::optional<std::string_view> behind(std::string_view key);

  std::string_view line_;     // the current one
  std::string_view words_;    // the rest of the line, after word_
  std::string_view word_;     // the current one
  const char* example_ = "";  // of the current line, for sentences
  TextPosition position_ = {0, 1};
 private:
  std::string firstLine() const;

  std::string_view rest_;  // lines not read yet
  const std::string_view kind_;
  const int version_;
};

}  // namespace FiltersInspect

#endif  // FILTER_INSPECT_SRC_FORMS_TEXT_LINES_H_
