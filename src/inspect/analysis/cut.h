#ifndef FILTER_INSPECT_SRC_ANALYSIS_CUT_H_
#define FILTER_INSPECT_SRC_ANALYSIS_CUT_H_

// Subtracts sets from another set, and finds what is left.
//
// Each set is a product of ranges (see space.h). Subtracting one product from another leaves at
// most one product per dimension. A Cut goes through these products one by one, until it finds a
// product that has no packet in common with any set, or until nothing is left. The question is as
// hard as any in propositional logic, so the number of steps is limited. Choosing the next set to
// subtract from a product is one step. Examining a few hundred ranges is also one step.

#include "progress.h"
#include "space.h"

namespace FiltersInspect {

// A set to subtract. If a packet is in several candidates, the candidate of the lowest level takes
// it. If that candidate has `stops` set, the cut ends with kStopped.
struct Candidate {
  SetId set;
  std::uint32_t level;
  bool stops;         // ends the cut if it is the first to take a packet; never set at level 0
  std::uint32_t tag;  // a number of the caller's
};

class Cut {
 public:
  enum class Outcome {
    kNothingLeft,
    kLeft,     // no candidate meets some part
    kStopped,  // the first candidate that takes some part has `stops` set
    kUndecided,
  };
  // Watches a cut. While one of the watcher's functions runs, meets() and point() refer to the part
  // for which that function was called.
  class Watcher {
   public:
    virtual ~Watcher() = default;
    virtual void took(const Candidate&, const Cut&) {}
    // Returns true to continue with other parts. Without a watcher a cut ends at the first part
    // that remains.
    virtual bool left(const Cut&) { return false; }
  };

  Cut(const Space& space, std::uint64_t max_steps) : space_(space), steps_left_(max_steps) {}

  // Subtracts the candidates from the intersection of `sets`, and reorders `*candidates`. If
  // `quick` is true, the cut may find kLeft by counting. It then has no example packet, so point()
  // must not be called.
  Outcome run(const std::vector<SetId>& sets, std::vector<Candidate>* candidates, bool quick,
              Watcher* watcher = nullptr);
  std::uint64_t stepsLeft() const { return steps_left_; }
  void setSteps(std::uint64_t steps) { steps_left_ = steps; }
  // A cut calls this progress object now and then. The object must outlive the cut.
  void setProgress(const Progress* progress) { progress_ = progress; }

  // These functions are for watchers, and for callers after run(). After kLeft they refer to the
  // part that remains, and after kStopped to the packets that the candidate took when it ended the
  // cut. They must not be called after run() if the result was found by counting.
  bool meets(SetId set) const;
  Point point(SetId within = kEverything) const;  // a packet in the part and in `within`
  // The ranks of the part in a dimension that are also in `within`.
  void setShare(std::uint32_t dimension, SetId within, std::vector<Space::Range>* out) const;
 private:
  struct Span {
    std::uint32_t begin, count;  // in ranges_
    std::uint32_t size;          // the number of ranks
  };
  // A product from which a set is being subtracted, and the progress of the subtraction.
  struct Frame {
    std::size_t ranges;      // size of ranges_ when it was made
    std::size_t candidates;  // how many candidates, from the front, meet it
    SetId taken = kNothing;  // the set that is being subtracted
    const Space::Term* next = nullptr;
  };
  struct Chosen {
    Candidate candidate{kNothing, 0, false, 0};
    double share = 0;
    bool whole = false;  // the candidate takes all that remains
    double shares = 0;   // the sum for all candidates without `stops`
  };
  bool begin(const std::vector<SetId>& sets, std::size_t candidates);
  Span* spans() { return spans_.data() + (frames_.size() - 1) * space_.dimensions(); }
  const Span* spans() const { return spans_.data() + (frames_.size() - 1) * space_.dimensions(); }
  Chosen choose(std::vector<Candidate>* candidates);
  std::uint32_t shared(const Span& span, const Space::Term& term);
  double shareOf(SetId set, bool* whole);
  bool pushNextRest();
  void pop();

  const Space& space_;
  std::uint64_t steps_left_;
  std::uint64_t looks_ = 0;        // ranges looked at in this step
  std::uint64_t looks_since_ = 0;  // ranges looked at since the progress was told
  const Progress* progress_ = nullptr;
  std::vector<Frame> frames_;
  std::vector<Span> spans_;  // a span for each frame and dimension
  std::vector<Space::Range> ranges_;
  std::vector<Space::Range> was_;  // a span while it is divided
  SetId at_ = kNothing;            // the set whose share meets() and point() are about
};

}  // namespace FiltersInspect

#endif  // FILTER_INSPECT_SRC_ANALYSIS_CUT_H_
