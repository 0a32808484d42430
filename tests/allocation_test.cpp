// Memory that runs out: every public operation that allocates is repeated with its first, second,
// third... allocation refused, once or from there on, until it meets no refusal.

#include "memory_control.h"

#include <filter_common/filter_actions_c.h>
#include <filter_common/filter_entries_c.h>
#include <filter_common/filter_groups_c.h>
#include <filter_common/filter_matches_c.h>
#include <filter_common/filter_serialized.h>
#include <google/protobuf/arena.h>

#include <cstdio>
#include <functional>
#include <map>
#include <sstream>
#include <stdexcept>
#include <string>

#include "entry_samples.h"

namespace {

using namespace catalogue;

// --- The trial -----------------------------------------------------------------------------------

std::map<std::string, long> failurePoints;  // tried, by operation

class Report : public testing::Environment {
 public:
  void TearDown() override {
    long total = 0;
    for (const auto& [operation, points] : failurePoints) {
      std::printf("%6ld  %s\n", points, operation.c_str());
      EXPECT_GT(points, 0) << operation << " allocates nothing";
      total += points;
    }
    std::printf("%6ld  failure points in %zu operations\n", total, failurePoints.size());
  }
};
[[maybe_unused]] testing::Environment* const report = testing::AddGlobalTestEnvironment(new Report);

// What a subject is after a failure. Leaking: unchanged, but the protocol-buffer runtime may lose
// the one block that it has just allocated.
enum Promise { Unchanged, Valid, Leaking };

// Every failure must come out as std::bad_alloc, leak nothing, leave of the subject that `make`
// returns what is promised, as `look` sees it, and not be in the way of another try.
template <class Make, class Run, class Look>
void trial(const std::string& operation, Make make, Run run, Look look,
           Promise promise = Unchanged) {
  std::string before, after;
  {
    auto subject = make();
    before = look(subject);
    run(subject);
    after = look(subject);
  }
  long& points = failurePoints[operation];
  for (const bool fromThenOn : {false, true}) {
    long refused = 1;
    for (long allowed = 0; refused != 0; ++allowed) {
      SCOPED_TRACE(operation + " after " + std::to_string(allowed) + " allocations");
      const long live = memory::live;
      {
        auto subject = make();
        bool thrown = false;
        memory::Refusal refusal(allowed, fromThenOn);
        try {
          run(subject);
        } catch (const std::bad_alloc&) {
          thrown = true;
        }
        refused = memory::Refusal::end();
        ASSERT_EQ(thrown, refused != 0) << "swallowed";
        const std::string now = look(subject);
        if (promise != Valid) {
          ASSERT_EQ(now, thrown ? before : after);
        }
        if (thrown) run(subject);
        ASSERT_EQ(look(subject), after) << "another try";
      }
      if (promise == Leaking && memory::live == live + 1) memory::Refusal::freeLast();
      ASSERT_EQ(memory::live, live) << "leaked";
      if (refused != 0) ++points;
    }
  }
}

// The same for what makes a new object and drops it, out of nothing that could change.
template <class Run>
void trial(const std::string& operation, Run run, Promise promise = Unchanged) {
  trial(
      operation, [] { return 0; }, [&](int) { run(); }, [](int) { return ""; }, promise);
}

std::string look(const FiltersEntry& entry) { return bytesOf(entry); }
std::string look(const FiltersGroup& group) { return bytesOf(group); }
std::string look(const Match& match) { return wireOf(match); }
std::string look(const Action& action) { return wireOf(action); }
const auto seen = [](const auto& subject) { return look(subject); };

// Printing into a stream that reports by exception, and into one that turns bad.
template <class T>
void trialOfPrinting(const std::string& operation, const T& object) {
  trial(operation, [&] {
    std::ostringstream os;
    os.exceptions(std::ios::badbit);
    os << object;
  });
  trial(operation, [&] {
    std::ostringstream os;
    os << object;
    if (os.bad()) throw std::bad_alloc();
  });
}

// --- Matches and actions -------------------------------------------------------------------------

template <class T>
class FailingMemoryOf : public testing::Test {};
TYPED_TEST_SUITE(FailingMemoryOf, EveryClass);

MatchPB messageFor(const Match&) { return {}; }
ActionPB messageFor(const Action&) { return {}; }
void write(const Match& match, MatchPB* message) { match.convertToMatchPB(message); }
void write(const Action& action, ActionPB* message) { action.convertToActionPB(message); }
void read(Match& match, const MatchPB& message) { match.convertFromMatchPB(&message); }
void read(Action& action, const ActionPB& message) { action.convertFromActionPB(&message); }

filtersErr_t getC(FiltersEntry& entry, Match& match) {
  return filtersEntryGetMatch(&entry, &match);
}
filtersErr_t setC(FiltersEntry& entry, Match& match) {
  return filtersEntrySetMatch(&entry, &match);
}
filtersErr_t getC(FiltersEntry& entry, Action& action) {
  return filtersEntryGetAction(&entry, &action);
}
filtersErr_t setC(FiltersEntry& entry, Action& action) {
  return filtersEntrySetAction(&entry, &action);
}

TYPED_TEST(FailingMemoryOf, AClassLeavesItsObjectsAsTheyWere) {
  const TypeParam& other = samples<TypeParam>().back();
  for (TypeParam object : samples<TypeParam>()) {
    const auto makeOther = [&] { return other; };
    auto message = messageFor(object);
    write(object, &message);
    trial("object: copy", [&] { TypeParam copy(object); });
    trial(
        "object: assign", makeOther, [&](TypeParam& o) { o = object; }, seen, Valid);
    trial(
        "object: read from message", makeOther, [&](TypeParam& o) { read(o, message); }, seen);
    trial("object: write to message", [&] {
      auto fresh = messageFor(object);
      write(object, &fresh);
    });
    trialOfPrinting("object: print", object);
  }
}

// An entry and what is read out of it.
template <class T>
struct Reading {
  FiltersEntry entry;
  T out;
};
template <class T>
std::string look(const Reading<T>& reading) {
  return look(reading.entry) + look(reading.out);
}

TYPED_TEST(FailingMemoryOf, AClassLeavesAnEntryAsItWas) {
  const TypeParam& other = samples<TypeParam>().back();
  for (TypeParam object : samples<TypeParam>()) {
    const auto makeEntry = [&] {
      FiltersEntry entry = entryOf({30}, {1});
      put(entry, other);
      return entry;
    };
    const auto makeReading = [&] {
      Reading<TypeParam> reading{FiltersEntry(1), other};
      put(reading.entry, object);
      return reading;
    };
    const auto get = [](auto& r) { take(r.entry, r.out); };
    const auto getByC = [](auto& r) { getC(r.entry, r.out); };
    trial(
        "entry: set a match or action", makeEntry, [&](FiltersEntry& e) { put(e, object); }, seen);
    trial("entry: get a match or action", makeReading, get, seen);
    trial(
        "filtersEntrySet...", makeEntry, [&](FiltersEntry& e) { setC(e, object); }, seen);
    trial("filtersEntryGet...", makeReading, getByC, seen);
    if constexpr (isMatch<TypeParam>) {
      trial("entry: ask for compatibility", [&] { FiltersEntry().isL3CompatibleMatch(object); });
      trial("entry: ask for compatibility",
            [&] { FiltersEntry().isL4DstPortCompatibleMatch(object); });
    }
  }
}

TEST(FailingMemory, LeavesNothingOfAListBehind) {
  const Ports ports{kEth3, kLag1};
  const VlanIds vlanIds{1, 2};
  const Pcps pcps{1, 2};
  trial("MatchIngressPorts(ports)", [&] { MatchIngressPorts match(ports); });
  trial("MatchIngressPorts(types)", [&] { MatchIngressPorts match(kCpuPort); });
  trial("MatchEgressPorts(ports)", [&] { MatchEgressPorts match(ports); });
  trial("MatchExternalVlanId(ids)", [&] { MatchExternalVlanId match(vlanIds); });
  trial("MatchInternalVlanId(ids)", [&] { MatchInternalVlanId match(vlanIds); });
  trial("MatchPcp(pcps)", [&] { MatchPcp match(pcps); });
  trial("MatchInternalPcp(pcps)", [&] { MatchInternalPcp match(pcps); });
  trial("ActionBlockEgressPorts(ports)", [&] { ActionBlockEgressPorts action(ports); });
  const MatchIngressPorts match(ports), excluding(kCpuPort);
  trial("getPorts", [&] { match.getPorts(); });
  trial("getExcludedPortTypes", [&] { excluding.getExcludedPortTypes(); });
  trial("getVlanIds", [&, m = MatchExternalVlanId(vlanIds)] { m.getVlanIds(); });
  trial("getPcps", [m = MatchPcp(pcps)] { m.getPcps(); });
  trial("getPcps", [m = MatchInternalPcp(pcps)] { m.getPcps(); });
  trial("getRedirectPorts", [a = redirectTo(ports)] { a.getRedirectPorts(); });
  trial("getPorts", [a = ActionBlockEgressPorts(ports)] { a.getPorts(); });
  trial(
      "setPorts", [&] { return match; }, [](auto& m) { return m.setPorts({kEth4}); }, seen);
}

// --- Entries and groups --------------------------------------------------------------------------

template <class Message>
std::enable_if_t<std::is_base_of_v<google::protobuf::Message, Message>, std::string> look(
    const Message& message) {
  return message.SerializePartialAsString();
}
std::string look(const FiltersSerialized& buffer) {
  return buffer.data() == nullptr ? "" : std::string(buffer.data(), buffer.size());
}

struct Bytes {
  explicit Bytes(const std::string& of) : text(of), buffer(text) {}
  std::string text;
  FiltersSerialized buffer;
};

// Refused memory, 3.6.0 and 34.2 crash over an element added to a message that is on no arena, and
// 3.6.0 over an unknown field: they count them before they hold them.
constexpr bool kSurvivesElements = GOOGLE_PROTOBUF_VERSION / 1000 == 3021;
constexpr bool kSurvivesUnknownFields = GOOGLE_PROTOBUF_VERSION >= 3021000;

// What entries and groups have in common.
// An entry's bytes as they stand in a group's.
std::string groupField(const std::string& entry) {
  return fromHex("2a" + varint(static_cast<std::uint32_t>(entry.size()))) + entry;
}

template <class T>
void trialsOfBytes(const std::string& name, const T& object) {
  Bytes bytes(bytesOf(object));
  trial(name + ": copy", [&] { T copy(object); });
  trial(name + ": from a string", [&] { T rebuilt(bytes.text); });
  trial(name + ": from a buffer", [&] { T rebuilt(bytes.buffer); });
  trial(name + ": serialize to a string", [&] {
    std::string text;
    object.serialize(&text);
  });
  trial(name + ": serialize to a buffer", [&] {
    FiltersSerialized buffer;
    object.serialize(&buffer);
  });
  trialOfPrinting(name + ": print", object);
}

FiltersGroup fullGroup() {
  FiltersGroup group = groupOf(2, 1);
  FiltersEntry entry = entryOf({0, 1, 2, 4, 7}, {3, 5, 11}, policer::Stage::Ingress);
  entry.setPolicerParent(policerAt(policer::Stage::Egress));
  EXPECT_EQ(entry.setCounter({1, FILTERS_COUNTER_TYPE_OCTETS}), FILTERS_OK);
  EXPECT_EQ(group.insertEntry(entry), FILTERS_OK);
  EXPECT_EQ(group.insertEntry(FiltersEntry(8)), FILTERS_OK);
  return group;
}

TEST(FailingMemory, LeavesAnEntryAsItWas) {
  const FiltersEntry full = fullEntry(), small = entryOf({14, 15, 34}, {3, 11});
  trialsOfBytes("entry", full);
  trialsOfBytes("entry", small);
  const auto make = [&] { return small; };
  const auto matches = matchesOf({1, 2, 12, 26});
  const auto actions = actionsOf({1, 3, 11, 18});
  using E = FiltersEntry;
  trial(
      "entry: setMatches", make, [&](E& e) { return e.setMatches(matches); }, seen);
  trial(
      "entry: copyMatches", make, [&](E& e) { return e.copyMatches(matches); }, seen, Valid);
  trial(
      "entry: setActions", make, [&](E& e) { return e.setActions(actions); }, seen);
  trial(
      "entry: copyActions", make, [&](E& e) { return e.copyActions(actions); }, seen, Valid);
  trial(
      "entry: setPolicer", make, [&](E& e) { e.setPolicer(full.getPolicer()); }, seen);
  trial(
      "entry: setPolicerParent", make, [&](E& e) { e.setPolicerParent(full.getPolicer()); }, seen);
  trial(
      "entry: setCounter", make,
      [&](E& e) {
        EXPECT_EQ(e.setCounter({1, FILTERS_COUNTER_TYPE_OCTETS}), FILTERS_OK);
      },
      seen);
  const FiltersEntryPB message = messageOf(full);
  trial(
      "entry: from a message", make, [&](E& e) { e.convertFromFiltersEntryPB(&message); }, seen,
      Valid);
  if (!kSurvivesElements) return;
  trial("entry: to a message", [&] {
    FiltersEntryPB fresh;
    full.convertToFiltersEntryPB(&fresh);
  });
}

TEST(FailingMemory, LeavesAGroupAsItWas) {
  const FiltersGroup full = fullGroup();
  trialsOfBytes("group", full);
  trial("group: getEntries", [&] { full.getEntries(); });
  FiltersEntry entry = full.getEntriesRef().at(7);
  entry.setId(9);
  const auto make = [&] { return full; };
  using G = FiltersGroup;
  trial(
      "group: insertEntry", make, [&](G& g) { return g.insertEntry(entry); }, seen);
  trial(
      "group: assign", [] { return FiltersGroup(1); }, [&](G& g) { g = full; }, seen);
  if (kSurvivesElements) trial("group: to a message", [&] { full.convertToFiltersGroupPB(); });
  const FiltersGroupPB message = full.convertToFiltersGroupPB();
  trial(
      "group: from a message", [] { return groupOf(0, 1); },
      [&](G& g) { g.convertFromFiltersGroupPB(&message); }, seen, Valid);
}

// The runtime keeps a copy of what it does not know, and loses it when there is no memory to list
// it.
TEST(FailingMemory, LosesAnUnknownFieldInsideOfTheRuntimeAlone) {
  if (!kSurvivesUnknownFields) GTEST_SKIP() << "the runtime crashes";
  const std::string unknown = fromHex("7a03616263") + fromHex("7a10") + std::string(16, 'x');
  const std::string entry = bytesOf(fullEntry()) + unknown, group = bytesOf(fullGroup()) + unknown;
  trial(
      "entry: from a string, unknown fields", [&] { FiltersEntry rebuilt(entry); }, Leaking);
  trial(
      "group: from a string, unknown fields", [&] { FiltersGroup rebuilt(group); }, Leaking);
  const std::string inside = bytesOf(FiltersGroup(7)) + groupField(entry);
  trial(
      "group: from a string, unknown fields in its entry", [&] { FiltersGroup rebuilt(inside); },
      Leaking);
}

// An entry that replaces another while a group is read.
TEST(FailingMemory, LosesNothingWhereIdsRepeat) {
  const std::string entry = bytesOf(fullEntry());
  const std::string twice = bytesOf(FiltersGroup(7)) + groupField(entry) + groupField(entry);
  trial("group: from a string, repeated ids", [&] { FiltersGroup rebuilt(twice); });
}

// An exception needs memory too; where there is none, that is the one to come out.
TEST(FailingMemory, LeavesNothingOfARefusalBehind) {
  const auto refused = [](auto call) {
    return [call] {
      try {
        call();
      } catch (const std::invalid_argument&) {
      }
    };
  };
  FiltersEntryPB message = messageOf(fullEntry());
  message.add_actions_()->set_type_(FILTERS_ACTION_MPLS_PORT_SET);
  const std::string bytes = message.SerializeAsString();
  trial("newActionMplsPortSet, refused", refused([] { newActionMplsPortSet(kEth3, kEth3); }));
  trial("entry: from a string, refused", refused([&] { FiltersEntry rebuilt(bytes); }));
  const std::string group =
      bytesOf(FiltersGroup(7)) + groupField(bytesOf(fullEntry())) + groupField(bytes);
  trial("group: from a string, refused", refused([&] { FiltersGroup rebuilt(group); }));
}

TEST(FailingMemory, LosesTheReplacedEntryWhenItsSuccessorCannotBeCopied) {
  FiltersGroup group = fullGroup();
  const FiltersEntry entry = group.getEntriesRef().at(7);
  for (long allowed = 0, refused = 1; refused != 0; ++allowed) {
    ASSERT_EQ(group.insertEntry(entry), FILTERS_OK);
    memory::Refusal refusal(allowed, false);
    try {
      EXPECT_EQ(group.insertEntry(entry), FILTERS_OK);
    } catch (const std::bad_alloc&) {
    }
    refused = memory::Refusal::end();
    ASSERT_EQ(group.getEntriesRef().count(7), refused == 0 ? 1u : 0u) << allowed;
    ASSERT_EQ(group.getEntriesRef().count(8), 1u);
  }
}

std::unique_ptr<FiltersSerialized> makeEmpty() { return std::make_unique<FiltersSerialized>(); }

// A message can repeat the few values there are for as long as it likes.
TEST(Memory, OfASetIsThatOfItsValuesHoweverOftenTheyAreSent) {
  MatchPB message;
  message.mutable_pcp_()->Resize(100000, 7);
  MatchPcp match(0);
  const auto before = memory::held;
  memory::restartPeak();
  match.convertFromMatchPB(&message);
  EXPECT_LT(memory::peak - before, 2000u);
  EXPECT_EQ(match.getPcps(), std::set<unsigned char>{7});
}

TEST(FailingMemory, LeavesABufferEmpty) {
  const std::string bytes(100, 'x');
  const auto seenBuffer = [](const auto& buffer) { return look(*buffer); };
  trial("buffer: from a string", [&] { FiltersSerialized buffer(bytes); });
  trial(
      "buffer: setData", makeEmpty, [&](auto& b) { b->setData(bytes); }, seenBuffer);
  trial(
      "buffer: copyData", makeEmpty, [&](auto& b) { b->copyData(bytes); }, seenBuffer);
}

// --- Procedural interface ------------------------------------------------------------------------

// A call that makes an object, by name and with its end.
#define NEW_MATCH(call)              \
  {                                  \
#call, [] { deleteMatch(call); } \
  }
#define NEW_ACTION(call)              \
  {                                   \
#call, [] { deleteAction(call); } \
  }

TEST(FailingMemory, LeavesNothingOfAHandleBehind) {
  static const limid_t ports[] = {kEth3, kLag1};
  static const vlan_info_t info = {1, 2};
  const struct {
    const char* call;
    void (*makeAndDelete)();
  } calls[] = {
      NEW_MATCH(newMatchAll()),
      NEW_MATCH(newMatchIngressPorts(ports, 2)),
      NEW_MATCH(newMatchEgressPorts(ports, 2)),
      NEW_MATCH(newMatchVirtualPort(ports)),
      NEW_MATCH(newMatchSrcPort(ports)),
      NEW_MATCH(newMatchCpuPort()),
      NEW_MATCH(newMatchCPUInjectedPackets(1)),
      NEW_MATCH(newMatchDrop(1)),
      NEW_MATCH(newMatchPacketRes(en_Resolution(1))),
      NEW_MATCH(newMatchIngressStpState(en_StpState(1))),
      NEW_MATCH(newMatchMplsTerm(1)),
      NEW_MATCH(newMatchDstMac(&kMac)),
      NEW_MATCH(newMatchDstMacMask(&kMac, &kMacMask)),
      NEW_MATCH(newMatchSrcMac(&kMac)),
      NEW_MATCH(newMatchSrcMacMask(&kMac, &kMacMask)),
      NEW_MATCH(newMatchL2SrcEntryType(l2SrcEntryType_t(1))),
      NEW_MATCH(newMatchTPID(1)),
      NEW_MATCH(newMatchVlanTagging(FILTERS_VLAN_TAGGED)),
      NEW_MATCH(newMatchExternalVlanId(1)),
      NEW_MATCH(newMatchInternalVlanId(1)),
      NEW_MATCH(newMatchPcp(1)),
      NEW_MATCH(newMatchInternalPcp(1)),
      NEW_MATCH(newMatchVlanInfo(&info)),
      NEW_MATCH(newMatchSrcIPv4(&kIPv4)),
      NEW_MATCH(newMatchSrcIPv4Mask(&kIPv4, &kIPv4Mask)),
      NEW_MATCH(newMatchDstIPv4(&kIPv4)),
      NEW_MATCH(newMatchDstIPv4Mask(&kIPv4, &kIPv4Mask)),
      NEW_MATCH(newMatchSrcIPv6(&kIPv6)),
      NEW_MATCH(newMatchDstIPv6(&kIPv6)),
      NEW_MATCH(newMatchDstIPv6Mask(&kIPv6, &kIPv6Mask)),
      NEW_MATCH(newMatchIpProtocol(1)),
      NEW_MATCH(newMatchDSCP(1)),
      NEW_MATCH(newMatchTTL(1)),
      NEW_MATCH(newMatchVrfId(1)),
      NEW_MATCH(newMatchDstL4Port(1)),
      NEW_MATCH(newMatchDstL4PortMask(1, 1)),
      NEW_MATCH(newMatchSrcL4Port(1)),
      NEW_MATCH(newMatchSrcL4PortMask(1, 1)),
      NEW_MATCH(newMatchDstL4PortRange(1, 2)),
      NEW_ACTION(newActionPermit()),
      NEW_ACTION(newActionDeny()),
      NEW_ACTION(newActionCopyToCpu()),
      NEW_ACTION(newActionCopyToCpuCancel()),
      NEW_ACTION(newActionSwitchToCpuCancel()),
      NEW_ACTION(newActionBlockEgressPorts(ports, 2)),
      NEW_ACTION(newActionSetPcp(1)),
      NEW_ACTION(newActionSetPcpAndQueue(1)),
      NEW_ACTION(newActionSetDSCP(1)),
      NEW_ACTION(newActionMapToCosQueue(1)),
      NEW_ACTION(newActionMapToCpuCosQueue(1)),
      NEW_ACTION(newActionRedirect(kEth3)),
      NEW_ACTION(newActionRedirectCancel()),
      NEW_ACTION(newActionL3Switch(1)),
      NEW_ACTION(newActionCopyInnerPcp()),
      NEW_ACTION(newActionMplsPortSet(kVpws7, kEth3)),
      NEW_ACTION(newReplaceDstMac(kMac)),
      NEW_ACTION(newReplaceSrcMac(kMac)),
      {"newFiltersEntry", [] { deleteFiltersEntry(newFiltersEntry(1)); }},
      {"newFiltersGroup", [] { deleteFiltersGroup(newFiltersGroup(1)); }},
  };
  for (const auto& [call, makeAndDelete] : calls) trial(call, makeAndDelete);
  FiltersEntry full = fullEntry();
  trial("copyFiltersEntry", [&] { deleteFiltersEntry(copyFiltersEntry(&full)); });
}

// Its entries are deleted with it.
struct Record : entriesStruct {
  Record() : entriesStruct{-7, nullptr, nullptr} {}
  ~Record() {
    if (ids != nullptr) deleteFiltersEntriesStruct(this);
  }
};
std::string look(const Record& record) {
  std::string seenSoFar = std::to_string(record.count) + (record.entries == nullptr ? "" : ":");
  for (int i = 0; i < record.count; ++i) seenSoFar += look(*record.entries[i]);
  return seenSoFar;
}

TEST(FailingMemory, LeavesTheGroupOfAHandleAsItWas) {
  FiltersGroup group = fullGroup();
  FiltersEntry entry = group.getEntriesRef().at(7);
  entry.setId(9);
  trial(
      "filtersGroupInsertEntry", fullGroup,
      [&](FiltersGroup& g) { return filtersGroupInsertEntry(&g, &entry); }, seen);
  trial(
      "filtersGroupGetEntries", [] { return Record(); },
      [&](Record& r) { filtersGroupGetEntries(&group, &r); }, seen);
}

}  // namespace
