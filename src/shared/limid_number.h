#ifndef FILTER_COMMON_SRC_SHARED_LIMID_NUMBER_H_
#define FILTER_COMMON_SRC_SHARED_LIMID_NUMBER_H_

// Converts interface ids to the numbers in messages, and back. An id is opaque and belongs to the
// platform. A message has the four bytes of an id as one number, in the byte order of the sending
// machine.

#include <limid/limid.h>

#include <cstdint>
#include <cstring>
#include <type_traits>

namespace FiltersCommon {

static_assert(sizeof(limid_t) == sizeof(std::uint32_t), "a limid travels as 32 bits");
static_assert(std::is_trivially_copyable_v<limid_t>, "a limid is copied as bytes");

inline std::uint32_t limidToWire(limid_t limid) {
  std::uint32_t value;
  std::memcpy(&value, &limid, sizeof value);
  return value;
}

inline limid_t limidFromWire(std::uint32_t value) {
  limid_t limid;
  std::memcpy(&limid, &value, sizeof limid);
  return limid;
}

}  // namespace FiltersCommon

#endif  // FILTER_COMMON_SRC_SHARED_LIMID_NUMBER_H_
