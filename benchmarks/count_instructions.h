#ifndef FILTER_COMMON_BENCHMARKS_COUNT_INSTRUCTIONS_H_
#define FILTER_COMMON_BENCHMARKS_COUNT_INSTRUCTIONS_H_

#include <sys/wait.h>
#include <unistd.h>
#include <valgrind/callgrind.h>

#include "require.h"

namespace benchmarks {

// Counts the instructions of an operation under valgrind's callgrind, in a process of its own, so
// that earlier operations do not change its heap. Runs `warm` first, without counting it. callgrind
// writes the totals into a file that names `name` as its trigger.
template <class Warm, class Run>
void countInstructions(const char* name, const Warm& warm, const Run& run) {
  const pid_t child = fork();
  require(child >= 0, "there is no process for an operation");
  int status = 0;
  if (child > 0) {
    require(waitpid(child, &status, 0) == child && status == 0, "an operation failed");
    return;
  }
  warm();
  CALLGRIND_START_INSTRUMENTATION;
  CALLGRIND_ZERO_STATS;
  run();
  CALLGRIND_DUMP_STATS_AT(name);
  CALLGRIND_STOP_INSTRUMENTATION;
  _exit(0);
}

}  // namespace benchmarks

#endif  // FILTER_COMMON_BENCHMARKS_COUNT_INSTRUCTIONS_H_
