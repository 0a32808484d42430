#ifndef FILTER_INSPECT_TOOLS_CONSOLE_H_
#define FILTER_INSPECT_TOOLS_CONSOLE_H_

// The output of the program. Results go to standard output; trouble and losses go to standard
// error. Both are lines, or documents with --json.

#include <filter_inspect/filter_analysis.h>
#include <filter_inspect/filter_report.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "commands.h"

namespace FilterInspectTool {

using FiltersInspect::Code;
using FiltersInspect::Finding;
using FiltersInspect::Report;
using FiltersInspect::ReportInput;
using FiltersInspect::Severity;

enum class Color { kNone, kRemoved, kAdded, kWarning, kError, kNote };

// The text behind a UTF-8 byte-order mark, or all of it.
inline std::string_view withoutMark(std::string_view text) {
  return text.substr(text.substr(0, 3) == "\xef\xbb\xbf" ? 3 : 0);
}

// "1 group", "2 groups".
std::string counted(std::uint64_t number, std::string_view what);

// Replaces characters that a terminal would obey, and line ends.
std::string printable(std::string text);

// Writes all of it to an open file. Returns 0 or the system's error number.
int writeAll(int handle, std::string_view text);

// A finding that has only a code and a sentence.
Finding findingOf(Code code, std::string message);

// The place of a finding: "g.txt:12:7" in text and JSON, "g.bin: group 1" in bytes, or else the
// name of the file.
std::string placeOf(const std::string& file, const Finding& finding);

// "left out: 3 warnings, 101 notes; --max-findings=N shows more"
std::string leftOutText(const Report& report);

class Console {
 public:
  // Each later call reads the options, so they may change after this one.
  explicit Console(const Options* options);

  // --- Results ---

  void write(std::string_view text);
  void writeLine(std::string_view line, Color color = Color::kNone);
  // A part of a result in its colour, if results have colours.
  std::string painted(std::string_view text, Color color) const;
  // Writes findings about a file, each after its place.
  void write(const std::string& file, const Report& report);
  // Writes a document. For an analysis it has the order.
  void write(const std::vector<ReportInput>& inputs);
  void write(const std::vector<ReportInput>& inputs, FiltersInspect::Order order);
  // The number of letters in a line of results. It is --width, or else the width of the terminal,
  // or else COLUMNS, or else 80. With 0, lines have any length.
  std::size_t width() const;
  // Writes now what has been said so far.
  void flush();
  // True if writing has failed: no more can be written.
  bool isClosed() const { return closed_; }

  // --- Trouble ---

  // Reports trouble. The program then ends with kExitTrouble. `file` may be empty. If there is a
  // source, its line and a mark under the wrong word follow on a terminal; `first_line` is the
  // number of the source's first line.
  void trouble(Code code, const std::string& file, const std::string& message);
  void trouble(const std::string& file, const Finding& finding, std::string_view source = {},
               std::size_t first_line = 1);
  // Reports an error of the system about a file.
  void systemTrouble(Code code, const std::string& file, int error);
  bool hasFailed() const { return failed_; }
  // Writes a report that is neither trouble nor a result: the losses of a file, or the reason why
  // there is nothing to show.
  void aside(const std::string& file, const Report& report);
  // Writes advice for people.
  void hint(const std::string& line);
  // Writes a line that only --verbose asks for.
  void note(const std::string& line);
  // Says that a file is refused as a whole.
  void refuse(const std::string& file);

  // Shows a line on a terminal while reading a file takes longer than a second.
  void showProgress(const std::string& file);
  // Returns a function that shows how much of the work on a part of a file is done. The function is
  // empty if there is no terminal.
  std::function<void(std::size_t done, std::size_t all)> progressOf(std::string_view doing,
                                                                    std::string_view place);
  void hideProgress();

  // Writes the rest and returns the exit code of the program.
  Exit finish(Exit exit);
 private:
  std::string painted(int stream, std::string_view text, Color color) const;
  std::string linesOf(int stream, const std::string& file, Finding finding) const;
  bool showsSource(int stream) const;
  void keep(const std::string& file, Report report);
  void say(const std::string& text);

  const Options& options_;
  const bool shares_terminal_;  // true if results go to the terminal of the progress line
  std::string results_;         // not yet written
  std::vector<ReportInput> troubles_;
  const std::chrono::steady_clock::time_point begin_ = std::chrono::steady_clock::now();
  std::size_t findings_ = 0;  // the number of findings that were written
  bool failed_ = false;
  bool closed_ = false;  // true if standard output accepts no more
};

}  // namespace FilterInspectTool

#endif  // FILTER_INSPECT_TOOLS_CONSOLE_H_
