#include "rule_space.h"

#include <algorithm>

#include "packet_shapes.h"

namespace FiltersInspect {

void RuleSpace::add(const std::vector<Asked>& asked) {
  fields_.resize(packetFields().size());
  const auto begin = static_cast<std::uint32_t>(open_.size());
  std::vector<Constraint> may, must;
  bool nothing = false;
  for (const Asked& one : asked) {
    fields_[one.field] = true;
    may.insert(may.end(), one.may.begin(), one.may.end());
    const auto& surely = one.open != nullptr ? one.must : one.may;
    must.insert(must.end(), surely.begin(), surely.end());
    if (one.open == nullptr) continue;
    open_.push_back({one.match, one.field, surely.empty()});
    nothing = nothing || surely.empty();
  }
  const auto end = static_cast<std::uint32_t>(open_.size());
  const SetId mayId = space_.add(std::move(may));
  const SetId mustId = begin == end ? mayId : space_.add(std::move(must));
  rules_.push_back({nothing ? kNothing : mustId, mayId, mustId, begin, end});
}

void RuleSpace::seal(bool shapes) {
  if (shapes) {
    fields_.resize(packetFields().size());
    for (auto& shape : packetShapes(fields_)) {
      lacking_.push_back(fieldsLacking(shape));
      shapes_.push_back(space_.add(std::move(shape)));
    }
  }
  space_.seal();
  sealed_ = space_.count();
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
