#ifndef FILTER_COMMON_SRC_MATCH_VISIT_H_
#define FILTER_COMMON_SRC_MATCH_VISIT_H_

#include <filter_common/filter_matches.h>

#include <memory>

#include "class_checks.h"

namespace FiltersCommon {

// A tag that passes the class of a match code to a generic function.
template <class T>
struct MatchTag {
  using Class = T;
  static std::unique_ptr<T> makeBlank();

  static_assert(!isOf<Match>(&T::operator==) && knowsAllOf<T>(&T::operator==),
                "the class needs an operator== of its own");
  static_assert(knowsAllOf<T>(&T::convertToMatchPB) && knowsAllOf<T>(&T::convertFromMatchPB),
                "the class needs conversions of its own: messages would lose what it holds");
};

#define FILTERS_MATCH(code, T, blank)                  \
  template <>                                          \
  inline std::unique_ptr<T> MatchTag<T>::makeBlank() { \
    return std::make_unique<T> blank;                  \
  }
#define FILTERS_MATCH_TWIN(code, T, blank) static_assert(sizeof(MatchTag<T>) != 0);
#include <filter_common/filter_matches.def>

// The only switch over match codes. It returns f(MatchTag<T>()) for the class T of the code, and
// `unknown` for a code without a class. A new code needs only its row in the catalogue; an
// enumerator without a row does not compile.
template <class R, class F>
R visitMatch(filtersMatch_t code, R unknown, F&& f) {
  switch (code) {
#define FILTERS_MATCH(code, T, blank) \
  case code:                          \
    return f(MatchTag<T>());
#include <filter_common/filter_matches.def>
  }
  return unknown;
}

}  // namespace FiltersCommon

#endif  // FILTER_COMMON_SRC_MATCH_VISIT_H_
