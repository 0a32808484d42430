#ifndef FILTER_COMMON_SRC_WIRE_H_
#define FILTER_COMMON_SRC_WIRE_H_

// How opaque ids and addresses stand in messages.

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

// Two lists of limids: the same length and pairwise the same bytes. Templates here and below: some
// classes hold their ports in a list, others in a vector.
template <class Ports>
bool samePorts(const Ports& a, const Ports& b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(), sameBytes);
}

// Makes room before elements are added. Without it, a message that stands on no arena first makes
// an element and then room for it in its list: when that fails, nobody owns the element.
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

// An address is its raw bytes, in network byte order.
template <class Address>
void addressToWire(const Address& address, std::string* field) {
  field->assign(reinterpret_cast<const char*>(&address), sizeof address);
}

template <class Address>
bool sameAddress(const Address& a, const Address& b) {
  return std::memcmp(&a, &b, sizeof a) == 0;
}

// The first bytes of the field; those it lacks are zero.
template <class Address>
Address addressFromWire(const std::string& field) {
  Address address{};
  std::memcpy(&address, field.data(), std::min(field.size(), sizeof address));
  return address;
}

}  // namespace FiltersCommon

#endif  // FILTER_COMMON_SRC_WIRE_H_
