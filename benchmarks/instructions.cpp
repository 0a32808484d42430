// Counts the instructions of each operation for a group of N rules, under valgrind's callgrind. The
// counts are the same in every run.
//   instructions N [OPERATION...]
// Each operation runs in a process of its own, so that it does not find the heap of another one. It
// runs twice and only the second run is counted, when the runtime's caches are full and memory is
// allocated. callgrind writes a file of totals for each operation, named by its trigger.
#include <sys/wait.h>
#include <unistd.h>
#include <valgrind/callgrind.h>

#include "operations.h"

using namespace benchmarks;

int main(int argc, char** argv) {
  require(argc > 1, "say how many rules");
  Fixture fixture(static_cast<unsigned>(std::atoi(argv[1])));
  const auto count = [&](const Operation& operation) {
    const pid_t child = fork();
    require(child >= 0, "there is no process for an operation");
    int status = 0;
    if (child > 0) {
      require(waitpid(child, &status, 0) == child && status == 0, "an operation failed");
      return;
    }
    operation.warm(&fixture);
    CALLGRIND_START_INSTRUMENTATION;
    CALLGRIND_ZERO_STATS;
    (fixture.*operation.run)();
    CALLGRIND_DUMP_STATS_AT(operation.name);
    CALLGRIND_STOP_INSTRUMENTATION;
    _exit(0);
  };
  if (argc == 2) std::for_each(std::begin(kOperations), std::end(kOperations), count);
  for (int i = 2; i < argc; ++i) count(operationOf(argv[i]));
}
