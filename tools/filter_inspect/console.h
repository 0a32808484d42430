#ifndef FILTER_INSPECT_TOOLS_CONSOLE_H_
#define FILTER_INSPECT_TOOLS_CONSOLE_H_

// The output of the program. Results go to standard output. Errors and losses go to standard error.
// With --json each output is a JSON document, and otherwise it is lines.

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

// The text without a UTF-8 byte-order mark at its beginning.
inline std::string_view withoutMark(std::string_view text) {
  return text.substr(text.substr(0, 3) == "\xef\xbb\xbf" ? 3 : 0);
}

// "1 group", "2 groups".
std::string counted(std::uint64_t number, std::string_view what);

// Replaces line ends, and characters that control a terminal.
std::string printable(std::string text);

// Writes the whole text to an open file. Returns 0 or the system's error number.
int writeAll(int handle, std::string_view text);

// A finding that has only a code and a sentence.
Finding findingOf(Code code, std::string message);

// The position of a finding: "g.txt:12:7" in text and JSON, "g.bin: group 1" in bytes, or only the
// name of the file.
std::string placeOf(const std::string& file, const Finding& finding);

// "left out: 3 warnings, 101 notes; --max-findings=N shows more"
std::string leftOutText(const Report& report);

class Console {
 public:
  // Other calls read the options again, so the options may change after this call.
  explicit Console(const Options* options);

  // --- Results ---

  void write(std::string_view text);
  void writeLine(std::string_view line, Color color = Color::kNone);
  // The text of a part of a result, in this colour if results have colours.
  std::string painted(std::string_view text, Color color) const;
  // Writes findings about a file, each after its position.
  void write(const std::string& file, const Report& report);
  // Writes a JSON document. The document of an analysis also names the order.
  void write(const std::vector<ReportInput>& inputs);
  void write(const std::vector<ReportInput>& inputs, FiltersInspect::Order order);
  // The most letters that a line of results may have, or 0 if lines may have any length. This is
  // --width, or else the width of the terminal, or else the variable COLUMNS, or else 80.
  std::size_t width() const;
  // Writes the results that are not written yet.
  void flush();
  // True if writing to standard output has failed, so that no more results can be written.
  bool isClosed() const { return closed_; }

  // --- Errors ---

  // Reports an error. The program then exits with kExitTrouble. `file` may be empty. If there is a
  // source, a terminal also shows the wrong line with a mark under the wrong word. `first_line` is
  // the number of the source's first line.
  void trouble(Code code, const std::string& file, const std::string& message);
  void trouble(const std::string& file, const Finding& finding, std::string_view source = {},
               std::size_t first_line = 1);
  // Reports an error of the system about a file.
  void systemTrouble(Code code, const std::string& file, int error);
  bool hasFailed() const { return failed_; }
  // Writes a report that is neither an error nor a result: the losses of a file, or the reason why
  // there is nothing to show.
  void aside(const std::string& file, const Report& report);
  // Writes advice for people.
  void hint(const std::string& line);
  // Writes a line if --verbose is given.
  void note(const std::string& line);
  // Reports that the whole file is refused.
  void refuse(const std::string& file);

  // If reading a file takes longer than a second, shows a line on a terminal until the reading
  // ends.
  void showProgress(const std::string& file);
  // Returns a function that shows the progress of the work on `place`. The function is empty if
  // there is no terminal.
  std::function<void(std::size_t done, std::size_t all)> progressOf(std::string_view doing,
                                                                    std::string_view place);
  void hideProgress();

  // Writes the remaining output and returns the exit code of the program.
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
