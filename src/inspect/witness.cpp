#include "witness.h"

#include "packet_shapes.h"

namespace FiltersInspect {

void Witness::consider(const Cut& cut) {
  ++looks_;
  const auto& shapes = space_.shapes();
  for (std::size_t i = 0; i < shape_; ++i) {
    if (!cut.meets(shapes[i])) continue;
    shape_ = i;
    point_ = cut.point(shapes[i]);
    return;
  }
  if (!point_) point_ = cut.point();
}

std::string Witness::text() const {
  return point_ ? packetOf(space_.space(), *point_).toText() : std::string();
}

}  // namespace FiltersInspect
