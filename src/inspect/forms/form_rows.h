#ifndef FILTER_INSPECT_SRC_FORMS_FORM_ROWS_H_
#define FILTER_INSPECT_SRC_FORMS_FORM_ROWS_H_

// What forms.def says of each match and action, and the text of one of them, to and from its
// message: values that no setter makes survive, since no object stands between.

#include <google/protobuf/message.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include <filter_common/filter_actions.pb.h>
#include <filter_common/filter_counter.pb.h>
#include <filter_common/filter_matches.pb.h>
#include <filter_inspect/filter_names.h>

namespace FiltersInspect {

using FiltersCommon::ActionPB;
using FiltersCommon::CounterPB;
using FiltersCommon::MatchPB;

// --- Rows ---

// How a value is written, text beside JSON.
enum class Form : std::uint8_t {
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

// Names of an enumeration, whose values travel as numbers.
struct Enumeration {
  std::string_view (*nameOf)(std::uint32_t value);
  std::optional<std::uint32_t> (*fromName)(std::string_view name);
};

// What a match asks of a packet field.
enum class Kind : std::uint8_t {
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
  Kind kind = Kind::kNone;
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
  Form form = Form::kFlag;
  std::uint8_t bits = 0;  // of each number or address
  // Numbers of the message's fields, 0 where there is none. The second is the mask of an address,
  // the excluded types beside ports, the second of a pair.
  int fields[2] = {};
  Enumeration names = {};  // of kName, and of the excluded types of kLimids
};

struct MatchForm : FormRow {
  PacketField packet[2] = {};
};

// Null for a code that no class carries.
const MatchForm* formOf(FiltersCommon::filtersMatch_t code);
const FormRow* formOf(FiltersCommon::filtersAction_t code);

// Of the first or second packet field of a match; empty where there is none.
std::string_view packetFieldName(FiltersCommon::filtersMatch_t code, std::size_t which);

// --- Fields of a message, by their numbers ---

using AnyMessage = google::protobuf::Message;
std::uint32_t numberIn(const AnyMessage& message, int field);  // of bool 0 or 1; 0 when absent
std::size_t countIn(const AnyMessage& message, int field);     // of a repeated one
std::uint32_t numberIn(const AnyMessage& message, int field, std::size_t index);
// In the order of transmission, filled with zeros or cut to the form's size as the library does.
using AddressBytes = std::array<unsigned char, 16>;
constexpr std::size_t sizeOf(Form address) {
  return address == Form::kMac ? 6 : address == Form::kIPv4 ? 4 : 16;
}
AddressBytes addressIn(const AnyMessage& message, int field, Form form);

// For an address of so many bytes: the ones in front of the first 0, and the bits up to the last 1.
// Where both are the same, it is the mask of a prefix of this length.
unsigned leadingOnes(const AddressBytes& bytes, std::size_t size);
unsigned bitsToLastOne(const AddressBytes& bytes, std::size_t size);
AddressBytes prefixMask(unsigned length);

void setNumber(AnyMessage* message, int field, std::uint32_t value);
void addNumber(AnyMessage* message, int field, std::uint32_t value);
void setAddress(AnyMessage* message, int field, Form form, const AddressBytes& bytes);

// The number of a limid, as text and JSON have it, for the field of a row's limid: the field's own
// number, but for MPLS ports, whose fields are interface indexes.
std::uint32_t limidToField(const FormRow& row, std::uint32_t limid);
std::uint32_t limidFromField(const FormRow& row, std::uint32_t value);

// --- Text ---

// "dst_l4_port=179/0xffff", "permit", "1=packets"; a code or type without a name is its number.
std::string textOf(const MatchPB& match);
std::string textOf(const ActionPB& action);
std::string textOf(const CounterPB& counter);

// Appends a row's value to `out`: nothing for a flag, else '=' and the value; and the value alone.
void appendValue(const FormRow& row, const AnyMessage& message, std::string* out);
std::string valueText(const FormRow& row, const AnyMessage& message);

// Why a text is no value of the row, and where in the text.
struct ValueFault {
  std::string why;
  std::size_t at = 0;
};
// Sets the message's fields; the code is the caller's.
std::optional<ValueFault> readValue(const FormRow& row, std::string_view text, AnyMessage* message);

// Parts of values. A number is decimal or hexadecimal behind 0x; nothing when the text is none or
// has more bits. A name is one of the enumeration's or a number. An address is the form's alone:
// "00:1b:21:0a:ff:42", "192.0.2.1", "2001:db8::1".
std::optional<std::uint32_t> parseNumber(std::string_view text, unsigned bits);
std::optional<std::uint32_t> parseName(const Enumeration& names, std::string_view text);
std::optional<std::int32_t> parseCounterType(std::string_view text);  // signed, as it travels
std::optional<AddressBytes> parseAddress(Form form, std::string_view text);

void appendNumber(std::uint32_t value, std::string* out);
void appendName(const Enumeration& names, std::uint32_t value, std::string* out);
void appendAddress(Form form, const AddressBytes& bytes, std::string* out);
void appendHexadecimal(std::uint32_t value, int digits, std::string* out);  // at least so many
void appendLimid(std::uint32_t limid, std::string* out);                    // 0x01000003

template <class Enum>
constexpr Enumeration kNamesOf = {
    [](std::uint32_t value) { return nameOf(static_cast<Enum>(value)); },
    [](std::string_view name) -> std::optional<std::uint32_t> {
      const auto value = fromName<Enum>(name);
      if (!value) return std::nullopt;
      return static_cast<std::uint32_t>(*value);
    }};

}  // namespace FiltersInspect

#endif  // FILTER_INSPECT_SRC_FORMS_FORM_ROWS_H_
