#ifndef FILTER_INSPECT_FILTER_HEAD_H_
#define FILTER_INSPECT_FILTER_HEAD_H_

// The head of a group as a value. The head is everything in the group except its entries.
//
// The functions may be called from any thread. They may throw std::bad_alloc, and nothing else.

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

// Makes a group with this head and no entries. Stage and type are not checked, as in a group that
// is read from bytes: they can be a stage and a type that the setters would not accept together.
FILTERS_API FiltersCommon::FiltersGroup emptyGroup(const GroupHead& head);

// The line of the head in the text form, for example "group 7 priority=10 stage=ingress type=3".
FILTERS_API std::string toText(const GroupHead& head);

}  // namespace FiltersInspect

#endif  // FILTER_INSPECT_FILTER_HEAD_H_
