#ifndef FILTER_INSPECT_SRC_ANALYSIS_WITNESS_H_
#define FILTER_INSPECT_SRC_ANALYSIS_WITNESS_H_

// Chooses the example packet of a finding from sets of packets. Every packet in these sets is a
// correct example.

#include <cstddef>
#include <optional>
#include <string>

#include <filter_inspect/filter_analysis.h>

#include "cut.h"
#include "rule_space.h"

namespace FiltersInspect {

// Keeps the packet with the best shape. A shape is better if it is that of a real packet and has
// more fields.
class Witness {
 public:
  explicit Witness(const RuleSpace& space) : space_(space), shape_(space.shapes().size()) {}
  // Considers a packet of the current part of the cut.
  void consider(const Cut& cut);
  // Takes this packet if its shape is better.
  void take(Point point, std::size_t shape);
  void take(const Witness& other);
  std::size_t shape() const { return shape_; }  // its place in the space's list
  bool found() const { return point_.has_value(); }
  // True if searching for a better packet is not worth the time.
  bool isGood() const {
    return shape_ < space_.shapes().size() &&
           (space_.lacking(shape_) == space_.lacking(0) || looks_ >= kLooks);
  }
  // The packet that was found, or a packet without fields if none was found.
  Packet packet() const;
  std::string text() const { return packet().toText(); }
 private:
  static constexpr std::size_t kLooks = 64;
  const RuleSpace& space_;
  std::size_t shape_;  // the best so far, or the number of shapes if there is none
  std::size_t looks_ = 0;
  std::optional<Point> point_;
};

// Considers each part that a cut leaves.
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
