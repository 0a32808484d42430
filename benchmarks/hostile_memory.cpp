// Measures the memory that hostile groups of 1 MiB need. There are three figures: the most memory
// in use while a group is rebuilt (from bytes as serialize() writes them, and from other bytes),
// the memory of the finished group, and the most memory in use while the message runtime alone
// parses the same bytes on an arena. (Parsing without an arena can leak when memory runs out.)
// Fails if the first figure is more than 1.25 times the sum of the other two.

#include <filter_common/filter_groups.h>
#include <filter_common/filter_groups.pb.h>
#include <google/protobuf/arena.h>

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <functional>
#include <string>

#include "hostile.h"
#include "memory_control.h"

namespace {

using namespace FiltersCommon;

constexpr std::size_t kSize = 1 << 20;
constexpr double kLimit = 1.25;

std::size_t peakOf(const std::function<void()>& work) {
  const std::size_t before = memory::held;
  memory::restartPeak();
  work();
  return memory::peak - before;
}

std::size_t peakOfParsing(const std::string& bytes) {
  return peakOf([&] {
    google::protobuf::Arena arena;
    FiltersGroupPB::default_instance().New(&arena)->ParsePartialFromString(bytes);
  });
}

bool withinLimit(const char* kind, const std::string& entries) {
  const auto mebibytes = [](std::size_t size) { return static_cast<double>(size) / kSize; };
  const std::string bytes = hostile::kHead + entries;
  std::size_t finished = 0;
  const std::size_t rebuilt = peakOf([&] {
    const std::size_t before = memory::held;
    const FiltersGroup group(bytes);
    finished = memory::held - before;
  });
  const std::string oddly = bytes + hostile::field(15, "");
  const std::size_t rebuiltOddly = peakOf([&] { FiltersGroup{oddly}; });
  const std::size_t parsed = peakOfParsing(bytes);
  const double ratio = mebibytes(std::max(rebuilt, rebuiltOddly)) / mebibytes(parsed + finished);
  std::printf("%-28s %8.1f %8.1f %8.1f %8.1f %8.2f%s\n", kind, mebibytes(rebuilt),
              mebibytes(rebuiltOddly), mebibytes(finished), mebibytes(parsed), ratio,
              ratio > kLimit ? "  above" : "");
  return ratio <= kLimit;
}

}  // namespace

int main() {
  std::printf("%-28s %8s %8s %8s %8s %8s\n", "MiB for a group of 1 MiB", "rebuilt", "oddly", "held",
              "parsed", "ratio");
  bool good = true;
  for (const hostile::Group& group : hostile::groups(kSize))
    good &= withinLimit(group.kind, group.bytes);
  std::puts(good ? "all within 1.25 of what cannot be avoided" : "FAILED");
  return good ? 0 : 1;
}
