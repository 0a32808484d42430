#ifndef FILTER_INSPECT_SRC_ANALYSIS_SPACE_H_
#define FILTER_INSPECT_SRC_ANALYSIS_SPACE_H_

// Sets of packets, and questions about them. For example: do some sets together hold all packets of
// another set? This file does not depend on the meaning of the fields.
//
// A packet has a value in each field, or lacks the field. A set is a product: it constrains some
// fields, and a packet is in the set if each of these fields has a value that the set allows. A
// packet that lacks a constrained field is not in the set. Two ideas make it cheap to intersect and
// subtract such sets:
//
// - A field under masks is divided into parts. From the highest bit down, a new part begins
//   wherever a mask changes from 0 to 1. Within a part every mask is a prefix, so a value under
//   that mask is a range of values. A part, or a field that is not divided, is a dimension.
// - Values of a dimension that no set distinguishes share a rank. The last rank belongs to packets
//   that lack the field. For each dimension, a set is then a list of ranges of ranks.

#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <utility>
#include <vector>

namespace FiltersInspect {

// A constraint of one set on one field.
enum class Asks : std::uint8_t {
  kRange,   // first <= field <= last
  kMasked,  // (field & last) == (first & last)
  kLack,    // the packet does not have the field
};
struct Constraint {
  std::uint32_t field;
  Asks asks;
  std::uint64_t first, last;
};

// True if a mask of this width has no 1 after a 0.
constexpr bool isPrefix(std::uint64_t mask, unsigned width) {
  const std::uint64_t zeros = ~mask & ~std::uint64_t{0} >> (64 - width);
  return (zeros & (zeros + 1)) == 0;
}

using SetId = std::uint32_t;
constexpr SetId kNothing = std::numeric_limits<SetId>::max();  // the empty set
constexpr SetId kEverything = kNothing - 1;                    // all packets, for termOf()

// A packet as ranks, one for each dimension.
using Point = std::vector<std::uint32_t>;

class Space {
 public:
  struct Field {
    unsigned width;                         // in bits, 1 to 64
    bool may_lack;                          // true if there are packets without it
    std::vector<std::uint64_t> usual = {};  // values to show, the best first
  };
  // If some set has a range on a field, all masks on that field must be prefixes.
  explicit Space(std::vector<Field> fields) : fields_(std::move(fields)) {}

  // A set may require that a field matches one mask, that the field is absent, or that the value is
  // in one of several ranges. Add all sets before seal(), and ask all questions after it.
  SetId add(std::vector<Constraint> constraints);
  // Declares that there are packets without this field.
  void mayLack(std::uint32_t field) { fields_[field].may_lack = true; }
  // The values at which the ranges and masks of a field begin, and the values after their ends, in
  // ascending order. No mask may have a hole.
  std::vector<std::uint64_t> startsOf(std::uint32_t field) const;
  void seal();

  // Adds a copy of a set without its constraints on these fields.
  SetId addWithout(SetId set, const std::vector<std::uint32_t>& fields);
  // Removes all sets except the first `count`.
  SetId count() const { return static_cast<SetId>(sets_.size() - 1); }
  void forget(SetId count);

  std::size_t dimensions() const { return sizes_.size(); }
  std::size_t size(std::size_t dimension) const { return sizes_[dimension]; }

  // The values of a dimension. They have no bits outside of `bits`. A value has the rank r if it is
  // at least starts[r] and less than starts[r + 1].
  struct Scale {
    std::uint32_t field;
    std::uint64_t bits;
    const std::vector<std::uint64_t>& starts;
  };
  Scale scaleOf(std::size_t dimension) const {
    const Part& part = parts_[dimension];
    return {part.field, part.bits, part.starts};
  }

  struct Range {
    std::uint32_t first, last;  // ranks, both included
  };
  // The constraint of a set on one dimension: ranges in ascending order that do not touch. A
  // dimension without a constraint has no term.
  struct Term {
    std::uint32_t dimension;
    std::uint32_t first, last;   // from the lowest to the highest rank
    std::uint32_t begin, count;  // in ranges()
  };
  const Term* begin(SetId set) const { return terms_.data() + sets_[set]; }
  const Term* end(SetId set) const { return terms_.data() + sets_[set + 1]; }
  const Range* ranges() const { return ranges_.data(); }

  // If `looks` is given, adds the number of examined ranges to it.
  bool meet(SetId a, SetId b, std::uint64_t* looks = nullptr) const;
  bool holds(SetId outer, SetId inner) const;
  bool isIn(SetId set, const Point& point) const;

  // The term of a set for a dimension; null if the set does not constrain it.
  const Term* termOf(SetId set, std::uint32_t dimension) const;
  // A packet as values, one for each field that some set constrains. The value is nullopt if the
  // packet lacks the field.
  std::vector<std::pair<std::uint32_t, std::optional<std::uint64_t>>> valuesOf(
      const Point& point) const;

  // The field of a dimension, and the bits of this field that the dimension has.
  std::uint32_t fieldOf(std::size_t dimension) const { return parts_[dimension].field; }
  std::uint64_t bitsOf(std::size_t dimension) const { return parts_[dimension].bits; }
  // True if the rank belongs to packets that lack the field.
  bool isLacking(std::size_t dimension, std::uint32_t rank) const {
    return rank == parts_[dimension].starts.size();
  }
  // The lowest and the highest value of a range of ranks. The range must not have the rank of
  // packets that lack the field.
  std::pair<std::uint64_t, std::uint64_t> valuesOf(std::size_t dimension, const Range& range) const;

  // The best rank of the ranges for a packet that is shown to people: the rank of a usual value, or
  // else the first rank. A packet of this rank lacks the field only if the ranges have no other
  // rank.
  std::uint32_t best(std::size_t dimension, const Range* ranges, std::size_t count) const;
 private:
  struct Part {
    std::uint32_t field;
    std::uint64_t bits;                 // the bits of the field in this part
    std::vector<std::uint64_t> starts;  // the lowest value of each rank
    std::vector<std::uint32_t> usual;   // the ranks of the usual values
  };
  using Values = std::pair<std::uint64_t, std::uint64_t>;  // the lowest and the highest
  // A constraint of a set on a field, before seal().
  struct Ask {
    std::uint32_t field;
    Asks asks;
    std::size_t begin;  // in values_; the end is the `begin` of the next one
  };
  static Values within(const Part& part, Asks asks, const Values& values);
  static std::uint32_t rankOf(const Part& part, std::uint64_t value);
  std::uint64_t shown(const Part& part, std::uint32_t rank) const;
  void divideFields();
  void findRanks();
  void addTerm(std::size_t part, const Ask& ask);

  std::vector<Field> fields_;
  std::vector<Ask> asks_;          // of all sets, before seal()
  std::vector<Values> values_;     // of all constraints
  std::vector<std::size_t> ends_;  // the end of each set in asks_
  std::vector<Part> parts_;
  std::vector<std::uint32_t> parts_of_;  // the first part of each field, and one more
  std::vector<std::uint32_t> sizes_;
  std::vector<bool> lacking_;
  std::vector<std::uint32_t> sets_;  // the first term of each set, and one more
  std::vector<Term> terms_;
  std::vector<Range> ranges_;
};

// Appends to `out` the ranks that both lists of ranges hold.
void appendShared(const Space::Range* a, std::size_t aCount, const Space::Range* b,
                  std::size_t bCount, std::vector<Space::Range>* out);

}  // namespace FiltersInspect

#endif  // FILTER_INSPECT_SRC_ANALYSIS_SPACE_H_
