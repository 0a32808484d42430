#ifndef FILTER_INSPECT_FILTER_DIFF_H_
#define FILTER_INSPECT_FILTER_DIFF_H_

// Finds the differences between two groups, and the fewest steps that make one group from the
// other. For example, a process that changes one of many rules can send a single step instead of
// the whole group.
//
// The functions may be called from any thread, if nobody changes the arguments meanwhile. They may
// throw std::bad_alloc, and nothing else.

#include <cstdint>
#include <string>
#include <vector>

#include <filter_common/filter_groups.h>
#include <filter_inspect/filter_report.h>

namespace FiltersInspect {

// Reports each difference as a note. The report is empty exactly when a == b. Differing fields of
// the groups themselves, such as the priority, come first (kHeadChanged). The entries follow by
// ascending id: an entry that one group lacks (kEntryAdded, kEntryRemoved), or each part of an
// entry that differs (kEntryChanged). A part is the entry's priority, its policer, its parent
// policer, or one match, action or counter. `before` is the part in a, and `after` the part in b.
// The text is empty if that group does not have the part. A policer is described by its values, or
// by its bytes if its values are the same in both groups.
FILTERS_API Report diff(const FiltersCommon::FiltersGroup& a, const FiltersCommon::FiltersGroup& b);

// One call of a member function of FiltersGroup.
struct Step {
  enum class Kind : std::uint8_t { kRemove, kInsert, kSetPriority, kSetStage, kSetType };
  Kind kind = Kind::kRemove;
  FiltersCommon::filtersEntryId_t entry = 0;  // to remove, or to insert from the target
  std::int32_t value = 0;                     // for other kinds: the new priority, stage or type
};

// A step as one line, without the line end: "set-stage ingress", "set-type 3", "set-priority 5",
// "remove entry 7", or "insert entry 10 ..." with the text of the entry in `to`.
FILTERS_API std::string toText(const Step& step, const FiltersCommon::FiltersGroup& to);

// The order of steps. Both orders have one thing in common. If a new stage or type does not admit
// an entry of `from`, this entry is removed before the step that sets the stage or type. If the
// entry of `to` with its id is admitted then, it is inserted after this step.
enum class PlanOrder : std::uint8_t {
  // Insert as early and remove as late as possible. While stage and type stay the same, the group
  // always holds either every id of `from` or every id of `to`, so that no packet is left without a
  // rule. It can hold more entries than either group.
  kAddFirst,
  // Remove as early and insert as late as possible. The group never holds more entries than the
  // larger one.
  kRemoveFirst,
};

// The fewest steps that make a group equal to `to`, starting from a group equal to `from`. The
// library accepts each step, because all steps have been tried on a copy. There is no plan in three
// cases, which the report names: the ids of the groups differ; no setter leads to the target's
// stage and type; the target holds an entry that insertEntry() would now refuse. A group that was
// read from bytes can hold such an entry.
struct Plan {
  bool possible = false;
  // True if it is certain that no plan has fewer steps. A plan can set other stages and types
  // before it sets those of the target. The other stages and types decide which entries can stay.
  // If there are too many sequences of stages and types to try, the plan is the best one that was
  // tried, and `fewest` is false.
  bool fewest = false;
  std::vector<Step> steps;  // empty if the groups are equal, or if there is no plan
  Report report;            // empty if there is a plan
};
FILTERS_API Plan plan(const FiltersCommon::FiltersGroup& from,
                      const FiltersCommon::FiltersGroup& to,
                      PlanOrder order = PlanOrder::kAddFirst);

// Applies the steps to the group, which must not be the same object as `to`. Stops at the first
// refusal and returns its code. Returns FILTERS_ERR_NOT_FOUND if the target lacks an entry to
// insert, and FILTERS_ERR_INVALID_ARGUMENT for a priority that no group can have and for an unknown
// kind of step.
FILTERS_NODISCARD FILTERS_API FiltersCommon::filtersErr_t apply(
    const std::vector<Step>& steps, const FiltersCommon::FiltersGroup& to,
    FiltersCommon::FiltersGroup* group);

}  // namespace FiltersInspect

#endif  // FILTER_INSPECT_FILTER_DIFF_H_
