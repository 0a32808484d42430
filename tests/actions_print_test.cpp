#include <filter_common/filter_actions.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <iomanip>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "samples.h"

namespace {

using namespace FiltersCommon;
using namespace catalogue;

std::string block(const std::string& name, unsigned code, const std::vector<std::string>& lines) {
  std::string text = "    =" + name + "=\n      Action Type ID: " + std::to_string(code) + "\n";
  for (const std::string& line : lines) text += "      " + line + "\n";
  return text;
}

// What an action prints by its own operator and by its code, and what it should print.
struct Printed {
  template <class T>
  Printed(const T& action, const std::string& name, unsigned code,
          const std::vector<std::string>& lines)
      : own(printed(action)),
        generic(printed(static_cast<const Action&>(action))),
        expected(block(name, code, lines)) {}
  std::string own;
  std::string generic;
  std::string expected;
};

// clang-format off
const Printed kPrinted[] = {
    {ActionPermit(), "ActionPermit", 0, {"<no parameters>"}},
    {ActionDeny(), "ActionDeny", 1, {"<no parameters>"}},
    {ActionCopyToCpu(), "ActionCopyToCpu", 2, {"<no parameters>"}},
    {ActionBlockEgressPorts(Ports{kEth3, kLag1, kEth3}), "ActionBlockEgressPorts", 3,
     {"Number of ports: 3", "LIMIDs: \"eth-3\" \"lag-1\" \"eth-3\" "}},
    {ActionBlockEgressPorts(Ports()), "ActionBlockEgressPorts", 3,
     {"Number of ports: 0", "LIMIDs: "}},
    {ActionCopyToCpuCancel(COPY_TO_CPU_CANCEL), "ActionCopyToCpuCancel", 4,
     {"Cp2CPU Cancel type: COPY_TO_CPU_CANCEL"}},
    {ActionCopyToCpuCancel(SWITCH_TO_CPU_CANCEL), "ActionCopyToCpuCancel", 4,
     {"Cp2CPU Cancel type: SWITCH_TO_CPU_CANCEL"}},
    {ActionCopyToCpuCancel(cp2cpuCancelParam_t(2)), "ActionCopyToCpuCancel", 4,
     {"Cp2CPU Cancel type: 2"}},
    {ActionCopyToCpuCancel(cp2cpuCancelParam_t(kMax)), "ActionCopyToCpuCancel", 4,
     {"Cp2CPU Cancel type: 4294967295"}},
    {ActionSetPcp(65), "ActionSetPcp", 5, {"PCP: 65"}},
    {ActionSetPcpAndQueue(65), "ActionSetPcpAndQueue", 6, {"PCP_AND_QUEUE: 65"}},
    {ActionSetInnerPcp(65), "ActionSetInnerPcp", 7, {"Inner PCP: 65"}},
    {ActionSetDSCP(65), "ActionSetDSCP", 8, {"DSCP: 65"}},
    {ActionMapToCosQueue(65), "ActionMapToCosQueue", 9, {"CoS Queue: 65"}},
    {ActionMapToCpuCosQueue(65), "ActionMapToCpuCosQueue", 10, {"CPU CoS Queue: 65"}},
    // Deliberate: every port repeats the indent, on one line.
    {redirectTo({kEth3, kLag1}), "ActionRedirect", 11, {"\"eth-3\"       \"lag-1\" "}},
    {ActionReplaceDstMac(kMac), "ActionReplaceDstMac", 12, {"Replace MAC: 0:1b:21:a:ff:42"}},
    {ActionRedirectCancel(), "ActionRedirectCancel", 13, {"<no parameters>"}},
    {ActionReplaceSrcMac(kMacMask), "ActionReplaceSrcMac", 14, {"Replace MAC: ff:ff:ff:0:0:0"}},
    {ActionL3Switch(kMax), "ActionL3Switch", 15, {"L3 Destination ID: 4294967295"}},
    {ActionBlackHole(), "ActionBlackHole", 16, {"<no parameters>"}},
    {ActionCopyInnerPcp(), "ActionCopyInnerPcp", 17, {"<no parameters>"}},
    {ActionMplsPortSet(kVpls9, kLag1), "ActionMplsPortSet", 18,
     {"VPN ID: vpls-9", "MPLS Access Port: lag-1"}},
    {ActionL2ToCpuDrop(), "ActionL2ToCpuDrop", 19, {"<no parameters>"}}};
// clang-format on

TEST(ActionPrint, WritesTheBlockOfItsClass) {
  std::set<std::string> names;
  for (const Printed& row : kPrinted) {
    names.insert(row.expected.substr(0, row.expected.find('\n')));
    EXPECT_EQ(row.own, row.expected);
    EXPECT_EQ(row.generic, row.expected);
  }
  EXPECT_EQ(names.size(), 20u) << "a class is missing from the table";
  EXPECT_EQ(printed(ActionPermit()),
            "    =ActionPermit=\n      Action Type ID: 0\n      <no parameters>\n");
}

TEST(ActionPrint, EndsARedirectionToNowhereWithAnEmptyLine) {
  EXPECT_EQ(printed(redirectTo({})), block("ActionRedirect", 11, {}) + "\n");
}

TEST(ActionPrint, WritesAPortListWithoutItsLeafAsTwoLines) {
  EXPECT_EQ(printed(ActionPorts(FILTERS_ACTION_BLOCK_EGRESS_PORTS, {kEth3})),
            "      Number of ports: 1\n      LIMIDs: \"eth-3\" \n");
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
    ::operator<<(os, *action);
    const std::string text = buffer.str();
    EXPECT_EQ(buffer.flushes, std::count(text.begin(), text.end(), '\n')) << text;
  }
}

TEST(ActionPrint, WritesNothingForAnUnknownCode) {
  for (unsigned code : {20u, 40u, kMax}) EXPECT_EQ(printed(Action(filtersAction_t(code))), "");
}

}  // namespace
