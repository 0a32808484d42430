#include "cut.h"

#include <algorithm>

namespace FiltersInspect {
namespace {

// If a computed sum of shares is below this limit, the exact sum is less than 1.
constexpr double kSurelyLess = 1 - 1e-9;
// The number of ranges that one step may examine.
constexpr std::uint64_t kLooksAStep = 256;
constexpr std::uint64_t kLooksBetween = 1 << 20;  // between two calls of the progress
constexpr std::uint64_t kLooksAtMany = 4;         // the cost of a look into a set of several ranges

// Returns the first range after `range` that reaches `value` or begins after it.
const Space::Range* reach(const Space::Range* range, const Space::Range* end, std::uint32_t value) {
  std::ptrdiff_t stride = 1;
  for (; stride < end - range && range[stride].last < value; stride *= 2) range += stride;
  return std::lower_bound(range + 1, std::min(range + stride, end), value,
                          [](const Space::Range& one, std::uint32_t v) { return one.last < v; });
}

// Appends to `out` the ranks that only the first list of ranges holds.
void appendRest(const Space::Range* a, std::size_t aCount, const Space::Range* b,
                std::size_t bCount, std::vector<Space::Range>* out) {
  const auto* bEnd = b + bCount;
  for (const auto* aEnd = a + aCount; a != aEnd; ++a) {
    std::uint32_t first = a->first;
    while (b != bEnd && b->last < first) ++b;
    bool open = true;
    for (const auto* taken = b; open && taken != bEnd && taken->first <= a->last; ++taken) {
      if (first < taken->first) out->push_back({first, taken->first - 1});
      open = taken->last < a->last;
      first = taken->last + 1;
    }
    if (open) out->push_back({first, a->last});
  }
}

}  // namespace

// Returns false if the sets have nothing in common.
bool Cut::begin(const std::vector<SetId>& sets, std::size_t candidates) {
  frames_.clear();
  spans_.clear();
  ranges_.clear();
  frames_.push_back({0, candidates});
  for (std::uint32_t d = 0; d < space_.dimensions(); ++d) {
    auto begin = static_cast<std::uint32_t>(ranges_.size());
    ranges_.push_back({0, static_cast<std::uint32_t>(space_.size(d)) - 1});
    for (SetId set : sets) {
      const Space::Term* term = space_.termOf(set, d);
      if (term == nullptr) continue;
      was_.assign(ranges_.begin() + begin, ranges_.end());
      ranges_.resize(begin);
      appendShared(was_.data(), was_.size(), space_.ranges() + term->begin, term->count, &ranges_);
    }
    std::uint32_t size = 0;
    for (auto i = begin; i < ranges_.size(); ++i) size += ranges_[i].last - ranges_[i].first + 1;
    if (size == 0) return false;
    spans_.push_back({begin, static_cast<std::uint32_t>(ranges_.size()) - begin, size});
  }
  return true;
}

// The number of ranks that a span and a term share.
std::uint32_t Cut::shared(const Span& span, const Space::Term& term) {
  const Space::Range* a = &ranges_[span.begin];
  const Space::Range* aEnd = a + span.count;
  const Space::Range* b = space_.ranges() + term.begin;
  const Space::Range* bEnd = b + term.count;
  ++looks_;
  if (aEnd[-1].last < term.first || term.last < a->first) return 0;
  if (span.count == 1 && term.count == 1) {
    return std::min(a->last, term.last) - std::max(a->first, term.first) + 1;
  }
  const std::uint64_t looks = term.count > 1 ? kLooksAtMany : 1;
  std::uint32_t count = 0;
  for (; a != aEnd && b != bEnd; looks_ += looks) {
    if (a->last < b->first) {
      a = reach(a, aEnd, b->first);
    } else if (b->last < a->first) {
      b = reach(b, bEnd, a->first);
    } else {
      count += std::min(a->last, b->last) - std::max(a->first, b->first) + 1;
      ++(a->last < b->last ? a : b);
    }
  }
  return count;
}

// Estimates the share of the remaining packets that the set takes, from 0 to 1. The result is 0
// only if the set takes none of them. `*whole` is true if the set takes all of them.
double Cut::shareOf(SetId set, bool* whole) {
  const Span* span = spans();
  double share = 1;
  *whole = true;
  for (const Space::Term* term = space_.begin(set); term != space_.end(set); ++term) {
    const std::uint32_t size = span[term->dimension].size;
    const std::uint32_t common = shared(span[term->dimension], *term);
    if (common == 0) return 0;
    if (common == size) continue;
    *whole = false;
    share *= static_cast<double>(common) / size;
  }
  return std::max(share, std::numeric_limits<double>::min());
}

// Moves to the front the candidates that share a packet with the remaining part. Finds the next
// candidate to subtract, if there are enough steps left.
Cut::Chosen Cut::choose(std::vector<Candidate>* candidates) {
  Chosen chosen;
  std::size_t kept = 0;
  // If a candidate takes the whole remaining part, candidates of higher levels are ignored.
  std::uint32_t deepest = std::numeric_limits<std::uint32_t>::max();
  const std::uint64_t most = std::min(steps_left_, ~std::uint64_t{0} / kLooksAStep) * kLooksAStep;
  for (std::size_t i = 0; i < frames_.back().candidates && looks_ < most; ++i) {
    const Candidate candidate = (*candidates)[i];
    if (candidate.level > deepest) continue;
    bool whole;
    const double share = shareOf(candidate.set, &whole);
    if (share == 0) continue;
    std::swap((*candidates)[i], (*candidates)[kept++]);
    if (whole) deepest = candidate.level;
    if (!candidate.stops) chosen.shares += share;
    const Candidate& best = chosen.candidate;
    const auto comesFirst = [&] {
      if (best.set == kNothing) return true;
      if (candidate.level != best.level) return candidate.level < best.level;
      if (candidate.stops != best.stops) return candidate.stops;
      return share > chosen.share || (share == chosen.share && candidate.set < best.set);
    };
    if (!comesFirst()) continue;
    chosen.candidate = candidate;
    chosen.share = share;
    chosen.whole = whole;
    if (whole && candidate.level == 0) break;
  }
  frames_.back().candidates = kept;
  return chosen;
}

// Divides a frame in the next dimension of the set that is subtracted from it. The part outside of
// the set becomes a new frame, and this frame keeps the part inside. Returns false after the last
// dimension.
bool Cut::pushNextRest() {
  const std::size_t dimensions = space_.dimensions();
  while (frames_.back().next != space_.end(frames_.back().taken)) {
    const Space::Term& term = *frames_.back().next++;
    Span& span = spans()[term.dimension];
    const Space::Range* taken = space_.ranges() + term.begin;
    const std::uint32_t common = shared(span, term);
    if (common == span.size) continue;

    const std::uint32_t size = span.size - common;
    was_.assign(ranges_.begin() + span.begin, ranges_.begin() + span.begin + span.count);
    if (frames_.back().next == space_.end(frames_.back().taken)) {
      // The frame is not needed any more, so it is used again for the part outside.
      const bool own = span.begin >= frames_.back().ranges;
      if (own && span.begin + span.count == ranges_.size()) ranges_.resize(span.begin);
      span.begin = static_cast<std::uint32_t>(ranges_.size());
      appendRest(was_.data(), was_.size(), taken, term.count, &ranges_);
      span.count = static_cast<std::uint32_t>(ranges_.size()) - span.begin;
      span.size = size;
      frames_.back().taken = kNothing;
      return true;
    }
    span.begin = static_cast<std::uint32_t>(ranges_.size());
    appendShared(was_.data(), was_.size(), taken, term.count, &ranges_);
    span.count = static_cast<std::uint32_t>(ranges_.size()) - span.begin;
    span.size = common;

    const auto mark = static_cast<std::uint32_t>(ranges_.size());
    appendRest(was_.data(), was_.size(), taken, term.count, &ranges_);
    const auto count = static_cast<std::uint32_t>(ranges_.size()) - mark;
    frames_.push_back({mark, frames_.back().candidates});
    spans_.resize(spans_.size() + dimensions);
    std::copy_n(spans_.end() - static_cast<std::ptrdiff_t>(2 * dimensions), dimensions,
                spans_.end() - static_cast<std::ptrdiff_t>(dimensions));
    spans()[term.dimension] = {mark, count, size};
    return true;
  }
  return false;
}

void Cut::pop() {
  ranges_.resize(frames_.back().ranges);
  spans_.resize(spans_.size() - space_.dimensions());
  frames_.pop_back();
}

Cut::Outcome Cut::run(const std::vector<SetId>& sets, std::vector<Candidate>* candidates,
                      bool quick, Watcher* watcher) {
  if (!begin(sets, candidates->size())) return Outcome::kNothingLeft;
  while (!frames_.empty()) {
    if (frames_.back().taken == kNothing) {
      looks_ = 0;
      const Chosen chosen = choose(candidates);
      steps_left_ -= std::min(1 + looks_ / kLooksAStep, steps_left_);
      looks_since_ += 1 + looks_;
      if (looks_since_ > kLooksBetween && progress_ != nullptr) {
        looks_since_ = 0;
        progress_->repeat();
      }
      if (steps_left_ == 0) return Outcome::kUndecided;
      at_ = chosen.candidate.set;
      if (at_ == kNothing) {
        if (watcher == nullptr || !watcher->left(*this)) return Outcome::kLeft;
        pop();
        continue;
      }
      if (chosen.candidate.stops) return Outcome::kStopped;
      if (quick && chosen.shares < kSurelyLess) return Outcome::kLeft;
      if (watcher != nullptr) watcher->took(chosen.candidate, *this);
      if (chosen.whole) {
        pop();
        continue;
      }
      frames_.back().taken = at_;
      frames_.back().next = space_.begin(at_);
    }
    if (!pushNextRest()) pop();
  }
  return Outcome::kNothingLeft;
}

void Cut::setShare(std::uint32_t dimension, SetId within, std::vector<Space::Range>* out) const {
  const Span& span = spans()[dimension];
  out->assign(ranges_.begin() + span.begin, ranges_.begin() + span.begin + span.count);
  for (SetId set : {at_ == kNothing ? kEverything : at_, within}) {
    const Space::Term* term = space_.termOf(set, dimension);
    if (term == nullptr) continue;
    const std::vector<Space::Range> was = std::move(*out);
    out->clear();
    appendShared(was.data(), was.size(), space_.ranges() + term->begin, term->count, out);
  }
}

bool Cut::meets(SetId set) const {
  std::vector<Space::Range> share;
  for (const Space::Term* term = space_.begin(set); term != space_.end(set); ++term) {
    setShare(term->dimension, set, &share);
    if (share.empty()) return false;
  }
  return true;
}

Point Cut::point(SetId within) const {
  Point point;
  std::vector<Space::Range> share;
  for (std::uint32_t d = 0; d < space_.dimensions(); ++d) {
    setShare(d, within, &share);
    point.push_back(space_.best(d, share.data(), share.size()));
  }
  return point;
}

}  // namespace FiltersInspect
