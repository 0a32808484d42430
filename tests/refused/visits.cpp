// Visits every row of both catalogues.
#include "action_visit.h"
#include "match_visit.h"

using namespace FiltersCommon;

bool isMatch(filtersMatch_t code) {
  return visitMatch(code, false, [](auto) { return true; });
}
bool isAction(filtersAction_t code) {
  return visitAction(code, false, [](auto) { return true; });
}
