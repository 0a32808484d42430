// What rules do to each other, beside every packet of tiny groups.

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
  for (int i = 0; i < 4500 / FILTERS_SLOWNESS; ++i) {
    const Case c = Maker<Random>(random).make(3 + random.below(4));
    const auto rows = c.everyRow();
    for (Order order : kOrders) {
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

TEST(AnalyseTest, ComparesTheTreatmentOfEveryPacket) {
  Random random;
  for (int i = 0; i < 2000 / FILTERS_SLOWNESS; ++i) {
    Maker<Random> maker(random);
    const Case a = maker.make(1 + random.below(4));
    // A few rules anew, or all.
    Case b = random.below(3) == 0 ? maker.make(1 + random.below(4)) : a;
    if (random.below(2) == 0) maker.add(&b, static_cast<filtersEntryId_t>(b.rules.size()));
    for (Order order : kOrders) ASSERT_EQ(faultOfComparison(a, b, order), "") << i;
  }
}

}  // namespace
