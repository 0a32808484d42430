#ifndef FILTER_INSPECT_SRC_SPACE_H_
#define FILTER_INSPECT_SRC_SPACE_H_

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
//
// A Cut takes sets away from another one. What remains of a product are at most as many products as
// there are dimensions; they are gone through one by one, until something remains that no set
// meets, or nothing does. That may take long (it answers any question in propositional logic), so
// it is done in a limited number of steps: to choose what is taken next from one product is one,
// and one more for every few hundred ranges that are looked at.

#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <utility>
#include <vector>

namespace FiltersInspect {

// What one set asks of one field.
struct Constraint {
  std::uint32_t field;
  bool masked;  // (field & last) == (first & last); else first <= field <= last
  std::uint64_t first, last;
};

using SetId = std::uint32_t;
constexpr SetId kNothing = std::numeric_limits<SetId>::max();  // the empty set

// The ranks of a packet, a dimension each.
using Point = std::vector<std::uint32_t>;

class Space {
 public:
  struct Field {
    unsigned width;  // in bits, 1 to 64
    bool may_lack;   // whether there are packets without it
  };
  // A field that some set asks ranges of takes no masks but prefixes.
  explicit Space(std::vector<Field> fields) : fields_(std::move(fields)) {}

  // Of one field either one constraint under a mask, or any number of ranges, of which the packet
  // has to be in one. All sets are added before seal(); the rest comes after.
  SetId add(std::vector<Constraint> constraints);
  void seal();

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

  // What a set asks of a dimension, null when nothing.
  const Term* termOf(SetId set, std::uint32_t dimension) const;
  // The ranges of a dimension that both sets have, behind `out`.
  void appendCommon(SetId a, SetId b, std::uint32_t dimension, std::vector<Range>* out) const;
  // A packet of both sets, which meet or are the same one.
  Point common(SetId a, SetId b) const;
  // A packet as values: one for each field that some set asks of, nullopt where it lacks the field.
  std::vector<std::pair<std::uint32_t, std::optional<std::uint64_t>>> valuesOf(
      const Point& point) const;

  // The rank out of a list of ranges that a packet shown to people has best: lacking the field.
  std::uint32_t best(std::size_t dimension, const Range* ranges, std::size_t count) const {
    const std::uint32_t last = ranges[count - 1].last;
    return lacking_[dimension] && last + 1 == sizes_[dimension] ? last : ranges[0].first;
  }
 private:
  struct Part {
    std::uint32_t field;
    std::uint64_t bits;                 // which of the field's, where they stand
    std::vector<std::uint64_t> starts;  // of each rank the lowest value
  };
  using Values = std::pair<std::uint64_t, std::uint64_t>;  // the lowest and the highest
  static Values within(const Part& part, const Constraint& asked);
  void divideFields();
  void findRanks();
  Range ranksOf(std::size_t part, const Constraint& asked) const;
  void addTerm(std::size_t part, const Constraint* first, const Constraint* last);

  std::vector<Field> fields_;
  std::vector<Constraint> constraints_;  // of all sets, until they are terms
  std::vector<std::size_t> ends_;        // of each set, in constraints_
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

// A list of sets, out of which those that meet another one are found quickly. To compare many sets
// of many ranges each takes long all the same, so that so many ranges are looked at and no more.
class Hulls {
 public:
  Hulls(const Space& space, std::vector<SetId> sets, std::uint64_t max_looks);
  std::size_t size() const { return sets_.size(); }
  // The positions from `begin` up to `end` whose sets meet this one, ascending. False when looks
  // did not suffice: others may be among them.
  bool meeting(SetId set, std::size_t begin, std::size_t end,
               std::vector<std::uint32_t>* positions);
 private:
  const Space& space_;
  std::vector<SetId> sets_;
  std::uint64_t looks_left_;
  std::vector<std::vector<Space::Range>> columns_;  // of each dimension, the hulls
};

// What a cut takes away, level by level: a packet is taken by a candidate of the lowest level that
// has it, and the cut stops where such a one stops.
struct Candidate {
  SetId set;
  std::uint32_t level;
  bool stops;         // not of level 0
  std::uint32_t tag;  // the caller's
};

class Cut {
 public:
  enum class Outcome {
    kNothingLeft,
    kLeft,     // there is something that no candidate meets
    kStopped,  // there is something whose first candidate stops
    kUndecided,
  };
  // Hears of what a cut does. A point is one of what is talked about.
  class Watcher {
   public:
    virtual ~Watcher() = default;
    virtual void took(const Candidate&, const Cut&) {}
    // Whether to go on, to what else remains. Without a watcher a cut ends here.
    virtual bool left(const Cut&) { return false; }
  };

  Cut(const Space& space, std::uint64_t max_steps) : space_(space), steps_left_(max_steps) {}

  // Takes the candidates from what both sets have, which meet or are the same one; changes their
  // order. `quick` allows kLeft to be found by counting, without a point.
  Outcome run(SetId a, SetId b, std::vector<Candidate>* candidates, bool quick,
              Watcher* watcher = nullptr);
  Outcome run(SetId set, std::vector<Candidate>* candidates, bool quick,
              Watcher* watcher = nullptr) {
    return run(set, set, candidates, quick, watcher);
  }
  std::uint64_t stepsLeft() const { return steps_left_; }
  void setSteps(std::uint64_t steps) { steps_left_ = steps; }

  // For watchers, and after kLeft and kStopped unless it was found by counting: a packet out of
  // what remained; where a candidate took or stopped, one of its own.
  Point point() const;
 private:
  struct Span {
    std::uint32_t begin, count;  // in ranges_
    std::uint32_t size;          // in ranks
  };
  // A product that remains, and how far it has been dealt with.
  struct Frame {
    std::size_t ranges;      // size of ranges_ when it was made
    std::size_t candidates;  // those that meet it come first in the list
    SetId taken = kNothing;  // what is being taken from it
    const Space::Term* next = nullptr;
  };
  struct Chosen {
    Candidate candidate{kNothing, 0, false, 0};
    double share = 0;
    bool whole = false;  // takes all that remains
    double shares = 0;   // of all candidates that take
  };
  void begin(SetId a, SetId b, std::size_t candidates);
  Span* spans() { return spans_.data() + (frames_.size() - 1) * space_.dimensions(); }
  const Span* spans() const { return spans_.data() + (frames_.size() - 1) * space_.dimensions(); }
  Chosen choose(std::vector<Candidate>* candidates);
  std::uint32_t shared(const Span& span, const Space::Term& term);
  double shareOf(SetId set, bool* whole);
  bool pushNextRest();
  void pop();

  const Space& space_;
  std::uint64_t steps_left_;
  std::uint64_t looks_ = 0;  // at ranges, in this step
  std::vector<Frame> frames_;
  std::vector<Span> spans_;  // of each frame, a dimension each
  std::vector<Space::Range> ranges_;
  std::vector<Space::Range> was_;  // a span while it is divided
  SetId at_ = kNothing;            // of point()
};

}  // namespace FiltersInspect

#endif  // FILTER_INSPECT_SRC_SPACE_H_
