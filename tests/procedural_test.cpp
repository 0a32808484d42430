// What only C++ can see of the procedural interface: classes that C cannot make or read, and
// an exception. The rest is in procedural_c_test.c; allocation_test.cpp has failing memory.

#include <filter_common/filter_actions_c.h>
#include <filter_common/filter_entries_c.h>
#include <filter_common/filter_groups_c.h>
#include <filter_common/filter_matches_c.h>
#include <gmock/gmock.h>

#include <memory>
#include <stdexcept>

#include "entry_samples.h"

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
  put(entry, object);
  return entry;
}

template <class T>
class ProceduralDispatch : public testing::Test {};
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
  EXPECT_EQ(entry.setMatch(MatchToS(0x23)), FILTERS_OK);
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

TEST(Procedural, LetsTheRefusalOfAnMplsPortThrough) {
  EXPECT_THAT([] { newActionMplsPortSet(kEth3, kEth3); },
              testing::ThrowsMessage<std::invalid_argument>(
                  "ActionMplsPortSet: invalid vpn_id limid type"));
}

}  // namespace
