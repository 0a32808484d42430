#ifndef FILTER_INSPECT_SRC_ANALYSIS_MEETINGS_H_
#define FILTER_INSPECT_SRC_ANALYSIS_MEETINGS_H_

// Which sets out of a list meet another set.
//
// In each dimension a set has a hull, from its lowest to its highest rank. The hulls that overlap
// another one are those that begin no later than it ends, without those that end before it begins.
// For both, each dimension keeps bit sets of positions: sorted by where hulls begin (end), the
// first so many of them, at regular distances; the few between two such bit sets are looked at one
// by one. A question is then an intersection of two bit sets a dimension that it asks of. That
// grows with the length of the list, but takes a few thousand machine words for 100,000 sets.

#include <cstddef>
#include <cstdint>
#include <vector>

#include "space.h"

namespace FiltersInspect {

class Meetings {
 public:
  // To compare sets of many ranges takes long, so that only so many ranges are looked at.
  Meetings(const Space& space, std::vector<SetId> sets, std::uint64_t max_looks);
  std::size_t size() const { return sets_.size(); }

  // The positions from `begin` up to `end` whose sets meet this one, ascending. False when looks
  // did not suffice: others may be among them.
  bool meeting(SetId set, std::size_t begin, std::size_t end,
               std::vector<std::uint32_t>* positions);
  // How many that may be, at most.
  std::size_t count(SetId set, std::size_t begin, std::size_t end);
  // The same for the sets that a packet may be in: its ranks lie within their hulls.
  void mayHold(const Point& point, std::size_t begin, std::size_t end,
               std::vector<std::uint32_t>* positions);
  // The same for those that hold all of another one.
  void holding(SetId set, std::size_t begin, std::size_t end,
               std::vector<std::uint32_t>* positions);
 private:
  using Word = std::uint64_t;
  // The asking hulls of a dimension, sorted by one end of theirs.
  struct Sorted {
    std::vector<std::uint32_t> values, positions;
    std::vector<Word> marks;  // bit sets of the first 0, distance_, 2 * distance_, ... of them
  };
  struct Dimension {
    Sorted begins, ends;
    bool asked = false;
  };
  // Sorts the hulls; `bits` are those in front of all of them.
  void mark(Sorted* sorted, std::vector<Word> bits) const;
  void start(std::size_t begin, std::size_t end);
  // Leaves those whose hulls begin no later than `last` and do not end before `first`. False when
  // none is left.
  bool intersect(std::uint32_t dimension, std::uint32_t first, std::uint32_t last);
  bool intersect(SetId set);
  void append(std::vector<std::uint32_t>* positions) const;

  const Space& space_;
  const std::vector<SetId> sets_;
  std::uint64_t looks_left_;
  std::size_t distance_ = 0;
  std::vector<Dimension> dimensions_;
  std::vector<bool> plain_;  // sets whose hulls are all of them
  std::size_t words_;        // of a bit set
  std::vector<Word> left_;   // the answer so far
  std::size_t words_begin_ = 0, words_end_ = 0;
};

}  // namespace FiltersInspect

#endif  // FILTER_INSPECT_SRC_ANALYSIS_MEETINGS_H_
