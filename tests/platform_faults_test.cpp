// Tests faults of the device's interface-id library and of the C library's ether_ntoa_r(). This
// program replaces their functions by ones that fail without writing their outputs, or that write a
// name without a terminating zero.

#include <filter_common/filter_actions.pb.h>
#include <gtest/gtest.h>
#include <limid/limid_standin.h>

#include <cstring>
#include <sstream>
#include <stdexcept>

#include <filter_common/filter_actions.h>
#include <filter_common/filter_matches.h>

static std::string macBuffer;
static bool namesHaveNoEnd = false;

extern "C" {
char* ether_ntoa_r(const ether_addr*, char* text) {
  macBuffer = text;
  return nullptr;
}
int limid_to_intfname(limid_t, char* name, size_t size) {
  if (namesHaveNoEnd) std::memset(name, 'x', size);
  return namesHaveNoEnd ? 0 : -1;
}
int limid_to_ifindex(limid_t, uint32_t*) { return -1; }
int limid_from_ifindex(limid_t*, uint32_t) { return -1; }
}

namespace {

using namespace FiltersCommon;

const ActionMplsPortSet kMpls(limid_make_mpls_vpws(1), limid_make_lag(1));

TEST(PlatformFaults, PrintsAnEmptyNameWhereThereIsNoneAndEndsOneWithoutEnd) {
  for (const unsigned length : {0u, 1u}) {
    namesHaveNoEnd = length != 0;
    std::ostringstream os;
    os << MatchSrcPort(limid_make_ethernet(3)) << ActionRedirect(limid_make_lag(1)) << kMpls;
    const std::string name(length * 100, 'x'), shortName(length * 64, 'x');
    EXPECT_EQ(os.str(),
              "    =MatchSrcPort=\n      Match Type ID: 25\n      LIMID: " + name +
                  "\n    =ActionRedirect=\n      Action Type ID: 11\n      \"" + name +
                  "\" \n    =ActionMplsPortSet=\n      Action Type ID: 18\n      VPN ID: " +
                  shortName + "\n      MPLS Access Port: " + shortName + "\n");
  }
}

TEST(PlatformFaults, EndsTheLineOfAMacAddressThatHasNoText) {
  std::ostringstream os;
  os << ActionReplaceSrcMac(ether_addr{{1, 2, 3, 4, 5, 6}}) << ActionDeny();
  EXPECT_EQ(os.str(), "    =ActionReplaceSrcMac=\n      Action Type ID: 14\n      Replace MAC: \n");
  EXPECT_TRUE(os.fail());
  EXPECT_EQ(macBuffer, "00:00:00:00:00:00");
}

TEST(PlatformFaults, SendsZeroForAnInterfaceWithoutIndexAndRefusesAnIndexWithoutInterface) {
  ActionPB message;
  kMpls.convertToActionPB(&message);
  EXPECT_EQ(message.SerializeAsString(), std::string("\x08\x12\x50\0\x58\0", 6));
  ActionMplsPortSet action;
  EXPECT_THROW(action.convertFromActionPB(&message), std::invalid_argument);
  EXPECT_EQ(action.getVpnId(), ActionMplsPortSet().getVpnId());
}

}  // namespace
