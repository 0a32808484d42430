#ifndef FILTER_INSPECT_SRC_ANALYSIS_PACKET_SHAPES_H_
#define FILTER_INSPECT_SRC_ANALYSIS_PACKET_SHAPES_H_

// The shapes of real packets. A shape is a set of fields that a packet can have together. A packet
// that is shown to people should be one that can be built and sent. For example, a TCP packet over
// IPv4 has both IPv4 addresses, no IPv6 addresses, and both ports.

#include <cstddef>
#include <cstdint>
#include <vector>

#include <filter_inspect/filter_analysis.h>

#include "space.h"

namespace FiltersInspect {

// True if packets of this IP protocol have layer-4 ports.
bool hasPorts(std::uint32_t protocol);

// Each shape as a set of packets; the shapes with the most fields come first. The sets constrain
// only the given fields, which are the fields that some rule constrains. Shapes that differ only in
// other fields give the same set, which the result has only once.
std::vector<std::vector<Constraint>> packetShapes(const std::vector<bool>& fields);
std::size_t fieldsLacking(const std::vector<Constraint>& shape);

// Makes a packet from a point of a space. If the packet has a field of a header, the other fields
// of that header are added. If `shown` is given, only these fields of the point are used.
Packet packetOf(const Space& space, const Point& point, const std::vector<bool>* shown = nullptr);

}  // namespace FiltersInspect

#endif  // FILTER_INSPECT_SRC_ANALYSIS_PACKET_SHAPES_H_
