#ifndef FILTER_INSPECT_SRC_ANALYSIS_CUT_H_
#define FILTER_INSPECT_SRC_ANALYSIS_CUT_H_

// Sets taken away from another one, and what is left of it.
//
// What remains of a product when another one is taken from it are at most as many products as there
// are dimensions. A Cut goes through them one by one, until something remains that no set meets, or
// nothing does. That may take long (it answers any question in propositional logic), so it is done
// in a limited number of steps: to choose what is taken next from one product is one, and one more
// for every few hundred ranges that are looked at.

#include "space.h"

namespace FiltersInspect {

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
  // Hears of what a cut does. meets() and point() tell about what it hears of.
  class Watcher {
   public:
    virtual ~Watcher() = default;
    virtual void took(const Candidate&, const Cut&) {}
    // Whether to go on, to what else remains. Without a watcher a cut ends here.
    virtual bool left(const Cut&) { return false; }
  };

  Cut(const Space& space, std::uint64_t max_steps) : space_(space), steps_left_(max_steps) {}

  // Takes the candidates from what all of the sets have in common; changes their order. `quick`
  // allows kLeft to be found by counting, without a point.
  Outcome run(const std::vector<SetId>& sets, std::vector<Candidate>* candidates, bool quick,
              Watcher* watcher = nullptr);
  std::uint64_t stepsLeft() const { return steps_left_; }
  void setSteps(std::uint64_t steps) { steps_left_ = steps; }

  // For watchers, and after kLeft and kStopped unless it was found by counting. They tell about
  // what remained; where a candidate took or stopped, about its own share of that.
  bool meets(SetId set) const;
  Point point(SetId within = kEverything) const;  // a packet of it and of a set that it meets
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
  bool begin(const std::vector<SetId>& sets, std::size_t candidates);
  void setShare(std::uint32_t dimension, SetId within, std::vector<Space::Range>* out) const;
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
  SetId at_ = kNothing;            // whose share is talked about
};

}  // namespace FiltersInspect

#endif  // FILTER_INSPECT_SRC_ANALYSIS_CUT_H_
