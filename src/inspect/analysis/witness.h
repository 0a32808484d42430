#ifndef FILTER_INSPECT_SRC_ANALYSIS_WITNESS_H_
#define FILTER_INSPECT_SRC_ANALYSIS_WITNESS_H_

// A packet to show, out of several sets of packets that show the same.

#include <cstddef>
#include <optional>
#include <string>

#include "cut.h"
#include "rule_space.h"

namespace FiltersInspect {

// Takes the packet of the best shape: one that exists, and has as many fields as such a one can.
class Witness {
 public:
  explicit Witness(const RuleSpace& space) : space_(space), shape_(space.shapes().size()) {}
  // Looks at what the cut talks about.
  void consider(const Cut& cut);
  // Takes a packet of a shape, or of another search, if it is better.
  void take(Point point, std::size_t shape);
  void take(const Witness& other);
  std::size_t shape() const { return shape_; }  // in the space's list
  bool found() const { return point_.has_value(); }
  // Whether there is hardly anything better.
  bool isGood() const {
    return shape_ < space_.shapes().size() &&
           (space_.lacking(shape_) == space_.lacking(0) || looks_ >= kLooks);
  }
  std::string text() const;
 private:
  static constexpr std::size_t kLooks = 64;
  const RuleSpace& space_;
  std::size_t shape_;  // the best so far; their number where there is none
  std::size_t looks_ = 0;
  std::optional<Point> point_;
};

// Looks at all that a cut leaves.
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
