// filter-inspect examines groups of filter rules without a device. This program reads files, calls
// libfilter_inspect, and prints the answers. filter-inspect(1) describes the program.

#include <csignal>
#include <new>

#include "commands.h"
#include "console.h"

int main(int argc, char** argv) {
  using namespace FilterInspectTool;
  // A closed pipe ends the program silently, even if its caller ignores the signal.
  std::signal(SIGPIPE, SIG_DFL);
  // Because SIGXFSZ is ignored, a write beyond the largest permitted file size fails instead of
  // ending the program. The program then exits with 2.
  std::signal(SIGXFSZ, SIG_IGN);
  Options options;
  Console console(&options);
  Exit exit = kExitFine;
  try {
    if (Run* run = readCommandLine(argc, argv, &options, &console)) exit = run(options, &console);
  } catch (const std::bad_alloc&) {
    console.trouble(FiltersInspect::Code::kLimitExceeded, "", "there is not enough memory");
  }
  return console.finish(exit);
}
