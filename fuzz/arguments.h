#ifndef FILTER_COMMON_FUZZ_ARGUMENTS_H_
#define FILTER_COMMON_FUZZ_ARGUMENTS_H_

// The arguments of calls, taken from the input, and the messages that the objects made of them must
// write.

#include <filter_common/filter_actions.pb.h>
#include <filter_common/filter_matches.pb.h>
#include <limid/limid_standin.h>
#include <policer/policer.h>

#include <cstdint>
#include <list>
#include <string>
#include <type_traits>

#include "fuzz.h"

namespace fuzz {

using namespace FiltersCommon;

inline limid_t limidOf(ByteReader& in) {
  switch (in.below(6)) {
    case 0:
      return limid_make_ethernet(in.u8());
    case 1:
      return limid_make_lag(in.u8());
    case 2:
      return limid_make_mpls_vpws(in.u8());
    case 3:
      return limid_make_bridgedomain(limid_bridgedomain_type_vpls, in.u8());
    case 4:
      return limid_make_bridgedomain(limid_bridgedomain_type_vpls + 1, in.u8());
    default:
      return in.u32();
  }
}

// The two interfaces of an MPLS port action, and whether it takes them.
struct MplsPorts {
  explicit MplsPorts(ByteReader& in) : vpn(limidOf(in)), access(limidOf(in)) {}

  bool valid() const {
    std::uint32_t type = 0, number = 0;
    const bool isVpls = limid_to_bridgedomain_components(vpn, &type, &number) == 0 &&
                        type == limid_bridgedomain_type_vpls;
    return (isVpls || limid_is_from_type(vpn, limid_type_mpls_vpws) != 0) &&
           (limid_is_from_type_ethernet(access) != 0 ||
            limid_is_from_type(access, limid_type_lag) != 0);
  }

  void note(ActionPB* message) const {
    std::uint32_t index = 0;
    limid_to_ifindex(vpn, &index);
    message->set_vpn_id(index);
    limid_to_ifindex(access, &index);
    message->set_mpls_access_port(index);
  }

  limid_t vpn;
  limid_t access;
};

inline policer::Policer policerOf(ByteReader& in) {
  const unsigned kind = in.below(5);
  if (kind == 0) return {};
  const auto stage = static_cast<policer::Stage>(kind == 4 ? in.u32() : kind - 1);
  return {in.u8(),
          stage,
          policer::Mode::Flow(1000, in.u8()),
          {policer::Action::SetDscp(policer::Color::Red, 9)}};
}

template <class Message, class Object>
std::string wireOf(const Object& object) {
  Message message;
  if constexpr (std::is_same_v<Message, MatchPB>) {
    object.convertToMatchPB(&message);
  } else {
    object.convertToActionPB(&message);
  }
  return message.SerializeAsString();
}

// Reads the arguments of a constructor and notes each in the message that the object must write.
// Given in braces, arguments are read from left to right by every compiler.
template <class Message>
struct Arguments {
  template <class Value>
  using Setter = void (Message::*)(Value);

  ByteReader& in;
  Message message;

  std::uint8_t u8(Setter<std::uint32_t> set) { return noted(set, in.u8()); }
  std::uint16_t u16(Setter<std::uint32_t> set) { return noted(set, in.u16()); }
  std::uint32_t u32(Setter<std::uint32_t> set) { return noted(set, in.u32()); }
  bool flag(Setter<bool> set) { return noted(set, in.flag()); }
  template <class Enum>
  Enum code(Setter<std::uint32_t> set) {
    return static_cast<Enum>(noted(set, in.mostlyBelow(10)));
  }

  template <class Address>
  Address address(std::string* (Message::*field)()) {
    return noted(field, in.address<Address>());
  }
  template <class Address>
  void allOnes(std::string* (Message::*field)()) {
    (message.*field)()->assign(sizeof(Address), '\xff');
  }

  limid_t limid() { return limidOf(in); }
  limid_t limid(Setter<std::uint32_t> set) { return noted(set, limid()); }
  std::list<limid_t> ports() {
    std::list<limid_t> ports;
    for (unsigned left = in.below(4); left > 0; --left) {
      ports.push_back(limid());
      message.add_ports_(ports.back());
    }
    return ports;
  }
 private:
  template <class Value, class Argument>
  Argument noted(Setter<Value> set, Argument argument) {
    (message.*set)(argument);
    return argument;
  }
  template <class Address>
  Address noted(std::string* (Message::*field)(), const Address& address) {
    (message.*field)()->assign(reinterpret_cast<const char*>(&address), sizeof address);
    return address;
  }
};

using Matches = Arguments<MatchPB>;
using Actions = Arguments<ActionPB>;

}  // namespace fuzz

#endif  // FILTER_COMMON_FUZZ_ARGUMENTS_H_
