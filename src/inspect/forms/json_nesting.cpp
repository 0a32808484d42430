#include "json_nesting.h"

#include <algorithm>

#include "json_keys.h"

namespace FiltersInspect {
namespace {

// Stands for the key inside of lists, which have no keys. An object of MPLS ports has two keys of
// one kind.
constexpr std::size_t kInList = 0;
constexpr Nesting kNestings[] = {
    {In::kNowhere, kInList, '{', In::kFile},
    {In::kFile, kFileGroups, '[', In::kGroups},
    {In::kGroups, kInList, '{', In::kGroup},
    {In::kGroup, kGroupEntries, '[', In::kEntries},
    {In::kEntries, kInList, '{', In::kEntry},
    {In::kEntry, kEntryMatches, '{', In::kMatches},
    {In::kEntry, kEntryActions, '{', In::kActions},
    {In::kEntry, kEntryCounters, '[', In::kCounters},
    {In::kEntry, kEntryPolicer, '{', In::kPolicer},
    {In::kEntry, kEntryParent, '{', In::kPolicer},
    {In::kCounters, kInList, '{', In::kCounter},
    {In::kPolicer, kPolicerAbout, '{', In::kAbout},
    {In::kAbout, kAboutActions, '[', In::kPolicerActions},
    {In::kPolicerActions, kInList, '{', In::kPolicerAction},
    {In::kLimids, kLimidsPorts, '[', In::kPorts},
    {In::kLimids, kLimidsTypes, '[', In::kTypes},
    {In::kPorts, kInList, '{', In::kLimid},
    {In::kMplsPorts, 0, '{', In::kLimid},
    {In::kMplsPorts, 1, '{', In::kLimid},
};

// The nesting of a match's or action's value; kNowhere for a value without brackets.
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
      if (row.fields[1]) return {outer, 0, '{', In::kPair};
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
      return {{kBytesKey, kAboutKey}, 0};  // one of them
    case In::kAbout: {
      Keys keys;
      for (std::size_t i = 0; i < kPolicerKeys.size(); ++i) keys.names[i] = kPolicerKeys[i].key;
      keys.names[kAboutActions] = kActionsKey;
      return keys;
    }
    case In::kPolicerAction:
      return {{kColorKey, kDoKey, kValueKey}, 2};
    case In::kLimid:
      return {{kLimidKey, kNameKey}, 1};
    case In::kPair:
    case In::kMplsPorts:
      return {{keysOf(row->form).first, keysOf(row->form).second}, 2};
    case In::kLimids:
      if (!row->fields[1]) return {{keysOf(row->form).first}, 1};
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
