#ifndef FILTER_INSPECT_SRC_TRAFFIC_ASSUMED_H_
#define FILTER_INSPECT_SRC_TRAFFIC_ASSUMED_H_

#include <filter_inspect/filter_analysis.h>

#include "analysis/packet_fields.h"

namespace FiltersInspect {

// The packet, and the fields of `assumed` that it does not tell.
inline Packet withAssumed(const Packet& packet, const Packet& assumed) {
  Packet both = packet;
  for (const PacketFields::Field& field : PacketFields::of(assumed)) {
    PacketFields::tell(&both, field.number, field.has ? std::optional(field.value) : std::nullopt);
  }
  return both;
}

}  // namespace FiltersInspect

#endif  // FILTER_INSPECT_SRC_TRAFFIC_ASSUMED_H_
