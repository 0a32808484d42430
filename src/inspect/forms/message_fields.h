#ifndef FILTER_INSPECT_SRC_FORMS_MESSAGE_FIELDS_H_
#define FILTER_INSPECT_SRC_FORMS_MESSAGE_FIELDS_H_

// Reads and writes the fields of a match's or action's message. These functions work on messages
// and not on objects, so that values that every setter refuses are kept.

#include <cstddef>
#include <cstdint>

#include "addresses.h"
#include "form_rows.h"

namespace FiltersInspect {

// 0 or 1 for a bool; 0 if absent.
inline std::uint32_t numberIn(const AnyMessage& message, const MessageField& field) {
  return field.number(message);
}
inline const NumberList& numbersIn(const AnyMessage& message, const MessageField& field) {
  return field.numbers(message);
}
// The bytes are padded with zeros or cut to the size of the form, as the library does.
inline AddressBytes addressIn(const AnyMessage& message, const MessageField& field,
                              ValueForm form) {
  AddressBytes address = {};
  field.bytes(message).copy(reinterpret_cast<char*>(address.data()), sizeOf(form));
  return address;
}

inline void setNumber(AnyMessage* message, const MessageField& field, std::uint32_t value) {
  field.set_number(message, value);
}
inline void addNumber(AnyMessage* message, const MessageField& field, std::uint32_t value) {
  field.mutable_numbers(message)->Add(value);
}
inline void setAddress(AnyMessage* message, const MessageField& field, ValueForm form,
                       const AddressBytes& bytes) {
  const auto* begin = reinterpret_cast<const char*>(bytes.data());
  field.mutable_bytes(message)->assign(begin, sizeOf(form));
}

}  // namespace FiltersInspect

#endif  // FILTER_INSPECT_SRC_FORMS_MESSAGE_FIELDS_H_
