// Measures strict decoding of hostile groups with the default limit of findings: the most memory in
// use for 1 MiB, the CPU time, and the factor by which the time grows when the number of bytes
// doubles. Fails if 1 MiB takes more than 3 s or 256 MiB, or if twice the bytes take more than
// three times as long.

#include <filter_inspect/filter_decode.h>

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <ctime>
#include <string>
#include <vector>

#include "hostile.h"
#include "memory_control.h"

namespace {

using namespace std::string_literals;
using hostile::action;
using hostile::entryOf;
using hostile::field;
using hostile::match;

constexpr std::size_t kSize = 1 << 20;
constexpr double kSeconds = 3;
constexpr double kMebibytes = 256;
constexpr double kGrowth = 3;
constexpr double kTooShort = 0.1;  // seconds; the growth of shorter times is not checked
constexpr int kRuns = 3;           // other processes disturb some runs, but not all

std::string repeated(const std::string& element, std::size_t size) {
  std::string bytes;
  while (bytes.size() < size - 32) bytes += element;
  return bytes;
}

// The hostile groups of hostile.h, and further groups that give many findings.
std::vector<hostile::Group> groups(std::size_t size) {
  std::vector<hostile::Group> all = hostile::groups(size);
  const std::string head = hostile::kHead;
  const hostile::Group more[] = {
      {"matches of one cut VLAN id", entryOf(repeated(match(2, "\x18\xe4\x80\4"), size))},
      {"VLAN ids cut one by one", entryOf(match(2, repeated("\x18\xe4\x80\4", size)))},
      {"a number given again", entryOf(repeated("\x10\1", size))},
      {"overlong numbers", entryOf(repeated("\x90\x80\x80\x80\0\x81\x80\x80\x80\0"s, size))},
      {"refused matches", entryOf(match(9, "") + repeated(match(14, ""), size))},
      {"refused entries", repeated(entryOf(match(27, "")), size)},
      {"entries of an unknown stage", "\x18\x63" + repeated(entryOf(""), size)},
      {"actions that throw", entryOf(repeated(action(18, ""), size))},
      {"groups within groups", std::string(size / 2, '\x7b') + std::string(size / 2, '\x7c')},
      {"short groups within groups",
       repeated(std::string(99, '\x7b') + std::string(99, '\x7c'), size)},
  };
  all.insert(all.end(), std::begin(more), std::end(more));
  return all;
}

struct Cost {
  double seconds, mebibytes;
  std::size_t findings;
};

Cost costOf(const std::string& entries) {
  const std::string bytes = hostile::kHead + entries;
  const std::size_t before = memory::held;
  memory::restartPeak();
  const std::clock_t start = std::clock();
  const auto decoded = FiltersInspect::decodeGroup(bytes);
  const std::clock_t end = std::clock();
  return {static_cast<double>(end - start) / CLOCKS_PER_SEC,
          static_cast<double>(memory::peak - before) / (1 << 20),
          decoded.report.findings.size() + decoded.report.left_out};
}

}  // namespace

int main() {
  std::printf("%-30s %9s %8s %8s %8s\n", "a group of 1 MiB", "findings", "seconds", "growth",
              "MiB");
  const std::vector<hostile::Group> halves = groups(kSize / 2), wholes = groups(kSize);
  bool good = true;
  for (std::size_t i = 0; i < wholes.size(); ++i) {
    Cost whole{};
    double growth = 0;
    bool within = false;
    for (int run = 0; run < kRuns && !within; ++run) {
      const Cost half = costOf(halves[i].bytes);
      whole = costOf(wholes[i].bytes);
      growth = whole.seconds / std::max(half.seconds, kTooShort);
      within = whole.seconds <= kSeconds && whole.mebibytes <= kMebibytes && growth <= kGrowth;
    }
    std::printf("%-30s %9zu %8.2f %8.2f %8.1f%s\n", wholes[i].kind, whole.findings, whole.seconds,
                growth, whole.mebibytes, within ? "" : "  above");
    good &= within;
  }
  std::puts(good ? "all within 3 s and 256 MiB, and linear" : "FAILED");
  return good ? 0 : 1;
}
