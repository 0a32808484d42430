#include "meetings.h"

#include <algorithm>
#include <numeric>

namespace FiltersInspect {
namespace {

constexpr std::size_t kBits = 64;
constexpr std::size_t kMostMarks = 256;  // the number of bit sets at each end of a dimension
constexpr std::size_t kMostWords = std::size_t{4}
                                   << 20;  // the size of all bit sets together, 32 MiB

// Words are handled in blocks, so that compilers can use vector instructions.
constexpr std::size_t kBlock = 8;
std::size_t blocksFor(std::size_t bits) { return (bits + kBits * kBlock - 1) / (kBits * kBlock); }

}  // namespace

Meetings::Meetings(const Space& space, std::vector<SetId> sets, std::uint64_t max_looks)
    : space_(space),
      sets_(std::move(sets)),
      looks_left_(max_looks),
      dimensions_(space.dimensions()),
      plain_(sets_.size(), true),
      words_(blocksFor(sets_.size()) * kBlock),
      left_(words_) {
  std::size_t asked = 1;
  for (std::size_t i = 0; i < sets_.size(); ++i) {
    if (sets_[i] == kNothing) continue;
    for (const auto* term = space.begin(sets_[i]); term != space.end(sets_[i]); ++term) {
      if (term->count > 1) plain_[i] = false;
      Dimension& dimension = dimensions_[term->dimension];
      asked += dimension.asked ? 0 : 1;
      dimension.asked = true;
      dimension.begins.values.push_back(term->first);
      dimension.begins.positions.push_back(static_cast<std::uint32_t>(i));
      dimension.ends.values.push_back(term->last);
    }
  }
  const std::size_t marks =
      std::min(kMostMarks, kMostWords / (2 * asked * std::max<std::size_t>(words_, 1)) + 1);
  distance_ = std::max(sets_.size() / marks + 1, kBits);
  for (Dimension& dimension : dimensions_) {
    dimension.ends.positions = dimension.begins.positions;
    // Sets without a constraint begin before all others, and never end.
    std::vector<Word> all(words_, ~Word{0});
    for (const std::uint32_t position : dimension.begins.positions) {
      all[position / kBits] &= ~(Word{1} << position % kBits);
    }
    mark(&dimension.begins, std::move(all));
    mark(&dimension.ends, std::vector<Word>(words_));
  }
}

void Meetings::mark(Sorted* sorted, std::vector<Word> bits) const {
  std::vector<std::uint32_t> order(sorted->values.size());
  std::iota(order.begin(), order.end(), 0U);
  std::stable_sort(order.begin(), order.end(), [sorted](std::uint32_t a, std::uint32_t b) {
    return sorted->values[a] < sorted->values[b];
  });
  std::vector<std::uint32_t> values, positions;
  values.reserve(order.size());
  positions.reserve(order.size());
  const std::size_t marks = order.size() / distance_ + 2;
  sorted->marks.reserve(marks * bits.size());
  for (std::size_t k = 0; k < (marks - 1) * distance_; ++k) {
    if (k % distance_ == 0) sorted->marks.insert(sorted->marks.end(), bits.begin(), bits.end());
    if (k >= order.size()) continue;
    const std::uint32_t position = sorted->positions[order[k]];
    values.push_back(sorted->values[order[k]]);
    positions.push_back(position);
    bits[position / kBits] |= Word{1} << position % kBits;
  }
  sorted->marks.insert(sorted->marks.end(), bits.begin(), bits.end());
  sorted->values = std::move(values);
  sorted->positions = std::move(positions);
}

void Meetings::start(std::size_t begin, std::size_t end) {
  words_begin_ = begin / (kBits * kBlock) * kBlock;
  words_end_ = blocksFor(end) * kBlock;
  for (std::size_t w = words_begin_; w < words_end_; ++w) {
    const std::size_t first = w * kBits;
    left_[w] = first + kBits <= begin || first >= end ? 0 : ~Word{0};
    if (first < begin && begin < first + kBits) left_[w] &= ~Word{0} << begin % kBits;
    if (first < end && end < first + kBits) left_[w] &= ~(~Word{0} << end % kBits);
  }
}

bool Meetings::intersect(std::uint32_t d, std::uint32_t first, std::uint32_t last) {
  const Dimension& dimension = dimensions_[d];
  if (!dimension.asked) return true;
  const Sorted &begins = dimension.begins, &ends = dimension.ends;
  const auto begun = static_cast<std::size_t>(
      std::upper_bound(begins.values.begin(), begins.values.end(), last) - begins.values.begin());
  const auto ended = static_cast<std::size_t>(
      std::lower_bound(ends.values.begin(), ends.values.end(), first) - ends.values.begin());
  // Keeps only the hulls of one stored bit set: the smallest one that has every hull that begins at
  // or before `last`. Then removes the hulls of another stored bit set: the largest one whose hulls
  // all end before `first`.
  const std::size_t above = (begun + distance_ - 1) / distance_, below = ended / distance_;
  const Word* begunMark = begins.marks.data() + above * words_;
  const Word* endedMark = ends.marks.data() + below * words_;
  Word any = 0;
  for (std::size_t w = words_begin_; w < words_end_; w += kBlock) {
    Word left[kBlock];
    for (std::size_t k = 0; k < kBlock; ++k) {
      left[k] = left_[w + k] & begunMark[w + k] & ~endedMark[w + k];
    }
    for (std::size_t k = 0; k < kBlock; ++k) {
      left_[w + k] = left[k];
      any |= left[k];
    }
  }
  if (any == 0) return false;
  // Then removes the few hulls between a stored bit set and the exact position.
  const auto remove = [this](std::uint32_t i) { left_[i / kBits] &= ~(Word{1} << i % kBits); };
  const std::size_t last_begun = std::min(above * distance_, begins.positions.size());
  for (std::size_t k = begun; k < last_begun; ++k) remove(begins.positions[k]);
  for (std::size_t k = below * distance_; k < ended; ++k) remove(ends.positions[k]);
  return true;
}

bool Meetings::intersect(SetId set) {
  return std::all_of(space_.begin(set), space_.end(set), [this](const Space::Term& term) {
    return intersect(term.dimension, term.first, term.last);
  });
}

void Meetings::append(std::vector<std::uint32_t>* positions) const {
  for (std::size_t w = words_begin_; w < words_end_; ++w) {
    for (Word bits = left_[w]; bits != 0; bits &= bits - 1) {
      const auto position =
          static_cast<std::uint32_t>(w * kBits + static_cast<std::size_t>(__builtin_ctzll(bits)));
      if (sets_[position] != kNothing) positions->push_back(position);
    }
  }
}

bool Meetings::meeting(SetId set, std::size_t begin, std::size_t end,
                       std::vector<std::uint32_t>* positions) {
  positions->clear();
  if (set == kNothing || begin >= end) return true;
  start(begin, end);
  if (!intersect(set)) return true;
  append(positions);
  const bool plain = std::all_of(space_.begin(set), space_.end(set),
                                 [](const Space::Term& term) { return term.count == 1; });
  const auto isApart = [&](std::uint32_t i) {
    if ((plain && plain_[i]) || looks_left_ == 0) return false;
    std::uint64_t looks = 0;
    const bool meet = space_.meet(set, sets_[i], &looks);
    looks_left_ -= std::min(looks, looks_left_);
    return !meet;
  };
  positions->erase(std::remove_if(positions->begin(), positions->end(), isApart), positions->end());
  return looks_left_ != 0;
}

std::size_t Meetings::count(SetId set, std::size_t begin, std::size_t end) {
  if (set == kNothing || begin >= end) return 0;
  start(begin, end);
  std::size_t count = 0;
  if (!intersect(set)) return count;
  for (std::size_t w = words_begin_; w < words_end_; ++w) {
    count += static_cast<std::size_t>(__builtin_popcountll(left_[w]));
  }
  return count;
}

void Meetings::mayHold(const Point& point, std::size_t begin, std::size_t end,
                       std::vector<std::uint32_t>* positions) {
  positions->clear();
  if (begin >= end) return;
  start(begin, end);
  for (std::uint32_t d = 0; d < point.size(); ++d) {
    if (!intersect(d, point[d], point[d])) return;
  }
  append(positions);
}

void Meetings::holding(SetId set, std::size_t begin, std::size_t end,
                       std::vector<std::uint32_t>* positions) {
  positions->clear();
  if (set == kNothing || begin >= end) return;
  start(begin, end);
  for (std::uint32_t d = 0; d < dimensions_.size(); ++d) {
    const Space::Term* term = space_.termOf(set, d);
    const auto last = static_cast<std::uint32_t>(space_.size(d) - 1);
    if (!intersect(d, term != nullptr ? term->last : last, term != nullptr ? term->first : 0)) {
      return;
    }
  }
  append(positions);
  const auto isApart = [&](std::uint32_t i) { return !space_.holds(sets_[i], set); };
  positions->erase(std::remove_if(positions->begin(), positions->end(), isApart), positions->end());
}

}  // namespace FiltersInspect
