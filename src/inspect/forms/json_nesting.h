#ifndef FILTER_INSPECT_SRC_FORMS_JSON_NESTING_H_
#define FILTER_INSPECT_SRC_FORMS_JSON_NESTING_H_

// The structure of the JSON form: which keys and values an object or list may hold.

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "form_rows.h"
#include "policer_facts.h"

namespace FiltersInspect {

// The object or list in which the reader is.
enum class In : std::uint8_t {
  kNowhere,
  kFile,
  kGroups,
  kGroup,
  kEntries,
  kEntry,
  kMatches,
  kActions,
  kCounters,
  kCounter,
  kPolicer,
  kAbout,
  kPolicerActions,
  kPolicerAction,
  kPair,
  kNumbers,
  kLimids,
  kPorts,
  kTypes,
  kLimid,
  kMplsPorts,
};

// The indexes of keys in the lists of keysOf().
enum FileKey : std::size_t { kFileFormat, kFileVersion, kFileGroups };
enum GroupKey : std::size_t { kGroupId, kGroupPriority, kGroupStage, kGroupType, kGroupEntries };
enum EntryKey : std::size_t {
  kEntryId,
  kEntryPriority,
  kEntryMatches,
  kEntryActions,
  kEntryCounters,
  kEntryPolicer,
  kEntryParent,
};
enum CounterKey : std::size_t { kCounterId, kCounterType };
enum PolicerPart : std::size_t { kPolicerBytes, kPolicerAbout };
// The key of the actions in a policer's description. All other keys are in kPolicerKeys.
inline constexpr std::size_t kAboutActions = kPolicerKeys.size();
enum PolicerActionKey : std::size_t { kActionColor, kActionDo, kActionValue };
enum LimidsKey : std::size_t { kLimidsPorts, kLimidsTypes };
enum LimidKey : std::size_t { kLimidNumber, kLimidName };

// The keys of an object. The first `required` keys must be present.
struct Keys {
  std::string_view names[10] = {};
  std::size_t required = 0;
};
const Keys& keysOf(In in, const FormRow* row);

// An object or list that may begin in another object or list.
struct Nesting {
  In outer;
  std::size_t key;
  char bracket;
  In inner;
};
// `row` is the row of the current match or action. A bracket of zero means that nothing may begin
// there.
Nesting nestingOf(In outer, std::size_t key, const FormRow* row);

}  // namespace FiltersInspect

#endif  // FILTER_INSPECT_SRC_FORMS_JSON_NESTING_H_
