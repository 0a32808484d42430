#ifndef FILTER_COMMON_SRC_WIRE_H_
#define FILTER_COMMON_SRC_WIRE_H_

// Compares and converts interface ids and addresses.

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "shared/limid_number.h"

namespace FiltersCommon {

inline bool sameBytes(const limid_t& a, const limid_t& b) {
  return limidToWire(a) == limidToWire(b);
}

// True if two lists of limids have the same length and the same bytes in each element. These
// functions are templates because some classes hold their ports in a list, others in a vector.
template <class Ports>
bool samePorts(const Ports& a, const Ports& b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(), sameBytes);
}

template <class Address>
bool sameAddress(const Address& a, const Address& b) {
  return std::memcmp(&a, &b, sizeof a) == 0;
}

// Convert an id to the interface index, and an index to the id. These functions do not check the
// platform's result: an id that the platform cannot convert has the index 0.
inline std::uint32_t interfaceIndex(limid_t limid) {
  std::uint32_t index = 0;
  limid_to_ifindex(limid, &index);
  return index;
}

inline limid_t interfaceAt(std::uint32_t index) {
  limid_t limid{};
  limid_from_ifindex(&limid, index);
  return limid;
}

// True for an interface that can be the access port of an MPLS VPN.
inline bool isAccessPort(limid_t limid) {
  return limid_is_from_type(limid, limid_type_lag) || limid_is_from_type_ethernet(limid);
}

}  // namespace FiltersCommon

#endif  // FILTER_COMMON_SRC_WIRE_H_
