#ifndef FILTER_COMMON_FILTER_GROUPS_C_H_
#define FILTER_COMMON_FILTER_GROUPS_C_H_

// Filter groups for procedural code, in C11 and C++. Every function forwards to the class of
// filter_groups.h, whose description holds; here stands what is special to this side.
//
// Handles. A FiltersGroup* comes from newFiltersGroup() and is the caller's until
// deleteFiltersGroup(). Entries passed in are copied and stay the caller's.
// Assertions. A null pointer stops the process with the C library's assertion message, in every
// kind of build, except where a function says that it returns FILTERS_ERR_INVALID_ARGUMENT.
// Exceptions. Functions that allocate (new..., InsertEntry, GetEntries) may throw std::bad_alloc
// through their C callers, which are then compiled with -fexceptions; if no C++ caller above
// catches it, the process ends. Nothing is leaked, and arguments are unchanged, except that a
// failing InsertEntry leaves no entry of that id.
// Threads. Any number may read one group at a time, a writer needs it alone.
// Gaps, all deliberate: a group is not copied, compared, printed or serialized here, and the checks
// cannot be asked beforehand. Its entries are not handed out: to change a rule, change the copy
// from filtersGroupGetEntries() and insert that again.

#include <filter_common/filter_types.h>

#ifdef __cplusplus
namespace FiltersCommon {
class FiltersEntry;
class FiltersGroup;
extern "C" {
#else
typedef struct FiltersEntry FiltersEntry;
typedef struct FiltersGroup FiltersGroup;
#endif

// The entries of a group, in ascending order of their ids. The record itself is the caller's,
// usually a local variable; what it points at is freed by deleteFiltersEntriesStruct().
typedef struct entriesStruct {
  int32_t count;
  filtersEntryId_t* ids;   // count ids
  FiltersEntry** entries;  // count copies; entries[i] has the id ids[i]
} entriesStruct;

// A group of this id: priority 0, stage and type NONE, no entries.
FILTERS_API FiltersGroup* newFiltersGroup(filtersGroupId_t id);
FILTERS_API void deleteFiltersGroup(FiltersGroup* g);

FILTERS_API filtersGroupId_t filtersGroupGetId(FiltersGroup* g);
FILTERS_API void filtersGroupSetPriority(FiltersGroup* g, filtersGroupPriority_t p);
FILTERS_API filtersGroupPriority_t filtersGroupGetPriority(FiltersGroup* g);

// Deliberate: a refusal is not reported. Read the stage back to see whether it changed.
FILTERS_API void filtersGroupSetStage(FiltersGroup* g, filtersGroupStage_t s);
FILTERS_API filtersGroupStage_t filtersGroupGetStage(FiltersGroup* g);

// FILTERS_ERR_TYPE_NOT_ALLOWED for a type that is unknown or not the stage's,
// FILTERS_ERR_MATCH_NOT_ALLOWED when an entry has a match that the type does not admit; the type is
// then unchanged. FILTERS_ERR_INVALID_STAGE only of a group that C++ read from bytes and whose
// stage is unknown.
FILTERS_NODISCARD FILTERS_API filtersErr_t filtersGroupSetType(FiltersGroup* g,
                                                               filtersGroupType_t t);
FILTERS_API filtersGroupType_t filtersGroupGetType(FiltersGroup* g);

// Stores a copy, in place of an entry of the same id. FILTERS_ERR_MATCH_NOT_ALLOWED for a match
// that the group's type does not admit, FILTERS_ERR_ACTION_NOT_ALLOWED for an action that its stage
// does not admit. Of objects that C++ made also FILTERS_ERR_POLICER_STAGE for a policer of another
// stage, FILTERS_ERR_INVALID and FILTERS_ERR_INVALID_STAGE for a group of unknown type or stage.
FILTERS_NODISCARD FILTERS_API filtersErr_t filtersGroupInsertEntry(FiltersGroup* g,
                                                                   FiltersEntry* e);

// FILTERS_ERR_NOT_FOUND when there is none, FILTERS_ERR_INVALID_ARGUMENT for a null group.
FILTERS_NODISCARD FILTERS_API filtersErr_t filtersGroupRemoveEntry(FiltersGroup* g,
                                                                   filtersEntryId_t id);

// Fills the record with copies of all entries; both arrays exist even when there are none. What the
// record held before is overwritten, not freed.
FILTERS_API void filtersGroupGetEntries(FiltersGroup* g, entriesStruct* entries);

// Frees the entries and both arrays, not the record, whose fields stay as they are: a second call
// would free them again. Null entries are skipped: an entry may be deleted on its own if its slot
// is set to null.
FILTERS_API void deleteFiltersEntriesStruct(entriesStruct* entries);

#ifdef __cplusplus
}  // extern "C"
}  // namespace FiltersCommon
#endif

#endif  // FILTER_COMMON_FILTER_GROUPS_C_H_
