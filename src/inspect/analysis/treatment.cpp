#include "treatment.h"

#include "forms/policer_facts.h"
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
  const auto begin = [&text](const char* part) {
    text += (text.empty() ? "" : ", ") + std::string(part);
  };
  for (const ActionPB& action : message.actions_()) begin(textOf(action).c_str());
  if (message.policer_() != defaultPolicer()) {
    begin("policer");
    appendFacts(entry.getPolicer(), &text);
  }
  if (const auto parent = entry.getPolicerParent()) {
    begin("parent");
    appendFacts(*parent, &text);
  }
  return text.empty() ? "no action" : text;
}

}  // namespace FiltersInspect
