#ifndef FILTER_INSPECT_TOOLS_COMMANDS_H_
#define FILTER_INSPECT_TOOLS_COMMANDS_H_

// The commands of filter-inspect: a row each in the table of command_line.cpp, which is all that
// the rest of the program knows of them.

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace CLI {
class App;
class Option;
}  // namespace CLI

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
  std::size_t maxBytes = std::size_t{64} << 20;
  std::size_t maxFindings = 1000;
  std::size_t maxGroups = 1000000;

  std::vector<std::string> files;
  std::string as;
  std::string to;
  std::string output = "-";
  std::string stage;
  std::string type;
  bool removeFirst = false;
  std::string enumeration;
  std::string order;
  bool overlaps = false;
  std::optional<std::string> picture;
  std::optional<std::string> packet;
  std::optional<std::string> packets;
  std::uint64_t maxSteps = 100000;
};

class Console;

struct Command {
  const char* name;
  const char* summary;
  void (*declare)(CLI::App* command, Options* options);
  Exit (*run)(const Options& options, Console* console);
};

// Reads the command line. Null when there is nothing to run: help was printed, or trouble was told.
const Command* readCommandLine(int argc, char** argv, Options* options, Console* console);

// For declare(): arguments and options that commands share, and options whose values have names.
void declareFiles(CLI::App* command, Options* options, int atLeast, int atMost);
void declareStageAndType(CLI::App* command, Options* options);
CLI::Option* declareOrder(CLI::App* command, Options* options);
CLI::Option* declareChoice(CLI::App* to, const std::string& name, std::string* value,
                           std::vector<std::string> choices, const std::string& about);

void declareNumber(CLI::App* to, const char* name, std::uint64_t* value, const std::string& about);

// The candidate that takes the fewest changes of a letter to become the word.
std::string nearest(std::string_view word, const std::vector<std::string>& candidates);

inline constexpr int kAnyNumber = -1;

void declareShow(CLI::App* command, Options* options);
void declareCheck(CLI::App* command, Options* options);
void declareConvert(CLI::App* command, Options* options);
void declareDiff(CLI::App* command, Options* options);
void declarePlan(CLI::App* command, Options* options);
void declareAnalyse(CLI::App* command, Options* options);
void declareTrace(CLI::App* command, Options* options);
void declareCapabilities(CLI::App* command, Options* options);
void declareNames(CLI::App* command, Options* options);

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
