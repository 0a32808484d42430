#include "treatment.h"

#include "forms/policer_text.h"
#include "forms/value_text.h"
#include "shared/arena.h"

namespace FiltersInspect {

using namespace FiltersCommon;

std::string treatmentKey(const FiltersEntryPB& entry) {
  return bytesOf(entry.actions_()) + '/' + std::to_string(entry.policer_().size()) + ':' +
         entry.policer_() + (entry.has_policer_parent_() ? '/' + entry.policer_parent_() : "");
}

std::string treatmentText(const FiltersEntry& entry) {
  MessageArena arena;  // without an arena, messages can leak when memory runs out
  auto& message = *arena.make<FiltersEntryPB>();
  entry.convertToFiltersEntryPB(&message);
  std::string text;
  const auto add = [&text](const std::string& part) { text += (text.empty() ? "" : ", ") + part; };
  for (const ActionPB& action : message.actions_()) add(textOf(action));
  if (message.policer_() != defaultPolicer()) {
    add("policer " + policerWords(factsOf(entry.getPolicer())));
  }
  if (const auto parent = entry.getPolicerParent()) {
    add("parent " + policerWords(factsOf(*parent)));
  }
  return text.empty() ? "no action" : text;
}

}  // namespace FiltersInspect
