#include "form_rows.h"

#include <algorithm>
#include <cstring>

namespace FiltersInspect {
namespace {

using namespace FiltersCommon;

// --- What rows are made of -----------------------------------------------------------------------

constexpr std::uint8_t bitsOf(Form address) {
  return static_cast<std::uint8_t>(8 * sizeOf(address));
}

constexpr FormRow flag() { return {}; }
constexpr FormRow number(std::uint8_t bits, int field) {
  return {Form::kNumber, bits, {field}, {}};
}
constexpr FormRow hexadecimal(std::uint8_t bits, int field) {
  return {Form::kHexadecimal, bits, {field}, {}};
}
constexpr FormRow numbers(std::uint8_t bits, int field) {
  return {Form::kNumbers, bits, {field}, {}};
}
template <class Enum>
constexpr FormRow name(int field) {
  return {Form::kName, 32, {field}, kNamesOf<Enum>};
}
constexpr FormRow boolean(int field) { return {Form::kBoolean, 1, {field}, {}}; }
constexpr FormRow address(Form form, int field) { return {form, bitsOf(form), {field}, {}}; }
constexpr FormRow masked(Form form, int field, int mask) {
  return {form, bitsOf(form), {field, mask}, {}};
}
constexpr FormRow portMask(int port, int mask) { return {Form::kPortMask, 16, {port, mask}, {}}; }
constexpr FormRow portRange(int min, int max) { return {Form::kPortRange, 16, {min, max}, {}}; }
constexpr FormRow limid(int field) { return {Form::kLimid, 32, {field}, {}}; }
constexpr FormRow limids(int field) { return {Form::kLimids, 32, {field}, {}}; }
template <class Enum>
constexpr FormRow limidsBut(int field, int excluded) {
  return {Form::kLimids, 32, {field, excluded}, kNamesOf<Enum>};
}
constexpr FormRow vlanInfo(int svc, int proto) { return {Form::kVlanInfo, 32, {svc, proto}, {}}; }
constexpr FormRow mplsPorts(int vpn, int port) { return {Form::kMplsPorts, 32, {vpn, port}, {}}; }

constexpr PacketField noField() { return {}; }
constexpr PacketField field(Kind kind, Layer layer, const char* usual = nullptr) {
  return {kind, layer, usual};
}

const google::protobuf::FieldDescriptor* fieldOf(const AnyMessage& message, int field) {
  return message.GetDescriptor()->FindFieldByNumber(field);
}

}  // namespace

const MatchForm* formOf(filtersMatch_t code) {
  switch (code) {
#define MATCH_FORM(code, form, ...)                           \
  case code: {                                                \
    static constexpr MatchForm row = {{form}, {__VA_ARGS__}}; \
    return &row;                                              \
  }
#include "forms.def"
  }
  return nullptr;
}

const FormRow* formOf(filtersAction_t code) {
  switch (code) {
#define ACTION_FORM(code, form)          \
  case code: {                           \
    static constexpr FormRow row = form; \
    return &row;                         \
  }
#include "forms.def"
  }
  return nullptr;
}

std::string_view packetFieldName(filtersMatch_t code, std::size_t which) {
  const MatchForm* row = formOf(code);
  if (row == nullptr || which > 1 || row->packet[which].kind == Kind::kNone) return {};
  const char* own = row->packet[which].name;
  return own == nullptr ? nameOf(code) : own;
}

// --- Fields --------------------------------------------------------------------------------------

std::uint32_t numberIn(const AnyMessage& message, int field) {
  const auto* descriptor = fieldOf(message, field);
  const auto* reflection = message.GetReflection();
  if (descriptor->cpp_type() == google::protobuf::FieldDescriptor::CPPTYPE_BOOL) {
    return reflection->GetBool(message, descriptor) ? 1 : 0;
  }
  return reflection->GetUInt32(message, descriptor);
}

std::size_t countIn(const AnyMessage& message, int field) {
  const auto* descriptor = fieldOf(message, field);
  return static_cast<std::size_t>(message.GetReflection()->FieldSize(message, descriptor));
}

std::uint32_t numberIn(const AnyMessage& message, int field, std::size_t index) {
  return message.GetReflection()->GetRepeatedUInt32(message, fieldOf(message, field),
                                                    static_cast<int>(index));
}

AddressBytes addressIn(const AnyMessage& message, int field, Form form) {
  std::string scratch;
  const std::string& bytes =
      message.GetReflection()->GetStringReference(message, fieldOf(message, field), &scratch);
  AddressBytes address = {};
  bytes.copy(reinterpret_cast<char*>(address.data()), sizeOf(form));
  return address;
}

void setNumber(AnyMessage* message, int field, std::uint32_t value) {
  const auto* descriptor = fieldOf(*message, field);
  const auto* reflection = message->GetReflection();
  if (descriptor->cpp_type() == google::protobuf::FieldDescriptor::CPPTYPE_BOOL) {
    reflection->SetBool(message, descriptor, value != 0);
  } else {
    reflection->SetUInt32(message, descriptor, value);
  }
}

void addNumber(AnyMessage* message, int field, std::uint32_t value) {
  message->GetReflection()->AddUInt32(message, fieldOf(*message, field), value);
}

void setAddress(AnyMessage* message, int field, Form form, const AddressBytes& bytes) {
  message->GetReflection()->SetString(
      message, fieldOf(*message, field),
      std::string(reinterpret_cast<const char*>(bytes.data()), sizeOf(form)));
}

// Both ways an id that the platform cannot convert is 0, as in the library.
std::uint32_t limidToField(const FormRow& row, std::uint32_t limid) {
  if (row.form != Form::kMplsPorts) return limid;
  limid_t id;
  std::memcpy(&id, &limid, sizeof id);
  std::uint32_t index = 0;
  limid_to_ifindex(id, &index);
  return index;
}

std::uint32_t limidFromField(const FormRow& row, std::uint32_t value) {
  if (row.form != Form::kMplsPorts) return value;
  limid_t id{};
  limid_from_ifindex(&id, value);
  std::uint32_t limid;
  std::memcpy(&limid, &id, sizeof limid);
  return limid;
}

}  // namespace FiltersInspect
