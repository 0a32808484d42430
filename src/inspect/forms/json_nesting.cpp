#include "json_nesting.h"

#include <algorithm>

#include "json_keys.h"
#include "policer_facts.h"

namespace FiltersInspect {
namespace {

constexpr Nesting kNestings[] = {
    {In::kNowhere, 0, '{', In::kFile},     {In::kFile, 2, '[', In::kGroups},
    {In::kGroups, 0, '{', In::kGroup},     {In::kGroup, 4, '[', In::kEntries},
    {In::kEntries, 0, '{', In::kEntry},    {In::kEntry, 2, '{', In::kMatches},
    {In::kEntry, 3, '{', In::kActions},    {In::kEntry, 4, '[', In::kCounters},
    {In::kEntry, 5, '{', In::kPolicer},    {In::kEntry, 6, '{', In::kPolicer},
    {In::kCounters, 0, '{', In::kCounter}, {In::kPolicer, 1, '{', In::kAbout},
    {In::kLimids, 0, '[', In::kPorts},     {In::kLimids, 1, '[', In::kTypes},
    {In::kPorts, 0, '{', In::kLimid},      {In::kMplsPorts, 0, '{', In::kLimid},
    {In::kMplsPorts, 1, '{', In::kLimid},
};

// The same for the value of a match or action; nowhere for what is written without brackets.
Nesting nestingOfValue(In outer, const FormRow& row) {
  switch (row.form) {
    case ValueForm::kNumbers:
      return {outer, 0, '[', In::kNumbers};
    case ValueForm::kLimid:
      return {outer, 0, '{', In::kLimid};
    case ValueForm::kLimids:
      return {outer, 0, '{', In::kLimids};
    case ValueForm::kMplsPorts:
      return {outer, 0, '{', In::kMplsPorts};
    default:
      if (row.fields[1] != 0) return {outer, 0, '{', In::kPair};
      return {outer, 0, '\0', In::kNowhere};
  }
}

}  // namespace

Keys keysOf(In in, const FormRow* row) {
  switch (in) {
    case In::kFile:
      return {{kFormatKey, kVersionKey, kGroupsKey}, 3};
    case In::kGroup:
      return {{kIdKey, kPriorityKey, kStageKey, kTypeKey, kEntriesKey}, 5};
    case In::kEntry:
      return {
          {kIdKey, kPriorityKey, kMatchesKey, kActionsKey, kCountersKey, kPolicerKey, kParentKey},
          2};
    case In::kCounter:
      return {{kIdKey, kTypeKey}, 2};
    case In::kPolicer:
      return {{kBytesKey, kAboutKey}, 1};
    case In::kAbout: {
      static const PolicerFacts facts = factsOf(policer::Policer(std::string()));
      Keys keys;
      for (std::size_t i = 0; i < facts.size(); ++i) keys.names[i] = facts[i].key;
      return keys;
    }
    case In::kLimid:
      return {{kLimidKey, kNameKey}, 1};
    case In::kPair:
    case In::kMplsPorts:
      return {{keysOf(row->form).first, keysOf(row->form).second}, 2};
    case In::kLimids:
      if (row->fields[1] == 0) return {{keysOf(row->form).first}, 1};
      return {{keysOf(row->form).first, keysOf(row->form).second}, 1};
    default:
      return {};
  }
}

Nesting nestingOf(In outer, std::size_t key, const FormRow* row) {
  if (outer == In::kMatches || outer == In::kActions) return nestingOfValue(outer, *row);
  const auto found = std::find_if(
      std::begin(kNestings), std::end(kNestings),
      [&](const Nesting& nesting) { return nesting.outer == outer && nesting.key == key; });
  return found == std::end(kNestings) ? Nesting{outer, key, '\0', In::kNowhere} : *found;
}

}  // namespace FiltersInspect
