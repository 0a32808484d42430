// Counts the instructions of each operation for a group of N rules. The counts are the same in
// every run.
//   instructions N [OPERATION...]
// Each operation runs twice, and only the second run is counted. In the second run, the runtime's
// caches are filled and memory is already allocated.
#include "count_instructions.h"
#include "operations.h"

using namespace benchmarks;

int main(int argc, char** argv) {
  require(argc > 1, "say how many rules");
  Fixture fixture(static_cast<unsigned>(std::atoi(argv[1])));
  const auto count = [&](const Operation& operation) {
    countInstructions(
        operation.name, [&] { operation.warm(&fixture); }, [&] { (fixture.*operation.run)(); });
  };
  if (argc == 2) std::for_each(std::begin(kOperations), std::end(kOperations), count);
  for (int i = 2; i < argc; ++i) count(operationOf(argv[i]));
}
