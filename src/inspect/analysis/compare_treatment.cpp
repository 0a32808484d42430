#include <filter_inspect/filter_analysis.h>

#include <algorithm>
#include <set>
#include <unordered_map>
#include <utility>

#include "compare_treatment.h"
#include "entry_findings.h"
#include "limited_cuts.h"
#include "rules.h"
#include "treatment.h"
#include "witness.h"

namespace FiltersInspect {
namespace {

using namespace FiltersCommon;

constexpr std::uint32_t kNoRule = ~std::uint32_t{0};
constexpr char kTooLong[] = "takes too many steps to say";

// Compares a rule of one group with the treatment of its packets by the other group. A twin is a
// rule of the other group with the same matches. A rule and its twin take the same packets under
// every reading. An heir is a twin that treats the packets in the same way.
class Comparison {
 public:
  Comparison(const FiltersGroup& a, const FiltersGroup& b, const AnalysisOptions& options,
             const Among* among)
      : groups_{&a, &b},
        progress_(options),
        all_({&a, &b}, options.order, setsOf(among)),
        cuts_(all_.space().space(), options.max_steps, all_.of(0).size() + all_.of(1).size(),
              &progress_),
        findings_(a.getId(), options.max_findings) {
    for (std::size_t side = 0; side < 2; ++side) {
      mays_.push_back(all_.meetingsOf(side, looksFor(options.max_steps)));
      const auto& rules = all_.of(side);
      for (std::uint32_t i = 0; i < rules.size(); ++i)
        by_matches_[side][rules[i].matches].push_back(i);
    }
    divide(among);
  }

  Report run() {
    const std::size_t first = all_.of(0).size(), all = first + all_.of(1).size();
    for (std::size_t k = 0; k < all; ++k) {
      progress_.tell(k, all);
      if (k < first) {
        compare(0, static_cast<std::uint32_t>(k));
      } else {
        compare(1, static_cast<std::uint32_t>(k - first));
      }
    }
    Report report = findings_.take();
    if (is_sample_) {
      for (Finding& finding : report.findings) open(&finding);
    }
    return report;
  }
 private:
  // The packets that are compared: those that are in all sets of `in` and in no set of `out`.
  struct Part {
    std::vector<SetId> in, out;
  };

  static std::vector<std::vector<FieldSet>> setsOf(const Among* among) {
    if (among == nullptr) return {};
    return {among->packets};
  }
  void divide(const Among* among) {
    if (among == nullptr) {
      parts_.push_back({});
      return;
    }
    const SetAmongRules& set = all_.space().set(0);
    if (!among->others) {
      parts_.push_back({{set.core}, set.outside});
      return;
    }
    is_sample_ = set.is_sample;
    parts_.push_back({{}, {set.core}});
    for (const SetId gap : set.outside) parts_.push_back({{set.core, gap}, {}});
  }

  // Calls `run` for each part of the compared packets, with the sets and the candidates of a cut.
  // Returns kNothingLeft if every cut returns it.
  template <class Run>
  Cut::Outcome forEachPart(SetId within, const std::vector<Candidate>& candidates, Run run) {
    Cut::Outcome worst = Cut::Outcome::kNothingLeft;
    for (const Part& part : parts_) {
      std::vector<SetId> sets = part.in;
      sets.push_back(within);
      std::vector<Candidate> list = candidates;
      for (const SetId set : part.out) list.push_back({set, 0, false, kNoRule});
      const Cut::Outcome outcome = run(sets, &list);
      if (worst != Cut::Outcome::kUndecided && outcome != Cut::Outcome::kNothingLeft) {
        worst = outcome;
      }
    }
    return worst;
  }

  void compare(std::size_t side, std::uint32_t i) {
    side_ = side;
    rule_ = &all_.of(side)[i];
    const bool known_own = mays_[side].meeting(rule_->may, 0, rule_->ranks_end, &own_);
    Meetings& others = mays_[1 - side];
    const bool known_others = others.meeting(rule_->may, 0, others.size(), &others_);
    if (!known_own || !known_others) return reportUndecided(kTooLong);
    own_.erase(std::find(own_.begin(), own_.end(), i));
    if (hasHeir()) return;
    Cut::Outcome outcome = mayDiffer();
    if (outcome == Cut::Outcome::kNothingLeft) return;
    const std::size_t found = pairs_.size();
    if (outcome != Cut::Outcome::kUndecided) outcome = findPairs(i);
    if (outcome == Cut::Outcome::kUndecided) return reportUndecided(kTooLong);
    const bool known = pairs_.size() > found || (side == 1 && involved_.count(i) != 0);
    // The rule may belong to a pair that was not found, because a rule of the first group took too
    // many steps.
    if (!known) {
      reportUndecided(gave_up_ ? kTooLong
                               : "depends on readings, or on which of two that tie comes first");
    }
  }

  const std::vector<Rule>& own() const { return all_.of(side_); }
  const std::vector<Rule>& others() const { return all_.of(1 - side_); }

  // True if the other group's rule at `p` has a twin in this group that comes before the compared
  // rule. If the rule at `p` only ties with `heir`, it is enough that the twin comes first in every
  // case in which the rule at `p` does.
  bool hasElder(std::uint32_t p, const Rule& heir) const {
    const Rule& other = others()[p];
    const auto twins = by_matches_[side_].find(other.matches);
    if (twins == by_matches_[side_].end()) return false;
    const bool tied = p >= heir.ranks_begin;
    for (std::uint32_t twin : twins->second) {
      if (twin < rule_->ranks_begin) return true;
      const Rule& own_twin = own()[twin];
      if (tied && twin < rule_->ranks_end && own_twin.id == other.id &&
          own_twin.priority == other.priority && own_twin.treatment == other.treatment &&
          heir.id == rule_->id && heir.priority == rule_->priority) {
        return true;
      }
    }
    return false;
  }

  // True if this rule has an heir, and if no rule with another treatment may take one of the
  // packets before the heir does.
  bool hasHeir() const {
    const auto twins = by_matches_[1 - side_].find(rule_->matches);
    if (twins == by_matches_[1 - side_].end()) return false;
    return std::any_of(twins->second.begin(), twins->second.end(), [&](std::uint32_t twin) {
      const Rule& heir = others()[twin];
      return heir.treatment == rule_->treatment &&
             std::all_of(others_.begin(), others_.end(), [&](std::uint32_t p) {
               return p >= heir.ranks_end || others()[p].treatment == heir.treatment ||
                      hasElder(p, heir);
             });
    });
  }

  // Looks for a packet that this rule is the first to take and that, under some reading, the other
  // group treats differently. If the cut leaves nothing, there is no such packet.
  Cut::Outcome mayDiffer() {
    std::vector<Candidate> list;
    for (std::uint32_t p : own_) {
      const Rule& earlier = own()[p];
      if (p >= rule_->ranks_begin) continue;
      const SetId set = earlier.matches == rule_->matches ? earlier.may : earlier.must;
      if (set != kNothing) list.push_back({set, 0, false, p});
    }
    for (std::uint32_t p : others_) {
      const Rule& other = others()[p];
      const bool differs = other.treatment != rule_->treatment;
      if (differs && hasTwinBefore(other)) continue;
      const bool surely = !differs && other.matches != rule_->matches;
      const SetId set = surely ? other.must : other.may;
      if (set != kNothing) list.push_back({set, 1 + other.ranks_begin, differs, p});
    }
    return forEachPart(rule_->may, list, [this](const auto& sets, auto* candidates) {
      return cuts_.run(sets, candidates);
    });
  }

  bool hasTwinBefore(const Rule& other) const {
    const auto twins = by_matches_[side_].find(other.matches);
    return twins != by_matches_[side_].end() && twins->second.front() < rule_->ranks_begin;
  }

  // --- Packets that are surely treated differently ---

  struct Watcher : Cut::Watcher {
    Watcher(Comparison& itsComparison, std::uint32_t itsRule)
        : comparison(itsComparison), rule(itsRule) {}
    void took(const Candidate& candidate, const Cut& cut) override {
      if (candidate.tag != kNoRule) comparison.found(rule, candidate.tag, cut);
    }
    bool left(const Cut& cut) override {
      comparison.found(rule, kNoRule, cut);
      return true;
    }
    Comparison& comparison;
    std::uint32_t rule;
  };

  // Finds packets that this rule is surely the first to take and that the other group surely treats
  // differently.
  Cut::Outcome findPairs(std::uint32_t i) {
    if (rule_->must == kNothing) return Cut::Outcome::kNothingLeft;
    std::vector<Candidate> list;
    for (std::uint32_t p : own_) {
      const Rule& other = own()[p];
      if (p >= rule_->ranks_begin && other.treatment == rule_->treatment) continue;
      list.push_back({other.may, 0, false, kNoRule});
    }
    for (std::uint32_t p : others_) {
      const Rule& other = others()[p];
      const bool differs = other.treatment != rule_->treatment;
      const SetId set = differs ? other.must : other.may;
      if (set == kNothing) continue;
      list.push_back(
          {set, 1 + 2 * other.ranks_begin + (differs ? 1 : 0), false, differs ? p : kNoRule});
    }
    Watcher watcher(*this, i);
    return forEachPart(rule_->must, list, [&](const auto& sets, auto* candidates) {
      return cuts_.runThrough(sets, candidates, &watcher);
    });
  }

  // Pairs of two rules are found while the rules of the first group are compared. The rules of the
  // second group add only the pairs that have no rule of the first group.
  void found(std::uint32_t i, std::uint32_t other, const Cut& cut) {
    if (side_ == 1 && other != kNoRule) return;
    const auto pair = side_ == 0 ? std::pair(i, other) : std::pair(other, i);
    if (!pairs_.insert(pair).second) return;
    involved_.insert(pair.second);
    const auto idOf = [&](std::size_t side, std::uint32_t p) {
      return p == kNoRule ? std::nullopt : std::optional(all_.of(side)[p].id);
    };
    const auto a = idOf(0, pair.first), b = idOf(1, pair.second);
    Finding* finding = findings_.add(Code::kTreatmentDiffers, a);
    if (finding == nullptr) return;
    if (b) finding->others.push_back(*b);
    Witness witness(all_.space());
    witness.consider(cut);
    finding->witness = witness.text();
    if (a) finding->before = treatmentText(groups_[0]->getEntriesRef().at(*a));
    if (b) finding->after = treatmentText(groups_[1]->getEntriesRef().at(*b));
    finding->message = !a   ? "takes a packet that none surely takes in the first group"
                       : !b ? "none surely takes its packet in the second group"
                            : "takes its packet in the second group and treats it differently";
    if (b) finding->message = entriesText({*b}) + ' ' + finding->message;
  }

  // Makes a finding undecided, because its packet may be one that the caller wants to leave out of
  // the comparison.
  static void open(Finding* finding) {
    if (finding->code != Code::kTreatmentDiffers) return;
    finding->code = Code::kNotDecided;
    finding->severity = severityOf(Code::kNotDecided);
    finding->message = "the mask of the packets has too many values to leave all of them out";
  }

  void reportUndecided(const char* why) {
    gave_up_ = gave_up_ || why == kTooLong;
    Finding* finding = findings_.add(Code::kNotDecided, rule_->id);
    if (finding == nullptr) return;
    finding->message = std::string("whether the ") + (side_ == 0 ? "second" : "first") +
                       " group treats its packets differently " + why;
  }

  const FiltersGroup* groups_[2];
  Progress progress_;
  Rules all_;
  std::vector<Part> parts_;
  // True if the caller wants to leave out the packets of a set, but the comparison leaves out only
  // some of them.
  bool is_sample_ = false;
  bool gave_up_ = false;  // some rule took too many steps
  std::vector<Meetings> mays_;
  std::unordered_map<std::uint32_t, std::vector<std::uint32_t>> by_matches_[2];
  Cuts cuts_;
  EntryFindings findings_;
  std::set<std::pair<std::uint32_t, std::uint32_t>> pairs_;  // found so far, by positions
  std::set<std::uint32_t> involved_;                         // positions in the second group

  // The following members are about the rule that is compared.
  std::size_t side_ = 0;
  const Rule* rule_ = nullptr;
  std::vector<std::uint32_t> own_;     // rules of its group that may take a packet before it
  std::vector<std::uint32_t> others_;  // rules of the other group that may take one of its packets
};

}  // namespace

Report compareTreatment(const FiltersGroup& a, const FiltersGroup& b,
                        const AnalysisOptions& options, const Among* among) {
  return Comparison(a, b, options, among).run();
}

Report compareTreatment(const FiltersGroup& a, const FiltersGroup& b,
                        const AnalysisOptions& options) {
  return compareTreatment(a, b, options, nullptr);
}

}  // namespace FiltersInspect
