#ifndef FILTER_INSPECT_TOOLS_COMMANDS_H_
#define FILTER_INSPECT_TOOLS_COMMANDS_H_

// The commands of filter-inspect. What each takes, and that it is there at all, stands in
// command_line.cpp.

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace FilterInspectTool {

// How the program ends. Of several inputs the worst counts.
enum Exit { kExitFine = 0, kExitFound = 1, kExitTrouble = 2 };

// What the command line says; those of single commands are empty elsewhere.
struct Options {
  std::string command;
  bool json = false;
  std::string color = "auto";
  std::string framing = "auto";
  std::string from = "auto";
  std::size_t max_bytes = std::size_t{64} << 20;
  std::size_t max_findings = 1000;
  std::size_t max_groups = 1000000;

  std::vector<std::string> files;
  std::string as;
  std::string to;
  std::string output = "-";
  std::string stage;
  std::string type;
  bool remove_first = false;
  std::string enumeration;
  std::string order;
  bool overlaps = false;
  bool redundant = true;
  std::optional<std::string> picture;
  std::optional<std::string> packet;
  std::optional<std::string> packets;
  std::uint64_t max_steps = 100000;
};

class Console;

// What a command does.
using Run = Exit(const Options& options, Console* console);

// Reads the command line. Null when there is nothing to run: help was printed, or trouble was told.
Run* readCommandLine(int argc, char** argv, Options* options, Console* console);

// The names that names takes for one enumeration.
std::vector<std::string> enumerationNames();

Exit runShow(const Options& options, Console* console);
Exit runCheck(const Options& options, Console* console);
Exit runConvert(const Options& options, Console* console);
Exit runDiff(const Options& options, Console* console);
Exit runPlan(const Options& options, Console* console);
Exit runAnalyse(const Options& options, Console* console);
Exit runTrace(const Options& options, Console* console);
Exit runCapabilities(const Options& options, Console* console);
Exit runNames(const Options& options, Console* console);

}  // namespace FilterInspectTool

#endif  // FILTER_INSPECT_TOOLS_COMMANDS_H_
