#ifndef FILTER_COMMON_SRC_ACTION_VISIT_H_
#define FILTER_COMMON_SRC_ACTION_VISIT_H_

#include <filter_common/filter_actions.h>

#include <memory>

#include "class_checks.h"

namespace FiltersCommon {

// A tag that passes the class of an action code to a generic function.
template <class T>
struct ActionTag {
  using Class = T;
  static std::unique_ptr<T> makeBlank();

  static_assert(knowsAllOf<T>(&T::operator==), "the class needs an operator== of its own");
  static_assert(knowsAllOf<T>(&T::convertToActionPB) && knowsAllOf<T>(&T::convertFromActionPB),
                "the class needs conversions of its own: messages would lose what it holds");
};

#define FILTERS_ACTION(code, T, blank)                  \
  template <>                                           \
  inline std::unique_ptr<T> ActionTag<T>::makeBlank() { \
    return std::make_unique<T> blank;                   \
  }
#include <filter_common/filter_actions.def>

// The only switch over action codes. It returns f(ActionTag<T>()) for the class T of the code, and
// `unknown` for a code without a class. A new code needs only its row in the catalogue; an
// enumerator without a row does not compile.
template <class R, class F>
R visitAction(filtersAction_t code, R unknown, F&& f) {
  switch (code) {
#define FILTERS_ACTION(code, T, blank) \
  case code:                           \
    return f(ActionTag<T>());
#include <filter_common/filter_actions.def>
  }
  return unknown;
}

}  // namespace FiltersCommon

#endif  // FILTER_COMMON_SRC_ACTION_VISIT_H_
