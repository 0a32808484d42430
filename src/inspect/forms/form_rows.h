#ifndef FILTER_INSPECT_SRC_FORMS_FORM_ROWS_H_
#define FILTER_INSPECT_SRC_FORMS_FORM_ROWS_H_

// What forms.def says of each match and action.

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

#include <filter_inspect/filter_names.h>

namespace FiltersInspect {

// How a value is written, text beside JSON.
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

// The bits of an address.
constexpr std::uint8_t bitsOf(ValueForm address) {
  return address == ValueForm::kMac ? 48 : address == ValueForm::kIPv4 ? 32 : 128;
}

// Names of an enumeration, whose values travel as numbers.
struct Enumeration {
  std::string_view (*nameOf)(std::uint32_t value);
  std::optional<std::uint32_t> (*fromName)(std::string_view name);
};

template <class Enum>
constexpr Enumeration kNamesOf = {
    [](std::uint32_t value) { return nameOf(static_cast<Enum>(value)); },
    [](std::string_view name) -> std::optional<std::uint32_t> {
      const auto value = fromName<Enum>(name);
      if (!value) return std::nullopt;
      return static_cast<std::uint32_t>(*value);
    }};

// What a match asks of a packet field.
enum class FieldTest : std::uint8_t {
  kNone,     // there is no such field
  kFlag,     // that it holds
  kValue,    // that it is the number of the message's field
  kTernary,  // that it is the first message field under the mask in the second
  kRange,    // that it lies between the two message fields, both included
  kSet,      // that it is one of the numbers of the (first) message field
  kNotIn,    // that it is none of the numbers of the second message field
};

// Where the model leaves open what a value means, besides empty sets and ranges that end before
// they begin, which every match leaves open that can hold them.
enum class Reading : std::uint8_t {
  kPlain,
  kNoMaskIsOpen,   // a mask of 0 may mean that value alone
  kNotZeroIsOpen,  // a value other than 0 may mean every other
  kMayBeDscp,      // a value whose two low bits are 0 may leave them open
};

// Which packets have a field, as far as that is known.
enum class Layer : std::uint8_t {
  kSome,        // nothing is known: it stands for itself
  kEvery,       // every packet has it
  kTagging,     // every packet has it, and it says whether the frame is tagged: 0 when it is not
  kTag,         // tagged frames (IEEE 802.1Q)
  kIp,          // IPv4 and IPv6 packets
  kIpProtocol,  // the same, and it says whether there are layer-4 ports
  kIPv4,
  kIPv6,
  kPorts,  // packets of protocols with layer-4 ports
};
constexpr bool isInEveryPacket(Layer layer) {
  return layer == Layer::kEvery || layer == Layer::kTagging;
}

struct PacketField {
  FieldTest kind = FieldTest::kNone;
  Layer layer = Layer::kSome;
  const char* usual = nullptr;  // values to show, the best first, with blanks between
  const char* name = nullptr;   // null: the match's own
  Reading reading = Reading::kPlain;
  std::uint8_t carried = 0;  // bits that a frame has for it, where the match takes more

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

struct FormRow {
  ValueForm form = ValueForm::kFlag;
  std::uint8_t bits = 0;  // of each number or address
  // Numbers of the message's fields, 0 where there is none. The second is the mask of an address,
  // the excluded types beside ports, the second of a pair.
  int fields[2] = {};
  Enumeration names = {};  // of kName, and of the excluded types of kLimids
};

struct MatchForm : FormRow {
  PacketField packet[2] = {};
};

// Whether an action does something to a packet that is dropped and of which no copy goes on.
enum class Effect : std::uint8_t { kAlways, kUnlessDropped };

struct ActionForm : FormRow {
  Effect effect = Effect::kAlways;
};

// Null for a code that no class carries.
const MatchForm* formOf(FiltersCommon::filtersMatch_t code);
const ActionForm* formOf(FiltersCommon::filtersAction_t code);

// Of the first or second packet field of a match; empty where there is none.
std::string_view packetFieldName(FiltersCommon::filtersMatch_t code, std::size_t which);

}  // namespace FiltersInspect

#endif  // FILTER_INSPECT_SRC_FORMS_FORM_ROWS_H_
