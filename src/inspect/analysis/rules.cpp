#include "rules.h"

#include <algorithm>

#include "shared/arena.h"
#include "treatment.h"

namespace FiltersInspect {
namespace {

using namespace FiltersCommon;

// Equal texts get equal numbers.
std::uint32_t numberOf(std::string text, std::map<std::string, std::uint32_t>* numbers) {
  const auto next = static_cast<std::uint32_t>(numbers->size());
  return numbers->emplace(std::move(text), next).first->second;
}

// A mask with holes divides its field into dimensions, and such a field cannot have ranges. So
// within one group, a field has either ranges or masks with holes. If two groups of different types
// are compared, a field can have both. A mask with holes is then treated as a value with several
// readings, which may take any packet.
void openMasksBesideRanges(const std::vector<bool>& ranged, std::vector<Asked>* all) {
  static const std::vector<Space::Field> fields = spaceFields();
  for (Asked& asked : *all) {
    for (Constraint& one : asked.may) {
      if (one.asks != Asks::kMasked || !ranged[one.field] ||
          isPrefix(one.last, fields[one.field].width)) {
        continue;
      }
      one.last = 0;
      asked.open = "it is compared with ranges";
      asked.must.clear();
    }
  }
}

// Marks each field for which a match of the entry has a range.
void noteRanges(const FiltersEntry& entry, std::vector<bool>* ranged) {
  MessageArena arena;
  auto& message = *arena.make<FiltersEntryPB>();
  entry.convertToFiltersEntryPB(&message);
  std::vector<Asked> all;
  MatchNumbers ignored;
  for (const MatchPB& match : message.matches_()) appendAsked(match, &all, &ignored);
  for (const Asked& asked : all) {
    for (const Constraint& one : asked.may) {
      if (one.asks == Asks::kRange) (*ranged)[one.field] = true;
    }
  }
}

}  // namespace

Rules::Rules(std::initializer_list<const FiltersGroup*> groups, Order order,
             std::vector<std::vector<FieldSet>> sets) {
  if (groups.size() > 1) {
    ranged_.resize(spaceFields().size());
    for (const FiltersGroup* group : groups) {
      for (const auto& [id, entry] : group->getEntriesRef()) noteRanges(entry, &ranged_);
    }
  }
  for (const FiltersGroup* group : groups) read(*group, order);
  for (auto& set : sets) space_.addSet(std::move(set));
  space_.seal();
  std::uint32_t number = 0;
  for (auto& rules : rules_) {
    for (Rule& rule : rules) {
      rule.number = number++;
      rule.must = space_.must(rule.number);
      rule.may = space_.may(rule.number);
    }
  }
  numbers_ = {};
  matches_.clear();
  treatments_.clear();
}

void Rules::read(const FiltersGroup& group, Order order) {
  std::vector<std::pair<std::uint64_t, const FiltersEntry*>> entries;
  for (const auto& [id, entry] : group.getEntriesRef()) {
    entries.emplace_back(rankOf(order, entry.getId(), entry.getPriority()), &entry);
  }
  std::stable_sort(entries.begin(), entries.end(),
                   [](const auto& a, const auto& b) { return a.first < b.first; });
  std::vector<Rule>& rules = rules_.emplace_back();
  rules.reserve(entries.size());
  std::vector<Asked> asked;
  for (std::size_t i = 0; i < entries.size(); ++i) {
    const bool same = i > 0 && entries[i].first == entries[i - 1].first;
    MessageArena arena;
    auto& message = *arena.make<FiltersEntryPB>();
    entries[i].second->convertToFiltersEntryPB(&message);
    asked.clear();
    for (const MatchPB& match : message.matches_()) appendAsked(match, &asked, &numbers_);
    if (!ranged_.empty()) openMasksBesideRanges(ranged_, &asked);
    space_.add(asked);
    rules.push_back({message.id_(), message.priority_(), 0, kNothing, kNothing,
                     ranged_.empty() ? 0 : numberOf(bytesOf(message.matches_()), &matches_),
                     numberOf(treatmentKey(message), &treatments_),
                     same ? rules.back().ranks_begin : static_cast<std::uint32_t>(i), 0});
  }
  for (std::size_t i = rules.size(); i-- > 0;) {
    const bool same = i + 1 < rules.size() && rules[i + 1].ranks_begin == rules[i].ranks_begin;
    rules[i].ranks_end = same ? rules[i + 1].ranks_end : static_cast<std::uint32_t>(i + 1);
  }
}

Meetings Rules::meetingsOf(std::size_t group, std::uint64_t max_looks) const {
  std::vector<SetId> sets;
  for (const Rule& rule : rules_[group]) sets.push_back(rule.may);
  return {space_.space(), std::move(sets), max_looks};
}

}  // namespace FiltersInspect
