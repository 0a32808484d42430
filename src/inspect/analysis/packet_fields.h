#ifndef FILTER_INSPECT_SRC_ANALYSIS_PACKET_FIELDS_H_
#define FILTER_INSPECT_SRC_ANALYSIS_PACKET_FIELDS_H_

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include <filter_inspect/filter_analysis.h>

namespace FiltersInspect {

// Access to the private fields of a Packet. Fields have the numbers of packetFields().
struct PacketFields {
  using Field = Packet::Field;
  using Value = std::array<std::uint64_t, 2>;

  // All known fields, in the order of their numbers.
  static const std::vector<Field>& of(const Packet& packet) { return packet.fields_; }

  static void reserve(Packet* packet, std::size_t fields) { packet->fields_.reserve(fields); }

  // Null if the field is unknown.
  static const Field* find(const Packet& packet, std::uint8_t number) {
    const auto at =
        std::lower_bound(packet.fields_.begin(), packet.fields_.end(), number, isBefore);
    return at != packet.fields_.end() && at->number == number ? &*at : nullptr;
  }

  // Makes a field known. No value means that the packet lacks the field. Returns false, and changes
  // nothing, if the field is already known.
  static bool tell(Packet* packet, std::uint8_t number, const std::optional<Value>& value) {
    auto& all = packet->fields_;
    const auto at = std::lower_bound(all.begin(), all.end(), number, isBefore);
    if (at != all.end() && at->number == number) return false;
    all.insert(at, {number, value.has_value(), value.value_or(Value{})});
    return true;
  }
 private:
  static bool isBefore(const Field& field, std::uint8_t number) { return field.number < number; }
};

}  // namespace FiltersInspect

#endif  // FILTER_INSPECT_SRC_ANALYSIS_PACKET_FIELDS_H_
