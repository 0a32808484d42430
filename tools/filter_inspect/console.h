#ifndef FILTER_INSPECT_TOOLS_CONSOLE_H_
#define FILTER_INSPECT_TOOLS_CONSOLE_H_

// What the program says: results on standard output, trouble and losses on standard error, both as
// lines or, with --json, as documents.

#include <filter_inspect/filter_analysis.h>
#include <filter_inspect/filter_report.h>

#include <cstddef>
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

// "1 group", "2 groups".
std::string counted(std::size_t number, std::string_view what);

// Without what a terminal takes for a command, or a reader for the end of a line.
std::string printable(std::string text);

// All of it, to an open file. 0, or the system's number of what went wrong.
int writeAll(int handle, std::string_view text);

// A finding that is a sentence and no more.
Finding findingOf(Code code, std::string message);

// Where in a file a finding is: "g.txt:12:7" in text and JSON, "g.bin: group 1" in bytes, else the
// file alone.
std::string placeOf(const std::string& file, const Finding& finding);

// "left out: 3 warnings, 101 notes; --max-findings=N shows more"
std::string leftOutText(const Report& report);

class Console {
 public:
  // The options are looked at when something is said.
  explicit Console(const Options* options);

  // --- Results ---

  void write(std::string_view text);
  void writeLine(std::string_view line, Color color = Color::kNone);
  // About a file: each finding behind its place.
  void write(const std::string& file, const Report& report);
  // As a document; of analysis with its order.
  void write(const std::vector<ReportInput>& inputs);
  void write(const std::vector<ReportInput>& inputs, FiltersInspect::Order order);
  // What has been written so far is read by someone now.
  void flush();
  // Whether that failed: nothing more can be written.
  bool isClosed() const { return closed_; }

  // --- Trouble ---

  // Something went wrong: the program ends with kExitTrouble. `file` may be empty.
  void trouble(Code code, const std::string& file, const std::string& message);
  void trouble(const std::string& file, const Finding& finding);
  // What the system says about a file.
  void systemTrouble(Code code, const std::string& file, int error);
  bool hasFailed() const { return failed_; }
  // Not trouble, and no result: what is lost of a file, or why there is nothing to show.
  void aside(const std::string& file, const Report& report);
  // Advice for a person.
  void hint(const std::string& line);

  // A line on a terminal as long as reading a file takes longer than a second.
  void showProgress(const std::string& file);
  // The same of work on a part of a file, with how much of it is done; empty without a terminal.
  std::function<void(std::size_t done, std::size_t all)> progressOf(std::string_view doing,
                                                                    std::string_view place);
  void hideProgress();

  // Prints what has not been printed yet, and says how the program ends.
  Exit finish(Exit exit);
 private:
  std::string painted(int stream, std::string_view text, Color color) const;
  std::string linesOf(int stream, const std::string& file, Finding finding) const;
  void keep(const std::string& file, Report report);
  void say(const std::string& text);

  const Options& options_;
  const bool shares_terminal_;  // whether results stand where the progress line does
  std::string results_;         // not yet written
  std::vector<ReportInput> troubles_;
  bool failed_ = false;
  bool closed_ = false;  // standard output takes no more
};

}  // namespace FilterInspectTool

#endif  // FILTER_INSPECT_TOOLS_CONSOLE_H_
