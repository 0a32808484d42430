// Makes a sequence of calls from the input. Each call goes through the class interface or the
// procedural interface. After each call, the entries and groups must be equal to their models (see
// model.h).

#include <filter_common/filter_entries_c.h>
#include <filter_common/filter_groups_c.h>

#include <iterator>

#include "../tests/meaning.h"
#include "fuzz.h"
#include "model.h"

using namespace FiltersCommon;
using fuzz::ByteReader;

namespace {

// --- Entries -------------------------------------------------------------------------------------

struct Entry {
  FiltersEntry real;
  fuzz::EntryModel model;
};

// The input chooses a class from the list. Calls `use` with a sample of that class.
template <class... T, class Use>
void withSample(testing::Types<T...>, ByteReader& in, Use use) {
  unsigned left = in.below(sizeof...(T));
  const auto give = [&](const auto& samples) { use(samples[in.below(samples.size())]); };
  static_cast<void>(((left-- == 0 && (give(catalogue::samples<T>()), true)) || ...));
}

// True if the procedural interface refuses the class.
bool hidden(const Match& match) {
  return catalogue::kMatchesOfClassesAlone.count(match.getType()) != 0;
}

void put(Entry& e, Entry&, ByteReader& in) {
  withSample(catalogue::EveryClass(), in, [&](auto object) {
    filtersErr_t result;
    if (in.flag()) {
      result = catalogue::put(e.real, object);
    } else if constexpr (fuzz::isMatch<decltype(object)>) {
      result = filtersEntrySetMatch(&e.real, &object);
      if (hidden(object)) return FUZZ_CHECK(result == FILTERS_ERR_INVALID);
    } else {
      result = filtersEntrySetAction(&e.real, &object);
    }
    FUZZ_CHECK(result == e.model.put(object));
  });
}

void take(Entry& e, Entry&, ByteReader& in) {
  withSample(catalogue::EveryClass(), in, [&](auto out) {
    const auto& held = e.model.held<decltype(out)>();
    const auto found = held.find(out.getType());
    const bool isHeld = found != held.end();
    const std::string given = fuzz::wireOf(out);
    filtersErr_t result;
    if (in.flag()) {
      result = catalogue::take(e.real, out);
    } else if constexpr (fuzz::isMatch<decltype(out)>) {
      result = filtersEntryGetMatch(&e.real, &out);
      if (hidden(out)) return FUZZ_CHECK(result == FILTERS_ERR_INVALID);
    } else {
      result = filtersEntryGetAction(&e.real, &out);
    }
    FUZZ_CHECK(result == (isHeld ? FILTERS_OK : FILTERS_ERR_NOT_FOUND));
    FUZZ_CHECK(fuzz::wireOf(out) == (isHeld ? found->second : given));
  });
}

void erase(Entry& e, Entry&, ByteReader& in) {
  const std::uint32_t code = in.mostlyBelow(catalogue::kMatchCodes.size() + 1);
  const auto match = filtersMatch_t(code);
  const auto action = filtersAction_t(code);
  const bool ofMatch = in.flag(), inC = in.flag();
  const filtersErr_t result =
      ofMatch ? inC ? filtersEntryDeleteMatch(&e.real, match) : e.real.deleteMatch(match)
      : inC ? filtersEntryDeleteAction(&e.real, action)
              : e.real.deleteAction(action);
  FUZZ_CHECK(result == fuzz::erase(ofMatch ? e.model.matches : e.model.actions, code));
}

// Sets several objects at once. A key need not be the code of its object, a pointer may be null,
// and a code may be unknown.
template <class Base>
void putMany(Entry& e, Entry&, ByteReader& in) {
  constexpr bool matches = fuzz::isMatch<Base>;
  using Code = std::conditional_t<matches, filtersMatch_t, filtersAction_t>;
  using Classes = std::conditional_t<matches, catalogue::AllMatches, catalogue::AllActions>;
  std::map<Code, std::unique_ptr<Base>> given;
  for (unsigned left = in.below(6); left > 0; --left) {
    withSample(Classes(), in, [&](const auto& object) {
      given[Code(in.u8())] = std::make_unique<std::decay_t<decltype(object)>>(object);
    });
  }
  if (in.flag()) given[Code(1000)] = nullptr;
  if (in.flag()) given[Code(1001)] = std::make_unique<Base>(Code(1001));

  const bool replace = in.flag();
  fuzz::EntryModel changed = e.model;
  if (replace) changed.held<Base>().clear();
  filtersErr_t expected = FILTERS_OK;
  for (auto it = given.begin(); expected == FILTERS_OK && it != given.end(); ++it) {
    if (it->first < 1000) expected = changed.put(*it->second);
  }
  if (!replace || expected == FILTERS_OK) e.model = changed;
  if constexpr (matches) {
    FUZZ_CHECK((replace ? e.real.setMatches(given) : e.real.copyMatches(given)) == expected);
  } else {
    FUZZ_CHECK((replace ? e.real.setActions(given) : e.real.copyActions(given)) == expected);
  }
}

void setScalarsAndPolicers(Entry& e, Entry&, ByteReader& in) {
  e.real.setId(e.model.id = in.mostlyBelow(6));
  filtersEntrySetPriority(&e.real, e.model.priority = in.u8());
  e.model.policer = catalogue::policerAt(policer::Stage(in.mostlyBelow(4)), in.u8());
  e.real.setPolicer(e.model.policer);
  e.real.setPolicer(e.real.getPolicer());
  if (in.flag()) return;
  e.model.parent = catalogue::policerAt(policer::Stage::Egress, in.u8());
  e.real.setPolicerParent(*e.model.parent);
  e.real.setPolicerParent(*e.real.getPolicerParent());
}

void setCounter(Entry& e, Entry&, ByteReader& in) {
  const auto id = static_cast<unsigned short>(in.mostlyBelow(8));
  const auto type = counter_type_t(in.mostlyBelow(10));
  FUZZ_CHECK(e.real.setCounter({id, type}) == e.model.setCounter(id, type));
}

void deleteCounters(Entry& e, Entry&, ByteReader& in) {
  const auto id = static_cast<unsigned short>(in.mostlyBelow(8));
  const bool held = e.model.counters.erase(id) != 0;
  FUZZ_CHECK((e.real.getCounter(id) != nullptr) == held);
  FUZZ_CHECK(e.real.deleteCounter(id) == (held ? FILTERS_OK : FILTERS_ERR_INVALID_ARGUMENT));
  if (in.below(8) != 0) return;
  e.real.deleteCounters();
  e.model.counters.clear();
}

void renew(Entry& e, Entry&, ByteReader& in) {
  e = {FiltersEntry(in.mostlyBelow(6)), {}};
  e.model.id = filtersEntryGetId(&e.real);
}

void assign(Entry& e, Entry& other, ByteReader&) {
  e.real = FiltersEntry(other.real);
  e.model = other.model;
}

void readMessage(Entry& e, Entry& other, ByteReader&) {
  const FiltersEntryPB message = catalogue::messageOf(other.real);
  e.real.convertFromFiltersEntryPB(&message);
  e.model.add(fuzz::EntryModel(other.model));
}

using EntryCall = void (*)(Entry&, Entry&, ByteReader&);
constexpr EntryCall putMatches = putMany<Match>, putActions = putMany<Action>;
constexpr EntryCall kEntryCalls[] = {put,        put,        put,
                                     take,       take,       erase,
                                     putMatches, putActions, setScalarsAndPolicers,
                                     setCounter, setCounter, deleteCounters,
                                     renew,      assign,     readMessage};

// --- Groups --------------------------------------------------------------------------------------

struct Group {
  FiltersGroup real{0};
  fuzz::GroupModel model;
};

// Inserts the entry, or an entry with a single match or action. Groups admit such a short entry
// more often.
void insert(Group& g, Group&, const Entry& e, ByteReader& in) {
  Entry given{FiltersEntry(e.real), e.model};
  if (in.flag()) {
    renew(given, given, in);
    put(given, given, in);
  }
  const filtersErr_t expected = g.model.insert(given.model);
  FUZZ_CHECK((in.flag() ? g.real.insertEntry(given.real)
                        : filtersGroupInsertEntry(&g.real, &given.real)) == expected);
}

void removeEntry(Group& g, Group&, const Entry&, ByteReader& in) {
  const std::uint32_t id = in.mostlyBelow(6);
  FUZZ_CHECK((in.flag() ? g.real.removeEntry(id) : filtersGroupRemoveEntry(&g.real, id)) ==
             fuzz::erase(g.model.entries, id));
}

// Passes a reference into a group to the group itself. Inserts an entry that the group already
// holds, so that a copy of the entry replaces it. Or removes an entry, and names it by the id that
// is stored in the entry.
void passOwnParts(Group& g, Group&, const Entry&, ByteReader& in) {
  if (g.model.entries.empty()) return;
  const auto& [key, entry] = *g.real.getEntriesRef().begin();
  if (in.flag()) {
    const filtersErr_t expected = g.model.insert(g.model.entries.at(key));
    FUZZ_CHECK(g.real.insertEntry(entry) == expected);
  } else {
    g.model.entries.erase(key);
    FUZZ_CHECK(g.real.removeEntry(key) == FILTERS_OK);
  }
}

void setPriorityAndStage(Group& g, Group&, const Entry&, ByteReader& in) {
  filtersGroupSetPriority(&g.real, g.model.priority = in.u8());
  const std::uint32_t number = in.mostlyBelow(catalogue::kTypesOfStage.size() + 1);
  const auto stage = filtersGroupStage_t(number);
  const filtersErr_t expected = g.model.setStage(number);
  if (in.flag()) return FUZZ_CHECK(g.real.setStage(stage) == expected);
  filtersGroupSetStage(&g.real, stage);  // after a refusal the stage is the old one
}

void setType(Group& g, Group&, const Entry&, ByteReader& in) {
  const std::uint32_t number = in.mostlyBelow(catalogue::kMatchesOfType.size() + 1);
  const auto type = filtersGroupType_t(number);
  FUZZ_CHECK((in.flag() ? g.real.setType(type) : filtersGroupSetType(&g.real, type)) ==
             g.model.setType(number));
}

// Reads a message with any stage and type and with the entries of the other group.
void readMessage(Group& g, Group& other, const Entry&, ByteReader& in) {
  FiltersGroupPB message = other.model.message();
  message.set_id_(in.u32());
  message.set_stage_(g.model.stage = in.mostlyBelow(catalogue::kTypesOfStage.size() + 1));
  message.set_type_(g.model.type = in.mostlyBelow(catalogue::kMatchesOfType.size() + 1));
  g.model.id = static_cast<unsigned short>(message.id_());
  g.model.priority = other.model.priority;
  const auto entries = other.model.entries;  // `other` may be `g`
  for (const auto& [id, entry] : entries) g.model.insert(entry);
  g.real.convertFromFiltersGroupPB(&message);
}

void assignOrCompare(Group& g, Group& other, const Entry&, ByteReader& in) {
  const bool same = fuzz::bytesOf(g.model) == fuzz::bytesOf(other.model);
  FUZZ_CHECK((g.real == other.real) == same && (g.real != other.real) == !same);
  if (in.flag()) return;
  g.real = other.real;  // `other` may be `g`
  g.model = fuzz::GroupModel(other.model);
}

// Moves the other group, which may be `g`, directly or through a temporary group.
void move(Group& g, Group& other, const Entry&, ByteReader& in) {
  if (in.flag()) {
    g.real = std::move(other.real);
  } else {
    g.real = FiltersGroup(std::move(other.real));
  }
  if (&g == &other) return;
  g.model = other.model;
  other.model.entries.clear();
}

constexpr void (*kGroupCalls[])(Group&, Group&, const Entry&, ByteReader&) = {
    insert,  insert,      insert,          insert, removeEntry, passOwnParts, setPriorityAndStage,
    setType, readMessage, assignOrCompare, move};

// Rebuilds the group from its bytes, as a receiver does, and checks the result. The rebuilt group
// leaves out entries that its stage and type refuse. A group holds such entries after it reads a
// message with another stage or type.
void checkRebuilt(const Group& g) {
  fuzz::GroupModel expected = g.model;
  expected.entries.clear();
  for (const auto& [id, entry] : g.model.entries) expected.insert(entry);
  const FiltersGroup rebuilt(catalogue::bytesOf(g.real));
  FUZZ_CHECK(catalogue::bytesOf(rebuilt) == fuzz::bytesOf(expected));
  FUZZ_NO_FAULT(catalogue::faultOf(rebuilt));
}

// Checks after a call that the object equals its model. Also checks that the object equals its old
// value if and only if the call changed nothing.
template <class Subject, class Call>
void play(Subject& subject, Call call) {
  const auto before = subject.real;
  call();
  const std::string bytes = catalogue::bytesOf(subject.real);
  FUZZ_CHECK(bytes == fuzz::bytesOf(subject.model));
  FUZZ_CHECK((before == subject.real) == (catalogue::bytesOf(before) == bytes));
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  ByteReader in(data, size);
  Entry entries[3];
  Group groups[2];
  for (int calls = 0; calls < 100 && !in.empty(); ++calls) {
    const unsigned where = in.u8();
    Entry& entry = entries[where % 3];
    Group& group = groups[where / 4 % 2];
    if (where < 160) {
      const auto call = kEntryCalls[in.below(std::size(kEntryCalls))];
      play(entry, [&] { call(entry, entries[where / 8 % 3], in); });
    } else {
      const auto call = kGroupCalls[in.below(std::size(kGroupCalls))];
      play(group, [&] { call(group, groups[where / 8 % 2], entry, in); });
    }
  }
  for (const Entry& entry : entries) FUZZ_NO_FAULT(catalogue::faultOf(entry.real));
  for (const Group& group : groups) checkRebuilt(group);
  return 0;
}
