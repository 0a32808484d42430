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
#include "meetings.h"
#include "rule_space.h"

namespace FiltersInspect {

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

}  // namespace FiltersInspect

#endif  // FILTER_INSPECT_SRC_ANALYSIS_RULES_H_
