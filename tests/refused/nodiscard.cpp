// Calls whose results are ignored. The compiler must warn about exactly those lines whose comment
// says so.
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
