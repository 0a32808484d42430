#include <filter_common/filter_actions.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <iomanip>
#include <sstream>
#include <string>

#include "class_checks.h"

namespace {

using namespace catalogue;

template <class T>
class EveryAction : public ::testing::Test {};
TYPED_TEST_SUITE(EveryAction, AllActions, );

TYPED_TEST(EveryAction, PrintsItsBlockByItsOwnPrinterAndByItsCode) { checkText<TypeParam>(); }

TEST(ActionPrint, IsFixedToTheCharacter) {
  EXPECT_EQ(printed(ActionPermit()),
            "    =ActionPermit=\n      Action Type ID: 0\n      <no parameters>\n");
}

// Deliberate: a redirection repeats the indent for every port on one line, blocked ports do not.
TEST(ActionPrint, LaysRedirectPortsOutUnlikeBlockedPorts) {
  EXPECT_EQ(printed(redirectTo({kEth3, kLag1})),
            block("ActionRedirect", 11, {}) + "      \"eth-3\"       \"lag-1\" \n");
  EXPECT_EQ(printed(redirectTo({})), block("ActionRedirect", 11, {}) + "\n");
  EXPECT_EQ(printed(ActionBlockEgressPorts(Ports())),
            block("ActionBlockEgressPorts", 3, {"Number of ports: 0", "LIMIDs: "}));
  EXPECT_EQ(printed(ActionPorts(FILTERS_ACTION_BLOCK_EGRESS_PORTS, {kEth3})),
            "      Number of ports: 1\n      LIMIDs: \"eth-3\" \n");
}

TEST(ActionPrint, NamesTheCancelTypeOrWritesItsNumber) {
  const auto lineOf = [](std::uint32_t type, const std::string& text) {
    EXPECT_EQ(printed(ActionCopyToCpuCancel(cp2cpuCancelParam_t(type))),
              block("ActionCopyToCpuCancel", 4, {"Cp2CPU Cancel type: " + text}));
  };
  lineOf(0, "COPY_TO_CPU_CANCEL");
  lineOf(2, "2");
  lineOf(kMax, "4294967295");
}

TEST(ActionPrint, GivesTheCallersWidthToTheHeaderAsAWhole) {
  std::ostringstream os;
  os << std::setw(22) << std::setfill('.') << ActionSetPcp(7);
  EXPECT_EQ(os.str(), "...." + block("ActionSetPcp", 5, {"PCP: 7"}));
}

TEST(ActionPrint, FlushesEveryLine) {
  struct CountingBuffer : std::stringbuf {
    int sync() override { return ++flushes, 0; }
    int flushes = 0;
  };
  for (const auto& [code, action] : oneActionOfEachCode()) {
    CountingBuffer buffer;
    std::ostream os(&buffer);
    os << *action;
    const std::string text = buffer.str();
    EXPECT_EQ(buffer.flushes, std::count(text.begin(), text.end(), '\n')) << text;
  }
}

TEST(ActionPrint, WritesNothingForAnUnknownCode) {
  for (unsigned code : {20u, 40u, kMax}) EXPECT_EQ(printed(Action(filtersAction_t(code))), "");
}

}  // namespace
