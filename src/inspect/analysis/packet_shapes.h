#ifndef FILTER_INSPECT_SRC_ANALYSIS_PACKET_SHAPES_H_
#define FILTER_INSPECT_SRC_ANALYSIS_PACKET_SHAPES_H_

// The shapes of packets that exist: which fields go together. A packet that people see should be
// one that can be built and sent. For example, a TCP packet over IPv4 has both IPv4 addresses, no
// IPv6 addresses, and both ports.

#include <cstddef>
#include <cstdint>
#include <vector>

#include <filter_inspect/filter_analysis.h>

#include "space.h"

namespace FiltersInspect {

// True if packets of this IP protocol have layer-4 ports.
bool hasPorts(std::uint32_t protocol);

// Each shape as a set of packets; the shapes that lack the fewest fields come first. Only the given
// fields, which some rule constrains, are constrained. Shapes that differ only in other fields are
// one.
std::vector<std::vector<Constraint>> packetShapes(const std::vector<bool>& fields);
std::size_t fieldsLacking(const std::vector<Constraint>& shape);

// A packet of a space, with the fields that go together with those it has.
Packet packetOf(const Space& space, const Point& point);

}  // namespace FiltersInspect

#endif  // FILTER_INSPECT_SRC_ANALYSIS_PACKET_SHAPES_H_
