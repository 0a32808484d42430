// What only C++ can see of the procedural interface: classes that C cannot make or read, and
// exceptions. The rest is in procedural_c_test.c.

#include <filter_common/filter_actions_c.h>
#include <filter_common/filter_entries_c.h>
#include <filter_common/filter_groups_c.h>
#include <filter_common/filter_matches_c.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <new>
#include <stdexcept>

#include "entry_samples.h"

namespace {
long liveAllocations = 0;
long untilRefusal = -1;  // allocations that still succeed; negative: all do
}  // namespace

// The memory of this program and of the library. Inlined, free() would meet g++'s warning that it
// does not belong to new.
[[gnu::noinline]] void* operator new(std::size_t size) {
  void* memory = untilRefusal == 0 ? nullptr : std::malloc(size);
  if (memory == nullptr) throw std::bad_alloc();
  if (untilRefusal > 0) --untilRefusal;
  ++liveAllocations;
  return memory;
}
void* operator new[](std::size_t size) { return operator new(size); }
[[gnu::noinline]] void operator delete(void* memory) noexcept {
  if (memory != nullptr) --liveAllocations;
  std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept { operator delete(memory); }
void operator delete[](void* memory) noexcept { operator delete(memory); }
void operator delete[](void* memory, std::size_t) noexcept { operator delete(memory); }

namespace {

using namespace catalogue;

// --- Dispatch by the object's code ---------------------------------------------------------------

filtersErr_t get(FiltersEntry& e, Match& m) { return filtersEntryGetMatch(&e, &m); }
filtersErr_t set(FiltersEntry& e, Match& m) { return filtersEntrySetMatch(&e, &m); }
filtersErr_t get(FiltersEntry& e, Action& a) { return filtersEntryGetAction(&e, &a); }
filtersErr_t set(FiltersEntry& e, Action& a) { return filtersEntrySetAction(&e, &a); }

template <class T>
FiltersEntry entryWith(const T& object) {
  FiltersEntry entry(1);
  if constexpr (std::is_base_of_v<Match, T>) entry.setMatch(object);
  if constexpr (std::is_base_of_v<Action, T>) entry.setAction(object);
  return entry;
}

template <class... M, class... A>
::testing::Types<M..., A...> both(::testing::Types<M...>, ::testing::Types<A...>);
template <class T>
class ProceduralDispatch : public testing::Test {};
using EveryClass = decltype(both(AllMatches(), AllActions()));
TYPED_TEST_SUITE(ProceduralDispatch, EveryClass);

TYPED_TEST(ProceduralDispatch, ReachesEveryClassButStationHitAndForwardingType) {
  constexpr bool reached = !std::is_same_v<TypeParam, MatchMyStationHit> &&
                           !std::is_same_v<TypeParam, MatchForwardingType>;
  TypeParam held = samples<TypeParam>().front(), other = samples<TypeParam>().back();
  TypeParam out = other;
  FiltersEntry entry = entryWith(held);
  EXPECT_EQ(get(entry, out), reached ? FILTERS_OK : FILTERS_ERR_INVALID);
  EXPECT_TRUE(out == (reached ? held : other));
  EXPECT_EQ(set(entry, other), reached ? FILTERS_OK : FILTERS_ERR_INVALID);
  EXPECT_TRUE(entry == entryWith(reached ? other : held));
}

TEST(Procedural, RefusesCodesThatNoClassCarries) {
  FiltersEntry entry = fullEntry();
  const std::pair<std::uint32_t, std::uint32_t> codes[] = {
      {35, 20}, {36, 35}, {0x80000000u, 0x80000000u}, {kMax, kMax}};
  for (const auto& [code, actionCode] : codes) {
    Match match{filtersMatch_t(code)};
    Action action{filtersAction_t(actionCode)};
    EXPECT_EQ(get(entry, match), FILTERS_ERR_INVALID) << code;
    EXPECT_EQ(set(entry, match), FILTERS_ERR_INVALID) << code;
    EXPECT_EQ(get(entry, action), FILTERS_ERR_INVALID) << code;
    EXPECT_EQ(set(entry, action), FILTERS_ERR_INVALID) << code;
  }
  EXPECT_TRUE(entry == fullEntry());
}

TEST(Procedural, HandlesADscpAsTheToSByteItIs) {
  FiltersEntry entry(1);
  MatchToS tos(0);
  auto* dscp = static_cast<Match*>(newMatchDSCP(46));
  EXPECT_EQ(set(entry, *dscp), FILTERS_OK);
  EXPECT_EQ(get(entry, tos), FILTERS_OK);
  EXPECT_EQ(tos.getToS(), 184);
  entry.setMatch(MatchToS(0x23));
  EXPECT_EQ(get(entry, *dscp), FILTERS_OK);
  EXPECT_EQ(matchDSCPGet(dscp), 8);
  deleteMatch(dscp);
}

// --- Objects that C makes and cannot read --------------------------------------------------------

template <class T>
void expectMade(void* handle, const T& expected) {
  using Base = std::conditional_t<std::is_base_of_v<Match, T>, Match, Action>;
  const std::unique_ptr<Base> made(static_cast<Base*>(handle));
  EXPECT_TRUE(*made == static_cast<const Base&>(expected)) << printed(*made);
}

TEST(Procedural, MakesTheObjectsThatItDoesNotRead) {
  const limid_t ports[] = {kLag1, kEth3, kLag1, kEth4};
  expectMade(newMatchIngressPorts(ports, 3), MatchIngressPorts(Ports{kLag1, kEth3, kLag1}));
  expectMade(newMatchIngressPorts(nullptr, 0), MatchIngressPorts(Ports()));
  expectMade(newMatchEgressPorts(ports, 3), MatchEgressPorts(Ports{kLag1, kEth3, kLag1}));
  expectMade(newMatchEgressPorts(nullptr, 0), MatchEgressPorts(Ports()));
  expectMade(newMatchExternalVlanId(4095), MatchExternalVlanId(4095));
  expectMade(newMatchInternalVlanId(4095), MatchInternalVlanId(4095));
  expectMade(newMatchPcp(7), MatchPcp(7));
  expectMade(newMatchInternalPcp(7), MatchInternalPcp(7));
  expectMade(newMatchVlanTagging(FILTERS_VLAN_TAGGED), MatchVlanTagging(FILTERS_VLAN_TAGGED));
  expectMade(newMatchVlanTagging(vlan_tagging_t(kMax)), MatchVlanTagging(vlan_tagging_t(kMax)));
  expectMade(newMatchPacketRes(en_Resolution(kMax)), MatchPacketRes(en_Resolution(kMax)));
  expectMade(newMatchIngressStpState(en_StpState(kMax)), MatchIngressStpState(en_StpState(kMax)));
  expectMade(newMatchL2SrcEntryType(l2SrcEntryType_t(kMax)),
             MatchL2SrcEntryType(l2SrcEntryType_t(kMax)));
  expectMade(newActionBlockEgressPorts(ports, 3),
             ActionBlockEgressPorts(Ports{kLag1, kEth3, kLag1}));
  expectMade(newActionBlockEgressPorts(nullptr, 0), ActionBlockEgressPorts(Ports()));
  expectMade(newActionMapToCpuCosQueue(255), ActionMapToCpuCosQueue(255));
  expectMade(newActionRedirect(kLag1), ActionRedirect(kLag1));
  expectMade(newReplaceDstMac(kMac), ActionReplaceDstMac(kMac));
  expectMade(newReplaceSrcMac(kMac), ActionReplaceSrcMac(kMac));
  expectMade(newActionMplsPortSet(kVpws7, kLag1), ActionMplsPortSet(kVpws7, kLag1));
}

// --- Exceptions ----------------------------------------------------------------------------------

TEST(Procedural, LetsTheRefusalOfAnMplsPortThrough) {
  const long before = liveAllocations;
  try {
    newActionMplsPortSet(kEth3, kEth3);
    FAIL() << "an Ethernet port is no VPN";
  } catch (const std::invalid_argument& refusal) {
    EXPECT_STREQ(refusal.what(), "ActionMplsPortSet: invalid vpn_id limid type");
  }
  EXPECT_EQ(liveAllocations, before);
}

// Refuses each allocation of a call in turn, until the call comes through.
template <class Call, class Check>
void runOutOfMemory(Call call, Check expectUnchanged) {
  for (long allowed = 0, before = liveAllocations; before == liveAllocations; ++allowed) {
    try {
      untilRefusal = allowed;
      call();
      untilRefusal = -1;
      EXPECT_GE(allowed, 2) << "nothing was refused inside of the construction";
      return;
    } catch (const std::bad_alloc&) {
      untilRefusal = -1;
      expectUnchanged();
    }
  }
  ADD_FAILURE() << "memory was leaked";
}

TEST(Procedural, LeavesNothingBehindWhenAnObjectCannotBeMade) {
  FiltersEntry full = fullEntry();
  const limid_t ports[] = {kEth3, kLag1};
  const std::function<void()> calls[] = {
      [&] { deleteMatch(newMatchIngressPorts(ports, 2)); },
      [&] { deleteMatch(newMatchEgressPorts(ports, 2)); },
      [&] { deleteMatch(newMatchExternalVlanId(10)); },
      [&] { deleteMatch(newMatchInternalVlanId(10)); },
      [&] { deleteMatch(newMatchPcp(5)); },
      [&] { deleteMatch(newMatchInternalPcp(5)); },
      [&] { deleteAction(newActionBlockEgressPorts(ports, 2)); },
      [&] { deleteAction(newActionRedirect(kEth3)); },
      [&] { deleteFiltersEntry(copyFiltersEntry(&full)); },
  };
  for (const auto& call : calls) runOutOfMemory(call, [] {});
}

TEST(Procedural, LeavesTheCallersRecordAloneWhenTheEntriesCannotBeCopied) {
  FiltersGroup group(1);
  group.setStage(FILTERS_GROUP_STAGE_INGRESS);
  group.setType(FILTERS_GROUP_TYPE_3);
  FiltersEntry entry = entryOf({9, 10, 17, 26}, {0, 10}, policer::Stage::Ingress);
  for (filtersEntryId_t id : {9u, 2u, 5u}) {
    entry.setId(id);
    ASSERT_EQ(group.insertEntry(entry), FILTERS_OK);
  }
  filtersEntryId_t id = 0;
  FiltersEntry* slot = nullptr;
  entriesStruct entries = {-7, &id, &slot};
  runOutOfMemory([&] { filtersGroupGetEntries(&group, &entries); },
                 [&] {
                   EXPECT_EQ(entries.count, -7);
                   EXPECT_EQ(entries.ids, &id);
                   EXPECT_EQ(entries.entries, &slot);
                 });
  ASSERT_EQ(entries.count, 3);
  for (int i = 0; i < 3; ++i) {
    EXPECT_TRUE(*entries.entries[i] == group.getEntriesRef().at(entries.ids[i]));
  }
  deleteFiltersEntriesStruct(&entries);
}

TEST(Procedural, FreesWhatItMade) {
  const long before = liveAllocations;
  FiltersGroup* group = newFiltersGroup(1);
  FiltersEntry* entry = newFiltersEntry(7);
  void* ttl = newMatchTTL(1);
  void* permit = newActionPermit();
  entriesStruct entries;
  EXPECT_EQ(set(*entry, *static_cast<Action*>(permit)), FILTERS_OK);
  EXPECT_EQ(filtersGroupInsertEntry(group, entry), FILTERS_OK);
  filtersGroupGetEntries(group, &entries);
  const long inUse = liveAllocations;
  deleteFiltersEntriesStruct(&entries);
  EXPECT_LT(liveAllocations, inUse - 2);  // more than the two arrays
  deleteMatch(ttl);
  deleteAction(permit);
  deleteFiltersEntry(entry);
  deleteFiltersGroup(group);
  EXPECT_EQ(liveAllocations, before);
}

}  // namespace
