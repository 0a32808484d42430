#ifndef FILTER_INSPECT_SRC_ANALYSIS_LIMITED_CUTS_H_
#define FILTER_INSPECT_SRC_ANALYSIS_LIMITED_CUTS_H_

// How much work an analysis does, and who hears of its progress.

#include <cstddef>
#include <cstdint>
#include <vector>

#include <filter_inspect/filter_analysis.h>

#include "cut.h"

namespace FiltersInspect {

// How many ranges are looked at to find which rules meet, where one rule may take so many steps.
std::uint64_t looksFor(std::uint64_t max_steps);

// Cuts of many rules: each may take so many steps, and all together as many as twenty rules, or as
// one in a thousand of them.
class Cuts {
 public:
  Cuts(const Space& space, std::uint64_t max_steps, std::size_t rules);
  // As Cut::run(), quick.
  Cut::Outcome run(const std::vector<SetId>& sets, std::vector<Candidate>* candidates,
                   Cut::Watcher* watcher = nullptr) {
    return runFor(of_one_, sets, candidates, true, watcher);
  }
  // The same for packets to show, within a few steps: there are others to show.
  Cut::Outcome runBriefly(const std::vector<SetId>& sets, std::vector<Candidate>* candidates,
                          Cut::Watcher* watcher);
  // Not quick: the watcher hears of everything.
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

// Calls the progress function, if there is one.
void tell(const AnalysisOptions& options, std::size_t done, std::size_t all);

}  // namespace FiltersInspect

#endif  // FILTER_INSPECT_SRC_ANALYSIS_LIMITED_CUTS_H_
