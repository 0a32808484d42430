// Tests searches for the packets of a set. For tiny groups it tries every packet of the set.

#include <filter_inspect/filter_text.h>
#include <gtest/gtest.h>

#include "../../cases.h"
#include "tiny_sets.h"

using namespace tiny;

namespace {

struct Random {
  unsigned below(std::size_t limit) { return static_cast<unsigned>(engine() % limit); }
  std::mt19937 engine{1};
};

TEST(SearchTest, SaysWhatEveryPacketOfTinyGroupsSays) {
  Random random;
  for (RandomCases i(10000); i.more(); ++i) {
    Case c = Maker<Random>(random).make(random.below(6));
    std::vector<Field> fields = c.fields;
    if (random.below(3) == 0) fields.push_back({"ttl", {}});  // no rule asks for it
    const PlainSet set = SetMaker<Random>(random, fields).make();
    for (int k = 0; k < 2; ++k) {
      ASSERT_EQ(faultOfSearch(c, set, kAllOrders[random.below(kAllOrders.size())]), "") << i.done();
    }
  }
}

FiltersGroup groupOf(const std::string& entries) {
  ParsedGroups parsed =
      groupsFromText("filter-groups 1\ngroup 1 priority=1 stage=ingress type=3\n" + entries);
  EXPECT_EQ(parsed.groups.size(), 1U) << parsed.report;
  return parsed.groups.empty() ? FiltersGroup(1) : std::move(parsed.groups[0]);
}

PacketSet setOf(const char* text) {
  Report report;
  const auto set = PacketSet::parse(text, &report);
  EXPECT_TRUE(set) << report;
  return set.value_or(PacketSet());
}

std::string linesOf(const Report& report) {
  std::string lines;
  for (const Finding& one : report.findings) {
    lines += std::string(nameOf(one.code)) + ' ' +
             (one.entry ? std::to_string(*one.entry) : "none") + " (" + one.treatment +
             "): " + one.message + '\n';
  }
  return lines;
}

constexpr char kRules[] =
    "entry 10 priority=9 if src_ipv4=10.0.0.0/9 then permit\n"
    "entry 20 priority=8 if src_ipv4=10.128.0.0/9 ttl=1 then permit set_pcp=5\n"
    "entry 30 priority=8 if src_ipv4=10.128.0.0/9 ip_protocol=17 then deny\n"
    "entry 40 priority=7 if src_ipv4=10.0.0.0/8 dst_l4_port=53/0x0 then deny\n"
    "entry 50 priority=6 if src_ipv4=10.0.0.0/16 then permit\n";

TEST(SearchTest, SaysWhyItIsNotSure) {
  const FiltersGroup group = groupOf(kRules);
  const Order order = Order::kHighestPriority;
  const struct {
    const char *packets, *then, *said;
  } rows[] = {
      {"src_ipv4=10.1.0.0/16", nullptr, "packets-go 10 (permit): it takes every packet\n"},
      {"src_ipv4=11.0.0.0/8", nullptr, "packets-go none (): no entry takes any packet\n"},
      {"src_ipv4=10.200.0.0/16 ttl=1 ip_protocol=udp", nullptr,
       "packets-may-go 20 (permit, set_pcp=5): it may take some packets: nothing says which of "
       "entries 20 and 30 comes first\n"
       "packets-may-go 30 (deny): it may take some packets: nothing says which of entries 20 and "
       "30 "
       "comes first\n"},
      {"src_ipv4=10.200.0.0/16 ttl=64 ip_protocol=tcp dst_l4_port={54,80}", nullptr,
       "packets-may-go 40 (deny): it may take some packets: dst_l4_port: its mask of 0 may mean "
       "that "
       "value alone\n"
       "packets-may-go none (): perhaps no entry takes some packets: entry 40: dst_l4_port: its "
       "mask "
       "of 0 may mean that value alone\n"},
      {"src_ipv4=10.0.0.0/8 ttl=1", "set_pcp=5 permit",
       "packets-go 20 (permit, set_pcp=5): it takes some packets\n"},
      {"src_ipv4=10.0.0.0/8 ttl=1", "set_pcp=4", ""},
  };
  for (const auto& row : rows) {
    const auto then = ActionTest::parse(row.then == nullptr ? "permit" : row.then, nullptr);
    const Destinations found =
        search(group, setOf(row.packets), order, {}, row.then == nullptr ? nullptr : &*then);
    EXPECT_EQ(linesOf(searchReport(group, found)), row.said) << row.packets;
  }
  EXPECT_EQ(linesOf(touchingReport(
                group, touching(group, setOf("src_ipv4=10.0.0.0/16 dst_l4_port=53-54"), order))),
            "packets-match 10 (permit): it matches every packet\n"
            "packets-match 40 (deny): it matches some packets\n"
            "packets-match 50 (permit): it matches every packet\n");
}

TEST(SearchTest, ListsWhatIsLeft) {
  const FiltersGroup group = groupOf(kRules);
  const Order order = Order::kHighestPriority;
  const auto said = [&](filtersEntryId_t entry, const char* packets) {
    return linesOf(remainsReport(group, entry, *remains(group, entry, setOf(packets), order)));
  };
  EXPECT_EQ(said(10, ""),
            "packets-left 10 (permit): packets are left for it\n"
            "packets-left 10 (permit): it takes src_ipv4=10.0.0.0/9\n");
  EXPECT_EQ(said(50, ""), "packets-left 50 (permit): nothing is left of it\n");
  EXPECT_EQ(said(20, "ip_protocol=0-20 ttl=1-9"),
            "packets-left 20 (permit, set_pcp=5): packets are left for it\n"
            "packets-left 20 (permit, set_pcp=5): it takes src_ipv4=10.128.0.0/9 "
            "ip_protocol={0-16,18-20} ttl=1\n"
            "packets-left 20 (permit, set_pcp=5): it may take src_ipv4=10.128.0.0/9 "
            "ip_protocol=0-20 ttl=1\n");
  EXPECT_FALSE(remains(group, 60, PacketSet(), order));
}

// The packets that surely reach the entry are one set. The packets that may reach it would need too
// long a list of sets.
TEST(SearchTest, ListsNothingIfOneListIsTooLong) {
  const FiltersGroup group = groupOf(
      "entry 1 priority=2 if dst_l4_port=1/0x0 then permit\n"
      "entry 2 priority=2 if dst_l4_port=0/0x5555 src_l4_port=0/0x5555 then permit\n"
      "entry 3 priority=1 then deny\n");
  const Remains left = *remains(group, 3, PacketSet(), Order::kHighestPriority);
  EXPECT_FALSE(left.surely.empty());
  EXPECT_TRUE(left.possibly.empty());
  EXPECT_EQ(linesOf(remainsReport(group, 3, left)),
            "packets-left 3 (deny): packets are left for it\n");
}

// Entries 1 and 2 together take all packets of entry 3. The search needs many steps to prove this.
TEST(SearchTest, SaysWhenStepsDoNotSuffice) {
  const FiltersGroup group = groupOf(
      "entry 1 priority=3 if src_ipv4=10.0.0.0/9 then permit\n"
      "entry 2 priority=2 if src_ipv4=10.128.0.0/9 then permit\n"
      "entry 3 priority=1 if src_ipv4=10.0.0.0/8 then deny\n");
  const Order order = Order::kHighestPriority;
  AnalysisOptions options;
  std::size_t calls = 0;
  options.progress = [&](std::size_t done, std::size_t all) { calls += done < all ? 1 : 0; };
  const Destinations whole = search(group, setOf("src_ipv4=10.0.0.0/8"), order, options);
  EXPECT_TRUE(whole.complete);
  EXPECT_EQ(whole.found.size(), 2U);
  EXPECT_EQ(calls, 4U);
  options.max_steps = 0;
  const Destinations cut = search(group, setOf("src_ipv4=10.0.0.0/8"), order, options);
  EXPECT_FALSE(cut.complete);
  EXPECT_NE(linesOf(searchReport(group, cut)).find("not-decided none (): "), std::string::npos);
  EXPECT_FALSE(remains(group, 3, PacketSet(), order, options)->complete);
}

}  // namespace
