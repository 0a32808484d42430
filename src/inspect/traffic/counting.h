#ifndef FILTER_INSPECT_SRC_TRAFFIC_COUNTING_H_
#define FILTER_INSPECT_SRC_TRAFFIC_COUNTING_H_

// What all classes that count frames have in common.

#include <filter_inspect/filter_traffic.h>

#include "analysis/packet_fields.h"

namespace FiltersInspect {

// The fields of the packet, and the fields of `assumed` that are unknown in the packet.
inline Packet withAssumed(const Packet& packet, const Packet& assumed) {
  Packet both = packet;
  for (const PacketFields::Field& field : PacketFields::of(assumed)) {
    PacketFields::tell(&both, field.number, field.has ? std::optional(field.value) : std::nullopt);
  }
  return both;
}

// A number that is not a FrameFault is not counted.
inline void countFault(FrameFault fault, std::uint64_t number, std::int64_t time,
                       FrameCounts* faults) {
  const auto index = static_cast<std::size_t>(fault);
  if (index < faults->size()) (*faults)[index].add(number, time);
}

}  // namespace FiltersInspect

#endif  // FILTER_INSPECT_SRC_TRAFFIC_COUNTING_H_
