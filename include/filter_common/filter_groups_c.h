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
// Threads. Callers serialise access to each group.

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

// FILTERS_ERR_TYPE_NOT_ALLOWED, FILTERS_ERR_INVALID_STAGE, FILTERS_ERR_INVALID or
// FILTERS_ERR_MATCH_NOT_ALLOWED when the group refuses; the type is then unchanged.
FILTERS_API filtersErr_t filtersGroupSetType(FiltersGroup* g, filtersGroupType_t t);
FILTERS_API filtersGroupType_t filtersGroupGetType(FiltersGroup* g);

// Stores a copy, in place of an entry of the same id. The codes of FiltersGroup::insertEntry().
FILTERS_API filtersErr_t filtersGroupInsertEntry(FiltersGroup* g, FiltersEntry* e);

// FILTERS_ERR_NOT_FOUND when there is none, FILTERS_ERR_INVALID_ARGUMENT for a null group.
FILTERS_API filtersErr_t filtersGroupRemoveEntry(FiltersGroup* g, filtersEntryId_t id);

// Fills the record with copies of all entries; both arrays exist even when there are none. What the
// record held before is overwritten, not freed.
FILTERS_API void filtersGroupGetEntries(FiltersGroup* g, entriesStruct* entries);

// Frees the entries and both arrays, not the record, whose fields stay as they are. Null entries
// are skipped: an entry may be deleted on its own if its slot is set to null.
FILTERS_API void deleteFiltersEntriesStruct(entriesStruct* entries);

#ifdef __cplusplus
}  // extern "C"
}  // namespace FiltersCommon
#endif

#endif  // FILTER_COMMON_FILTER_GROUPS_C_H_
