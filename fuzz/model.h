#ifndef FILTER_COMMON_FUZZ_MODEL_H_
#define FILTER_COMMON_FUZZ_MODEL_H_

// What entries and groups must hold after a sequence of calls, written a second time and as plainly
// as possible: maps from codes to messages. A model and the object beside it serialize alike.

#include <filter_common/filter_groups.h>
#include <filter_common/filter_groups.pb.h>
#include <policer/policer.h>

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>

#include "fuzz.h"

namespace fuzz {

using namespace FiltersCommon;

// What a getter returns, and what its argument holds then: what is held, or what it was given.
template <class Message>
std::pair<filtersErr_t, Message> got(const std::map<std::uint32_t, Message>& held,
                                     const Message& given) {
  const auto found = held.find(given.type_());
  if (found == held.end()) return {FILTERS_ERR_NOT_FOUND, given};
  return {FILTERS_OK, found->second};
}

template <class Value>
filtersErr_t erase(std::map<std::uint32_t, Value>& held, std::uint32_t key) {
  return held.erase(key) == 0 ? FILTERS_ERR_NOT_FOUND : FILTERS_OK;
}

struct EntryModel {
  std::uint32_t id = 0;
  std::uint32_t priority = 0;
  policer::Policer policer;
  std::optional<policer::Policer> parent;
  std::map<unsigned short, counter_type_t> counters;
  std::map<std::uint32_t, MatchPB> matches;
  std::map<std::uint32_t, ActionPB> actions;

  bool admits(std::uint32_t code) const {
    static const std::map<std::uint32_t, std::set<std::uint32_t>> kExcluded = {
        {9, {14, 15}}, {10, {14, 15}}, {14, {9, 10}}, {15, {9, 10}}, {5, {34}}, {34, {5}}};
    const auto excluded = kExcluded.find(code);
    if (excluded == kExcluded.end()) return true;
    for (const std::uint32_t other : excluded->second) {
      if (matches.count(other) != 0) return false;
    }
    return true;
  }

  filtersErr_t setMatch(const MatchPB& match) {
    if (!admits(match.type_())) return FILTERS_ERR_INVALID;
    matches[match.type_()] = match;
    return FILTERS_OK;
  }

  filtersErr_t setCounter(unsigned short counterId, counter_type_t type) {
    if (type == FILTERS_COUNTER_TYPE_INVALID) return FILTERS_ERR_INVALID;
    for (const auto& held : counters) {
      if (held.second == type) return FILTERS_ERR_INVALID;
    }
    counters[counterId] = type;
    return FILTERS_OK;
  }

  // What reading the message of another entry does.
  void add(const EntryModel& other) {
    id = other.id;
    priority = other.priority;
    policer = other.policer;
    if (other.parent) parent = other.parent;
    for (const auto& [counterId, type] : other.counters) counters[counterId] = type;
    for (const auto& [code, match] : other.matches) setMatch(match);
    for (const auto& [code, action] : other.actions) actions[code] = action;
  }

  void fill(FiltersEntryPB* message) const {
    message->set_id_(id);
    message->set_priority_(priority);
    message->set_policer_(policer.Serialize());
    if (parent) message->set_policer_parent_(parent->Serialize());
    for (const auto& [counterId, type] : counters) {
      CounterPB* counter = message->add_counters_();
      counter->set_id(counterId);
      counter->set_type(type);
    }
    for (const auto& [code, match] : matches) *message->add_matches_() = match;
    for (const auto& [code, action] : actions) *message->add_actions_() = action;
  }

  std::string bytes() const {
    FiltersEntryPB message;
    fill(&message);
    return message.SerializeAsString();
  }
};

struct GroupModel {
  unsigned short id = 0;
  unsigned short priority = 0;
  filtersGroupStage_t stage = FILTERS_GROUP_STAGE_NONE;
  filtersGroupType_t type = FILTERS_GROUP_TYPE_NONE;
  std::map<std::uint32_t, EntryModel> entries;

  static bool admitsMatch(std::uint32_t code, filtersGroupType_t type) {
    const auto row = FiltersGroup::TypeDescription_.find(type);
    return row != FiltersGroup::TypeDescription_.end() &&
           row->second.count(filtersMatch_t(code)) != 0;
  }

  static bool admitsAction(std::uint32_t code, filtersGroupStage_t stage) {
    const auto row = FiltersGroup::StageActionsDescription_.find(stage);
    return row != FiltersGroup::StageActionsDescription_.end() &&
           row->second.count(filtersAction_t(code)) != 0;
  }

  static filtersErr_t checkMatches(const EntryModel& entry, filtersGroupType_t type) {
    if (FiltersGroup::TypeDescription_.count(type) == 0) return FILTERS_ERR_INVALID;
    for (const auto& [code, match] : entry.matches) {
      if (!admitsMatch(code, type)) return FILTERS_ERR_MATCH_NOT_ALLOWED;
    }
    return FILTERS_OK;
  }

  static filtersErr_t checkActions(const EntryModel& entry, filtersGroupStage_t stage) {
    if (FiltersGroup::StageActionsDescription_.count(stage) == 0) return FILTERS_ERR_INVALID_STAGE;
    for (const auto& [code, action] : entry.actions) {
      if (!admitsAction(code, stage)) return FILTERS_ERR_ACTION_NOT_ALLOWED;
    }
    return FILTERS_OK;
  }

  static filtersErr_t checkStage(filtersGroupStage_t stage, filtersGroupType_t type) {
    const auto row = FiltersGroup::StageTypesDescription_.find(stage);
    if (row == FiltersGroup::StageTypesDescription_.end()) return FILTERS_ERR_INVALID_STAGE;
    return row->second.count(type) == 0 ? FILTERS_ERR_TYPE_NOT_ALLOWED : FILTERS_OK;
  }

  static filtersErr_t checkPolicer(const policer::Policer& policer, filtersGroupStage_t stage) {
    if (policer.GetStage() == policer::Stage::None) return FILTERS_OK;
    if (stage < FILTERS_GROUP_STAGE_NONE || stage > FILTERS_GROUP_STAGE_EGRESS) {
      return FILTERS_ERR_INVALID_STAGE;
    }
    const bool fits =
        (stage == FILTERS_GROUP_STAGE_INGRESS && policer.GetStage() == policer::Stage::Ingress) ||
        (stage == FILTERS_GROUP_STAGE_EGRESS && policer.GetStage() == policer::Stage::Egress);
    return fits ? FILTERS_OK : FILTERS_ERR_POLICER_STAGE;
  }

  filtersErr_t check(const EntryModel& entry) const {
    if (const auto result = checkMatches(entry, type)) return result;
    if (const auto result = checkActions(entry, stage)) return result;
    return checkPolicer(entry.policer, stage);
  }

  filtersErr_t insert(const EntryModel& entry) {
    const filtersErr_t result = check(entry);
    if (result == FILTERS_OK) entries[entry.id] = entry;
    return result;
  }

  filtersErr_t setStage(filtersGroupStage_t newStage) {
    if (const auto result = checkStage(newStage, type)) return result;
    for (const auto& [entryId, entry] : entries) {
      if (const auto result = checkActions(entry, newStage)) return result;
      if (const auto result = checkPolicer(entry.policer, newStage)) return result;
    }
    stage = newStage;
    return FILTERS_OK;
  }

  filtersErr_t setType(filtersGroupType_t newType) {
    if (const auto result = checkStage(stage, newType)) return result;
    for (const auto& [entryId, entry] : entries) {
      if (const auto result = checkMatches(entry, newType)) return result;
    }
    type = newType;
    return FILTERS_OK;
  }

  FiltersGroupPB message() const {
    FiltersGroupPB message;
    message.set_id_(id);
    message.set_priority_(priority);
    message.set_stage_(static_cast<std::uint32_t>(stage));
    message.set_type_(static_cast<std::uint32_t>(type));
    for (const auto& [entryId, entry] : entries) entry.fill(message.add_entries_());
    return message;
  }

  std::string bytes() const { return message().SerializeAsString(); }

  // What another process makes of the bytes: entries that the stage and type refuse are left out.
  // Such are held after a message that brought another stage or type to a group with entries.
  GroupModel rebuilt() const {
    GroupModel result = *this;
    result.entries.clear();
    for (const auto& [entryId, entry] : entries) result.insert(entry);
    return result;
  }
};

// Plays the calls of an input on three entries and two groups. Each stands beside its `model`: the
// `object()` must hold the same after each call, and what `check()` looks at besides. It equals
// what it was before if the call changed nothing, and only then.
template <class Entry, class Group, class CallEntry, class CallGroup>
void playCalls(const std::uint8_t* data, std::size_t size, CallEntry callEntry,
               CallGroup callGroup) {
  const auto play = [](const auto& subject, auto call) {
    const auto before = subject.object();
    call();
    const std::string bytes = bytesOf(subject.object());
    FUZZ_CHECK(bytes == subject.model.bytes());
    FUZZ_CHECK((before == subject.object()) == (bytesOf(before) == bytes));
    subject.check();
  };
  ByteReader in(data, size);
  Entry entries[3];
  Group groups[2];
  for (int calls = 0; calls < 100 && !in.empty(); ++calls) {
    const unsigned where = in.u8();
    Entry& entry = entries[where % 3];
    Group& group = groups[where / 4 % 2];
    if (where < 160) {
      play(entry, [&] { callEntry(entry, entries[where / 8 % 3], in); });
    } else {
      play(group, [&] { callGroup(group, groups[where / 8 % 2], entry, in); });
    }
  }
  for (const Entry& entry : entries) checkObject(entry.object());
  for (const Group& group : groups) {
    FUZZ_CHECK(FiltersGroup(group.object()) == group.object());
    const FiltersGroup rebuilt(bytesOf(group.object()));
    FUZZ_CHECK(bytesOf(rebuilt) == group.model.rebuilt().bytes());
    checkObject(rebuilt);
  }
}

}  // namespace fuzz

#endif  // FILTER_COMMON_FUZZ_MODEL_H_
