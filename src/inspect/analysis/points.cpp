#include "points.h"

namespace FiltersInspect {

Point Points::pointOf(const std::vector<SetId>& sets, unsigned which) {
  const auto choose = [&](std::uint32_t first, std::uint32_t last) {
    if (which < 3) return which == 1 ? first : last;
    seed_ = seed_ * 6364136223846793005U + 1442695040888963407U;
    return first + static_cast<std::uint32_t>((seed_ >> 33) % (std::uint64_t{last} - first + 1));
  };
  Point point(space_.dimensions());
  for (std::uint32_t d = 0; d < point.size(); ++d) {
    findCommon(sets, d);
    if (which == 0) {
      point[d] = space_.best(d, shared_.data(), shared_.size());
      continue;
    }
    const Space::Range& range = shared_[choose(0, static_cast<std::uint32_t>(shared_.size() - 1))];
    point[d] = choose(range.first, range.last);
  }
  return point;
}

// The ranks of one dimension that all sets have in common.
void Points::findCommon(const std::vector<SetId>& sets, std::uint32_t dimension) {
  shared_.assign(1, {0, static_cast<std::uint32_t>(space_.size(dimension) - 1)});
  for (SetId set : sets) {
    const Space::Term* term = space_.termOf(set, dimension);
    if (term == nullptr) continue;
    was_.swap(shared_);
    shared_.clear();
    appendShared(was_.data(), was_.size(), space_.ranges() + term->begin, term->count, &shared_);
  }
}

bool Points::haveCommon(const std::vector<SetId>& sets) {
  for (std::uint32_t d = 0; d < space_.dimensions(); ++d) {
    findCommon(sets, d);
    if (shared_.empty()) return false;
  }
  return true;
}

}  // namespace FiltersInspect
