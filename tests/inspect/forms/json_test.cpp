// Tests the JSON form: groups that are written can be read back, and other input is refused.

#include "../../replaced.h"
#include "../sentences.h"
#include "form_samples.h"

namespace {

using namespace catalogue;
using FiltersInspect::groupsFromJson;
using FiltersInspect::JsonLayout;
using FiltersInspect::toJson;

// This test writes a file, which another test checks against the schema.
TEST(Json, ReadsWhatItWrote) {
  std::mt19937 random(2);
  Groups all;
  for (int i = 0; i < 300; ++i) {
    const Groups groups{randomGroup(random), randomGroup(random)};
    ASSERT_EQ(faultOf(kJson, groups), "");
    if (i < 100) all.insert(all.end(), groups.begin(), groups.end());
  }
  std::ofstream("random_groups.json", std::ios::binary) << toJson(all);
}

TEST(Json, IsTheSameOnEveryMachine) {
  EXPECT_EQ(toJson(goldenGroups()), textOfFile(FILTERS_GOLDEN_DIR "/groups.json"));
  EXPECT_EQ(faultOf(kJson, goldenGroups()), "");
}

TEST(Json, IsWrittenWithoutBlanksToo) {
  const FormOfGroups compact = {
      [](const Groups& groups) { return toJson(groups, JsonLayout::kCompact); }, groupsFromJson};
  const std::string golden = textOfFile(FILTERS_GOLDEN_DIR "/groups.json");
  EXPECT_EQ(compact.write(goldenGroups()), replaced(golden, "(\"[^\"]*\")|\\s", "$1") + '\n');
  EXPECT_EQ(faultOf(compact, goldenGroups()), "");
}

TEST(Json, IsThatOfAGroupAlone) {
  const FiltersGroup group = goldenGroups()[0];
  const Groups one{group};
  EXPECT_EQ(toJson(group), toJson(one));
  EXPECT_EQ(toJson({group}), toJson(one));
  EXPECT_EQ(toJson(group, JsonLayout::kCompact), toJson(one, JsonLayout::kCompact));
}

const std::string kHead = "{\"format\": \"filter-groups\", \"version\": 1, \"groups\": [";
const std::string kGroup =
    "{\"id\": 1, \"priority\": 2, \"stage\": \"none\", \"type\": 4, \"entries\": [";
const std::string kEntry = "\n{\"id\": 1, \"priority\": 0, ";

std::string withEntry(const std::string& rest) { return kHead + kGroup + kEntry + rest + "}]}]}"; }
std::string withMatch(const std::string& match) {
  return withEntry("\n\"matches\": {" + match + '}');
}

// Tests other ways to write the same group: keys in any order, with or without names and
// descriptions.
TEST(Json, ReadsWhatPeopleWrite) {
  const std::string bytes = toHex(policerAt(policer::Stage::None).Serialize());
  const std::string odd =
      toHex(policer::Policer(1, policer::Stage{7}, policer::Mode(policer::ModeType{9}),
                             {policer::Action::SetDscp(policer::Color{8}, 255),
                              policer::Action(policer::ActionType{5}, policer::Color::Green, 0)})
                .Serialize());
  const std::pair<std::string, std::string> same[] = {
      {R"("matches": {"ip_protocol": "tcp"}, "actions": {"set_dscp": "ef"})",
       R"("matches": {"ip_protocol": 6}, "actions": {"set_dscp": 46})"},
      {R"("matches": {}, "actions": {}, "counters": [])", R"("counters": [])"},
      {R"("matches": {"t\u006fs": 1})", R"("matches": {"tos": 1})"},
      {R"("actions": {"deny": true, "permit": true}, "matches": {"tos": 1})",
       R"("matches": {"tos": 1}, "actions": {"permit": true, "deny": true})"},
      {R"("matches": {"ingress_ports": {"ports": [{"name": "eth-3", "limid": 16777219}]}})",
       R"("matches": {"ingress_ports": {"excluded_types": [], "ports": [{"limid": 16777219}]}})"},
      {R"("counters": [{"type": 1, "id": 1}])", R"("counters": [{"id": 1, "type": "packets"}])"},
      {R"("policer": {"bytes": ""})", R"("counters": [])"},
      {R"("policer": {"about": {"stage": "none", "cbs": 1500, "pir": 0}, "bytes": ")" + bytes +
           "\"}",
       R"("policer": {"bytes": ")" + bytes + "\"}"},
      {R"("policer": {"about": {"actions": [{"do": 0, "color": 0}], "cir": 1000, "mode": 3, "id": 300,
          "cbs": 1500, "stage": "none"}})",
       R"("policer": {"bytes": ")" + bytes + "\"}"},
      {R"("parent": {"about": {"id": 1, "stage": 7, "mode": 9,
          "actions": [{"color": 8, "do": "dscp", "value": 255}, {"color": "green", "do": 5}]}})",
       R"("parent": {"bytes": ")" + odd + "\"}"},
  };
  for (const auto& [text, usual] : same) {
    const ParsedGroups parsed = groupsFromJson(withEntry(text));
    EXPECT_TRUE(parsed.report.empty()) << parsed.report << text;
    EXPECT_EQ(toJson(parsed.groups), toJson(groupsFromJson(withEntry(usual)).groups)) << text;
  }
  EXPECT_TRUE(groupsFromJson("\xef\xbb\xbf" + withEntry(R"("counters": [])")).report.empty());
}

TEST(Json, RefusesMatches) {
  const std::pair<const char*, const char*> refused[] = {
      {R"("nothing": 1)", "3:13 text-syntax"},
      {R"("dscp": 1)", "3:13 text-syntax"},
      {R"("ip_protocol": "tpc")", "3:28 text-value"},
      {R"("ip_protocol": null)", "3:28 text-syntax"},
      {R"("dst_l4_port": {"port": 179})", "3:40 text-syntax"},
      {R"("tos": 256)", "3:20 text-value"},
      {R"("tos": -1)", "3:20 text-value"},
      {R"("tos": 1.0)", "3:20 text-syntax"},
      {R"("tos": 18446744073709551616)", "3:20 text-value"},
      {R"("tos": "1")", "3:20 text-syntax"},
      {R"("tos": null)", "3:20 text-syntax"},
      {R"("tos": {})", "3:20 text-syntax"},
      {R"("tos": [1])", "3:20 text-syntax"},
      {R"("tos": 1, "tos": 1)", "3:23 text-repeated"},
      {R"("all": false)", "3:20 text-syntax"},
      {R"("pcp": 1)", "3:20 text-syntax"},
      {R"("pcp": {})", "3:20 text-syntax"},
      {R"("pcp": [1, [1]])", "3:24 text-syntax"},
      {R"("pcp": [1, 1])", "2:1 value-collapsed"},
      {R"("pcp": [1], "tos": 256)", "3:32 text-value"},
      {R"("vrf_id": 1)", "2:1 entry-refused 2:1 match-not-admitted"},
      {R"("src_ipv4": "1.2.3.4")", "3:25 text-syntax"},
      {R"("src_ipv4": {"address": "1.2.3.4"})", "3:46 text-syntax"},
      {R"("src_ipv4": {"address": "1.2.3.4", "mask": "8"})", "3:56 text-value"},
      {R"("src_ipv4": {"address": 1})", "3:37 text-syntax"},
      {R"("src_ipv4": {"address": "1.2.3.4\u0000"})", "3:37 text-value"},
      {R"("src_ipv4": {"address\"": "1.2.3.4"})", "3:26 text-syntax"},
      {R"("drop": 1)", "3:21 text-syntax"},
      {R"("ip_protocol": 1, "l2_src_entry_type": "no")", "3:52 text-value"},
      {R"("ingress_ports": {"ports": [{"limid": 1, "name": 1}]})", "3:62 text-syntax"},
      {R"("src_ipv4": {"": 1})", "3:26 text-syntax"},
      {R"("src_ipv4": {"address": "1.2.3.4", "address": "1.2.3.4"})", "3:48 text-repeated"},
      {R"("dst_l4_port": {"port": 1, "mask": 65536})", "3:48 text-value"},
      {R"("ingress_ports": {"ports": [1]})", "3:41 text-syntax"},
      {R"("ingress_ports": {"ports": [{}]})", "3:42 text-syntax"},
      {R"("ingress_ports": {"ports": 1})", "3:40 text-syntax"},
      {R"("ingress_ports": {"excluded_types": ["no"]})", "3:50 text-value"},
      {R"("ingress_ports": {"excluded_types": []})", "3:51 text-syntax"},
      {"\"ingress_ports\": {\"ports\": [\n{\"name\": \"lag-1\",\n\"limid\": 16777219}]}",
       "4:10 text-contradiction"},
  };
  Sentences said;
  for (const auto& [match, findings] : refused) {
    EXPECT_EQ(findingsOf(groupsFromJson(withMatch(match))), findings) << match;
    EXPECT_EQ(faultIn(kJson, withMatch(match)), "") << match;
    said.add(groupsFromJson(withMatch(match)).report);
  }
  said.expectGolden("sentences_json_matches.txt");
}

// The position is that of the first character that cannot belong to JSON.
TEST(Json, FindsTheFaultInAToken) {
  EXPECT_EQ(findingsOf(groupsFromJson("\xef\xbb{}")), "1:3 text-syntax");
  const std::pair<const char*, const char*> refused[] = {
      {R"("tos": -)", "3:21 text-syntax"},
      {R"("tos": 01)", "3:21 text-syntax"},
      {R"("tos": 1.)", "3:22 text-syntax"},
      {R"("tos": 1e+)", "3:23 text-syntax"},
      {R"("tos": 1e999)", "3:24 text-syntax"},
      {R"("tos": 1{)", "3:21 text-syntax"},
      {R"("tos": 9223372036854775808)", "3:20 text-value"},
      {R"("tos": -9223372036854775809)", "3:20 text-value"},
      {R"("drop": tru)", "3:24 text-syntax"},
      {R"("tos": "\ud800")", "3:27 text-syntax"},
      {R"("tos": "\u12")", "3:25 text-syntax"},
      {"\"tos\": \"\xed\xa0\x80\"", "3:22 text-syntax"},
  };
  for (const auto& [match, findings] : refused) {
    EXPECT_EQ(findingsOf(groupsFromJson(withMatch(match))), findings) << match;
  }
}

TEST(Json, RefusesAllElse) {
  const std::string bytes = toHex(policerAt(policer::Stage::None).Serialize());
  const auto entry = [](const std::string& rest) { return withEntry('\n' + rest); };
  const std::string kZero(1, '\0');
  const std::pair<std::string, const char*> refused[] = {
      {"", "1:1 text-syntax"},
      {"1", "1:1 text-syntax"},
      {"[]", "1:1 text-syntax"},
      {"{}", "1:2 text-syntax"},
      {"{\"format\": \"groups\"}", "1:12 text-syntax"},
      {"{\"version\":\n 2}", "2:2 text-version"},
      {"{\"version\": \"1\"}", "1:13 text-version"},
      {kHead, "1:54 text-syntax"},
      {kHead + "]} x", "1:57 text-syntax"},
      {"\xef\xbb\xbf" + kHead + "]} x", "1:57 text-syntax"},
      {"\xef\xbb\xbf" + kHead + "1]}", "1:54 text-syntax"},
      {kHead + "1]}", "1:54 text-syntax"},
      {kHead + "{}]}", "1:55 text-syntax"},
      {kHead + "\n" + kGroup + "]}\n,]}", "3:2 text-syntax"},
      {kHead + "\n{\"id\": 65536}]}", "2:8 text-value"},
      {kHead + "\n{\"entries\": 1}]}", "2:13 text-syntax"},
      {kHead + "\n{\"id\\", "2:6 text-syntax"},
      {"{\"groups\": 1}", "1:12 text-syntax"},
      {"{\"format\": \"a\nb\"}", "1:14 text-syntax"},
      {"{\"format\": \"\\\"\t\"}", "1:15 text-syntax"},
      {kHead + "\n{\"stage\": \"no\"}]}", "2:11 text-value"},
      {kHead + "\n{\"stage\":\xff}]}", "2:10 text-syntax"},
      {kHead + std::string(100000, '['), "1:54 text-syntax"},
      {kHead + "]}" + kZero, "1:56 text-syntax"},
      {kHead + "]}\n" + kZero + kHead + "]}", "2:1 text-syntax"},
      {kHead + "]" + kZero + "}", "1:55 text-syntax"},
      {"{\"for" + kZero + "mat\": 1}", "1:6 text-syntax"},
      {entry(R"("id": 2)"), "3:1 text-repeated"},
      {entry(R"("parent": {"about": {}})"), "3:23 text-syntax"},
      {entry(R"("policer": {"bytes": "0"})"), "3:22 text-value"},
      {entry(R"("policer": {"bytes": "0g"})"), "3:22 text-value"},
      {entry(R"("policer": {"bytes": 1})"), "3:22 text-syntax"},
      {entry(R"("policer": {"about": 1})"), "3:22 text-syntax"},
      {entry(R"("policer": {"about": {"id": null}})"), "3:29 text-syntax"},
      {entry(R"("policer": {"about": {"stage": "\" 1"}, "bytes": 1})"), "3:50 text-syntax"},
      {entry(R"("actions": {"redirect": {"ports": [], "excluded_types": []}})"),
       "3:39 text-syntax"},
      {entry(R"("policer": 1)"), "3:12 text-syntax"},
      {entry(R"("counters": 1)"), "3:13 text-syntax"},
      {entry(R"("counters": {})"), "3:13 text-syntax"},
      {entry(R"("matches": [])"), "3:12 text-syntax"},
      {entry(R"("policer": {"bytes": "ff"})"), "2:1 policer-rewritten"},
      {entry(R"("policer": {"about": {"colour": 1}})"), "3:23 text-syntax"},
      {entry(R"("policer": {"about": {"id": 301}, "bytes": ")" + bytes + "\"}"),
       "3:29 text-contradiction"},
      {entry(R"("policer": {"about": {"stage": "egress"}, "bytes": ")" + bytes + "\"}"),
       "3:32 text-contradiction"},
      {entry(R"("policer": {"about": {"actions": []}, "bytes": ")" + bytes + "\"}"),
       "3:34 text-contradiction"},
      {entry(R"("policer": {})"), "3:13 text-syntax"},
      {entry(R"("policer": {"about": {"id": 1, "stage": 1}})"), "3:43 text-syntax"},
      {entry(R"("policer": {"about": {"id": 1, "stage": 1, "mode": "trctm"}})"), "3:52 text-value"},
      {entry(R"("policer": {"about": {"id": 1, "stage": 1, "mode": "flow", "pir": 0}})"),
       "3:67 text-syntax"},
      {entry(R"("policer": {"about": {"id": 1, "stage": 1, "mode": 4294967296}})"),
       "3:52 text-value"},
      {entry(R"("policer": {"about": {"id": "one", "stage": 1, "mode": 3}})"), "3:29 text-syntax"},
      {entry(R"("policer": {"about": {"actions": 1}})"), "3:34 text-syntax"},
      {entry(R"("policer": {"about": {"actions": [1]}})"), "3:35 text-syntax"},
      {entry(R"("policer": {"about": {"actions": [{"color": "blue"}]}})"), "3:45 text-value"},
      {entry(R"("policer": {"about": {"actions": [{"color": "red"}]}})"), "3:50 text-syntax"},
      {entry(R"("policer": {"about": {"actions": [{"color": 0, "do": "drop", "value": 1}]}})"),
       "3:72 text-syntax"},
      {entry(R"("policer": {"about": {"actions": [{"color": 0, "do": "dscp"}]}})"),
       "3:60 text-syntax"},
      {entry(R"("policer": {"about": {"actions": [{"color": 0, "value": 256}]}})"),
       "3:57 text-value"},
      {entry(R"("counters": [{"id": 1}])"), "3:22 text-syntax"},
      {entry(R"("counters": [{"id": 1, "type": 2147483648}])"), "3:32 text-value"},
      {entry(R"("actions": {"mpls_port_set": {"vpn": {"limid": 0}, "access_port": {"limid": 0}}})"),
       "2:1 rebuild-throws"},
  };
  Sentences said;
  for (const auto& [text, findings] : refused) {
    EXPECT_EQ(findingsOf(groupsFromJson(text)), findings) << text;
    EXPECT_EQ(faultIn(kJson, text), "") << text;
    said.add(groupsFromJson(text).report);
  }
  said.expectGolden("sentences_json.txt");
}

}  // namespace
