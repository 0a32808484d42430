#ifndef FILTER_INSPECT_SRC_ANALYSIS_WITNESS_H_
#define FILTER_INSPECT_SRC_ANALYSIS_WITNESS_H_

// Chooses a packet to show, among sets of packets that all show the same.

#include <cstddef>
#include <optional>
#include <string>

#include "cut.h"
#include "rule_space.h"

namespace FiltersInspect {

// Keeps the packet of the best shape: one that exists, and has as many fields as possible.
class Witness {
 public:
  explicit Witness(const RuleSpace& space) : space_(space), shape_(space.shapes().size()) {}
  // Considers a packet of what the cut left.
  void consider(const Cut& cut);
  // Takes this packet if its shape is better.
  void take(Point point, std::size_t shape);
  void take(const Witness& other);
  std::size_t shape() const { return shape_; }  // its place in the space's list
  bool found() const { return point_.has_value(); }
  // True if searching on is not worth it.
  bool isGood() const {
    return shape_ < space_.shapes().size() &&
           (space_.lacking(shape_) == space_.lacking(0) || looks_ >= kLooks);
  }
  std::string text() const;
 private:
  static constexpr std::size_t kLooks = 64;
  const RuleSpace& space_;
  std::size_t shape_;  // the best so far, or the number of shapes if there is none
  std::size_t looks_ = 0;
  std::optional<Point> point_;
};

// Considers everything that a cut leaves.
class Leftover : public Cut::Watcher {
 public:
  explicit Leftover(const RuleSpace& space) : witness(space) {}
  bool left(const Cut& cut) override {
    witness.consider(cut);
    return !witness.isGood();
  }
  Witness witness;
};

}  // namespace FiltersInspect

#endif  // FILTER_INSPECT_SRC_ANALYSIS_WITNESS_H_
