#ifndef FILTER_INSPECT_FILTER_HEAD_H_
#define FILTER_INSPECT_FILTER_HEAD_H_

// The head of a group as a value: everything but its entries.
//
// May be called from any thread. It may throw std::bad_alloc, and nothing else.

#include <string>

#include <filter_common/filter_groups.h>

namespace FiltersInspect {

struct GroupHead {
  FiltersCommon::filtersGroupId_t id = 0;
  FiltersCommon::filtersGroupPriority_t priority = 0;
  FiltersCommon::filtersGroupStage_t stage = FiltersCommon::FILTERS_GROUP_STAGE_NONE;
  FiltersCommon::filtersGroupType_t type = FiltersCommon::FILTERS_GROUP_TYPE_NONE;
};
FILTERS_API GroupHead headOf(const FiltersCommon::FiltersGroup& group);

// A group of this head without entries. Stage and type are taken unchecked, as from bytes: a group
// may come to hold a pair that no setter would give it.
FILTERS_API FiltersCommon::FiltersGroup emptyGroup(const GroupHead& head);

// The head's line of the text form: "group 7 priority=10 stage=ingress type=3".
FILTERS_API std::string toText(const GroupHead& head);

}  // namespace FiltersInspect

#endif  // FILTER_INSPECT_FILTER_HEAD_H_
