// Tests what happens when memory runs out. Every public operation that allocates is repeated: its
// first allocation is refused, then its second, its third and so on, until the operation runs
// without a refusal. Each of these runs is done twice: once only that one allocation is refused,
// and once all later allocations are refused too.

#include "memory_control.h"

#include <filter_common/filter_actions_c.h>
#include <filter_common/filter_entries_c.h>
#include <filter_common/filter_groups_c.h>
#include <filter_common/filter_matches_c.h>
#include <filter_common/filter_serialized.h>

#include <functional>

#include "entry_samples.h"

namespace {

using namespace catalogue;
using E = FiltersEntry;
using G = FiltersGroup;

// The state of the tested object after a failure. With `Leaking`, the object is unchanged, but the
// protocol-buffer runtime may lose the block that it has just allocated. A step with `NotTried` is
// skipped.
enum Promise { Unchanged, Valid, Leaking, NotTried };

// Without memory, releases 3.6.0 and 34.2 crash when an element is added to a message that is not
// on an arena, and 3.6.0 also crashes if a message has an unknown field. The reason is that these
// releases count the element before they store it.
constexpr Promise AddsElements = GOOGLE_PROTOBUF_VERSION / 1000 == 3021 ? Unchanged : NotTried;
constexpr Promise HasUnknownFields = GOOGLE_PROTOBUF_VERSION >= 3021000 ? Leaking : NotTried;

template <class Subject>
struct Step {
  const char* name;
  std::function<void(Subject&)> run;
  Promise promise = Unchanged;
};

std::string look(const E& entry) { return bytesOf(entry); }
std::string look(const G& group) { return bytesOf(group); }

// Each step starts with the result of the previous step. A failing step must throw std::bad_alloc,
// leak nothing, leave the object in the promised state, and succeed when it is tried again.
template <class Subject>
void trial(Subject subject, const std::vector<Step<Subject>>& steps) {
  long failures = 0;
  for (const auto& [name, run, promise] : steps) {
    if (promise == NotTried) continue;
    Subject changed(subject);
    run(changed);
    const std::string before = look(subject), after = look(changed);
    for (long allowed = 0, once = 0; once < 2; ++allowed) {
      SCOPED_TRACE(name + (" after allocations: " + std::to_string(allowed)));
      const long live = memory::live;
      bool failed = false;
      {
        Subject tried(subject);
        memory::refuseAfter(allowed, once != 0);
        try {
          run(tried);
        } catch (const std::bad_alloc&) {
          failed = true;
        }
        ASSERT_EQ(failed, memory::endRefusal()) << "swallowed";
        if (promise != Valid && failed) {
          ASSERT_EQ(look(tried), before);
        }
        if (failed) run(tried);
        ASSERT_EQ(look(tried), after);
      }
      if (promise == Leaking && memory::live == live + 1) operator delete(memory::last);
      ASSERT_EQ(memory::live, live) << "leaked";
      failures += failed;
      if (!failed) allowed = -1, ++once;
    }
    subject = std::move(changed);
  }
  EXPECT_GT(failures, 0);
}

// Runs a step on an object that only this step uses. `holds` checks the object after a failure.
template <class Holds, class Run>
void expectOnFailure(Holds holds, Run run) {
  try {
    run();
  } catch (const std::bad_alloc&) {
    EXPECT_TRUE(holds());
    throw;
  }
}

template <class T>
void print(const T& object) {
  std::ostringstream os;
  os.exceptions(std::ios::badbit);
  os << object;
}

template <class T>
void passThroughBytes(const T& object) {
  std::string bytes;
  FiltersSerialized buffer;
  expectOnFailure([&] { return bytes.empty(); }, [&] { object.serialize(&bytes); });
  expectOnFailure([&] { return buffer.data() == nullptr; }, [&] { object.serialize(&buffer); });
  const T fromBytes(bytes), fromBuffer(buffer), copy(object);
}

// --- Classes -------------------------------------------------------------------------------------

// An object of a class, and what is done with it. The compiler makes the trial itself once for all
// classes, which takes much less of its time.
struct Object {
  virtual ~Object() = default;
  virtual std::unique_ptr<Object> copy() const = 0;
  virtual std::string bytes() const = 0;
  virtual void readMessage() = 0;
  virtual void writeMessage() = 0;
  virtual void printIt() = 0;
  virtual void assignOther() = 0;
  virtual void setIn(E* entry) = 0;
  virtual void getFrom(E* entry) = 0;
};

template <class T>
struct ObjectOf : Object {
  ObjectOf(const T& sample, const MessageOf<T>& itsMessage) : object(sample), message(itsMessage) {}
  std::unique_ptr<Object> copy() const override { return std::make_unique<ObjectOf>(*this); }
  std::string bytes() const override { return wireOf(object); }
  void readMessage() override { read(object, message); }
  void writeMessage() override { write(object, std::make_unique<MessageOf<T>>().get()); }
  void printIt() override { print(object); }
  void assignOther() override { object = samples<T>().back(); }
  void setIn(E* entry) override { put(*entry, object); }
  void getFrom(E* entry) override { take(*entry, object); }

  T object;
  const MessageOf<T>& message;
};

struct Scene {
  Scene(const E& itsEntry, std::unique_ptr<Object> itsObject)
      : entry(itsEntry), object(std::move(itsObject)) {}
  Scene(const Scene& other) : Scene(other.entry, other.object->copy()) {}
  Scene& operator=(Scene&&) = default;

  E entry;
  std::unique_ptr<Object> object;
};
std::string look(const Scene& scene) { return look(scene.entry) + scene.object->bytes(); }

void trialOfClass(const Scene& scene) {
  trial<Scene>(scene, {{"read", [](Scene& s) { s.object->readMessage(); }},
                       {"write", [](Scene& s) { s.object->writeMessage(); }},
                       {"print", [](Scene& s) { s.object->printIt(); }},
                       {"set", [](Scene& s) { s.object->setIn(&s.entry); }},
                       {"assign", [](Scene& s) { s.object->assignOther(); }, Valid},
                       {"get", [](Scene& s) { s.object->getFrom(&s.entry); }}});
}

template <class T>
class FailingMemoryOf : public testing::Test {};
TYPED_TEST_SUITE(FailingMemoryOf, EveryClass);

TYPED_TEST(FailingMemoryOf, AClassLeavesItsObjectsAndTheirEntryAsTheyWere) {
  const TypeParam& other = samples<TypeParam>().back();
  for (const TypeParam& sample : samples<TypeParam>()) {
    E entry(1);
    ASSERT_EQ(put(entry, other), FILTERS_OK);
    MessageOf<TypeParam> message;
    write(sample, &message);
    trialOfClass({entry, std::make_unique<ObjectOf<TypeParam>>(other, message)});
  }
}

// --- Entries and groups --------------------------------------------------------------------------

TEST(FailingMemory, LeavesAnEntryAsItWas) {
  const E full = fullEntry();
  const auto matches = matchesOf({FILTERS_MATCH_INGRESS_PORTS, FILTERS_MATCH_EXTERNAL_VLAN_ID,
                                  FILTERS_MATCH_PCP, FILTERS_MATCH_TTL}),
             further =
                 matchesOf({FILTERS_MATCH_DST_MAC, FILTERS_MATCH_SRC_IPV6, FILTERS_MATCH_DST_IPV6});
  const auto actions = actionsOf({FILTERS_ACTION_DENY, FILTERS_ACTION_BLOCK_EGRESS_PORTS,
                                  FILTERS_ACTION_REDIRECT, FILTERS_ACTION_MPLS_PORT_SET}),
             more = actionsOf({FILTERS_ACTION_SET_PCP, FILTERS_ACTION_REPLACE_DST_MAC});
  const FiltersEntryPB message = messageOf(full);
  E small =
      entryOf({FILTERS_MATCH_SRC_IPV6, FILTERS_MATCH_DST_IPV6, FILTERS_MATCH_DST_L4_PORT_RANGE},
              {FILTERS_ACTION_BLOCK_EGRESS_PORTS, FILTERS_ACTION_REDIRECT});
  small.setPolicer(policer::Policer());
  trial<E>(small, {{"setMatches", [&](E& e) { return e.setMatches(matches); }},
                   {"copyMatches", [&](E& e) { return e.copyMatches(further); }, Valid},
                   {"setActions", [&](E& e) { return e.setActions(actions); }},
                   {"copyActions", [&](E& e) { return e.copyActions(more); }, Valid},
                   {"setPolicer", [&](E& e) { e.setPolicer(full.getPolicer()); }},
                   {"setPolicerParent", [&](E& e) { e.setPolicerParent(full.getPolicer()); }},
                   {"setCounter", [&](E& e) { return e.setCounter(*full.getCounter(300)); }},
                   {"to a message", [](E& e) { messageOf(e); }, AddsElements},
                   {"from a message", [&](E& e) { e.convertFromFiltersEntryPB(&message); }, Valid},
                   {"bytes", [](E& e) { passThroughBytes(e); }},
                   {"print", [](E& e) { print(e); }}});
}

void getEntries(G& group) {
  entriesStruct held = {-7, nullptr, nullptr};
  expectOnFailure([&] { return held.count == -7; }, [&] { filtersGroupGetEntries(&group, &held); });
  deleteFiltersEntriesStruct(&held);
}

TEST(FailingMemory, LeavesAGroupAsItWasButForTheEntryToBeReplaced) {
  const E entry =
      entryOf({FILTERS_MATCH_ALL, FILTERS_MATCH_INGRESS_PORTS, FILTERS_MATCH_EXTERNAL_VLAN_ID,
               FILTERS_MATCH_DST_MAC, FILTERS_MATCH_SRC_MAC},
              {FILTERS_ACTION_BLOCK_EGRESS_PORTS, FILTERS_ACTION_SET_PCP, FILTERS_ACTION_REDIRECT},
              policer::Stage::Ingress);
  E another(entry);
  another.setId(9);
  G full = groupOf(kIngress, 1);
  ASSERT_EQ(full.insertEntry(entry), FILTERS_OK);
  ASSERT_EQ(full.insertEntry(E(8)), FILTERS_OK);
  const FiltersGroupPB message = full.convertToFiltersGroupPB();
  const auto replace = [&](G& g) {
    const auto lost = [&] { return g.getEntriesRef().count(7) == 0; };
    expectOnFailure(lost, [&] { return g.insertEntry(entry); });
  };
  trial<G>(G(5), {{"assign", [&](G& g) { g = full; }},
                  {"insertEntry", [&](G& g) { return g.insertEntry(another); }},
                  {"replace", replace, Valid},
                  {"from a message", [&](G& g) { g.convertFromFiltersGroupPB(&message); }, Valid},
                  {"to a message", [](G& g) { g.convertToFiltersGroupPB(); }, AddsElements},
                  {"filtersGroupGetEntries", getEntries},
                  {"bytes", [](G& g) { passThroughBytes(g); }},
                  {"print", [](G& g) { print(g); }}});
}

// --- The rest ------------------------------------------------------------------------------------

// The runtime keeps a copy of an unknown field, and leaks it if there is no memory to store it in
// its list. Throwing an exception needs memory too; without it, std::bad_alloc is thrown instead.
TEST(FailingMemory, LeavesNothingBehind) {
  const auto inGroup = [](const std::string& entry) {
    return fromHex("2a" + varint(static_cast<std::uint32_t>(entry.size()))) + entry;
  };
  const std::string head = bytesOf(G(7)), entry = bytesOf(fullEntry());
  const std::string unknown = entry + fromHex("a20603616263 a20610") + std::string(16, 'x');
  const std::string unknownInside = head + inGroup(unknown);
  const std::string twice = head + inGroup(entry) + inGroup(entry);
  const std::string refused = twice + inGroup(fromHex("2a020812"));  // no interfaces for MPLS
  const auto refuse = [&](E&) {
    try {
      G rebuilt(refused);
    } catch (const std::invalid_argument&) {
    }
  };
  trial<E>(E(1),
           {{"unknown fields", [&](E&) { E rebuilt(unknown); }, HasUnknownFields},
            {"unknown fields in a group", [&](E&) { G rebuilt(unknownInside); }, HasUnknownFields},
            {"repeated ids", [&](E&) { G rebuilt(twice); }},
            {"refused", refuse},
            {"ports", [](E&) { deleteMatch(newMatchIngressPorts(&kEth3, 1)); }},
            {"action", [](E&) { deleteAction(newActionDeny()); }},
            {"entry", [](E&) { deleteFiltersEntry(newFiltersEntry(1)); }},
            {"group", [](E&) { deleteFiltersGroup(newFiltersGroup(1)); }}});
}

// A message may repeat a few values of a set many times. The set needs memory only for the values.
TEST(Memory, OfASetIsThatOfItsValuesHoweverOftenTheyAreSent) {
  MatchPB message;
  message.mutable_pcp_()->Resize(100000, 7);
  MatchPcp match(0);
  const auto before = memory::held;
  memory::restartPeak();
  match.convertFromMatchPB(&message);
  EXPECT_LT(memory::peak - before, 2000u);
  EXPECT_EQ(match.getPcps(), Pcps{7});
}

}  // namespace
