#ifndef FILTER_INSPECT_TOOLS_COMMANDS_H_
#define FILTER_INSPECT_TOOLS_COMMANDS_H_

// The commands of filter-inspect. command_line.cpp lists them with their options.

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace FilterInspectTool {

// The exit code of the program. For several inputs, the exit code is the worst of theirs.
enum Exit { kExitFine = 0, kExitFound = 1, kExitTrouble = 2 };

// The options of the command line. The options that a command does not have are empty.
struct Options {
  std::string command;
  bool json = false;
  bool quiet = false;
  bool verbose = false;
  std::string color = "auto";
  std::string framing = "auto";
  std::string from = "auto";
  std::size_t max_bytes = std::size_t{64} << 20;
  std::size_t max_findings = 1000;
  std::size_t max_groups = 1000000;

  std::vector<std::string> files;
  std::string as;
  std::string to;
  bool compact = false;
  std::string output = "-";
  std::string stage;
  std::string type;
  bool remove_first = false;
  std::string enumeration;
  std::string order;
  std::optional<std::size_t> width;
  std::vector<std::uint32_t> groups, entries;  // the ids that are asked for; empty for all
  bool overlaps = false;
  bool redundant = true;
  std::optional<std::string> picture;
  std::optional<std::string> packet;
  std::optional<std::string> packets;  // a file, or a packet set
  std::optional<std::string> then;
  bool touching = false;
  std::optional<std::string> capture;  // a file of captured traffic
  std::string assumed;                 // fields of all packets of the capture
  std::uint64_t max_steps = 100000;
  std::string policy;  // a file
  std::optional<std::string> junit;
};

class Console;

// The function of a command.
using Run = Exit(const Options& options, Console* console);

// Reads the command line. Returns null if there is nothing to run, because help was printed or an
// error was reported.
Run* readCommandLine(int argc, char** argv, Options* options, Console* console);

// The words that the command `names` accepts as the name of an enumeration.
std::vector<std::string> enumerationNames();

// The names of the fields of a packet.
std::vector<std::string_view> fieldNames();

// The releases of the program, of its libraries and of the message runtime, each on one line.
std::string versions();

Exit runShow(const Options& options, Console* console);
Exit runCheck(const Options& options, Console* console);
Exit runConvert(const Options& options, Console* console);
Exit runDiff(const Options& options, Console* console);
Exit runPlan(const Options& options, Console* console);
Exit runAnalyse(const Options& options, Console* console);
Exit runExpect(const Options& options, Console* console);
Exit runTrace(const Options& options, Console* console);
Exit runSearch(const Options& options, Console* console);
Exit runHits(const Options& options, Console* console);
Exit runCapabilities(const Options& options, Console* console);
Exit runNames(const Options& options, Console* console);

}  // namespace FilterInspectTool

#endif  // FILTER_INSPECT_TOOLS_COMMANDS_H_
