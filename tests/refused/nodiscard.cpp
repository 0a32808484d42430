// Results that may be a refusal, ignored. A compiler warns of those behind which it says so, and of
// no other.
#include <filter_common/filter_groups.h>
#include <filter_common/filter_groups_c.h>

using namespace FiltersCommon;

void ignore(FiltersGroup& group, FiltersEntry& entry, MatchPorts& ports) {
  entry.setMatch(MatchTTL(1));              // warns
  entry.setCounter({1, {}});                // warns
  ports.setPorts({});                       // warns
  group.insertEntry(entry);                 // warns
  filtersGroupInsertEntry(&group, &entry);  // warns
  entry.deleteCounters();                   // never refused
}
