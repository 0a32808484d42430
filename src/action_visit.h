#ifndef FILTER_COMMON_SRC_ACTION_VISIT_H_
#define FILTER_COMMON_SRC_ACTION_VISIT_H_

#include <filter_common/filter_actions.h>
#include <filter_common/filter_entries.h>

#include <memory>
#include <type_traits>

namespace FiltersCommon {

// Names the class of an action code to a generic function.
template <class T>
struct ActionTag;

#define FILTERS_ACTION(code, T, blank)                                          \
  template <>                                                                   \
  struct ActionTag<T> {                                                         \
    using Class = T;                                                            \
    static std::unique_ptr<T> makeBlank() { return std::make_unique<T> blank; } \
  };                                                                            \
  static_assert(isEntryClass<T>, #T " is missing from FILTERS_ACTION_CLASSES");
#include "action_catalogue.def"

// The only switch over action codes: returns f(ActionTag<T>()) for the class T of the code, and
// `unknown` for a code that no class carries. The catalogue's row is all that a new code needs
// here; an enumerator without a row does not compile.
template <class R, class F>
R visitAction(filtersAction_t code, R unknown, F&& f) {
  switch (code) {
#define FILTERS_ACTION(code, T, blank) \
  case code:                           \
    return f(ActionTag<T>());
#include "action_catalogue.def"
  }
  return unknown;
}

}  // namespace FiltersCommon

#endif  // FILTER_COMMON_SRC_ACTION_VISIT_H_
