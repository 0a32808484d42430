#ifndef FILTER_COMMON_SRC_PARSE_H_
#define FILTER_COMMON_SRC_PARSE_H_

// How bytes of other processes become messages: never with an error, and never with a word on
// standard error.

#include <filter_common/filter_serialized.h>

#include <climits>
#include <cstddef>
#include <stdexcept>

#include "shared/arena.h"

namespace FiltersCommon {

// The buffer's bytes. Throws when it claims a size and has none; the text is fixed, while that of
// the standard library's own check differs between releases.
inline const char* checkedData(const FiltersSerialized& buffer) {
  if (buffer.data() == nullptr && buffer.size() != 0) {
    throw std::logic_error("basic_string::_M_construct null not valid");
  }
  return buffer.data();
}

// What could be read of the bytes, on the arena. The parser's verdict is ignored: it is false for
// the zero byte that ends a buffer, and what it stored up to a fault is what callers are promised.
// The partial parse stores the same as the full one but does not list missing required fields,
// which would cost a multiple of the input in memory and as much again on standard error.
template <class Message>
const Message* parseMessage(const char* bytes, std::size_t size, MessageArena* arena) {
  auto* message = arena->make<Message>();
  if (size <= INT_MAX) {
    static_cast<void>(message->ParsePartialFromArray(bytes, static_cast<int>(size)));
  }
  return message;
}

}  // namespace FiltersCommon

#endif  // FILTER_COMMON_SRC_PARSE_H_
