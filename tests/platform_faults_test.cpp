// Tests faults of the device's interface-id library and of the C library's ether_ntoa_r(). This
// program replaces functions of both. The new functions fail without writing their outputs, or
// write a name without a terminating zero.

#include <filter_common/filter_actions.pb.h>
#include <gtest/gtest.h>
#include <limid/limid_standin.h>

#include <cstring>
#include <functional>
#include <sstream>
#include <stdexcept>

#include <filter_common/filter_actions.h>
#include <filter_common/filter_matches.h>

#include "meaning.h"

static const char* const kThrowing = "throw policer";
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

// A policer made from these bytes throws, as a policer of the device may.
policer::Policer::Policer(const std::string& bytes) {
  if (bytes.find("throw") == 0) throw std::domain_error(bytes);
}

namespace {

using namespace catalogue;

std::string thrownBy(const std::function<void()>& call) {
  try {
    call();
  } catch (const std::logic_error& thrown) {
    return thrown.what();
  }
  return "";
}

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

// Reading an entry makes the policer, then the parent, then the actions. The exception is that of
// the first of them that throws. For bytes of any form, the exception is the same as if the parsed
// message were converted.
TEST(PlatformFaults, ThrowsWhatTheFirstPartOfAnEntryThrows) {
  const std::string head = fromHex("08071001"), match = fromHex("0804200a"),
                    mpls = fromHex("08125001"), permit = fromHex("0801");
  const std::string cutMatch = fromHex("080420"), twice = fromHex("0804200a200b");
  int thrown = 0;
  for (const std::string policer : {"", kThrowing}) {
    for (const std::string parent : {"", "none", "throw parent"}) {
      for (const std::string& action : {permit, mpls}) {
        for (const std::string& odd : {match, cutMatch, twice}) {
          for (const bool oddLast : {false, true}) {
            std::string entry = head + bytesField(0x1a, policer);
            if (!oddLast) entry += bytesField(0x22, odd);
            entry += bytesField(0x2a, action);
            if (oddLast) entry += bytesField(0x22, odd);
            if (parent != "none") entry += bytesField(0x3a, parent);
            SCOPED_TRACE(toHex(entry));
            FiltersEntryPB message;
            message.ParsePartialFromString(entry);
            const std::string meant = thrownBy([&] { converted(message); });
            EXPECT_EQ(thrownBy([&] { FiltersEntry read(entry); }), meant);
            EXPECT_EQ(thrownBy([&] { FiltersGroup read(bytesField(0x2a, entry)); }), meant);
            thrown += meant.empty() ? 0 : 1;
          }
        }
      }
    }
  }
  EXPECT_GT(thrown, 36);
}

}  // namespace
