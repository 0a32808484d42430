#ifndef FILTER_COMMON_SRC_CLASS_CHECKS_H_
#define FILTER_COMMON_SRC_CLASS_CHECKS_H_

// What the compiler holds a class of the catalogues to: what it holds is compared and sent.

#include <cstddef>
#include <type_traits>
#include <utility>

namespace FiltersCommon {

// The class that declares a member function: T's own, or the base that T has it from.
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

// Whether T's member function, its own or inherited, is of a class that holds all that T holds.
// Data may hide in the padding that ends the base: a tail of some size then finds less room behind
// T.
template <class T, class Function>
constexpr bool knowsAllOf(Function function) {
  return !holdsMore<T, decltype(declaring(function))>(std::make_index_sequence<alignof(T)>());
}

// Whether a member function is declared by Base itself.
template <class Base, class Function>
constexpr bool isOf(Function function) {
  return std::is_same_v<decltype(declaring(function)), Base>;
}

}  // namespace FiltersCommon

#endif  // FILTER_COMMON_SRC_CLASS_CHECKS_H_
