// One piece of work for valgrind's callgrind, which counts the instructions below measured():
//   instructions serialize|write|rebuild|read
#include <cstring>
#include <optional>

#include "workload.h"

namespace benchmarks {
namespace {

constexpr unsigned kRules = 1000;

}  // namespace
}  // namespace benchmarks

using namespace benchmarks;

// Not to be folded into its caller, and named so that it is found.
extern "C" __attribute__((noinline)) void measured(const char* work, const FiltersGroup& group,
                                                   const std::string& policer,
                                                   const std::string& bytes,
                                                   std::optional<FiltersGroup>* made) {
  std::string out;
  if (std::strcmp(work, "serialize") == 0) {
    group.serialize(&out);
  } else if (std::strcmp(work, "write") == 0) {
    writeWithMessages(kRules, policer, &out);
  } else if (std::strcmp(work, "rebuild") == 0) {
    made->emplace(bytes);
  } else {
    require(std::strcmp(work, "read") == 0, "unknown work");
    readWithMessages(bytes);
  }
}

int main(int argc, char** argv) {
  require(argc == 2, "name the work: serialize, write, rebuild or read");
  const FiltersGroup group = makeGroup(kRules);
  const std::string policer = makePolicer().Serialize();
  std::string bytes;
  group.serialize(&bytes);
  std::optional<FiltersGroup> made;  // destroyed outside of what is measured
  measured(argv[1], group, policer, bytes, &made);
}
