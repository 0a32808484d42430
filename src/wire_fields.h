#ifndef FILTER_COMMON_SRC_WIRE_FIELDS_H_
#define FILTER_COMMON_SRC_WIRE_FIELDS_H_

// The fields that the classes write and read: a template for each row of wire_fields.def. A row is
// one list of fields with four uses: PutFields writes them and TakeFields reads them, each as bytes
// (wire_bytes.h) or as messages (wire_messages.h).

#include <filter_common/filter_actions.h>
#include <filter_common/filter_groups.h>
#include <filter_common/filter_matches.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <list>
#include <memory>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "wire.h"
#include "wire_bytes.h"
#include "wire_messages.h"

namespace FiltersCommon {

// A field with the accessors of its generated message class. `change` sets a single field. For a
// repeated field it returns a pointer to the field.
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

// The fields of every class. This struct is a friend of the classes, so it can use their private
// members. `rowOf` returns the class whose row an object uses. `of(wire, object)` calls a function
// of `wire` for each field, in the order of the row. `Wire::As<T>` is T if the wire fills the
// object, and const T if the wire only reads it.
struct WireFields {
  template <class Wire>
  static void of(Wire&, typename Wire::template As<Match>&) {}
  static Match rowOf(const Match*);
  template <class Wire>
  static void of(Wire&, typename Wire::template As<Action>&) {}
  static Action rowOf(const Action*);

#define FIELD(kind, n, name, member) wire.kind(FILTERS_FIELD(n, set_, name), self.member);
#define LIST(kind, n, name, member) wire.kind(FILTERS_FIELD(n, mutable_, name), self.member);
#define INTERFACES(n, vpn, m, port) \
  wire.interfaces(FILTERS_FIELD(n, set_, vpn), FILTERS_FIELD(m, set_, port), self);
#define FILTERS_FIELDS(Class, ...)                                      \
  static Class rowOf(const Class*);                                     \
  template <class Wire>                                                 \
  static void of(Wire& wire, typename Wire::template As<Class>& self) { \
    __VA_ARGS__                                                         \
  }
#define FILTERS_MATCH_FIELDS FILTERS_FIELDS
#define FILTERS_ACTION_FIELDS FILTERS_FIELDS
#include "wire_fields.def"

#undef FIELD
#undef LIST
#undef INTERFACES

  struct Entry;
};

// Writes and reads an entry as a message or as bytes. The functions are in filter_entries.cpp.
struct WireFields::Entry {
  template <class Writer>
  static void put(const FiltersEntry& entry, Writer& out);
  // Returns false if the bytes have another form than put() writes. The entry then has unspecified
  // content, and must be made again from the parsed message. A zero byte may end the bytes of a
  // single entry, but not the bytes of an entry in a group. A policer's constructor takes a string.
  // `scratch` is a string that is used again for each policer.
  template <class Reader>
  static bool take(FiltersEntry* entry, Reader in, std::string* scratch, bool isAll = false);
 private:
  static bool admits(const FiltersEntry& entry, filtersMatch_t code);
  static bool admits(const FiltersEntry&, filtersAction_t) { return true; }
  static void store(FiltersEntry* entry, std::unique_ptr<Match> match);
  static void store(FiltersEntry* entry, std::unique_ptr<Action> action);
  template <class Object, class Code, class Part>
  static bool takeObject(FiltersEntry* entry, const Part& part);
};

// Convert a value to the number in its field, and a number to the value. Numbers are cut to the
// width of the value.
inline std::uint32_t toWire(limid_t limid) { return limidToWire(limid); }
template <class Value>
std::uint32_t toWire(Value value) {
  return static_cast<std::uint32_t>(value);
}
template <class Value>
Value fromWire(std::uint32_t number) {
  if constexpr (std::is_same_v<Value, limid_t>) {
    return limidFromWire(number);
  } else {
    return static_cast<Value>(number);
  }
}

// Writes the fields of an object by a MessageWriter or WireWriter.
template <class Writer>
struct PutFields {
  template <class T>
  using As = const T;

  template <class F, class T>
  void number(const F& field, T value) {
    out.number(field, toWire(value));
  }
  template <class F, class T>
  void signedNumber(const F& field, T value) {
    out.signedNumber(field, static_cast<std::int32_t>(value));
  }
  // The raw bytes of an address are in network byte order.
  template <class F, class Address>
  void address(const F& field, const Address& address) {
    out.bytes(field, &address, sizeof address);
  }
  template <class F, class Values>
  void numbers(const F& field, const Values& values) {
    out.appendNumbers(field, values, [](const auto& value) { return toWire(value); });
  }
  template <class F, class Values>
  void numbersAnew(const F& field, const Values& values) {
    numbers(field, values);
  }
  template <class F, class Values>
  void unreadNumbers(const F& field, const Values& values) {
    numbers(field, values);
  }
  // Deliberate: the values of a set replace the values in the message, while ports are added to
  // those in the message.
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

// Sorts the first `count` numbers, removes duplicates among them, and returns how many are left.
inline std::size_t makeSet(std::vector<unsigned short>* numbers, std::size_t count) {
  const auto end = numbers->begin() + static_cast<std::ptrdiff_t>(count);
  std::sort(numbers->begin(), end);
  return static_cast<std::size_t>(std::unique(numbers->begin(), end) - numbers->begin());
}

// Reads the fields of an object by a MessageReader or WireReader.
template <class Reader>
struct TakeFields {
  template <class T>
  using As = T;

  template <class F, class T>
  void number(const F& field, T& value) {
    value = fromWire<T>(in.number(field));
  }
  template <class F, class T>
  void signedNumber(const F& field, T& value) {
    number(field, value);
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
  template <class F, class Value>
  void numbers(const F& field, std::vector<Value>& values) {
    const auto& numbers = in.numbers(field);
    auto next = values.size();
    values.resize(next + static_cast<std::size_t>(numbers.size()));
    for (std::uint32_t number : numbers) values[next++] = fromWire<Value>(number);
  }
  template <class F, class Value>
  void numbersAnew(const F& field, std::list<Value>& values) {
    const auto& numbers = in.numbers(field);
    values.resize(static_cast<std::size_t>(numbers.size()));  // if memory runs out, nothing changes
    auto next = values.begin();
    for (std::uint32_t number : numbers) *next++ = fromWire<Value>(number);
  }
  template <class F, class Values>
  void unreadNumbers(const F&, Values&) {}
  template <class F, class Value>
  void set(const F& field, std::vector<Value>& values) {
    std::vector<unsigned short> read =
        setFrom(in.numbers(field), std::size_t{std::numeric_limits<Value>::max()} + 1);
    if constexpr (std::is_same_v<Value, unsigned short>) {
      values = std::move(read);
    } else {
      values.assign(read.begin(), read.end());
    }
  }
  // Deliberate: these two fields are interface indexes, while all other ports are limids. If a
  // field is absent or of the wrong kind, the function throws when it reads a message. When it
  // reads bytes, only the reader fails, and the bytes are then parsed as a message.
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
  // The numbers as a set: an ascending vector without duplicates, each modulo `valueCount`.
  // Duplicates are removed whenever the vector holds twice `valueCount` numbers, so that a long
  // field needs no more memory.
  template <class Numbers>
  static std::vector<unsigned short> setFrom(const Numbers& numbers, std::size_t valueCount) {
    const std::size_t most = 2 * valueCount;
    std::vector<unsigned short> read(std::min(most, static_cast<std::size_t>(numbers.size())));
    std::size_t count = 0;
    bool ascending = true;  // as written by an object
    for (std::uint32_t number : numbers) {
      const auto value = static_cast<unsigned short>(number % valueCount);
      ascending = ascending && (count == 0 || read[count - 1] < value);
      if (count == most) count = makeSet(&read, count);
      read[count++] = value;
    }
    if (!ascending) count = makeSet(&read, count);
    read.erase(read.begin() + static_cast<std::ptrdiff_t>(count), read.end());
    return read;
  }
};

// PutFields or TakeFields, together with a function for the fields that hold messages.
template <class Fields, class Messages>
struct WithMessages : Fields {
  Messages messages;
};
template <class Fields, class Messages>
WithMessages<Fields, Messages> withMessages(Fields fields, Messages messages) {
  return {fields, messages};
}

template <class Message, class Object>
void putFields(Message* message, const Object& object) {
  MessageWriter<Message> out(message);
  PutFields<MessageWriter<Message>> put{out};
  WireFields::of(put, object);
}

template <class Message, class Object>
void takeFields(const Message& message, Object* object) {
  MessageReader<Message> in(message);
  TakeFields<MessageReader<Message>> take{in};
  WireFields::of(take, *object);
}

}  // namespace FiltersCommon

#endif  // FILTER_COMMON_SRC_WIRE_FIELDS_H_
