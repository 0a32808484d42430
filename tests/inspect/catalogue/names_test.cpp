// Tests names and reports, which other programs read.

#include <filter_inspect/filter_names.h>
#include <filter_inspect/filter_report.h>
#include <gmock/gmock.h>

#include <fstream>
#include <nlohmann/json.hpp>
#include <set>
#include <sstream>

#include "../sentences.h"

using namespace FiltersCommon;
using namespace FiltersInspect;

namespace {

template <class Enum>
class NamesTest : public testing::Test {};
using Enums = testing::Types<filtersErr_t, filtersGroupStage_t, filtersGroupType_t, filtersMatch_t,
                             filtersAction_t, counter_type_t, cp2cpuCancelParam_t, l2SrcEntryType_t,
                             vlan_tagging_t, en_Resolution, en_StpState, en_ForwardingType,
                             port_type_t, policer::Stage>;
TYPED_TEST_SUITE(NamesTest, Enums);

TYPED_TEST(NamesTest, LeadBothWays) {
  std::set<std::string_view> names;
  for (const auto& [code, name] : namesOf<TypeParam>()) {
    EXPECT_EQ(nameOf(code), name);
    EXPECT_EQ(fromName<TypeParam>(name), code);
    EXPECT_EQ(name.data()[name.size()], '\0') << name;
    EXPECT_EQ(name.find_first_not_of("abcdefghijklmnopqrstuvwxyz0123456789_"), name.npos) << name;
    EXPECT_TRUE(names.insert(name).second) << name;
  }
  EXPECT_EQ(nameOf(static_cast<TypeParam>(1000)), "");
  for (const char* none : {"", "None", " none", "1000", "FILTERS_OK"}) {
    EXPECT_EQ(fromName<TypeParam>(none), std::nullopt) << none;
  }
}

// Other programs read these names, so they must not change.
TEST(NamesTest, AreTheEnumeratorsWithoutTheirPrefix) {
  EXPECT_EQ(nameOf(FILTERS_MATCH_DST_L4_PORT), "dst_l4_port");
  EXPECT_EQ(nameOf(FILTERS_MATCH_CPU_INJECTED_PACKETS), "cpu_injected_packets");
  EXPECT_EQ(nameOf(FILTERS_ACTION_L2_TO_CPU_DROP), "l2_to_cpu_drop");
  EXPECT_EQ(nameOf(FILTERS_ERR_POLICER_STAGE), "policer_stage");
  EXPECT_EQ(nameOf(FILTERS_RESOLUTION_L2_UNKNOWN_UNICAST), "l2_unknown_unicast");
}

TEST(Describe, HasWordsForEachResultStageAndType) {
  catalogue::Sentences said;
  for (int result = -10; result <= 0; ++result) {
    said.add(std::to_string(result) + ": " + std::string(describe(filtersErr_t(result))));
  }
  for (int stage = 0; stage <= 4; ++stage) {
    said.add("stage: " + std::string(describe(filtersGroupStage_t(stage))));
  }
  for (int type = 0; type <= 12; ++type) {
    said.add("type: " + std::string(describe(filtersGroupType_t(type))));
  }
  said.expectGolden("sentences_results.txt");
}

// Compares the keys and words of JSON with those that the schema lists.
void expectOfForm(const nlohmann::ordered_json& json, const nlohmann::ordered_json& form) {
  EXPECT_EQ(form.value("const", json), json);
  EXPECT_THAT(form.value("enum", nlohmann::ordered_json::array({json})), testing::Contains(json));
  if (json.is_array()) {
    for (const auto& element : json) expectOfForm(element, form.at("items"));
  }
  if (!json.is_object()) return;
  for (const auto& [key, value] : json.items()) {
    ASSERT_EQ(form.at("properties").count(key), 1u) << key;
    expectOfForm(value, form["properties"][key]);
  }
  for (const auto& key : form.at("required")) EXPECT_EQ(json.count(key), 1u) << key;
}

// The JSON of any report can be parsed. Its layout is the same as that of nlohmann-json.
TEST(Report, IsWrittenAsJson) {
  Report report;
  for (int i = 0; i < 7 * 4; ++i) {
    Finding finding{};
    finding.subject = static_cast<Subject>(i % 7);
    if (i % 2 != 0) finding.result = FILTERS_ERR_MATCH_NOT_ALLOWED;
    if (i % 3 != 0) finding.bytes = ByteRange{1, 0xffffffff};
    if (i % 4 != 0) finding.admitted = {1, 27, 900};
    if (i % 5 != 0) finding.others = {0xffffffff};
    if (i % 6 != 0) finding.entry = finding.group = 65535;
    finding.after = "\\";
    finding.before = "\"a\\\n\x01\xff\xc3\xa4";
    report.findings.push_back(finding);
  }
  const std::string text = toJson(report, "check", "\xfe.bin");
  const auto json = nlohmann::ordered_json::parse(text, nullptr, false);
  ASSERT_FALSE(json.is_discarded()) << text;
  EXPECT_EQ(json.dump(2) + '\n', text);
  EXPECT_EQ(json["inputs"][0]["findings"].size(), report.findings.size());
  EXPECT_EQ(json["inputs"][0]["findings"][1]["before"], "\"a\\\n\x01\ufffd\u00e4");
  EXPECT_EQ(json["inputs"][0]["findings"][1]["admitted"],
            nlohmann::ordered_json({"ingress_ports", "vrf_id", 900}));
  std::ifstream schema(FILTERS_GOLDEN_DIR "/../../docs/schema/filter-report-1.schema.json");
  expectOfForm(json, nlohmann::ordered_json::parse(schema, nullptr, false));
  EXPECT_THAT(toJson(Report()), testing::HasSubstr("\"findings\": [],"));
}

// The text of a finding has its example packet and two treatments on the lines below.
TEST(Report, IsWrittenAsText) {
  const struct {
    Code code;
    std::vector<std::uint32_t> others;
    const char *before, *after, *shown;
  } rows[] = {
      {Code::kEntryUnreachable, {10}, "permit", "deny", "  permit becomes deny\n"},
      {Code::kEntryUnreachable, {10, 20}, "deny", "deny", "  alike: deny\n"},
      {Code::kTreatmentDiffers, {10}, "permit", "", ""},
      {Code::kEntriesTie, {10}, "permit", "deny", "  entry 7: permit; entry 10: deny\n"},
      {Code::kEntriesOverlap, {10, 20}, "permit", "deny", "  entry 7: permit; others: deny\n"},
  };
  for (const auto& row : rows) {
    Finding finding{};
    finding.code = row.code;
    finding.severity = severityOf(row.code);
    finding.entry = 7;
    finding.others = row.others;
    finding.before = row.before;
    finding.after = row.after;
    finding.message = "so";
    std::ostringstream without, with;
    without << finding;
    EXPECT_THAT(without.str(), testing::MatchesRegex("[a-z]+: entry 7: so \\[[a-z-]+\\]\n"));
    finding.witness = "ttl=1";
    with << finding;
    EXPECT_EQ(with.str(), without.str() + "  packet: ttl=1\n" + row.shown);
  }
  Report report;
  report.leaveOut(Severity::kNote, 101);
  report.leaveOut(Severity::kWarning);
  std::ostringstream text;
  text << report;
  EXPECT_EQ(text.str(), "left out: 1 warning, 101 notes\n");
}

TEST(Report, KeepsTheMostSevere) {
  const Code codes[] = {Code::kEntryRedundant, Code::kEntriesTie, Code::kBytesBroken,
                        Code::kEntryRedundant, Code::kEntriesTie};
  const std::pair<std::size_t, std::vector<std::uint32_t>> kept[] = {
      {0, {}}, {1, {2}}, {2, {1, 2}}, {3, {1, 2, 4}}, {4, {0, 1, 2, 4}}, {5, {0, 1, 2, 3, 4}}};
  for (const auto& [most, expected] : kept) {
    Report report, more;
    for (const Code code : codes) {
      report.findings.emplace_back().severity = severityOf(code);
      report.findings.back().offender = static_cast<std::uint32_t>(report.findings.size() - 1);
    }
    more.leaveOut(Severity::kError, 7);
    report.append(std::move(more));
    report.keep(most);
    std::vector<std::uint32_t> offenders;
    for (const Finding& finding : report.findings) offenders.push_back(finding.offender);
    EXPECT_EQ(offenders, expected);
    EXPECT_EQ(report.left_out, 7 + 5 - most);
    EXPECT_EQ(report.left_out_by_severity[2], most == 0 ? 8U : 7U);
    EXPECT_EQ(report.worst(), Severity::kError);
  }
}

// The numbers in a finding can be matches, actions, stages or types. The subject and the result of
// the finding decide which they are. In a finding about what a stage or type admits, the subject
// alone decides.
TEST(Report, NamesTheCodesInIt) {
  catalogue::Sentences said;
  for (int i = 0; i < 7 * 10; ++i) {
    Finding finding{};
    finding.code = i < 7 * 9 ? Code::kEntryRefused : Code::kAdmits;
    finding.subject = static_cast<Subject>(i % 7);
    finding.result = namesOf<filtersErr_t>()[static_cast<std::size_t>(i / 7 % 9)].first;
    finding.offender = finding.entry.emplace(2);
    finding.admitted = finding.others = {0, 77};
    if (i % 2 != 0) finding.bytes = ByteRange{1, 2};
    Report report;
    report.findings = {finding};
    std::ostringstream line;
    line << report;
    const auto json = nlohmann::ordered_json::parse(toJson(report));
    said.add(line.str() + json["inputs"][0]["findings"][0].dump());
  }
  said.expectGolden("report.txt");
}

}  // namespace
