#ifndef FILTER_COMMON_SRC_PARSE_H_
#define FILTER_COMMON_SRC_PARSE_H_

// Turns bytes of other processes into messages. Parsing never fails, and never prints on standard
// error.

#include <filter_common/filter_serialized.h>

#include <climits>
#include <cstddef>
#include <stdexcept>

#include "shared/arena.h"

namespace FiltersCommon {

// The buffer's bytes. Throws if the buffer has a size but no data. The text of the exception is
// fixed here, because the standard library's own text differs between releases.
inline const char* checkedData(const FiltersSerialized& buffer) {
  if (buffer.data() == nullptr && buffer.size() != 0) {
    throw std::logic_error("basic_string::_M_construct null not valid");
  }
  return buffer.data();
}

// The message, on the arena, with whatever the parser could read. The parser's result is ignored
// for two reasons: it is false for the zero byte that ends a buffer, and callers must get
// everything that was stored before a fault. The partial parse stores the same as the full parse
// but does not list missing required fields. That list would need several times the memory of the
// input, and the runtime would print it on standard error.
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
