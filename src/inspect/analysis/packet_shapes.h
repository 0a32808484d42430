#ifndef FILTER_INSPECT_SRC_ANALYSIS_PACKET_SHAPES_H_
#define FILTER_INSPECT_SRC_ANALYSIS_PACKET_SHAPES_H_

// The shapes of real packets: which fields a packet has together. A packet that is shown to people
// should be one that can be built and sent. For example, a TCP packet over IPv4 has both IPv4
// addresses, no IPv6 addresses, and both ports.

#include <cstddef>
#include <cstdint>
#include <vector>

#include <filter_inspect/filter_analysis.h>

#include "space.h"

namespace FiltersInspect {

// True if packets of this IP protocol have layer-4 ports.
bool hasPorts(std::uint32_t protocol);

// Each shape as a set of packets; the shapes that lack the fewest fields come first. The sets have
// constraints only on the given fields, which some rule constrains. Shapes that differ only in
// other fields become one.
std::vector<std::vector<Constraint>> packetShapes(const std::vector<bool>& fields);
std::size_t fieldsLacking(const std::vector<Constraint>& shape);

// Makes a packet from a point of a space, and adds the other fields of each header of which it has
// a field. If `shown` is given, only these fields of the point count.
Packet packetOf(const Space& space, const Point& point, const std::vector<bool>* shown = nullptr);

}  // namespace FiltersInspect

#endif  // FILTER_INSPECT_SRC_ANALYSIS_PACKET_SHAPES_H_
