// What rules do to each other, beside every packet of tiny groups.

#include <filter_inspect/filter_text.h>
#include <gtest/gtest.h>

#include "tiny_checks.h"

using namespace tiny;

namespace {

struct Random {
  unsigned below(std::size_t limit) { return static_cast<unsigned>(engine() % limit); }
  std::mt19937 engine{1};
};

AnalysisOptions by(Order order, bool overlaps = false) {
  AnalysisOptions options;
  options.order = order;
  options.overlaps = overlaps;
  return options;
}

TEST(AnalyseTest, SaysWhatEveryPacketOfTinyGroupsSays) {
  Random random;
  for (int i = 0; i < 3000 / FILTERS_SLOWNESS; ++i) {
    const Case c = Maker<Random>(random).make(3 + random.below(4));
    const auto rows = c.everyRow();
    for (Order order : kAllOrders) {
      ASSERT_EQ(faultOfAnalysis(c, rows, by(order, random.below(2) == 0)), "") << i;
    }
  }
}

TEST(AnalyseTest, WithoutAnOrderClaimsWhatHoldsInEach) {
  Random random;
  for (int i = 0; i < 500 / FILTERS_SLOWNESS; ++i) {
    const Case c = Maker<Random>(random).make(4);
    ASSERT_EQ(faultOfAnyOrder(c), "") << i;
  }
}

TEST(AnalyseTest, CountsWhatItLeavesOut) {
  Random random;
  for (int i = 0; i < 100; ++i) {
    const Case c = Maker<Random>(random).make(6);
    AnalysisOptions options = by(Order::kLowestPriority, true);
    const Report all = analyse(c.group, options);
    options.max_findings = random.below(all.findings.size() + 1);
    const Report some = analyse(c.group, options);
    ASSERT_EQ(some.findings.size(), options.max_findings);
    ASSERT_EQ(some.findings.size() + some.left_out, all.findings.size());
    ASSERT_EQ(some.worst(), all.worst());
    // Kept are the most severe ones, in their order.
    const auto warnings = [](const Report& report) {
      return std::count_if(report.findings.begin(), report.findings.end(),
                           [](const Finding& one) { return one.severity == Severity::kWarning; });
    };
    ASSERT_EQ(warnings(some), std::min(warnings(all), std::ptrdiff_t(options.max_findings)));
    ASSERT_EQ(some.left_out_by_severity[1], std::size_t(warnings(all) - warnings(some)));
  }
}

// Groups, and what is said of them: code, entry and others, and a part of the sentence.
TEST(AnalyseTest, SaysOfGroupsWhatPeopleAsk) {
  const Order first = Order::kHighestPriority, none = Order::kUnspecified;
  const struct {
    Order order;
    const char *head, *entries, *said;
  } rows[] = {
      // Equal matches take equal packets, whatever the device makes of them.
      {first, "ingress type=9",
       "entry 10 priority=100 if external_vlan_id={100} tos=184 then set_pcp=5\n"
       "entry 20 priority=90 if external_vlan_id={100} tos=184 then set_pcp=1\n"
       "entry 30 priority=80 if external_vlan_id={100} pcp={3} dscp=46 then deny\n",
       "entry-unreachable 20: 10 set_pcp=1/set_pcp=5\n"
       "entry-unreachable 30: 10 deny/set_pcp=5\n"},
      {none, "lookup type=6",
       "entry 10 priority=1 if external_vlan_id={1} vlan_tagging=tagged then permit\n"
       "entry 20 priority=1 if external_vlan_id={1} vlan_tagging=tagged then deny\n",
       "entries-tie 10: 20 permit/deny\n"},
      // Every packet has these fields, so that both values together take all.
      {first, "egress type=3",
       "entry 10 priority=3 if my_station_hit=true then permit\n"
       "entry 20 priority=2 if my_station_hit=false then permit\n"
       "entry 30 priority=1 then deny\n",
       "entry-unreachable 30: 10 20 deny/permit\n"},
      // The blocker takes all packets, but another entry comes before it.
      {first, "ingress type=3",
       "entry 10 priority=100 if src_ipv4=10.1.0.0/17 then permit\n"
       "entry 20 priority=90 if src_ipv4=10.0.0.0/8 then deny\n"
       "entry 30 priority=80 if src_ipv4=10.1.0.0/16 ip_protocol=6 then deny\n",
       "entry-unreachable 30: 20 deny/permit; part of its packets are treated otherwise by entry "
       "10\n"},
      // What two would tie about is taken before them.
      {first, "ingress type=3",
       "entry 10 priority=100 if src_ipv4=10.1.1.1 dst_ipv4=10.2.2.2 then permit\n"
       "entry 20 priority=90 if src_ipv4=10.1.1.1 ip_protocol=6 then permit\n"
       "entry 30 priority=90 if dst_ipv4=10.2.2.2 ip_protocol=6 then deny\n",
       ""},
      // The id is the second key.
      {Order::kHighestPriorityDescendingId, "ingress type=3",
       "entry 10 priority=5 if ttl=1 then permit\nentry 20 priority=5 if ttl=1 then deny\n",
       "entry-unreachable 10: 20 permit/deny\n"},
      // Without an order, two that treat the very same packets alike.
      {none, "ingress type=3",
       "entry 10 priority=5 if ttl=1 then deny\nentry 20 priority=5 if ttl=1 then deny\n"
       "entry 30 priority=5 if ip_protocol=6 then permit\n",
       "entry-redundant 20: 10 deny/deny\n"},
  };
  for (const auto& row : rows) {
    const ParsedGroups parsed = groupsFromText(
        std::string("filter-groups 1\ngroup 1 priority=1 stage=") + row.head + '\n' + row.entries);
    ASSERT_EQ(parsed.groups.size(), 1U) << row.entries << parsed.report;
    std::string said;
    for (const Finding& finding : analyse(parsed.groups[0], by(row.order)).findings) {
      if (finding.code == Code::kValueUnusual) continue;
      std::string line = lineOf(finding.code, *finding.entry, finding.others);
      line.back() = ' ';
      said += line + finding.before + '/' + finding.after;
      const std::size_t part = finding.message.find("; part");
      said += (part == std::string::npos ? "" : finding.message.substr(part)) + '\n';
    }
    EXPECT_EQ(said, row.said) << row.entries;
  }
}

// Many entries within others are told in one line, and the exceptions of a rest not at all.
TEST(AnalyseTest, TellsOfManyExceptionsInOneLine) {
  for (const unsigned count : {7U, 20U}) {
    std::string text = "filter-groups 1\ngroup 1 priority=1 stage=ingress type=3\n";
    for (unsigned i = 1; i <= count; ++i) {
      text += "entry " + std::to_string(i) + " priority=9 if ip_protocol=" + std::to_string(i % 2) +
              " ttl=" + std::to_string(i) + " destination_cpu then permit\n";
    }
    text +=
        "entry 90 priority=8 if ip_protocol=0 destination_cpu then deny\n"
        "entry 91 priority=8 if ip_protocol=1 destination_cpu then deny\n"
        "entry 99 priority=7 if destination_cpu then deny\n";
    const ParsedGroups parsed = groupsFromText(text);
    ASSERT_EQ(parsed.groups.size(), 1U) << parsed.report;
    const Report report = analyse(parsed.groups[0]);
    ASSERT_EQ(report.findings.size(), count == 7 ? 7U : 1U) << report;
    const Finding& finding = report.findings[0];
    EXPECT_EQ(finding.entry.has_value(), count == 7);
    EXPECT_EQ(finding.message.rfind(count == 7 ? "entry 91 takes all" : "20 entries take only", 0),
              0U)
        << report;
  }
}

TEST(AnalyseTest, ComparesTheTreatmentOfEveryPacket) {
  Random random;
  for (int i = 0; i < 2000 / FILTERS_SLOWNESS; ++i) {
    Maker<Random> maker(random);
    const Case a = maker.make(1 + random.below(4));
    // A few rules anew, or all.
    Case b = random.below(3) == 0 ? maker.make(1 + random.below(4)) : a;
    if (random.below(2) == 0) maker.add(&b, static_cast<filtersEntryId_t>(b.rules.size()));
    for (Order order : kAllOrders) ASSERT_EQ(faultOfComparison(a, b, order), "") << i;
  }
}

}  // namespace
