#ifndef FILTER_COMMON_SRC_HANDLE_H_
#define FILTER_COMMON_SRC_HANDLE_H_

#include <limid/limid.h>

#include <list>
#include <utility>

namespace FiltersCommon {

// Handles of the procedural interface. A void* is always made from a pointer to the base class,
// Match or Action, and is always converted back to such a pointer.

template <class Base, class T, class... Arguments>
void* newHandle(Arguments&&... arguments) {
  return static_cast<Base*>(new T(std::forward<Arguments>(arguments)...));
}

// The object of a handle. The caller must know that the object is a T.
template <class Base, class T = Base>
T& fromHandle(void* handle) {
  return static_cast<T&>(*static_cast<Base*>(handle));
}

// Makes a list from an array of ports. The array is not read if count is 0.
inline std::list<limid_t> portList(const limid_t* ports, unsigned int count) {
  return count == 0 ? std::list<limid_t>() : std::list<limid_t>(ports, ports + count);
}

}  // namespace FiltersCommon

#endif  // FILTER_COMMON_SRC_HANDLE_H_
