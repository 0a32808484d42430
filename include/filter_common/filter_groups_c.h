#ifndef FILTER_COMMON_FILTER_GROUPS_C_H_
#define FILTER_COMMON_FILTER_GROUPS_C_H_

// Filter groups for procedural code, in C11 and C++. Every function forwards to the class in
// filter_groups.h, whose description applies; this header says what is special to the C functions.
//
// Handles. A FiltersGroup* comes from newFiltersGroup(), and the caller owns it until
// deleteFiltersGroup(). The functions copy entries that are passed in, and never take ownership of
// them.
//
// Assertions. A null pointer stops the process with the C library's assertion message, in every
// kind of build, unless a function says that it returns FILTERS_ERR_INVALID_ARGUMENT.
//
// Exceptions. Functions that allocate (new..., InsertEntry, GetEntries) may throw std::bad_alloc.
// The exception passes through C callers if they are compiled with -fexceptions. If no C++ caller
// above them catches it, the process ends. Nothing is leaked, and arguments are unchanged, except
// that a failing InsertEntry leaves no entry with that id.
//
// Threads. Any number of threads may read a group at once. A thread that changes it must be the
// only one to use it.
//
// Gaps are all deliberate. No function copies, compares, prints or serializes a group, and no
// function only runs the checks. No function returns the group's own entries: to change a rule,
// change the copy from filtersGroupGetEntries() and insert that copy.

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

// The entries of a group, in ascending order of their ids. The caller provides the record, usually
// as a local variable. deleteFiltersEntriesStruct() frees what the record points at.
typedef struct entriesStruct {
  int32_t count;
  filtersEntryId_t* ids;   // count ids
  FiltersEntry** entries;  // count copies; entries[i] has the id ids[i]
} entriesStruct;

// Makes a group with this id: it has priority 0, stage and type NONE, and no entries.
FILTERS_API FiltersGroup* newFiltersGroup(filtersGroupId_t id);
FILTERS_API void deleteFiltersGroup(FiltersGroup* g);

FILTERS_API filtersGroupId_t filtersGroupGetId(FiltersGroup* g);
FILTERS_API void filtersGroupSetPriority(FiltersGroup* g, filtersGroupPriority_t p);
FILTERS_API filtersGroupPriority_t filtersGroupGetPriority(FiltersGroup* g);

// Deliberate: a refusal is not reported. Read the stage afterwards to see whether it changed.
FILTERS_API void filtersGroupSetStage(FiltersGroup* g, filtersGroupStage_t s);
FILTERS_API filtersGroupStage_t filtersGroupGetStage(FiltersGroup* g);

// Returns FILTERS_ERR_TYPE_NOT_ALLOWED for a type that is unknown or that the stage does not admit,
// and FILTERS_ERR_MATCH_NOT_ALLOWED if an entry has a match that the type does not admit. The type
// is then unchanged. Returns FILTERS_ERR_INVALID_STAGE for an unknown stage, which only a group
// that C++ code read from bytes can have.
FILTERS_NODISCARD FILTERS_API filtersErr_t filtersGroupSetType(FiltersGroup* g,
                                                               filtersGroupType_t t);
FILTERS_API filtersGroupType_t filtersGroupGetType(FiltersGroup* g);

// Stores a copy, which replaces an entry with the same id. Returns FILTERS_ERR_MATCH_NOT_ALLOWED
// for a match that the group's type does not admit, and FILTERS_ERR_ACTION_NOT_ALLOWED for an
// action that its stage does not admit. For objects that C++ code made it can also return
// FILTERS_ERR_POLICER_STAGE (a policer with another stage), FILTERS_ERR_INVALID (a group with an
// unknown type) and FILTERS_ERR_INVALID_STAGE (a group with an unknown stage).
FILTERS_NODISCARD FILTERS_API filtersErr_t filtersGroupInsertEntry(FiltersGroup* g,
                                                                   FiltersEntry* e);

// Returns FILTERS_ERR_NOT_FOUND if no entry has this id, and FILTERS_ERR_INVALID_ARGUMENT for a
// null group.
FILTERS_NODISCARD FILTERS_API filtersErr_t filtersGroupRemoveEntry(FiltersGroup* g,
                                                                   filtersEntryId_t id);

// Fills the record with copies of all entries. Both arrays exist even if there are no entries. The
// old content of the record is overwritten and not freed.
FILTERS_API void filtersGroupGetEntries(FiltersGroup* g, entriesStruct* entries);

// Frees the entries and both arrays, but not the record. The fields of the record stay as they are,
// so a second call would free them again. Null entries are skipped: you may delete an entry
// yourself if you set its slot to null.
FILTERS_API void deleteFiltersEntriesStruct(entriesStruct* entries);

#ifdef __cplusplus
}  // extern "C"
}  // namespace FiltersCommon
#endif

#endif  // FILTER_COMMON_FILTER_GROUPS_C_H_
