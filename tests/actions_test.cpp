#include <filter_common/filter_actions.h>

#include <filter_common/filter_actions.pb.h>
#include <gmock/gmock.h>

#include <memory>
#include <set>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>

#include "samples.h"

namespace {

using namespace FiltersCommon;
using namespace catalogue;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

// --- Every class ---------------------------------------------------------------------------------

template <class T>
class EveryAction : public ::testing::Test {};
TYPED_TEST_SUITE(EveryAction, AllActions, ClassName);

TYPED_TEST(EveryAction, CarriesItsCode) {
  for (const TypeParam& action : samples<TypeParam>()) {
    EXPECT_EQ(action.getType(), codeOf<TypeParam>());
  }
}

TYPED_TEST(EveryAction, EqualsItsCopiesAndNoOther) {
  for (const TypeParam& action : samples<TypeParam>()) {
    const TypeParam copy(action);
    TypeParam assigned = samples<TypeParam>().back();
    assigned = action;
    for (const TypeParam& other : samples<TypeParam>()) {
      const bool same = &other == &action;
      EXPECT_EQ(copy == other, same);
      EXPECT_EQ(assigned == other, same);
      EXPECT_EQ(static_cast<const Action&>(copy) == static_cast<const Action&>(other), same);
    }
    for (const auto& [code, other] : oneActionOfEachCode()) {
      if (code == codeOf<TypeParam>()) continue;
      EXPECT_FALSE(action == *other || *other == action) << code;
    }
  }
}

TYPED_TEST(EveryAction, ComesBackFromItsMessage) {
  for (const TypeParam& action : samples<TypeParam>()) {
    TypeParam read = samples<TypeParam>().back();
    readInto(&read, wireOf(action));
    EXPECT_EQ(wireOf(read), wireOf(action));
    EXPECT_TRUE(static_cast<const Action&>(read) == action);
  }
}

TYPED_TEST(EveryAction, OverridesTheComparisonInSixClassesOnly) {
  constexpr bool isOneOfSix =
      (std::is_same_v<TypeParam, ActionPermit> || std::is_same_v<TypeParam, ActionMapToCosQueue> ||
       std::is_same_v<TypeParam, ActionRedirect> ||
       std::is_same_v<TypeParam, ActionReplaceDstMac> ||
       std::is_same_v<TypeParam, ActionRedirectCancel> ||
       std::is_same_v<TypeParam, ActionReplaceSrcMac>);
  EXPECT_EQ(comparesVirtually<TypeParam>(), isOneOfSix);
}

// --- Bytes ---------------------------------------------------------------------------------------

// An action, the message it writes, and the one it writes after reading another message.
struct Written {
  template <class T>
  Written(const T& object, const std::string& bytes, const std::string& in, const std::string& out)
      : action(std::make_shared<T>(object)), hex(bytes), hexIn(in), hexOut(out) {}
  std::shared_ptr<Action> action;
  std::string hex;
  std::string hexIn;
  std::string hexOut;
};

// The interface index of an id is the id plus 0x400003e8: 0x430003ef for vpws-7.
// clang-format off
const Written kWritten[] = {
    {ActionPermit(), "0800", "1801", "0800"},
    {ActionDeny(), "0801", "1801", "0801"},
    {ActionCopyToCpu(), "0802", "1801", "0802"},
    {ActionBlockEgressPorts(Ports{300, 5, 5}), "0803 10ac02 1005 1005", "", "0803 10ac02 1005 1005"},
    {ActionCopyToCpuCancel(SWITCH_TO_CPU_CANCEL), "0804 3801", "", "0804 3800"},
    {ActionSetPcp(255), "0805 18ff01", "18ac02", "0805 182c"},
    {ActionSetPcp(5), "0805 1805", "", "0805 1800"},
    {ActionSetPcpAndQueue(7), "0806 2007", "20ac02", "0806 202c"},
    {ActionSetPcpAndQueue(7), "0806 2007", "", "0806 2000"},
    {ActionSetInnerPcp(5), "0807 1805", "18ac02", "0807 182c"},
    {ActionSetInnerPcp(5), "0807 1805", "", "0807 1800"},
    {ActionSetDSCP(46), "0808 282e", "28ac02", "0808 282c"},
    {ActionSetDSCP(46), "0808 282e", "", "0808 2800"},
    {ActionSetDSCP(46), "0808 282e", "0805 2809", "0808 2809"},  // the message's code is not read
    {ActionMapToCosQueue(5), "0809 3005", "30ac02", "0809 302c"},
    {ActionMapToCosQueue(5), "0809 3005", "", "0809 3000"},
    {ActionMapToCpuCosQueue(5), "080a 3005", "30ac02", "080a 302c"},
    {ActionMapToCpuCosQueue(5), "080a 3005", "", "080a 3000"},
    {redirectTo({300, 5, 5}), "080b 10ac02 1005 1005", "", "080b"},
    {ActionReplaceDstMac(kMac), "080c 4206001b210aff42", "", "080c 4206000000000000"},
    {ActionRedirectCancel(), "080d", "1801", "080d"},
    {ActionReplaceSrcMac(kMacMask), "080e 4206ffffff000000", "", "080e 4206000000000000"},
    {ActionL3Switch(100000), "080f 48a08d06", "", "080f 4800"},
    {ActionBlackHole(), "0810", "1801", "0810"},
    {ActionCopyInnerPcp(), "0811", "1801", "0811"},
    {ActionMplsPortSet(kVpws7, kEth3), "0812 50ef87809804 58eb87808804",
     "50ef87809804 58eb87808804", "0812 50ef87809804 58eb87808804"},
    {ActionL2ToCpuDrop(), "0813", "1801", "0813"},
    // The list alone carries no ports: its leaf does that.
    {ActionPorts(FILTERS_ACTION_BLOCK_EGRESS_PORTS, {5}), "0803", "1005", "0803"}};
// clang-format on

TEST(ActionWire, WritesItsFieldsAndReadsThemCutOrAbsent) {
  std::set<filtersAction_t> codes;
  for (const Written& row : kWritten) {
    codes.insert(row.action->getType());
    EXPECT_EQ(wireOf(*row.action), packed(row.hex));
    readInto(row.action.get(), row.hexIn);
    EXPECT_EQ(wireOf(*row.action), packed(row.hexOut))
        << "from " << row.hex << " and " << row.hexIn;
  }
  EXPECT_EQ(codes.size(), 20u) << "a class is missing from the table";
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
  readInto(&block, "1005 10ac02");
  EXPECT_THAT(block.getPorts(), ElementsAre(9, 5, 300));
  ActionRedirect redirect(9);
  readInto(&redirect, "1005 10ac02");
  EXPECT_THAT(redirect.getRedirectPorts(), ElementsAre(5, 300));
  ActionPB message;
  block.convertToActionPB(&message);
  redirect.convertToActionPB(&message);
  EXPECT_THAT(message.ports_(), ElementsAre(9, 5, 300, 5, 300));
}

// --- Single behaviours ---------------------------------------------------------------------------

bool same(const ether_addr& a, const ether_addr& b) { return std::memcmp(&a, &b, sizeof a) == 0; }

TEST(Action, GettersReturnWhatWasGiven) {
  EXPECT_THAT(ActionBlockEgressPorts(Ports{5, 3, 5}).getPorts(), ElementsAre(5, 3, 5));
  EXPECT_EQ(ActionCopyToCpuCancel(SWITCH_TO_CPU_CANCEL).getCancelType(), 1);
  EXPECT_EQ(ActionSetPcp(255).getPcp(), 255);
  EXPECT_EQ(ActionSetPcpAndQueue(255).getPcpAndQueue(), 255);
  EXPECT_EQ(ActionSetInnerPcp(255).getInnerPcp(), 255);
  EXPECT_EQ(ActionSetDSCP(255).getDSCP(), 255);
  EXPECT_EQ(ActionMapToCosQueue(255).getCosQueue(), 255);
  EXPECT_EQ(ActionMapToCpuCosQueue(255).getCpuCosQueue(), 255);
  const ActionRedirect redirect(kEth3);
  EXPECT_THAT(redirect.getRedirectPorts(), ElementsAre(kEth3));
  EXPECT_EQ(&redirect.getRedirectPortsRef(), &redirect.getRedirectPortsRef());
  EXPECT_THAT(redirect.getRedirectPortsRef(), ElementsAre(kEth3));
  EXPECT_TRUE(same(ActionReplaceDstMac(kMac).getReplaceDstMac(), kMac));
  EXPECT_TRUE(same(ActionReplaceSrcMac(kMac).getReplaceSrcMac(), kMac));
  EXPECT_EQ(ActionL3Switch(kMax).getL3DestinationId(), kMax);
  EXPECT_EQ(ActionMplsPortSet(kVpls9, kLag1).getVpnId(), kVpls9);
  EXPECT_EQ(ActionMplsPortSet(kVpls9, kLag1).getMplsAccessPort(), kLag1);
}

TEST(Action, KeepsItsCodeWhenAssigned) {
  ActionDeny deny;
  static_cast<Action&>(deny) = ActionPermit();
  EXPECT_EQ(deny.getType(), 1);
}

// Deliberate: unlike matches, two actions of one unknown code are equal.
TEST(Action, OfAnUnknownCodeEqualsItsLikeAndCarriesItsCodeAlone) {
  for (unsigned code : {20u, 40u, kMax}) {
    Action action{filtersAction_t(code)};
    readInto(&action, "0805 1801");
    EXPECT_TRUE(action == Action(filtersAction_t(code)));
    EXPECT_FALSE(action == Action(filtersAction_t(code - 1)) && code != 40);
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
  struct {
    limid_t limid;
    bool vpn;
    bool port;
  } const rows[] = {
      {kVpws7, true, false}, {kVpls9, true, false}, {kLag1, false, true},
      {kEth3, false, true},  {kEth4, false, true},  {kBridge9, false, false},
      {kMax, false, false},  {0, false, false},     {limid_make_bridgedomain(0, 5), false, false}};
  for (const auto& row : rows) {
    EXPECT_EQ(ActionMplsPortSet::IsLimidFromVpnType(row.limid), row.vpn);
    ActionMplsPortSet action(kVpls9, kEth3);
    EXPECT_EQ(refusal([&] { action.setVpnId(row.limid); }), row.vpn ? "" : kBadVpn);
    EXPECT_EQ(action.getVpnId(), row.vpn ? row.limid : kVpls9);
    EXPECT_EQ(refusal([&] { action.setMplsAccessPort(row.limid); }), row.port ? "" : kBadPort);
    EXPECT_EQ(action.getMplsAccessPort(), row.port ? row.limid : kEth3);
    EXPECT_EQ(refusal([&] { ActionMplsPortSet(row.limid, kEth3); }), row.vpn ? "" : kBadVpn);
    EXPECT_EQ(refusal([&] { ActionMplsPortSet(kVpws7, row.limid); }), row.port ? "" : kBadPort);
  }
  EXPECT_EQ(refusal([] { ActionMplsPortSet(kEth3, kVpws7); }), kBadVpn) << "looked at first";
}

TEST(ActionMplsPortSet, IsEmptyUntilAMessageFillsIt) {
  for (const ActionMplsPortSet& empty : {ActionMplsPortSet(), ActionMplsPortSet::BuildEmpty()}) {
    EXPECT_EQ(empty.getVpnId(), 0u);
    EXPECT_EQ(empty.getMplsAccessPort(), 0u);
    ActionMplsPortSet filled = empty;
    readInto(&filled, wireOf(ActionMplsPortSet(kVpls9, kLag1)));
    EXPECT_TRUE(filled == ActionMplsPortSet(kVpls9, kLag1));
  }
}

ActionPB messageOf(limid_t vpn, limid_t port) {
  std::uint32_t vpnIndex = 0;
  std::uint32_t portIndex = 0;
  limid_to_ifindex(vpn, &vpnIndex);
  limid_to_ifindex(port, &portIndex);
  ActionPB message;
  message.set_vpn_id(vpnIndex);
  message.set_mpls_access_port(portIndex);
  return message;
}

TEST(ActionMplsPortSet, RefusesAMessageWithoutBothFieldsAndStaysAsItWas) {
  ActionPB withoutVpn = messageOf(kVpws7, kEth3);
  withoutVpn.clear_vpn_id();
  ActionPB withoutPort = messageOf(kVpws7, kEth3);
  withoutPort.clear_mpls_access_port();
  for (const ActionPB& message : {ActionPB(), withoutVpn, withoutPort}) {
    ActionMplsPortSet action(kVpls9, kLag1);
    EXPECT_EQ(refusal([&] { action.convertFromActionPB(&message); }), kMissing);
    EXPECT_TRUE(action == ActionMplsPortSet(kVpls9, kLag1));
  }
}

// A field of value 0 is present: it is its interface that is refused. Deliberate: the VPN in front
// of a bad access port has been stored by then.
TEST(ActionMplsPortSet, KeepsTheVpnOfAMessageWhoseAccessPortItRefuses) {
  ActionPB zeros;
  zeros.set_vpn_id(0);
  zeros.set_mpls_access_port(0);
  struct {
    ActionPB message;
    std::string text;
    limid_t vpn;
  } const rows[] = {{zeros, kBadVpn, kVpls9},
                    {messageOf(kEth3, kEth3), kBadVpn, kVpls9},
                    {messageOf(kVpws7, kVpws7), kBadPort, kVpws7}};
  for (const auto& row : rows) {
    ActionMplsPortSet action(kVpls9, kLag1);
    EXPECT_EQ(refusal([&] { action.convertFromActionPB(&row.message); }), row.text);
    EXPECT_EQ(action.getVpnId(), row.vpn);
    EXPECT_EQ(action.getMplsAccessPort(), kLag1);
  }
}

// Deliberate: interface indexes, where every other class sends limids.
TEST(ActionMplsPortSet, SendsInterfaceIndexes) {
  ActionPB message;
  ActionMplsPortSet(kVpws7, kEth3).convertToActionPB(&message);
  const ActionPB expected = messageOf(kVpws7, kEth3);
  EXPECT_EQ(message.vpn_id(), expected.vpn_id());
  EXPECT_EQ(message.mpls_access_port(), expected.mpls_access_port());
  EXPECT_NE(message.vpn_id(), kVpws7);
}

}  // namespace
