#ifndef FILTER_INSPECT_SRC_ANALYSIS_LIMITED_CUTS_H_
#define FILTER_INSPECT_SRC_ANALYSIS_LIMITED_CUTS_H_

// Limits the work of an analysis, and reports its progress.

#include <cstddef>
#include <cstdint>
#include <vector>

#include <filter_inspect/filter_analysis.h>

#include "cut.h"

namespace FiltersInspect {

// Budget of ranges inspected to find overlapping rules, from the per-rule step limit.
std::uint64_t looksFor(std::uint64_t max_steps);

// Cuts for many rules with a limit for each. All together may use the steps of twenty rules at
// their limit, or of one rule in a thousand if that is more.
class Cuts {
 public:
  Cuts(const Space& space, std::uint64_t max_steps, std::size_t rules);
  // As Cut::run() with `quick`.
  Cut::Outcome run(const std::vector<SetId>& sets, std::vector<Candidate>* candidates,
                   Cut::Watcher* watcher = nullptr) {
    return runFor(of_one_, sets, candidates, true, watcher);
  }
  // The same for packets to show, with few steps: if one is not found, there are others to show.
  Cut::Outcome runBriefly(const std::vector<SetId>& sets, std::vector<Candidate>* candidates,
                          Cut::Watcher* watcher);
  // As Cut::run() without `quick`: the watcher is called for every part.
  Cut::Outcome runThrough(const std::vector<SetId>& sets, std::vector<Candidate>* candidates,
                          Cut::Watcher* watcher) {
    return runFor(of_one_, sets, candidates, false, watcher);
  }
 private:
  Cut::Outcome runFor(std::uint64_t steps, const std::vector<SetId>& sets,
                      std::vector<Candidate>* candidates, bool quick, Cut::Watcher* watcher);
  Cut cut_;
  std::uint64_t of_one_, of_all_;
};

// Calls the progress function if there is one.
void tell(const AnalysisOptions& options, std::size_t done, std::size_t all);

}  // namespace FiltersInspect

#endif  // FILTER_INSPECT_SRC_ANALYSIS_LIMITED_CUTS_H_
