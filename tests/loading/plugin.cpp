#include "plugin.h"

#include <filter_common/filter_groups.h>
#include <filter_common/filter_serialized.h>
#include <limid/limid_standin.h>

#include <sstream>

using namespace FiltersCommon;

namespace {

class PluginBuffer : public FiltersSerialized {};

}  // namespace

bool pluginRoundTrip() {
  FiltersEntry entry(1);
  FiltersGroup group(7);
  if (entry.setMatch(MatchTTL(64)) != FILTERS_OK ||
      entry.setAction(ActionRedirect(limid_make_lag(1))) != FILTERS_OK ||
      group.setStage(FILTERS_GROUP_STAGE_INGRESS) != FILTERS_OK ||
      group.setType(FILTERS_GROUP_TYPE_3) != FILTERS_OK || group.insertEntry(entry) != FILTERS_OK) {
    return false;
  }
  std::string bytes;
  group.serialize(&bytes);
  const FiltersGroup rebuilt(bytes);
  std::ostringstream text;
  text << rebuilt;
  return rebuilt == group && text.str().find("\"lag-1\"") != std::string::npos;
}

Match* pluginNewMatch() { return new MatchTTL(64); }
Action* pluginNewAction() { return new ActionDeny; }
FiltersSerialized* pluginNewBuffer() { return new PluginBuffer; }

bool pluginKnowsAsTTL(const Match* match) {
  return dynamic_cast<const MatchTTL*>(match) != nullptr;
}

void pluginThrow() { ActionMplsPortSet(limid_make_ethernet(1), limid_make_ethernet(2)); }
