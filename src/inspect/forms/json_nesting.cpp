#include "json_nesting.h"

#include <algorithm>
#include <array>

#include "json_keys.h"

namespace FiltersInspect {
namespace {

// Stands for the key inside a list, because lists have no keys. An object of MPLS ports has two
// keys whose values have the same form.
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

constexpr Keys kKeysOfFile = {{kFormatKey, kVersionKey, kGroupsKey}, 3};
constexpr Keys kKeysOfGroup = {{kIdKey, kPriorityKey, kStageKey, kTypeKey, kEntriesKey}, 5};
constexpr Keys kKeysOfEntry = {
    {kIdKey, kPriorityKey, kMatchesKey, kActionsKey, kCountersKey, kPolicerKey, kParentKey}, 2};
constexpr Keys kKeysOfCounter = {{kIdKey, kTypeKey}, 2};
constexpr Keys kKeysOfPolicer = {{kBytesKey, kAboutKey}, 0};  // one of them
constexpr Keys kKeysOfPolicerAction = {{kColorKey, kDoKey, kValueKey}, 2};
constexpr Keys kKeysOfLimid = {{kLimidKey, kNameKey}, 1};
constexpr Keys kKeysOfPorts = {{keysOf(ValueForm::kLimids).first}, 1};
constexpr Keys kNoKeys = {};

constexpr Keys kKeysOfAbout = [] {
  Keys keys;
  for (std::size_t i = 0; i < kPolicerKeys.size(); ++i) keys.names[i] = kPolicerKeys[i].key;
  keys.names[kAboutActions] = kActionsKey;
  return keys;
}();

// The keys of a value with two parts, by its form. The excluded types of ports may be left out.
constexpr auto kKeysOfForms = [] {
  std::array<Keys, static_cast<std::size_t>(ValueForm::kMplsPorts) + 1> all;
  for (std::size_t i = 0; i < all.size(); ++i) {
    const auto form = static_cast<ValueForm>(i);
    const auto [first, second] = keysOf(form);
    all[i] = {{first, second}, form == ValueForm::kLimids ? std::size_t{1} : std::size_t{2}};
  }
  return all;
}();

}  // namespace

const Keys& keysOf(In in, const FormRow* row) {
  switch (in) {
    case In::kFile:
      return kKeysOfFile;
    case In::kGroup:
      return kKeysOfGroup;
    case In::kEntry:
      return kKeysOfEntry;
    case In::kCounter:
      return kKeysOfCounter;
    case In::kPolicer:
      return kKeysOfPolicer;
    case In::kAbout:
      return kKeysOfAbout;
    case In::kPolicerAction:
      return kKeysOfPolicerAction;
    case In::kLimid:
      return kKeysOfLimid;
    case In::kPair:
    case In::kMplsPorts:
      return kKeysOfForms[static_cast<std::size_t>(row->form)];
    case In::kLimids:
      return row->fields[1] ? kKeysOfForms[static_cast<std::size_t>(row->form)] : kKeysOfPorts;
    default:
      return kNoKeys;
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
