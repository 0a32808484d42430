#include "plugin.h"

#include <filter_common/filter_groups.h>
#include <filter_common/filter_serialized.h>
#include <limid/limid_standin.h>

#include <sstream>

using namespace FiltersCommon;

namespace {

class PluginBuffer : public FiltersSerialized {};

bool roundTrip() {
  FiltersEntry entry(1);
  FiltersGroup group(7);
  if (entry.setAction(ActionRedirect(limid_make_lag(1))) != FILTERS_OK ||
      group.insertEntry(entry) != FILTERS_OK) {
    return false;
  }
  std::string bytes;
  group.serialize(&bytes);
  const FiltersGroup rebuilt(bytes);
  std::ostringstream text;
  text << rebuilt;
  return rebuilt == group && text.str().find("\"lag-1\"") != std::string::npos;
}

}  // namespace

const Plugin plugin = {
    roundTrip,
    []() -> Match* { return new MatchTTL(64); },
    []() -> FiltersSerialized* { return new PluginBuffer; },
    [](const Match* match) { return dynamic_cast<const MatchTTL*>(match) != nullptr; },
    [] { ActionMplsPortSet(limid_make_ethernet(1), limid_make_ethernet(2)); },
};
