#include <filter_inspect/filter_analysis.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <random>

#include "../../cases.h"
#include "benchmarks/rule_sets.h"
#include "tiny_checks.h"

namespace {

using namespace FiltersCommon;
using namespace FiltersInspect;
using benchmarks::RuleSet;

// Gives some rules a match that devices may read in several ways. Several rules may get the same
// match.
FiltersGroup withOpenMatches(const FiltersGroup& group, std::mt19937* engine) {
  FiltersGroup made = group;
  for (const auto& [id, entry] : group.getEntriesRef()) {
    FiltersEntry rule = entry;
    if ((*engine)() % 8 == 0) tiny::set(&rule, MatchIngressPorts(std::list<limid_t>()));
    if ((*engine)() % 8 == 0) tiny::set(&rule, MatchDstL4Port((*engine)() % 2 == 0 ? 443 : 80));
    if ((*engine)() % 4 == 0) rule.setPriority(rule.getPriority() / 8);  // so that rules tie
    EXPECT_EQ(made.insertEntry(rule), FILTERS_OK);
  }
  return made;
}

// A packet that has the values of a rule in most fields. Some of its fields are unknown, and some
// are absent.
std::string packetNear(const RuleSet::Tuple& rule, std::mt19937* engine) {
  constexpr const char* kNames[] = {"src_ipv4", "dst_ipv4", "src_l4_port", "dst_l4_port",
                                    "ip_protocol"};
  constexpr std::uint32_t kAll[] = {~0U, ~0U, 0xffff, 0xffff, 0xff};
  std::string text;
  for (std::size_t i = 0; i < rule.size(); ++i) {
    const auto choice = (*engine)() % 32;
    if (choice == 0) continue;
    text += std::string(kNames[i]) + '=';
    const auto random = static_cast<std::uint32_t>((*engine)()) & kAll[i] & ~rule[i].mask;
    const std::uint32_t value = rule[i].value | random;
    if (choice == 1) {
      text += "none ";
    } else if (i < 2) {
      for (unsigned shift = 32; shift > 0; shift -= 8) {
        text += std::to_string(value >> (shift - 8) & 0xff) + (shift > 8 ? "." : " ");
      }
    } else {
      text += std::to_string(value) + ' ';
    }
  }
  return text + ((*engine)() % 4 != 0 ? "ingress_port=1" : "");
}

// The environment variable FILTERS_PACKETS sets the number of packets.
TEST(DecideTest, IsTheOutcomeOfTheTrace) {
  const char* wanted = std::getenv("FILTERS_PACKETS");
  const int packets = wanted != nullptr ? std::atoi(wanted) : 9000;
  std::mt19937 engine(3);
  for (const benchmarks::Shape& shape : benchmarks::kShapes) {
    RuleSet rules(shape, 300);
    const FiltersGroup group = withOpenMatches(rules.make(300), &engine);
    int decided = 0;
    for (const Order order : {Order::kHighestPriority, Order::kAscendingId, Order::kUnspecified}) {
      const Tracer tracer(group, order);
      for (RandomCases i(packets / 9); wanted != nullptr ? i.done() < packets / 9 : i.more(); ++i) {
        const auto& near = rules.tuples()[engine() % rules.tuples().size()];
        const std::string text = packetNear(near, &engine);
        const auto packet = Packet::parse(text, nullptr);
        ASSERT_TRUE(packet) << text;
        const Trace traced = tracer.trace(*packet);
        ASSERT_TRUE(tiny::agrees(tracer, *packet, traced)) << text << '\n' << traced << group;
        decided += traced.outcome == Hit::kHit ? 1 : 0;
      }
    }
    EXPECT_GT(decided, 0);
  }
}

// With so many long ranges, a table with a row for each port would be too large. So several ports
// share a row.
TEST(DecideTest, IsExactIfRowsAreShared) {
  constexpr unsigned kRules = 9000;
  FiltersGroup group(1);
  ASSERT_EQ(group.setType(FILTERS_GROUP_TYPE_11), FILTERS_OK);
  for (unsigned i = 0; i < kRules; ++i) {
    FiltersEntry rule(i);
    const unsigned reach = kRules - i;  // the narrow ranges come first
    tiny::set(&rule, MatchDstL4PortRange(static_cast<unsigned short>(3 * reach),
                                         static_cast<unsigned short>(65535 - 3 * reach)));
    ASSERT_EQ(group.insertEntry(rule), FILTERS_OK);
  }
  const Tracer tracer(group, Order::kAscendingId);
  for (unsigned port = 0; port < 65536; port += 977) {
    const auto packet = Packet::parse("dst_l4_port=" + std::to_string(port), nullptr);
    ASSERT_TRUE(tiny::agrees(tracer, *packet, tracer.trace(*packet))) << port;
  }
}

TEST(DecideTest, RemembersTheDecisionsOfEachGroupApart) {
  const auto packet = Packet::parse("ttl=1", nullptr);
  for (unsigned id = 1; id < 300; ++id) {
    FiltersGroup group(1);
    FiltersEntry all(id);
    ASSERT_EQ(group.insertEntry(all), FILTERS_OK);
    const Tracer tracer(group, Order::kUnspecified), copy = tracer;
    ASSERT_EQ(tracer.decide(*packet).entry, id);
    ASSERT_EQ(copy.decide(*packet).entry, id);
  }
  EXPECT_EQ(Tracer(FiltersGroup(1), Order::kUnspecified).decide(*packet).outcome, Hit::kMiss);
}

}  // namespace
