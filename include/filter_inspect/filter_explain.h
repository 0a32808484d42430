#ifndef FILTER_INSPECT_FILTER_EXPLAIN_H_
#define FILTER_INSPECT_FILTER_EXPLAIN_H_

// These functions say why something would be refused, and what would be admitted. Each function
// calls the checks of the filter_common library and changes nothing. A report is empty exactly when
// the operation would succeed, and its first finding has the code that the operation would return.
// The operation stops at the first violation. A report has a finding for every violation, in the
// order in which the library checks.
//
// All functions may be called from any thread, if nobody changes the arguments meanwhile. They may
// throw std::bad_alloc.

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

// Would insertEntry() refuse the entry, in this group or in a group of this stage and type?
FILTERS_API Report explainInsert(const FiltersGroup& group, const FiltersEntry& entry);
FILTERS_API Report explainInsert(filtersGroupStage_t stage, filtersGroupType_t type,
                                 const FiltersEntry& entry);
// Would setStage() or setType() refuse the value?
FILTERS_API Report explainStage(const FiltersGroup& group, filtersGroupStage_t stage);
FILTERS_API Report explainType(const FiltersGroup& group, filtersGroupType_t type);
// Would setMatches() refuse the matches? There is a finding for every two matches that cannot be in
// one entry.
FILTERS_API Report explainMatches(const FiltersEntry::Matches& matches);
// Would setMatch() refuse a match of this code? Would setCounter() refuse this counter? A match
// code without a class is refused.
FILTERS_API Report explainMatch(const FiltersEntry& entry, FiltersCommon::filtersMatch_t code);
FILTERS_API Report explainCounter(const FiltersEntry& entry, const FiltersCommon::Counter& counter);

// --- Capabilities ---

// The matches, actions and policer stages that a stage and a type admit together. The type decides
// about matches, the stage about everything else. An unknown stage or type admits nothing. `valid`
// is true if the setters would give a group this stage and type together.
struct Capability {
  bool valid = false;
  std::set<FiltersCommon::filtersMatch_t> matches;
  std::set<FiltersCommon::filtersAction_t> actions;
  std::set<filtersGroupType_t> types;    // that the stage admits
  std::vector<policer::Stage> policers;  // ascending
};
FILTERS_API Capability capabilityOf(filtersGroupStage_t stage, filtersGroupType_t type);

// A stage and a type that the setters would give a group, and that together admit the entry. The
// function returns all such combinations, in ascending order.
struct Placement {
  filtersGroupStage_t stage;
  filtersGroupType_t type;
};
FILTERS_API std::vector<Placement> placementsOf(const FiltersEntry& entry);

}  // namespace FiltersInspect

#endif  // FILTER_INSPECT_FILTER_EXPLAIN_H_
