#include "rule_space.h"

#include <algorithm>
#include <optional>

#include "packet_shapes.h"

namespace FiltersInspect {
namespace {

// Returns the smallest number that is at least `least` and has this value under the mask. Returns
// nothing if there is no such number of this width.
std::optional<std::uint64_t> leastUnder(std::uint64_t value, std::uint64_t mask, unsigned width,
                                        std::uint64_t least) {
  const auto low = [](unsigned bits) { return bits == 0 ? 0 : ~std::uint64_t{0} >> (64 - bits); };
  const std::uint64_t wrong = (least ^ value) & mask;
  if (wrong == 0) return least;
  unsigned bit = width - 1;  // the highest wrong one
  while ((wrong >> bit & 1) == 0) --bit;
  if ((value >> bit & 1) == 0) {
    // The number must become larger, so a higher bit becomes 1. It is the lowest higher bit that is
    // 0 in `least` and outside of the mask.
    const std::uint64_t fixed = mask | least;
    for (++bit; bit < width && (fixed >> bit & 1) != 0; ++bit) {
    }
    if (bit == width) return std::nullopt;
  }
  const std::uint64_t here = std::uint64_t{1} << bit;
  return (least & ~low(bit + 1)) | here | (value & low(bit + 1));
}

// The lower half of an IPv6 address gets no constraint if its mask is empty. The upper half always
// gets a constraint, since this means that the packet has the field.
void appendMasked(std::uint8_t field, const ValuePair& masked, std::vector<Constraint>* out) {
  out->push_back({halfOf(field, 0), Asks::kMasked, masked.first[0], masked.last[0]});
  if (masked.last[1] == 0) return;
  out->push_back({halfOf(field, 1), Asks::kMasked, masked.first[1], masked.last[1]});
}

}  // namespace

void RuleSpace::note(const std::vector<Constraint>& constraints) {
  static const std::vector<Space::Field> halves = spaceFields();
  uses_.resize(halves.size());
  for (const Constraint& one : constraints) {
    Use& use = uses_[one.field];
    if (one.asks == Asks::kRange) use.ranges = true;
    if (one.asks == Asks::kMasked && !isPrefix(one.last, halves[one.field].width)) {
      use.holes = true;
    }
  }
}

void RuleSpace::add(const std::vector<Asked>& asked) {
  fields_of_rules_.resize(packetFields().size());
  const auto begin = static_cast<std::uint32_t>(open_.size());
  std::vector<Constraint> may, must;
  bool nothing = false;
  for (const Asked& one : asked) {
    fields_of_rules_[one.field] = true;
    may.insert(may.end(), one.may.begin(), one.may.end());
    const auto& surely = one.open != nullptr ? one.must : one.may;
    must.insert(must.end(), surely.begin(), surely.end());
    if (one.open == nullptr) continue;
    open_.push_back({one.match, one.field, surely.empty()});
    nothing = nothing || surely.empty();
  }
  note(may);
  const auto end = static_cast<std::uint32_t>(open_.size());
  const SetId mayId = space_.add(std::move(may));
  const SetId mustId = begin == end ? mayId : space_.add(std::move(must));
  rules_.push_back({nothing ? kNothing : mustId, mayId, mustId, begin, end});
}

void RuleSpace::seal(bool shapes) {
  fields_of_rules_.resize(packetFields().size());
  if (shapes) {
    std::vector<bool> constrained = fields_of_rules_;
    for (const auto& fields : fields_of_sets_) {
      for (const FieldSet& field : fields) constrained[field.number] = true;
    }
    for (auto& shape : packetShapes(constrained)) {
      lacking_.push_back(fieldsLacking(shape));
      note(shape);
      shapes_.push_back(space_.add(std::move(shape)));
    }
  }
  addSets();
  space_.seal();
  sealed_ = space_.count();
}

void RuleSpace::addSets() {
  note({});
  for (const auto& fields : fields_of_sets_) {
    for (const FieldSet& field : fields) {
      Use& use = uses_[halfOf(field.number, 0)];
      if (field.form == FieldSet::Form::kLacks) {
        use.lacks = isInEveryPacket(packetFields()[field.number].layer);
        space_.mayLack(halfOf(field.number, 0));
      } else if (field.form == FieldSet::Form::kMasked && !use.ranges) {
        std::vector<Constraint> constraints;
        appendMasked(field.number, field.values[0], &constraints);
        note(constraints);
      }
    }
  }
  for (const auto& fields : fields_of_sets_) sets_.push_back(placed(fields));
}

// A field that is divided into dimensions cannot have ranges. If a rule has a mask with holes and
// the set has ranges, the gaps between the ranges are subtracted as masks. If a rule has ranges and
// the set has a mask with holes, the rules divide the values into ranges that no rule divides
// further, and the set gets one value of each such range. The ranges of an IPv6 address are not
// products of its halves, so their gaps are subtracted too.
SetAmongRules RuleSpace::placed(const std::vector<FieldSet>& fields) {
  SetAmongRules set;
  std::vector<Constraint> core;
  std::vector<bool> named(packetFields().size());
  for (const FieldSet& field : fields) {
    const unsigned width = packetFields()[field.number].bits;
    const std::uint32_t half = halfOf(field.number, 0);
    named[field.number] = true;
    if (field.form == FieldSet::Form::kLacks) {
      core.push_back({half, Asks::kLack, 0, 0});
      continue;
    }
    const FieldValue lowest = field.values[0].first;
    if (field.form == FieldSet::Form::kMasked) {
      if (!uses_[half].ranges) {
        appendMasked(field.number, field.values[0], &core);
        continue;
      }
      set.is_sample = true;
      const std::uint64_t mask = field.values[0].last[0];
      for (const std::uint64_t start : space_.startsOf(half)) {
        const auto value = leastUnder(lowest[0], mask, width, start);
        if (value) core.push_back({half, Asks::kRange, *value, *value});
      }
      continue;
    }
    std::vector<ValuePair> masks;
    if (field.values.size() == 1) appendPrefixes(field.values[0], width, &masks);
    if (masks.size() == 1) {
      appendMasked(field.number, masks[0], &core);
    } else if (width <= 64 && !uses_[half].holes) {
      for (const ValuePair& range : field.values) {
        core.push_back({half, Asks::kRange, range.first[0], range.last[0]});
      }
    } else {
      appendMasked(field.number, {}, &core);
      masks.clear();
      appendGaps(field.values, width, &masks);
      for (const ValuePair& mask : masks) {
        std::vector<Constraint> gap;
        appendMasked(field.number, mask, &gap);
        set.outside.push_back(space_.add(std::move(gap)));
      }
    }
  }
  for (std::uint8_t field = 0; field < named.size(); ++field) {
    if (uses_[halfOf(field, 0)].lacks && !named[field]) appendMasked(field, {}, &core);
  }
  set.core = space_.add(std::move(core));
  return set;
}

bool RuleSpace::isShared(const OpenMatch& match, const std::vector<std::uint32_t>& takers) const {
  return std::any_of(takers.begin(), takers.end(), [&](std::uint32_t taker) {
    const Rule& its = rules_[taker];
    return std::any_of(open_.begin() + its.open_begin, open_.begin() + its.open_end,
                       [&](const OpenMatch& other) { return other.number == match.number; });
  });
}

bool RuleSpace::isSettledBeside(std::uint32_t rule,
                                const std::vector<std::uint32_t>& takers) const {
  const Rule& its = rules_[rule];
  return std::all_of(open_.begin() + its.open_begin, open_.begin() + its.open_end,
                     [&](const OpenMatch& match) { return isShared(match, takers); });
}

SetId RuleSpace::mustBeside(std::uint32_t rule, const std::vector<std::uint32_t>& takers) {
  const Rule& its = rules_[rule];
  if (its.open_begin == its.open_end) return its.must;
  std::vector<std::uint32_t> held;  // halves of fields that are constrained
  bool nothing = false;
  for (std::uint32_t i = its.open_begin; i < its.open_end; ++i) {
    if (isShared(open_[i], takers)) {
      held.push_back(halfOf(open_[i].field, 0));
      held.push_back(halfOf(open_[i].field, 1));
    } else {
      nothing = nothing || open_[i].nothing;
    }
  }
  if (nothing) return kNothing;
  return held.empty() ? its.must : space_.addWithout(its.asked, held);
}

}  // namespace FiltersInspect
