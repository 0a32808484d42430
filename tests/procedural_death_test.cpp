// The assertions of the procedural interface: a null handle stops the process, in every kind of
// build, with one line of fixed text.

#include <filter_common/filter_actions_c.h>
#include <filter_common/filter_entries.h>
#include <filter_common/filter_entries_c.h>
#include <filter_common/filter_groups.h>
#include <filter_common/filter_groups_c.h>
#include <filter_common/filter_matches_c.h>
#include <gtest/gtest.h>

#include <regex>
#include <string>
#include <vector>

namespace FiltersCommon {
namespace {

FiltersGroup group(1);
FiltersEntry entry(1);
entriesStruct record;

struct Call {
  const char* signature;  // FC stands for FiltersCommon
  void (*call)();
};

struct Assertion {
  const char* location;  // as a regular expression; the line only where it is fixed
  const char* expression;
  std::vector<Call> calls;
};

#define CALL(result, function, parameters, ...)                                                   \
  {                                                                                               \
    result " FC::" #function "(" parameters ")", [] { static_cast<void>(function(__VA_ARGS__)); } \
  }

// clang-format off
const Assertion kAssertions[] = {
    {"filter_groups_c[.]cpp:[0-9]+", "g != nullptr", {
         CALL("FC::filtersGroupId_t", filtersGroupGetId, "FC::FiltersGroup*", nullptr),
         CALL("void", filtersGroupSetPriority, "FC::FiltersGroup*, FC::filtersGroupPriority_t", nullptr, 1),
         CALL("FC::filtersGroupPriority_t", filtersGroupGetPriority, "FC::FiltersGroup*", nullptr),
         CALL("void", filtersGroupSetStage, "FC::FiltersGroup*, FC::filtersGroupStage_t", nullptr, {}),
         CALL("FC::filtersGroupStage_t", filtersGroupGetStage, "FC::FiltersGroup*", nullptr),
         CALL("FC::filtersErr_t", filtersGroupSetType, "FC::FiltersGroup*, FC::filtersGroupType_t", nullptr, {}),
         CALL("FC::filtersGroupType_t", filtersGroupGetType, "FC::FiltersGroup*", nullptr),
         CALL("void", deleteFiltersGroup, "FC::FiltersGroup*", nullptr)}},
    {"filter_groups_c[.]cpp:[0-9]+", "g != nullptr && e != nullptr", {
         CALL("FC::filtersErr_t", filtersGroupInsertEntry, "FC::FiltersGroup*, FC::FiltersEntry*", nullptr, &entry),
         CALL("FC::filtersErr_t", filtersGroupInsertEntry, "FC::FiltersGroup*, FC::FiltersEntry*", &group, nullptr)}},
    {"filter_groups_c[.]cpp:[0-9]+", "g != nullptr && entries != nullptr", {
         CALL("void", filtersGroupGetEntries, "FC::FiltersGroup*, FC::entriesStruct*", nullptr, &record),
         CALL("void", filtersGroupGetEntries, "FC::FiltersGroup*, FC::entriesStruct*", &group, nullptr)}},
    {"filter_groups_c[.]cpp:[0-9]+", "entries != nullptr", {
         CALL("void", deleteFiltersEntriesStruct, "FC::entriesStruct*", nullptr)}},
    {"filter_entries_c[.]cpp:[0-9]+", "e != nullptr", {
         CALL("FC::FiltersEntry*", copyFiltersEntry, "FC::FiltersEntry*", nullptr),
         CALL("FC::filtersEntryId_t", filtersEntryGetId, "FC::FiltersEntry*", nullptr),
         CALL("void", filtersEntrySetPriority, "FC::FiltersEntry*, FC::filtersEntryPriority_t", nullptr, 1),
         CALL("FC::filtersEntryPriority_t", filtersEntryGetPriority, "FC::FiltersEntry*", nullptr),
         CALL("FC::filtersErr_t", filtersEntryDeleteMatch, "FC::FiltersEntry*, FC::filtersMatch_t", nullptr, {}),
         CALL("FC::filtersErr_t", filtersEntryDeleteAction, "FC::FiltersEntry*, FC::filtersAction_t", nullptr, {}),
         CALL("void", deleteFiltersEntry, "FC::FiltersEntry*", nullptr)}},
    {"filter_matches_c[.]cpp:[0-9]+", "m != nullptr", {
         CALL("FC::filtersMatch_t", matchGetType, "void*", nullptr),
         CALL("const ether_addr*", matchMacGetMac, "void*", nullptr),
         CALL("const ether_addr*", matchMacGetMask, "void*", nullptr),
         CALL("limid_t", matchGetLimId, "void*", nullptr),
         CALL("void", deleteMatch, "void*", nullptr),
         CALL("FC::tpid_t", matchGetTPID, "FC::MatchTPID*", nullptr),
         CALL("FC::l4port_t", matchGetL4Port, "void*", nullptr),
         CALL("FC::l4port_t", matchGetL4PortMask, "void*", nullptr),
         CALL("FC::l2SrcEntryType_t", matchGetL2SrcEntryType, "FC::MatchL2SrcEntryType*", nullptr),
         CALL("const in_addr*", matchIPv4GetIPv4, "void*", nullptr),
         CALL("const in_addr*", matchIPv4GetIPv4Mask, "void*", nullptr),
         CALL("const in6_addr*", matchIPv6GetIPv6, "void*", nullptr),
         CALL("const in6_addr*", matchIPv6GetIPv6Mask, "void*", nullptr),
         CALL("FC::l4port_t", matchGetL4PortRangeMin, "FC::MatchDstL4PortRange*", nullptr),
         CALL("FC::l4port_t", matchGetL4PortRangeMax, "FC::MatchDstL4PortRange*", nullptr)}},
    {"filter_actions_c[.]cpp:23", "a != nullptr", {CALL("void", deleteAction, "void*", nullptr)}},
    {"filter_actions_c[.]cpp:31", "a != nullptr", {CALL("FC::filtersAction_t", actionGetType, "void*", nullptr)}},
};
// clang-format on

// An emulator reports the signal too.
const std::string kEmulatorsWord = "(qemu: [^\n]*\n)?";

TEST(ProceduralDeathTest, NullHandlesAreReportedWithFileLineAndSignature) {
  GTEST_FLAG_SET(death_test_style, "fast");
  for (const auto& [location, expression, calls] : kAssertions) {
    for (const auto& [abbreviated, call] : calls) {
      const std::string full =
          std::regex_replace(abbreviated, std::regex("FC::"), "FiltersCommon::");
      const std::string signature = std::regex_replace(full, std::regex("[*()]"), "[$&]");
      EXPECT_DEATH(call(), testing::MatchesRegex("[^ ]+: " + std::string(location) + ": " +
                                                 signature + ": Assertion `" + expression +
                                                 "' failed[.]\n" + kEmulatorsWord));
    }
  }
}

}  // namespace
}  // namespace FiltersCommon
