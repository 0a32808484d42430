/* A program of somebody else in C, which knows the procedural interface as installed. */
#include <filter_common/filter_actions_c.h>
#include <filter_common/filter_entries_c.h>
#include <filter_common/filter_groups_c.h>
#include <filter_common/filter_matches_c.h>
#include <limid/limid_standin.h>
#include <stdio.h>
#include <stdlib.h>

static void check(bool good, const char* what) {
  if (good) return;
  fprintf(stderr, "consumer: %s\n", what);
  exit(1);
}

int main(void) {
  const limid_t port = limid_make_lag(1);
  void* ttl = newMatchTTL(64);
  void* redirect = newActionRedirect(port);
  FiltersEntry* entry = newFiltersEntry(1);
  check(filtersEntrySetMatch(entry, ttl) == FILTERS_OK, "match refused");
  check(filtersEntrySetAction(entry, redirect) == FILTERS_OK, "action refused");

  FiltersGroup* group = newFiltersGroup(7);
  filtersGroupSetStage(group, FILTERS_GROUP_STAGE_INGRESS);
  check(filtersGroupSetType(group, FILTERS_GROUP_TYPE_3) == FILTERS_OK, "type refused");
  check(filtersGroupInsertEntry(group, entry) == FILTERS_OK, "entry refused");

  entriesStruct entries;
  filtersGroupGetEntries(group, &entries);
  check(entries.count == 1 && entries.ids[0] == 1, "entries differ");
  void* held = newMatchTTL(0);
  check(filtersEntryGetMatch(entries.entries[0], held) == FILTERS_OK, "match not held");
  check(matchTTLGet(held) == 64, "match differs");

  deleteMatch(held);
  deleteFiltersEntriesStruct(&entries);
  deleteFiltersGroup(group);
  deleteFiltersEntry(entry);
  deleteAction(redirect);
  deleteMatch(ttl);
  puts("consumer: passed");
  return 0;
}
