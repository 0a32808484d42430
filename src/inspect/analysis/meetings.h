#ifndef FILTER_INSPECT_SRC_ANALYSIS_MEETINGS_H_
#define FILTER_INSPECT_SRC_ANALYSIS_MEETINGS_H_

// Finds the sets of a list that meet another set. Two sets meet if they have a packet in common.
//
// In each dimension a set has a hull, from its lowest to its highest rank. Two hulls overlap if
// neither begins after the end of the other. A dimension keeps the hulls in two sorted lists: by
// their beginning, and by their end. At regular intervals in each list it stores a bit set of all
// hulls up to that position. The few hulls between two bit sets are examined one by one. The answer
// is the intersection of two bit sets for each constrained dimension. The cost of an answer grows
// with the length of the list, but even for 100,000 sets only a few thousand machine words are
// read.

#include <cstddef>
#include <cstdint>
#include <vector>

#include "space.h"

namespace FiltersInspect {

class Meetings {
 public:
  // Comparing sets of many ranges takes long, so the number of examined ranges is limited.
  Meetings(const Space& space, std::vector<SetId> sets, std::uint64_t max_looks);
  std::size_t size() const { return sets_.size(); }

  // Appends, in ascending order, the positions from `begin` up to `end` whose sets meet `set`.
  // Returns false if the limit of ranges is reached: some of these sets may then not meet `set`.
  bool meeting(SetId set, std::size_t begin, std::size_t end,
               std::vector<std::uint32_t>* positions);
  // Returns at least the number of positions that meeting() would append.
  std::size_t count(SetId set, std::size_t begin, std::size_t end);
  // Like meeting(), for the sets that may contain this packet, because the packet's ranks are
  // within the hulls of the set.
  void mayHold(const Point& point, std::size_t begin, std::size_t end,
               std::vector<std::uint32_t>* positions);
  // Like meeting(), for sets that contain all of `set`.
  void holding(SetId set, std::size_t begin, std::size_t end,
               std::vector<std::uint32_t>* positions);
 private:
  using Word = std::uint64_t;
  // The hulls that constrain a dimension, sorted by their beginning or by their end.
  struct Sorted {
    std::vector<std::uint32_t> values, positions;
    std::vector<Word> marks;  // bit sets of the first 0, distance_, 2 * distance_, ... hulls
  };
  struct Dimension {
    Sorted begins, ends;
    bool asked = false;
  };
  // Sorts the hulls and stores the bit sets. `bits` has the sets that come before all hulls.
  void mark(Sorted* sorted, std::vector<Word> bits) const;
  void start(std::size_t begin, std::size_t end);
  // Keeps the sets whose hulls begin no later than `last` and end no earlier than `first`. Returns
  // false if none is left.
  bool intersect(std::uint32_t dimension, std::uint32_t first, std::uint32_t last);
  bool intersect(SetId set);
  void append(std::vector<std::uint32_t>* positions) const;

  const Space& space_;
  const std::vector<SetId> sets_;
  std::uint64_t looks_left_;
  std::size_t distance_ = 0;
  std::vector<Dimension> dimensions_;
  std::vector<bool> plain_;  // true for sets that fill their hulls
  std::size_t words_;        // the length of a bit set
  std::vector<Word> left_;   // the answer so far
  std::size_t words_begin_ = 0, words_end_ = 0;
};

}  // namespace FiltersInspect

#endif  // FILTER_INSPECT_SRC_ANALYSIS_MEETINGS_H_
