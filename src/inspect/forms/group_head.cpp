#include <filter_inspect/filter_head.h>

#include <filter_common/filter_groups.pb.h>

#include "shared/arena.h"
#include "value_text.h"

namespace FiltersInspect {

using namespace FiltersCommon;

GroupHead headOf(const FiltersGroup& group) {
  return {group.getId(), group.getPriority(), group.getStage(), group.getType()};
}

FiltersGroup emptyGroup(const GroupHead& head) {
  MessageArena arena;  // without an arena, messages can leak when memory runs out
  auto& message = *arena.make<FiltersGroupPB>();
  message.set_id_(head.id);
  message.set_priority_(head.priority);
  message.set_stage_(static_cast<std::uint32_t>(head.stage));
  message.set_type_(static_cast<std::uint32_t>(head.type));
  FiltersGroup group(head.id);
  group.convertFromFiltersGroupPB(&message);
  return group;
}

std::string toText(const GroupHead& head) {
  std::string text = "group ";
  appendNumber(head.id, &text);
  text += " priority=";
  appendNumber(head.priority, &text);
  text += " stage=";
  appendName(kNamesOf<filtersGroupStage_t>, static_cast<std::uint32_t>(head.stage), &text);
  text += " type=";
  appendName(kNamesOf<filtersGroupType_t>, static_cast<std::uint32_t>(head.type), &text);
  return text;
}

}  // namespace FiltersInspect
