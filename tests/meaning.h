#ifndef FILTER_COMMON_TESTS_MEANING_H_
#define FILTER_COMMON_TESTS_MEANING_H_

// Checks whether the library reads bytes correctly. The reference is the protocol-buffer runtime:
// it parses the bytes as one message, which is then converted. The library must give the same
// object as this conversion. Tests and fuzz/ use these checks; each returns the fault as text, or
// an empty text.

#include <filter_common/filter_serialized.h>

#include "entry_samples.h"

namespace catalogue {

// Returns a fault if the object differs from its copy or from the object rebuilt from its bytes, or
// if they print differently.
template <class T>
std::string faultOf(const T& object) {
  const std::string bytes = bytesOf(object), text = printed(object);
  FiltersSerialized buffer;
  object.serialize(&buffer);
  if (std::string(buffer.data(), buffer.size()) != bytes + '\0') return "a buffer's bytes differ";
  for (const T& twin : {T(object), T(bytes), T(buffer)}) {
    if (!(object == twin) || !(twin == object)) return "differs from a twin:\n" + text;
    if (bytesOf(twin) != bytes || printed(twin) != text) return "shows other than a twin:\n" + text;
  }
  return "";
}

inline std::unique_ptr<FiltersEntry> converted(const FiltersEntryPB& message) {
  auto entry = std::make_unique<FiltersEntry>();
  entry->convertFromFiltersEntryPB(&message);
  return entry;
}

// Converts the reference message. The id, priority, stage and type of the group are set first, even
// if they come last in the bytes. Then each entry is inserted as a caller would insert it.
inline std::unique_ptr<FiltersGroup> converted(FiltersGroupPB message) {
  google::protobuf::RepeatedPtrField<FiltersEntryPB> entries;
  entries.Swap(message.mutable_entries_());
  auto group = std::make_unique<FiltersGroup>(0);
  group->convertFromFiltersGroupPB(&message);
  for (const auto& entry : entries) static_cast<void>(group->insertEntry(*converted(entry)));
  return group;
}

// Returns the object. If making the object throws std::invalid_argument, returns null and the text
// of the exception. Reading bytes may throw no other exception.
template <class Make>
auto outcomeOf(Make make) -> std::pair<decltype(make()), std::string> {
  try {
    return {make(), ""};
  } catch (const std::invalid_argument& refusal) {
    return {nullptr, refusal.what()};
  }
}

// Returns a fault if the library and the reference read the bytes differently, or if the object has
// a fault. The bytes are read from a string and from a buffer, which has one more zero byte.
template <class T>
std::string faultIn(const std::string& bytes) {
  using Message =
      std::conditional_t<std::is_same_v<T, FiltersEntry>, FiltersEntryPB, FiltersGroupPB>;
  FiltersSerialized buffer(bytes);
  for (const bool inBuffer : {false, true}) {
    const auto [made, refusal] = outcomeOf(
        [&] { return inBuffer ? std::make_unique<T>(buffer) : std::make_unique<T>(bytes); });
    const auto [meant, why] = outcomeOf([&] {
      Message message;
      message.ParsePartialFromString(inBuffer ? bytes + '\0' : bytes);
      return converted(message);
    });
    if (refusal != why) return "'" + refusal + "' instead of '" + why + "'";
    if (made == nullptr) return refusal.find("ActionMplsPortSet: ") == 0 ? "" : refusal;
    if (!(*made == *meant) || bytesOf(*made) != bytesOf(*meant)) return "means something else";
    if (const std::string fault = faultOf(*made); fault != "") return fault;
  }
  return "";
}

// A field whose value is bytes or a message, and whose tag has one byte.
inline std::string bytesField(unsigned tag, const std::string& bytes) {
  std::string field(1, static_cast<char>(tag));
  std::size_t size = bytes.size();
  for (; size >= 0x80; size >>= 7) field += static_cast<char>(size | 0x80);
  return field + static_cast<char>(size) + bytes;
}

// Bytes of groups that this library would not write: the fields of a group, with odd bytes before,
// between or after them that look almost like the library's own form.
inline std::vector<std::string> oddGroups() {
  const std::string head = fromHex("0807100518022001"), entry = fromHex("2a0208012a020863");
  std::vector<std::string> groups = {entry + head, head + entry + fromHex("18032005") + entry};
  std::istringstream odd(
      "2a00 3007 310102030405060708 320161 33080734 3501020304 "  // empty, unknown
      "2807 1a0161 "                                              // of another wire type
      "aa0000 8000 2a82000807 1882808080f07f "                    // longer than needed
      "2a8280808080000807 2a82808080808080808000 8080808010 "     // longer than any
      "2a82808080100807 2affffffff070807 2a7f0807 2a0408072a09 "  // overrunning
      "18ffffffffffffffffffff01 aa 18 "                           // without an end
      "2a0e080110012208080110ffffffffff "  // numbers of a list that are too long
      "2a1308011001220d080110ffffffffffffffffff01 2a1308011001220d08021880808080808080808001 "
      "2a0308070c 2a03080700 00 0c 34 1802 080a");  // bytes that do not belong here
  for (std::string field; odd >> field;) {
    for (const std::string& start : {std::string(), head, entry, head + entry}) {
      for (const std::string& end : {std::string(), entry}) {
        groups.push_back(start + fromHex(field) + end);
      }
    }
  }
  return groups;
}

}  // namespace catalogue

#endif  // FILTER_COMMON_TESTS_MEANING_H_
