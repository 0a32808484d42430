#include "message_fields.h"

#include <string>

namespace FiltersInspect {
namespace {

const google::protobuf::FieldDescriptor* fieldOf(const AnyMessage& message, int field) {
  return message.GetDescriptor()->FindFieldByNumber(field);
}

}  // namespace

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

AddressBytes addressIn(const AnyMessage& message, int field, ValueForm form) {
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

void setAddress(AnyMessage* message, int field, ValueForm form, const AddressBytes& bytes) {
  message->GetReflection()->SetString(
      message, fieldOf(*message, field),
      std::string(reinterpret_cast<const char*>(bytes.data()), sizeOf(form)));
}

}  // namespace FiltersInspect
