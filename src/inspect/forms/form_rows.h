#ifndef FILTER_INSPECT_SRC_FORMS_FORM_ROWS_H_
#define FILTER_INSPECT_SRC_FORMS_FORM_ROWS_H_

// The rows of forms.def.

#include <google/protobuf/message.h>
#include <google/protobuf/repeated_field.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <filter_inspect/filter_names.h>

namespace FiltersInspect {

// The form of a value. The left column shows an example in text, and the right column the same
// value in JSON.
enum class ValueForm : std::uint8_t {
  kFlag,         // nothing: the name says it      true
  kNumber,       // 6                              6
  kHexadecimal,  // 0x8100                         33024
  kName,         // forwarding, 7                  "forwarding", 7
  kBoolean,      // true                           true
  kMac,          // 00:1b:21:0a:ff:42/ff:ff:...    {"address": "00:...", "mask": "ff:..."}
  kIPv4,         // 192.0.2.0/24                   the same
  kIPv6,         // 2001:db8::/32                  the same
  kPortMask,     // 179/0xffff                     {"port": 179, "mask": 65535}
  kPortRange,    // 1000-2000                      {"min": 1000, "max": 2000}
  kNumbers,      // {1,2}                          [1, 2]
  kLimid,        // 0x01000003                     {"limid": 16777219, "name": "eth-3"}
  kLimids,       // [0x01000003]!cpu               {"ports": [...], "excluded_types": ["cpu"]}
  kVlanInfo,     // 1/2                            {"svc_vlan_type": 1, "proto_cpu_vlan_type": 2}
  kMplsPorts,    // 0x03000007/0x01000003          {"vpn": {...}, "access_port": {...}}
};

constexpr bool isAddress(ValueForm form) {
  return form == ValueForm::kMac || form == ValueForm::kIPv4 || form == ValueForm::kIPv6;
}
// The size of an address in bits.
constexpr std::uint8_t bitsOf(ValueForm address) {
  return address == ValueForm::kMac ? 48 : address == ValueForm::kIPv4 ? 32 : 128;
}

// The names of an enumeration. In a message, a value of the enumeration is a number. For a value of
// form kNumber, names are read but not written.
struct Enumeration {
  std::string_view (*nameOf)(std::uint32_t value);
  std::optional<std::uint32_t> (*fromName)(std::string_view name);
  std::vector<std::string_view> (*all)();
};

template <class Enum>
constexpr Enumeration kNamesOf = {
    [](std::uint32_t value) { return nameOf(static_cast<Enum>(value)); },
    [](std::string_view name) -> std::optional<std::uint32_t> {
      const auto value = fromName<Enum>(name);
      if (!value) return std::nullopt;
      return static_cast<std::uint32_t>(*value);
    },
    [] {
      std::vector<std::string_view> all;
      for (const auto& [code, name] : namesOf<Enum>()) all.push_back(name);
      return all;
    }};

// The names in a table whose rows have a `value` and a `name`. If a value has several names,
// writers use the first.
template <const auto& kRows>
constexpr Enumeration kNamesIn = {[](std::uint32_t value) {
                                    for (const auto& row : kRows) {
                                      if (static_cast<std::uint32_t>(row.value) == value)
                                        return row.name;
                                    }
                                    return std::string_view();
                                  },
                                  [](std::string_view name) -> std::optional<std::uint32_t> {
                                    for (const auto& row : kRows) {
                                      if (row.name == name)
                                        return static_cast<std::uint32_t>(row.value);
                                    }
                                    return std::nullopt;
                                  },
                                  [] {
                                    std::vector<std::string_view> all;
                                    for (const auto& row : kRows) all.push_back(row.name);
                                    return all;
                                  }};

// The constraint of a match on a packet field.
enum class FieldTest : std::uint8_t {
  kNone,     // the match has no such field
  kFlag,     // the flag is set
  kValue,    // the field equals the number in the message
  kTernary,  // the field equals the first number under the mask in the second
  kRange,    // the field lies between the two numbers, both included
  kSet,      // the field is one of the numbers in fields[0]
  kNotIn,    // the field is none of the numbers in fields[1]
};

// The values that have several readings ("open" values). Empty sets, and ranges that end before
// they begin, are open in every match that can hold them.
enum class Reading : std::uint8_t {
  kPlain,
  kNoMaskIsOpen,   // a mask of 0 may mean this value alone
  kNotZeroIsOpen,  // a value other than 0 may mean every value but 0
  kMayBeDscp,      // if the two low bits are 0, they may match any
};

// The kinds of packet that are known to have a field.
enum class Layer : std::uint8_t {
  kSome,        // unknown: the field stands for itself
  kEvery,       // every packet
  kTagging,     // every packet; 0 says that the frame has no tag
  kTag,         // tagged frames (IEEE 802.1Q)
  kIp,          // IPv4 and IPv6 packets
  kIpProtocol,  // IPv4 and IPv6 packets; the value decides about layer-4 ports
  kIPv4,
  kIPv6,
  kPorts,  // packets of protocols with layer-4 ports
};
constexpr bool isInEveryPacket(Layer layer) {
  return layer == Layer::kEvery || layer == Layer::kTagging;
}

struct PacketField {
  FieldTest test = FieldTest::kNone;
  Layer layer = Layer::kSome;
  const char* usual = nullptr;  // values for example packets, separated by blanks, the best first
  const char* name = nullptr;   // null: the name of the match
  Reading reading = Reading::kPlain;
  std::uint8_t carried = 0;  // the number of bits in a frame, if the match has more

  constexpr PacketField called(const char* its) const {
    PacketField field = *this;
    field.name = its;
    return field;
  }
  constexpr PacketField readAs(Reading its) const {
    PacketField field = *this;
    field.reading = its;
    return field;
  }
  constexpr PacketField carriedIn(std::uint8_t bits) const {
    PacketField field = *this;
    field.carried = bits;
    return field;
  }
};

// A field of a match's or action's message. Its functions call those of the generated class, since
// asking descriptors takes much longer. A field has the two functions of its kind; its other
// functions are null.
using AnyMessage = google::protobuf::Message;
using NumberList = google::protobuf::RepeatedField<std::uint32_t>;
struct MessageField {
  std::uint32_t (*number)(const AnyMessage&) = nullptr;  // also a bool
  void (*set_number)(AnyMessage*, std::uint32_t) = nullptr;
  const NumberList& (*numbers)(const AnyMessage&) = nullptr;
  NumberList* (*mutable_numbers)(AnyMessage*) = nullptr;
  const std::string& (*bytes)(const AnyMessage&) = nullptr;
  std::string* (*mutable_bytes)(AnyMessage*) = nullptr;

  // False if the message has no such field.
  constexpr explicit operator bool() const { return number || numbers || bytes; }
};

struct FormRow {
  ValueForm form = ValueForm::kFlag;
  std::uint8_t bits = 0;  // the size of each number or address
  // The second field is the mask of an address, the excluded types of ports, or the second part of
  // a pair.
  MessageField fields[2] = {};
  Enumeration names = {};  // for kName, some kNumber, and the excluded types of kLimids
};

struct MatchForm : FormRow {
  PacketField packet[2] = {};
};

// When an action has an effect: always, or only on packets that are forwarded or copied.
enum class Effect : std::uint8_t { kAlways, kUnlessDropped };

struct ActionForm : FormRow {
  Effect effect = Effect::kAlways;
};

// The word `dscp` is another notation for a ToS whose two low bits are 0.
inline constexpr std::string_view kDscp = "dscp";
extern const FormRow kDscpRow;  // a number of 6 bits, or a name
constexpr std::uint32_t tosOf(std::uint32_t dscp) { return dscp << 2; }

// Null for a code without a class.
const MatchForm* formOf(FiltersCommon::filtersMatch_t code);
const ActionForm* formOf(FiltersCommon::filtersAction_t code);

// The name of the first or second packet field of a match; empty if there is none.
std::string_view packetFieldName(FiltersCommon::filtersMatch_t code, std::size_t which);

}  // namespace FiltersInspect

#endif  // FILTER_INSPECT_SRC_FORMS_FORM_ROWS_H_
