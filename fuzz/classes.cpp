// A sequence of calls of the class interface, taken from the input; after each call the entries and
// the groups hold what the model says.

#include <map>
#include <memory>
#include <type_traits>
#include <utility>

#include "model.h"
#include "objects.h"

using namespace FiltersCommon;
using fuzz::ByteReader;
using fuzz::withAction;
using fuzz::withMatch;

namespace {

// --- Entries -------------------------------------------------------------------------------------

// A caller's own classes, which no entry takes.
struct OwnMatch : MatchAll {};
struct OwnAction : ActionPermit {};

struct Entry {
  FiltersEntry real;
  fuzz::EntryModel model;

  const FiltersEntry& object() const { return real; }
  void check() const { FUZZ_CHECK(real.getCounters().size() == model.counters.size()); }
};

void setMatch(Entry& e, ByteReader& in) {
  withMatch(in, [&](const auto& match, const MatchPB& message) {
    const bool admitted = e.model.admits(message.type_());
    FUZZ_CHECK((e.real.isL3CompatibleMatch(match) && e.real.isL4DstPortCompatibleMatch(match)) ==
               admitted);
    FUZZ_CHECK(e.real.setMatch(match) == e.model.setMatch(message));
  });
}

void getMatch(Entry& e, ByteReader& in) {
  withMatch(in, [&](auto match, const MatchPB& message) {
    const auto [result, left] = fuzz::got(e.model.matches, message);
    FUZZ_CHECK(e.real.getMatch(match) == result);
    FUZZ_CHECK(fuzz::wireOf<MatchPB>(match) == left.SerializeAsString());
  });
}

void setAction(Entry& e, ByteReader& in) {
  withAction(in, [&](const auto& action, const ActionPB& message) {
    FUZZ_CHECK(e.real.setAction(action) == FILTERS_OK);
    e.model.actions[message.type_()] = message;
  });
}

void getAction(Entry& e, ByteReader& in) {
  withAction(in, [&](auto action, const ActionPB& message) {
    const auto [result, left] = fuzz::got(e.model.actions, message);
    FUZZ_CHECK(e.real.getAction(action) == result);
    FUZZ_CHECK(fuzz::wireOf<ActionPB>(action) == left.SerializeAsString());
  });
}

// Several at once, under keys that need not be their codes, with gaps and unknown codes.
void setMatches(Entry& e, ByteReader& in) {
  FiltersEntry::Matches matches;
  std::map<filtersMatch_t, MatchPB> messages;
  for (unsigned left = in.below(6); left > 0; --left) {
    const auto key = static_cast<filtersMatch_t>(in.u8());
    messages.erase(key);
    withMatch(in, [&](const auto& match, const MatchPB& message) {
      matches[key] = std::make_unique<std::decay_t<decltype(match)>>(match);
      messages[key] = message;
    });
  }
  if (in.flag()) matches[filtersMatch_t(1000)] = nullptr;
  if (in.flag()) matches[filtersMatch_t(1001)] = std::make_unique<Match>(filtersMatch_t(35));

  const bool replace = in.flag();
  fuzz::EntryModel changed = e.model;
  if (replace) changed.matches.clear();
  filtersErr_t expected = FILTERS_OK;
  for (auto it = messages.begin(); expected == FILTERS_OK && it != messages.end(); ++it) {
    expected = changed.setMatch(it->second);
  }
  if (!replace || expected == FILTERS_OK) e.model = changed;
  FUZZ_CHECK((replace ? e.real.setMatches(matches) : e.real.copyMatches(matches)) == expected);
}

void setActions(Entry& e, ByteReader& in) {
  FiltersEntry::Actions actions;
  std::map<filtersAction_t, ActionPB> messages;
  for (unsigned left = in.below(6); left > 0; --left) {
    const auto key = static_cast<filtersAction_t>(in.u8());
    withAction(in, [&](const auto& action, const ActionPB& message) {
      actions[key] = std::make_unique<std::decay_t<decltype(action)>>(action);
      messages[key] = message;
    });
  }
  if (in.flag()) actions[filtersAction_t(1000)] = nullptr;
  if (in.flag()) actions[filtersAction_t(1001)] = std::make_unique<Action>(filtersAction_t(20));

  const bool replace = in.flag();
  if (replace) e.model.actions.clear();
  for (const auto& [key, message] : messages) e.model.actions[message.type_()] = message;
  FUZZ_CHECK((replace ? e.real.setActions(actions) : e.real.copyActions(actions)) == FILTERS_OK);
}

void remove(Entry& e, ByteReader& in) {
  const std::uint32_t code = in.mostlyBelow(36);
  if (in.flag()) {
    FUZZ_CHECK(e.real.deleteMatch(filtersMatch_t(code)) == fuzz::erase(e.model.matches, code));
  } else {
    FUZZ_CHECK(e.real.deleteAction(filtersAction_t(code)) == fuzz::erase(e.model.actions, code));
  }
}

void setPolicers(Entry& e, ByteReader& in) {
  const bool own = in.flag();  // an argument that is part of the entry
  if (in.flag()) {
    const policer::Policer policer = fuzz::policerOf(in);
    e.real.setPolicer(own ? e.real.getPolicer() : policer);
    if (!own) e.model.policer = policer;
  } else if (!own || !e.model.parent) {
    e.model.parent = fuzz::policerOf(in);
    e.real.setPolicerParent(*e.model.parent);
  } else {
    e.real.setPolicerParent(*e.real.getPolicerParent());
  }
}

void setCounters(Entry& e, ByteReader& in) {
  const std::uint16_t id = in.below(4) == 0 ? in.u16() : in.u8() % 8;
  const auto type = static_cast<counter_type_t>(in.mostlyBelow(10));
  const unsigned what = in.below(8);
  const auto held = e.model.counters.find(id);
  const Counter* counter = e.real.getCounter(id);
  FUZZ_CHECK((counter != nullptr) == (held != e.model.counters.end()));
  if (counter != nullptr) FUZZ_CHECK(*counter == Counter(id, held->second));
  if (what == 0) {
    FUZZ_CHECK(e.real.deleteCounters() == FILTERS_OK);
    e.model.counters.clear();
  } else if (what < 3) {
    FUZZ_CHECK(e.real.deleteCounter(id) ==
               (counter != nullptr ? FILTERS_OK : FILTERS_ERR_INVALID_ARGUMENT));
    e.model.counters.erase(id);
  } else {
    FUZZ_CHECK(e.real.setCounter(Counter(id, type)) == e.model.setCounter(id, type));
  }
}

// Whole entries: made anew, moved, copied, read on top of what is held, compared; and what no entry
// takes.
void whole(Entry& e, Entry& other, ByteReader& in) {
  const FiltersEntry& alias = e.real;
  switch (in.below(8)) {
    case 0:
      e.real = std::move(const_cast<FiltersEntry&>(alias));
      break;
    case 1:
      e.real = FiltersEntry(other.real);
      e.model = other.model;
      break;
    case 2: {
      FiltersEntryPB message;
      other.real.convertToFiltersEntryPB(&message);
      e.real.convertFromFiltersEntryPB(&message);
      e.model.add(fuzz::EntryModel(other.model));
      break;
    }
    case 3:
      FUZZ_CHECK((e.real == other.real) == (e.model.bytes() == other.model.bytes()));
      break;
    case 4: {
      OwnMatch match;
      OwnAction action;
      FUZZ_CHECK(e.real.setMatch(match) == FILTERS_ERR_INVALID);
      FUZZ_CHECK(e.real.getMatch(match) == FILTERS_ERR_INVALID);
      FUZZ_CHECK(e.real.setAction(action) == FILTERS_ERR_INVALID);
      FUZZ_CHECK(e.real.getAction(action) == FILTERS_ERR_INVALID);
      break;
    }
    default:
      e.model = {};
      e.model.id = in.mostlyBelow(6);
      e.real = FiltersEntry(e.model.id);
  }
}

void callEntry(Entry& e, Entry& other, ByteReader& in) {
  switch (in.below(12)) {
    case 0:
      e.real.setId(e.model.id = in.mostlyBelow(6));
      e.real.setPriority(e.model.priority = in.u32());
      break;
    case 1:
      return getMatch(e, in);
    case 2:
      return setAction(e, in);
    case 3:
      return getAction(e, in);
    case 4:
      return setMatches(e, in);
    case 5:
      return setActions(e, in);
    case 6:
      return remove(e, in);
    case 7:
      return setPolicers(e, in);
    case 8:
      return setCounters(e, in);
    case 9:
      return whole(e, other, in);
    default:
      return setMatch(e, in);
  }
}

// --- Groups --------------------------------------------------------------------------------------

struct Group {
  FiltersGroup real{0};
  fuzz::GroupModel model;

  const FiltersGroup& object() const { return real; }
  void check() const { FUZZ_CHECK(real.getEntriesRef().size() == model.entries.size()); }
};

filtersGroupStage_t stageOf(ByteReader& in) { return filtersGroupStage_t(in.mostlyBelow(5)); }
filtersGroupType_t typeOf(ByteReader& in) { return filtersGroupType_t(in.mostlyBelow(13)); }

// A copy without the matches and actions that the group refuses: hardly any entry would go in.
Entry fitted(const Entry& e, const fuzz::GroupModel& group) {
  Entry copy{FiltersEntry(e.real), e.model};
  for (const auto& [code, match] : e.model.matches) {
    if (group.admitsMatch(code, group.type)) continue;
    FUZZ_CHECK(copy.real.deleteMatch(filtersMatch_t(code)) == FILTERS_OK);
    copy.model.matches.erase(code);
  }
  for (const auto& [code, action] : e.model.actions) {
    if (group.admitsAction(code, group.stage)) continue;
    FUZZ_CHECK(copy.real.deleteAction(filtersAction_t(code)) == FILTERS_OK);
    copy.model.actions.erase(code);
  }
  return copy;
}

void insert(Group& g, const Entry& e, ByteReader& in) {
  const unsigned what = in.below(4);
  if (what == 0) {
    FUZZ_CHECK(g.real.insertEntry(e.real) == g.model.insert(e.model));
  } else if (what < 3 || g.model.entries.empty()) {
    const Entry copy = fitted(e, g.model);
    FUZZ_CHECK(g.real.insertEntry(copy.real) == g.model.insert(copy.model));
  } else {
    // The very entry that is replaced by its copy.
    const auto& [id, model] = *g.model.entries.begin();
    FUZZ_CHECK(g.real.insertEntry(g.real.getEntriesRef().at(id)) == g.model.check(model));
  }
}

void removeEntry(Group& g, ByteReader& in) {
  if (in.flag() && !g.model.entries.empty()) {
    // The very key that is removed with the entry.
    const unsigned int& key = g.real.getEntriesRef().begin()->first;
    g.model.entries.erase(g.model.entries.begin());
    FUZZ_CHECK(g.real.removeEntry(key) == FILTERS_OK);
    return;
  }
  const std::uint32_t id = in.mostlyBelow(6);
  FUZZ_CHECK(g.real.removeEntry(id) == fuzz::erase(g.model.entries, id));
}

// Stage and type as another process may send them, and the other's entries on top of those held.
void readMessage(Group& g, const Group& other, ByteReader& in) {
  FiltersGroupPB message = other.model.message();
  g.model.stage = stageOf(in);
  g.model.type = typeOf(in);
  message.set_stage_(static_cast<std::uint32_t>(g.model.stage));
  message.set_type_(static_cast<std::uint32_t>(g.model.type));
  message.set_id_(in.u32());
  g.model.id = static_cast<unsigned short>(message.id_());
  g.model.priority = other.model.priority;
  const auto entries = other.model.entries;  // `other` may be `g`
  for (const auto& [id, entry] : entries) g.model.insert(entry);
  g.real.convertFromFiltersGroupPB(&message);
}

void askChecks(const Group& g, const Entry& e, ByteReader& in) {
  const filtersGroupStage_t stage = stageOf(in);
  const filtersGroupType_t type = typeOf(in);
  using Model = fuzz::GroupModel;
  FUZZ_CHECK(g.real.groupMatchValidation(e.real, type) == Model::checkMatches(e.model, type));
  FUZZ_CHECK(g.real.groupActionValidation(e.real, stage) == Model::checkActions(e.model, stage));
  FUZZ_CHECK(g.real.groupStageValidation(stage, type) == Model::checkStage(stage, type));
  FUZZ_CHECK(g.real.groupPolicerValidation(e.real.getPolicer(), stage) ==
             Model::checkPolicer(e.model.policer, stage));
}

void callGroup(Group& g, Group& other, const Entry& e, ByteReader& in) {
  switch (in.below(10)) {
    case 0:
      g.real.setPriority(g.model.priority = in.u16());
      break;
    case 1:
      return removeEntry(g, in);
    case 2:
      return readMessage(g, other, in);
    case 3:
      return askChecks(g, e, in);
    case 4:
      g.real = other.real;  // which may be `g`
      g.model = fuzz::GroupModel(other.model);
      break;
    case 5:
      FUZZ_CHECK((g.real == other.real) == (g.model.bytes() == other.model.bytes()));
      FUZZ_CHECK((g.real != other.real) == !(g.real == other.real));
      break;
    case 6: {
      const filtersGroupStage_t stage = stageOf(in);
      FUZZ_CHECK(g.real.setStage(stage) == g.model.setStage(stage));
      break;
    }
    case 7: {
      const filtersGroupType_t type = typeOf(in);
      FUZZ_CHECK(g.real.setType(type) == g.model.setType(type));
      break;
    }
    default:
      return insert(g, e, in);
  }
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::playCalls<Entry, Group>(data, size, callEntry, callGroup);
  return 0;
}
