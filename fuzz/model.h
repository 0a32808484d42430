#ifndef FILTER_COMMON_FUZZ_MODEL_H_
#define FILTER_COMMON_FUZZ_MODEL_H_

// Models of entries and groups. For each call, a model does in the plainest code what the object
// must do. It holds matches and actions as maps from codes to bytes. After each call, a model and
// its object must serialize to the same bytes.

#include <optional>

#include "../tests/entry_samples.h"

namespace fuzz {

using namespace FiltersCommon;
using catalogue::isMatch;

template <class T>
std::string wireOf(const T& object) {
  return catalogue::fromHex(catalogue::wireOf(object));
}

template <class Value>
filtersErr_t erase(std::map<std::uint32_t, Value>& held, std::uint32_t key) {
  return held.erase(key) == 0 ? FILTERS_ERR_NOT_FOUND : FILTERS_OK;
}

using Held = std::map<std::uint32_t, std::string>;  // messages by their codes

struct EntryModel {
  std::uint32_t id = 0;
  std::uint32_t priority = 0;
  policer::Policer policer;
  std::optional<policer::Policer> parent;
  std::map<std::uint32_t, counter_type_t> counters;
  Held matches;
  Held actions;

  template <class T>
  Held& held() {
    return isMatch<T> ? matches : actions;
  }

  bool admits(std::uint32_t code) const {
    for (const auto& [other, message] : matches) {
      if (catalogue::kExcludedPairs.count({code, other}) != 0) return false;
    }
    return true;
  }

  template <class T>
  filtersErr_t put(const T& object) {
    if (isMatch<T> && !admits(object.getType())) return FILTERS_ERR_INVALID;
    held<T>()[object.getType()] = wireOf(object);
    return FILTERS_OK;
  }

  filtersErr_t setCounter(std::uint32_t counterId, counter_type_t type) {
    if (type == FILTERS_COUNTER_TYPE_INVALID) return FILTERS_ERR_INVALID;
    for (const auto& counter : counters) {
      if (counter.second == type) return FILTERS_ERR_INVALID;
    }
    counters[counterId] = type;
    return FILTERS_OK;
  }

  // Has the same effect on the model as reading another entry's message has on an entry.
  void add(const EntryModel& other) {
    id = other.id;
    priority = other.priority;
    policer = other.policer;
    if (other.parent) parent = other.parent;
    for (const auto& [counterId, type] : other.counters) counters[counterId] = type;
    for (const auto& [code, message] : other.matches) {
      if (admits(code)) matches[code] = message;
    }
    for (const auto& [code, message] : other.actions) actions[code] = message;
  }

  FiltersEntryPB message() const {
    FiltersEntryPB message;
    message.set_id_(id);
    message.set_priority_(priority);
    message.set_policer_(policer.Serialize());
    if (parent) message.set_policer_parent_(parent->Serialize());
    for (const auto& [counterId, type] : counters) {
      CounterPB* counter = message.add_counters_();
      counter->set_id(static_cast<std::int32_t>(counterId));
      counter->set_type(type);
    }
    for (const auto& [code, bytes] : matches) message.add_matches_()->ParseFromString(bytes);
    for (const auto& [code, bytes] : actions) message.add_actions_()->ParseFromString(bytes);
    return message;
  }
};

// Returns `noRow` if the table does not have the row, and `notAdmitted` if the row does not admit
// everything in `held`.
template <class Value>
filtersErr_t refusalOf(const catalogue::Table& table, std::uint32_t row,
                       const std::map<std::uint32_t, Value>& held, filtersErr_t noRow,
                       filtersErr_t notAdmitted) {
  if (row >= table.size()) return noRow;
  for (const auto& [code, value] : held) {
    if (!catalogue::admits(table, row, code)) return notAdmitted;
  }
  return FILTERS_OK;
}

struct GroupModel {
  unsigned short id = 0;
  unsigned short priority = 0;
  std::uint32_t stage = 0;
  std::uint32_t type = 0;
  std::map<std::uint32_t, EntryModel> entries;

  // The error that the library must return for this stage and type.
  static filtersErr_t check(std::uint32_t stage, std::uint32_t type) {
    return refusalOf(catalogue::kTypesOfStage, stage, std::map<std::uint32_t, int>{{type, 0}},
                     FILTERS_ERR_INVALID_STAGE, FILTERS_ERR_TYPE_NOT_ALLOWED);
  }
  static filtersErr_t checkType(const EntryModel& entry, std::uint32_t type) {
    return refusalOf(catalogue::kMatchesOfType, type, entry.matches, FILTERS_ERR_INVALID,
                     FILTERS_ERR_MATCH_NOT_ALLOWED);
  }
  static filtersErr_t checkStage(const EntryModel& entry, std::uint32_t stage) {
    const filtersErr_t refusal =
        refusalOf(catalogue::kActionsOfStage, stage, entry.actions, FILTERS_ERR_INVALID_STAGE,
                  FILTERS_ERR_ACTION_NOT_ALLOWED);
    if (refusal != FILTERS_OK) return refusal;
    const auto of = static_cast<unsigned>(entry.policer.GetStage());
    return catalogue::admits(catalogue::kPolicersOfStage, stage, of) ? FILTERS_OK
                                                                     : FILTERS_ERR_POLICER_STAGE;
  }

  filtersErr_t insert(const EntryModel& entry) {
    if (const auto refusal = checkType(entry, type)) return refusal;
    if (const auto refusal = checkStage(entry, stage)) return refusal;
    entries[entry.id] = EntryModel(entry);
    return FILTERS_OK;
  }

  // Changes the stage or the type, if the stage then admits the type and each entry passes the
  // check.
  filtersErr_t change(std::uint32_t GroupModel::*which, std::uint32_t value,
                      filtersErr_t (*checkEntry)(const EntryModel&, std::uint32_t)) {
    GroupModel changed = *this;
    changed.*which = value;
    if (const auto refusal = check(changed.stage, changed.type)) return refusal;
    for (const auto& [entryId, entry] : entries) {
      if (const auto refusal = checkEntry(entry, value)) return refusal;
    }
    this->*which = value;
    return FILTERS_OK;
  }
  filtersErr_t setStage(std::uint32_t value) {
    return change(&GroupModel::stage, value, checkStage);
  }
  filtersErr_t setType(std::uint32_t value) { return change(&GroupModel::type, value, checkType); }

  FiltersGroupPB message() const {
    FiltersGroupPB message;
    message.set_id_(id);
    message.set_priority_(priority);
    message.set_stage_(stage);
    message.set_type_(type);
    for (const auto& [entryId, entry] : entries) *message.add_entries_() = entry.message();
    return message;
  }
};

template <class Model>
std::string bytesOf(const Model& model) {
  return model.message().SerializeAsString();
}

}  // namespace fuzz

#endif  // FILTER_COMMON_FUZZ_MODEL_H_
