#include <filter_common/filter_groups_c.h>

#include <filter_common/filter_groups.h>

#include "assertion.h"

namespace FiltersCommon {
extern "C" {

FiltersGroup* newFiltersGroup(filtersGroupId_t id) { return new FiltersGroup(id); }

void deleteFiltersGroup(FiltersGroup* g) {
  FILTERS_ASSERT(g != nullptr,
                 "void FiltersCommon::deleteFiltersGroup(FiltersCommon::FiltersGroup*)");
  delete g;
}

filtersGroupId_t filtersGroupGetId(FiltersGroup* g) {
  FILTERS_ASSERT(g != nullptr,
                 "FiltersCommon::filtersGroupId_t "
                 "FiltersCommon::filtersGroupGetId(FiltersCommon::FiltersGroup*)");
  return g->getId();
}

void filtersGroupSetPriority(FiltersGroup* g, filtersGroupPriority_t p) {
  FILTERS_ASSERT(g != nullptr,
                 "void FiltersCommon::filtersGroupSetPriority(FiltersCommon::FiltersGroup*, "
                 "FiltersCommon::filtersGroupPriority_t)");
  g->setPriority(p);
}

filtersGroupPriority_t filtersGroupGetPriority(FiltersGroup* g) {
  FILTERS_ASSERT(g != nullptr,
                 "FiltersCommon::filtersGroupPriority_t "
                 "FiltersCommon::filtersGroupGetPriority(FiltersCommon::FiltersGroup*)");
  return g->getPriority();
}

void filtersGroupSetStage(FiltersGroup* g, filtersGroupStage_t s) {
  FILTERS_ASSERT(g != nullptr,
                 "void FiltersCommon::filtersGroupSetStage(FiltersCommon::FiltersGroup*, "
                 "FiltersCommon::filtersGroupStage_t)");
  static_cast<void>(g->setStage(s));
}

filtersGroupStage_t filtersGroupGetStage(FiltersGroup* g) {
  FILTERS_ASSERT(g != nullptr,
                 "FiltersCommon::filtersGroupStage_t "
                 "FiltersCommon::filtersGroupGetStage(FiltersCommon::FiltersGroup*)");
  return g->getStage();
}

filtersErr_t filtersGroupSetType(FiltersGroup* g, filtersGroupType_t t) {
  FILTERS_ASSERT(g != nullptr,
                 "FiltersCommon::filtersErr_t "
                 "FiltersCommon::filtersGroupSetType(FiltersCommon::FiltersGroup*, "
                 "FiltersCommon::filtersGroupType_t)");
  return g->setType(t);
}

filtersGroupType_t filtersGroupGetType(FiltersGroup* g) {
  FILTERS_ASSERT(g != nullptr,
                 "FiltersCommon::filtersGroupType_t "
                 "FiltersCommon::filtersGroupGetType(FiltersCommon::FiltersGroup*)");
  return g->getType();
}

filtersErr_t filtersGroupInsertEntry(FiltersGroup* g, FiltersEntry* e) {
  FILTERS_ASSERT(g != nullptr && e != nullptr,
                 "FiltersCommon::filtersErr_t "
                 "FiltersCommon::filtersGroupInsertEntry(FiltersCommon::FiltersGroup*, "
                 "FiltersCommon::FiltersEntry*)");
  return g->insertEntry(*e);
}

filtersErr_t filtersGroupRemoveEntry(FiltersGroup* g, filtersEntryId_t id) {
  return g == nullptr ? FILTERS_ERR_INVALID_ARGUMENT : g->removeEntry(id);
}

void filtersGroupGetEntries(FiltersGroup* g, entriesStruct* entries) {
  FILTERS_ASSERT(g != nullptr && entries != nullptr,
                 "void FiltersCommon::filtersGroupGetEntries(FiltersCommon::FiltersGroup*, "
                 "FiltersCommon::entriesStruct*)");
  const auto& held = g->getEntriesRef();
  entriesStruct copy = {0, nullptr, nullptr};
  try {
    copy.ids = new filtersEntryId_t[held.size()];
    copy.entries = new FiltersEntry*[held.size()];
    for (const auto& [id, entry] : held) {
      copy.entries[copy.count] = new FiltersEntry(entry);
      copy.ids[copy.count] = id;
      ++copy.count;
    }
  } catch (...) {
    deleteFiltersEntriesStruct(&copy);
    throw;
  }
  *entries = copy;
}

void deleteFiltersEntriesStruct(entriesStruct* entries) {
  FILTERS_ASSERT(entries != nullptr,
                 "void FiltersCommon::deleteFiltersEntriesStruct(FiltersCommon::entriesStruct*)");
  for (int32_t i = 0; i < entries->count; ++i) delete entries->entries[i];
  delete[] entries->ids;
  delete[] entries->entries;
}

}  // extern "C"
}  // namespace FiltersCommon
