#ifndef FILTER_COMMON_SRC_WIRE_FIELDS_H_
#define FILTER_COMMON_SRC_WIRE_FIELDS_H_

// What the classes write and read, as a template for each row of wire_fields.def. A row is one list
// of fields for four uses: PutFields and TakeFields go through it, each with bytes (wire_bytes.h)
// or with messages (wire_messages.h).

#include <filter_common/filter_actions.h>
#include <filter_common/filter_groups.h>
#include <filter_common/filter_matches.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <list>
#include <utility>
#include <vector>

#include "wire.h"
#include "wire_bytes.h"
#include "wire_messages.h"

namespace FiltersCommon {

// A field with the accessors of its generated message class. `change` sets a number, and returns a
// pointer to anything else.
template <unsigned number, class Get, class Has, class Change>
struct Field : WireField<number> {
  constexpr Field(Get getter, Has asker, Change changer)
      : get(getter), has(asker), change(changer) {}
  Get get;
  Has has;
  Change change;
};
template <unsigned number, class Get, class Has, class Change>
constexpr Field<number, Get, Has, Change> fieldOf(Get get, Has has, Change change) {
  return {get, has, change};
}
#define FILTERS_FIELD(number, verb, name)                                   \
  fieldOf<number>([](const auto& m) -> decltype(auto) { return m.name(); }, \
                  [](const auto& m) { return m.has_##name(); },             \
                  [](auto& m, auto... value) -> decltype(auto) { return m.verb##name(value...); })

// The code of a match or an action.
constexpr WireField<1> kCodeField{};

// The fields of every class. The classes are friends of this struct, which therefore may name their
// members. `of(wire, object)` calls a function of `wire` for each field, in the order of the row.
// `Wire::As<T>` is T for a wire that fills the object, and const T for one that only reads it.
struct WireFields {
  template <class Wire>
  static void of(Wire&, typename Wire::template As<Match>&) {}
  template <class Wire>
  static void of(Wire&, typename Wire::template As<Action>&) {}

#define NUMBER(n, name, member) wire.number(FILTERS_FIELD(n, set_, name), self.member);
#define FLAG NUMBER
#define SIGNED(n, name, member) wire.signedNumber(FILTERS_FIELD(n, set_, name), self.member);
#define LIMID(n, name, member) wire.limid(FILTERS_FIELD(n, set_, name), self.member);
#define ADDRESS(n, name, member) wire.address(FILTERS_FIELD(n, mutable_, name), self.member);
#define LIMIDS(n, name, member) wire.limids(FILTERS_FIELD(n, mutable_, name), self.member);
#define LIMIDS_ANEW(n, name, member) wire.limidsAnew(FILTERS_FIELD(n, mutable_, name), self.member);
#define NUMBERS(n, name, member) wire.numbers(FILTERS_FIELD(n, mutable_, name), self.member);
#define UNREAD_NUMBERS(n, name, member) wire.unread(FILTERS_FIELD(n, mutable_, name), self.member);
#define MESSAGES(n, name, member) wire.messages(FILTERS_FIELD(n, mutable_, name), self.member);
#define SET(n, name, member) wire.set(FILTERS_FIELD(n, mutable_, name), self.member);
#define INTERFACES(n, vpn, m, port) \
  wire.interfaces(FILTERS_FIELD(n, set_, vpn), FILTERS_FIELD(m, set_, port), self);

#define FILTERS_FIELDS(Class, ...)                                      \
  template <class Wire>                                                 \
  static void of(Wire& wire, typename Wire::template As<Class>& self) { \
    __VA_ARGS__                                                         \
  }
#define FILTERS_MATCH_FIELDS FILTERS_FIELDS
#define FILTERS_ACTION_FIELDS FILTERS_FIELDS
#include "wire_fields.def"

#undef NUMBER
#undef FLAG
#undef SIGNED
#undef LIMID
#undef ADDRESS
#undef LIMIDS
#undef LIMIDS_ANEW
#undef NUMBERS
#undef UNREAD_NUMBERS
#undef MESSAGES
#undef SET
#undef INTERFACES

  struct Entry;
};

// How an entry writes and reads its message or its bytes, in filter_entries.cpp.
struct WireFields::Entry {
  template <class Writer>
  static void put(const FiltersEntry& entry, Writer& out);
  // Bytes that an entry does not write make this return false, and the entry then has unspecified
  // parts: it must be made anew from the parsed message. A zero byte may end the bytes of a buffer.
  template <class Reader>
  static bool take(FiltersEntry* entry, Reader in, bool isBuffer = false);
 private:
  static bool takeMatch(FiltersEntry* entry, const MatchPB& message);
  static bool takeMatch(FiltersEntry* entry, WireReader in);
  static bool takeAction(FiltersEntry* entry, const ActionPB& message);
  static bool takeAction(FiltersEntry* entry, WireReader in);
};

// Writes the fields of an object by a MessageWriter or WireWriter.
template <class Writer>
struct PutFields {
  template <class T>
  using As = const T;

  template <class F, class T>
  void number(const F& field, T value) {
    out.number(field, static_cast<std::uint32_t>(value));
  }
  template <class F, class T>
  void signedNumber(const F& field, T value) {
    out.signedNumber(field, static_cast<std::int32_t>(value));
  }
  template <class F>
  void limid(const F& field, limid_t limid) {
    out.number(field, limidToWire(limid));
  }
  // The raw bytes of an address are in network byte order.
  template <class F, class Address>
  void address(const F& field, const Address& address) {
    out.bytes(field, &address, sizeof address);
  }
  template <class F, class Limids>
  void limids(const F& field, const Limids& limids) {
    out.appendNumbers(field, limids, limidToWire);
  }
  template <class F, class Limids>
  void limidsAnew(const F& field, const Limids& held) {
    limids(field, held);
  }
  template <class F, class Value>
  void numbers(const F& field, const std::vector<Value>& values) {
    out.appendNumbers(field, values, [](Value value) { return static_cast<std::uint32_t>(value); });
  }
  template <class F, class Value>
  void unread(const F& field, const std::vector<Value>& values) {
    numbers(field, values);
  }
  // Deliberate: the values of a set replace those that a message already has, while ports are
  // added.
  template <class F, class Value>
  void set(const F& field, const std::vector<Value>& values) {
    out.clear(field);
    numbers(field, values);
  }
  template <class Vpn, class Port>
  void interfaces(const Vpn& vpn, const Port& port, const ActionMplsPortSet& action) {
    out.number(vpn, interfaceIndex(action.getVpnId()));
    out.number(port, interfaceIndex(action.getMplsAccessPort()));
  }

  Writer& out;
};

// Makes the first numbers an ascending row without duplicates and returns how many are left.
inline std::size_t makeSet(std::vector<unsigned short>* numbers, std::size_t count) {
  const auto end = numbers->begin() + static_cast<std::ptrdiff_t>(count);
  std::sort(numbers->begin(), end);
  return static_cast<std::size_t>(std::unique(numbers->begin(), end) - numbers->begin());
}

// Reads the fields of an object by a MessageReader or WireReader. Numbers are cut to the width of
// their members.
template <class Reader>
struct TakeFields {
  template <class T>
  using As = T;

  template <class F, class T>
  void number(const F& field, T& value) {
    value = static_cast<T>(in.number(field));
  }
  template <class F, class T>
  void signedNumber(const F& field, T& value) {
    number(field, value);
  }
  template <class F>
  void limid(const F& field, limid_t& limid) {
    limid = limidFromWire(in.number(field));
  }
  // Missing bytes are zero, and further bytes are ignored.
  template <class F, class Address>
  void address(const F& field, Address& address) {
    const auto& bytes = in.bytes(field);
    if (bytes.size() >= sizeof address) {
      std::memcpy(&address, bytes.data(), sizeof address);
    } else {
      address = {};
      std::memcpy(&address, bytes.data(), bytes.size());
    }
  }
  template <class F>
  void limids(const F& field, std::vector<limid_t>& limids) {
    append(in.numbers(field), &limids, limidFromWire);
  }
  template <class F>
  void limidsAnew(const F& field, std::list<limid_t>& limids) {
    std::list<limid_t> fresh;
    for (std::uint32_t value : in.numbers(field)) fresh.push_back(limidFromWire(value));
    limids.swap(fresh);
  }
  template <class F, class Value>
  void numbers(const F& field, std::vector<Value>& values) {
    append(in.numbers(field), &values, [](std::uint32_t v) { return static_cast<Value>(v); });
  }
  template <class F, class Value>
  void unread(const F&, std::vector<Value>&) {}
  template <class F, class Value>
  void set(const F& field, std::vector<Value>& values) {
    const std::vector<unsigned short> read = setFrom<Value>(in.numbers(field));
    values.assign(read.begin(), read.end());
  }
  template <class F>
  void set(const F& field, std::vector<unsigned short>& values) {
    values = setFrom<unsigned short>(in.numbers(field));
  }
  // Deliberate: these two fields are interface indexes, while all other ports are limids. If one is
  // absent or not of the right kind, a message makes this throw. Bytes only make the reader fail,
  // since the message that will be parsed from them decides.
  template <class Vpn, class Port>
  void interfaces(const Vpn& vpn, const Port& port, ActionMplsPortSet& action) {
    const bool hasVpn = in.hasNumber(vpn);
    const std::uint32_t vpnIndex = in.number(vpn);
    const bool complete = in.hasNumber(port) && hasVpn;
    const std::uint32_t portIndex = in.number(port);
    if (!complete) {
      return in.refuse("ActionMplsPortSet: ActionPB missing vpn_id and mpls_access_port");
    }
    const limid_t vpnId = interfaceAt(vpnIndex);
    const limid_t accessPort = interfaceAt(portIndex);
    if (std::is_same_v<Reader, WireReader> &&
        !(ActionMplsPortSet::IsLimidFromVpnType(vpnId) && isAccessPort(accessPort))) {
      return in.refuse("");
    }
    action.setVpnId(vpnId);
    action.setMplsAccessPort(accessPort);
  }

  Reader& in;
 private:
  // The numbers as a set: an ascending vector without duplicates. Duplicates are removed whenever
  // twice as many are held as there are values, so that a long field needs no more memory.
  template <class Value, class Numbers>
  static std::vector<unsigned short> setFrom(const Numbers& numbers) {
    constexpr std::size_t kMost = 2 * (std::size_t{std::numeric_limits<Value>::max()} + 1);
    std::vector<unsigned short> read(std::min(kMost, static_cast<std::size_t>(numbers.size())));
    std::size_t count = 0;
    bool ascending = true;  // as written by an object
    for (std::uint32_t number : numbers) {
      const auto value = static_cast<Value>(number);
      ascending = ascending && (count == 0 || read[count - 1] < value);
      if (count == kMost) count = makeSet(&read, count);
      read[count++] = value;
    }
    if (!ascending) count = makeSet(&read, count);
    read.erase(read.begin() + static_cast<std::ptrdiff_t>(count), read.end());
    return read;
  }
  template <class Numbers, class Value, class FromWire>
  static void append(const Numbers& numbers, std::vector<Value>* values, FromWire fromWire) {
    values->reserve(values->size() + static_cast<std::size_t>(numbers.size()));
    for (std::uint32_t number : numbers) values->push_back(fromWire(number));
  }
};

// PutFields or TakeFields with a function for the field of messages.
template <class Fields, class Messages>
struct WithMessages : Fields {
  Messages messages;
};
template <class Fields, class Messages>
WithMessages<Fields, Messages> withMessages(Fields fields, Messages messages) {
  return {fields, messages};
}

}  // namespace FiltersCommon

#endif  // FILTER_COMMON_SRC_WIRE_FIELDS_H_
