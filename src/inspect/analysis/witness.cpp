#include "witness.h"

#include <utility>

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

void Witness::take(Point point, std::size_t shape) {
  if (point_ && shape >= shape_) return;
  shape_ = shape;
  point_ = std::move(point);
}

void Witness::take(const Witness& other) {
  looks_ += other.looks_;
  if (other.point_) take(*other.point_, other.shape_);
}

Packet Witness::packet() const { return point_ ? packetOf(space_.space(), *point_) : Packet(); }

}  // namespace FiltersInspect
