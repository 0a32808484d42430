#include "rules.h"

#include <algorithm>

#include "../arena.h"

namespace FiltersInspect {
namespace {

using namespace FiltersCommon;

constexpr std::uint64_t kRulesAtTheirLimit = 20;
constexpr std::uint64_t kHardlyAny = 100;
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

std::string treatmentOf(const FiltersEntryPB& entry) {
  return bytesOf(entry.actions_()) + '/' + std::to_string(entry.policer_().size()) + ':' +
         entry.policer_() + (entry.has_policer_parent_() ? '/' + entry.policer_parent_() : "");
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
void openMasksBesideRanges(std::vector<std::vector<Asked>>* rules) {
  const std::vector<Space::Field> fields = spaceFields();
  std::vector<bool> ranged(fields.size());
  for (const auto& rule : *rules) {
    for (const Asked& asked : rule) {
      for (const Constraint& one : asked.may) {
        if (!one.masked) ranged[one.field] = true;
      }
    }
  }
  for (auto& rule : *rules) {
    for (Asked& asked : rule) {
      for (Constraint& one : asked.may) {
        if (!one.masked || !ranged[one.field] || isPrefix(one.last, fields[one.field].width)) {
          continue;
        }
        one.last = 0;
        asked.open = "it is compared with ranges";
        asked.must.clear();
      }
    }
  }
}

}  // namespace

std::uint32_t rankOf(Order order, filtersEntryId_t id, filtersEntryPriority_t priority) {
  switch (order) {
    case Order::kUnspecified:
      break;
    case Order::kHighestPriority:
      return ~priority;
    case Order::kLowestPriority:
      return priority;
    case Order::kAscendingId:
      return id;
  }
  return 0;
}

Rules::Rules(std::initializer_list<const FiltersGroup*> groups, Order order) {
  for (const FiltersGroup* group : groups) read(*group, order);
  openMasksBesideRanges(&asked_);
  addSets();
  space_.seal();
  matches_.clear();
  treatments_.clear();
}

void Rules::read(const FiltersGroup& group, Order order) {
  std::vector<std::pair<std::uint32_t, const FiltersEntry*>> entries;
  for (const auto& [id, entry] : group.getEntriesRef()) {
    entries.emplace_back(rankOf(order, entry.getId(), entry.getPriority()), &entry);
  }
  std::stable_sort(entries.begin(), entries.end(),
                   [](const auto& a, const auto& b) { return a.first < b.first; });
  std::vector<Rule>& rules = rules_.emplace_back();
  rules.reserve(entries.size());
  for (std::size_t i = 0; i < entries.size(); ++i) {
    const bool same = i > 0 && entries[i].first == entries[i - 1].first;
    MessageArena arena;  // messages elsewhere may break when memory runs out
    auto& message = *arena.make<FiltersEntryPB>();
    entries[i].second->convertToFiltersEntryPB(&message);
    std::vector<Asked>& asked = asked_.emplace_back();
    for (const MatchPB& match : message.matches_()) appendAsked(match, &asked);
    rules.push_back({message.id_(), message.priority_(), kNothing, kNothing,
                     numberOf(bytesOf(message.matches_()), &matches_),
                     numberOf(treatmentOf(message), &treatments_),
                     same ? rules.back().ranks_begin : static_cast<std::uint32_t>(i), 0});
  }
  for (std::size_t i = rules.size(); i-- > 0;) {
    const bool same = i + 1 < rules.size() && rules[i + 1].ranks_begin == rules[i].ranks_begin;
    rules[i].ranks_end = same ? rules[i + 1].ranks_end : static_cast<std::uint32_t>(i + 1);
  }
}

void Rules::addSets() {
  auto asked = asked_.begin();
  for (auto& rules : rules_) {
    for (Rule& rule : rules) {
      std::vector<Constraint> may, must;
      bool open = false, nothing = false;
      for (const Asked& one : *asked) {
        const auto& surely = one.open != nullptr ? one.must : one.may;
        may.insert(may.end(), one.may.begin(), one.may.end());
        must.insert(must.end(), surely.begin(), surely.end());
        open = open || one.open != nullptr;
        nothing = nothing || surely.empty();
      }
      rule.may = space_.add(std::move(may));
      rule.must = nothing ? kNothing : open ? space_.add(std::move(must)) : rule.may;
      *asked++ = {};
    }
  }
  asked_ = {};
}

Hulls Rules::hullsOf(std::size_t group, SetId Rule::*set, std::uint64_t max_looks) const {
  std::vector<SetId> sets;
  for (const Rule& rule : rules_[group]) sets.push_back(rule.*set);
  return {space_, std::move(sets), max_looks};
}

Packet packetOf(const Space& space, const Point& point) {
  Packet packet;
  auto& fields = PacketFields::of(packet);
  for (const auto& [half, value] : space.valuesOf(point)) {
    const auto field = static_cast<std::uint8_t>(half / 2);
    if (half % 2 == 0) {
      fields[field] = value ? std::optional(FieldValue{*value, 0}) : std::nullopt;
      continue;
    }
    auto& whole = fields.try_emplace(field, FieldValue{}).first->second;
    if (whole && value) (*whole)[1] = *value;
  }
  // Where no set asks anything, any packet: but one that tells something.
  if (fields.empty()) fields[0] = std::nullopt;
  return packet;
}

Finding& EntryFindings::add(Code code, std::optional<filtersEntryId_t> entry) {
  Finding& finding = report_.add(code);
  finding.subject = entry ? Subject::kEntry : Subject::kGroup;
  finding.group = group_;
  finding.entry = entry;
  return finding;
}

void EntryFindings::addOddities(const FiltersEntry& entry) {
  MessageArena arena;
  auto& message = *arena.make<FiltersEntryPB>();
  entry.convertToFiltersEntryPB(&message);
  for (const MatchPB& match : message.matches_()) {
    for (std::string& oddity : odditiesOf(match)) {
      if (!room(Code::kValueUnusual)) continue;
      Finding& finding = add(Code::kValueUnusual, entry.getId());
      finding.subject = Subject::kMatch;
      finding.offender = match.type_();
      finding.message = std::move(oddity);
    }
  }
}

std::uint64_t looksFor(std::uint64_t max_steps) {
  return std::min(max_steps, ~std::uint64_t{0} / kLooksAStep) * kLooksAStep;
}

Cuts::Cuts(const Space& space, std::uint64_t max_steps)
    : cut_(space, 0),
      of_one_(max_steps),
      of_all_(std::min(max_steps, ~std::uint64_t{0} / kRulesAtTheirLimit) * kRulesAtTheirLimit) {}

Cut::Outcome Cuts::runFor(std::uint64_t steps, SetId a, SetId b, std::vector<Candidate>* candidates,
                          bool quick, Cut::Watcher* watcher) {
  // What takes hardly any steps is done even when all have been used.
  steps = std::min(steps, std::max(of_all_, kHardlyAny));
  cut_.setSteps(steps);
  const Cut::Outcome outcome = cut_.run(a, b, candidates, quick, watcher);
  of_all_ -= std::min(of_all_, steps - cut_.stepsLeft());
  return outcome;
}

Cut::Outcome Cuts::runShortly(SetId a, SetId b, std::vector<Candidate>* candidates) {
  return runFor(std::min(of_one_, kHardlyAny), a, b, candidates, true, nullptr);
}

void tell(const AnalysisOptions& options, std::size_t done, std::size_t all) {
  if (options.progress) options.progress(done, all);
}

std::string entriesText(const std::vector<std::uint32_t>& ids) {
  constexpr std::size_t kMost = 5;
  if (ids.size() == 1) return "entry " + std::to_string(ids[0]);
  std::string text = "entries ";
  const std::size_t named = ids.size() > kMost ? kMost - 1 : ids.size() - 1;
  for (std::size_t i = 0; i < named; ++i) {
    text += std::to_string(ids[i]) + (i + 1 < named ? ", " : " and ");
  }
  return text + (ids.size() > kMost ? std::to_string(ids.size() - named) + " more"
                                    : std::to_string(ids.back()));
}

}  // namespace FiltersInspect
