#include <filter_common/filter_matches.h>

#include <filter_common/filter_matches.pb.h>
#include <gmock/gmock.h>

#include <memory>
#include <string>
#include <tuple>
#include <type_traits>
#include <utility>

#include "class_checks.h"

namespace {

using namespace catalogue;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

static_assert(std::tuple_size_v<decltype(kMatchRows)> == 36, "a class is missing");

template <class T>
class EveryMatch : public ::testing::Test {};
TYPED_TEST_SUITE(EveryMatch, AllMatches, );

TYPED_TEST(EveryMatch, IsAValue) { checkValues<TypeParam>(); }

TYPED_TEST(EveryMatch, DiffersFromMatchesOfOtherCodes) {
  checkDiffersFromOthers<TypeParam>(oneMatchOfEachCode());
}

TYPED_TEST(EveryMatch, WritesItsFieldsAndReadsThemBack) { checkWire<TypeParam>(); }

TYPED_TEST(EveryMatch, ReadsAbsentFieldsAsZeroUnlessItAppends) {
  if constexpr (std::is_base_of_v<MatchPorts, TypeParam>) {
    checkReadsNothingAs(samples<TypeParam>().front());
  } else if constexpr (!std::is_same_v<TypeParam, MatchSrcIPv6>) {  // has no object of mask 0
    checkReadsNothingAs(samples<TypeParam>().back());
  }
}

// Deliberate: nine comparisons can be overridden, the others cannot.
TYPED_TEST(EveryMatch, HasAVirtualComparisonInNineClasses) {
  checkComparesVirtuallyOnlyIn<TypeParam, MatchIngressStpState, MatchVlanInfo, MatchVrfId,
                               MatchDrop, MatchMyStationHit, MatchCpuPort, MatchForwardingType,
                               MatchCPUInjectedPackets, MatchDstL4PortRange>();
}

// --- Bytes ---------------------------------------------------------------------------------------

TEST(MatchWire, CutsNumbersToTheirWidth) {
  const std::tuple<std::shared_ptr<Match>, std::string, std::string> rows[] = {
      {std::make_shared<MatchExternalVlanId>(1), "1864 180a 1864 18e48004", "0802180a1864"},
      {std::make_shared<MatchTPID>(1), "20808206", "080320808202"},
      {std::make_shared<MatchSrcL4Port>(1, 1), "30d08004 900180fe07", "08063050900180fe03"},
      {std::make_shared<MatchPcp>(1), "48ff01 488302 4803", "080c480348ff01"},
      {std::make_shared<MatchInternalPcp>(1), "48ff01 488302 4803", "080d480348ff01"},
      {std::make_shared<MatchIpProtocol>(1), "708602", "08117006"},
      {std::make_shared<MatchToS>(1), "8001b903", "08148001b901"},
      {std::make_shared<MatchTTL>(1), "b001c002", "081ab00140"},
      {std::make_shared<MatchVrfId>(1), "b801ac8204", "081bb801ac02"}};
  for (const auto& [match, in, out] : rows) {
    readInto(match.get(), in);
    EXPECT_EQ(wireOf(*match), out);
  }
}

TEST(MatchWire, FillsShortAddressesWithZerosAndDropsWhatIsInExcess) {
  for (std::size_t length = 0; length <= 20; ++length) {
    const std::string address(length, '\x11');
    const std::string mask(20 - length, '\x22');
    MatchPB in;
    for (auto* field : {in.mutable_mac_(), in.mutable_ipv4_(), in.mutable_ipv6_()})
      *field = address;
    for (auto* field : {in.mutable_mac_mask_(), in.mutable_ipv4_mask_(), in.mutable_ipv6_mask_()}) {
      *field = mask;
    }
    MatchPB out;
    MatchSrcMac mac(kMac);
    MatchDstIPv4 ipv4(kIPv4);
    MatchSrcIPv6 ipv6(kIPv6);
    for (Match* match :
         {static_cast<Match*>(&mac), static_cast<Match*>(&ipv4), static_cast<Match*>(&ipv6)}) {
      match->convertFromMatchPB(&in);
      match->convertToMatchPB(&out);
    }
    const auto fitted = [](std::string bytes, std::size_t size) {
      return bytes.resize(size), bytes;
    };
    EXPECT_EQ(out.mac_(), fitted(address, 6));
    EXPECT_EQ(out.mac_mask_(), fitted(mask, 6));
    EXPECT_EQ(out.ipv4_(), fitted(address, 4));
    EXPECT_EQ(out.ipv4_mask_(), fitted(mask, 4));
    EXPECT_EQ(out.ipv6_(), fitted(address, 16));
    EXPECT_EQ(out.ipv6_mask_(), fitted(mask, 16));
  }
}

TEST(MatchWire, KeepsTheCodeOfTheObjectWhateverIsReadOrAssigned) {
  MatchTTL ttl(1);
  readInto(&ttl, "0805 b00109");
  EXPECT_EQ(wireOf(ttl), "081ab00109");
  MatchDstMac destination(kMac);
  static_cast<MatchMac&>(destination) = MatchSrcMac(kMacMask);
  EXPECT_TRUE(destination == MatchDstMac(kMacMask));
}

// Deliberate: ports are added to a list, VLAN ids and PCPs replace one.
TEST(MatchWire, AppendsPortsAndReplacesVlanIdsAndPcps) {
  MatchPB message;
  message.ParsePartialFromString(fromHex("1009 1809 4809 a00109"));
  MatchIngressPorts(Ports{5}).convertToMatchPB(&message);
  MatchEgressPorts(Ports{6}).convertToMatchPB(&message);
  MatchIngressPorts(kCpuPort).convertToMatchPB(&message);
  MatchExternalVlanId(5).convertToMatchPB(&message);
  MatchInternalPcp(3).convertToMatchPB(&message);
  EXPECT_EQ(message.SerializeAsString(), fromHex("080d 1009 1005 1006 1805 4803 a00109 a00100"));
  MatchPcp(4).convertToMatchPB(&message);
  EXPECT_THAT(message.pcp_(), ElementsAre(4));
  MatchIngressPorts ingress(kCpuPort);
  ingress.convertFromMatchPB(&message);
  EXPECT_THAT(ingress.getPorts(), ElementsAre(9, 5, 6));
  EXPECT_THAT(ingress.getExcludedPortTypes(), ElementsAre(0, 9, 0));
  // Deliberate: excluded types belong to ingress ports alone.
  MatchEgressPorts egress(Ports{9});
  egress.convertFromMatchPB(&message);
  EXPECT_THAT(egress.getPorts(), ElementsAre(9, 9, 5, 6));
  EXPECT_THAT(egress.getExcludedPortTypes(), IsEmpty());
  MatchExternalVlanId vlan(9);
  vlan.convertFromMatchPB(&message);
  EXPECT_THAT(vlan.getVlanIds(), ElementsAre(5));
}

// --- Single behaviours ---------------------------------------------------------------------------

template <class Address>
std::string bytesAt(const Address* address) {
  return {reinterpret_cast<const char*>(address), sizeof *address};
}

TEST(Match, GettersReturnWhatWasGiven) {
  EXPECT_THAT(MatchIngressPorts(Ports{5, 3, 5}).getPorts(), ElementsAre(5, 3, 5));
  EXPECT_THAT(MatchIngressPorts(kCpuPort).getPorts(), IsEmpty());
  EXPECT_THAT(MatchIngressPorts(kCpuPort).getExcludedPortTypes(), ElementsAre(0));
  EXPECT_THAT(MatchExternalVlanId(VlanIds{65535, 10}).getVlanIds(), ElementsAre(10, 65535));
  EXPECT_THAT(MatchPcp(Pcps{255, 3}).getPcps(), ElementsAre(3, 255));
  EXPECT_THAT(MatchInternalPcp(7).getPcps(), ElementsAre(7));
  EXPECT_EQ(MatchVlanInfo({1, 2}).getVlanInfo().svc_vlan_type, 1u);
  EXPECT_EQ(MatchVlanInfo({1, 2}).getVlanInfo().proto_cpu_vlan_type, 2u);
  EXPECT_EQ(MatchDstL4Port(1, 2).getPort(), 1);
  EXPECT_EQ(MatchSrcL4Port(1, 2).getPort(), 1);
  EXPECT_EQ(MatchDstL4PortRange(2, 1).getMinPort(), 2);
  EXPECT_EQ(MatchDstL4PortRange(2, 1).getMaxPort(), 1);
  EXPECT_EQ(bytesAt(MatchDstMac(kMac, kMacMask).getMac()), bytesAt(&kMac));
  EXPECT_EQ(bytesAt(MatchDstMac(kMac, kMacMask).getMask()), bytesAt(&kMacMask));
  EXPECT_EQ(bytesAt(MatchDstIPv4(kIPv4, kIPv4Mask).getIPv4()), bytesAt(&kIPv4));
  EXPECT_EQ(bytesAt(MatchDstIPv6(kIPv6, kIPv6Mask).getIPv6()), bytesAt(&kIPv6));
}

TEST(Match, SettersReplaceTheValue) {
  MatchSrcPort port(kEth3);
  port.setSrcPort(kLag1);
  EXPECT_EQ(port.getLimId(), kLag1);
  MatchVrfId vrf(1);
  vrf.setVrfId(65535);
  EXPECT_EQ(vrf.getVrfId(), 65535);
  MatchEgressPorts ports(Ports{5});
  EXPECT_EQ(ports.setPorts({7, 6}), 0);
  EXPECT_THAT(ports.getPorts(), ElementsAre(7, 6));
}

// Deliberate: there is no way back from port types to ports.
TEST(Match, RefusesPortsForeverOnceItExcludesPortTypes) {
  MatchIngressPorts ports(kCpuPort);
  EXPECT_EQ(ports.setPorts({5}), -5);
  EXPECT_EQ(ports.setPorts({}), -5);
  EXPECT_TRUE(ports == MatchIngressPorts(kCpuPort));
}

// Deliberate: addresses are matched whole unless a mask is given, layer-4 ports under mask 0.
TEST(Match, DefaultMaskIsAllOnesForAddressesAndZeroForPorts) {
  for (const MatchMac& match : {MatchMac(MatchDstMac(kMac)), MatchMac(MatchSrcMac(kMac))}) {
    EXPECT_EQ(bytesAt(match.getMask()), std::string(6, '\xff'));
  }
  EXPECT_EQ(bytesAt(MatchSrcIPv4(kIPv4).getIPv4Mask()), std::string(4, '\xff'));
  EXPECT_EQ(bytesAt(MatchDstIPv6(kIPv6).getIPv6Mask()), std::string(16, '\xff'));
  // Explicit with one argument, not with two, as in the other classes under a mask.
  static_assert(!std::is_convertible_v<l4port_t, MatchDstL4Port> &&
                !std::is_convertible_v<l4port_t, MatchSrcL4Port>);
  const MatchDstL4Port destination = {80, 2};
  const MatchSrcL4Port source = {80, 2};
  EXPECT_EQ(destination.getMask(), source.getMask());
  EXPECT_EQ(MatchDstL4Port(80).getMask(), 0);
  EXPECT_EQ(MatchSrcL4Port(80).getMask(), 0);
}

// Deliberate: a source IPv6 address has no mask of its own.
static_assert(!std::is_constructible_v<MatchSrcIPv6, in6_addr, in6_addr> &&
              std::is_constructible_v<MatchDstIPv6, in6_addr, in6_addr>);

TEST(Match, OfOneFamilyDiffersByDirection) {
  EXPECT_FALSE(MatchDstMac(kMac) == MatchSrcMac(kMac));
  EXPECT_FALSE(MatchSrcIPv4(kIPv4) == MatchDstIPv4(kIPv4));
  EXPECT_FALSE(MatchSrcIPv6(kIPv6) == MatchDstIPv6(kIPv6));
  EXPECT_FALSE(MatchSrcL4Port(80) == MatchDstL4Port(80));
  EXPECT_FALSE(MatchVirtualPort(5) == MatchSrcPort(5));
  EXPECT_FALSE(MatchExternalVlanId(5) == MatchInternalVlanId(5));
  EXPECT_FALSE(MatchIngressPorts(Ports{5}) == MatchEgressPorts(Ports{5}));
}

TEST(MatchDSCP, IsTheUpperSixBitsOfAToS) {
  const std::pair<unsigned char, int> rows[] = {{1, 4}, {46, 184}, {63, 252}, {64, 0}, {255, 252}};
  for (const auto& [dscp, tos] : rows) {
    EXPECT_EQ(MatchDSCP(dscp).getToS(), tos);
    EXPECT_EQ(MatchDSCP(dscp).getDSCP(), dscp % 64);
  }
}

// Deliberate: the generic comparison takes a MatchDSCP for the MatchToS that it is.
TEST(MatchDSCP, IsComparedByItsDSCPOnlyWhenCalledDirectly) {
  MatchDSCP withEcn(0);
  readInto(&withEcn, "8001b901");
  EXPECT_TRUE(MatchDSCP(46) == withEcn);
  EXPECT_FALSE(generic(MatchDSCP(46)) == withEcn);
  EXPECT_TRUE(generic(MatchDSCP(46)) == MatchToS(184));
  EXPECT_FALSE(generic(MatchToS(185)) == MatchDSCP(46));
}

TEST(Match, OfAnUnknownCodeEqualsNothingNotEvenItself) {
  for (unsigned code : {35u, 40u, kMax}) {
    Match match{filtersMatch_t(code)};
    readInto(&match, "0805 b00109");
    EXPECT_EQ(match.getType(), code);
    EXPECT_FALSE(match == match);
  }
  EXPECT_EQ(wireOf(Match(filtersMatch_t(40))), "0828");
}

}  // namespace
