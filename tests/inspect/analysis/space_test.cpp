// Tests sets of packets in small spaces by trying every packet.

#include "../../../src/inspect/analysis/cut.h"
#include "../../../src/inspect/analysis/meetings.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <random>

#include "../../cases.h"

using namespace FiltersInspect;

namespace {

using Outcome = Cut::Outcome;
using Packet = std::vector<std::optional<std::uint64_t>>;
using Asked = std::vector<Constraint>;

// --- Plain evaluation ----------------------------------------------------------------------------

bool takes(const Asked& set, const Packet& packet) {
  std::vector<int> held(packet.size(), -1);  // for each field; -1: the set has no condition on it
  for (const Constraint& asked : set) {
    const auto& value = packet[asked.field];
    const bool holds =
        value && (asked.asks == Asks::kMasked ? (*value & asked.last) == (asked.first & asked.last)
                                              : asked.first <= *value && *value <= asked.last);
    held[asked.field] = std::max(held[asked.field], holds ? 1 : 0);
  }
  return std::count(held.begin(), held.end(), 0) == 0;
}

std::vector<Packet> everyPacket(const std::vector<Space::Field>& fields) {
  std::vector<Packet> packets = {{}};
  for (const Space::Field& field : fields) {
    std::vector<Packet> longer;
    for (const Packet& packet : packets) {
      const auto add = [&](std::optional<std::uint64_t> value) {
        longer.push_back(packet);
        longer.back().push_back(value);
      };
      if (field.may_lack) add(std::nullopt);
      for (std::uint64_t value = 0; value < std::uint64_t{1} << field.width; ++value) add(value);
    }
    packets = longer;
  }
  return packets;
}

// A random space with its sets, the packets in each set, and the set of all packets.
struct Case {
  explicit Case(std::mt19937& random) : space({}) {
    const auto below = [&random](std::size_t limit) {
      return static_cast<unsigned>(random() % limit);
    };
    fields.resize(1 + below(3));
    std::vector<bool> ranged;
    for (auto& field : fields) {
      field = {1 + below(fields.size() == 1 ? 6 : 3), below(2) == 0};
      ranged.push_back(below(2) == 0);
    }
    packets = everyPacket(fields);
    space = Space(fields);
    space.add({});
    sets.emplace_back();
    for (unsigned left = 1 + below(12); left > 0; --left) {
      Asked set;
      for (std::uint32_t f = static_cast<std::uint32_t>(fields.size()); f-- > 0;) {
        const unsigned values = 1U << fields[f].width;
        unsigned count = below(3);
        if (!ranged[f]) count = std::min(count, 1U);
        for (; count > 0; --count) {
          std::uint64_t a = below(values), b = below(values);
          if (ranged[f] && a > b) std::swap(a, b);
          set.push_back({f, ranged[f] ? Asks::kRange : Asks::kMasked, a, b});
        }
      }
      EXPECT_EQ(space.add(set), sets.size());
      sets.push_back(set);
    }
    space.seal();
    for (const Asked& set : sets) {
      members.emplace_back();
      for (const Packet& packet : packets) members.back().push_back(takes(set, packet));
    }
  }

  bool in(SetId set, std::size_t packet) const { return members[set][packet]; }
  // The index in `packets` of the packet at a point. Fields that the point does not set keep their
  // value in the first packet.
  std::size_t find(const Point& point) const {
    Packet packet = packets.front();
    for (const auto& [field, value] : space.valuesOf(point)) packet[field] = value;
    const auto found = std::find(packets.begin(), packets.end(), packet);
    EXPECT_NE(found, packets.end());
    return static_cast<std::size_t>(found - packets.begin());
  }

  std::vector<Space::Field> fields;
  std::vector<Packet> packets;
  Space space;
  std::vector<Asked> sets;
  std::vector<std::vector<bool>> members;  // for each set, which packets are in it
};

class SpaceTest : public testing::Test {
 protected:
  // Returns the number of cases that were checked.
  int forEachCase(int count, const std::function<void(const Case&)>& check) {
    RandomCases i(count);
    for (; i.more() && !HasFailure(); ++i) {
      SCOPED_TRACE(i.done());
      check(Case(random));
    }
    return i.done();
  }
  std::mt19937 random{1};
};

TEST_F(SpaceTest, SaysOfTwoSetsWhatTheirPacketsSay) {
  forEachCase(1500, [](const Case& c) {
    std::vector<SetId> all;
    for (SetId a = 0; a < c.sets.size(); ++a) all.push_back(a);
    all.push_back(kNothing);
    Meetings meetings(c.space, all, ~std::uint64_t{0});
    for (SetId a = 0; a < c.sets.size(); ++a) {
      std::vector<std::uint32_t> expected, met;
      for (SetId b = 0; b < c.sets.size(); ++b) {
        bool meet = false, holds = true;
        for (std::size_t p = 0; p < c.packets.size(); ++p) {
          meet = meet || (c.in(a, p) && c.in(b, p));
          holds = holds && (c.in(a, p) || !c.in(b, p));
        }
        ASSERT_EQ(c.space.meet(a, b), meet);
        ASSERT_EQ(c.space.holds(a, b), holds);
        if (!meet) continue;
        std::vector<Candidate> none;
        Cut cut(c.space, 10);
        ASSERT_EQ(cut.run({a, b}, &none, false), Outcome::kLeft);
        const std::size_t common = c.find(cut.point());
        ASSERT_TRUE(c.in(a, common) && c.in(b, common));
        if (b > 0) expected.push_back(b);
      }
      meetings.meeting(a, 1, all.size(), &met);
      ASSERT_EQ(met, expected);
      ASSERT_TRUE(!c.space.meet(a, kNothing) && c.space.holds(a, kNothing) &&
                  !c.space.holds(kNothing, a));
    }
  });
}

// Checks the outcome of a cut by trying every packet. The candidates have random levels, and some
// of them stop the cut. A packet goes to a candidate of the lowest level whose set has the packet.
// A packet that is in no candidate's set is left.
TEST_F(SpaceTest, CutsWhatIsThere) {
  int seen[4] = {};
  const auto check = [&](const Case& c) {
    std::vector<Candidate> candidates;
    for (SetId set = 1; set < c.sets.size(); ++set) {
      const auto level = static_cast<std::uint32_t>(random() % 3);
      candidates.push_back({set, level, level > 0 && random() % 4 == 0, 0});
    }
    // The lowest level of the candidates whose sets have the packet. `*stops` becomes true if a
    // candidate of this level stops the cut.
    const auto first = [&](std::size_t p, bool* stops) {
      std::uint32_t level = 3;
      *stops = false;
      for (const Candidate& candidate : candidates) {
        if (!c.in(candidate.set, p) || candidate.level > level) continue;
        *stops = candidate.stops || (*stops && candidate.level == level);
        level = candidate.level;
      }
      return level;
    };
    for (SetId set = 0; set < c.sets.size(); ++set) {
      std::size_t left = 0, stopped = 0;
      for (std::size_t p = 0; p < c.packets.size(); ++p) {
        bool stops;
        if (!c.in(set, p)) continue;
        left += first(p, &stops) == 3 ? 1 : 0;
        stopped += stops ? 1 : 0;
      }
      for (const bool quick : {false, true}) {
        Cut cut(c.space, 100000);
        std::vector<Candidate> list = candidates;
        const Outcome outcome = cut.run({set}, &list, quick);
        ++seen[static_cast<int>(outcome)];
        ASSERT_EQ(outcome == Outcome::kNothingLeft, left + stopped == 0);
        if (outcome == Outcome::kNothingLeft || quick) continue;
        bool stops;
        const std::size_t p = c.find(cut.point());
        ASSERT_TRUE(c.in(set, p));
        ASSERT_EQ(outcome == Outcome::kLeft, first(p, &stops) == 3);
        ASSERT_TRUE(outcome == Outcome::kLeft || stops);
      }
    }
  };
  const int enough = forEachCase(1500, check) * 2 / 5;
  EXPECT_GT(seen[0], enough);
  EXPECT_GT(seen[1], enough);
  EXPECT_GT(seen[2], enough);
  EXPECT_EQ(seen[3], 0);
}

// A cut calls its watcher for each candidate that takes packets, and for each set of packets that
// no candidate takes.
TEST_F(SpaceTest, TellsAWatcherOfEverything) {
  struct Heard : Cut::Watcher {
    explicit Heard(const Case& itsCase) : c(itsCase) {}
    void took(const Candidate& candidate, const Cut& cut) override {
      const std::size_t p = c.find(cut.point());
      EXPECT_TRUE(c.in(candidate.set, p));
      takers[candidate.set] = true;
    }
    bool left(const Cut& cut) override {
      leftOver = true;
      const std::size_t p = c.find(cut.point());
      for (SetId set = 1; set < c.sets.size(); ++set) EXPECT_FALSE(c.in(set, p));
      return true;
    }
    const Case& c;
    std::vector<bool> takers = std::vector<bool>(c.sets.size());
    bool leftOver = false;
  };
  forEachCase(500, [](const Case& c) {
    std::vector<Candidate> list;
    for (SetId set = 1; set < c.sets.size(); ++set) list.push_back({set, set, false, 0});
    Heard heard(c);
    Cut cut(c.space, 100000);
    ASSERT_EQ(cut.run({0}, &list, false, &heard), Outcome::kNothingLeft);
    std::vector<bool> takers(c.sets.size());
    bool left = false;
    for (std::size_t p = 0; p < c.packets.size(); ++p) {
      SetId first = 1;
      while (first < c.sets.size() && !c.in(first, p)) ++first;
      if (first == c.sets.size()) {
        left = true;
      } else {
        takers[first] = true;
      }
    }
    ASSERT_EQ(heard.takers, takers);
    ASSERT_EQ(heard.leftOver, left);
  });
}

// The sets are the clauses of a problem of propositional logic: each clause of three literals is a
// mask of three bits. The packets that are left satisfy all clauses.
TEST_F(SpaceTest, SolvesClausesWithinItsSteps) {
  constexpr unsigned kVariables = 30;
  int outcomes[4] = {};
  for (int i = 0; i < 20; ++i) {
    Space space({{kVariables, false}});
    const SetId all = space.add({});
    Asked clauses;
    std::vector<Candidate> list;
    for (unsigned n = 0; n < kVariables * 43 / 10; ++n) {  // the ratio with the most hard cases
      std::uint64_t mask = 0;
      while (mask == 0 || (mask & (mask - 1)) == 0 || (mask & (mask - 1) & (mask - 2)) == 0 ||
             __builtin_popcountll(mask) < 3) {
        mask |= std::uint64_t{1} << random() % kVariables;
      }
      clauses.push_back({0, Asks::kMasked, random() & mask, mask});
      list.push_back({space.add({clauses.back()}), 0, false, 0});
    }
    space.seal();
    Cut cut(space, 100000);
    const Outcome outcome = cut.run({all}, &list, false);
    ++outcomes[static_cast<int>(outcome)];
    if (outcome != Outcome::kLeft) continue;
    const auto values = space.valuesOf(cut.point());
    for (const Constraint& clause : clauses) EXPECT_FALSE(takes({clause}, {values[0].second}));
  }
  EXPECT_GT(outcomes[0], 2);
  EXPECT_GT(outcomes[1], 2);
  EXPECT_EQ(outcomes[3], 0);
}

TEST_F(SpaceTest, GivesUpWhenItsStepsAreUsed) {
  Space space({{16, false}});
  const SetId all = space.add({});
  std::vector<Candidate> list;
  for (unsigned i = 0; i < 16; ++i) {
    list.push_back({space.add({{0, Asks::kMasked, 1U << i, 1U << i}}), 0, false, 0});
  }
  list.push_back({space.add({{0, Asks::kMasked, 0, 0xffff}}), 0, false, 0});
  space.seal();
  Cut cut(space, 1000);
  EXPECT_EQ(cut.run({all}, &list, false), Outcome::kNothingLeft);
  const std::uint64_t needed = 1000 - cut.stepsLeft();
  cut.setSteps(needed);
  EXPECT_EQ(cut.run({all}, &list, false), Outcome::kUndecided);
  cut.setSteps(needed + 1);
  EXPECT_EQ(cut.run({all}, &list, false), Outcome::kNothingLeft);
}

// A step is the same amount of work for sets with few ranges and for sets with many. Comparing a
// set of few ranges with a set of many ranges must be fast.
TEST_F(SpaceTest, TakesMoreStepsForMoreRanges) {
  constexpr std::uint64_t kRanges = 4096;
  Space space({{16, false}});
  Asked every, nearly, next;
  std::vector<SetId> single;
  for (std::uint64_t i = 0; i < kRanges; ++i) {
    every.push_back({0, Asks::kRange, 4 * i, 4 * i});
    nearly.push_back({0, Asks::kRange, 4 * i + (i % 2), 4 * i + 1});
    next.push_back({0, Asks::kRange, 4 * i + 2, 4 * i + 2});
    if (i % 64 == 0) single.push_back(space.add({every.back()}));
  }
  const SetId inner = space.add(every), outer = space.add(nearly), between = space.add(next);
  space.seal();
  const auto outcome = [&](std::uint64_t steps, std::vector<Candidate> list) {
    return Cut(space, steps).run({inner}, &list, false);
  };
  EXPECT_EQ(outcome(10, {{outer, 0, false, 0}}), Outcome::kUndecided);
  EXPECT_EQ(outcome(200, {{outer, 0, false, 0}}), Outcome::kLeft);
  std::vector<std::uint32_t> met;
  const std::vector<SetId> sets = {between, between, outer};
  Meetings patient(space, sets, 8 * kRanges), hasty(space, sets, kRanges);
  EXPECT_TRUE(patient.meeting(inner, 0, 3, &met));
  EXPECT_EQ(met, (std::vector<std::uint32_t>{2}));
  EXPECT_FALSE(hasty.meeting(inner, 0, 3, &met));
  EXPECT_EQ(met, (std::vector<std::uint32_t>{1, 2}));
  std::vector<Candidate> few;
  for (SetId set : single) few.push_back({set, 0, false, 0});
  EXPECT_EQ(outcome(200, few), Outcome::kLeft);
}

// A 128-bit address is two fields of 64 bits. The largest value of such a field must work like any
// other value.
TEST_F(SpaceTest, TakesFieldsOf64Bits) {
  const std::uint64_t kMost = ~std::uint64_t{0};
  Space space({{64, true}, {64, false}});
  const SetId high = space.add({{0, Asks::kMasked, kMost, kMost << 1}});
  const SetId one = space.add({{0, Asks::kRange, kMost, kMost}, {1, Asks::kMasked, 0, 1}});
  const SetId other = space.add({{0, Asks::kRange, kMost - 1, kMost - 1}});
  const SetId rest = space.add({{0, Asks::kRange, kMost, kMost}, {1, Asks::kMasked, 1, 1}});
  space.seal();
  Cut cut(space, 1000);
  std::vector<Candidate> list = {{one, 0, false, 0}, {other, 0, false, 0}, {rest, 0, false, 0}};
  EXPECT_EQ(cut.run({high}, &list, false), Outcome::kNothingLeft);
  list = {{one, 0, false, 0}, {other, 0, false, 0}};
  EXPECT_EQ(cut.run({high}, &list, false), Outcome::kLeft);
  EXPECT_EQ(space.valuesOf(cut.point())[0].second, kMost);
  EXPECT_EQ(space.valuesOf(cut.point())[1].second, 1U);
}

}  // namespace
