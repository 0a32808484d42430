// Tests the behaviour that all match and action classes have in common, with the samples of each
// class. Also tests the odd values, bytes and texts of single classes.

#include <filter_common/filter_counter.h>
#include <filter_common/filter_counter.pb.h>
#include <gmock/gmock.h>
#include <netinet/ether.h>

#include "samples.h"

namespace {

using namespace catalogue;
using namespace std::string_literals;

template <class T, class... Others>
constexpr bool isOneOf = (std::is_same_v<T, Others> || ...);

template <class T>
class EachClass : public ::testing::Test {};
TYPED_TEST_SUITE(EachClass, EveryClass);

// Compares objects by the operator of their class, and by that of Match or Action.
TYPED_TEST(EachClass, EqualsItsCopiesAlone) {
  for (const TypeParam& object : samples<TypeParam>()) {
    EXPECT_EQ(object.getType(), rowOf<TypeParam>().code);
    const TypeParam copy(object);
    for (const TypeParam& other : samples<TypeParam>()) {
      const bool same = &other == &object;
      EXPECT_EQ(copy == other, same);
      EXPECT_EQ(copy == generic(other), same);
      EXPECT_EQ(generic(copy) == generic(other), same);
    }
  }
}

TYPED_TEST(EachClass, WritesItsFieldsAndReadsThemBack) {
  const Row<TypeParam>& row = rowOf<TypeParam>();
  EXPECT_EQ(wireOf(row.objects[0]), "08" + varint(row.code) + toHex(fromHex(row.fields)));
  for (const TypeParam& object : row.objects) {
    TypeParam read = row.objects.back();
    readInto(&read, wireOf(object));
    EXPECT_EQ(wireOf(read), wireOf(object));
    EXPECT_TRUE(generic(read) == object);
  }
}

TYPED_TEST(EachClass, ReadsAbsentFieldsAsZeroUnlessItAppends) {
  // MatchSrcIPv6 has no sample with mask 0, and ActionMplsPortSet refuses an empty message.
  if (isOneOf<TypeParam, MatchSrcIPv6, ActionMplsPortSet>) return;
  const bool appends =
      isOneOf<TypeParam, MatchIngressPorts, MatchEgressPorts, ActionBlockEgressPorts>;
  TypeParam object = samples<TypeParam>().front();
  readInto(&object, "");
  EXPECT_TRUE(object == (appends ? samples<TypeParam>().front() : samples<TypeParam>().back()));
}

template <class C, class Other>
Other comparedWith(bool (C::*)(Other) const);

// A T whose comparison always returns false. The generic comparison calls this operator only if T's
// own comparison is virtual. The operator has no `override`, because that would not compile for
// classes whose comparison is not virtual.
template <class T>
struct Contrary : T {
  using BaseOf<T>::operator==;
  explicit Contrary(const T& object) : T(object) {}
  bool operator==(decltype(comparedWith(&T::operator==))) const { return false; }
};

// Deliberate: only some classes have a virtual comparison, which a derived class can override. The
// comparison of the left object is called.
TYPED_TEST(EachClass, HasAVirtualComparisonIfItIsOneOfThese) {
  const Contrary<TypeParam> contrary(samples<TypeParam>().front());
  EXPECT_NE(generic<TypeParam>(contrary) == samples<TypeParam>().front(),
            (isOneOf<TypeParam, MatchIngressStpState, MatchVlanInfo, MatchVrfId, MatchDrop,
                     MatchMyStationHit, MatchCpuPort, MatchForwardingType, MatchCPUInjectedPackets,
                     MatchDstL4PortRange, ActionPermit, ActionMapToCosQueue, ActionRedirect,
                     ActionReplaceDstMac, ActionRedirectCancel, ActionReplaceSrcMac>));
  EXPECT_TRUE(generic(samples<TypeParam>().front()) == contrary);
}

TEST(Classes, DifferByTheirCodes) {
  const auto expectEachToDiffer = [](const auto& list) {
    for (const auto& [code, object] : list) {
      EXPECT_EQ(object->getType(), code);
      for (const auto& [otherCode, other] : list) EXPECT_EQ(*object == *other, code == otherCode);
    }
  };
  expectEachToDiffer(oneMatchOfEachCode());
  expectEachToDiffer(oneActionOfEachCode());
}

// --- Bytes ---------------------------------------------------------------------------------------

// Expects that an object writes the message `out` after it has read the message `in`.
template <class T>
void expectRead(T object, const std::string& in, const std::string& out) {
  readInto(&object, in);
  EXPECT_EQ(wireOf(object), toHex(fromHex(out)));
}

TEST(ClassWire, CutsNumbersToTheirWidthAndDoesNotReadTheCode) {
  expectRead(MatchExternalVlanId(1), "1864 180a 1864 18e58004", "0802 180a 1864 1865");
  expectRead(MatchTPID(1), "20808206", "0803 20808202");
  expectRead(MatchSrcL4Port(1, 1), "30d08804 900180fe07", "0806 30d008 900180fe03");
  expectRead(MatchPcp(1), "48ff01 488302 4803", "080c 4803 48ff01");
  expectRead(MatchInternalPcp(1), "48ff01 488302 4803", "080d 4803 48ff01");
  expectRead(MatchIpProtocol(1), "708602", "0811 7006");
  expectRead(MatchToS(1), "8001b903", "0814 8001b901");
  expectRead(MatchTTL(1), "0805 b001c002", "081a b00140");
  expectRead(MatchVrfId(1), "b801ac8204", "081b b801ac02");
  expectRead(ActionSetPcp(1), "0808 18ac02", "0805 182c");
  expectRead(ActionSetPcpAndQueue(1), "20ac02", "0806 202c");
  expectRead(ActionSetInnerPcp(1), "0805 18ac02", "0807 182c");
  expectRead(ActionSetDSCP(1), "28ac02", "0808 282c");
  expectRead(ActionMapToCosQueue(1), "080a 30ac02", "0809 302c");
  expectRead(ActionMapToCpuCosQueue(1), "0809 30ac02", "080a 302c");
  MatchPB many;  // more elements than there are values: none is lost
  many.add_pcp_(9);
  many.mutable_pcp_()->Resize(1000, 7);
  MatchPcp pcps(1);
  pcps.convertFromMatchPB(&many);
  EXPECT_EQ(pcps.getPcps(), (std::set<unsigned char>{7, 9}));
}

// Deliberate: matched and blocked ports are added to the list in the object and in the message.
// Every other class replaces the list.
TEST(ClassWire, AppendsPortsButToRedirections) {
  expectRead(MatchIngressPorts(kCpuPort), "1009 1005 a00109", "0801 1009 1005 a00100 a00109");
  // Deliberate: only ingress ports have excluded types.
  expectRead(MatchEgressPorts(Ports{9}), "1009 1005 a00109", "0816 1009 1009 1005");
  expectRead(ActionBlockEgressPorts(Ports{9}), "1005 1006", "0803 1009 1005 1006");
  expectRead(ActionRedirect(9), "1005 1006", "080b 1005 1006");
  // The base class ActionPorts writes no ports. Only its derived class writes them.
  expectRead(ActionPorts(FILTERS_ACTION_BLOCK_EGRESS_PORTS, Ports{5}), "1005", "0803");
  MatchPB match;
  match.ParsePartialFromString(fromHex("1009 1809 4809 a00109"));
  MatchIngressPorts(Ports{5}).convertToMatchPB(&match);
  MatchEgressPorts(Ports{6}).convertToMatchPB(&match);
  MatchIngressPorts(kCpuPort).convertToMatchPB(&match);
  MatchExternalVlanId(5).convertToMatchPB(&match);
  MatchPcp(4).convertToMatchPB(&match);
  MatchInternalPcp(3).convertToMatchPB(&match);
  EXPECT_EQ(match.SerializeAsString(), fromHex("080d 1009 1005 1006 1805 4803 a00109 a00100"));
  ActionPB action;
  ActionBlockEgressPorts(Ports{9, 5}).convertToActionPB(&action);
  ActionRedirect(6).convertToActionPB(&action);
  EXPECT_EQ(action.SerializeAsString(), fromHex("080b 1009 1005 1006"));
}

TEST(ClassWire, FillsShortAddressesWithZerosAndDropsWhatIsInExcess) {
  const auto expectFitted = [](auto object, const std::string& tag, std::uint32_t size) {
    std::string sent;
    for (std::uint32_t length = 0; length <= size + 2; sent += static_cast<char>(++length)) {
      readInto(&object, tag + varint(length) + toHex(sent));
      std::string held = sent;
      held.resize(size);
      EXPECT_THAT(wireOf(object), ::testing::HasSubstr(tag + varint(size) + toHex(held)));
    }
  };
  expectFitted(MatchSrcMac(kMac), "2a", 6);
  expectFitted(MatchSrcMac(kMac), "3a", 6);
  expectFitted(MatchDstIPv4(kIPv4), "42", 4);
  expectFitted(MatchDstIPv4(kIPv4), "52", 4);
  expectFitted(MatchSrcIPv6(kIPv6), "5a", 16);
  expectFitted(MatchSrcIPv6(kIPv6), "62", 16);
  expectFitted(ActionReplaceDstMac(kMac), "42", 6);
  expectFitted(ActionReplaceSrcMac(kMac), "42", 6);
}

// --- Text ----------------------------------------------------------------------------------------

// The text that an object prints: its header, its code and these lines.
template <class T>
std::string block(const Lines& lines) {
  const char* base = std::is_base_of_v<Match, T> ? "Match" : "Action";
  std::string text = "    =" + rowOf<T>().name + "=\n      " + base +
                     " Type ID: " + std::to_string(rowOf<T>().code) + "\n";
  for (const std::string& line : lines) text += "      " + line + "\n";
  return text;
}

template <class T>
void expectLines(const T& object, const Lines& lines) {
  EXPECT_EQ(printed(object), block<T>(lines));
}

// Deliberate: the caller's width pads the whole header line. Flags print as digits even if the
// stream has std::boolalpha. Actions flush every line. The generic printer prints a MatchDSCP as a
// MatchToS.
TYPED_TEST(EachClass, PrintsItsBlockByItsOwnPrinterAndByItsCode) {
  const Row<TypeParam>& row = rowOf<TypeParam>();
  const std::string text = block<TypeParam>(row.lines);
  CountingBuffer buffer;
  std::ostream(&buffer) << std::boolalpha << std::setfill('.') << std::setw(42) << row.objects[0];
  EXPECT_EQ(buffer.str(), std::string(36 - row.name.size(), '.') + text);
  const bool flushes = std::is_base_of_v<Action, TypeParam>;
  EXPECT_EQ(buffer.flushes, flushes ? std::count(text.begin(), text.end(), '\n') : 0);
  const bool isDSCP = std::is_same_v<TypeParam, MatchDSCP>;
  EXPECT_EQ(printed(generic(row.objects[0])), isDSCP ? block<MatchToS>({"ToS: 184"}) : text);
}

TEST(ClassPrint, LeavesEmptyListsEmptyAndNamesOnlyKnownEnumerators) {
  expectLines(MatchEgressPorts(Ports()), {"Number of ports: 0", "LIMIDs: "});
  expectLines(MatchPcp(Pcps()), {"PCPs: [ ]"});
  // Deliberate: a PCP prints as the character with that value, even a zero byte.
  expectLines(MatchPcp(Pcps{255, 0, 3}), {"PCPs: [ \0 \3 \xff ]"s});
  expectLines(ActionBlockEgressPorts(Ports()), {"Number of ports: 0", "LIMIDs: "});
  expectLines(MatchVlanTagging(FILTERS_VLAN_UNTAGGED), {"Tagging: untagged"});
  expectLines(MatchVlanTagging(vlan_tagging_t(2)), {"Tagging: tagged"});
  expectLines(ActionCopyToCpuCancel(COPY_TO_CPU_CANCEL),
              {"Cp2CPU Cancel type: COPY_TO_CPU_CANCEL"});
  expectLines(ActionCopyToCpuCancel(cp2cpuCancelParam_t(kMax)), {"Cp2CPU Cancel type: 4294967295"});
}

TEST(ClassPrint, NamesExcludedPortTypesInFrontOfThePorts) {
  MatchIngressPorts match(PortTypes{port_type_t(7), FILTERS_PORT_TYPE_CPU});
  readInto(&match, "10" + varint(kEth3));
  expectLines(match, {"Excluded Port Types: \"\" \"CPU_PORT\" ", "Number of ports: 1",
                      "LIMIDs: \"eth-3\" "});
}

// Deliberate: a redirection repeats the indent before every port, all on one line. Blocked ports do
// not.
TEST(ClassPrint, LaysRedirectPortsOutUnlikeBlockedPorts) {
  expectLines(redirectTo({kEth3, kLag1}), {"\"eth-3\"       \"lag-1\" "});
  EXPECT_EQ(printed(redirectTo({})), block<ActionRedirect>({}) + "\n");
  EXPECT_EQ(printed(ActionPorts(FILTERS_ACTION_BLOCK_EGRESS_PORTS, {kEth3})),
            "      Number of ports: 1\n      LIMIDs: \"eth-3\" \n");
}

// --- Single behaviours ---------------------------------------------------------------------------

// The tests with samples.h and the tests of printing call the getters that are not tested here.
TEST(Classes, ReturnWhatTheyWereGiven) {
  const MatchIngressPorts ports(Ports{5, 3, 5}), excluding(kCpuPort);
  EXPECT_TRUE(ports.getPorts() == Ports({5, 3, 5}) && excluding.getPorts().empty());
  EXPECT_TRUE(excluding.getExcludedPortTypes() == kCpuPort);
  EXPECT_TRUE(MatchExternalVlanId(VlanIds{65535, 10}).getVlanIds() == VlanIds({10, 65535}));
  EXPECT_TRUE(MatchPcp(Pcps{255, 3}).getPcps() == Pcps({3, 255}));
  EXPECT_TRUE(MatchInternalPcp(7).getPcps() == Pcps{7});
  EXPECT_TRUE(ActionBlockEgressPorts(Ports{5, 3}).getPorts() == Ports({5, 3}));
  EXPECT_TRUE(redirectTo({5, 3, 5}).getRedirectPorts() == Ports({5, 3, 5}));
  EXPECT_TRUE(MatchSrcL4Port(513, 2).getPort() == 513 && MatchSrcL4Port(1, 514).getMask() == 514);
  const MatchDstL4PortRange range(4, 3);
  EXPECT_TRUE(range.getMinPort() == 4 && range.getMaxPort() == 3);
}

// Deliberate: a match that excludes port types never accepts ports again.
TEST(Classes, SetTheirValuesAnewButForExcludedPortTypes) {
  MatchSrcPort port(kEth3);
  port.setSrcPort(kLag1);
  EXPECT_EQ(port.getLimId(), kLag1);
  MatchVrfId vrf(1);
  vrf.setVrfId(65535);
  EXPECT_EQ(vrf.getVrfId(), 65535);
  MatchIngressPorts ports(Ports{5}), others(kCpuPort);
  EXPECT_EQ(ports.setPorts({7, 6}), 0);
  EXPECT_TRUE(ports == MatchIngressPorts(Ports{7, 6}));
  for (const Ports& given : {Ports{5}, Ports()}) EXPECT_EQ(others.setPorts(given), -5);
  EXPECT_TRUE(others == MatchIngressPorts(kCpuPort));
}

// Deliberate: the default mask is all ones for addresses and 0 for layer-4 ports.
TEST(Match, DefaultMaskIsAllOnesForAddressesAndZeroForPorts) {
  EXPECT_EQ(wireOf(MatchDstMac(kMac)), "08042a06001b210aff423a06ffffffffffff");
  EXPECT_EQ(wireOf(MatchSrcIPv4(kIPv4)), "08094204c00002015204ffffffff");
  EXPECT_EQ(wireOf(MatchDstIPv6(kIPv6)).substr(40), "6210" + std::string(32, 'f'));
  EXPECT_EQ(MatchDstL4Port(80).getMask() + MatchSrcL4Port(80).getMask(), 0);
}

// The constructor with one argument is explicit, and the constructor with two arguments is not. The
// constructors of the other classes that have a mask are explicit in the same way.
static_assert(!std::is_convertible_v<l4port_t, MatchDstL4Port> &&
              !std::is_convertible_v<l4port_t, MatchSrcL4Port>);
[[maybe_unused]] const MatchDstL4Port kDestination = {80, 2};
[[maybe_unused]] const MatchSrcL4Port kSource = {80, 2};
// Deliberate: the class of the source IPv6 address has no constructor with a mask.
static_assert(!std::is_constructible_v<MatchSrcIPv6, in6_addr, in6_addr>);

TEST(Match, OfOneFamilyDiffersByDirection) {
  EXPECT_FALSE(MatchDstMac(kMac) == MatchSrcMac(kMac));
  EXPECT_FALSE(MatchSrcIPv4(kIPv4) == MatchDstIPv4(kIPv4));
  EXPECT_FALSE(MatchSrcIPv6(kIPv6) == MatchDstIPv6(kIPv6));
  EXPECT_FALSE(MatchSrcL4Port(80) == MatchDstL4Port(80));
  EXPECT_FALSE(MatchVirtualPort(5) == MatchSrcPort(5));
  EXPECT_FALSE(MatchSrcPort(5) == MatchSrcPort(0x10005));
  EXPECT_FALSE(MatchExternalVlanId(5) == MatchInternalVlanId(5));
  EXPECT_FALSE(MatchIngressPorts(Ports{5}) == MatchEgressPorts(Ports{5}));
}

// The typed comparison compares only the ports. The generic comparison also compares the codes.
TEST(ActionPorts, EqualAnotherOfTheSamePorts) {
  const ActionPorts ports(filtersAction_t(99), Ports{kEth3});
  EXPECT_TRUE(ActionBlockEgressPorts(Ports{kEth3}) == ports);
  EXPECT_FALSE(ActionBlockEgressPorts(Ports{kLag1}) == ports);
  EXPECT_FALSE(ActionBlockEgressPorts(Ports{kEth3}) == generic(ports));
}

TEST(MatchDSCP, IsTheUpperSixBitsOfAToS) {
  for (const auto& [given, tos] : {std::pair(1, 4), {46, 184}, {63, 252}, {64, 0}, {255, 252}}) {
    EXPECT_EQ(MatchDSCP(static_cast<unsigned char>(given)).getToS(), tos);
  }
}

// Deliberate: the generic comparison treats a MatchDSCP as a MatchToS.
TEST(MatchDSCP, IsComparedByItsDSCPOnlyWhenCalledDirectly) {
  MatchDSCP withEcn(0);
  readInto(&withEcn, "8001b901");
  EXPECT_TRUE(MatchDSCP(46) == withEcn);
  EXPECT_FALSE(generic(MatchDSCP(46)) == withEcn);
  EXPECT_TRUE(generic(MatchDSCP(46)) == MatchToS(184));
  EXPECT_FALSE(generic(MatchToS(185)) == MatchDSCP(46));
}

// Deliberate: a match with an unknown code equals no match, not even itself. An action with an
// unknown code equals every action with the same code.
TEST(Classes, OfUnknownCodesHoldAndPrintNothing) {
  for (unsigned code : {99u, 1000u, kMax}) {
    Match match{filtersMatch_t(code)};
    readInto(&match, "0805 b00109");
    EXPECT_EQ(wireOf(match) + printed(match), "08" + varint(code));
    EXPECT_FALSE(match == match);
    Action action{filtersAction_t(code)};
    readInto(&action, "0805 1801");
    EXPECT_EQ(wireOf(action) + printed(action), "08" + varint(code));
    EXPECT_TRUE(action == Action(filtersAction_t(code)));
    EXPECT_FALSE(action == Action(filtersAction_t(code ^ 1024)));
  }
}

// --- MPLS ----------------------------------------------------------------------------------------

const std::string kBadVpn = "ActionMplsPortSet: invalid vpn_id limid type";
const std::string kBadPort = "ActionMplsPortSet: invalid mpls_access_port limid type";
const std::string kMissing = "ActionMplsPortSet: ActionPB missing vpn_id and mpls_access_port";

// The text of the exception, or an empty text if none is thrown.
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
  for (limid_t id : {kVpws7, kVpls9, kEth3, kLag1, kBridge9, 0u, kMax}) {
    const bool isVpn = id == kVpws7 || id == kVpls9, isPort = id == kEth3 || id == kLag1;
    EXPECT_EQ(ActionMplsPortSet::IsLimidFromVpnType(id), isVpn);
    ActionMplsPortSet action = ActionMplsPortSet::BuildEmpty();
    EXPECT_EQ(refusal([&] { action.setVpnId(id); }), isVpn ? "" : kBadVpn);
    EXPECT_EQ(action.getVpnId(), isVpn ? id : 0);
    EXPECT_EQ(refusal([&] { action.setMplsAccessPort(id); }), isPort ? "" : kBadPort);
    EXPECT_EQ(action.getMplsAccessPort(), isPort ? id : 0);
    EXPECT_EQ(refusal([&] { ActionMplsPortSet(kVpws7, id); }), isPort ? "" : kBadPort);
  }
  EXPECT_EQ(refusal([] { ActionMplsPortSet(kEth3, kVpws7); }), kBadVpn) << "looked at first";
}

// A field with the value 0 counts as present. So the text of the exception says that the interface
// is refused, not that it is missing. Deliberate: if the access port is refused, the VPN, which is
// read first, has already been stored.
TEST(ActionMplsPortSet, RefusesAMessageAndMayKeepItsVpn) {
  const std::string vpn = "50" + varint(interfaceIndex(kVpws7));
  const std::string port = "58" + varint(interfaceIndex(kEth3));
  const std::string badVpn = "50" + varint(interfaceIndex(kEth3));
  const std::string badPort = "58" + varint(interfaceIndex(kVpws7));
  const auto expectRefusal = [](const std::string& hex, const std::string& text, limid_t vpnKept) {
    ActionMplsPortSet action(kVpls9, kLag1);
    EXPECT_EQ(refusal([&] { readInto(&action, hex); }), text);
    EXPECT_EQ(action.getVpnId(), vpnKept);
    EXPECT_EQ(action.getMplsAccessPort(), kLag1);
  };
  for (const std::string& hex : {std::string(), vpn, port}) expectRefusal(hex, kMissing, kVpls9);
  expectRefusal("5000 5800", kBadVpn, kVpls9);
  expectRefusal(badVpn + port, kBadVpn, kVpls9);
  expectRefusal(vpn + badPort, kBadPort, kVpws7);
}

// --- Counters ------------------------------------------------------------------------------------

TEST(Counter, IsItsIdAndItsTypeAndChecksNeither) {
  const Counter counter(65535, counter_type_t(-2));
  EXPECT_EQ(counter.GetId(), 65535);
  EXPECT_EQ(counter.GetType(), -2);
  EXPECT_EQ(Counter(), Counter(0, FILTERS_COUNTER_TYPE_INVALID));
  EXPECT_NE(counter, Counter(65534, counter_type_t(-2)));
  EXPECT_NE(counter, Counter(65535, counter_type_t(2)));
}

// A counter keeps the low 16 bits of the message's id. Both fields of the message are signed.
TEST(Counter, WritesItsFieldsAndReadsTheLowBitsOfTheId) {
  const auto expectRead = [](const std::string& in, const Counter& counter, const char* out) {
    CounterPB message;
    ASSERT_TRUE(message.ParseFromString(fromHex(in)));
    EXPECT_EQ(Counter(message), counter);
    counter.Serialize(&message);
    EXPECT_EQ(toHex(message.SerializePartialAsString()), out);
  };
  expectRead("08818004 1009", {1, counter_type_t(9)}, "08011009");
  expectRead("08ffffffffffffffffff01 10ffffffffffffffffff01", {65535, counter_type_t(-1)},
             "08ffff0310ffffffffffffffffff01");
}

TEST(Counter, PrintsItsTypeByName) {
  const auto expectName = [](int type, const std::string& name) {
    EXPECT_EQ(printed(Counter(40000, counter_type_t(type))), "ID: 40000\nType: " + name + "\n");
  };
  int type = 0;
  for (const char* name :
       {"Invalid", "Packets", "Octets", "Red Octets", "Not Red Octets", "Yellow Octets",
        "Not Yellow Octets", "Green Octets", "Not Green Octets"}) {
    expectName(type++, name);
  }
  for (int unknown : {-1, 99}) expectName(unknown, "Unknown");
}

// The library writes MAC addresses itself; the text must be the same as the C library's.
TEST(Printing, OfMacAddressesIsThatOfTheCLibrary) {
  for (unsigned value = 0; value <= 0xff; ++value) {
    ether_addr mac;
    for (unsigned i = 0; i < sizeof mac; ++i) {
      mac.ether_addr_octet[i] = static_cast<std::uint8_t>(value + 51 * i);
    }
    char text[sizeof "ff:ff:ff:ff:ff:ff"];
    EXPECT_EQ(printed(MatchSrcMac(mac, mac)),
              "    =MatchSrcMac=\n      Match Type ID: 7\n      MAC: "s + ether_ntoa_r(&mac, text) +
                  "\n      Mask: " + text + '\n');
  }
}

}  // namespace
