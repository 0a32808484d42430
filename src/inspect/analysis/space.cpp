#include "space.h"

#include <algorithm>

namespace FiltersInspect {
namespace {

std::uint64_t lowestBit(std::uint64_t bits) { return bits & (~bits + 1); }

void sortUnique(std::vector<std::uint64_t>* values) {
  std::sort(values->begin(), values->end());
  values->erase(std::unique(values->begin(), values->end()), values->end());
}

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
  std::stable_sort(constraints.begin(), constraints.end(),
                   [](const Constraint& a, const Constraint& b) { return a.field < b.field; });
  const std::size_t begin = asks_.size();
  for (const Constraint& one : constraints) {
    const bool first = asks_.size() == begin || asks_.back().field != one.field;
    if (first) asks_.push_back({one.field, one.asks, values_.size()});
    values_.emplace_back(one.first, one.last);
  }
  ends_.push_back(asks_.size());
  return static_cast<SetId>(ends_.size() - 1);
}

std::vector<std::uint64_t> Space::startsOf(std::uint32_t field) const {
  const std::uint64_t all = ~std::uint64_t{0} >> (64 - fields_[field].width);
  std::vector<std::uint64_t> starts = {0};
  for (std::size_t i = 0; i < asks_.size(); ++i) {
    if (asks_[i].field != field || asks_[i].asks == Asks::kLack) continue;
    const std::size_t end = i + 1 < asks_.size() ? asks_[i + 1].begin : values_.size();
    for (std::size_t v = asks_[i].begin; v < end; ++v) {
      const Values values = within({field, all, {}, {}}, asks_[i].asks, values_[v]);
      starts.push_back(values.first);
      if (values.second != all) starts.push_back(values.second + 1);
    }
  }
  sortUnique(&starts);
  return starts;
}

void Space::seal() {
  asks_.push_back({0, Asks::kRange, values_.size()});
  divideFields();
  findRanks();
  sets_.reserve(ends_.size() + 1);
  ranges_.reserve(values_.size());
  std::size_t ask = 0;
  for (std::size_t end : ends_) {
    sets_.push_back(static_cast<std::uint32_t>(terms_.size()));
    for (; ask < end; ++ask) {
      const std::uint32_t field = asks_[ask].field;
      for (std::size_t part = parts_of_[field]; part < parts_of_[field + 1]; ++part) {
        addTerm(part, asks_[ask]);
      }
    }
  }
  sets_.push_back(static_cast<std::uint32_t>(terms_.size()));
  asks_ = {};
  values_ = {};
  ends_ = {};
}

SetId Space::addWithout(SetId set, const std::vector<std::uint32_t>& fields) {
  for (std::uint32_t i = sets_[set]; i < sets_[set + 1]; ++i) {
    const Term term = terms_[i];
    const std::uint32_t field = parts_[term.dimension].field;
    if (std::find(fields.begin(), fields.end(), field) == fields.end()) terms_.push_back(term);
  }
  sets_.push_back(static_cast<std::uint32_t>(terms_.size()));
  return count() - 1;
}

void Space::forget(SetId count) {
  sets_.resize(count + 1);
  terms_.resize(sets_.back());
}

// From the highest bit down, a part begins wherever a mask changes from 0 to 1. Parts in which no
// mask has a bit are left out, but a constrained field keeps one part.
void Space::divideFields() {
  struct Use {
    bool asked = false;
    std::uint64_t starts = 0, bits = 0;
  };
  std::vector<Use> uses(fields_.size());
  for (std::size_t i = 0; i + 1 < asks_.size(); ++i) {
    const Ask& ask = asks_[i];
    Use& use = uses[ask.field];
    const std::uint64_t all = ~std::uint64_t{0} >> (64 - fields_[ask.field].width);
    const std::uint64_t mask = ask.asks == Asks::kRange    ? all
                               : ask.asks == Asks::kMasked ? values_[ask.begin].second & all
                                                           : 0;
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
        parts_.push_back({static_cast<std::uint32_t>(field), part, {}, {}});
        lacking_.push_back(first && fields_[field].may_lack);
      }
      part = 0;
    }
  }
  parts_of_.push_back(static_cast<std::uint32_t>(parts_.size()));
}

Space::Values Space::within(const Part& part, Asks asks, const Values& values) {
  if (asks == Asks::kRange) return values;
  const std::uint64_t mask = values.second & part.bits;
  const std::uint64_t lowest = values.first & mask;
  return {lowest, lowest | (part.bits & ~mask)};
}

std::uint32_t Space::rankOf(const Part& part, std::uint64_t value) {
  const auto found = std::upper_bound(part.starts.begin(), part.starts.end(), value);
  return static_cast<std::uint32_t>(found - part.starts.begin() - 1);
}

// A rank begins at the first value of each range, and at the value after the last value of each
// range.
void Space::findRanks() {
  std::vector<std::size_t> crowded(parts_.size(), 1024);  // sizes from which duplicates are removed
  for (std::size_t k = 0; k + 1 < asks_.size(); ++k) {
    const Ask& ask = asks_[k];
    if (ask.asks == Asks::kLack) continue;
    for (std::size_t i = parts_of_[ask.field]; i < parts_of_[ask.field + 1]; ++i) {
      Part& part = parts_[i];
      for (std::size_t v = ask.begin; v < asks_[k + 1].begin; ++v) {
        const Values values = within(part, ask.asks, values_[v]);
        if (values.first != 0) part.starts.push_back(values.first);
        if (values.second != part.bits) {
          part.starts.push_back(values.second + lowestBit(part.bits));
        }
      }
      if (part.starts.size() < crowded[i]) continue;
      sortUnique(&part.starts);
      crowded[i] = 2 * part.starts.size() + 1024;
    }
  }
  for (std::size_t i = 0; i < parts_.size(); ++i) {
    Part& part = parts_[i];
    part.starts.push_back(0);
    sortUnique(&part.starts);
    part.starts.shrink_to_fit();
    for (std::uint64_t value : fields_[part.field].usual) {
      part.usual.push_back(rankOf(part, value & part.bits));
    }
    sizes_.push_back(static_cast<std::uint32_t>(part.starts.size() + (lacking_[i] ? 1 : 0)));
  }
}

void Space::addTerm(std::size_t part, const Ask& ask) {
  const std::size_t begin = ranges_.size();
  if (ask.asks == Asks::kLack) {
    if (!lacking_[part]) return;  // the first part says that the field is lacking
    ranges_.push_back({sizes_[part] - 1, sizes_[part] - 1});
  } else {
    for (std::size_t v = ask.begin; v < (&ask)[1].begin; ++v) {
      const Values values = within(parts_[part], ask.asks, values_[v]);
      ranges_.push_back({rankOf(parts_[part], values.first), rankOf(parts_[part], values.second)});
    }
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
    ranges_.resize(begin);  // no constraint
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

bool Space::isIn(SetId set, const Point& point) const {
  return std::all_of(begin(set), end(set), [&](const Term& term) {
    const std::uint32_t rank = point[term.dimension];
    const Range* last = &ranges_[term.begin] + term.count;
    const Range* found =
        std::lower_bound(&ranges_[term.begin], last, rank,
                         [](const Range& one, std::uint32_t r) { return one.last < r; });
    return found != last && found->first <= rank;
  });
}

const Space::Term* Space::termOf(SetId set, std::uint32_t dimension) const {
  if (set == kEverything) return nullptr;
  const Term* found =
      std::lower_bound(begin(set), end(set), dimension,
                       [](const Term& term, std::uint32_t d) { return term.dimension < d; });
  return found != end(set) && found->dimension == dimension ? found : nullptr;
}

std::pair<std::uint64_t, std::uint64_t> Space::valuesOf(std::size_t dimension,
                                                        const Range& range) const {
  const Part& part = parts_[dimension];
  const bool last = range.last + 1 == part.starts.size();
  return {part.starts[range.first],
          last ? part.bits : (part.starts[range.last + 1] - lowestBit(part.bits)) & part.bits};
}

std::uint32_t Space::best(std::size_t dimension, const Range* ranges, std::size_t count) const {
  const auto isIn = [&](std::uint32_t rank) {
    return std::any_of(ranges, ranges + count, [rank](const Range& range) {
      return range.first <= rank && rank <= range.last;
    });
  };
  const auto& usual = parts_[dimension].usual;
  const auto found = std::find_if(usual.begin(), usual.end(), isIn);
  return found != usual.end() ? *found : ranges[0].first;
}

// A usual value of the rank if there is one. Otherwise the lowest value of the rank. If that is
// even and the rank has the next value, the result is the next value, because an odd number looks
// more like a host or port.
std::uint64_t Space::shown(const Part& part, std::uint32_t rank) const {
  for (std::size_t i = 0; i < part.usual.size(); ++i) {
    if (part.usual[i] == rank) return fields_[part.field].usual[i] & part.bits;
  }
  const std::uint64_t lowest = part.starts[rank], next = lowest | (part.bits & 1);
  const bool last = rank + 1 == part.starts.size();
  return last || next < part.starts[rank + 1] ? next : lowest;
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
      *value |= shown(part, point[i]);
    }
  }
  return values;
}

}  // namespace FiltersInspect
