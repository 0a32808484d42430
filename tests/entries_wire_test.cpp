// What an entry makes of a message, and a message of an entry. groups_wire_test has the bytes.

#include <filter_common/filter_entries.h>

#include <gmock/gmock.h>

#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "entry_samples.h"

namespace {

using namespace FiltersCommon;
using namespace catalogue;

// A message with an element of each code, in the order given.
FiltersEntryPB messageWith(const Codes& matches, const Codes& actions) {
  FiltersEntryPB message;
  for (unsigned code : matches) message.add_matches_()->set_type_(code);
  for (unsigned code : actions) message.add_actions_()->set_type_(code);
  return message;
}

FiltersEntry fromMessage(const FiltersEntryPB& message) {
  FiltersEntry entry;
  entry.convertFromFiltersEntryPB(&message);
  return entry;
}

TEST(EntryMessage, HoldsEverythingInAscendingOrder) {
  const FiltersEntryPB message = messageOf(fullEntry());
  EXPECT_EQ(message.policer_(), policerAt(policer::Stage::Ingress).Serialize());
  EXPECT_EQ(message.policer_parent_(), policerAt(policer::Stage::Egress, 301).Serialize());
  EXPECT_EQ(message.counters_(0).id(), 2);
  EXPECT_EQ(message.counters_(1).id(), 300);
  EXPECT_EQ(codesIn(message.matches_()), kIPv4Codes);
  EXPECT_EQ(codesIn(message.actions_()), kActionCodes);
  const FiltersEntryPB bare = messageOf(FiltersEntry());
  EXPECT_EQ(bare.policer_(), policer::Policer().Serialize());
  EXPECT_TRUE(bare.IsInitialized());
  EXPECT_FALSE(bare.has_policer_parent_());
}

TEST(EntryMessage, LosesElementsOfUnknownCodesAlone) {
  const FiltersEntry entry =
      fromMessage(messageWith({35, 0, 40, 0xffffffff, 26}, {20, 1, 0xffffffff, 16}));
  EXPECT_EQ(heldMatches(entry), (Codes{0, 26}));
  EXPECT_EQ(heldActions(entry), (Codes{1, 16}));
}

TEST(EntryMessage, LosesMatchesThatCannotStandBesideAnEarlierOne) {
  EXPECT_EQ(heldMatches(fromMessage(messageWith({9, 14, 15, 10, 5, 34, 26}, {}))),
            (Codes{5, 9, 10, 26}));
  EXPECT_EQ(heldMatches(fromMessage(messageWith({15, 10, 34, 14, 5, 9, 6}, {}))),
            (Codes{6, 14, 15, 34}));
}

TEST(EntryMessage, KeepsTheLastOfRepeatedMatchesAndActions) {
  FiltersEntryPB message = messageWith({26, 26}, {5, 5});
  message.mutable_matches_(1)->set_ttl_(2);
  message.mutable_actions_(1)->set_pcp_(3);
  FiltersEntry expected;
  EXPECT_EQ(expected.setMatch(MatchTTL(2)), FILTERS_OK);
  EXPECT_EQ(expected.setAction(ActionSetPcp(3)), FILTERS_OK);
  EXPECT_TRUE(fromMessage(message) == expected);
}

// Deliberate: what another process counts is not for this one to refuse.
TEST(EntryMessage, KeepsRepeatedAndInvalidCounterTypes) {
  FiltersEntryPB message;
  for (const auto& [id, type] : {std::pair(65537, 0), {2, 5}, {-1, 5}, {2, 0}, {65536, -9}}) {
    message.add_counters_()->set_id(id);
    message.mutable_counters_()->rbegin()->set_type(type);
  }
  const FiltersEntry entry = fromMessage(message);
  std::vector<std::pair<int, int>> held;
  for (const auto& [id, counter] : entry.getCounters()) held.emplace_back(id, counter.GetType());
  EXPECT_EQ(held, (std::vector<std::pair<int, int>>{{0, -9}, {1, 0}, {2, 0}, {65535, 5}}));
  EXPECT_TRUE(fromMessage(messageOf(entry)) == entry);
}

TEST(EntryMessage, AddsToAnEntryThatHoldsSomething) {
  FiltersEntry entry = entryOf({9, 26}, {0, 5});
  EXPECT_EQ(entry.setCounter({1, FILTERS_COUNTER_TYPE_PACKETS}), FILTERS_OK);
  entry.setPolicerParent(policerAt(policer::Stage::Egress));
  FiltersEntryPB message = messageWith({14, 26, 27}, {1});
  message.set_id_(70);
  message.set_priority_(71);
  message.add_counters_()->set_id(2);
  entry.convertFromFiltersEntryPB(&message);
  EXPECT_EQ(heldMatches(entry), (Codes{9, 26, 27}));
  EXPECT_EQ(messageOf(entry).matches_(1).ttl_(), 0u);
  EXPECT_EQ(heldActions(entry), (Codes{0, 1, 5}));
  EXPECT_EQ(entry.getCounters().size(), 2u);
  EXPECT_EQ(entry.getId(), 70u);
  EXPECT_EQ(entry.getPriority(), 71u);
  EXPECT_EQ(entry.getPolicer(), policer::Policer());  // made from no bytes
  EXPECT_EQ(*entry.getPolicerParent(), policerAt(policer::Stage::Egress));
  message.set_policer_parent_("");
  entry.convertFromFiltersEntryPB(&message);
  EXPECT_EQ(*entry.getPolicerParent(), policer::Policer());
}

TEST(EntryMessage, PassesTheMplsActionsExceptionOn) {
  ActionPB bare, withoutPort, withoutVpn, badVpn, badPort;
  withoutPort.set_vpn_id(interfaceIndex(kVpws7));
  withoutVpn.set_mpls_access_port(interfaceIndex(kEth3));
  badVpn.set_vpn_id(interfaceIndex(kBridge9));
  badVpn.set_mpls_access_port(interfaceIndex(kEth3));
  badPort.set_vpn_id(interfaceIndex(kVpws7));
  badPort.set_mpls_access_port(interfaceIndex(kVpws7));
  const std::string missing = "ActionMplsPortSet: ActionPB missing vpn_id and mpls_access_port";
  const std::pair<ActionPB&, std::string> cases[] = {
      {bare, missing},
      {withoutPort, missing},
      {withoutVpn, missing},
      {badVpn, "ActionMplsPortSet: invalid vpn_id limid type"},
      {badPort, "ActionMplsPortSet: invalid mpls_access_port limid type"},
  };
  for (const auto& [action, text] : cases) {
    FiltersEntryPB message = messageOf(entryOf({26}, {0}));
    action.set_type_(18);
    *message.add_actions_() = action;
    message.add_actions_()->set_type_(1);
    EXPECT_THROW(FiltersEntry(message.SerializeAsString()), std::invalid_argument);
    FiltersEntry entry = entryOf({}, {18});
    EXPECT_THAT([&] { entry.convertFromFiltersEntryPB(&message); },
                testing::ThrowsMessage<std::invalid_argument>(text));
    EXPECT_TRUE(entry == entryOf({26}, {0, 18}));  // what came before it stays
  }
}

}  // namespace
