#ifndef FILTER_INSPECT_SRC_ANALYSIS_LIMITED_CUTS_H_
#define FILTER_INSPECT_SRC_ANALYSIS_LIMITED_CUTS_H_

// Limits the work of an analysis.

#include <cstddef>
#include <cstdint>
#include <vector>

#include <filter_inspect/filter_analysis.h>

#include "cut.h"

namespace FiltersInspect {

// The number of ranges that may be examined to find overlapping rules, if each rule may use
// `max_steps` steps.
std::uint64_t looksFor(std::uint64_t max_steps);

// Makes cuts for many rules. Each rule may use `max_steps` steps. All rules together may use the
// larger of two numbers: twenty times `max_steps`, and `max_steps` times a thousandth of the number
// of rules.
class Cuts {
 public:
  Cuts(const Space& space, std::uint64_t max_steps, std::size_t rules, const Progress* progress);
  // Like Cut::run() with `quick`.
  Cut::Outcome run(const std::vector<SetId>& sets, std::vector<Candidate>* candidates,
                   Cut::Watcher* watcher = nullptr) {
    return runFor(of_one_, sets, candidates, true, watcher);
  }
  // Like run(), but with few steps, to find an example packet. If it finds none, the caller uses
  // another example that it already has.
  Cut::Outcome runBriefly(const std::vector<SetId>& sets, std::vector<Candidate>* candidates,
                          Cut::Watcher* watcher);
  // Like Cut::run() without `quick`, so that the watcher is called for every part.
  Cut::Outcome runThrough(const std::vector<SetId>& sets, std::vector<Candidate>* candidates,
                          Cut::Watcher* watcher) {
    return runFor(of_one_, sets, candidates, false, watcher);
  }
  // The last cut, for callers that need its part after kLeft or kStopped.
  const Cut& cut() const { return cut_; }
 private:
  Cut::Outcome runFor(std::uint64_t steps, const std::vector<SetId>& sets,
                      std::vector<Candidate>* candidates, bool quick, Cut::Watcher* watcher);
  Cut cut_;
  std::uint64_t of_one_, of_all_;
};

}  // namespace FiltersInspect

#endif  // FILTER_INSPECT_SRC_ANALYSIS_LIMITED_CUTS_H_
