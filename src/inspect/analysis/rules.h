#ifndef FILTER_INSPECT_SRC_ANALYSIS_RULES_H_
#define FILTER_INSPECT_SRC_ANALYSIS_RULES_H_

// The rules of groups as sets of one space, in the order in which they are gone through.

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include <filter_common/filter_entries.pb.h>
#include <filter_inspect/filter_analysis.h>

#include "cut.h"
#include "report/limited_report.h"
#include "meetings.h"
#include "rule_space.h"

namespace FiltersInspect {

// Smaller comes first.
std::uint64_t rankOf(Order order, FiltersCommon::filtersEntryId_t id,
                     FiltersCommon::filtersEntryPriority_t priority);

// What is done with a packet: two entries treat packets alike when the keys are the same. The text
// is for people, "permit, set_pcp=5, policer 10 ingress", and need not tell everything.
std::string treatmentKey(const FiltersCommon::FiltersEntryPB& entry);
std::string treatmentText(const FiltersCommon::FiltersEntry& entry);

struct Rule {
  FiltersCommon::filtersEntryId_t id;
  FiltersCommon::filtersEntryPriority_t priority;
  std::uint32_t number;     // in the space
  SetId must, may;          // what it takes under every reading, under some
  std::uint32_t matches;    // the same number: the same matches, of whatever group
  std::uint32_t treatment;  // the same number: the same treatment
  // Positions: those before `ranks_begin` come before it, those from `ranks_end` on after it.
  std::uint32_t ranks_begin, ranks_end;
};

// Those of up to two groups.
class Rules {
 public:
  Rules(std::initializer_list<const FiltersCommon::FiltersGroup*> groups, Order order);
  RuleSpace& space() { return space_; }
  const std::vector<Rule>& of(std::size_t group) const { return rules_[group]; }
  // Finds rules by what they may take, by positions.
  Meetings meetingsOf(std::size_t group, std::uint64_t max_looks) const;
 private:
  void read(const FiltersCommon::FiltersGroup& group, Order order);

  RuleSpace space_;
  std::vector<std::vector<Rule>> rules_;
  std::vector<bool> ranged_;  // halves that are asked ranges of, where two groups are compared
  MatchNumbers numbers_;
  std::map<std::string, std::uint32_t> matches_, treatments_;
};

// A report about entries of a group, of at most so many findings.
class EntryFindings {
 public:
  EntryFindings(FiltersCommon::filtersGroupId_t group, std::size_t most)
      : group_(group), report_(most) {}
  // Whether one more is kept: then add() is to follow, else it has been counted.
  bool room(Code code) { return report_.takes(severityOf(code)); }
  Finding& add(Code code, std::optional<FiltersCommon::filtersEntryId_t> entry);
  Report take() { return report_.take(); }
 private:
  FiltersCommon::filtersGroupId_t group_;
  LimitedReport report_;
};

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

// "entry 10", "entries 10, 20 and 30", "entries 1, 2, 3, 4 and 60 more"; with more than are known
// "entries 10, 20 and others".
std::string entriesText(const std::vector<std::uint32_t>& ids, bool others = false);

}  // namespace FiltersInspect

#endif  // FILTER_INSPECT_SRC_ANALYSIS_RULES_H_
