#ifndef FILTER_COMMON_TESTS_CLASS_CHECKS_H_
#define FILTER_COMMON_TESTS_CLASS_CHECKS_H_

// What holds for every match and action class: the bodies of typed tests over the samples.

#include <cxxabi.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <type_traits>
#include <typeinfo>
#include <vector>

#include "samples.h"

namespace catalogue {

// Match or Action.
template <class T>
using BaseOf = std::conditional_t<std::is_base_of_v<Match, T>, Match, Action>;

template <class T>
const BaseOf<T>& generic(const T& object) {
  return object;
}

// The objects carry the class's code, hold what they were given, equal their copies and nothing
// else: by their own comparison and by the generic one.
template <class T>
void checkValues() {
  EXPECT_EQ(rowOf<T>().got, rowOf<T>().given);
  for (const T& object : samples<T>()) {
    EXPECT_EQ(object.getType(), codeOf<T>());
    const T copy(object);
    T assigned = samples<T>().back();
    assigned = object;
    for (const T& other : samples<T>()) {
      const bool same = &other == &object;
      EXPECT_EQ(copy == other, same);
      EXPECT_EQ(assigned == other, same);
      EXPECT_EQ(generic(copy) == generic(other), same);
    }
  }
}

template <class T, class List>
void checkDiffersFromOthers(const List& others) {
  for (const auto& [code, other] : others) {
    if (code == codeOf<T>()) continue;
    EXPECT_FALSE(samples<T>().front() == *other || *other == samples<T>().front()) << code;
  }
}

template <class T>
void checkWire() {
  EXPECT_EQ(wireOf(samples<T>().front()),
            "08" + varint(codeOf<T>()) + toHex(fromHex(rowOf<T>().fields)));
  for (const T& object : samples<T>()) {
    T read = samples<T>().back();
    readInto(&read, wireOf(object));
    EXPECT_EQ(wireOf(read), wireOf(object));
    EXPECT_TRUE(generic(read) == object);
  }
}

// What the first sample becomes when it reads a message without fields.
template <class T>
void checkReadsNothingAs(const T& expected) {
  T object = samples<T>().front();
  readInto(&object, "");
  EXPECT_TRUE(object == expected);
}

template <class T>
std::string nameOf() {
  const std::unique_ptr<char, void (*)(void*)> name(
      abi::__cxa_demangle(typeid(T).name(), nullptr, nullptr, nullptr), std::free);
  return name.get() + std::strlen("FiltersCommon::");
}

// The block that every object prints begins with its name and its code.
inline std::string block(const std::string& name, unsigned code,
                         const std::vector<std::string>& lines) {
  std::string text = "    =" + name + "=\n      " + (name[0] == 'M' ? "Match" : "Action") +
                     " Type ID: " + std::to_string(code) + "\n";
  for (const std::string& line : lines) text += "      " + line + "\n";
  return text;
}

template <class T>
void checkText() {
  const std::string text = block(nameOf<T>(), codeOf<T>(), rowOf<T>().lines);
  EXPECT_EQ(printed(samples<T>().front()), text);
  if constexpr (!std::is_same_v<T, MatchDSCP>) {
    EXPECT_EQ(printed(generic(samples<T>().front())), text);
  }
}

template <class C, class Other>
Other comparedWith(bool (C::*)(Other) const);

// A T whose own comparison always says no. The generic comparison hears of it only where T's is
// virtual, so there is no `override` here.
template <class T>
struct Contrary : T {
  using BaseOf<T>::operator==;
  explicit Contrary(const T& object) : T(object) {}
  bool operator==(decltype(comparedWith(&T::operator==))) const { return false; }
};

// The generic comparison asks the object on its left when T is one of the Virtual classes, and
// only then.
template <class T, class... Virtual>
void checkComparesVirtuallyOnlyIn() {
  const Contrary<T> contrary(samples<T>().front());
  EXPECT_EQ(generic<T>(contrary) == samples<T>().front(), !(std::is_same_v<T, Virtual> || ...));
  EXPECT_TRUE(generic(samples<T>().front()) == contrary);
}

}  // namespace catalogue

#endif  // FILTER_COMMON_TESTS_CLASS_CHECKS_H_
