// Objects against bytes written down by hand, in both directions: what other releases and other
// processes send and expect.

#include <filter_common/filter_groups.h>

#include <gtest/gtest.h>

#include <string>

#include "golden.h"

namespace {

using namespace FiltersCommon;
using namespace catalogue;

template <class T>
void expectGolden(const std::string& name, const T& object) {
  const std::string bytes = golden(name);
  EXPECT_EQ(toHex(bytesOf(object)), toHex(bytes));
  EXPECT_TRUE(T(bytes) == object);
}

TEST(WireGolden, HoldsAnEntryOfEveryFieldButIPv6) { expectGolden("entry.hex", fullEntry()); }

TEST(WireGolden, HoldsAnEntryOfIPv6AndAPortRange) {
  FiltersEntry entry = entryOf({14, 15, 34}, {}, policer::Stage::Ingress);
  entry.setId(4294967295);
  EXPECT_EQ(entry.setMatch(MatchIngressPorts(PortTypes{FILTERS_PORT_TYPE_CPU, port_type_t(7)})),
            FILTERS_OK);
  EXPECT_EQ(entry.setMatch(MatchDSCP(46)), FILTERS_OK);
  EXPECT_EQ(entry.setAction(redirectTo({kEth3, kLag1})), FILTERS_OK);
  expectGolden("entry_ipv6.hex", entry);
}

TEST(WireGolden, HoldsAGroupOfTwoEntries) {
  FiltersGroup group(65535);
  group.setPriority(300);
  EXPECT_EQ(group.setStage(FILTERS_GROUP_STAGE_INGRESS), FILTERS_OK);
  EXPECT_EQ(group.setType(FILTERS_GROUP_TYPE_11), FILTERS_OK);
  FiltersEntry entry = entryOf({34}, {1}, policer::Stage::Ingress);
  entry.setId(0);
  EXPECT_EQ(group.insertEntry(entry), FILTERS_OK);
  entry.setId(128);
  entry.setPriority(1);
  EXPECT_EQ(entry.setMatches(matchesOf({0})), FILTERS_OK);
  EXPECT_EQ(entry.deleteAction(FILTERS_ACTION_DENY), FILTERS_OK);
  EXPECT_EQ(entry.setCounter({1, FILTERS_COUNTER_TYPE_OCTETS}), FILTERS_OK);
  entry.setPolicerParent(policerAt(policer::Stage::Egress, 301));
  EXPECT_EQ(group.insertEntry(entry), FILTERS_OK);
  expectGolden("group.hex", group);
}

TEST(WireGolden, HoldsGroupsOfSeveralTypes) {
  using Stage = policer::Stage;
  const auto groupWith = [](int stage, int type, const std::vector<FiltersEntry>& entries) {
    FiltersGroup group = groupOf(stage, type);
    for (const FiltersEntry& entry : entries) EXPECT_EQ(group.insertEntry(entry), FILTERS_OK);
    return group;
  };
  expectGolden(
      "group_ports.hex",
      groupWith(2, 1, {entryOf({1, 2, 3, 4, 7, 23, 28}, {3, 10, 11, 12}, Stage::Ingress)}));
  FiltersEntry entry = entryOf({5, 6, 9, 10, 17, 26}, {1, 4, 8, 15});
  EXPECT_EQ(entry.setCounter({300, FILTERS_COUNTER_TYPE_PACKETS}), FILTERS_OK);
  EXPECT_EQ(entry.setCounter({2, FILTERS_COUNTER_TYPE_NOT_GREEN_OCTETS}), FILTERS_OK);
  expectGolden("group_ipv4.hex", groupWith(0, 3, {entry}));
  FiltersEntry last = entryOf({0}, {1}, Stage::Ingress);
  last.setId(4294967295);
  last.setPolicerParent(policerAt(Stage::Egress, 301));
  expectGolden("group_ipv6.hex", groupWith(2, 8, {entryOf({15, 27}, {0}, Stage::Ingress), last}));
  entry = entryOf({11, 12, 13, 20}, {6, 7, 17, 18});
  EXPECT_EQ(entry.setMatch(MatchIngressPorts(PortTypes{FILTERS_PORT_TYPE_CPU, port_type_t(7)})),
            FILTERS_OK);
  expectGolden("group_mpls.hex", groupWith(1, 4, {entry}));
}

}  // namespace
