// filter-inspect: looks into groups of filter rules away from the device. What is true of them says
// libfilter_inspect; the program reads files, asks, and prints. filter-inspect(1) describes it.

#include <csignal>
#include <new>

#include "commands.h"
#include "console.h"

int main(int argc, char** argv) {
  using namespace FilterInspectTool;
  // Who no longer reads makes a write fail, which is told and ends the program as other trouble.
  std::signal(SIGPIPE, SIG_IGN);
  std::signal(SIGXFSZ, SIG_IGN);  // the same of a file that would grow beyond what is allowed
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
