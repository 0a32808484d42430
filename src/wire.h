#ifndef FILTER_COMMON_SRC_WIRE_H_
#define FILTER_COMMON_SRC_WIRE_H_

// How opaque ids and addresses stand in messages, and the one place that looks at their bytes.

#include <limid/limid.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
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
