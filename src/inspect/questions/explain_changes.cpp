#include <filter_inspect/filter_diff.h>
#include <filter_inspect/filter_questions.h>

#include <algorithm>
#include <limits>
#include <map>
#include <set>
#include <tuple>
#include <utility>

#include "analysis/compare_treatment.h"
#include "analysis/entry_findings.h"
#include "packet_set.h"

namespace FiltersInspect {
namespace {

using namespace FiltersCommon;

using Id = std::optional<filtersEntryId_t>;

const FiltersEntry* find(const FiltersGroup& group, Id id) {
  if (!id) return nullptr;
  const auto found = group.getEntriesRef().find(*id);
  return found == group.getEntriesRef().end() ? nullptr : &found->second;
}

// Says what happens to packets of the entry `before` when `after` takes them: "are now dropped". A
// null entry means that no entry takes the packets.
std::string consequence(const FiltersEntry* before, const FiltersEntry* after) {
  ActionDeny deny;
  ActionPermit permit;
  const auto has = [](const FiltersEntry* entry, auto& action) {
    return entry != nullptr && entry->getAction(action) == FILTERS_OK;
  };
  if (has(after, deny) && !has(before, deny)) return "are now dropped";
  if (has(after, permit) && !has(before, permit)) return "are now permitted";
  return "are now treated differently";
}

class Changes {
 public:
  Changes(const FiltersGroup& a, const FiltersGroup& b, const AnalysisOptions& options,
          const PacketSet* packets)
      : a_(a),
        b_(b),
        unchanged_(packets == nullptr ? "no packet" : "none of these packets"),
        after_(b, options.order),
        findings_(a.getId(), options.max_findings) {
    for (Finding& part : diff(a, b).findings) {
      if (part.entry) parts_[*part.entry].push_back(std::move(part));
    }
  }

  Report explain(Report&& compared) {
    bool isDecided = true;
    for (const Finding& pair : compared.findings) {
      if (pair.code == Code::kTreatmentDiffers) {
        add(pair);
      } else {
        isDecided = false;
      }
    }
    for (const Effect& effect : effects_) report(effect);
    for (const auto& [id, parts] : parts_) {
      if (!isDecided || seen_.count(id) != 0 || changeOf(id).empty()) continue;
      Finding* finding = findings_.add(Code::kNoDifference, id);
      if (finding == nullptr) continue;
      finding->message = changeOf(id) + ": " + unchanged_ + " is treated differently";
    }
    reportOpen(&compared.findings);
    return findings_.take();
  }
 private:
  enum class Role { kTookBefore, kTakesAfter, kBoth };
  // Packets to which a changed rule makes the same difference.
  struct Effect {
    filtersEntryId_t cause;
    Role role;
    std::vector<std::uint32_t>
        others;           // the rules that take the packets before or after the change
    bool none = false;    // some of them go to no rule then
    const Finding* pair;  // the first pair of rules
  };

  // A pair is the rule that takes some packets before the change, and the rule that takes them
  // afterwards. Finds the changed rule that causes the difference. If both rules of the pair have
  // changed, the cause is the first rule. But if the first rule would still take the packet, the
  // cause is the second rule.
  void add(const Finding& pair) {
    const Id before = pair.entry, after = pair.others.empty() ? Id() : Id(pair.others[0]);
    for (const Id& id : {before, after}) {
      if (id) seen_.insert(*id);
    }
    Role role = before == after ? Role::kBoth : Role::kTookBefore;
    if (!before || parts_.count(*before) == 0) {
      role = Role::kTakesAfter;
    } else if (role != Role::kBoth && after && parts_.count(*after) != 0 && stillTakes(pair)) {
      role = Role::kTakesAfter;
    }
    const Id cause = role == Role::kTakesAfter ? after : before;
    const Id other = role == Role::kTakesAfter ? before : after;
    const auto key = std::tuple(*cause, role, pair.before, pair.after);
    const auto [known, isNew] = by_key_.emplace(key, effects_.size());
    if (isNew) effects_.push_back({*cause, role, {}, false, &pair});
    Effect& effect = effects_[known->second];
    if (role == Role::kBoth) return;
    if (other) {
      effect.others.push_back(*other);
    } else {
      effect.none = true;
    }
  }

  bool stillTakes(const Finding& pair) const {
    const auto packet = Packet::parse(pair.witness, nullptr);
    if (!packet) return false;
    const Trace traced = after_.trace(*packet);
    return std::any_of(traced.entries.begin(), traced.entries.end(), [&](const Traced& one) {
      return one.entry == *pair.entry && one.hit != Hit::kMiss;
    });
  }

  // Describes the change of a rule: "new", "gone", "permit became deny, priority=5 became
  // priority=7". The text is empty if only the counters have changed.
  std::string changeOf(filtersEntryId_t id) const {
    if (find(a_, id) == nullptr) return "new";
    if (find(b_, id) == nullptr) return "gone";
    std::string priority, matches, before, after, policer;
    const auto add = [](const std::string& part, const char* between, std::string* text) {
      if (!part.empty()) *text += (text->empty() ? "" : between) + part;
    };
    for (const Finding& part : parts_.at(id)) {
      switch (part.subject) {
        case Subject::kEntry:
          priority = part.before + " became " + part.after;
          break;
        case Subject::kMatch:
          matches = "other matches";
          break;
        case Subject::kAction:
          add(part.before, " ", &before);
          add(part.after, " ", &after);
          break;
        case Subject::kPolicer:
        case Subject::kParent:
          policer = "another policer";
          break;
        case Subject::kGroup:
        case Subject::kCounter:
          break;
      }
    }
    std::string actions = after.empty() ? before : before + " became " + after;
    if (before.empty() != after.empty())
      actions = before.empty() ? "also " + after : "no " + before;
    std::string text;
    for (const std::string* part : {&priority, &matches, &actions, &policer}) {
      add(*part, ", ", &text);
    }
    return text;
  }

  void report(const Effect& effect) {
    Finding* finding = findings_.add(Code::kTreatmentDiffers, effect.cause);
    if (finding == nullptr) return;
    const Finding& pair = *effect.pair;
    finding->others = effect.others;
    finding->witness = pair.witness;
    finding->before = pair.before;
    finding->after = pair.after;
    const Id after = pair.others.empty() ? Id() : Id(pair.others[0]);
    const std::string then = consequence(find(a_, pair.entry), find(b_, after));
    const std::string those = effect.others.empty() ? "" : entriesText(effect.others);
    std::string& text = finding->message;
    text = changeOf(effect.cause) + ": ";
    if (effect.role == Role::kTookBefore && effect.none) {
      text += "no entry takes packets like this one any more";
      return;
    }
    if (effect.role == Role::kTookBefore) text += "its packets go to " + those + "; ";
    if (effect.role == Role::kTakesAfter) {
      text += "it takes packets " + (effect.none ? "that no entry took" : "of " + those) + "; ";
    }
    text += "packets like this one " + then;
  }

  // Reports questions that are not decided. Rules that have not changed share a finding.
  void reportOpen(std::vector<Finding>* compared) {
    std::set<std::uint32_t> ids;
    for (const Finding& open : *compared) {
      if (open.code != Code::kNotDecided || parts_.count(*open.entry) != 0) continue;
      ids.insert(*open.entry);
    }
    std::vector<std::uint32_t> unchanged(ids.begin(), ids.end());
    for (Finding& open : *compared) {
      if (open.code != Code::kNotDecided) continue;
      if (unchanged.size() > 1 && ids.count(*open.entry) != 0) continue;
      Finding* finding = findings_.add(open.code, open.entry);
      if (finding != nullptr) *finding = std::move(open);
    }
    if (unchanged.size() < 2) return;
    Finding* finding = findings_.add(Code::kNotDecided, std::nullopt);
    if (finding == nullptr) return;
    finding->message = "whether packets of " + entriesText(unchanged) +
                       ", which have not changed, are treated differently is not decided";
    finding->others = std::move(unchanged);
  }

  const FiltersGroup &a_, &b_;
  const std::string unchanged_;  // the packets of a rule that treats them as before
  const Tracer after_;
  std::map<filtersEntryId_t, std::vector<Finding>> parts_;  // what has changed in each rule
  std::map<std::tuple<filtersEntryId_t, Role, std::string, std::string>, std::size_t> by_key_;
  std::vector<Effect> effects_;
  std::set<filtersEntryId_t> seen_;  // the rules of all pairs
  EntryFindings findings_;
};

}  // namespace

Report explainChanges(const FiltersGroup& a, const FiltersGroup& b, const AnalysisOptions& options,
                      const PacketSet* packets) {
  AnalysisOptions all = options;
  all.max_findings = std::numeric_limits<std::size_t>::max();
  Changes changes(a, b, options, packets);
  if (packets == nullptr) return changes.explain(compareTreatment(a, b, all));
  const Among among{PacketSetFields::of(*packets), false};
  return changes.explain(compareTreatment(a, b, all, &among));
}

std::optional<bool> changesOthers(const FiltersGroup& a, const FiltersGroup& b,
                                  const PacketSet& packets, const AnalysisOptions& options) {
  const Among among{PacketSetFields::of(packets), true};
  AnalysisOptions first = options;
  first.max_findings = 1;  // the report keeps the most severe finding
  const Report compared = compareTreatment(a, b, first, &among);
  if (compared.empty()) return false;
  return compared.worst() == severityOf(Code::kTreatmentDiffers) ? std::optional(true)
                                                                 : std::nullopt;
}

}  // namespace FiltersInspect
