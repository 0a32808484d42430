#ifndef FILTER_COMMON_BENCHMARKS_HOSTILE_H_
#define FILTER_COMMON_BENCHMARKS_HOSTILE_H_

// The bytes of the groups that are the most expensive to read: one group of a given size for each
// kind of content.

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace hostile {

inline std::string varint(std::size_t value) {
  std::string bytes;
  for (; value > 127; value >>= 7) bytes.push_back(static_cast<char>(value | 128));
  bytes.push_back(static_cast<char>(value));
  return bytes;
}

// A length-delimited field with the given number and content.
inline std::string field(unsigned number, const std::string& content) {
  return varint(number << 3 | 2) + varint(content.size()) + content;
}

inline std::string entryOf(const std::string& content) { return field(5, content); }
inline std::string match(char code, const std::string& content) {
  return field(4, std::string{8, code} + content);
}
inline std::string action(char code, const std::string& content) {
  return field(5, std::string{8, code} + content);
}

struct Group {
  const char* kind;
  std::string bytes;  // the bytes after the stage and the type
};

// The stage and the type of a group. The stage is none, and the type admits the matches below, so
// that the group keeps everything that is read.
inline const std::string kHead = "\x18" + std::string(1, '\0') + "\x20\x01";

inline std::vector<Group> groups(std::size_t size) {
  using namespace std::string_literals;
  const auto threeBytes = [](std::size_t i) { return varint(16384 + i % 49152); };
  // Repeats an element until the group is full; `element` gets the number of the repetition.
  const auto filledBy = [size](const std::function<std::string(std::size_t)>& element) {
    std::string bytes;
    for (std::size_t i = 0; bytes.size() < size - 32; ++i) bytes += element(i);
    return bytes;
  };
  const auto filled = [&](const std::string& element) {
    return filledBy([&](std::size_t) { return element; });
  };
  return {
      {"empty entries", filled(entryOf(""))},
      {"entries of an id alone",
       filledBy([](std::size_t i) { return entryOf("\x08" + varint(i)); })},
      {"empty matches in one entry", entryOf(filled(field(4, "")))},
      {"empty actions in one entry", entryOf(filled(field(5, "")))},
      {"empty counters in one entry", entryOf(filled(field(6, "")))},
      {"entries of one empty match", filled(entryOf(field(4, "")))},
      {"packed ports in a match", entryOf(match(1, field(2, filled("\1"))))},
      {"packed port types in a match", entryOf(match(1, field(20, filled("\1"))))},
      {"packed VLAN ids in a match", entryOf(match(2, field(3, filledBy(threeBytes))))},
      {"packed PCPs in a match", entryOf(match(12, field(9, filled("\1"))))},
      {"packed ports of a redirection", entryOf(action(11, field(2, filled("\1"))))},
      {"packed ports to block", entryOf(action(3, field(2, filled("\1"))))},
      {"ports one by one in a match", entryOf(match(1, filled("\x10\1"s)))},
      {"many matches of some ports", entryOf(filled(match(1, field(2, std::string(16, 1)))))},
      {"missing required fields", filled(entryOf(field(4, "") + field(5, "") + field(6, "")))},
      {"a policer of noise", entryOf(field(3, std::string(size - 32, '\x7f')))},
      {"unknown fields", filled(field(15, ""))},
  };
}

}  // namespace hostile

#endif  // FILTER_COMMON_BENCHMARKS_HOSTILE_H_
