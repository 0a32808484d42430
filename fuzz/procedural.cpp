// A sequence of calls of the procedural interface, taken from the input; after each call the
// objects behind the handles hold what the model says.

#include <filter_common/filter_entries_c.h>
#include <filter_common/filter_groups_c.h>

#include <initializer_list>
#include <memory>
#include <tuple>

#include "handles.h"
#include "model.h"

using namespace FiltersCommon;
using fuzz::ByteReader;

namespace {

// --- Handles, each with what must stand behind it ------------------------------------------------

template <auto function>
struct DeleteBy {
  template <class T>
  void operator()(T* handle) const {
    function(handle);
  }
};

struct MatchHandle {
  explicit MatchHandle(ByteReader& in) {
    fuzz::Matches a{in, {}};
    handle.reset(fuzz::newMatch(in.below(35), a));
    message = a.message;
    check();
  }

  Match* get() const { return static_cast<Match*>(handle.get()); }

  void check() const {
    FUZZ_CHECK(matchGetType(handle.get()) == message.type_());
    FUZZ_CHECK(fuzz::wireOf<MatchPB>(*get()) == message.SerializeAsString());
    fuzz::checkPointers(handle.get(), message);
    fuzz::checkNumbers(handle.get(), message);
  }

  std::unique_ptr<void, DeleteBy<deleteMatch>> handle;
  MatchPB message;
};

struct ActionHandle {
  explicit ActionHandle(ByteReader& in) {
    fuzz::Actions a{in, {}};
    handle.reset(fuzz::newAction(in.below(20), a));
    message = a.message;
    check();
  }

  Action* get() const { return static_cast<Action*>(handle.get()); }

  void check() const {
    FUZZ_CHECK(actionGetType(handle.get()) == message.type_());
    FUZZ_CHECK(fuzz::wireOf<ActionPB>(*get()) == message.SerializeAsString());
    fuzz::checkGetters(handle.get(), message);
  }

  std::unique_ptr<void, DeleteBy<deleteAction>> handle;
  ActionPB message;
};

struct EntryHandle {
  const FiltersEntry& object() const { return *handle; }
  void check() const {
    FUZZ_CHECK(filtersEntryGetId(handle.get()) == model.id);
    FUZZ_CHECK(filtersEntryGetPriority(handle.get()) == model.priority);
  }

  std::unique_ptr<FiltersEntry, DeleteBy<deleteFiltersEntry>> handle{newFiltersEntry(0)};
  fuzz::EntryModel model;
};

struct GroupHandle {
  const FiltersGroup& object() const { return *handle; }
  void check() const {
    FUZZ_CHECK(filtersGroupGetId(handle.get()) == model.id);
    FUZZ_CHECK(filtersGroupGetPriority(handle.get()) == model.priority);
    FUZZ_CHECK(filtersGroupGetStage(handle.get()) == model.stage);
    FUZZ_CHECK(filtersGroupGetType(handle.get()) == model.type);
  }

  std::unique_ptr<FiltersGroup, DeleteBy<deleteFiltersGroup>> handle{newFiltersGroup(0)};
  fuzz::GroupModel model;
};

// --- Calls ---------------------------------------------------------------------------------------

void setMatch(EntryHandle& e, ByteReader& in) {
  const MatchHandle match(in);
  FUZZ_CHECK(filtersEntrySetMatch(e.handle.get(), match.get()) == e.model.setMatch(match.message));
  match.check();
}

void getMatch(EntryHandle& e, ByteReader& in) {
  MatchHandle match(in);
  filtersErr_t result;
  std::tie(result, match.message) = fuzz::got(e.model.matches, match.message);
  FUZZ_CHECK(filtersEntryGetMatch(e.handle.get(), match.get()) == result);
  match.check();
}

void setAction(EntryHandle& e, ByteReader& in) {
  const ActionHandle action(in);
  e.model.actions[action.message.type_()] = action.message;
  FUZZ_CHECK(filtersEntrySetAction(e.handle.get(), action.get()) == FILTERS_OK);
  action.check();
}

void getAction(EntryHandle& e, ByteReader& in) {
  ActionHandle action(in);
  filtersErr_t result;
  std::tie(result, action.message) = fuzz::got(e.model.actions, action.message);
  FUZZ_CHECK(filtersEntryGetAction(e.handle.get(), action.get()) == result);
  action.check();
}

void remove(EntryHandle& e, ByteReader& in) {
  const std::uint32_t code = in.mostlyBelow(36);
  if (in.flag()) {
    FUZZ_CHECK(filtersEntryDeleteMatch(e.handle.get(), filtersMatch_t(code)) ==
               fuzz::erase(e.model.matches, code));
  } else {
    FUZZ_CHECK(filtersEntryDeleteAction(e.handle.get(), filtersAction_t(code)) ==
               fuzz::erase(e.model.actions, code));
  }
}

// What the interface refuses with a code: null handles, the two matches that only the classes
// reach, and codes that no class has.
void refuse(EntryHandle& e, ByteReader& in) {
  const MatchHandle match(in);
  const ActionHandle action(in);
  FUZZ_CHECK(filtersEntrySetMatch(nullptr, match.get()) == FILTERS_ERR_INVALID_ARGUMENT);
  FUZZ_CHECK(filtersEntryGetMatch(e.handle.get(), nullptr) == FILTERS_ERR_INVALID_ARGUMENT);
  FUZZ_CHECK(filtersEntrySetAction(nullptr, action.get()) == FILTERS_ERR_INVALID_ARGUMENT);
  FUZZ_CHECK(filtersEntryGetAction(e.handle.get(), nullptr) == FILTERS_ERR_INVALID_ARGUMENT);
  FUZZ_CHECK(filtersGroupRemoveEntry(nullptr, 0) == FILTERS_ERR_INVALID_ARGUMENT);

  MatchMyStationHit hit(in.flag());
  MatchForwardingType forwarding(FILTERS_FORWARDING_TYPE_L3);
  Match unknown(filtersMatch_t(35 + in.u8()));
  for (Match* refused : std::initializer_list<Match*>{&hit, &forwarding, &unknown}) {
    FUZZ_CHECK(filtersEntrySetMatch(e.handle.get(), refused) == FILTERS_ERR_INVALID);
    FUZZ_CHECK(filtersEntryGetMatch(e.handle.get(), refused) == FILTERS_ERR_INVALID);
  }
  Action unknownAction(filtersAction_t(20 + in.u8()));
  FUZZ_CHECK(filtersEntrySetAction(e.handle.get(), &unknownAction) == FILTERS_ERR_INVALID);
}

void callEntry(EntryHandle& e, EntryHandle& other, ByteReader& in) {
  switch (in.below(8)) {
    case 0:
      return getMatch(e, in);
    case 1:
      return setAction(e, in);
    case 2:
      return getAction(e, in);
    case 3:
      return remove(e, in);
    case 4:
      e.model.priority = in.u32();
      return filtersEntrySetPriority(e.handle.get(), e.model.priority);
    case 5:
      e.model = {};
      e.model.id = in.mostlyBelow(6);
      return e.handle.reset(newFiltersEntry(e.model.id));
    case 6:
      if (&e == &other) return refuse(e, in);
      e.handle.reset(copyFiltersEntry(other.handle.get()));
      e.model = other.model;
      break;
    default:
      return setMatch(e, in);
  }
}

// The copies that come out are those of the model, in its order.
void getEntries(const GroupHandle& g) {
  entriesStruct entries;
  filtersGroupGetEntries(g.handle.get(), &entries);
  FUZZ_CHECK(static_cast<std::size_t>(entries.count) == g.model.entries.size());
  int i = 0;
  for (const auto& [id, model] : g.model.entries) {
    FUZZ_CHECK(entries.ids[i] == id);
    FUZZ_CHECK(fuzz::bytesOf(*entries.entries[i]) == model.bytes());
    ++i;
  }
  if (i > 1) {  // one that the caller frees
    deleteFiltersEntry(entries.entries[0]);
    entries.entries[0] = nullptr;
  }
  deleteFiltersEntriesStruct(&entries);
}

void callGroup(GroupHandle& g, GroupHandle&, EntryHandle& e, ByteReader& in) {
  switch (in.below(8)) {
    case 0:
      g.model.priority = in.u16();
      return filtersGroupSetPriority(g.handle.get(), g.model.priority);
    case 1: {
      const auto stage = filtersGroupStage_t(in.mostlyBelow(5));
      g.model.setStage(stage);  // a refusal shows in the stage that stays
      return filtersGroupSetStage(g.handle.get(), stage);
    }
    case 2: {
      const auto type = filtersGroupType_t(in.mostlyBelow(13));
      return FUZZ_CHECK(filtersGroupSetType(g.handle.get(), type) == g.model.setType(type));
    }
    case 3: {
      const std::uint32_t id = in.mostlyBelow(6);
      return FUZZ_CHECK(filtersGroupRemoveEntry(g.handle.get(), id) ==
                        fuzz::erase(g.model.entries, id));
    }
    case 4:
      return getEntries(g);
    case 5:
      g.model = {in.u16(), 0, FILTERS_GROUP_STAGE_NONE, FILTERS_GROUP_TYPE_NONE, {}};
      return g.handle.reset(newFiltersGroup(g.model.id));
    default:
      return FUZZ_CHECK(filtersGroupInsertEntry(g.handle.get(), e.handle.get()) ==
                        g.model.insert(e.model));
  }
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::playCalls<EntryHandle, GroupHandle>(data, size, callEntry, callGroup);
  return 0;
}
