#include <filter_common/filter_matches.h>

#include <filter_common/filter_matches.pb.h>
#include <gmock/gmock.h>

#include <memory>
#include <set>
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
class EveryMatch : public ::testing::Test {};
TYPED_TEST_SUITE(EveryMatch, AllMatches, ClassName);

TYPED_TEST(EveryMatch, CarriesItsCode) {
  for (const TypeParam& match : samples<TypeParam>())
    EXPECT_EQ(match.getType(), codeOf<TypeParam>());
}

TYPED_TEST(EveryMatch, EqualsItsCopiesAndNoOther) {
  for (const TypeParam& match : samples<TypeParam>()) {
    const TypeParam copy(match);
    TypeParam assigned = samples<TypeParam>().back();
    assigned = match;
    for (const TypeParam& other : samples<TypeParam>()) {
      const bool same = &other == &match;
      EXPECT_EQ(copy == other, same);
      EXPECT_EQ(assigned == other, same);
      EXPECT_EQ(static_cast<const Match&>(copy) == static_cast<const Match&>(other), same);
    }
    for (const auto& [code, other] : oneMatchOfEachCode()) {
      if (code == codeOf<TypeParam>()) continue;
      EXPECT_FALSE(match == *other || *other == match) << code;
    }
  }
}

TYPED_TEST(EveryMatch, ComesBackFromItsMessage) {
  for (const TypeParam& match : samples<TypeParam>()) {
    TypeParam read = samples<TypeParam>().back();
    readInto(&read, wireOf(match));
    EXPECT_EQ(wireOf(read), wireOf(match));
    EXPECT_TRUE(static_cast<const Match&>(read) == match);
  }
}

TYPED_TEST(EveryMatch, OverridesTheComparisonInNineClassesOnly) {
  constexpr bool isOneOfNine =
      (std::is_same_v<TypeParam, MatchIngressStpState> ||
       std::is_same_v<TypeParam, MatchVlanInfo> || std::is_same_v<TypeParam, MatchVrfId> ||
       std::is_same_v<TypeParam, MatchDrop> || std::is_same_v<TypeParam, MatchMyStationHit> ||
       std::is_same_v<TypeParam, MatchCpuPort> || std::is_same_v<TypeParam, MatchForwardingType> ||
       std::is_same_v<TypeParam, MatchCPUInjectedPackets> ||
       std::is_same_v<TypeParam, MatchDstL4PortRange>);
  EXPECT_EQ(comparesVirtually<TypeParam>(), isOneOfNine);
}

// --- Bytes ---------------------------------------------------------------------------------------

// A match, the message it writes, and the one it writes after reading a message without fields.
struct Written {
  template <class T>
  Written(const T& object, const std::string& bytes, const std::string& emptied)
      : match(std::make_shared<T>(object)), hex(bytes), hexWhenEmptied(emptied) {}
  std::shared_ptr<Match> match;
  std::string hex;
  std::string hexWhenEmptied;
};

const std::string kNoIPv6 = "00000000000000000000000000000000";
const std::string kAllIPv6 = "ffffffffffffffffffffffffffffffff";

// clang-format off
const Written kWritten[] = {
    {MatchAll(), "0800", "0800"},
    {MatchIngressPorts(Ports{300, 5, 5}), "0801 10ac02 1005 1005", "0801 10ac02 1005 1005"},
    {MatchIngressPorts(PortTypes{port_type_t(7), FILTERS_PORT_TYPE_CPU}), "0801 a00107 a00100",
     "0801 a00107 a00100"},
    {MatchExternalVlanId(VlanIds{300, 10}), "0802 180a 18ac02", "0802"},
    {MatchTPID(0x8100), "0803 20808202", "0803 2000"},
    {MatchDstMac(kMac, kMacMask), "0804 2a06001b210aff42 3a06ffffff000000",
     "0804 2a06000000000000 3a06000000000000"},
    {MatchDstL4Port(80, 0xff00), "0805 3050 900180fe03", "0805 3000 900100"},
    {MatchSrcL4Port(443, 1), "0806 30bb03 900101", "0806 3000 900100"},
    {MatchSrcMac(kMac), "0807 2a06001b210aff42 3a06ffffffffffff",
     "0807 2a06000000000000 3a06000000000000"},
    {MatchL2SrcEntryType(FILTERS_L2_SRC_ENTRY_STATIC), "0808 6802", "0808 6800"},
    {MatchSrcIPv4(kIPv4), "0809 4204c0000201 5204ffffffff", "0809 420400000000 520400000000"},
    {MatchDstIPv4(kIPv4, kIPv4Mask), "080a 4204c0000201 5204fffff000",
     "080a 420400000000 520400000000"},
    {MatchInternalVlanId(65535), "080b 18ffff03", "080b"},
    {MatchPcp(Pcps{7, 3}), "080c 4803 4807", "080c"},
    {MatchInternalPcp(255), "080d 48ff01", "080d"},
    {MatchSrcIPv6(kIPv6), "080e 5a1020010db812340000000000000000abcd 6210" + kAllIPv6,
     "080e 5a10" + kNoIPv6 + "6210" + kNoIPv6},
    {MatchDstIPv6(kIPv6, kIPv6Mask), "080f 5a1020010db812340000000000000000abcd"
     "6210ffffffffffff00000000000000000000", "080f 5a10" + kNoIPv6 + "6210" + kNoIPv6},
    {MatchVlanTagging(FILTERS_VLAN_TAGGED), "0810 d80101", "0810 d80100"},
    {MatchIpProtocol(255), "0811 70ff01", "0811 7000"},
    {MatchPacketRes(FILTERS_RESOLUTION_L3_MULTICAST), "0812 7808", "0812 7800"},
    {MatchMplsTerm(true), "0813 d00101", "0813 d00100"},
    {MatchToS(185), "0814 8001b901", "0814 800100"},
    {MatchDSCP(46), "0814 8001b801", "0814 800100"},
    {MatchVirtualPort(300), "0815 8801ac02", "0815 880100"},
    {MatchEgressPorts(Ports{9, 300}), "0816 1009 10ac02", "0816 1009 10ac02"},
    {MatchIngressStpState(FILTERS_STP_STATE_FORWARDING), "0817 980104", "0817 980100"},
    {MatchVlanInfo({300, 2}), "0818 a801ac02 f00102", "0818 a80100 f00100"},
    {MatchSrcPort(7), "0819 880107", "0819 880100"},
    {MatchTTL(64), "081a b00140", "081a b00100"},
    {MatchVrfId(300), "081b b801ac02", "081b b80100"},
    {MatchDrop(true), "081c c00101", "081c c00100"},
    {MatchMyStationHit(true), "081d e00101", "081d e00100"},
    {MatchCpuPort(), "081e", "081e"},
    {MatchForwardingType(FILTERS_FORWARDING_TYPE_MPLS), "081f c80102", "081f c80100"},
    {MatchDestinationCpu(), "0820", "0820"},
    {MatchCPUInjectedPackets(true), "0821 e80101", "0821 e80100"},
    {MatchDstL4PortRange(100, 200), "0822 3064 9001c801", "0822 3000 900100"}};
// clang-format on

TEST(MatchWire, WritesItsFieldsAndReadsAbsentOnesAsZero) {
  std::set<filtersMatch_t> codes;
  for (const Written& row : kWritten) {
    codes.insert(row.match->getType());
    EXPECT_EQ(wireOf(*row.match), packed(row.hex));
    readInto(row.match.get(), "");
    EXPECT_EQ(wireOf(*row.match), packed(row.hexWhenEmptied));
  }
  EXPECT_EQ(codes.size(), 35u) << "a class is missing from the table";
}

TEST(MatchWire, CutsNumbersToTheirWidth) {
  const Written rows[] = {{MatchExternalVlanId(1), "1864 180a 1864 18e48004", "0802 180a 1864"},
                          {MatchTPID(1), "20808206", "0803 20808202"},
                          {MatchSrcL4Port(1, 1), "30d08004 900180fe07", "0806 3050 900180fe03"},
                          {MatchPcp(1), "48ff01 488302 4803", "080c 4803 48ff01"},
                          {MatchInternalPcp(1), "48ff01 488302 4803", "080d 4803 48ff01"},
                          {MatchIpProtocol(1), "708602", "0811 7006"},
                          {MatchToS(1), "8001b903", "0814 8001b901"},
                          {MatchTTL(1), "b001c002", "081a b00140"},
                          {MatchVrfId(1), "b801ac8204", "081b b801ac02"}};
  for (const Written& row : rows) {
    readInto(row.match.get(), row.hex);
    EXPECT_EQ(wireOf(*row.match), packed(row.hexWhenEmptied));
  }
}

template <class Address>
std::string bytesOf(const Address* address) {
  return {reinterpret_cast<const char*>(address), sizeof *address};
}

TEST(MatchWire, FillsShortAddressesWithZerosAndDropsWhatIsInExcess) {
  const auto fitted = [](std::string bytes, std::size_t size) {
    bytes.resize(size);
    return bytes;
  };
  for (std::size_t length = 0; length <= 20; ++length) {
    const std::string address(length, '\x11');
    const std::string mask(20 - length, '\x22');
    MatchPB message;
    for (std::string* field :
         {message.mutable_mac_(), message.mutable_ipv4_(), message.mutable_ipv6_()}) {
      *field = address;
    }
    for (std::string* field : {message.mutable_mac_mask_(), message.mutable_ipv4_mask_(),
                               message.mutable_ipv6_mask_()}) {
      *field = mask;
    }
    MatchSrcMac mac(kMac);
    mac.convertFromMatchPB(&message);
    EXPECT_EQ(bytesOf(mac.getMac()), fitted(address, 6));
    EXPECT_EQ(bytesOf(mac.getMask()), fitted(mask, 6));
    MatchDstIPv4 ipv4(kIPv4);
    ipv4.convertFromMatchPB(&message);
    EXPECT_EQ(bytesOf(ipv4.getIPv4()), fitted(address, 4));
    EXPECT_EQ(bytesOf(ipv4.getIPv4Mask()), fitted(mask, 4));
    MatchSrcIPv6 ipv6(kIPv6);
    ipv6.convertFromMatchPB(&message);
    EXPECT_EQ(bytesOf(ipv6.getIPv6()), fitted(address, 16));
    EXPECT_EQ(bytesOf(ipv6.getIPv6Mask()), fitted(mask, 16));
  }
}

TEST(MatchWire, KeepsItsCodeWhateverTheMessageSays) {
  MatchTTL ttl(1);
  readInto(&ttl, "0805 b00109");
  EXPECT_EQ(wireOf(ttl), packed("081a b00109"));
  MatchDstMac destination(kMac);
  static_cast<MatchMac&>(destination) = MatchSrcMac(kMacMask);
  EXPECT_TRUE(destination == MatchDstMac(kMacMask));
}

// Deliberate: ports are added to a list, VLAN ids and PCPs replace one.
TEST(MatchWire, AppendsPortsAndReplacesVlanIdsAndPcpsWhenWriting) {
  MatchPB message;
  message.ParsePartialFromString(fromHex("1009 1809 4809 a00109"));
  MatchIngressPorts(Ports{5}).convertToMatchPB(&message);
  MatchEgressPorts(Ports{6}).convertToMatchPB(&message);
  MatchIngressPorts(kCpuPort).convertToMatchPB(&message);
  MatchExternalVlanId(5).convertToMatchPB(&message);
  MatchPcp(3).convertToMatchPB(&message);
  EXPECT_EQ(toHex(message.SerializeAsString()),
            packed("080c 1009 1005 1006 1805 4803 a00109 a00100"));
  MatchInternalVlanId(6).convertToMatchPB(&message);
  MatchInternalPcp(4).convertToMatchPB(&message);
  EXPECT_EQ(toHex(message.SerializeAsString()),
            packed("080d 1009 1005 1006 1806 4804 a00109 a00100"));
}

TEST(MatchWire, AppendsPortsAndReplacesVlanIdsWhenReading) {
  const std::string message = "1005 1005 180a a00100";
  MatchIngressPorts ingress(PortTypes{port_type_t(7)});
  readInto(&ingress, message);
  readInto(&ingress, message);
  EXPECT_THAT(ingress.getPorts(), ElementsAre(5, 5, 5, 5));
  EXPECT_THAT(ingress.getExcludedPortTypes(), ElementsAre(7, 0, 0));
  MatchExternalVlanId vlan(9);
  readInto(&vlan, message);
  readInto(&vlan, message);
  EXPECT_THAT(vlan.getVlanIds(), ElementsAre(10));
}

// Deliberate: excluded types belong to ingress ports alone.
TEST(MatchWire, EgressPortsIgnoreExcludedPortTypes) {
  MatchEgressPorts egress(Ports{9});
  readInto(&egress, "1005 1005 a00100");
  EXPECT_THAT(egress.getPorts(), ElementsAre(9, 5, 5));
  EXPECT_THAT(egress.getExcludedPortTypes(), IsEmpty());
  EXPECT_EQ(wireOf(egress), packed("0816 1009 1005 1005"));
}

// --- Single behaviours ---------------------------------------------------------------------------

TEST(Match, GettersReturnWhatWasGiven) {
  EXPECT_THAT(MatchIngressPorts(Ports{5, 3, 5}).getPorts(), ElementsAre(5, 3, 5));
  EXPECT_THAT(MatchIngressPorts(Ports{5}).getExcludedPortTypes(), IsEmpty());
  EXPECT_THAT(MatchIngressPorts(kCpuPort).getExcludedPortTypes(), ElementsAre(0));
  EXPECT_THAT(MatchIngressPorts(kCpuPort).getPorts(), IsEmpty());
  EXPECT_THAT(MatchExternalVlanId(VlanIds{65535, 10}).getVlanIds(), ElementsAre(10, 65535));
  EXPECT_THAT(MatchInternalVlanId(4095).getVlanIds(), ElementsAre(4095));
  EXPECT_THAT(MatchPcp(Pcps{255, 3}).getPcps(), ElementsAre(3, 255));
  EXPECT_THAT(MatchInternalPcp(7).getPcps(), ElementsAre(7));
  EXPECT_EQ(MatchTPID(0x88a8).getTPID(), 0x88a8);
  EXPECT_EQ(MatchL2SrcEntryType(FILTERS_L2_SRC_ENTRY_STATIC).getL2SrcEntryType(), 2);
  EXPECT_EQ(MatchVlanTagging(FILTERS_VLAN_TAGGED).getTagging(), 1);
  EXPECT_EQ(MatchIpProtocol(255).getIpProtocol(), 255);
  EXPECT_EQ(MatchPacketRes(FILTERS_RESOLUTION_L3_MULTICAST).getPktRes(), 8);
  EXPECT_TRUE(MatchMplsTerm(true).getMplsTerm());
  EXPECT_EQ(MatchToS(185).getToS(), 185);
  EXPECT_EQ(MatchVirtualPort(kEth3).getLimId(), kEth3);
  EXPECT_EQ(MatchIngressStpState(FILTERS_STP_STATE_FORWARDING).getIngressStpState(), 4);
  EXPECT_EQ(MatchVlanInfo({1, 2}).getVlanInfo().svc_vlan_type, 1u);
  EXPECT_EQ(MatchVlanInfo({1, 2}).getVlanInfo().proto_cpu_vlan_type, 2u);
  EXPECT_EQ(MatchTTL(255).getTTL(), 255);
  EXPECT_EQ(MatchVrfId(65535).getVrfId(), 65535);
  EXPECT_TRUE(MatchDrop(true).getDropFlag());
  EXPECT_TRUE(MatchMyStationHit(true).getHitFlag());
  EXPECT_EQ(MatchForwardingType(FILTERS_FORWARDING_TYPE_MPLS).getForwardingType(), 2);
  EXPECT_TRUE(MatchCPUInjectedPackets(true).getInjected());
  EXPECT_EQ(MatchDstL4Port(1, 2).getPort(), 1);
  EXPECT_EQ(MatchDstL4Port(1, 2).getMask(), 2);
  EXPECT_EQ(MatchSrcL4Port(1, 2).getPort(), 1);
  EXPECT_EQ(MatchSrcL4Port(1, 2).getMask(), 2);
  EXPECT_EQ(MatchDstL4PortRange(2, 1).getMinPort(), 2);
  EXPECT_EQ(MatchDstL4PortRange(2, 1).getMaxPort(), 1);
  EXPECT_EQ(MatchDstL4PortRange(2, 1).getParam1(), 2);
  EXPECT_EQ(MatchDstL4PortRange(2, 1).getParam2(), 1);
}

TEST(Match, SettersReplaceTheValue) {
  MatchSrcPort port(kEth3);
  port.setSrcPort(kLag1);
  EXPECT_EQ(port.getLimId(), kLag1);
  MatchVrfId vrf(1);
  vrf.setVrfId(65535);
  EXPECT_EQ(vrf.getVrfId(), 65535);
  MatchIngressPorts ports(Ports{5});
  EXPECT_EQ(ports.setPorts({7, 6}), 0);
  EXPECT_THAT(ports.getPorts(), ElementsAre(7, 6));
  EXPECT_EQ(ports.setPorts(ports.getPorts()), 0);
  EXPECT_THAT(ports.getPorts(), ElementsAre(7, 6));
}

TEST(Match, RefusesPortsForeverOnceItExcludesPortTypes) {
  MatchIngressPorts ports(kCpuPort);
  EXPECT_EQ(ports.setPorts({5}), -5);
  EXPECT_EQ(ports.setPorts({}), -5);
  EXPECT_TRUE(ports == MatchIngressPorts(kCpuPort));
}

// Deliberate: addresses are matched whole unless a mask is given, layer-4 ports under mask 0.
TEST(Match, DefaultMaskIsAllOnesForAddressesAndZeroForPorts) {
  EXPECT_TRUE(MatchDstMac(kMac) ==
              MatchDstMac(kMac, addressOf<ether_addr>({255, 255, 255, 255, 255, 255})));
  EXPECT_EQ(bytesOf(MatchSrcIPv4(kIPv4).getIPv4Mask()), std::string(4, '\xff'));
  EXPECT_EQ(bytesOf(MatchSrcIPv6(kIPv6).getIPv6Mask()), std::string(16, '\xff'));
  EXPECT_EQ(bytesOf(MatchDstIPv6(kIPv6).getIPv6Mask()), std::string(16, '\xff'));
  EXPECT_EQ(MatchDstL4Port(80).getMask(), 0);
  EXPECT_EQ(MatchSrcL4Port(80).getMask(), 0);
}

// Deliberate: a source IPv6 address has no mask of its own.
static_assert(!std::is_constructible_v<MatchSrcIPv6, in6_addr, in6_addr> &&
              std::is_constructible_v<MatchDstIPv6, in6_addr, in6_addr>);

// The mask is not applied before two addresses are compared.
TEST(Match, ComparesAddressesUnmasked) {
  const auto net = [](std::uint8_t last) { return addressOf<in_addr>({10, 0, 0, last}); };
  EXPECT_FALSE(MatchDstIPv4(net(1), addressOf<in_addr>({255})) ==
               MatchDstIPv4(net(2), addressOf<in_addr>({255})));
}

TEST(Match, OfOneFamilyDiffersByDirection) {
  EXPECT_FALSE(MatchDstMac(kMac) == MatchSrcMac(kMac));
  EXPECT_FALSE(MatchSrcIPv4(kIPv4) == MatchDstIPv4(kIPv4));
  EXPECT_FALSE(MatchSrcIPv6(kIPv6) == MatchDstIPv6(kIPv6));
  EXPECT_FALSE(MatchSrcL4Port(80) == MatchDstL4Port(80));
  EXPECT_FALSE(MatchVirtualPort(5) == MatchSrcPort(5));
  EXPECT_FALSE(MatchExternalVlanId(5) == MatchInternalVlanId(5));
  EXPECT_FALSE(MatchIngressPorts(Ports{5}) == MatchEgressPorts(Ports{5}));
  EXPECT_FALSE(MatchPcp(5) == MatchInternalPcp(5));
}

TEST(MatchDSCP, IsTheUpperSixBitsOfAToS) {
  const std::pair<int, int> rows[] = {{0, 0}, {1, 4}, {46, 184}, {63, 252}, {64, 0}, {255, 252}};
  for (const auto& [dscp, tos] : rows) {
    const MatchDSCP match(static_cast<unsigned char>(dscp));
    EXPECT_EQ(match.getToS(), tos);
    EXPECT_EQ(match.getDSCP(), dscp % 64);
  }
}

// Deliberate: the generic comparison takes a MatchDSCP for the MatchToS that it is.
TEST(MatchDSCP, IsComparedByItsDSCPOnlyWhenCalledDirectly) {
  const MatchDSCP dscp(46);
  MatchDSCP withEcn(0);
  readInto(&withEcn, "8001b901");
  EXPECT_EQ(withEcn.getDSCP(), 46);
  EXPECT_TRUE(dscp == withEcn);
  const Match& generic = dscp;
  EXPECT_TRUE(generic == MatchToS(184));
  EXPECT_FALSE(generic == MatchToS(185));
  EXPECT_FALSE(generic == withEcn);
  EXPECT_FALSE(dscp == MatchDSCP(47));
}

TEST(Match, OfAnUnknownCodeEqualsNothingAndCarriesItsCodeAlone) {
  for (unsigned code : {35u, 40u, 0xffffffffu}) {
    Match match{filtersMatch_t(code)};
    EXPECT_EQ(match.getType(), code);
    EXPECT_FALSE(match == match);
    EXPECT_FALSE(match == Match(match));
    readInto(&match, "0805 b00109");
    EXPECT_EQ(match.getType(), code);
  }
  EXPECT_EQ(wireOf(Match(filtersMatch_t(40))), "0828");
}

}  // namespace
