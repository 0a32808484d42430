// What hostile groups of 1 MiB cost: the most memory in use while a group is rebuilt from them, as
// serialize() would write them and in a shape that it would not; what the finished group holds; and
// the most in use while the message runtime alone parses the same bytes on an arena, the one way in
// which it leaks nothing when memory runs out. Fails when rebuilding takes more than 1.25 times
// what cannot be avoided, parsing and what is held.

#include <filter_common/filter_groups.h>
#include <filter_common/filter_groups.pb.h>
#include <google/protobuf/arena.h>

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <functional>
#include <string>

#include "memory_control.h"

namespace {

using namespace FiltersCommon;

constexpr std::size_t kSize = 1 << 20;
constexpr double kLimit = 1.25;

std::string varint(std::size_t value) {
  std::string bytes;
  for (; value > 127; value >>= 7) bytes.push_back(static_cast<char>(value | 128));
  bytes.push_back(static_cast<char>(value));
  return bytes;
}

// A field of the given number whose content has a length.
std::string field(unsigned number, const std::string& content) {
  return varint(number << 3 | 2) + varint(content.size()) + content;
}

// As many elements as fill a group; each is told its number.
std::string filled(const std::function<std::string(std::size_t)>& element) {
  std::string bytes;
  for (std::size_t i = 0; bytes.size() < kSize - 32; ++i) bytes += element(i);
  return bytes;
}
std::string filled(const std::string& element) {
  return filled([&](std::size_t) { return element; });
}

std::string entryOf(const std::string& content) { return field(5, content); }
std::string match(char code, const std::string& content) {
  return field(4, std::string{8, code} + content);
}
std::string action(char code, const std::string& content) {
  return field(5, std::string{8, code} + content);
}

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
  // No stage, and a type that admits the matches below: what is read is kept.
  const std::string bytes = "\x18" + std::string(1, '\0') + "\x20\x01" + entries;
  std::size_t finished = 0;
  const std::size_t rebuilt = peakOf([&] {
    const std::size_t before = memory::held;
    const FiltersGroup group(bytes);
    finished = memory::held - before;
  });
  const std::string oddly = bytes + field(15, "");
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
  using namespace std::string_literals;
  const auto threeBytes = [](std::size_t i) { return varint(16384 + i % 49152); };
  const struct {
    const char* kind;
    std::string bytes;
  } groups[] = {
      {"empty entries", filled(entryOf(""))},
      {"entries of an id alone", filled([](std::size_t i) { return entryOf("\x08" + varint(i)); })},
      {"empty matches in one entry", entryOf(filled(field(4, "")))},
      {"empty actions in one entry", entryOf(filled(field(5, "")))},
      {"empty counters in one entry", entryOf(filled(field(6, "")))},
      {"entries of one empty match", filled(entryOf(field(4, "")))},
      {"packed ports in a match", entryOf(match(1, field(2, filled("\1"))))},
      {"packed port types in a match", entryOf(match(1, field(20, filled("\1"))))},
      {"packed VLAN ids in a match", entryOf(match(2, field(3, filled(threeBytes))))},
      {"packed PCPs in a match", entryOf(match(12, field(9, filled("\1"))))},
      {"packed ports of a redirection", entryOf(action(11, field(2, filled("\1"))))},
      {"packed ports to block", entryOf(action(3, field(2, filled("\1"))))},
      {"ports one by one in a match", entryOf(match(1, filled("\x10\1"s)))},
      {"many matches of some ports", entryOf(filled(match(1, field(2, std::string(16, 1)))))},
      {"missing required fields", filled(entryOf(field(4, "") + field(5, "") + field(6, "")))},
      {"a policer of noise", entryOf(field(3, std::string(kSize - 32, '\x7f')))},
      {"unknown fields", filled(field(15, ""))},
  };
  std::printf("%-28s %8s %8s %8s %8s %8s\n", "MiB for a group of 1 MiB", "rebuilt", "oddly", "held",
              "parsed", "ratio");
  bool good = true;
  for (const auto& group : groups) good &= withinLimit(group.kind, group.bytes);
  std::puts(good ? "all within 1.25 of what cannot be avoided" : "FAILED");
  return good ? 0 : 1;
}
