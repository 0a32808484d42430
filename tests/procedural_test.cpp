// Tests the parts of the procedural interface that procedural_c_test.c cannot test: classes that C
// cannot make or read, an exception, and assertions. allocation_test.cpp tests failing memory.

#include <filter_common/filter_actions_c.h>
#include <filter_common/filter_entries_c.h>
#include <filter_common/filter_groups_c.h>
#include <filter_common/filter_matches_c.h>
#include <filter_common/filter_serialized.h>
#include <gmock/gmock.h>

#include "entry_samples.h"
#include "replaced.h"

using namespace catalogue;

namespace {

template <class T>
bool printsLast(const T& object, const std::string& line) {
  return testing::Value(printed(object), testing::EndsWith("\n      " + line + "\n"));
}

}  // namespace

extern "C" {
void callEveryFunction();
void expectInC(bool good, int line, const char* what) {
  EXPECT_TRUE(good) << "procedural_c_test.c:" << line << ": " << what;
}
bool matchPrints(void* m, const char* line) { return printsLast(*static_cast<Match*>(m), line); }
bool actionPrints(void* a, const char* line) { return printsLast(*static_cast<Action*>(a), line); }
}

namespace {

TEST(Procedural, IsWhatCProgramsExpect) { callEveryFunction(); }

filtersErr_t get(FiltersEntry& e, Match& m) { return filtersEntryGetMatch(&e, &m); }
filtersErr_t set(FiltersEntry& e, Match& m) { return filtersEntrySetMatch(&e, &m); }
filtersErr_t get(FiltersEntry& e, Action& a) { return filtersEntryGetAction(&e, &a); }
filtersErr_t set(FiltersEntry& e, Action& a) { return filtersEntrySetAction(&e, &a); }

TEST(Procedural, RefusesCodesThatNoClassCarries) {
  FiltersEntry entry = fullEntry();
  const auto refuses = [&](auto&& object) {
    return get(entry, object) == FILTERS_ERR_INVALID && set(entry, object) == FILTERS_ERR_INVALID;
  };
  for (const auto beyond : {0u, 1u, 0x80000000u, kMax - unsigned(kMatchCodes.size())}) {
    EXPECT_TRUE(refuses(Match(filtersMatch_t(kMatchCodes.size() + beyond)))) << beyond;
    EXPECT_TRUE(refuses(Action(filtersAction_t(kActionCodes.size() + beyond)))) << beyond;
  }
  EXPECT_TRUE(entry == fullEntry());
}

TEST(Procedural, LetsTheRefusalOfAnMplsPortThrough) {
  EXPECT_THAT([] { newActionMplsPortSet(kEth3, kEth3); },
              testing::ThrowsMessage<std::invalid_argument>(
                  "ActionMplsPortSet: invalid vpn_id limid type"));
}

// --- Assertions ----------------------------------------------------------------------------------

FiltersGroup group(1);
FiltersEntry entry(1);
entriesStruct record;

struct Assertion {
  const char* location;  // a regular expression, with the line number only if this number is fixed
  const char* expression;
  std::vector<std::pair<const char*, void (*)()>>
      calls;  // the signatures, in which FC is FiltersCommon, and the calls
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
    {"filter_serialized[.]cpp:[0-9]+", "data_ == nullptr", {
         {"virtual void FC::FiltersSerialized::setData(const string&)", [] { FiltersSerialized("").setData(""); }}}},
    {"filter_actions_c[.]cpp:23", "a != nullptr", {CALL("void", deleteAction, "void*", nullptr)}},
    {"filter_actions_c[.]cpp:31", "a != nullptr", {CALL("FC::filtersAction_t", actionGetType, "void*", nullptr)}},
};
// clang-format on

TEST(ProceduralDeathTest, NullHandlesAreReportedWithFileLineAndSignature) {
  GTEST_FLAG_SET(death_test_style, "fast");
  for (const auto& [location, expression, calls] : kAssertions) {
    for (const auto& [abbreviated, call] : calls) {
      const std::string full = replaced(abbreviated, "FC::", "FiltersCommon::");
      const std::string signature = replaced(full, "[*()]", "[$&]");
      // An emulator also prints the signal that ended the program.
      EXPECT_DEATH(call(), testing::MatchesRegex("[^ ]+: " + std::string(location) + ": " +
                                                 signature + ": Assertion `" + expression +
                                                 "' failed[.]\n(qemu: [^\n]*\n)?"));
    }
  }
}

}  // namespace
