#include "form_rows.h"

#include <filter_common/filter_actions.pb.h>
#include <filter_common/filter_matches.pb.h>

namespace FiltersInspect {
namespace {

using namespace FiltersCommon;

// --- Names of numbers ----------------------------------------------------------------------------

struct NumberName {
  std::uint32_t value;
  std::string_view name;
};
constexpr NumberName kIpProtocolNames[] = {
#define IP_PROTOCOL(number, name) {number, name},
#include "number_names.def"
};
constexpr NumberName kDscpNames[] = {
#define DSCP(number, name) {number, name},
#include "number_names.def"
};
constexpr NumberName kPortNames[] = {
#define L4_PORT(number, name) {number, name},
#include "number_names.def"
};

constexpr const Enumeration& kIpProtocols = kNamesIn<kIpProtocolNames>;
constexpr const Enumeration& kDscps = kNamesIn<kDscpNames>;
constexpr const Enumeration& kPorts = kNamesIn<kPortNames>;

// --- Fields of messages --------------------------------------------------------------------------

template <class PB, std::uint32_t (PB::*get)() const, void (PB::*set)(std::uint32_t)>
constexpr MessageField fieldOf() {
  MessageField field;
  field.number = [](const AnyMessage& pb) { return (static_cast<const PB&>(pb).*get)(); };
  field.set_number = [](AnyMessage* pb, std::uint32_t n) { (static_cast<PB*>(pb)->*set)(n); };
  return field;
}
template <class PB, bool (PB::*get)() const, void (PB::*set)(bool)>
constexpr MessageField fieldOf() {
  MessageField field;
  field.number = [](const AnyMessage& pb) -> std::uint32_t {
    return (static_cast<const PB&>(pb).*get)() ? 1 : 0;
  };
  field.set_number = [](AnyMessage* pb, std::uint32_t n) { (static_cast<PB*>(pb)->*set)(n != 0); };
  return field;
}
template <class PB, const NumberList& (PB::*get)() const, NumberList* (PB::*change)()>
constexpr MessageField fieldOf() {
  MessageField field;
  field.numbers = [](const AnyMessage& pb) -> const NumberList& {
    return (static_cast<const PB&>(pb).*get)();
  };
  field.mutable_numbers = [](AnyMessage* pb) { return (static_cast<PB*>(pb)->*change)(); };
  return field;
}
template <class PB, const std::string& (PB::*get)() const, std::string* (PB::*change)()>
constexpr MessageField fieldOf() {
  MessageField field;
  field.bytes = [](const AnyMessage& pb) -> const std::string& {
    return (static_cast<const PB&>(pb).*get)();
  };
  field.mutable_bytes = [](AnyMessage* pb) { return (static_cast<PB*>(pb)->*change)(); };
  return field;
}

// --- Building the rows ---------------------------------------------------------------------------

constexpr FormRow flag() { return {}; }
constexpr FormRow number(std::uint8_t bits, MessageField field, Enumeration names = {}) {
  return {ValueForm::kNumber, bits, {field}, names};
}
constexpr FormRow hexadecimal(std::uint8_t bits, MessageField field) {
  return {ValueForm::kHexadecimal, bits, {field}, {}};
}
constexpr FormRow numbers(std::uint8_t bits, MessageField field) {
  return {ValueForm::kNumbers, bits, {field}, {}};
}
template <class Enum>
constexpr FormRow name(MessageField field) {
  return {ValueForm::kName, 32, {field}, kNamesOf<Enum>};
}
constexpr FormRow boolean(MessageField field) { return {ValueForm::kBoolean, 1, {field}, {}}; }
constexpr FormRow address(ValueForm form, MessageField field) {
  return {form, bitsOf(form), {field}, {}};
}
constexpr FormRow masked(ValueForm form, MessageField field, MessageField mask) {
  return {form, bitsOf(form), {field, mask}, {}};
}
constexpr FormRow portMask(MessageField port, MessageField mask) {
  return {ValueForm::kPortMask, 16, {port, mask}, kPorts};
}
constexpr FormRow portRange(MessageField min, MessageField max) {
  return {ValueForm::kPortRange, 16, {min, max}, kPorts};
}
constexpr FormRow limid(MessageField field) { return {ValueForm::kLimid, 32, {field}, {}}; }
constexpr FormRow limids(MessageField field) { return {ValueForm::kLimids, 32, {field}, {}}; }
template <class Enum>
constexpr FormRow limidsBut(MessageField field, MessageField excluded) {
  return {ValueForm::kLimids, 32, {field, excluded}, kNamesOf<Enum>};
}
constexpr FormRow vlanInfo(MessageField svc, MessageField proto) {
  return {ValueForm::kVlanInfo, 32, {svc, proto}, {}};
}
constexpr FormRow mplsPorts(MessageField vpn, MessageField port) {
  return {ValueForm::kMplsPorts, 32, {vpn, port}, {}};
}

constexpr PacketField noField() { return {}; }
constexpr PacketField field(FieldTest test, Layer layer, const char* usual = nullptr) {
  return {test, layer, usual};
}

// False for a match that has a value but names no packet field: the analysis would treat it as a
// match that takes every packet.
constexpr bool hasFieldForValue(const MatchForm& row) {
  return row.form == ValueForm::kFlag || row.packet[0].test != FieldTest::kNone;
}

}  // namespace

const MatchForm* formOf(filtersMatch_t code) {
  switch (code) {
#define MATCH_FORM(code, form, ...)                                                             \
  case code: {                                                                                  \
    static constexpr MatchForm row = {{form}, {__VA_ARGS__}};                                   \
    static_assert(hasFieldForValue(row), "a match that holds a value is about a packet field"); \
    return &row;                                                                                \
  }
#include "forms.def"
  }
  return nullptr;
}

const ActionForm* formOf(filtersAction_t code) {
  switch (code) {
#define ACTION_FORM(code, form, effect)                 \
  case code: {                                          \
    static constexpr ActionForm row = {{form}, effect}; \
    return &row;                                        \
  }
#include "forms.def"
  }
  return nullptr;
}

const FormRow kDscpRow = number(6, {}, kDscps);

std::string_view packetFieldName(filtersMatch_t code, std::size_t which) {
  const MatchForm* row = formOf(code);
  if (row == nullptr || which > 1 || row->packet[which].test == FieldTest::kNone) return {};
  const char* own = row->packet[which].name;
  return own == nullptr ? nameOf(code) : own;
}

}  // namespace FiltersInspect
