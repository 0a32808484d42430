// Tests the C interface: all functions are called from C, and every allocation in them fails once.

#include <filter_common/filter_groups.h>
#include <filter_inspect/filter_inspect_c.h>
#include <filter_inspect/filter_text.h>
#include <gtest/gtest.h>

#include <functional>
#include <locale>
#include <string>

#include "../../memory_control.h"

using namespace FiltersCommon;
using namespace FiltersInspect;

extern "C" {
void callEveryFunctionOfInspect();

void expectInC(bool good, int line, const char* what) {
  EXPECT_TRUE(good) << "inspect_c_calls.c:" << line << ": " << what;
}
}

namespace {

TEST(InspectC, IsCalledFromC) {
  callEveryFunctionOfInspect();
  const long before = memory::live;
  callEveryFunctionOfInspect();
  EXPECT_EQ(memory::live, before);
}

// A C program cannot change the global C++ locale, so this test is in C++.
TEST(InspectC, GoesByNoLocale) {
  struct Points : std::numpunct<char> {
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
  };
  FiltersGroup group(50000);
  ASSERT_EQ(group.insertEntry(FiltersEntry(50000)), FILTERS_OK);
  const auto printed = [&] {
    char out[5000];
    std::string text(out, filtersGroupPrint(&group, out, sizeof out));
    return text.append(out, filtersEntryPrint(&group.getEntriesRef().at(50000), out, sizeof out));
  };
  const std::string before = printed();
  const std::locale global = std::locale::global(std::locale(std::locale::classic(), new Points));
  EXPECT_EQ(printed(), before);
  std::locale::global(global);
}

FiltersEntry refusedEntry() {
  FiltersEntry entry(30);
  EXPECT_EQ(entry.setMatch(MatchVrfId(5)), FILTERS_OK);
  EXPECT_EQ(entry.setMatch(MatchTTL(1)), FILTERS_OK);
  EXPECT_EQ(entry.setAction(ActionDeny()), FILTERS_OK);
  return entry;
}

// A call that returns true if it did its work. It frees what it made.
using Call = std::function<bool()>;

bool holds(FiltersReport* report) {
  const bool answered = report != nullptr;
  deleteFiltersReport(report);
  return answered;
}

// Fails the first allocation of the call, then the second and so on, until the call succeeds
// without a failed allocation. Each time the call must return false or do its work, and must leak
// nothing.
void expectToSurviveWithoutMemory(const char* what, const Call& call) {
  ASSERT_TRUE(call()) << what;  // makes the objects that a process makes only once
  for (long allocations = 0;; ++allocations) {
    ASSERT_LT(allocations, 10000) << what;
    const long before = memory::live;
    memory::refuseAfter(allocations, false);
    const bool done = call();
    const bool refused = memory::endRefusal();
    EXPECT_EQ(memory::live, before) << what << " without allocation " << allocations;
    EXPECT_TRUE(refused || done) << what;
    if (!refused) break;
  }
}

TEST(InspectC, SurvivesWithoutMemory) {
  const FiltersEntry entry = refusedEntry();
  FiltersGroup group(1);
  ASSERT_EQ(group.setType(FILTERS_GROUP_TYPE_3), FILTERS_OK);
  ASSERT_EQ(group.insertEntry(FiltersEntry(40)), FILTERS_OK);
  std::string groupBytes, entryBytes;
  group.serialize(&groupBytes);
  entry.serialize(&entryBytes);
  groupBytes.back() = static_cast<char>(groupBytes.back() ^ 1);
  entryBytes += std::string("\x22\x06\x08\x02\x18\xe4\x80\x04", 8);
  FiltersReport* report = filtersExplainInsert(&group, &entry);
  ASSERT_NE(report, nullptr);
  char out[5000];
  FiltersGroup other(group);
  ASSERT_EQ(other.setType(FILTERS_GROUP_TYPE_8), FILTERS_OK);
  ASSERT_EQ(other.insertEntry(FiltersEntry(41)), FILTERS_OK);
  const std::string text = toText({other}), json = toJson(std::vector{other});
  filtersStep_t steps[3];
  FiltersGroup rules(2);
  ASSERT_EQ(rules.setType(FILTERS_GROUP_TYPE_3), FILTERS_OK);
  for (filtersEntryId_t id : {50u, 51u, 52u}) {
    FiltersEntry rule(id);
    ASSERT_EQ(rule.setMatch(MatchTTL(1)), FILTERS_OK);
    ASSERT_EQ(rule.setMatch(MatchDstL4Port(179)), FILTERS_OK);
    ASSERT_EQ(rules.insertEntry(rule), FILTERS_OK);
  }

  const std::string policy =
      "filter-policy 1\ngroup 2 order=highest-priority\n"
      "never taken if ttl=1-9 dst_l4_port={5,80}\nalways deny set_pcp=1 if ttl=1\n"
      "accept entries-tie entry 50\n";

  const auto reads = [](const std::string& bytes, auto decode, auto destroy, auto* object) {
    FiltersReport* read = decode(bytes.data(), bytes.size(), &object);
    EXPECT_TRUE(read != nullptr || object == nullptr);
    if (object != nullptr) destroy(object);
    return holds(read);
  };
  // Even if memory runs out, a text is complete or empty.
  const auto fills = [&out](auto fill, const auto* object) {
    const std::size_t length = fill(object, out, sizeof out);
    EXPECT_TRUE(length == 0 || out[length - 1] == '\n') << out;
    return length != 0;
  };
  constexpr unsigned char kFrame[20] = {0x45, 0, 0, 20, 0, 0, 0, 0, 1, 17};
  FiltersGroup* noGroup = nullptr;
  FiltersEntry* noEntry = nullptr;
  const std::pair<const char*, Call> calls[] = {
      {"ExplainInsert", [&] { return holds(filtersExplainInsert(&group, &entry)); }},
      {"ExplainInsertInto",
       [&] {
         return holds(
             filtersExplainInsertInto(FILTERS_GROUP_STAGE_LOOKUP, FILTERS_GROUP_TYPE_3, &entry));
       }},
      {"ExplainStage",
       [&] { return holds(filtersExplainStage(&group, FILTERS_GROUP_STAGE_EGRESS)); }},
      {"ExplainType", [&] { return holds(filtersExplainType(&group, FILTERS_GROUP_TYPE_NONE)); }},
      {"ExplainMatch", [&] { return holds(filtersExplainMatch(&entry, FILTERS_MATCH_SRC_IPV6)); }},
      {"DecodeGroup",
       [&] { return reads(groupBytes, filtersDecodeGroup, deleteFiltersGroup, noGroup); }},
      {"DecodeEntry",
       [&] { return reads(entryBytes, filtersDecodeEntry, deleteFiltersEntry, noEntry); }},
      {"GroupFromText",
       [&] { return reads(text, filtersGroupFromText, deleteFiltersGroup, noGroup); }},
      {"GroupFromJson",
       [&] { return reads(json, filtersGroupFromJson, deleteFiltersGroup, noGroup); }},
      {"GroupToText", [&] { return filtersGroupToText(&other, out, sizeof out) != 0; }},
      {"GroupToJson", [&] { return filtersGroupToJson(&other, out, sizeof out) != 0; }},
      {"GroupToCompactJson",
       [&] { return filtersGroupToCompactJson(&other, out, sizeof out) != 0; }},
      {"Diff", [&] { return holds(filtersDiff(&group, &other)); }},
      {"Plan",
       [&] {
         return holds(filtersPlan(&group, &other, FILTERS_PLAN_ADD_FIRST, steps, 3, nullptr));
       }},
      {"Analyse", [&] { return holds(filtersAnalyse(&rules, FILTERS_ORDER_HIGHEST_PRIORITY)); }},
      {"CompareTreatment",
       [&] { return holds(filtersCompareTreatment(&rules, &other, FILTERS_ORDER_ASCENDING_ID)); }},
      {"UnusualValues", [&] { return holds(filtersUnusualValues(&rules)); }},
      {"CheckPolicy",
       [&] { return holds(filtersCheckPolicy(&rules, policy.data(), policy.size())); }},
      {"AnalyseAccepting",
       [&] {
         return holds(filtersAnalyseAccepting(&rules, policy.data(), policy.size(), nullptr));
       }},
      {"Trace",
       [&] {
         filtersOutcome_t outcome = FILTERS_OUTCOME_MISS;
         filtersEntryId_t taker = 0;
         const std::size_t length =
             filtersTrace(&rules, "ttl=1 dst_l4_port=179", 3, &outcome, &taker, out, sizeof out);
         EXPECT_EQ(length != 0, outcome == FILTERS_OUTCOME_HIT && taker == 50);
         EXPECT_TRUE(length != 0 || outcome == FILTERS_OUTCOME_NONE);
         return length != 0;
       }},
      {"Search",
       [&] { return holds(filtersSearch(&rules, "ttl=1-9 src_ipv4=10.0.0.0/8", 1, "permit")); }},
      {"Touching", [&] { return holds(filtersTouching(&rules, "dst_l4_port=1/0x1", 1, nullptr)); }},
      {"Remains", [&] { return holds(filtersRemains(&rules, 50, "ttl={1,3}", 1)); }},
      {"PacketSetToText",
       [&] {
         return filtersPacketSetToText("ttl={1,3} src_ipv6=::/7", nullptr, out, sizeof out) != 0;
       }},
      {"PacketOf",
       [&] {
         filtersFrameFault_t fault = FILTERS_FRAME_FAULT_CUT;
         const std::size_t length =
             filtersPacketOf(kFrame, 20, 20, FILTERS_LINK_RAW, &fault, out, sizeof out);
         EXPECT_EQ(length != 0, fault == FILTERS_FRAME_FAULT_ENDS_EARLY);
         return length != 0;
       }},
      {"Hits",
       [&] {
         FiltersHits* hits = newFiltersHits(&rules, 3, "dst_l4_port=179");
         const bool counted = filtersHitsCount(hits, kFrame, 20, 20, FILTERS_LINK_RAW, 5);
         filtersAllHits_t all = {};
         EXPECT_EQ(filtersHitsOfAll(hits, &all), hits != nullptr);
         EXPECT_EQ(all.frames, counted ? 1u : 0u);
         deleteFiltersHits(hits);
         return counted;
       }},
      {"GroupToBytes", [&] { return filtersGroupToBytes(&group, out, sizeof out) != 0; }},
      {"EntryToBytes", [&] { return filtersEntryToBytes(&entry, out, sizeof out) != 0; }},
      {"GroupPrint", [&] { return fills(filtersGroupPrint, &group); }},
      {"EntryPrint", [&] { return fills(filtersEntryPrint, &entry); }},
      {"ReportToText", [&] { return fills(filtersReportToText, report); }},
      {"ReportToJson", [&] { return fills(filtersReportToJson, report); }},
      {"GroupsEqual", [&] { return filtersGroupsEqual(&group, &group); }},
      {"EntriesEqual", [&] { return filtersEntriesEqual(&entry, &entry); }},
  };
  for (const auto& [what, call] : calls) expectToSurviveWithoutMemory(what, call);
  deleteFiltersReport(report);
}

}  // namespace
