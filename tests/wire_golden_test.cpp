// Objects against bytes written down by hand, in both directions: what other releases and other
// processes send and expect.

#include <filter_common/filter_groups.h>

#include <gtest/gtest.h>

#include <string>

#include "golden.h"

namespace {

using namespace catalogue;
using Stage = policer::Stage;

template <class T>
void expectGolden(const std::string& name, const T& object) {
  EXPECT_EQ(toHex(bytesOf(object)), toHex(golden(name)));
  EXPECT_TRUE(T(golden(name)) == object);
}

TEST(WireGolden, HoldsEntriesOfEveryField) {
  expectGolden("entry.hex", fullEntry());
  FiltersEntry entry = entryOf({14, 15, 34}, {}, Stage::Ingress);
  entry.setId(4294967295);
  EXPECT_EQ(entry.setMatch(MatchIngressPorts(PortTypes{port_type_t(0), port_type_t(7)})),
            FILTERS_OK);
  EXPECT_EQ(entry.setMatch(MatchDSCP(46)), FILTERS_OK);
  EXPECT_EQ(entry.setAction(redirectTo({kEth3, kLag1})), FILTERS_OK);
  expectGolden("entry_ipv6.hex", entry);
}

void expectGoldenGroup(const std::string& name, FiltersGroup group, const FiltersEntry& entry) {
  EXPECT_EQ(group.insertEntry(entry), FILTERS_OK);
  expectGolden(name, group);
}

TEST(WireGolden, HoldsGroupsOfSeveralTypes) {
  expectGoldenGroup("group_ports.hex", groupOf(2, 1),
                    entryOf({1, 2, 3, 4, 7, 23, 28}, {3, 10, 11, 12}, Stage::Ingress));
  expectGoldenGroup("group_ipv4.hex", groupOf(0, 3), entryOf({5, 6, 9, 10, 17, 26}, {1, 4, 8, 15}));
  expectGoldenGroup("group_ipv6.hex", groupOf(2, 8), entryOf({15, 27}, {0}, Stage::Ingress));
  expectGoldenGroup("group_mpls.hex", groupOf(1, 4), entryOf({11, 12, 13, 20}, {6, 7, 17, 18}));
}

TEST(WireGolden, HoldsAGroupOfTwoEntries) {
  FiltersGroup group(65535);
  group.setPriority(300);
  EXPECT_EQ(group.setStage(FILTERS_GROUP_STAGE_INGRESS), FILTERS_OK);
  EXPECT_EQ(group.setType(FILTERS_GROUP_TYPE_11), FILTERS_OK);
  FiltersEntry entry = entryOf({0}, {}, Stage::Ingress);
  entry.setId(128);
  entry.setPriority(1);
  entry.setPolicerParent(policerAt(Stage::Egress, 301));
  EXPECT_EQ(entry.setCounter({1, FILTERS_COUNTER_TYPE_OCTETS}), FILTERS_OK);
  EXPECT_EQ(group.insertEntry(entry), FILTERS_OK);
  expectGoldenGroup("group.hex", group, entryOf({34}, {1}, Stage::Ingress));
}

}  // namespace
