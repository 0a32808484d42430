#ifndef FILTER_COMMON_FILTER_ENTRIES_C_H_
#define FILTER_COMMON_FILTER_ENTRIES_C_H_

// Filter rules for procedural code, in C11 and C++. Every function forwards to the class in
// filter_entries.h, whose description applies; this header says what is special to the C functions.
//
// Handles. A FiltersEntry* comes from newFiltersEntry() or copyFiltersEntry(), and the caller owns
// it until deleteFiltersEntry(). The functions copy matches and actions that are passed in
// (filter_matches_c.h, filter_actions_c.h) and never take ownership of them. They rely on the type
// code of a match or action to know its class.
//
// Assertions. A null handle stops the process with the C library's assertion message, in every kind
// of build. The functions that get and set matches and actions return FILTERS_ERR_INVALID_ARGUMENT
// instead.
//
// Exceptions. Functions that allocate may throw std::bad_alloc: new..., copy..., Set..., and Get...
// of a class that holds a list. The exception passes through C callers if they are compiled with
// -fexceptions. If no C++ caller above them catches it, the process ends. Nothing is leaked or
// changed.
//
// Threads. Any number of threads may read or copy an entry at once. A thread that changes it must
// be the only one to use it.
//
// Gaps are all deliberate. No function sets or reads policers, the parent policer or counters. No
// function changes the id, or lists what an entry holds. To find out what an entry holds, call Get
// for each code. No function compares, prints or serializes entries.

#include <filter_common/filter_types.h>

#ifdef __cplusplus
namespace FiltersCommon {
class Action;
class FiltersEntry;
class Match;
extern "C" {
#else
typedef struct Action Action;
typedef struct FiltersEntry FiltersEntry;
typedef struct Match Match;
#endif

// Makes a rule with this id: it has priority 0, the default policer and nothing else.
FILTERS_API FiltersEntry* newFiltersEntry(filtersEntryId_t id);
FILTERS_API FiltersEntry* copyFiltersEntry(FiltersEntry* e);
FILTERS_API void deleteFiltersEntry(FiltersEntry* e);

FILTERS_API filtersEntryId_t filtersEntryGetId(FiltersEntry* e);
FILTERS_API void filtersEntrySetPriority(FiltersEntry* e, filtersEntryPriority_t p);
FILTERS_API filtersEntryPriority_t filtersEntryGetPriority(FiltersEntry* e);

// Get fills the caller's object from the entry's match that has the same code. If the entry has no
// such match, Get returns FILTERS_ERR_NOT_FOUND and leaves the object unchanged. Set stores a copy
// of the object. It returns FILTERS_ERR_INVALID if a held match excludes this one. Both functions
// return FILTERS_ERR_INVALID for an unknown code. Deliberate: they also return it for
// FILTERS_MATCH_MY_STATION_HIT and FILTERS_MATCH_FORWARDING_TYPE, which only the C++ classes
// support.
FILTERS_NODISCARD FILTERS_API filtersErr_t filtersEntryGetMatch(FiltersEntry* e, Match* m);
FILTERS_NODISCARD FILTERS_API filtersErr_t filtersEntrySetMatch(FiltersEntry* e, Match* m);
// Returns FILTERS_ERR_NOT_FOUND if the entry has no such match.
FILTERS_NODISCARD FILTERS_API filtersErr_t filtersEntryDeleteMatch(FiltersEntry* e,
                                                                   filtersMatch_t t);

// The functions for actions work like those for matches, but return FILTERS_ERR_INVALID only for an
// unknown code.
FILTERS_NODISCARD FILTERS_API filtersErr_t filtersEntryGetAction(FiltersEntry* e, Action* a);
FILTERS_NODISCARD FILTERS_API filtersErr_t filtersEntrySetAction(FiltersEntry* e, Action* a);
FILTERS_NODISCARD FILTERS_API filtersErr_t filtersEntryDeleteAction(FiltersEntry* e,
                                                                    filtersAction_t t);

#ifdef __cplusplus
}  // extern "C"
}  // namespace FiltersCommon
#endif

#endif  // FILTER_COMMON_FILTER_ENTRIES_C_H_
