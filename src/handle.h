#ifndef FILTER_COMMON_SRC_HANDLE_H_
#define FILTER_COMMON_SRC_HANDLE_H_

#include <limid/limid.h>

#include <list>
#include <utility>

namespace FiltersCommon {

// Handles of the procedural interface: a void* is always made of a pointer to the family's base,
// Match or Action, and is always read back through it.

template <class Base, class T, class... Arguments>
void* newHandle(Arguments&&... arguments) {
  return static_cast<Base*>(new T(std::forward<Arguments>(arguments)...));
}

// The handle's object as a T, which the caller vouches for.
template <class Base, class T = Base>
T& fromHandle(void* handle) {
  return static_cast<T&>(*static_cast<Base*>(handle));
}

// An array of ports as a list; an empty one is not read.
inline std::list<limid_t> portList(const limid_t* ports, unsigned int count) {
  return count == 0 ? std::list<limid_t>() : std::list<limid_t>(ports, ports + count);
}

}  // namespace FiltersCommon

#endif  // FILTER_COMMON_SRC_HANDLE_H_
