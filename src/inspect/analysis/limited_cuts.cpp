#include "limited_cuts.h"

#include <algorithm>

namespace FiltersInspect {
namespace {

constexpr std::uint64_t kRulesAtTheirLimit = 20;
constexpr std::uint64_t kHardlyAny = 100, kCheap = 2000;
// The number of ranges inspected to find overlapping rules, for each step that a rule may use.
constexpr std::uint64_t kRangesAStep = 20000;

}  // namespace

std::uint64_t looksFor(std::uint64_t max_steps) {
  return std::min(max_steps, ~std::uint64_t{0} / kRangesAStep) * kRangesAStep;
}

Cuts::Cuts(const Space& space, std::uint64_t max_steps, std::size_t rules, const Progress* progress)
    : cut_(space, 0), of_one_(max_steps) {
  cut_.setProgress(progress);
  const std::uint64_t at_limit = std::max<std::uint64_t>(kRulesAtTheirLimit, rules / 1000);
  of_all_ = std::min(max_steps, ~std::uint64_t{0} / at_limit) * at_limit;
}

Cut::Outcome Cuts::runFor(std::uint64_t steps, const std::vector<SetId>& sets,
                          std::vector<Candidate>* candidates, bool quick, Cut::Watcher* watcher) {
  // Even after all steps are used, a cut may use kHardlyAny steps.
  steps = std::min(steps, std::max(of_all_, kHardlyAny));
  cut_.setSteps(steps);
  const Cut::Outcome outcome = cut_.run(sets, candidates, quick, watcher);
  of_all_ -= std::min(of_all_, steps - cut_.stepsLeft());
  return outcome;
}

Cut::Outcome Cuts::runBriefly(const std::vector<SetId>& sets, std::vector<Candidate>* candidates,
                              Cut::Watcher* watcher) {
  return runFor(std::min(of_one_, kCheap), sets, candidates, false, watcher);
}

}  // namespace FiltersInspect
