#ifndef FILTER_COMMON_SRC_WIRE_MESSAGES_H_
#define FILTER_COMMON_SRC_WIRE_MESSAGES_H_

// Writes and reads fields of messages. The functions have the same names as those of WireWriter and
// WireReader, which work on bytes. get(), has() and change() of a field are the accessors of the
// generated message class.

#include <cstddef>
#include <cstdint>
#include <stdexcept>

namespace FiltersCommon {

// Reserves space before elements are added. Otherwise a message that is not on an arena would make
// an element first, and then grow its list. If the list cannot grow, that element is leaked.
template <class List>
List* withRoom(List* list, std::size_t count) {
  list->Reserve(list->size() + static_cast<int>(count));
  return list;
}

template <class Message>
class MessageWriter {
 public:
  explicit MessageWriter(Message* message) : message_(*message) {}

  template <class Field>
  void number(const Field& field, std::uint32_t value) {
    field.change(message_, value);
  }
  template <class Field>
  void signedNumber(const Field& field, std::int32_t value) {
    field.change(message_, value);
  }
  template <class Field>
  void bytes(const Field& field, const void* data, std::size_t size) {
    field.change(message_, data, size);
  }
  template <class Field>
  void clear(const Field& field) {
    field.change(message_)->Clear();
  }
  template <class Field, class Values, class ToWire>
  void appendNumbers(const Field& field, const Values& values, ToWire toWire) {
    auto* list = withRoom(field.change(message_), values.size());
    for (const auto& value : values) list->Add(toWire(value));
  }
  // Adds a message for each element; `write(element, message)` fills it.
  template <class Field, class Elements, class Write>
  void appendMessages(const Field& field, const Elements& elements, Write write) {
    auto* list = withRoom(field.change(message_), elements.size());
    for (const auto& element : elements) write(element, list->Add());
  }
 private:
  Message& message_;
};

template <class Message>
class MessageReader {
 public:
  explicit MessageReader(const Message& message) : message_(message) {}

  template <class Field>
  bool hasNumber(const Field& field) const {
    return field.has(message_);
  }
  template <class Field>
  std::uint32_t number(const Field& field) const {
    return static_cast<std::uint32_t>(field.get(message_));
  }
  template <class Field>
  bool hasBytes(const Field& field) const {
    return field.has(message_);
  }
  template <class Field>
  decltype(auto) bytes(const Field& field) const {
    return field.get(message_);
  }
  template <class Field>
  const auto& numbers(const Field& field) const {
    return field.get(message_);
  }
  template <class Field>
  const auto& messages(const Field& field) const {
    return field.get(message_);
  }
  [[noreturn]] void refuse(const char* why) const { throw std::invalid_argument(why); }
 private:
  const Message& message_;
};

}  // namespace FiltersCommon

#endif  // FILTER_COMMON_SRC_WIRE_MESSAGES_H_
