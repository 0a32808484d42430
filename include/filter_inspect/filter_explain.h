#ifndef FILTER_INSPECT_FILTER_EXPLAIN_H_
#define FILTER_INSPECT_FILTER_EXPLAIN_H_

// Why something would be refused, and what would not be. Each function asks the filter_common
// library's own checks for the verdict and changes nothing: a report is empty exactly when the
// operation would succeed, and its first finding carries the very code that the operation would
// return. Unlike the operation it does not stop there: every violation is a finding, in the order
// in which the library would meet them.
//
// All of this may be called from any thread, as long as nobody changes the arguments meanwhile. It
// may throw std::bad_alloc.

#include <set>
#include <vector>

#include <filter_common/filter_groups.h>
#include <filter_inspect/filter_report.h>

namespace FiltersInspect {

using FiltersCommon::FiltersEntry;
using FiltersCommon::FiltersGroup;
using FiltersCommon::filtersGroupStage_t;
using FiltersCommon::filtersGroupType_t;

// --- Refusals ---

// Of insertEntry(), into this group or into one of this stage and type.
FILTERS_API Report explainInsert(const FiltersGroup& group, const FiltersEntry& entry);
FILTERS_API Report explainInsert(filtersGroupStage_t stage, filtersGroupType_t type,
                                 const FiltersEntry& entry);
// Of setStage() and setType().
FILTERS_API Report explainStage(const FiltersGroup& group, filtersGroupStage_t stage);
FILTERS_API Report explainType(const FiltersGroup& group, filtersGroupType_t type);
// Of setMatches(), whether the matches may stand in one entry: every pair that may not.
FILTERS_API Report explainMatches(const FiltersEntry::Matches& matches);
// Of setMatch() and setCounter(), whether one more may join those held. A code that no class
// carries cannot join.
FILTERS_API Report explainMatch(const FiltersEntry& entry, FiltersCommon::filtersMatch_t code);
FILTERS_API Report explainCounter(const FiltersEntry& entry, const FiltersCommon::Counter& counter);

// --- Capabilities ---

// What a stage and a type admit together: the matches are the type's, the rest the stage's. Nothing
// of an unknown one. `valid`: whether setters would give a group both.
struct Capability {
  bool valid = false;
  std::set<FiltersCommon::filtersMatch_t> matches;
  std::set<FiltersCommon::filtersAction_t> actions;
  std::set<filtersGroupType_t> types;    // of the stage
  std::vector<policer::Stage> policers;  // ascending
};
FILTERS_API Capability capabilityOf(filtersGroupStage_t stage, filtersGroupType_t type);

// Every stage and type that setters would give a group and that would admit the entry, ascending.
struct Placement {
  filtersGroupStage_t stage;
  filtersGroupType_t type;
};
FILTERS_API std::vector<Placement> placementsOf(const FiltersEntry& entry);

}  // namespace FiltersInspect

#endif  // FILTER_INSPECT_FILTER_EXPLAIN_H_
