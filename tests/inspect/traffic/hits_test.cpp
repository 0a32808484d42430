// Compares counters of hits with a trace of each packet. For two tiny groups, it tries every packet
// that the groups can distinguish.

#include <filter_inspect/filter_text.h>
#include <filter_inspect/filter_traffic.h>
#include <gtest/gtest.h>

#include "../../cases.h"
#include "../../memory_control.h"
#include "../analysis/tiny_checks.h"

using namespace tiny;

namespace {

struct Random {
  unsigned below(std::size_t limit) { return static_cast<unsigned>(engine() % limit); }
  std::mt19937 engine{1};
};

// The count of some frames in one line: "3 from 2 at 20" are three frames, the first of them with
// number 2 at time 20.
std::string textOf(const FrameCount& count) {
  if (count.frames == 0) return "0";
  return std::to_string(count.frames) + " from " + std::to_string(count.first) + " at " +
         std::to_string(count.first_time);
}
std::string textOf(const HitCounts& hits) {
  return textOf(hits.sure) + ", perhaps " + textOf(hits.possible);
}

Packet packetFrom(const std::string& text) {
  const auto packet = Packet::parse(text, nullptr);
  EXPECT_TRUE(packet.has_value()) << text;
  return packet.value_or(Packet());
}

// Some packets that the rules of a case can distinguish. Some of their fields are unknown.
std::vector<std::string> somePackets(const Case& c, Random* random, unsigned count) {
  const auto all = c.everyPacket();
  std::vector<std::string> texts;
  for (unsigned k = 0; k < count; ++k) {
    const PlainPacket& packet = all[random->below(all.size())];
    std::string text;
    for (std::size_t f = 0; f < packet.size(); ++f) {
      if (random->below(4) != 0) text += c.fields[f].textOf(packet[f]) + ' ';
    }
    texts.push_back(text);
  }
  return texts;
}

TEST(HitsTest, AreThoseOfTraces) {
  Random random;
  for (RandomCases i(200); i.more(); ++i) {
    const Case c = Maker<Random>(random).make(1 + random.below(5));
    const Order order = kAllOrders[random.below(kAllOrders.size())];
    std::map<filtersEntryId_t, HitCounts> expected;
    HitCounts none;
    FrameCount decided, undecided;
    HitCounter counter(c.group, order);
    std::uint64_t number = 0;
    for (const std::string& text : somePackets(c, &random, 20)) {
      const Packet packet = packetFrom(text);
      const Trace traced = trace(c.group, packet, order);
      const std::int64_t time = 10 * static_cast<std::int64_t>(++number);
      (traced.outcome == Hit::kUndecided ? undecided : decided).add(number, time);
      if (traced.entry) expected[*traced.entry].sure.add(number, time);
      for (const filtersEntryId_t id : traced.candidates) expected[id].possible.add(number, time);
      if (traced.outcome == Hit::kMiss) none.sure.add(number, time);
      if (traced.may_be_none) none.possible.add(number, time);
      counter.count(packet, FrameFault::kCut, time);
    }
    const Hits& hits = counter.hits();
    ASSERT_EQ(hits.frames, number);
    ASSERT_EQ(textOf(hits.decided), textOf(decided));
    ASSERT_EQ(textOf(hits.undecided), textOf(undecided));
    ASSERT_EQ(textOf(hits.none), textOf(none)) << c.group;
    ASSERT_EQ(hits.faults[static_cast<std::size_t>(FrameFault::kCut)].frames, number);
    ASSERT_EQ(hits.entries.size(), c.rules.size());
    std::uint64_t rank = 0;
    for (const EntryHits& one : hits.entries) {
      ASSERT_EQ(textOf(one.hits), textOf(expected[one.entry])) << one.entry << '\n' << c.group;
      const std::uint64_t its = rankOf(*c.find(one.entry), order);
      ASSERT_LE(rank, its);
      rank = its;
    }
  }
}

FiltersGroup groupFrom(const std::string& entries) {
  ParsedGroups parsed =
      groupsFromText("filter-groups 1\ngroup 1 priority=1 stage=ingress type=3\n" + entries);
  EXPECT_EQ(parsed.groups.size(), 1u) << parsed.report;
  return std::move(parsed.groups.at(0));
}

// A TCP packet over IPv4 to port 179 with TTL 1, in an Ethernet frame without a tag.
std::string tcpFrame() {
  std::string frame(54, '\0');
  const auto put = [&frame](std::size_t at, int value) { frame[at] = static_cast<char>(value); };
  put(12, 8);
  put(14, 0x45);
  put(17, 40);
  put(22, 1);
  put(23, 6);
  put(37, 179);
  return frame;
}

TEST(HitsTest, AssumeWhatFramesDoNotShow) {
  const FiltersGroup group = groupFrom(
      "entry 1 priority=3 if destination_cpu ttl=1 then permit\n"
      "entry 2 priority=2 if external_vlan_id={5} then permit\n"
      "entry 3 priority=1 if dst_l4_port=179/0xffff then deny\n");
  const auto counted = [&](const char* assumed) {
    HitCounter counter(group, Order::kHighestPriority, packetFrom(assumed));
    const std::string frame = tcpFrame();
    counter.count(frame.data(), frame.size(), frame.size(), Link::kEthernet, 7);
    counter.count(frame.data(), 20, frame.size(), Link::kEthernet, 8);
    std::string text;
    for (const EntryHits& one : counter.hits().entries) text += textOf(one.hits) + "; ";
    return text + textOf(counter.hits().none) + "; " +
           textOf(counter.hits().faults[static_cast<std::size_t>(FrameFault::kCut)]);
  };
  EXPECT_EQ(counted(""),
            "0, perhaps 2 from 1 at 7; 0, perhaps 0; 0, perhaps 2 from 1 at 7; "
            "0, perhaps 1 from 2 at 8; 1 from 2 at 8");
  EXPECT_EQ(counted("destination_cpu=true"),
            "1 from 1 at 7, perhaps 1 from 2 at 8; 0, perhaps 0; 0, perhaps 1 from 2 at 8; "
            "0, perhaps 1 from 2 at 8; 1 from 2 at 8");
  // If the frame has a field, or shows that the packet lacks it, the assumption does not count. The
  // second frame shows neither TTL nor ports.
  EXPECT_EQ(counted("destination_cpu=false ttl=64 dst_l4_port=80 external_vlan_id=5"),
            "0, perhaps 0; 0, perhaps 0; 1 from 1 at 7, perhaps 0; 1 from 2 at 8, perhaps 0; "
            "1 from 2 at 8");
}

TEST(HitsTest, CountsFramesWithoutAKnownFault) {
  const FiltersGroup group = groupFrom("entry 1 priority=1 then deny\n");
  HitCounter counter(group, Order::kAscendingId);
  counter.count(packetFrom(""), static_cast<FrameFault>(200));
  EXPECT_EQ(counter.hits().frames, 1u);
  for (const FrameCount& count : counter.hits().faults) EXPECT_EQ(count.frames, 0u);
}

// --- Two groups ----------------------------------------------------------------------------------

using Pair = std::pair<std::uint32_t, std::uint32_t>;  // of ids; kNone for none

// Each two rules, one of each group, that can both be the first to take the packet, for the same
// values of the unknown fields and in the same reading. Equal matches are read in the same way in
// both groups.
std::set<Pair> pairsOf(const Case& a, const Case& b, const std::string& told, Order order) {
  std::set<Pair> pairs;
  std::vector<PlainRule> rules = a.rules;
  rules.insert(rules.end(), b.rules.begin(), b.rules.end());
  const Rank rank = [order](const PlainRule& rule) { return rankOf(rule, order); };
  for (const PlainPacket& packet : a.everyPacket()) {
    bool fits = true;
    for (std::size_t f = 0; f < packet.size(); ++f) {
      const std::string name = a.fields[f].name + '=';
      if ((' ' + told).find(' ' + name) == std::string::npos) continue;
      fits = fits && told.find(a.fields[f].textOf(packet[f]) + ' ') != std::string::npos;
    }
    if (!fits) continue;
    forEachReading(rules, rowOf(rules, packet), [&](const Takers& takers) {
      Takers firsts[2];
      for (const PlainRule* taker : takers) {
        const bool isOfB = taker >= &rules[a.rules.size()];
        firsts[isOfB].push_back(taker);
      }
      const auto idsOf = [&](const Takers& its) {
        std::vector<std::uint32_t> ids;
        for (const PlainRule* rule : firstOf(its, rank)) ids.push_back(rule->id);
        if (ids.empty()) ids.push_back(kNone);
        return ids;
      };
      for (const std::uint32_t one : idsOf(firsts[0])) {
        for (const std::uint32_t other : idsOf(firsts[1])) pairs.emplace(one, other);
      }
    });
  }
  return pairs;
}

TEST(TrafficComparisonTest, IsExact) {
  Random random;
  for (RandomCases i(400); i.more(); ++i) {
    Maker<Random> maker(random);
    const Case a = maker.make(1 + random.below(3));
    Case b = a;
    if (random.below(4) != 0) maker.add(&b, static_cast<filtersEntryId_t>(b.rules.size()));
    const Order order = kAllOrders[random.below(kAllOrders.size())];
    for (const std::string& text : somePackets(a, &random, 6)) {
      TrafficComparison comparison(a.group, b.group, order);
      comparison.count(packetFrom(text));
      const auto treatment = [](const Case& c, std::uint32_t id) {
        return id == kNone ? kNone : c.find(id)->treatment;
      };
      const std::set<Pair> pairs = pairsOf(a, b, text, order);
      std::set<Pair> expected;
      for (const Pair& pair : pairs) {
        if (treatment(a, pair.first) != treatment(b, pair.second)) expected.insert(pair);
      }
      const TrafficDifferences& found = comparison.differences();
      std::set<Pair> those;
      for (const TreatedDifferently& row : found.pairs) {
        those.emplace(row.a.value_or(kNone), row.b.value_or(kNone));
        EXPECT_EQ(row.hits.sure.frames, pairs.size() == 1 ? 1u : 0u);
        EXPECT_EQ(row.hits.sure.frames + row.hits.possible.frames, 1u);
      }
      ASSERT_EQ(those, expected) << text << nameOf(order) << '\n' << a.group << b.group;
      const bool isSure = !pairs.empty() && expected.size() == pairs.size();
      EXPECT_EQ(found.differing.sure.frames, isSure ? 1u : 0u);
      EXPECT_EQ(found.differing.possible.frames, !isSure && !expected.empty() ? 1u : 0u);
    }
  }
}

// Two different entries can hardly ever both come first, because both groups have both entries, in
// the same order.
TEST(TrafficComparisonTest, FindsOnlyChangedEntriesAmongMany) {
  std::string rules;
  for (int i = 1; i <= 60; ++i) {
    const std::string number = std::to_string(i);
    rules += "entry " + number + " priority=1 if ttl=" + number +
             (i % 2 != 0 ? " then deny\n" : " then permit\n");
  }
  const std::string last = "entry 77 priority=1 then ";
  const FiltersGroup a = groupFrom(rules + last + "deny\n");
  TrafficComparison equal(a, a, Order::kAscendingId);
  equal.count(packetFrom("ip_protocol=6"));
  EXPECT_TRUE(equal.differences().pairs.empty());
  TrafficComparison changed(a, groupFrom(rules + last + "permit\n"), Order::kAscendingId);
  changed.count(packetFrom("ip_protocol=6"));
  ASSERT_EQ(changed.differences().pairs.size(), 1u);
  EXPECT_EQ(changed.differences().pairs[0].a, 77u);
}

TEST(TrafficComparisonTest, KeepsItsCountsWithoutMemory) {
  const FiltersGroup a = groupFrom("entry 1 priority=1 if ttl=1 then permit\n");
  const FiltersGroup b = groupFrom("entry 2 priority=1 if external_vlan_id={5} then deny\n");
  const std::string frame = tcpFrame();
  const Packet open = packetFrom("src_ipv4=10.0.0.1");
  const auto count = [&](TrafficComparison* comparison) {
    comparison->count(frame.data(), frame.size(), frame.size(), Link::kEthernet, 5);
    comparison->count(open);
  };
  TrafficComparison warm(a, b, Order::kAscendingId);
  count(&warm);
  EXPECT_EQ(warm.differences().pairs.size(), 3u);
  for (long allocations = 0; allocations < 1000; ++allocations) {
    TrafficComparison comparison(a, b, Order::kAscendingId);
    memory::refuseAfter(allocations, true);
    try {
      count(&comparison);
    } catch (const std::bad_alloc&) {
    }
    const bool refused = memory::endRefusal();
    const TrafficDifferences& all = comparison.differences();
    EXPECT_EQ(all.frames == 0, all.pairs.empty());
    for (const TreatedDifferently& row : all.pairs) {
      EXPECT_NE(row.hits.sure.frames + row.hits.possible.frames, 0u);
    }
    if (refused) continue;
    EXPECT_EQ(all.frames, 2u);
    return;
  }
  FAIL() << "the calls never end without a refusal";
}

}  // namespace
