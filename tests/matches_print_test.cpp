#include <filter_common/filter_matches.h>

#include <gtest/gtest.h>

#include <iomanip>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "samples.h"

namespace {

using namespace FiltersCommon;
using namespace catalogue;
using namespace std::string_literals;

std::string block(const std::string& name, unsigned code, const std::vector<std::string>& lines) {
  std::string text = "    =" + name + "=\n      Match Type ID: " + std::to_string(code) + "\n";
  for (const std::string& line : lines) text += "      " + line + "\n";
  return text;
}

// What a match prints by its own operator and by its code, and what it should print.
struct Printed {
  template <class T>
  Printed(const T& match, const std::string& name, unsigned code,
          const std::vector<std::string>& lines)
      : own(printed(match)),
        generic(printed(static_cast<const Match&>(match))),
        expected(block(name, code, lines)) {}
  std::string own;
  std::string generic;
  std::string expected;
};

// clang-format off
const Printed kPrinted[] = {
    {MatchAll(), "MatchAll", 0, {"<no parameters>"}},
    {MatchIngressPorts(Ports{kEth3, kLag1, kEth3}), "MatchIngressPorts", 1,
     {"Number of ports: 3", "LIMIDs: \"eth-3\" \"lag-1\" \"eth-3\" "}},
    {MatchExternalVlanId(VlanIds{100, 10}), "MatchExternalVlanId", 2, {"VLAN IDs: [ 10 100 ]"}},
    {MatchTPID(0x8100), "MatchTPID", 3, {"TPID: 0x8100"}},
    {MatchDstMac(kMac, kMacMask), "MatchDstMac", 4,
     {"MAC: 0:1b:21:a:ff:42", "Mask: ff:ff:ff:0:0:0"}},
    {MatchDstL4Port(80, 65280), "MatchDstL4Port", 5, {"Param1: 80", "Param2: 65280"}},
    {MatchSrcL4Port(443), "MatchSrcL4Port", 6, {"Param1: 443", "Param2: 0"}},
    {MatchSrcMac(kMac), "MatchSrcMac", 7, {"MAC: 0:1b:21:a:ff:42", "Mask: ff:ff:ff:ff:ff:ff"}},
    {MatchL2SrcEntryType(FILTERS_L2_SRC_ENTRY_STATIC), "MatchL2SrcEntryType", 8,
     {"L2 Src Entry Type: 2"}},
    {MatchSrcIPv4(kIPv4), "MatchSrcIPv4", 9, {"IP: 192.0.2.1", "Mask: 255.255.255.255"}},
    {MatchDstIPv4(kIPv4, kIPv4Mask), "MatchDstIPv4", 10, {"IP: 192.0.2.1", "Mask: 255.255.240.0"}},
    {MatchInternalVlanId(65535), "MatchInternalVlanId", 11, {"VLAN IDs: [ 65535 ]"}},
    {MatchPcp(Pcps{0x42, 0x41}), "MatchPcp", 12, {"PCPs: [ A B ]"}},
    {MatchInternalPcp(Pcps()), "MatchInternalPcp", 13, {"PCPs: [ ]"}},
    {MatchSrcIPv6(kIPv6), "MatchSrcIPv6", 14,
     {"IPv6: 2001:db8:1234::abcd", "Mask: ffff:ffff:ffff:ffff:ffff:ffff:ffff:ffff"}},
    {MatchDstIPv6(kIPv6, kIPv6Mask), "MatchDstIPv6", 15,
     {"IPv6: 2001:db8:1234::abcd", "Mask: ffff:ffff:ffff::"}},
    {MatchVlanTagging(FILTERS_VLAN_UNTAGGED), "MatchVlanTagging", 16, {"Tagging: untagged"}},
    {MatchVlanTagging(FILTERS_VLAN_TAGGED), "MatchVlanTagging", 16, {"Tagging: tagged"}},
    {MatchVlanTagging(vlan_tagging_t(2)), "MatchVlanTagging", 16, {"Tagging: tagged"}},
    {MatchIpProtocol(65), "MatchIpProtocol", 17, {"Ip Protocol: 65"}},
    {MatchPacketRes(en_Resolution(kMax)), "MatchPacketRes", 18, {"Pkt Resolution: 4294967295"}},
    {MatchMplsTerm(true), "MatchMplsTerm", 19, {"Mpls Terminated status: 1"}},
    {MatchToS(184), "MatchToS", 20, {"ToS: 184"}},
    {MatchVirtualPort(kVpls9), "MatchVirtualPort", 21, {"LIMID: vpls-9"}},
    {MatchEgressPorts(Ports()), "MatchEgressPorts", 22, {"Number of ports: 0", "LIMIDs: "}},
    {MatchIngressStpState(FILTERS_STP_STATE_FORWARDING), "MatchIngressStpState", 23,
     {"IngressStpState: 4"}},
    {MatchVlanInfo({300, kMax}), "MatchVlanInfo", 24,
     {"SVC VLAN Type: 300", "Protocol2CPU VLAN Type: 4294967295"}},
    {MatchSrcPort(kEth3), "MatchSrcPort", 25, {"LIMID: eth-3"}},
    {MatchTTL(65), "MatchTTL", 26, {"TTL: 65"}},
    {MatchVrfId(65535), "MatchVrfId", 27, {"Match VRF ID: 65535"}},
    {MatchDrop(true), "MatchDrop", 28, {"Match Drop: 1"}},
    {MatchMyStationHit(false), "MatchMyStationHit", 29, {"Match MyStationHit: 0"}},
    {MatchCpuPort(), "MatchCpuPort", 30, {}},
    {MatchForwardingType(FILTERS_FORWARDING_TYPE_MPLS), "MatchForwardingType", 31,
     {"Forwarding Type: 2"}},
    {MatchDestinationCpu(), "MatchDestinationCpu", 32, {}},
    {MatchCPUInjectedPackets(true), "MatchCPUInjectedPackets", 33, {"Match Injected?: 1"}},
    {MatchDstL4PortRange(100, 65535), "MatchDstL4PortRange", 34,
     {"Min Port: 100", "Max Port: 65535"}}};
// clang-format on

TEST(MatchPrint, WritesTheBlockOfItsClass) {
  std::set<std::string> names;
  for (const Printed& row : kPrinted) {
    names.insert(row.expected.substr(0, row.expected.find('\n')));
    EXPECT_EQ(row.own, row.expected);
    EXPECT_EQ(row.generic, row.expected);
  }
  EXPECT_EQ(names.size(), 35u) << "a class is missing from the table";
  EXPECT_EQ(printed(MatchAll()), "    =MatchAll=\n      Match Type ID: 0\n      <no parameters>\n");
}

// Deliberate: printed by its code, a MatchDSCP is the MatchToS that it stands for.
TEST(MatchPrint, NamesADSCPOnlyWhenItsOwnPrinterIsCalled) {
  const MatchDSCP dscp(46);
  EXPECT_EQ(printed(dscp), block("MatchDSCP", 20, {"DSCP: 46"}));
  EXPECT_EQ(printed(static_cast<const Match&>(dscp)), block("MatchToS", 20, {"ToS: 184"}));
}

TEST(MatchPrint, NamesExcludedPortTypesInFrontOfThePorts) {
  MatchIngressPorts match(PortTypes{port_type_t(7), FILTERS_PORT_TYPE_CPU});
  readInto(&match, "1080808008");
  EXPECT_EQ(printed(match), block("MatchIngressPorts", 1,
                                  {"Excluded Port Types: \"\" \"CPU_PORT\" ", "Number of ports: 1",
                                   "LIMIDs: \"eth-0\" "}));
}

// Deliberate: a PCP prints as the character it is, a zero byte included.
TEST(MatchPrint, WritesPcpsAsRawCharacters) {
  const std::string line = "      PCPs: [ \0 \3 \xff ]\n"s;
  EXPECT_EQ(printed(MatchPcp(Pcps{255, 0, 3})), block("MatchPcp", 12, {}) + line);
  EXPECT_EQ(printed(MatchInternalPcp(Pcps{255, 0, 3})), block("MatchInternalPcp", 13, {}) + line);
}

// Deliberate: what follows a TPID on the same stream is hexadecimal, addresses excepted.
TEST(MatchPrint, LeavesTheStreamInHexadecimalAfterATPID) {
  std::ostringstream os;
  os << MatchTPID(0xabcd) << MatchTTL(64) << MatchSrcIPv4(kIPv4) << std::dec << MatchTTL(64);
  EXPECT_EQ(os.str(),
            "    =MatchTPID=\n      Match Type ID: 3\n      TPID: 0xabcd\n"
            "    =MatchTTL=\n      Match Type ID: 1a\n      TTL: 40\n"
            "    =MatchSrcIPv4=\n      Match Type ID: 9\n"
            "      IP: 192.0.2.1\n      Mask: 255.255.255.255\n"
            "    =MatchTTL=\n      Match Type ID: 26\n      TTL: 64\n");
}

TEST(MatchPrint, WritesFlagsAsDigitsWhateverTheStreamSays) {
  std::ostringstream os;
  os << std::boolalpha << MatchDrop(true) << MatchMyStationHit(true) << MatchMplsTerm(false)
     << MatchCPUInjectedPackets(true);
  EXPECT_EQ(os.str(), block("MatchDrop", 28, {"Match Drop: 1"}) +
                          block("MatchMyStationHit", 29, {"Match MyStationHit: 1"}) +
                          block("MatchMplsTerm", 19, {"Mpls Terminated status: 0"}) +
                          block("MatchCPUInjectedPackets", 33, {"Match Injected?: 1"}));
}

TEST(MatchPrint, GivesTheCallersWidthToTheHeaderAsAWhole) {
  std::ostringstream os;
  os << std::setw(20) << std::setfill('.') << MatchTTL(64);
  EXPECT_EQ(os.str(), "......" + block("MatchTTL", 26, {"TTL: 64"}));
}

TEST(MatchPrint, WritesNothingForAnUnknownCode) {
  for (unsigned code : {35u, 40u, kMax}) EXPECT_EQ(printed(Match(filtersMatch_t(code))), "");
}

}  // namespace
