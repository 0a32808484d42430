#ifndef FILTER_COMMON_FILTER_ENTRIES_C_H_
#define FILTER_COMMON_FILTER_ENTRIES_C_H_

// Filter rules for procedural code, in C11 and C++. Every function forwards to the class of
// filter_entries.h, whose description holds; here stands what is special to this side.
//
// Handles. A FiltersEntry* comes from newFiltersEntry() or copyFiltersEntry() and is the caller's
// until deleteFiltersEntry(). Matches and actions (filter_matches_c.h, filter_actions_c.h) passed
// in are copied and stay the caller's; their own type code says what they are and is trusted.
// Assertions. A null handle stops the process with the C library's assertion message, in every kind
// of build; the functions that get and set matches and actions return
// FILTERS_ERR_INVALID_ARGUMENT instead.
// Exceptions. Functions that allocate (new..., copy..., Set..., and Get... of a class that holds a
// list) may throw std::bad_alloc through their C callers, which are then compiled with
// -fexceptions; if no C++ caller above catches it, the process ends. Nothing is leaked or changed.
// Threads. Any number may read or copy one entry at a time, a writer needs it alone.
// Gaps, all deliberate: policers, the parent and counters are neither set nor read, the id is never
// changed, nothing lists what an entry holds (ask code by code), compares, prints or serializes.

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

// A rule of this id: priority 0, the default policer, nothing else.
FILTERS_API FiltersEntry* newFiltersEntry(filtersEntryId_t id);
FILTERS_API FiltersEntry* copyFiltersEntry(FiltersEntry* e);
FILTERS_API void deleteFiltersEntry(FiltersEntry* e);

FILTERS_API filtersEntryId_t filtersEntryGetId(FiltersEntry* e);
FILTERS_API void filtersEntrySetPriority(FiltersEntry* e, filtersEntryPriority_t p);
FILTERS_API filtersEntryPriority_t filtersEntryGetPriority(FiltersEntry* e);

// Get: fills the caller's object from the entry's match of its code; FILTERS_ERR_NOT_FOUND when
// there is none, and the object is then unchanged. Set: stores a copy of the object;
// FILTERS_ERR_INVALID when it cannot stand beside a match already held. Both: FILTERS_ERR_INVALID
// for an unknown code and, deliberately, for FILTERS_MATCH_MY_STATION_HIT and
// FILTERS_MATCH_FORWARDING_TYPE, which only the classes reach.
FILTERS_NODISCARD FILTERS_API filtersErr_t filtersEntryGetMatch(FiltersEntry* e, Match* m);
FILTERS_NODISCARD FILTERS_API filtersErr_t filtersEntrySetMatch(FiltersEntry* e, Match* m);
// FILTERS_ERR_NOT_FOUND when there is none.
FILTERS_NODISCARD FILTERS_API filtersErr_t filtersEntryDeleteMatch(FiltersEntry* e,
                                                                   filtersMatch_t t);

// The same for actions: FILTERS_ERR_INVALID only for an unknown code.
FILTERS_NODISCARD FILTERS_API filtersErr_t filtersEntryGetAction(FiltersEntry* e, Action* a);
FILTERS_NODISCARD FILTERS_API filtersErr_t filtersEntrySetAction(FiltersEntry* e, Action* a);
FILTERS_NODISCARD FILTERS_API filtersErr_t filtersEntryDeleteAction(FiltersEntry* e,
                                                                    filtersAction_t t);

#ifdef __cplusplus
}  // extern "C"
}  // namespace FiltersCommon
#endif

#endif  // FILTER_COMMON_FILTER_ENTRIES_C_H_
