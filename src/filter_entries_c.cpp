#include <filter_common/filter_entries_c.h>

#include <filter_common/filter_entries.h>

#include "action_visit.h"
#include "assertion.h"
#include "match_visit.h"

namespace FiltersCommon {
namespace {

// Calls `use` with the object, cast to the class of its code.
template <class Use>
filtersErr_t withMatch(FiltersEntry* e, Match* m, Use use) {
  if (e == nullptr || m == nullptr) return FILTERS_ERR_INVALID_ARGUMENT;
  const filtersMatch_t code = m->getType();
  // Deliberate: only the C++ classes support these two codes.
  if (code == FILTERS_MATCH_MY_STATION_HIT || code == FILTERS_MATCH_FORWARDING_TYPE) {
    return FILTERS_ERR_INVALID;
  }
  return visitMatch(code, FILTERS_ERR_INVALID,
                    [&](auto tag) { return use(static_cast<typename decltype(tag)::Class&>(*m)); });
}

template <class Use>
filtersErr_t withAction(FiltersEntry* e, Action* a, Use use) {
  if (e == nullptr || a == nullptr) return FILTERS_ERR_INVALID_ARGUMENT;
  return visitAction(a->getType(), FILTERS_ERR_INVALID, [&](auto tag) {
    return use(static_cast<typename decltype(tag)::Class&>(*a));
  });
}

}  // namespace

extern "C" {

FiltersEntry* newFiltersEntry(filtersEntryId_t id) { return new FiltersEntry(id); }

FiltersEntry* copyFiltersEntry(FiltersEntry* e) {
  FILTERS_ASSERT(e != nullptr,
                 "FiltersCommon::FiltersEntry* "
                 "FiltersCommon::copyFiltersEntry(FiltersCommon::FiltersEntry*)");
  return new FiltersEntry(*e);
}

void deleteFiltersEntry(FiltersEntry* e) {
  FILTERS_ASSERT(e != nullptr,
                 "void FiltersCommon::deleteFiltersEntry(FiltersCommon::FiltersEntry*)");
  delete e;
}

filtersEntryId_t filtersEntryGetId(FiltersEntry* e) {
  FILTERS_ASSERT(e != nullptr,
                 "FiltersCommon::filtersEntryId_t "
                 "FiltersCommon::filtersEntryGetId(FiltersCommon::FiltersEntry*)");
  return e->getId();
}

void filtersEntrySetPriority(FiltersEntry* e, filtersEntryPriority_t p) {
  FILTERS_ASSERT(e != nullptr,
                 "void FiltersCommon::filtersEntrySetPriority(FiltersCommon::FiltersEntry*, "
                 "FiltersCommon::filtersEntryPriority_t)");
  e->setPriority(p);
}

filtersEntryPriority_t filtersEntryGetPriority(FiltersEntry* e) {
  FILTERS_ASSERT(e != nullptr,
                 "FiltersCommon::filtersEntryPriority_t "
                 "FiltersCommon::filtersEntryGetPriority(FiltersCommon::FiltersEntry*)");
  return e->getPriority();
}

filtersErr_t filtersEntryGetMatch(FiltersEntry* e, Match* m) {
  return withMatch(e, m, [e](auto& match) { return e->getMatch(match); });
}

filtersErr_t filtersEntrySetMatch(FiltersEntry* e, Match* m) {
  return withMatch(e, m, [e](const auto& match) { return e->setMatch(match); });
}

filtersErr_t filtersEntryDeleteMatch(FiltersEntry* e, filtersMatch_t t) {
  FILTERS_ASSERT(e != nullptr,
                 "FiltersCommon::filtersErr_t "
                 "FiltersCommon::filtersEntryDeleteMatch(FiltersCommon::FiltersEntry*, "
                 "FiltersCommon::filtersMatch_t)");
  return e->deleteMatch(t);
}

filtersErr_t filtersEntryGetAction(FiltersEntry* e, Action* a) {
  return withAction(e, a, [e](auto& action) { return e->getAction(action); });
}

filtersErr_t filtersEntrySetAction(FiltersEntry* e, Action* a) {
  return withAction(e, a, [e](const auto& action) { return e->setAction(action); });
}

filtersErr_t filtersEntryDeleteAction(FiltersEntry* e, filtersAction_t t) {
  FILTERS_ASSERT(e != nullptr,
                 "FiltersCommon::filtersErr_t "
                 "FiltersCommon::filtersEntryDeleteAction(FiltersCommon::FiltersEntry*, "
                 "FiltersCommon::filtersAction_t)");
  return e->deleteAction(t);
}

}  // extern "C"
}  // namespace FiltersCommon
