// A module that a process loads while it runs, and that brings the library along.

#include <filter_common/filter_groups.h>
#include <limid/limid_standin.h>

#include <sstream>

using namespace FiltersCommon;

// Sends a group through bytes; answers whether it came back and printed.
extern "C" bool roundTrip() {
  FiltersEntry entry(1);
  FiltersGroup group(7);
  if (entry.setAction(ActionRedirect(limid_make_lag(1))) != FILTERS_OK) return false;
  if (group.insertEntry(entry) != FILTERS_OK) return false;
  std::string bytes;
  group.serialize(&bytes);
  std::ostringstream text;
  text << FiltersGroup(bytes);
  return FiltersGroup(bytes) == group && text.str().find("\"lag-1\"") != std::string::npos;
}

// A MatchTTL that crosses over is known here by its type, as is an exception on its way back.
extern "C" bool knowsAsTTL(const Match* match) {
  return dynamic_cast<const MatchTTL*>(match) != nullptr;
}
extern "C" void refuse() { ActionMplsPortSet(limid_make_ethernet(1), limid_make_ethernet(2)); }
