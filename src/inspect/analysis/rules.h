#ifndef FILTER_INSPECT_SRC_ANALYSIS_RULES_H_
#define FILTER_INSPECT_SRC_ANALYSIS_RULES_H_

// The rules of one or two groups as sets of one space, in the order of the groups.

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
  std::uint32_t number;     // its number in the space
  SetId must, may;          // the packets that it takes under every reading, or under some
  std::uint32_t matches;    // equal for equal matches, in both groups
  std::uint32_t treatment;  // equal for equal treatments
  // Positions of rules: rules before `ranks_begin` come first, rules from `ranks_end` on come
  // later, and the rules between these positions have equal rank.
  std::uint32_t ranks_begin, ranks_end;
};

// The rules of up to two groups, and packet sets that are compared with the rules.
class Rules {
 public:
  Rules(std::initializer_list<const FiltersCommon::FiltersGroup*> groups, Order order,
        std::vector<std::vector<FieldSet>> sets = {});
  RuleSpace& space() { return space_; }
  const std::vector<Rule>& of(std::size_t group) const { return rules_[group]; }
  // An index of the packets that each rule of the group may take.
  Meetings meetingsOf(std::size_t group, std::uint64_t max_looks) const;
 private:
  void read(const FiltersCommon::FiltersGroup& group, Order order);

  RuleSpace space_;
  std::vector<std::vector<Rule>> rules_;
  std::vector<bool> ranged_;  // halves of fields with ranges, if two groups are compared
  MatchNumbers numbers_;
  std::map<std::string, std::uint32_t> matches_, treatments_;
};

}  // namespace FiltersInspect

#endif  // FILTER_INSPECT_SRC_ANALYSIS_RULES_H_
