// A getter fills its argument: a const one is refused.
#include <filter_common/filter_entries.h>

int main() {
  const FiltersCommon::MatchTTL match(1);
  return FiltersCommon::FiltersEntry().getMatch(match);
}
