// A module that a running process loads. Loading the module also loads the library.

#include <filter_common/filter_groups.h>
#include <limid/limid_standin.h>

#include <sstream>

using namespace FiltersCommon;

// Writes a group to bytes and reads it again. True if the new group is equal and can be printed.
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

// knowsAsTTL() recognises the type of a MatchTTL that the program made. The program recognises the
// type of the exception that refuse() throws.
extern "C" bool knowsAsTTL(const Match* match) {
  return dynamic_cast<const MatchTTL*>(match) != nullptr;
}
extern "C" void refuse() { ActionMplsPortSet(limid_make_ethernet(1), limid_make_ethernet(2)); }
