// A getter changes its argument, so a call with a const argument does not compile.
#include <filter_common/filter_entries.h>

using namespace FiltersCommon;

filtersErr_t get(const MatchTTL& match) { return FiltersEntry().getMatch(match); }
filtersErr_t get(const ActionDeny& action) { return FiltersEntry().getAction(action); }
