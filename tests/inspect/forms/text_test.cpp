// Tests the text form: groups that are written can be read back, and other input is refused.

#include <filter_inspect/filter_head.h>
#include <filter_inspect/filter_names.h>

#include "../../replaced.h"
#include "../sentences.h"
#include "form_samples.h"

namespace {

using namespace catalogue;
using namespace FiltersInspect;

// The groups have every code that some group admits, values that no setter accepts, and policers
// that cannot be made again from their values.
TEST(Text, ReadsWhatItWrote) {
  std::mt19937 random(1);
  CodeSet matches, actions;
  std::size_t byValue = 0, inBytes = 0;
  for (int i = 0; i < 500; ++i) {
    const Groups groups{randomGroup(random), randomGroup(random)};
    ASSERT_EQ(faultOf(kText, groups), "");
    byValue += toText(groups).find(" police {") != std::string::npos;
    inBytes += toText(groups).find(" police 0") != std::string::npos;
    for (const FiltersGroup& group : groups) {
      const FiltersGroupPB message = group.convertToFiltersGroupPB();
      for (const FiltersEntryPB& entry : message.entries_()) {
        for (const auto& match : entry.matches_()) matches.insert(match.type_());
        for (const auto& action : entry.actions_()) actions.insert(action.type_());
      }
    }
  }
  CodeSet admitted;
  for (const CodeSet& codes : kMatchesOfType) admitted.insert(codes.begin(), codes.end());
  EXPECT_EQ(matches, admitted);
  EXPECT_EQ(actions.size(), kActionCodes.size());
  EXPECT_GT(byValue, inBytes);
  EXPECT_GT(inBytes, 10u);
}

TEST(Text, OfAGroupIsItsHeadAndALineForEachEntry) {
  std::mt19937 random(2);
  for (int i = 0; i < 50; ++i) {
    const FiltersGroup group = randomGroup(random);
    EXPECT_EQ(toText(group), toText(Groups{group}));
    EXPECT_EQ(toText({group}), toText(group));
    std::string lines = toText(headOf(group)) + '\n';
    EXPECT_EQ(groupLines(emptyGroup(headOf(group))), lines);
    for (const auto& [id, entry] : group.getEntriesRef()) {
      const std::string line = toText(entry);
      lines += line + '\n';
      EXPECT_TRUE(entryFromText("\n " + line + " # alone\n").entry == entry) << line;
      EXPECT_TRUE(entryFromJson(toJson(entry)).entry == entry) << line;
      const EntryColumns columns = columnsOf(entry);
      std::string parts;
      for (const auto& [match, value] : columns.matches) {
        parts.append(parts.empty() ? " if " : " ").append(FiltersInspect::nameOf(match));
        if (!value.empty()) parts += '=' + value;
      }
      for (const std::string& action : columns.actions) {
        parts += (&action == &columns.actions[0] ? " then " : " ") + action;
      }
      EXPECT_NE(line.find(parts), line.npos) << line;
      EXPECT_EQ(columns.policer.has_value(), line.find(" police ") != line.npos) << line;
      EXPECT_EQ(columns.policer.value_or(entry.getPolicer().GetId()), entry.getPolicer().GetId());
      EXPECT_EQ(columns.parent.has_value(), entry.getPolicerParent() != nullptr) << line;
      for (const std::string& part : columns.counters) EXPECT_NE(line.find(part), line.npos);
      EXPECT_EQ(columns.fields.size(), columns.matches.size());
      // The line may have the keys id and stage, which people do not need.
      const std::string shown = replaced(line, "\\{id=(\\d+) stage=", "$1 ");
      for (const std::string& part : {columns.policer_text, columns.parent_text}) {
        EXPECT_NE(shown.find(part), shown.npos) << part << line;
      }
    }
    EXPECT_EQ(groupLines(group), lines);
  }
}

TEST(Text, HasValuesAsPeopleSayThem) {
  const ParsedGroups parsed = groupsFromText(
      "filter-groups 1\ngroup 1 priority=1 stage=ingress type=3\nentry 1 priority=1 if "
      "ingress_ports=[0x01000003,0x01000004]!cpu dst_l4_port=179/0xffff src_l4_port=7/0xfff0 "
      "src_ipv4=10.0.0.0/8 ip_protocol=6 ttl=9 destination_cpu then deny\n");
  ASSERT_EQ(parsed.groups.size(), 1U) << parsed.report;
  const std::vector<std::string> shown = {
      "[eth-3,eth-4]!cpu", "179", "7/0xfff0", "10.0.0.0/8", "tcp", "9", "yes"};
  EXPECT_EQ(columnsOf(parsed.groups[0].getEntriesRef().at(1)).shown, shown);
}

TEST(Text, IsTheSameOnEveryMachine) {
  EXPECT_EQ(toText(goldenGroups()), textOfFile(FILTERS_GOLDEN_DIR "/groups.txt"));
  EXPECT_EQ(faultOf(kText, goldenGroups()), "");
}

template <class T>
class TextOfEachClass : public testing::Test {};
TYPED_TEST_SUITE(TextOfEachClass, EveryClass);

// Tests entries that have only one match or one action. Ignores the comment at the end of the line.
TYPED_TEST(TextOfEachClass, IsThatOfItsRow) {
  std::istringstream words(rowOf<TypeParam>().text);
  std::string name, value;
  words >> name;
  for (const TypeParam& object : samples<TypeParam>()) {
    FiltersEntry entry(7);
    EXPECT_EQ(put(entry, object), FILTERS_OK);
    const std::string text = toText(entry), part = isMatch<TypeParam> ? "if " : "then ";
    const std::string written = words >> value ? name + '=' + value : name;
    EXPECT_EQ(text.substr(0, text.find("  #")), "entry 7 priority=0 " + part + written);
  }
  EXPECT_FALSE(words >> value) << value;
}

TEST(Text, SaysWhatPolicersDo) {
  using policer::Action;
  using policer::ActionType;
  using policer::Color;
  using policer::Mode;
  const std::tuple<Mode, std::vector<Action>, const char*> rows[] = {
      {Mode::None(), {}, "none"},
      {Mode::SrTcm(1, 2, 3), {}, "srtcm cir=1 cbs=2 ebs=3"},
      {Mode::TrTcm(1, 2, 3, 4), {}, "trtcm cir=1 cbs=2 pir=3 pbs=4"},
      {Mode::TrTcmDs(1, 2, 3, 4), {}, "trtcmds cir=1 cbs=2 eir=3 ebs=4"},
      {Mode::Flow(0, 2),
       {Action::SetDscp(Color::Yellow, 255), Action::SetPcp(Color::Green, 0),
        Action::Drop(Color::Red), Action::Drop(Color::Red)},
       "flow cbs=2 yellow=dscp:255 green=pcp:0 red=drop red=drop"},
      {Mode(policer::ModeType{9}), {Action(ActionType{5}, Color{8}, 0)}, "mode=9 8=5"},
  };
  for (const auto& [mode, actions, said] : rows) {
    FiltersEntry entry(7);
    entry.setPolicer({5, policer::Stage{7}, mode, actions});
    EXPECT_EQ(toText(entry), "entry 7 priority=0 police {id=5 stage=7 " + std::string(said) + '}');
  }
  // The values of this policer lack the number of its action, because an action that drops writes
  // no number.
  FiltersEntry entry(7);
  entry.setPolicerParent(
      {5, policer::Stage::Egress, Mode::Flow(1, 2), {Action(ActionType::Drop, Color::Red, 9)}});
  EXPECT_EQ(toText(entry),
            "entry 7 priority=0 parent 0a06080010001809120e080310011802200028003000380018017805"
            "  # parent 5 egress flow cir=1 cbs=2 red=drop");
}

const std::string kHead = "filter-groups 1\n";

// Tests other ways to write the same group.
TEST(Text, ReadsWhatPeopleWrite) {
  const std::string group = "group 1 priority=2 stage=none type=4\n";
  const std::pair<const char*, const char*> same[] = {
      {"entry 1 priority=0 if dscp=46", "entry 1 priority=0 if tos=184"},
      {"\tentry  0x1\tpriority=0x0  # nothing", "entry 1 priority=0"},
      {"\n  \n# nothing\nentry 1 priority=0\n", "entry 1 priority=0"},
      {"entry 1 priority=0 if src_ipv4=192.0.2.7/0xc",
       "entry 1 priority=0 if src_ipv4=192.0.2.7/12"},
      {"entry 1 priority=0 if src_ipv4=1.2.3.4/255.0.0.0",
       "entry 1 priority=0 if src_ipv4=1.2.3.4/8"},
      {"entry 1 priority=0 if src_ipv4=1.2.3.4/32", "entry 1 priority=0 if src_ipv4=1.2.3.4"},
      {"entry 1 priority=0 if src_ipv4=1.2.3.4/0 count 1=0x7fffffff 2=-2147483648",
       "entry 1 priority=0 if src_ipv4=1.2.3.4/0 count 1=2147483647 2=-2147483648"},
      {"entry 1 priority=0 if tpid=33024 dst_l4_port=0xb3",
       "entry 1 priority=0 if tpid=0x8100 dst_l4_port=179/0xffff"},
      {"entry 1 priority=0 if dst_l4_port=179/0x0", "entry 1 priority=0 if dst_l4_port=179/0x0"},
      {"entry 1 priority=0 if ip_protocol=tcp", "entry 1 priority=0 if ip_protocol=6"},
      {"entry 1 priority=0 if dst_l4_port=ssh", "entry 1 priority=0 if dst_l4_port=22/0xffff"},
      {"entry 1 priority=0 if dst_l4_port=http/0xfff0",
       "entry 1 priority=0 if dst_l4_port=80/0xfff0"},
      {"entry 1 priority=0 if ip_protocol=ipv6-icmp dscp=af41 then set_dscp=voice-admit",
       "entry 1 priority=0 if ip_protocol=58 tos=136 then set_dscp=44"},
      {"entry 2 priority=0\nentry 1 priority=0 then deny permit",
       "entry 1 priority=0 then permit deny\nentry 2 priority=0"},
      {"entry 1 priority=0 count 2=octets 1=1", "entry 1 priority=0 count 1=packets 2=octets"},
      {"entry 1 priority=0 police -", "entry 1 priority=0"},
      {"entry 1 priority=0 police {id=4294967295 stage=none none}", "entry 1 priority=0"},
      {"entry 1 priority=0 parent 120e080310011802200028003000380018017805",
       "entry 1 priority=0 parent {id=5 stage=egress flow cir=1 cbs=2}"},
      {"entry 1 priority=0 police {\tyellow=2:0x8 cir=0 red=drop cbs=7 flow stage=2 0=pcp:1 id=0x5 "
       "}",
       "entry 1 priority=0 police {id=5 stage=none flow cbs=7 yellow=dscp:8 red=drop red=pcp:1}"},
  };
  for (const auto& [text, usual] : same) {
    const ParsedGroups parsed = groupsFromText(kHead + group + text);
    EXPECT_TRUE(parsed.report.empty()) << parsed.report << text;
    EXPECT_EQ(toText(parsed.groups), kHead + group + usual + '\n');
  }
  // The same lines, with the line ends and the blanks of different editors.
  const std::string lines = "group 1 priority=2 stage=none type=4\nentry 1 priority=0\n";
  for (const char* text :
       {"\xef\xbb\xbf"
        "filter-groups 1\r\ngroup 1 priority=2 stage=none type=4\r\n"
        "entry 1 priority=0\r\n",
        "# who wrote this\n\n \t\r\n\tfilter-groups 1  # and when\n\n"
        "group 1 priority=2 stage=none type=4 # as it is\r\n\r\nentry 1 priority=0 #\r"}) {
    const ParsedGroups parsed = groupsFromText(text);
    EXPECT_TRUE(parsed.report.empty()) << parsed.report << text;
    EXPECT_EQ(toText(parsed.groups), kHead + lines);
  }
}

// Each row has lines of text and the expected findings. If the lines do not begin with a group, the
// test adds a group of type 4 before them.
TEST(Text, RefusesAllElse) {
  const std::pair<const char*, const char*> refused[] = {
      {"entry", "3:6 text-syntax"},
      {"entry 1", "3:8 text-syntax"},
      {"entry 1 priority", "3:9 text-syntax"},
      {"entry 4294967296 priority=0", "3:7 text-value"},
      {"entry 01 priority=0", "3:7 text-value"},
      {"entry 1 priority=-1", "3:18 text-value"},
      {"entry 1 priority=0 allow", "3:20 text-syntax"},
      {"entry 1 priority=0 then permit if tos=1", "3:32 text-syntax"},
      {"entry 1 priority=0 police 00 police 00", "3:30 text-syntax"},
      {"entry 1 priority=0\r # a", "3:18 text-value"},
      {"entry 1 priority=0 then count\rpermit", "3:25 text-syntax"},
      {"entry 1 priority=0 if then permit", "3:23 text-syntax"},
      {"entry 1 priority=0 if dst_l4_port=80-90", "3:35 text-value"},
      {"entry 1 priority=0 then  # nothing", "3:26 text-syntax"},
      {"entry 1 priority=0 then permit count", "3:37 text-syntax"},
      {"entry 1 priority=0 police {10 ingress flow}", "3:28 text-syntax"},
      {"entry 1 priority=0 police {id=1 ingress flow}", "3:33 text-syntax"},
      {"entry 1 priority=0 if nothing=1", "3:23 text-syntax"},
      {"entry 1 priority=0 if TOS=1", "3:23 text-syntax"},
      {"entry 1 priority=0 if all=1", "3:26 text-syntax"},
      {"entry 1 priority=0 if tos", "3:26 text-syntax"},
      {"entry 1 priority=0 if tos=", "3:27 text-value"},
      {"entry 1 priority=0 if tos=256", "3:27 text-value"},
      {"entry 1 priority=0 if tos=1 tos=1", "3:29 text-repeated"},
      {"entry 1 priority=0 if tos=1 dscp=1", "3:29 text-repeated"},
      {"entry 1 priority=0 if dscp=64", "3:28 text-value"},
      {"entry 1 priority=0 if pcp=1", "3:27 text-value"},
      {"entry 1 priority=0 if pcp={1,}", "3:29 text-value"},
      {"entry 1 priority=0 if pcp={1,,2}", "3:30 text-value"},
      {"entry 1 priority=0 if pcp={1,1}", "3:1 value-collapsed"},
      {"entry 1 priority=0 if ingress_ports=[1]!", "3:40 text-value"},
      {"entry 1 priority=0 if ingress_ports=[1]!no", "3:41 text-value"},
      {"entry 1 priority=0 if src_ipv4=1.2.3", "3:32 text-value"},
      {"entry 1 priority=0 if src_ipv4=1.2.3.4/33", "3:40 text-value"},
      {"entry 1 priority=0 if src_ipv4=1.2.3.4/", "3:40 text-value"},
      {"entry 1 priority=0 if dst_l4_port=1/16", "3:36 text-value"},
      {"entry 1 priority=0 if dst_l4_port=1/", "3:36 text-value"},
      {"entry 1 priority=0 if dst_l4_port=1/0", "3:36 text-value"},
      {"entry 1 priority=0 if dst_l4_port=1/0x10000", "3:37 text-value"},
      {"entry 1 priority=0 if ip_protocol=TCP", "3:35 text-value"},
      {"entry 1 priority=0 if ip_protocol=256", "3:35 text-value"},
      {"entry 1 priority=0 if dscp=af44", "3:28 text-value"},
      {"entry 1 priority=0 if dscp", "3:27 text-syntax"},
      {"entry 1 priority=0 if src_ip=1.2.3.4", "3:23 text-syntax"},
      {"entry 1 priority=0 if mac=1", "3:23 text-syntax"},
      {"entry 1 priority=0 if permit", "3:23 text-syntax"},
      {"entry 1 priority=0 if ttl=1 tehn permit", "3:29 text-syntax"},
      {"entry 1 priority=0 then ttl=1", "3:25 text-syntax"},
      {"entry 1 priority=0 then allow", "3:25 text-syntax"},
      {"entry 1 priority=0 deny", "3:20 text-syntax"},
      {"entry 1 priority=0 ttl=1", "3:20 text-syntax"},
      {"entry 1 priority=0 count 1=packet", "3:28 text-value"},
      {"entry 1 priority=0 if dst_l4_port=a/b", "3:35 text-value"},
      {"entry 1 priority=0 if dst_l4_port_range=1-65536", "3:43 text-value"},
      {"entry 1 priority=0 if l2_src_entry_type=4294967296", "3:41 text-value"},
      {"entry 1 priority=0 if drop=1", "3:28 text-value"},
      {"entry 1 priority=0 if pcp={x,y}", "3:28 text-value"},
      {"entry 1 priority=0 if dst_l4_port_range=2-1 dst_l4_port=1",
       "3:1 match-refused 3:1 entry-refused 3:1 match-not-admitted"},
      {"entry 1 priority=0 if dst_mac=00:00:00:00:00:0g", "3:31 text-value"},
      {"entry 1 priority=0 if dst_mac=00:00:00-00:00:00", "3:31 text-value"},
      {"entry 1 priority=0 if dst_mac=00:00:00:00:00:00/40", "3:49 text-value"},
      {"entry 1 priority=0 then redirect=1", "3:34 text-value"},
      {"entry 1 priority=0 then redirect=[1]!cpu", "3:37 text-value"},
      {"entry 1 priority=0 if vrf_id=1", "3:1 entry-refused 3:1 match-not-admitted"},
      {"entry 1 priority=0 then permit permit", "3:32 text-repeated"},
      {"entry 1 priority=0 then replace_dst_mac=00:00:00:00:00:00/ff:ff:ff:ff:ff:ff",
       "3:58 text-value"},
      {"entry 1 priority=0 then mpls_port_set=0/0", "3:1 rebuild-throws"},
      {"entry 1 priority=0 count 1", "3:26 text-syntax"},
      {"entry 1 priority=0 count 65536=packets", "3:26 text-syntax"},
      {"entry 1 priority=0 count 1=2147483648", "3:28 text-value"},
      {"entry 1 priority=0 count 1=-2147483649", "3:28 text-value"},
      {"entry 1 priority=0 count 1=1 1=2", "3:1 counter-replaced"},
      {"entry 1 priority=0 police 0", "3:27 text-value"},
      {"entry 1 priority=0 police 0g", "3:27 text-value"},
      {"entry 1 priority=0 parent", "3:26 text-syntax"},
      {"entry 1 priority=0 police ff", "3:1 policer-rewritten"},
      {"entry 1 priority=0 police {id=5 # }", "3:27 text-syntax"},
      {"entry 1 priority=0 police {id=5 stage=none none}parent 00", "3:49 text-syntax"},
      {"entry 1 priority=0 police {id=5 stage=none none} 00", "3:50 text-syntax"},
      {"entry 1 priority=0 police {}", "3:28 text-syntax"},
      {"entry 1 priority=0 police {stage=none none}", "3:43 text-syntax"},
      {"entry 1 priority=0 police {id=5 none }", "3:38 text-syntax"},
      {"entry 1 priority=0 police {id=5 stage=none cir=1}", "3:49 text-syntax"},
      {"entry 1 priority=0 police {id=5 pir=1 stage=none flow}", "3:33 text-syntax"},
      {"entry 1 priority=0 police {id=5 cir=0 stage=none mode=9}", "3:33 text-syntax"},
      {"entry 1 priority=0 police {id=5 stage=none trctm}", "3:44 text-syntax"},
      {"entry 1 priority=0 police {id=5 stage=none mode=trctm}", "3:49 text-value"},
      {"entry 1 priority=0 police {id=5 stage=none flow trtcm}", "3:49 text-repeated"},
      {"entry 1 priority=0 police {id=5 id=5 stage=none none}", "3:33 text-repeated"},
      {"entry 1 priority=0 police {id=4294967296 stage=none none}", "3:31 text-value"},
      {"entry 1 priority=0 police {id= stage=none none}", "3:31 text-value"},
      {"entry 1 priority=0 police {id=5 stage=inside none}", "3:39 text-value"},
      {"entry 1 priority=0 police {id=5 stage=none none blue=drop}", "3:49 text-syntax"},
      {"entry 1 priority=0 police {id=5 stage=none none red}", "3:52 text-syntax"},
      {"entry 1 priority=0 police {id=5 stage=none none red=dorp}", "3:53 text-value"},
      {"entry 1 priority=0 police {id=5 stage=none none red=drop:1}", "3:57 text-value"},
      {"entry 1 priority=0 police {id=5 stage=none none red=dscp}", "3:53 text-value"},
      {"entry 1 priority=0 police {id=5 stage=none none red=dscp:256}", "3:53 text-value"},
      {"entry 1 priority=0\nentry 1 priority=0", "3:1 entry-replaced"},
      {"rule 1\nentry x", "3:1 text-syntax 4:7 text-value"},
      // All faults are reported. The entries of a group are not checked if the group's stage or
      // type cannot be read.
      {"entry 1 priority=0 if vrf_id=1\nentry 1 priority=0 if tos=256\nrule 4\n"
       "entry 4 priority=0 if vrf_id=1 nothing\nentry 5 priority=0 if vrf_id=1",
       "4:27 text-value 5:1 text-syntax 6:32 text-syntax "
       "3:1 entry-refused 3:1 match-not-admitted 7:1 entry-refused 7:1 match-not-admitted"},
      {"gruop 1 priority=0 stage=none type=8\nentry 1 priority=0 if tos=1", "3:1 text-syntax"},
      {"group 1 priority=0 stage=none type=x\nentry 1 priority=0 if tos=1\nentry 2 priority=0 if x",
       "3:36 text-value 5:23 text-syntax"},
      {"group 65536 priority=0 stage=none type=none", "3:7 text-value"},
      {"group 1 priority=0 stage=no type=none", "3:26 text-value"},
      {"group 1 priority=0 stage=none type=1 entries", "3:38 text-syntax"},
  };
  Sentences said;
  for (const auto& [text, findings] : refused) {
    const std::string whole = kHead + "group 1 priority=2 stage=none type=4\n" + text;
    EXPECT_EQ(findingsOf(groupsFromText(whole)), findings) << text;
    EXPECT_EQ(faultIn(kText, whole), "") << text;
    said.add(groupsFromText(whole).report);
  }
  const std::string kZero(1, '\0');
  for (const auto& [text, findings] :
       {std::pair(kHead + "group 1 priority=0 stage=none type=none # no" + kZero + "te\n" + kZero,
                  "2:45 text-syntax 3:1 text-syntax"),
        {kHead + "group 1 priority=0" + kZero + " stage=none type=none", "2:19 text-syntax"},
        {"", "1:1 text-syntax"},
        {"group 1 priority=0 stage=none type=1\nrule", "1:1 text-syntax"},
        {"\n# rules\n  filter-group 1\nrule", "3:3 text-syntax"},
        {"filter-groups", "1:14 text-version"},
        {"filter-groups 2\nsomething", "1:15 text-version"},
        {"filter-groups 1 2", "1:17 text-syntax"},
        {"filter-groups 1\nentry 1 priority=0", "2:1 text-syntax"}}) {
    EXPECT_EQ(findingsOf(groupsFromText(text)), findings) << text;
    said.add(groupsFromText(text).report);
  }
  said.expectGolden("sentences_text.txt");
  for (const auto& [text, word] : {std::pair("if src_ip=1.2.3.4", "src_ip"),
                                   {"if src_ipv4=1.2.3.4/33", "33"},
                                   {"if dst_l4_port=179/16", "/16"},
                                   {"if pcp={1,x}", "x"},
                                   {"when ttl=1", "when"},
                                   {"if vrf_id=1", ""}}) {
    const auto findings =
        groupsFromText(kHead + "group 1 priority=2 stage=none type=4\nentry 1 priority=0 " + text)
            .report.findings;
    ASSERT_FALSE(findings.empty()) << text;
    EXPECT_EQ(findings[0].word, word);
  }
}

// An entry that is read alone has no group, so no group can refuse it.
TEST(Text, OfAnEntryIsItsLine) {
  const ParsedEntry parsed = entryFromText("entry 7 priority=1 if vrf_id=1 tpid=1 then deny");
  ASSERT_TRUE(parsed.entry);
  EXPECT_EQ(toJson(*parsed.entry, JsonLayout::kCompact),
            "{\"id\":7,\"priority\":1,\"matches\":{\"tpid\":1,\"vrf_id\":1},"
            "\"actions\":{\"deny\":true}}\n");
  const auto fault = [](const ParsedEntry& refused) {
    EXPECT_FALSE(refused.entry);
    std::ostringstream os;
    os << refused.report;
    return os.str();
  };
  for (const auto& [text, why] : std::initializer_list<std::pair<const char*, const char*>>{
           {"", "there is no entry (1:1)"},
           {"group 1 priority=0 stage=none type=none", "no line begins with 'group'"},
           {"entry 1 priority=0\nentry 2 priority=0", "an entry is one line (2:1)"},
           {"# 1\n entry 1 priority=0 if src_ipv4=10.0.0.1 src_ipv6=::1", "(2:2)"},
           {"entry 1 priority=0 if ttl=300", "(1:27)"}}) {
    EXPECT_NE(fault(entryFromText(text)).find(why), std::string::npos)
        << fault(entryFromText(text));
  }
  for (const char* json : {"", "5", "[]", "{\"id\":1}", "{\"id\":1,\"priority\":1} {}"}) {
    EXPECT_NE(fault(entryFromJson(json)), "") << json;
  }
}

// A caller that asks for bytes also gets the entries that their group refuses.
TEST(Text, GivesTheBytesThatAGroupRefuses) {
  const std::string text =
      kHead + "group 1 priority=2 stage=none type=1\n\n entry 7 priority=0 if ttl=1\n";
  EXPECT_EQ(findingsOf(groupsFromText(text)), "4:2 entry-refused 4:2 match-not-admitted");
  const ParsedBytes parsed = groupBytesFromText(text, 10);
  EXPECT_TRUE(parsed.report.empty()) << parsed.report;
  ASSERT_EQ(parsed.groups.size(), 1u);
  FiltersGroupPB message;
  EXPECT_TRUE(message.ParseFromString(parsed.groups[0]));
  EXPECT_EQ(message.entries__size(), 1);
  ASSERT_EQ(parsed.positions.size(), 1u);
  EXPECT_EQ(toText(parsed.positions[0].of(7)), "4:2");
  const ParsedBytes refused = groupBytesFromText(text + "entry", 10);
  EXPECT_TRUE(refused.groups.empty());
  EXPECT_EQ(refused.report.findings.size(), 1u);
}

// A text with many notes is still read.
TEST(Text, TakesWhatIsUnusual) {
  std::string text = kHead + "group 1 priority=0 stage=none type=none\n";
  for (int id = 1100; id > 0; --id) {
    text += "entry " + std::to_string(id) + " priority=0 count 1=0\n";
  }
  EXPECT_EQ(faultIn(kText, text), "");
  EXPECT_EQ(groupsFromText(text).groups.size(), 1u);
}

// The report has at most a thousand faults and counts the others.
TEST(Text, CountsWhatItDoesNotTell) {
  std::string text = kHead;
  for (int i = 0; i < 1500; ++i) text += "rule\n";
  const auto report = groupsFromText(text).report;
  EXPECT_EQ(report.findings.size(), 1000u);
  EXPECT_EQ(report.left_out, 500u);
  const std::string group =
      "group 1 priority=0 stage=none type=1\nentry 1 priority=0 count 1=1 1=2 1=3\n";
  const auto one = groupsFromText(kHead + group + group, 1).report;  // each loses two counters
  EXPECT_EQ(one.findings.size(), 1u);
  EXPECT_EQ(one.left_out, 3u);
}

}  // namespace
