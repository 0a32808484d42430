// filter-inspect looks into groups of filter rules away from the device. libfilter_inspect finds
// the facts; this program reads files, asks, and prints. filter-inspect(1) describes it.

#include <csignal>
#include <new>

#include "commands.h"
#include "console.h"

int main(int argc, char** argv) {
  using namespace FilterInspectTool;
  // A closed pipe ends the program silently, even if its caller ignores the signal.
  std::signal(SIGPIPE, SIG_DFL);
  // Without this signal, a write fails if the file may not grow any more. That is reported as exit
  // 2.
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
