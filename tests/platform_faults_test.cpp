// The device's interface-id library, and the C library's text of a MAC address, failing at every
// call: this program's functions stand in front of theirs and leave their outputs as they were.

#include <filter_common/filter_actions.pb.h>
#include <filter_common/filter_matches.pb.h>
#include <gmock/gmock.h>
#include <limid/limid_standin.h>

#include <sstream>
#include <stdexcept>
#include <string>

#include <filter_common/filter_actions.h>
#include <filter_common/filter_matches.h>

static std::string macBuffer;

extern "C" {
char* ether_ntoa_r(const ether_addr*, char* text) {
  macBuffer = text;
  return nullptr;
}
int limid_to_intfname(limid_t, char*, size_t) { return -1; }
int limid_to_ifindex(limid_t, uint32_t*) { return -1; }
int limid_from_ifindex(limid_t*, uint32_t) { return -1; }
}

namespace {

using namespace FiltersCommon;

TEST(PlatformFaults, PrintsAnEmptyNameWhereTheLibraryGivesNone) {
  std::ostringstream os;
  os << MatchSrcPort(limid_make_ethernet(3)) << ActionRedirect(limid_make_lag(1))
     << ActionMplsPortSet(limid_make_mpls_vpws(1), limid_make_lag(1));
  EXPECT_EQ(os.str(),
            "    =MatchSrcPort=\n      Match Type ID: 25\n      LIMID: \n"
            "    =ActionRedirect=\n      Action Type ID: 11\n      \"\" \n"
            "    =ActionMplsPortSet=\n      Action Type ID: 18\n      VPN ID: \n"
            "      MPLS Access Port: \n");
}

TEST(PlatformFaults, EndsTheLineOfAMacAddressThatHasNoText) {
  std::ostringstream os;
  os << ActionReplaceSrcMac(ether_addr{{1, 2, 3, 4, 5, 6}}) << ActionDeny();
  EXPECT_EQ(os.str(), "    =ActionReplaceSrcMac=\n      Action Type ID: 14\n      Replace MAC: \n");
  EXPECT_TRUE(os.fail());
  EXPECT_EQ(macBuffer, "00:00:00:00:00:00");
}

TEST(PlatformFaults, SendsZeroForAnInterfaceWithoutIndex) {
  ActionPB message;
  ActionMplsPortSet(limid_make_mpls_vpws(1), limid_make_lag(1)).convertToActionPB(&message);
  EXPECT_EQ(message.SerializeAsString(), std::string("\x08\x12\x50\0\x58\0", 6));
}

TEST(PlatformFaults, RefusesAnIndexWithoutInterface) {
  ActionPB message;
  message.set_vpn_id(1);
  message.set_mpls_access_port(2);
  ActionMplsPortSet action;
  EXPECT_THROW(action.convertFromActionPB(&message), std::invalid_argument);
  EXPECT_EQ(action.getVpnId(), ActionMplsPortSet().getVpnId());
}

}  // namespace
