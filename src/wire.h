#ifndef FILTER_COMMON_SRC_WIRE_H_
#define FILTER_COMMON_SRC_WIRE_H_

// Writes interface ids and addresses to messages and reads them back.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

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

// Makes room before elements are added. Without it, a message that is not on an arena first makes
// an element and then makes room for it in its list. If making room fails, the element is leaked.
template <class Field>
void reserveMore(Field* field, std::size_t count) {
  field->Reserve(field->size() + static_cast<int>(count));
}

template <class Ports, class Field>
void appendPortsTo(Field* field, const Ports& ports) {
  reserveMore(field, ports.size());
  for (const limid_t& port : ports) field->Add(limidToWire(port));
}

template <class Ports, class Field>
void appendPortsFrom(const Field& field, Ports* ports) {
  for (std::uint32_t value : field) ports->push_back(limidFromWire(value));
}

// Writes the raw bytes of an address, which are in network byte order.
template <class Address>
void addressToWire(const Address& address, std::string* field) {
  field->assign(reinterpret_cast<const char*>(&address), sizeof address);
}

template <class Address>
bool sameAddress(const Address& a, const Address& b) {
  return std::memcmp(&a, &b, sizeof a) == 0;
}

// Reads an address from the first bytes of the field. Missing bytes are zero.
template <class Address>
Address addressFromWire(const std::string& field) {
  Address address{};
  std::memcpy(&address, field.data(), std::min(field.size(), sizeof address));
  return address;
}

}  // namespace FiltersCommon

#endif  // FILTER_COMMON_SRC_WIRE_H_
