#ifndef FILTER_COMMON_SRC_CLASS_CHECKS_H_
#define FILTER_COMMON_SRC_CLASS_CHECKS_H_

// Checks at compile time that the classes of the catalogues compare and convert all their data.

#include <cstddef>
#include <type_traits>
#include <utility>

namespace FiltersCommon {

// The class that declares a member function: T itself, or the base from which T inherits it.
template <class C, class Result, class... Arguments>
C declaring(Result (C::*)(Arguments...));
template <class C, class Result, class... Arguments>
C declaring(Result (C::*)(Arguments...) const);

template <class T, std::size_t size>
struct WithTail : T {
  char tail[size];
};

template <class T, class Base, std::size_t... n>
constexpr bool holdsMore(std::index_sequence<n...>) {
  return ((sizeof(WithTail<T, n + 1>) != sizeof(WithTail<Base, n + 1>)) || ...);
}

// True if T has no data member beyond those of the class that declares `function`. sizeof does not
// show a member in the tail padding of the base. Arrays of 1 to alignof(T) bytes are appended,
// which makes such a member visible.
template <class T, class Function>
constexpr bool knowsAllOf(Function function) {
  return !holdsMore<T, decltype(declaring(function))>(std::make_index_sequence<alignof(T)>());
}

// True if Base itself declares the member function.
template <class Base, class Function>
constexpr bool isOf(Function function) {
  return std::is_same_v<decltype(declaring(function)), Base>;
}

}  // namespace FiltersCommon

#endif  // FILTER_COMMON_SRC_CLASS_CHECKS_H_
