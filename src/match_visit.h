#ifndef FILTER_COMMON_SRC_MATCH_VISIT_H_
#define FILTER_COMMON_SRC_MATCH_VISIT_H_

#include <filter_common/filter_entries.h>
#include <filter_common/filter_matches.h>

#include <memory>
#include <type_traits>

namespace FiltersCommon {

// Names the class of a match code to a generic function.
template <class T>
struct MatchTag;

#define FILTERS_MATCH(code, T, blank)                                           \
  template <>                                                                   \
  struct MatchTag<T> {                                                          \
    using Class = T;                                                            \
    static std::unique_ptr<T> makeBlank() { return std::make_unique<T> blank; } \
  };                                                                            \
  static_assert(isEntryClass<T>, #T " is missing from FILTERS_MATCH_CLASSES");
#include "match_catalogue.def"

// The only switch over match codes: returns f(MatchTag<T>()) for the class T of the code, and
// `unknown` for a code that no class carries. The catalogue's row is all that a new code needs
// here; an enumerator without a row does not compile.
template <class R, class F>
R visitMatch(filtersMatch_t code, R unknown, F&& f) {
  switch (code) {
#define FILTERS_MATCH(code, T, blank) \
  case code:                          \
    return f(MatchTag<T>());
#include "match_catalogue.def"
  }
  return unknown;
}

}  // namespace FiltersCommon

#endif  // FILTER_COMMON_SRC_MATCH_VISIT_H_
