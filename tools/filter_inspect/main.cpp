// filter-inspect looks into groups of filter rules away from the device. libfilter_inspect finds
// the facts; this program reads files, asks, and prints. filter-inspect(1) describes it.

#include <csignal>
#include <new>

#include "commands.h"
#include "console.h"

int main(int argc, char** argv) {
  using namespace FilterInspectTool;
  // Ignore SIGPIPE: a closed pipe becomes a failed write, reported as exit 2.
  std::signal(SIGPIPE, SIG_IGN);
  std::signal(SIGXFSZ, SIG_IGN);  // the same for a file that may not grow any more
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
