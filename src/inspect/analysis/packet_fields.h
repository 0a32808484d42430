#ifndef FILTER_INSPECT_SRC_ANALYSIS_PACKET_FIELDS_H_
#define FILTER_INSPECT_SRC_ANALYSIS_PACKET_FIELDS_H_

#include <filter_inspect/filter_analysis.h>

namespace FiltersInspect {

// Access to the private fields of a Packet.
struct PacketFields {
  static auto& of(Packet& packet) { return packet.fields_; }
  static const auto& of(const Packet& packet) { return packet.fields_; }
};

}  // namespace FiltersInspect

#endif  // FILTER_INSPECT_SRC_ANALYSIS_PACKET_FIELDS_H_
