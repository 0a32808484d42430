#ifndef FILTER_COMMON_TESTS_ENTRY_SAMPLES_H_
#define FILTER_COMMON_TESTS_ENTRY_SAMPLES_H_

// Entries and groups made from the samples of single matches and actions.

#include <filter_common/filter_groups.h>
#include <filter_common/filter_groups.pb.h>
#include <policer/policer.h>

#include <map>

#include "rules.h"
#include "samples.h"

namespace catalogue {

// A map from each of the given codes to its sample.
template <class Code, class Base>
auto pick(const Codes& codes, std::vector<std::pair<Code, std::unique_ptr<Base>>> all) {
  std::map<Code, std::unique_ptr<Base>> picked;
  for (unsigned code : codes) picked.try_emplace(Code(code), std::move(all.at(code).second));
  return picked;
}
inline auto matchesOf(const Codes& codes) { return pick(codes, oneMatchOfEachCode()); }
inline auto actionsOf(const Codes& codes) { return pick(codes, oneActionOfEachCode()); }

inline policer::Policer policerAt(policer::Stage stage, std::uint32_t id = 300) {
  return {id, stage, policer::Mode::Flow(1000, 1500), {policer::Action::Drop(policer::Color::Red)}};
}

inline FiltersEntry entryOf(const Codes& matches, const Codes& actions = {},
                            policer::Stage stage = policer::Stage::None, filtersEntryId_t id = 7) {
  FiltersEntry entry(id);
  EXPECT_EQ(entry.copyMatches(matchesOf(matches)), FILTERS_OK);
  EXPECT_EQ(entry.copyActions(actionsOf(actions)), FILTERS_OK);
  entry.setPolicer(policerAt(stage));
  return entry;
}

// An entry with all given actions and matches. If two matches exclude each other, the entry has the
// first.
inline FiltersEntry fullEntry(const Codes& matches = kMatchCodes,
                              const Codes& actions = kActionCodes) {
  CodeSet compatible(matches.begin(), matches.end());
  for (const CodeSet& pair : kExcludedPairs) compatible.erase(*pair.rbegin());
  FiltersEntry entry =
      entryOf({compatible.begin(), compatible.end()}, actions, policer::Stage::Ingress);
  entry.setPriority(300);
  entry.setPolicerParent(policerAt(policer::Stage::Egress, 301));
  EXPECT_EQ(entry.setCounter({300, FILTERS_COUNTER_TYPE_PACKETS}), FILTERS_OK);
  EXPECT_EQ(entry.setCounter({2, FILTERS_COUNTER_TYPE_NOT_GREEN_OCTETS}), FILTERS_OK);
  return entry;
}

// These functions have the same names for matches and for actions.
template <class T>
constexpr bool isMatch = std::is_base_of_v<Match, T>;
template <class T>
filtersErr_t put(FiltersEntry& entry, const T& object) {
  if constexpr (isMatch<T>) return entry.setMatch<T>(object);
  if constexpr (!isMatch<T>) return entry.setAction<T>(object);
}
template <class T>
filtersErr_t take(const FiltersEntry& entry, T& out) {
  if constexpr (isMatch<T>) return entry.getMatch(out);
  if constexpr (!isMatch<T>) return entry.getAction(out);
}

// An empty group with any stage and any type, even if the setters refuse the two together.
inline FiltersGroup groupOf(int stage, int type) {
  FiltersGroupPB message;
  message.set_stage_(static_cast<std::uint32_t>(stage));
  message.set_type_(static_cast<std::uint32_t>(type));
  FiltersGroup group(0);
  group.convertFromFiltersGroupPB(&message);
  return group;
}

// The priority of each entry by its id. The tests distinguish entries by their priorities.
using Priorities = std::map<unsigned, unsigned>;
inline Priorities prioritiesOf(const FiltersGroup& group) {
  Priorities priorities;
  for (const auto& [id, entry] : group.getEntriesRef()) priorities[id] = entry.getPriority();
  return priorities;
}

inline FiltersEntryPB messageOf(const FiltersEntry& entry) {
  FiltersEntryPB message;
  entry.convertToFiltersEntryPB(&message);
  return message;
}

template <class Field>
Codes codesIn(const Field& field) {
  Codes codes;
  for (const auto& element : field) codes.push_back(element.type_());
  return codes;
}
inline Codes heldMatches(const FiltersEntry& entry) { return codesIn(messageOf(entry).matches_()); }
inline Codes heldActions(const FiltersEntry& entry) { return codesIn(messageOf(entry).actions_()); }

template <class T>
std::string bytesOf(const T& object) {
  std::string bytes = "to be replaced";
  object.serialize(&bytes);
  return bytes;
}

}  // namespace catalogue

#endif  // FILTER_COMMON_TESTS_ENTRY_SAMPLES_H_
