// Each function that returns a result, with the result ignored. A compiler warns of those behind
// which it says so, and of no other.
#include <filter_common/filter_entries_c.h>
#include <filter_common/filter_groups.h>
#include <filter_common/filter_groups_c.h>

using namespace FiltersCommon;

void ignore(FiltersEntry& entry, MatchPorts& ports, MatchTTL& match, ActionSetPcp& action) {
  entry.getMatch(match);                       // warns
  entry.setMatch(match);                       // warns
  entry.deleteMatch({});                       // warns
  entry.setMatches({});                        // warns
  entry.copyMatches({});                       // warns
  entry.getAction(action);                     // warns
  entry.setAction(action);                     // warns
  entry.deleteAction({});                      // warns
  entry.setActions({});                        // warns
  entry.copyActions({});                       // warns
  entry.setCounter({1, {}});                   // warns
  entry.deleteCounter(1);                      // warns
  ports.setPorts({});                          // warns
  filtersEntryGetMatch(&entry, &match);        // warns
  filtersEntrySetMatch(&entry, &match);        // warns
  filtersEntryDeleteMatch(&entry, {});         // warns
  filtersEntryGetAction(&entry, &action);      // warns
  filtersEntrySetAction(&entry, &action);      // warns
  filtersEntryDeleteAction(&entry, {});        // warns
  entry.setPolicer(policer::Policer());        // never refused
  entry.setPolicerParent(policer::Policer());  // never refused
  entry.deleteCounters();                      // never refused
}

void ignore(FiltersGroup& group, FiltersEntry& entry) {
  group.setStage({});                                    // warns
  group.setType({});                                     // warns
  group.insertEntry(entry);                              // warns
  group.removeEntry(1);                                  // warns
  group.groupMatchValidation(entry, {});                 // warns
  group.groupActionValidation(entry, {});                // warns
  group.groupStageValidation({}, {});                    // warns
  group.groupPolicerValidation(policer::Policer(), {});  // warns
  filtersGroupSetType(&group, {});                       // warns
  filtersGroupInsertEntry(&group, &entry);               // warns
  filtersGroupRemoveEntry(&group, 1);                    // warns
}
