// Tests policies: their text, and their verdicts about groups.

#include <filter_inspect/filter_policy.h>
#include <filter_inspect/filter_text.h>
#include <gtest/gtest.h>

#include "../../cases.h"
#include "../sentences.h"
#include "tiny_policies.h"

using namespace tiny;

namespace {

struct Random {
  unsigned below(std::size_t limit) { return static_cast<unsigned>(engine() % limit); }
  std::mt19937 engine{1};
};

PlainSet randomSet(Random* random, const Case& c) {
  std::vector<Field> fields = c.fields;
  if (random->below(3) == 0) fields.push_back({"ttl", {}});  // no rule asks for it
  return SetMaker<Random>(*random, fields).make();
}

TEST(PolicyTest, AgreesWithEveryPacketOfTinyGroups) {
  Random random;
  for (RandomCases i(1200); i.more(); ++i) {
    const Case c = Maker<Random>(random).make(1 + random.below(6));
    std::vector<PlainSet> sets;
    for (int k = 0; k < 3; ++k) sets.push_back(randomSet(&random, c));
    const Order order = kAllOrders[random.below(kAllOrders.size())];
    ASSERT_EQ(faultOfPolicy(c, sets, order, 100000), "") << i.done();
  }
}

// If the limit of steps is low, some promises may be not decided, but no verdict may be wrong.
TEST(PolicyTest, IsNotDecidedWithoutSteps) {
  Random random;
  for (RandomCases i(200); i.more(); ++i) {
    const Case c = Maker<Random>(random).make(4 + random.below(6));
    const std::vector<PlainSet> sets = {randomSet(&random, c)};
    ASSERT_EQ(faultOfPolicy(c, sets, kAllOrders[random.below(8)], random.below(6)), "") << i.done();
  }
}

// --- Verdicts written by hand --------------------------------------------------------------------

FiltersGroup groupOf(const std::string& entries) {
  ParsedGroups parsed =
      groupsFromText("filter-groups 1\ngroup 1 priority=1 stage=ingress type=4\n" + entries);
  EXPECT_EQ(parsed.groups.size(), 1U) << parsed.report;
  return parsed.groups.empty() ? FiltersGroup(1) : parsed.groups[0];
}

Policy policyOf(const std::string& lines) {
  Report faults;
  const auto policy = Policy::parse("filter-policy 1\n" + lines, &faults);
  EXPECT_TRUE(policy) << faults;
  return policy.value_or(Policy());
}

// The code of the verdict, and its message with P in place of the packet.
std::string verdict(const FiltersGroup& group, const std::string& promise,
                    const char* order = "highest-priority") {
  const Policy policy = policyOf(std::string("group 1 order=") + order + '\n' + promise);
  const Report report = checkPolicy(group, policy);
  if (report.findings.size() != 1) return "no verdict";
  const Finding& finding = report.findings[0];
  std::string message = finding.message;
  const std::size_t at = finding.witness.empty() ? message.npos : message.find(finding.witness);
  if (at != message.npos) message.replace(at, finding.witness.size(), "P");
  return std::string(nameOf(finding.code)) + ": " + message;
}

TEST(PolicyTest, SaysWhoBreaksAPromise) {
  const FiltersGroup group = groupOf(
      "entry 10 priority=50 if src_ipv4=10.0.0.0/8 then permit set_pcp=5\n"
      "entry 20 priority=40 if tos=8 then deny\n"
      "entry 30 priority=40 if src_ipv4=192.0.2.0/24 then set_pcp=3 copy_to_cpu\n"
      "entry 40 priority=30 if external_vlan_id={7} then permit\n"
      "entry 50 priority=30 if external_vlan_id={7,8} then deny\n"
      "entry 60 priority=20 if tos=8 external_vlan_id={9} then permit\n"
      "entry 70 priority=10 if external_vlan_id={9} then deny\n");
  const std::tuple<const char*, const char*, const char*> rows[] = {
      {"always permit if src_ipv4=10.1.2.0/24", "", "policy-holds: no packet breaks the promise"},
      {"always permit set_pcp=5 if src_ipv4=10.1.2.0/24", "",
       "policy-holds: no packet breaks the promise"},
      {"always permit set_pcp=6 if src_ipv4=10.1.2.0/24", "",
       "policy-fails: entry 10 permits P (set_pcp=5)"},
      {"always set_pcp if src_ipv4=10.1.2.0/24", "", "policy-holds: no packet breaks the promise"},
      {"never set_pcp if src_ipv4=10.1.2.0/24", "", "policy-fails: entry 10 permits P (set_pcp=5)"},
      {"never set_pcp=6 set_pcp=5 if src_ipv4=10.1.2.0/24", "",
       "policy-fails: entry 10 permits P (set_pcp=5)"},
      {"never set_pcp=6 deny if src_ipv4=10.1.2.0/24", "",
       "policy-holds: no packet breaks the promise"},
      {"never copy_to_cpu if src_ipv4=192.0.2.0/24 tos=1", "",
       "policy-fails: entry 30 takes P (copy_to_cpu, set_pcp=3)"},
      {"always taken if src_ipv4=172.16.0.0/12 external_vlan_id=1", "",
       "policy-fails: no entry takes P"},
      {"never taken if src_ipv4=172.16.0.0/12 external_vlan_id=1 tos=1", "",
       "policy-holds: no packet breaks the promise"},
      // Devices may read tos=8 in two ways.
      {"never deny if tos=9 src_ipv4=none external_vlan_id=none", "",
       "policy-open: entry 20 denies P, unless no entry takes it: entry 20: tos: it may be a DSCP, "
       "which leaves the two low bits open"},
      {"always taken if tos=9 src_ipv4=none external_vlan_id=none", "",
       "policy-open: no entry takes P, unless entry 20 denies it: entry 20: tos: it may be a DSCP, "
       "which leaves the two low bits open"},
      // Entries tie, and devices may read tos=8 in two ways.
      {"always set_pcp if src_ipv4=192.0.2.1 tos=9", "",
       "policy-open: entry 20 denies P, unless entry 30 takes it (copy_to_cpu, set_pcp=3): entry "
       "20: tos: it may be a DSCP, which leaves the two low bits open; nothing says which of "
       "entries "
       "20 and 30 comes first"},
      // A tie.
      {"never permit if external_vlan_id=7 tos=1 src_ipv4=none", "",
       "policy-open: entry 40 permits P, unless entry 50 denies it: nothing says which of entries "
       "40 and 50 comes first"},
      {"never permit if external_vlan_id=7 tos=1 src_ipv4=none", "lowest-priority,descending-id",
       "policy-holds: no packet breaks the promise"},
      {"never taken if external_vlan_id=7 tos=1 src_ipv4=none", "",
       "policy-fails: entry 40 permits P, unless entry 50 denies it; each breaks the promise"},
      // In every reading of tos=8, entry 20 takes all packets of entry 60 first.
      {"always permit if external_vlan_id=9 tos=9 src_ipv4=none", "",
       "policy-fails: entry 20 denies P, unless entry 70 denies it; each breaks the promise"},
      // The packets with VLAN id 7 are not decided, but the packets with VLAN id 9 are.
      {"always permit if external_vlan_id={7,9} tos=9 src_ipv4=none", "",
       "policy-fails: entry 20 denies P, unless entry 70 denies it; each breaks the promise"},
      {"always taken if external_vlan_id=7", "unspecified",
       "policy-holds: no packet breaks the promise"},
  };
  for (const auto& [promise, order, expected] : rows) {
    EXPECT_EQ(verdict(group, promise, *order == '\0' ? "highest-priority" : order), expected)
        << promise;
  }
}

TEST(PolicyTest, WritesVerdictsAsLines) {
  const FiltersGroup group = groupOf(
      "entry 1 priority=1 if external_vlan_id={7} then permit\n"
      "entry 2 priority=1 if external_vlan_id={7,8} then deny\n");
  const Policy policy = policyOf(
      "group 1 order=highest-priority\nnever permit if external_vlan_id=7\n"
      "never deny if external_vlan_id=8\nalways taken\nalways taken if external_vlan_id=7-8\n");
  std::ostringstream said;
  said << checkPolicy(group, policy);
  EXPECT_EQ(said.str(),
            "warning: entry 1 permits external_vlan_id=7, unless entry 2 denies it: nothing says "
            "which of entries 1 and 2 comes first (3:1) [policy-open]\n"
            "  packet: external_vlan_id=7\n"
            "  entry 1: permit; entry 2: deny\n"
            "warning: entry 2 denies external_vlan_id=8 (4:1) [policy-fails]\n"
            "  packet: external_vlan_id=8\n"
            "warning: group 1: no entry takes external_vlan_id=100 (5:1) [policy-fails]\n"
            "  packet: external_vlan_id=100\n"
            "note: group 1: no packet breaks the promise (6:1) [policy-holds]\n");
}

TEST(PolicyTest, ChecksOnlyTheGroupsThatItNames) {
  const FiltersGroup group = groupOf("entry 1 priority=1 then deny\n");
  const Policy policy = policyOf("group 2 order=ascending-id\nalways permit\n");
  EXPECT_TRUE(checkPolicy(group, policy).empty());
  EXPECT_EQ(policy.find(1), nullptr);
  const PolicyGroup* its = policy.find(2);
  ASSERT_NE(its, nullptr);
  EXPECT_EQ(its->order, Order::kAscendingId);
  EXPECT_EQ(its->promises.size(), 1U);
}

TEST(PolicyTest, AcceptsFindings) {
  const FiltersGroup group = groupOf(
      "entry 10 priority=50 if src_ipv4=10.0.0.0/8 then permit\n"
      "entry 20 priority=40 if src_ipv4=10.1.0.0/16 then deny\n"
      "entry 30 priority=30 if src_ipv4=10.2.0.0/16 then deny\n");
  const Policy policy = policyOf(
      "group 1 order=highest-priority\naccept entry-unreachable entry 20\n"
      "accept entries-tie entry 30\naccept entry-redundant entry 20\n");
  AnalysisOptions options;
  options.order = Order::kHighestPriority;
  Report report = analyse(group, options);
  EXPECT_EQ(acceptFindings(policy, 2, &report), 0U);
  EXPECT_EQ(report.findings.size(), 2U);
  EXPECT_EQ(acceptFindings(policy, 1, &report), 1U);
  std::ostringstream said;
  for (const Finding& finding : report.findings) {
    said << *finding.entry << ' ' << nameOf(finding.code) << '\n';
  }
  EXPECT_EQ(said.str(), "30 entry-unreachable\n30 accept-stale\n20 accept-stale\n");
  // The report lacks findings because of its limit, and the policy may accept some of these.
  options.max_findings = 1;
  Report cut = analyse(group, options);
  EXPECT_EQ(acceptFindings(policy, 1, &cut), 1U);
  EXPECT_TRUE(cut.findings.empty());
}

// --- The text ------------------------------------------------------------------------------------

TEST(PolicyTest, IsReadAsItIsWritten) {
  const std::string lines =
      "\xef\xbb\xbf# Rules of the house\r\n\r\n filter-policy 1 # first\r\n"
      "group 3\torder=lowest-priority,ascending-id\r\n"
      "  never permit set_pcp  # no \"<telnet>\" \t\r\n"
      "always taken if ttl={1,5-9}#x\n"
      "group 0 order=unspecified\naccept not-decided entry 4294967295\n"
      "group 65535 order=ascending-id";
  Report faults;
  const auto policy = Policy::parse(lines, &faults);
  ASSERT_TRUE(policy) << faults;
  ASSERT_EQ(policy->groups().size(), 3U);
  const PolicyGroup& first = policy->groups()[0];
  EXPECT_EQ(first.group, 3);
  EXPECT_EQ(first.order, Order::kLowestPriorityAscendingId);
  EXPECT_EQ(first.line, 4U);
  ASSERT_EQ(first.promises.size(), 2U);
  const Promise &never = first.promises[0], &always = first.promises[1];
  EXPECT_FALSE(never.always || never.taken);
  EXPECT_EQ(never.actions.toText(), "permit set_pcp");
  EXPECT_EQ(never.packets.toText(), "");
  EXPECT_EQ(never.line, 5U);
  EXPECT_EQ(never.column, 3U);
  EXPECT_EQ(never.text, "never permit set_pcp");
  EXPECT_EQ(never.comment, "no \"<telnet>\"");
  EXPECT_TRUE(always.always && always.taken);
  EXPECT_EQ(always.packets.toText(), "ttl={1,5-9}");
  EXPECT_EQ(always.text, "always taken if ttl={1,5-9}");
  EXPECT_EQ(always.comment, "x");
  const PolicyGroup& second = policy->groups()[1];
  ASSERT_EQ(second.accepted.size(), 1U);
  EXPECT_EQ(second.accepted[0].code, Code::kNotDecided);
  EXPECT_EQ(second.accepted[0].entry, 4294967295U);
  EXPECT_EQ(second.accepted[0].line, 8U);
}

// All faults of a text, by line and column, with the word that is wrong.
TEST(PolicyTest, NamesEveryFault) {
  const std::string group = "filter-policy 1\ngroup 1 order=ascending-id\n";
  const std::pair<std::string, const char*> rows[] = {
      {"", "1:1 text-syntax "},
      {"# filter-policy 1", "1:1 text-syntax "},
      {"filter-groups 1", "1:1 text-syntax filter-groups"},
      {"filter-policy", "1:14 text-version "},
      {"filter-policy 2\nalways", "1:15 text-version 2"},
      {"filter-policy 1 x", "1:17 text-syntax x"},
      {"filter-policy 1\nalways taken\nnever taken", "2:1 text-syntax always"},
      {group + "filter-policy 1", "3:1 text-syntax filter-policy"},
      {group + "allways permit", "3:1 text-syntax allways"},
      {group + "entry 10 priority=1", "3:1 text-syntax entry"},
      // Groups.
      {group + "group", "3:6 text-syntax , 3:6 text-syntax "},
      {group + "group x order=y", "3:7 text-value x, 3:15 text-value y"},
      {group + "group 65536 order=ascending-id", "3:7 text-value 65536"},
      {group + "group 2", "3:8 text-syntax "},
      {group + "group 2 ordr=ascending-id", "3:9 text-syntax ordr=ascending-id"},
      {group + "group 2 order=2", "3:15 text-value 2"},
      {group + "group 2 order=ascending-id x", "3:28 text-syntax x"},
      {group + "group 1 order=ascending-id", "3:7 text-repeated 1"},
      // Promises.
      {group + "always", "3:7 text-syntax "},
      {group + "never if ttl=1", "3:7 text-syntax if"},
      {group + "never permt", "3:7 text-value permt"},
      {group + "never permit,deny", "3:7 text-value permit,deny"},
      {group + "never permit=1 deny if ttl=300", "3:13 text-syntax =1, 3:24 text-value ttl=300"},
      {group + "never set_pcp=8x", "3:15 text-value 8x"},
      {group + "never permit ttl=1", "3:14 text-syntax ttl=1"},
      {group + "never permit dscp=1", "3:14 text-syntax dscp=1"},
      {group + "never permit if", "3:16 text-syntax "},
      {group + "never permit if # ttl=1", "3:17 text-syntax "},
      {group + "never permit then deny", "3:14 text-value then"},
      {group + "always permit permit", "3:15 text-repeated permit"},
      {group + "always set_pcp=1 set_pcp", "3:18 text-repeated set_pcp"},
      {group + "never set_pcp=1 set_pcp=2 set_pcp=1", "3:27 text-repeated set_pcp=1"},
      {group + "always taken permit", "3:14 text-syntax permit"},
      {group + "always permit taken", "3:15 text-syntax taken"},
      {group + "\tnever permit if  ttl=1 \tttl=2 x=1 if",
       "3:26 text-repeated ttl=2, 3:32 text-value x, 3:36 text-syntax if"},
      // Acceptances.
      {group + "accept", "3:7 text-syntax "},
      {group + "accept treatment-differs entry 1", "3:8 text-value treatment-differs"},
      {group + "accept entries-tie", "3:19 text-syntax "},
      {group + "accept entries-tie entryx 1", "3:20 text-syntax entryx"},
      {group + "accept entries-tie entry", "3:25 text-syntax "},
      {group + "accept entries-tie entry -1", "3:26 text-value -1"},
      {group + "accept entries-tie entry 1 2", "3:28 text-syntax 2"},
      {group + "accept entries-tie entry 1\naccept entries-tie entry 0x1",
       "4:26 text-repeated 0x1"},
      // Control characters, which no line may have.
      {group + std::string("never per\0mit", 13), "3:10 text-syntax "},
      {group + std::string("never permit if ttl=1\0", 22), "3:22 text-syntax "},
      {group + "never permit if ttl=1\rttl=2", "3:22 text-syntax \r"},
      {group + std::string("# \0", 3), "3:3 text-syntax "},
  };
  catalogue::Sentences sentences;
  for (const auto& [text, expected] : rows) {
    Report report;
    EXPECT_FALSE(Policy::parse(text, &report)) << text;
    EXPECT_FALSE(Policy::parse(text, nullptr)) << text;
    std::string found;
    for (const Finding& finding : report.findings) {
      found += (found.empty() ? "" : ", ") + finding.path + ' ' +
               std::string(nameOf(finding.code)) + ' ';
      if (finding.word.find('\0') == finding.word.npos) found += finding.word;
    }
    EXPECT_EQ(found, expected) << text;
    sentences.add(report);
  }
  sentences.expectGolden("sentences_policy.txt");
}

TEST(PolicyTest, CountsFaultsBeyondTheLimit) {
  std::string text = "filter-policy 1\ngroup 1 order=ascending-id\n";
  for (int i = 0; i < 20; ++i) text += "never nothing if ttl=x\n";
  Report report;
  EXPECT_FALSE(Policy::parse(text, &report, 3));
  EXPECT_EQ(report.findings.size(), 3U);
  EXPECT_EQ(report.left_out, 37U);
}

}  // namespace
