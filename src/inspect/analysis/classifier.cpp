#include "classifier.h"

#include <algorithm>

#include "rule_space.h"

namespace FiltersInspect {
namespace {

// The memory that the rows of one dimension may take. If they need more, neighbouring ranks share a
// row.
constexpr std::size_t kMostBytes = std::size_t{8} << 20;
// The largest number of elements in `jumps`.
constexpr unsigned kMostJumpBits = 16;

// Starts to load cache lines that will be read soon. In a large group this halves the time of a
// decision, since all rows of a packet are loaded at once.
void fetch(const std::uint64_t* words) {
  constexpr std::uintptr_t kLines = 4, kLineSize = 64;
  const auto first = reinterpret_cast<std::uintptr_t>(words);
  for (std::uintptr_t i = 0; i < kLines; ++i) {
    // The address may be past the end of the memory, because nothing is read.
    __builtin_prefetch(reinterpret_cast<const void*>(first + i * kLineSize));
  }
}

unsigned widthOf(std::uint64_t number) {
  unsigned width = 0;
  for (; number != 0; number >>= 1) ++width;
  return width;
}

}  // namespace

Classifier::Classifier(const std::vector<PreparedEntry>& entries)
    : words_((entries.size() + kBits - 1) / kBits), summary_((words_ + kBits - 1) / kBits) {
  last_ = ~Word{0} >> (words_ * kBits - entries.size());

  RuleSpace rules;
  for (const PreparedEntry& entry : entries) rules.add(entry.asked);
  rules.seal(false);
  const Space& space = rules.space();
  std::vector<std::vector<Use>> uses(space.dimensions());
  for (std::uint32_t entry = 0; entry < entries.size(); ++entry) {
    const SetId set = rules.may(entry);
    for (const Space::Term* term = space.begin(set); term != space.end(set); ++term) {
      const Space::Range* range = space.ranges() + term->begin;
      for (const auto* end = range + term->count; range != end; ++range) {
        uses[term->dimension].push_back({range->first, range->last, entry});
      }
    }
  }
  dimensions_.reserve(space.dimensions());
  for (std::size_t d = 0; d < space.dimensions(); ++d) {
    const Space::Scale scale = space.scaleOf(d);
    first_of_.resize(scale.field + 1, static_cast<std::uint32_t>(d));
    dimensions_.push_back(dimensionOf(scale, &uses[d]));
    exact_ = exact_ && dimensions_.back().rank_shift == 0;
    uses[d] = {};
  }
  first_of_.resize(halfOf(static_cast<std::uint32_t>(packetFields().size()), 0) + 1,
                   static_cast<std::uint32_t>(dimensions_.size()));
  exact_ = exact_ && dimensions_.size() <= kMostDimensions;
  chooseLeaders();
}

// A dimension becomes a leader (a leading dimension) if its rows are short, and if some entry
// constrains this dimension but none of the leaders chosen so far.
void Classifier::chooseLeaders() {
  std::vector<std::uint32_t> by_length;
  const auto lengthOf = [this](std::uint32_t d) {
    const Dimension& one = dimensions_[d];
    return static_cast<double>(one.kept.size()) / static_cast<double>(one.rows.size());
  };
  for (std::uint32_t d = 0; d < dimensions_.size(); ++d) by_length.push_back(d);
  std::stable_sort(by_length.begin(), by_length.end(),
                   [&](std::uint32_t a, std::uint32_t b) { return lengthOf(a) < lengthOf(b); });
  std::vector<Word> others(words_, ~Word{0});
  if (words_ != 0) others.back() = last_;
  for (const std::uint32_t d : by_length) {
    Dimension& one = dimensions_[d];
    bool isNew = false;
    for (std::size_t w = 0; w < words_; ++w) isNew = isNew || (others[w] & ~one.common[w]) != 0;
    if (!isNew || lengthOf(d) * 4 > static_cast<double>(kBits)) continue;
    one.leads = true;
    leaders_.push_back(d);
    for (std::size_t w = 0; w < words_; ++w) others[w] &= one.common[w];
  }
  others_ = summaryOf(others);
}

std::vector<Classifier::Word> Classifier::summaryOf(const std::vector<Word>& row) const {
  std::vector<Word> words(summary_);
  for (std::size_t w = 0; w < words_; ++w) {
    if (row[w] != 0) words[w / kBits] |= Word{1} << w % kBits;
  }
  return words;
}

Classifier::Dimension Classifier::dimensionOf(const Space::Scale& scale,
                                              std::vector<Use>* uses) const {
  Dimension made{};
  made.bits = scale.bits;
  made.shift = lowestBitOf(scale.bits);
  made.starts.reserve(scale.starts.size());
  for (const std::uint64_t start : scale.starts) made.starts.push_back(start >> made.shift);
  const unsigned width = widthOf(scale.bits >> made.shift);
  const unsigned jump_bits = std::min({widthOf(made.starts.size()) + 2, width, kMostJumpBits});
  made.jump_shift = width - jump_bits;
  std::uint32_t rank = 0;
  for (std::uint64_t jump = 0; jump <= std::uint64_t{1} << jump_bits; ++jump) {
    while (rank < made.starts.size() && made.starts[rank] >> made.jump_shift < jump) ++rank;
    made.jumps.push_back(rank);
  }

  made.common.assign(words_, ~Word{0});
  for (const Use& use : *uses) made.common[use.entry / kBits] &= ~(Word{1} << use.entry % kBits);
  std::vector<Word> asking(words_);
  for (std::size_t w = 0; w < words_; ++w) asking[w] = ~made.common[w];
  made.common_words = summaryOf(made.common);
  made.asking_words = summaryOf(asking);
  std::stable_sort(uses->begin(), uses->end(),
                   [](const Use& a, const Use& b) { return a.first < b.first; });
  while (!fillRows(*uses, &made)) ++made.rank_shift;
  return made;
}

// Goes through the ranks from the lowest, and fills each row with the entries that allow a rank of
// the row. Returns false if the rows take too much memory.
bool Classifier::fillRows(const std::vector<Use>& uses, Dimension* dimension) const {
  std::vector<const Use*> by_last;
  by_last.reserve(uses.size());
  for (const Use& use : uses) by_last.push_back(&use);
  std::sort(by_last.begin(), by_last.end(),
            [](const Use* a, const Use* b) { return a->last < b->last; });
  std::vector<std::uint32_t> times(words_ * kBits);  // how many ranges of an entry are in the row
  std::vector<Word> row(words_), words(summary_);
  const auto enter = [&](std::uint32_t entry) {
    if (times[entry]++ != 0) return;
    row[entry / kBits] |= Word{1} << entry % kBits;
    words[entry / kBits / kBits] |= Word{1} << entry / kBits % kBits;
  };
  const auto leave = [&](std::uint32_t entry) {
    if (--times[entry] != 0) return;
    Word& bits = row[entry / kBits];
    bits &= ~(Word{1} << entry % kBits);
    if (bits == 0) words[entry / kBits / kBits] &= ~(Word{1} << entry / kBits % kBits);
  };

  const auto ranks = static_cast<std::uint32_t>(dimension->starts.size());
  const std::uint32_t count = ((ranks - 1) >> dimension->rank_shift) + 1;
  std::vector<Row> rows;
  std::vector<Word> kept;
  auto entering = uses.begin();
  auto leaving = by_last.begin();
  for (std::uint32_t number = 0; number < count; ++number) {
    const std::uint32_t first = number << dimension->rank_shift;
    const std::uint32_t end = (number + 1) << dimension->rank_shift;
    for (; entering != uses.end() && entering->first < end; ++entering) enter(entering->entry);
    for (; leaving != by_last.end() && (*leaving)->last < first; ++leaving)
      leave((*leaving)->entry);
    for (std::size_t s = 0; s < summary_; ++s) {
      rows.push_back({words[s], static_cast<std::uint32_t>(kept.size())});
      for (Word left = words[s]; left != 0; left &= left - 1) {
        kept.push_back(row[s * kBits + lowestBitOf(left)]);
      }
    }
    const bool tooMany = rows.size() * sizeof(Row) + kept.size() * sizeof(Word) > kMostBytes;
    if (tooMany && count > 1) return false;
  }
  rows.resize(rows.size() + summary_, {0, 0});
  rows.shrink_to_fit();
  kept.shrink_to_fit();
  dimension->rows = std::move(rows);
  dimension->kept = std::move(kept);
  return true;
}

std::size_t Classifier::Dimension::rowOf(std::uint64_t value) const {
  const std::uint64_t here = (value & bits) >> shift;
  const auto jump = static_cast<std::size_t>(here >> jump_shift);
  const auto found =
      std::upper_bound(starts.begin() + jumps[jump], starts.begin() + jumps[jump + 1], here);
  return static_cast<std::size_t>(found - starts.begin() - 1) >> rank_shift;
}

// Finds the row of each dimension whose value is known for the packet. The leaders come first.
std::size_t Classifier::rowsFor(const Packet& packet, Looked* looked) const {
  std::size_t count = 0, leaders = 0;
  for (const PacketFields::Field& field : PacketFields::of(packet)) {
    for (const unsigned half : {0U, 1U}) {
      const std::uint32_t number = halfOf(field.number, half);
      for (std::uint32_t d = first_of_[number]; d < first_of_[number + 1]; ++d) {
        if (count == kMostDimensions) return count;
        const Dimension& dimension = dimensions_[d];
        const std::size_t row =
            field.has ? dimension.rowOf(field.value[half]) : dimension.rows.size() / summary_ - 1;
        looked[count] = {&dimension, dimension.rows.data() + row * summary_};
        __builtin_prefetch(looked[count].row);
        if (dimension.leads) std::swap(looked[leaders++], looked[count]);
        ++count;
      }
    }
  }
  return count;
}

// Returns the word `s` of a summary, in which each bit stands for one word of the rows. The bit is
// 0 if no entry of that word can take the packet.
Classifier::Word Classifier::wordsToRead(const Looked* looked, std::size_t count,
                                         std::size_t s) const {
  Word some = others_[s], all = ~Word{0};
  std::size_t told = 0;
  for (std::size_t i = 0; i < count; ++i) {
    const Dimension& dimension = *looked[i].dimension;
    const Word its = looked[i].row[s].words;
    fetch(dimension.kept.data() + looked[i].row[s].begin);
    all &= dimension.common_words[s] | its;
    if (!dimension.leads) continue;
    some |= its;
    ++told;
  }
  if (told < leaders_.size()) {
    const auto isTold = [&](const Dimension& one) {
      return std::any_of(looked, looked + told,
                         [&](const Looked& other) { return other.dimension == &one; });
    };
    for (const std::uint32_t d : leaders_) {
      if (!isTold(dimensions_[d])) some |= dimensions_[d].asking_words[s];
    }
  }
  return some & all;
}

}  // namespace FiltersInspect
