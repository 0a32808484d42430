#ifndef FILTER_INSPECT_SRC_FORMS_MESSAGE_FIELDS_H_
#define FILTER_INSPECT_SRC_FORMS_MESSAGE_FIELDS_H_

// Reads and writes the fields of a match's or action's message by their numbers. These functions
// work on messages and not on objects, so that values that no setter accepts survive.

#include <google/protobuf/message.h>

#include <cstddef>
#include <cstdint>

#include "addresses.h"

namespace FiltersInspect {

using AnyMessage = google::protobuf::Message;

std::uint32_t numberIn(const AnyMessage& message, int field);  // 0 or 1 for a bool; 0 if absent
std::size_t countIn(const AnyMessage& message, int field);     // for a repeated field
std::uint32_t numberIn(const AnyMessage& message, int field, std::size_t index);
// The bytes are padded with zeros or cut to the size of the form, as the library does.
AddressBytes addressIn(const AnyMessage& message, int field, ValueForm form);

void setNumber(AnyMessage* message, int field, std::uint32_t value);
void addNumber(AnyMessage* message, int field, std::uint32_t value);
void setAddress(AnyMessage* message, int field, ValueForm form, const AddressBytes& bytes);

}  // namespace FiltersInspect

#endif  // FILTER_INSPECT_SRC_FORMS_MESSAGE_FIELDS_H_
