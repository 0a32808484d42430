#include <filter_common/filter_matches.h>

#include <gtest/gtest.h>

#include <iomanip>
#include <sstream>
#include <string>

#include "class_checks.h"

namespace {

using namespace catalogue;
using namespace std::string_literals;

template <class T>
class EveryMatch : public ::testing::Test {};
TYPED_TEST_SUITE(EveryMatch, AllMatches, );

TYPED_TEST(EveryMatch, PrintsItsBlockByItsOwnPrinterAndByItsCode) { checkText<TypeParam>(); }

TEST(MatchPrint, IsFixedToTheCharacter) {
  EXPECT_EQ(printed(MatchAll()), "    =MatchAll=\n      Match Type ID: 0\n      <no parameters>\n");
}

// Deliberate: printed by its code, a MatchDSCP is the MatchToS that it stands for.
TEST(MatchPrint, NamesADSCPOnlyWhenItsOwnPrinterIsCalled) {
  EXPECT_EQ(printed(generic(MatchDSCP(46))), block("MatchToS", 20, {"ToS: 184"}));
}

TEST(MatchPrint, NamesExcludedPortTypesInFrontOfThePorts) {
  MatchIngressPorts match(PortTypes{port_type_t(7), FILTERS_PORT_TYPE_CPU});
  readInto(&match, "10" + varint(kEth3));
  EXPECT_EQ(printed(match), block("MatchIngressPorts", 1,
                                  {"Excluded Port Types: \"\" \"CPU_PORT\" ", "Number of ports: 1",
                                   "LIMIDs: \"eth-3\" "}));
}

TEST(MatchPrint, LeavesEmptyListsEmpty) {
  EXPECT_EQ(printed(MatchEgressPorts(Ports())),
            block("MatchEgressPorts", 22, {"Number of ports: 0", "LIMIDs: "}));
  EXPECT_EQ(printed(MatchPcp(Pcps())), block("MatchPcp", 12, {"PCPs: [ ]"}));
}

TEST(MatchPrint, CallsEveryTaggingButZeroTagged) {
  EXPECT_EQ(printed(MatchVlanTagging(FILTERS_VLAN_UNTAGGED)),
            block("MatchVlanTagging", 16, {"Tagging: untagged"}));
  EXPECT_EQ(printed(MatchVlanTagging(vlan_tagging_t(2))),
            block("MatchVlanTagging", 16, {"Tagging: tagged"}));
}

// Deliberate: a PCP prints as the character it is, a zero byte included.
TEST(MatchPrint, WritesPcpsAsRawCharacters) {
  EXPECT_EQ(printed(MatchPcp(Pcps{255, 0, 3})), block("MatchPcp", 12, {"PCPs: [ \0 \3 \xff ]"s}));
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
  os << std::boolalpha << MatchDrop(false) << MatchMyStationHit(true) << MatchMplsTerm(false)
     << MatchCPUInjectedPackets(true);
  EXPECT_EQ(os.str(), block("MatchDrop", 28, {"Match Drop: 0"}) +
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
