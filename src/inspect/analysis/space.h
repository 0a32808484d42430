#ifndef FILTER_INSPECT_SRC_ANALYSIS_SPACE_H_
#define FILTER_INSPECT_SRC_ANALYSIS_SPACE_H_

// Sets of packets, and whether some of them together hold another one. Nothing here knows what a
// field means.
//
// A packet has a value in each field, or lacks the field. A set is a product: a packet is in it
// when each field that the set asks of has a value asked for; a packet that lacks such a field is
// not in it. Two steps make such sets cheap to cut:
//
// - A field that is asked for under masks is divided into parts, a new one wherever some mask goes
//   from 0 to 1, seen from the top. Within a part every mask is a prefix, so that what it takes is
//   a range of values. A part, or a field that was not divided, is a dimension.
// - The values of a dimension between which no set distinguishes share a rank; lacking the field is
//   the last rank. A set is then, for each dimension, a list of ranges of ranks.

#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <utility>
#include <vector>

namespace FiltersInspect {

// What one set asks of one field.
enum class Asks : std::uint8_t {
  kRange,   // first <= field <= last
  kMasked,  // (field & last) == (first & last)
  kLack,    // that the packet does not have it
};
struct Constraint {
  std::uint32_t field;
  Asks asks;
  std::uint64_t first, last;
};

using SetId = std::uint32_t;
constexpr SetId kNothing = std::numeric_limits<SetId>::max();  // the empty set
constexpr SetId kEverything = kNothing - 1;                    // all packets, for termOf()

// The ranks of a packet, a dimension each.
using Point = std::vector<std::uint32_t>;

class Space {
 public:
  struct Field {
    unsigned width;                         // in bits, 1 to 64
    bool may_lack;                          // whether there are packets without it
    std::vector<std::uint64_t> usual = {};  // values to show, the best first
  };
  // A field that some set asks ranges of takes no masks but prefixes.
  explicit Space(std::vector<Field> fields) : fields_(std::move(fields)) {}

  // A field has one constraint under a mask, or one that it lacks, or any number of ranges, one of
  // which the packet has to be in. All sets are added before seal(); the rest comes after.
  SetId add(std::vector<Constraint> constraints);
  void seal();

  // Adds a copy of a set that asks nothing of these fields.
  SetId addWithout(SetId set, const std::vector<std::uint32_t>& fields);
  // Takes back every set that was added since there were so many.
  SetId count() const { return static_cast<SetId>(sets_.size() - 1); }
  void forget(SetId count);

  std::size_t dimensions() const { return sizes_.size(); }
  std::size_t size(std::size_t dimension) const { return sizes_[dimension]; }

  struct Range {
    std::uint32_t first, last;  // ranks, both included
  };
  // What a set asks of one dimension, ranges in ascending order that do not touch. Dimensions of
  // which it asks nothing have no term.
  struct Term {
    std::uint32_t dimension;
    std::uint32_t first, last;   // the hull
    std::uint32_t begin, count;  // in ranges()
  };
  const Term* begin(SetId set) const { return terms_.data() + sets_[set]; }
  const Term* end(SetId set) const { return terms_.data() + sets_[set + 1]; }
  const Range* ranges() const { return ranges_.data(); }

  // Adds to `looks`, unless it is null, how many ranges it went past.
  bool meet(SetId a, SetId b, std::uint64_t* looks = nullptr) const;
  bool holds(SetId outer, SetId inner) const;
  bool isIn(SetId set, const Point& point) const;

  // What a set asks of a dimension, null when nothing.
  const Term* termOf(SetId set, std::uint32_t dimension) const;
  // A packet as values: one for each field that some set asks of, nullopt where it lacks the field.
  std::vector<std::pair<std::uint32_t, std::optional<std::uint64_t>>> valuesOf(
      const Point& point) const;

  // The rank out of a list of ranges that a packet shown to people has best: a usual one, else the
  // first, which lacks the field only if there is no other.
  std::uint32_t best(std::size_t dimension, const Range* ranges, std::size_t count) const;
 private:
  struct Part {
    std::uint32_t field;
    std::uint64_t bits;                 // which of the field's, where they stand
    std::vector<std::uint64_t> starts;  // of each rank the lowest value
    std::vector<std::uint32_t> usual;   // the ranks of the usual values
  };
  using Values = std::pair<std::uint64_t, std::uint64_t>;  // the lowest and the highest
  // What a set asks of a field, until it is terms.
  struct Ask {
    std::uint32_t field;
    Asks asks;
    std::size_t begin;  // in values_; it ends where the next one begins
  };
  static Values within(const Part& part, Asks asks, const Values& values);
  static std::uint32_t rankOf(const Part& part, std::uint64_t value);
  std::uint64_t shown(const Part& part, std::uint32_t rank) const;
  void divideFields();
  void findRanks();
  void addTerm(std::size_t part, const Ask& ask);

  std::vector<Field> fields_;
  std::vector<Ask> asks_;          // of all sets, until they are terms
  std::vector<Values> values_;     // of them
  std::vector<std::size_t> ends_;  // of each set, in asks_
  std::vector<Part> parts_;
  std::vector<std::uint32_t> parts_of_;  // of each field the first part; one more at the end
  std::vector<std::uint32_t> sizes_;
  std::vector<bool> lacking_;
  std::vector<std::uint32_t> sets_;  // of each set the first term; one more at the end
  std::vector<Term> terms_;
  std::vector<Range> ranges_;
};

// What two lists of ranges share, behind `out`.
void appendShared(const Space::Range* a, std::size_t aCount, const Space::Range* b,
                  std::size_t bCount, std::vector<Space::Range>* out);

}  // namespace FiltersInspect

#endif  // FILTER_INSPECT_SRC_ANALYSIS_SPACE_H_
