#ifndef FILTER_INSPECT_FILTER_DIFF_H_
#define FILTER_INSPECT_FILTER_DIFF_H_

// What two groups differ in, and the shortest way from one to the other: a process that changes one
// of many rules can send that step in place of the group.
//
// Nothing here changes its const arguments, and all of it may be called from any thread, as long as
// nobody changes them meanwhile. It may throw std::bad_alloc, and nothing else.

#include <cstdint>
#include <string>
#include <vector>

#include <filter_common/filter_groups.h>
#include <filter_inspect/filter_report.h>

namespace FiltersInspect {

// Notes: first of the head, a finding for each number that differs; then entry by entry in
// ascending order of their ids: an entry that one group lacks (kEntryAdded, kEntryRemoved), or each
// part of an entry that differs (kEntryChanged: the entry's priority, policer or parent, a match,
// an action, a counter). `before` is the part in a, `after` the part in b, empty where there is
// none. Empty exactly when a == b.
FILTERS_API Report diff(const FiltersCommon::FiltersGroup& a, const FiltersCommon::FiltersGroup& b);

// One call of a member of FiltersGroup.
struct Step {
  enum class Kind : std::uint8_t { kRemove, kInsert, kSetPriority, kSetStage, kSetType };
  Kind kind = Kind::kRemove;
  FiltersCommon::filtersEntryId_t entry = 0;  // kRemove; kInsert: the target's entry of this id
  std::int32_t value = 0;                     // the others: the new priority, stage or type
};

// One line without its end: "set-stage ingress", "set-type 3", "set-priority 5", "remove entry 7",
// "insert entry 10 ..." with the entry's text out of `to`.
FILTERS_API std::string toText(const Step& step, const FiltersCommon::FiltersGroup& to);

// What comes first among plans of equally many steps. Entries that the setters of stage and type
// would refuse leave before them, and come in after them, in either order.
enum class PlanOrder : std::uint8_t {
  // Entries come in as soon as they can stay, and leave as late as they can, behind those that come
  // in between the same setters. While stage and type stay, the group holds at any time every id of
  // one of the two groups, so that no packet is without a rule; it can hold more entries than both.
  kAddFirst,
  // Entries that the target lacks leave first, those that only it has come in last: the group never
  // holds more entries than the larger of the two.
  kRemoveFirst,
};

// The fewest steps that make a group equal to `to` out of one equal to `from`, the library
// accepting each; they have been taken on a copy. There is no plan, and the report says why, when
// the groups' ids differ, when no setter leads to the target's stage and type, and when an entry of
// the target is one that the target itself would refuse: groups that were read from bytes can be
// so.
struct Plan {
  bool possible = false;
  // Whether there are no fewer steps. A different stage and type can be reached by way of others,
  // and each entry stays or goes by the ways taken; of groups whose entries differ in many manners
  // only so many ways are looked at, and the best of them is the plan.
  bool fewest = false;
  std::vector<Step> steps;  // none when the groups are equal, or when there is no plan
  Report report;            // empty when there is a plan
};
FILTERS_API Plan plan(const FiltersCommon::FiltersGroup& from,
                      const FiltersCommon::FiltersGroup& to,
                      PlanOrder order = PlanOrder::kAddFirst);

// Takes the steps on the group, which is not `to` itself; stops at the first refusal and returns
// it. FILTERS_ERR_NOT_FOUND also for an entry to insert that the target lacks, and
// FILTERS_ERR_INVALID_ARGUMENT for a priority that a group cannot have and for a kind that is none.
FILTERS_NODISCARD FILTERS_API FiltersCommon::filtersErr_t apply(
    const std::vector<Step>& steps, const FiltersCommon::FiltersGroup& to,
    FiltersCommon::FiltersGroup* group);

}  // namespace FiltersInspect

#endif  // FILTER_INSPECT_FILTER_DIFF_H_
