#ifndef FILTER_INSPECT_SRC_ANALYSIS_POINTS_H_
#define FILTER_INSPECT_SRC_ANALYSIS_POINTS_H_

// Chooses a few packets of a set. Trying them is enough to judge most rules.

#include <cstdint>
#include <vector>

#include "space.h"

namespace FiltersInspect {

class Points {
 public:
  explicit Points(const Space& space) : space_(space) {}
  // Returns a packet that is in all sets. There must be one. For `which` = 0 it is a packet with
  // usual values. Other numbers give other packets.
  Point pointOf(const std::vector<SetId>& sets, unsigned which);
  bool haveCommon(const std::vector<SetId>& sets);
 private:
  void findCommon(const std::vector<SetId>& sets, std::uint32_t dimension);

  const Space& space_;
  std::vector<Space::Range> shared_, was_;
  std::uint64_t seed_ = 1;
};

}  // namespace FiltersInspect

#endif  // FILTER_INSPECT_SRC_ANALYSIS_POINTS_H_
