#ifndef FILTER_INSPECT_SRC_FORMS_JSON_NESTING_H_
#define FILTER_INSPECT_SRC_FORMS_JSON_NESTING_H_

// What may stand where in the JSON form.

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "form_rows.h"

namespace FiltersInspect {

// What the reader is inside of.
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
  kPair,
  kNumbers,
  kLimids,
  kPorts,
  kTypes,
  kLimid,
  kMplsPorts,
};

// The places of keys in the lists of keysOf().
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
enum PolicerKey : std::size_t { kPolicerBytes, kPolicerAbout };
enum LimidsKey : std::size_t { kLimidsPorts, kLimidsTypes };
enum LimidKey : std::size_t { kLimidNumber, kLimidName };

// The keys of an object; the first `required` of them must stand there.
struct Keys {
  std::string_view names[9] = {};
  std::size_t required = 0;
};
Keys keysOf(In in, const FormRow* row);

// What may begin where: behind which key of an object, or in which list.
struct Nesting {
  In outer;
  std::size_t key;
  char bracket;
  In inner;
};
// For the value of a match or action by its row. A bracket of zero: none may begin there.
Nesting nestingOf(In outer, std::size_t key, const FormRow* row);

}  // namespace FiltersInspect

#endif  // FILTER_INSPECT_SRC_FORMS_JSON_NESTING_H_
