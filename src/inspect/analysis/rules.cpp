#include "rules.h"

#include <algorithm>

#include "shared/arena.h"
#include "forms/group_builder.h"

namespace FiltersInspect {
namespace {

using namespace FiltersCommon;

constexpr std::uint64_t kRulesAtTheirLimit = 20;
constexpr std::uint64_t kHardlyAny = 100, kFew = 2000;
// So many ranges are looked at to find which rules meet, for each step that one rule may take.
constexpr std::uint64_t kLooksAStep = 20000;

template <class Messages>
std::string bytesOf(const Messages& messages) {
  std::string bytes;
  for (const auto& message : messages) {
    const std::string one = message.SerializePartialAsString();
    bytes += std::to_string(one.size()) + ':' + one;
  }
  return bytes;
}

// A number for each text, the same for the same.
std::uint32_t numberOf(std::string text, std::map<std::string, std::uint32_t>* numbers) {
  const auto next = static_cast<std::uint32_t>(numbers->size());
  return numbers->emplace(std::move(text), next).first->second;
}

// Whether a mask has no one behind a zero, in a field of so many bits.
bool isPrefix(std::uint64_t mask, unsigned width) {
  const std::uint64_t zeros = ~mask & ~std::uint64_t{0} >> (64 - width);
  return (zeros & (zeros + 1)) == 0;
}

// Ranges and masks with holes are not cut alike. Where one field is asked for both ways, which
// takes two groups of different types, such a mask is taken for open: it may take anything.
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

// Marks the fields that an entry asks ranges of.
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

std::uint64_t rankOf(Order order, filtersEntryId_t id, filtersEntryPriority_t priority) {
  const auto then = [](std::uint32_t first, std::uint32_t second) {
    return std::uint64_t{first} << 32 | second;
  };
  switch (order) {
    case Order::kUnspecified:
      break;
    case Order::kHighestPriority:
      return ~priority;
    case Order::kLowestPriority:
      return priority;
    case Order::kAscendingId:
      return id;
    case Order::kHighestPriorityAscendingId:
      return then(~priority, id);
    case Order::kHighestPriorityDescendingId:
      return then(~priority, ~id);
    case Order::kLowestPriorityAscendingId:
      return then(priority, id);
    case Order::kLowestPriorityDescendingId:
      return then(priority, ~id);
  }
  return 0;
}

std::string treatmentKey(const FiltersEntryPB& entry) {
  return bytesOf(entry.actions_()) + '/' + std::to_string(entry.policer_().size()) + ':' +
         entry.policer_() + (entry.has_policer_parent_() ? '/' + entry.policer_parent_() : "");
}

std::string treatmentText(const FiltersEntry& entry) {
  MessageArena arena;  // messages elsewhere may break when memory runs out
  auto& message = *arena.make<FiltersEntryPB>();
  entry.convertToFiltersEntryPB(&message);
  std::string text;
  const auto begin = [&text](const char* part) {
    text += (text.empty() ? "" : ", ") + std::string(part);
  };
  for (const ActionPB& action : message.actions_()) begin(textOf(action).c_str());
  if (message.policer_() != defaultPolicer()) {
    begin("policer");
    appendFacts(entry.getPolicer(), &text);
  }
  if (const auto parent = entry.getPolicerParent()) {
    begin("parent");
    appendFacts(*parent, &text);
  }
  return text.empty() ? "no action" : text;
}

Rules::Rules(std::initializer_list<const FiltersGroup*> groups, Order order) {
  if (groups.size() > 1) {
    ranged_.resize(spaceFields().size());
    for (const FiltersGroup* group : groups) {
      for (const auto& [id, entry] : group->getEntriesRef()) noteRanges(entry, &ranged_);
    }
  }
  for (const FiltersGroup* group : groups) read(*group, order);
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

Finding& EntryFindings::add(Code code, std::optional<filtersEntryId_t> entry) {
  Finding& finding = report_.add(code);
  finding.subject = entry ? Subject::kEntry : Subject::kGroup;
  finding.group = group_;
  finding.entry = entry;
  return finding;
}

std::uint64_t looksFor(std::uint64_t max_steps) {
  return std::min(max_steps, ~std::uint64_t{0} / kLooksAStep) * kLooksAStep;
}

Cuts::Cuts(const Space& space, std::uint64_t max_steps, std::size_t rules)
    : cut_(space, 0), of_one_(max_steps) {
  const std::uint64_t at_limit = std::max<std::uint64_t>(kRulesAtTheirLimit, rules / 1000);
  of_all_ = std::min(max_steps, ~std::uint64_t{0} / at_limit) * at_limit;
}

Cut::Outcome Cuts::runFor(std::uint64_t steps, const std::vector<SetId>& sets,
                          std::vector<Candidate>* candidates, bool quick, Cut::Watcher* watcher) {
  // What takes hardly any steps is done even when all have been used.
  steps = std::min(steps, std::max(of_all_, kHardlyAny));
  cut_.setSteps(steps);
  const Cut::Outcome outcome = cut_.run(sets, candidates, quick, watcher);
  of_all_ -= std::min(of_all_, steps - cut_.stepsLeft());
  return outcome;
}

Cut::Outcome Cuts::runBriefly(const std::vector<SetId>& sets, std::vector<Candidate>* candidates,
                              Cut::Watcher* watcher) {
  return runFor(std::min(of_one_, kFew), sets, candidates, false, watcher);
}

void tell(const AnalysisOptions& options, std::size_t done, std::size_t all) {
  if (options.progress) options.progress(done, all);
}

std::string entriesText(const std::vector<std::uint32_t>& ids, bool others) {
  constexpr std::size_t kMost = 5;
  std::vector<std::string> names;
  for (std::size_t i = 0; i < (ids.size() > kMost ? kMost - 1 : ids.size()); ++i) {
    names.push_back(std::to_string(ids[i]));
  }
  if (others) {
    names.emplace_back("others");
  } else if (ids.size() > kMost) {
    names.push_back(std::to_string(ids.size() - names.size()) + " more");
  }
  std::string text = ids.size() == 1 ? "entry " : "entries ";
  for (std::size_t i = 0; i < names.size(); ++i) {
    text += (i == 0 ? "" : i + 1 == names.size() ? " and " : ", ") + names[i];
  }
  return text;
}

}  // namespace FiltersInspect
