#include <filter_common/filter_actions.h>

#include <filter_common/filter_actions.pb.h>
#include <gmock/gmock.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <stdexcept>
#include <string>
#include <tuple>
#include <type_traits>

#include "class_checks.h"

namespace {

using namespace catalogue;
using ::testing::ElementsAre;

static_assert(std::tuple_size_v<decltype(kActionRows)> == 20, "a class is missing");

template <class T>
class EveryAction : public ::testing::Test {};
TYPED_TEST_SUITE(EveryAction, AllActions, );

TYPED_TEST(EveryAction, IsAValue) { checkValues<TypeParam>(); }

TYPED_TEST(EveryAction, DiffersFromActionsOfOtherCodes) {
  checkDiffersFromOthers<TypeParam>(oneActionOfEachCode());
}

TYPED_TEST(EveryAction, WritesItsFieldsAndReadsThemBack) { checkWire<TypeParam>(); }

TYPED_TEST(EveryAction, ReadsAbsentFieldsAsZeroUnlessItAppends) {
  if constexpr (std::is_base_of_v<ActionPorts, TypeParam>) {
    checkReadsNothingAs(samples<TypeParam>().front());
  } else if constexpr (!std::is_same_v<TypeParam, ActionMplsPortSet>) {  // refuses to
    checkReadsNothingAs(samples<TypeParam>().back());
  }
}

// Deliberate: six comparisons can be overridden, the others cannot.
TYPED_TEST(EveryAction, HasAVirtualComparisonInSixClasses) {
  checkComparesVirtuallyOnlyIn<TypeParam, ActionPermit, ActionMapToCosQueue, ActionRedirect,
                               ActionReplaceDstMac, ActionRedirectCancel, ActionReplaceSrcMac>();
}

// --- Bytes ---------------------------------------------------------------------------------------

TEST(ActionWire, CutsNumbersToTheirWidthAndDoesNotReadTheCode) {
  const std::tuple<std::shared_ptr<Action>, std::string, std::string> rows[] = {
      {std::make_shared<ActionSetPcp>(1), "0808 18ac02", "0805182c"},
      {std::make_shared<ActionSetPcpAndQueue>(1), "0808 20ac02", "0806202c"},
      {std::make_shared<ActionSetInnerPcp>(1), "0805 18ac02", "0807182c"},
      {std::make_shared<ActionSetDSCP>(1), "0805 28ac02", "0808282c"},
      {std::make_shared<ActionMapToCosQueue>(1), "080a 30ac02", "0809302c"},
      {std::make_shared<ActionMapToCpuCosQueue>(1), "0809 30ac02", "080a302c"},
      // The list of ports by itself carries none: its leaf does that.
      {std::make_shared<ActionPorts>(FILTERS_ACTION_BLOCK_EGRESS_PORTS, Ports{5}), "1005", "0803"}};
  for (const auto& [action, in, out] : rows) {
    readInto(action.get(), in);
    EXPECT_EQ(wireOf(*action), out);
  }
}

TEST(ActionWire, FillsAShortMacWithZerosAndDropsWhatIsInExcess) {
  for (std::size_t length = 0; length <= 8; ++length) {
    ActionPB message;
    message.set_mac_(std::string(length, '\x11'));
    ether_addr expected{};
    std::memset(&expected, 0x11, std::min(length, sizeof expected));
    ActionReplaceDstMac destination(kMac);
    destination.convertFromActionPB(&message);
    EXPECT_TRUE(destination == ActionReplaceDstMac(expected)) << length;
    ActionReplaceSrcMac source(kMac);
    source.convertFromActionPB(&message);
    EXPECT_TRUE(source == ActionReplaceSrcMac(expected)) << length;
  }
}

// Deliberate: blocked ports are added to those held, a redirection's ports replace them.
TEST(ActionWire, AppendsBlockedPortsAndReplacesRedirectPorts) {
  ActionBlockEgressPorts block(Ports{9});
  readInto(&block, "1005 1006");
  EXPECT_THAT(block.getPorts(), ElementsAre(9, 5, 6));
  ActionRedirect redirect(9);
  readInto(&redirect, "1005 1006");
  EXPECT_THAT(redirect.getRedirectPorts(), ElementsAre(5, 6));
  ActionPB message;
  block.convertToActionPB(&message);
  redirect.convertToActionPB(&message);
  EXPECT_THAT(message.ports_(), ElementsAre(9, 5, 6, 5, 6));
}

// --- Single behaviours ---------------------------------------------------------------------------

TEST(Action, GettersReturnWhatWasGiven) {
  EXPECT_THAT(ActionBlockEgressPorts(Ports{5, 3, 5}).getPorts(), ElementsAre(5, 3, 5));
  EXPECT_THAT(ActionRedirect(kEth3).getRedirectPorts(), ElementsAre(kEth3));
  const ActionRedirect redirect = redirectTo({5, 3, 5});
  EXPECT_THAT(redirect.getRedirectPortsRef(), ElementsAre(5, 3, 5));
  EXPECT_TRUE(ActionReplaceDstMac(ActionReplaceDstMac(kMac).getReplaceDstMac()) ==
              ActionReplaceDstMac(kMac));
  EXPECT_TRUE(ActionReplaceSrcMac(ActionReplaceSrcMac(kMac).getReplaceSrcMac()) ==
              ActionReplaceSrcMac(kMac));
}

// The typed comparison of ports looks at the ports alone, the generic one at the code too.
TEST(Action, OfPortsEqualsAnotherOfTheSamePorts) {
  const ActionPorts ports(filtersAction_t(99), Ports{kEth3});
  EXPECT_TRUE(ActionBlockEgressPorts(Ports{kEth3}) == ports);
  EXPECT_FALSE(ActionBlockEgressPorts(Ports{kEth4}) == ports);
  EXPECT_FALSE(ActionBlockEgressPorts(Ports{kEth3}) == static_cast<const Action&>(ports));
}

TEST(Action, KeepsItsCodeWhenAssigned) {
  ActionDeny deny;
  static_cast<Action&>(deny) = ActionPermit();
  EXPECT_EQ(deny.getType(), 1);
}

// Deliberate: unlike two matches, two actions of one unknown code are equal.
TEST(Action, OfAnUnknownCodeEqualsItsLike) {
  for (unsigned code : {20u, 40u, kMax}) {
    Action action{filtersAction_t(code)};
    readInto(&action, "0805 1801");
    EXPECT_TRUE(action == Action(filtersAction_t(code)));
    EXPECT_FALSE(action == Action(filtersAction_t(code ^ 1024)));
  }
  EXPECT_EQ(wireOf(Action(filtersAction_t(40))), "0828");
}

// --- MPLS ----------------------------------------------------------------------------------------

const std::string kBadVpn = "ActionMplsPortSet: invalid vpn_id limid type";
const std::string kBadPort = "ActionMplsPortSet: invalid mpls_access_port limid type";
const std::string kMissing = "ActionMplsPortSet: ActionPB missing vpn_id and mpls_access_port";

// The text of the refusal, empty when there is none.
template <class F>
std::string refusal(F&& f) {
  try {
    f();
    return "";
  } catch (const std::invalid_argument& error) {
    return error.what();
  }
}

TEST(ActionMplsPortSet, TakesAVpnAndAnAccessPortAndRefusesAnyOtherKind) {
  const std::tuple<limid_t, bool, bool> rows[] = {
      {kVpws7, true, false}, {kVpls9, true, false},    {kLag1, false, true}, {kEth4, false, true},
      {0, false, false},     {kBridge9, false, false}, {kMax, false, false}};
  for (const auto& [limid, isVpn, isPort] : rows) {
    const limid_t id = limid;
    EXPECT_EQ(ActionMplsPortSet::IsLimidFromVpnType(id), isVpn);
    ActionMplsPortSet action(kVpls9, kEth3);
    EXPECT_EQ(refusal([&] { action.setVpnId(id); }), isVpn ? "" : kBadVpn);
    EXPECT_EQ(action.getVpnId(), isVpn ? id : kVpls9);
    EXPECT_EQ(refusal([&] { action.setMplsAccessPort(id); }), isPort ? "" : kBadPort);
    EXPECT_EQ(action.getMplsAccessPort(), isPort ? id : kEth3);
    EXPECT_EQ(refusal([&] { ActionMplsPortSet(id, kEth3); }), isVpn ? "" : kBadVpn);
    EXPECT_EQ(refusal([&] { ActionMplsPortSet(kVpws7, id); }), isPort ? "" : kBadPort);
  }
  EXPECT_EQ(refusal([] { ActionMplsPortSet(kEth3, kVpws7); }), kBadVpn) << "looked at first";
}

TEST(ActionMplsPortSet, IsEmptyUntilAMessageFillsIt) {
  for (ActionMplsPortSet action : {ActionMplsPortSet(), ActionMplsPortSet::BuildEmpty()}) {
    EXPECT_EQ(action.getVpnId(), 0u);
    EXPECT_EQ(action.getMplsAccessPort(), 0u);
    readInto(&action, wireOf(ActionMplsPortSet(kVpls9, kLag1)));
    EXPECT_EQ(action.getVpnId(), kVpls9);
    EXPECT_EQ(action.getMplsAccessPort(), kLag1);
  }
}

// Presence counts, not value: of a field of value 0 it is the interface that is refused.
// Deliberate: the VPN in front of a bad access port has been stored by then.
TEST(ActionMplsPortSet, RefusesAMessageAndMayKeepItsVpn) {
  const std::string vpn = "50" + varint(interfaceIndex(kVpws7));
  const std::string badVpn = "50" + varint(interfaceIndex(kEth3));
  const std::string port = "58" + varint(interfaceIndex(kEth3));
  const std::string badPort = "58" + varint(interfaceIndex(kVpws7));
  const std::tuple<std::string, std::string, limid_t> rows[] = {
      {"", kMissing, kVpls9},           {vpn, kMissing, kVpls9},
      {port, kMissing, kVpls9},         {"5000 5800", kBadVpn, kVpls9},
      {badVpn + port, kBadVpn, kVpls9}, {vpn + badPort, kBadPort, kVpws7}};
  for (const auto& [message, text, vpnAfterwards] : rows) {
    const std::string& hex = message;
    ActionMplsPortSet action(kVpls9, kLag1);
    EXPECT_EQ(refusal([&] { readInto(&action, hex); }), text);
    EXPECT_EQ(action.getVpnId(), vpnAfterwards);
    EXPECT_EQ(action.getMplsAccessPort(), kLag1);
  }
}

}  // namespace
