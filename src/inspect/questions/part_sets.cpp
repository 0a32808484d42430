#include "part_sets.h"

#include <utility>

namespace FiltersInspect {

// A part is a product, and so is a set. But the part may divide a field into dimensions, and a set
// cannot express "this value, or absent". So a part may become several sets.
bool PartSets::left(const Cut& cut) {
  part_ = {{}};
  const auto dimensions = static_cast<std::uint32_t>(space_.dimensions());
  for (std::uint32_t begin = 0, end = 0; begin < dimensions; begin = end) {
    const auto field = [&](std::uint32_t d) { return space_.fieldOf(d) / 2; };
    while (end < dimensions && field(end) == field(begin)) ++end;
    if (!addField(cut, begin, end) || sets_.size() + part_.size() > kMostSets) {
      too_many_ = true;
      return false;
    }
  }
  sets_.insert(sets_.end(), part_.begin(), part_.end());
  return true;
}

// Divides the values of some dimensions into values under masks. Returns false if there are too
// many masks.
bool PartSets::divide(const std::vector<Dimension>& dimensions,
                      std::vector<ValuePair>* pieces) const {
  *pieces = {{}};
  for (const Dimension& one : dimensions) {
    const std::uint64_t bits = space_.bitsOf(one.number);
    const std::size_t half = space_.fieldOf(one.number) % 2;
    unsigned low = 0, size = 0;  // there are `size` bits, from bit `low` on
    while ((bits >> low & 1) == 0) ++low;
    while (size + low < 64 && (bits >> (size + low) & 1) != 0) ++size;
    std::vector<ValuePair> masks, longer;
    for (const auto& [first, last] : one.values) {
      appendPrefixes({{first >> low, 0}, {last >> low, 0}}, size, &masks);
      if (pieces->size() * masks.size() > kMostPieces) return false;
    }
    for (const ValuePair& piece : *pieces) {
      for (const ValuePair& mask : masks) {
        longer.push_back(piece);
        longer.back().first[half] |= mask.first[0] << low;
        longer.back().last[half] |= mask.last[0] << low;
      }
    }
    *pieces = std::move(longer);
  }
  return true;
}

// Adds the values of one field to the sets of the part. The field has the dimensions from `begin`
// to `end`.
bool PartSets::addField(const Cut& cut, std::uint32_t begin, std::uint32_t end) {
  const auto number = static_cast<std::uint8_t>(space_.fieldOf(begin) / 2);
  const unsigned width = packetFields()[number].bits;
  std::vector<Dimension> dimensions;
  bool whole = true, lacks = false;
  for (std::uint32_t d = begin; d < end; ++d) {
    std::vector<Space::Range> ranks;
    cut.setShare(d, kEverything, &ranks);
    whole = whole && ranks.size() == 1 && ranks[0].last - ranks[0].first + 1 == space_.size(d);
    Dimension& one = dimensions.emplace_back(Dimension{d, {}});
    for (Space::Range range : ranks) {
      const bool is_lacking = space_.isLacking(d, range.last);
      lacks = lacks || is_lacking;
      if (is_lacking && range.last-- == range.first) continue;
      one.values.push_back(space_.valuesOf(d, range));
    }
  }
  if (whole) return true;

  std::vector<FieldSet> choices;
  if (lacks) choices.push_back({number, FieldSet::Form::kLacks, {}});
  FieldSet ranges = {number, FieldSet::Form::kRanges, {}};
  if (lowBits(width, width) == FieldValue{space_.bitsOf(begin), 0}) {
    for (const auto& [first, last] : dimensions[0].values) {
      ranges.values.push_back({{first, 0}, {last, 0}});
    }
  } else {
    std::vector<ValuePair> pieces;
    if (!divide(dimensions, &pieces)) return false;
    for (const ValuePair& piece : pieces) {
      FieldSet one = fieldUnder(number, piece.first, piece.last, width);
      if (one.form == FieldSet::Form::kMasked) {
        choices.push_back(std::move(one));
      } else {
        ranges.values.insert(ranges.values.end(), one.values.begin(), one.values.end());
      }
    }
  }
  if (!ranges.values.empty()) {
    joinRanges(&ranges, width);
    choices.push_back(std::move(ranges));
  }
  std::vector<std::vector<FieldSet>> longer;
  for (const auto& set : part_) {
    for (const FieldSet& choice : choices) {
      longer.push_back(set);
      longer.back().push_back(choice);
    }
  }
  part_ = std::move(longer);
  return part_.size() <= kMostSets;
}

}  // namespace FiltersInspect
