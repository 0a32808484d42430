#include "space.h"

#include <algorithm>

namespace FiltersInspect {
namespace {

std::uint64_t lowestBit(std::uint64_t bits) { return bits & (~bits + 1); }

bool meetIn(const Space::Range* a, std::size_t aCount, const Space::Range* b, std::size_t bCount,
            std::uint64_t* looks) {
  for (const auto *aEnd = a + aCount, *bEnd = b + bCount; a != aEnd && b != bEnd; ++*looks) {
    if (a->last < b->first) {
      ++a;
    } else if (b->last < a->first) {
      ++b;
    } else {
      return true;
    }
  }
  return false;
}

bool holdsIn(const Space::Range* outer, std::size_t outerCount, const Space::Range* inner,
             std::size_t innerCount) {
  const auto* outerEnd = outer + outerCount;
  for (const auto* innerEnd = inner + innerCount; inner != innerEnd; ++inner) {
    while (outer != outerEnd && outer->last < inner->first) ++outer;
    if (outer == outerEnd || inner->first < outer->first || outer->last < inner->last) return false;
  }
  return true;
}

}  // namespace

void appendShared(const Space::Range* a, std::size_t aCount, const Space::Range* b,
                  std::size_t bCount, std::vector<Space::Range>* out) {
  for (const auto *aEnd = a + aCount, *bEnd = b + bCount; a != aEnd && b != bEnd;) {
    const std::uint32_t first = std::max(a->first, b->first), last = std::min(a->last, b->last);
    if (first <= last) out->push_back({first, last});
    if (a->last < b->last) {
      ++a;
    } else {
      ++b;
    }
  }
}

// --- Building ------------------------------------------------------------------------------------

SetId Space::add(std::vector<Constraint> constraints) {
  std::sort(constraints.begin(), constraints.end(),
            [](const Constraint& a, const Constraint& b) { return a.field < b.field; });
  constraints_.insert(constraints_.end(), constraints.begin(), constraints.end());
  ends_.push_back(constraints_.size());
  return static_cast<SetId>(ends_.size() - 1);
}

void Space::seal() {
  divideFields();
  findRanks();
  sets_.reserve(ends_.size() + 1);
  const Constraint* first = constraints_.data();
  for (std::size_t end : ends_) {
    sets_.push_back(static_cast<std::uint32_t>(terms_.size()));
    while (first != constraints_.data() + end) {
      const std::uint32_t field = first->field;
      const Constraint* last = first;
      while (last != constraints_.data() + end && last->field == field) ++last;
      for (std::size_t part = parts_of_[field]; part < parts_of_[field + 1]; ++part) {
        addTerm(part, first, last);
      }
      first = last;
    }
  }
  sets_.push_back(static_cast<std::uint32_t>(terms_.size()));
  constraints_ = {};
  ends_ = {};
}

// A part begins wherever a mask has a bit and not the one above it; parts in which no mask has a
// bit are left out, except that a field which is asked for at all has one.
void Space::divideFields() {
  struct Use {
    bool asked = false;
    std::uint64_t starts = 0, bits = 0;
  };
  std::vector<Use> uses(fields_.size());
  for (const Constraint& asked : constraints_) {
    Use& use = uses[asked.field];
    const std::uint64_t all = ~std::uint64_t{0} >> (64 - fields_[asked.field].width);
    const std::uint64_t mask = asked.masked ? asked.last & all : all;
    use.asked = true;
    use.bits |= mask;
    use.starts |= mask & ~(mask >> 1);
  }
  for (std::size_t field = 0; field < fields_.size(); ++field) {
    parts_of_.push_back(static_cast<std::uint32_t>(parts_.size()));
    const Use& use = uses[field];
    if (!use.asked) continue;
    std::uint64_t part = 0;
    for (unsigned bit = fields_[field].width; bit-- > 0;) {
      part |= std::uint64_t{1} << bit;
      const bool ends = bit == 0 || (use.starts >> (bit - 1) & 1) != 0;
      if (!ends) continue;
      const bool first = parts_of_.back() == parts_.size();
      if ((part & use.bits) != 0 || (bit == 0 && first)) {
        parts_.push_back({static_cast<std::uint32_t>(field), part, {}});
        lacking_.push_back(first && fields_[field].may_lack);
      }
      part = 0;
    }
  }
  parts_of_.push_back(static_cast<std::uint32_t>(parts_.size()));
}

Space::Values Space::within(const Part& part, const Constraint& asked) {
  if (!asked.masked) return {asked.first, asked.last};
  const std::uint64_t mask = asked.last & part.bits;
  const std::uint64_t lowest = asked.first & mask;
  return {lowest, lowest | (part.bits & ~mask)};
}

// A rank begins wherever a range does, and behind its end.
void Space::findRanks() {
  for (const Constraint& asked : constraints_) {
    for (std::size_t i = parts_of_[asked.field]; i < parts_of_[asked.field + 1]; ++i) {
      Part& part = parts_[i];
      const Values values = within(part, asked);
      if (values.first != 0) part.starts.push_back(values.first);
      if (values.second != part.bits) {
        part.starts.push_back(values.second + lowestBit(part.bits));
      }
    }
  }
  for (std::size_t i = 0; i < parts_.size(); ++i) {
    auto& starts = parts_[i].starts;
    starts.push_back(0);
    std::sort(starts.begin(), starts.end());
    starts.erase(std::unique(starts.begin(), starts.end()), starts.end());
    starts.shrink_to_fit();
    sizes_.push_back(static_cast<std::uint32_t>(starts.size() + (lacking_[i] ? 1 : 0)));
  }
}

Space::Range Space::ranksOf(std::size_t i, const Constraint& asked) const {
  const Part& part = parts_[i];
  const Values values = within(part, asked);
  const auto rankOf = [&part](std::uint64_t value) {
    const auto found = std::upper_bound(part.starts.begin(), part.starts.end(), value);
    return static_cast<std::uint32_t>(found - part.starts.begin() - 1);
  };
  return {rankOf(values.first), rankOf(values.second)};
}

void Space::addTerm(std::size_t part, const Constraint* first, const Constraint* last) {
  const std::size_t begin = ranges_.size();
  for (const Constraint* asked = first; asked != last; ++asked) {
    ranges_.push_back(ranksOf(part, *asked));
  }
  const auto all = ranges_.begin() + static_cast<std::ptrdiff_t>(begin);
  std::sort(all, ranges_.end(), [](const Range& a, const Range& b) { return a.first < b.first; });
  std::size_t end = begin;
  for (std::size_t i = begin; i < ranges_.size(); ++i) {
    if (end > begin && ranges_[i].first <= ranges_[end - 1].last + 1) {
      ranges_[end - 1].last = std::max(ranges_[end - 1].last, ranges_[i].last);
    } else {
      ranges_[end++] = ranges_[i];
    }
  }
  ranges_.resize(end);
  const Range hull = {ranges_[begin].first, ranges_[end - 1].last};
  if (end - begin == 1 && hull.first == 0 && hull.last + 1 == sizes_[part]) {
    ranges_.resize(begin);  // asks nothing
    return;
  }
  terms_.push_back({static_cast<std::uint32_t>(part), hull.first, hull.last,
                    static_cast<std::uint32_t>(begin), static_cast<std::uint32_t>(end - begin)});
}

// --- Two sets ------------------------------------------------------------------------------------

bool Space::meet(SetId a, SetId b, std::uint64_t* looks) const {
  if (a == kNothing || b == kNothing) return false;
  std::uint64_t ignored = 0;
  for (const Term *x = begin(a), *y = begin(b); x != end(a) && y != end(b);) {
    if (x->dimension != y->dimension) {
      ++(x->dimension < y->dimension ? x : y);
      continue;
    }
    if (x->last < y->first || y->last < x->first) return false;
    if (x->count + y->count > 2 && !meetIn(&ranges_[x->begin], x->count, &ranges_[y->begin],
                                           y->count, looks != nullptr ? looks : &ignored)) {
      return false;
    }
    ++x, ++y;
  }
  return true;
}

bool Space::holds(SetId outer, SetId inner) const {
  if (inner == kNothing) return true;
  if (outer == kNothing) return false;
  const Term* y = begin(inner);
  for (const Term* x = begin(outer); x != end(outer); ++x, ++y) {
    while (y != end(inner) && y->dimension < x->dimension) ++y;
    if (y == end(inner) || y->dimension != x->dimension || y->first < x->first ||
        x->last < y->last || !holdsIn(&ranges_[x->begin], x->count, &ranges_[y->begin], y->count)) {
      return false;
    }
  }
  return true;
}

const Space::Term* Space::termOf(SetId set, std::uint32_t dimension) const {
  const Term* found =
      std::lower_bound(begin(set), end(set), dimension,
                       [](const Term& term, std::uint32_t d) { return term.dimension < d; });
  return found != end(set) && found->dimension == dimension ? found : nullptr;
}

void Space::appendCommon(SetId a, SetId b, std::uint32_t dimension, std::vector<Range>* out) const {
  const Term *x = termOf(a, dimension), *y = a == b ? nullptr : termOf(b, dimension);
  const Range all = {0, sizes_[dimension] - 1};
  appendShared(x != nullptr ? &ranges_[x->begin] : &all, x != nullptr ? x->count : 1,
               y != nullptr ? &ranges_[y->begin] : &all, y != nullptr ? y->count : 1, out);
}

Point Space::common(SetId a, SetId b) const {
  Point point;
  std::vector<Range> both;
  for (std::uint32_t d = 0; d < sizes_.size(); ++d) {
    both.clear();
    appendCommon(a, b, d, &both);
    point.push_back(best(d, both.data(), both.size()));
  }
  return point;
}

std::vector<std::pair<std::uint32_t, std::optional<std::uint64_t>>> Space::valuesOf(
    const Point& point) const {
  std::vector<std::pair<std::uint32_t, std::optional<std::uint64_t>>> values;
  for (std::size_t i = 0; i < parts_.size(); ++i) {
    const Part& part = parts_[i];
    if (values.empty() || values.back().first != part.field) values.emplace_back(part.field, 0);
    auto& value = values.back().second;
    if (point[i] == part.starts.size()) {
      value.reset();
    } else if (value) {
      *value |= part.starts[point[i]];
    }
  }
  return values;
}

// --- Hulls ---------------------------------------------------------------------------------------

Hulls::Hulls(const Space& space, std::vector<SetId> sets, std::uint64_t max_looks)
    : space_(space), sets_(std::move(sets)), looks_left_(max_looks) {
  columns_.resize(space.dimensions());
  for (std::size_t d = 0; d < columns_.size(); ++d) {
    const auto last = static_cast<std::uint32_t>(space.size(d) - 1);
    columns_[d].assign(sets_.size(), {0, last});
  }
  for (std::size_t i = 0; i < sets_.size(); ++i) {
    if (sets_[i] == kNothing) continue;
    for (const auto* term = space.begin(sets_[i]); term != space.end(sets_[i]); ++term) {
      columns_[term->dimension][i] = {term->first, term->last};
    }
  }
}

bool Hulls::meeting(SetId set, std::size_t begin, std::size_t end,
                    std::vector<std::uint32_t>* positions) {
  positions->clear();
  if (set == kNothing || begin >= end) return true;
  const auto portion = [this](const Space::Term& term) {
    return (term.last - term.first + 1.0) / static_cast<double>(space_.size(term.dimension));
  };
  const auto* narrowest =
      std::min_element(space_.begin(set), space_.end(set),
                       [&](const auto& a, const auto& b) { return portion(a) < portion(b); });
  positions->resize(end - begin);
  std::size_t count = 0;
  if (narrowest == space_.end(set)) {
    for (std::size_t i = begin; i < end; ++i) {
      (*positions)[count++] = static_cast<std::uint32_t>(i);
    }
  } else {
    const Space::Range* column = columns_[narrowest->dimension].data();
    for (std::size_t i = begin; i < end; ++i) {
      (*positions)[count] = static_cast<std::uint32_t>(i);
      count += column[i].first <= narrowest->last && narrowest->first <= column[i].last ? 1 : 0;
    }
  }
  for (const auto* term = space_.begin(set); term != space_.end(set); ++term) {
    if (term == narrowest) continue;
    const Space::Range* column = columns_[term->dimension].data();
    std::size_t kept = 0;
    for (std::size_t k = 0; k < count; ++k) {
      const Space::Range& hull = column[(*positions)[k]];
      (*positions)[kept] = (*positions)[k];
      kept += hull.first <= term->last && term->first <= hull.last ? 1 : 0;
    }
    count = kept;
  }
  positions->resize(count);
  const auto isApart = [&](std::uint32_t i) {
    if (looks_left_ == 0) return false;
    std::uint64_t looks = 0;
    const bool meet = space_.meet(set, sets_[i], &looks);
    looks_left_ -= std::min(looks, looks_left_);
    return !meet;
  };
  positions->erase(std::remove_if(positions->begin(), positions->end(), isApart), positions->end());
  return looks_left_ != 0;
}

}  // namespace FiltersInspect
