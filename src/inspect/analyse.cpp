#include <filter_inspect/filter_analysis.h>

#include <algorithm>
#include <utility>

#include "rules.h"

namespace FiltersInspect {
namespace {

using namespace FiltersCommon;

// So many other entries are named by a finding about what holds an entry.
constexpr std::size_t kMostHolders = 16;

// Keeps what took something away, and a packet that something behind level 0 took.
struct Takers : Cut::Watcher {
  explicit Takers(bool wantsPoint) : wants_point(wantsPoint) {}
  void took(const Candidate& candidate, const Cut& cut) override {
    tags.push_back(candidate.tag);
    if (!wants_point || candidate.level == 0) return;
    point = cut.point();
    wants_point = false;
  }
  bool wants_point;
  std::vector<std::uint32_t> tags;
  Point point;
};

class Analysis {
 public:
  Analysis(const FiltersGroup& group, const AnalysisOptions& options)
      : options_(options),
        ordered_(options.order != Order::kUnspecified),
        all_({&group}, options.order),
        rules_(all_.of(0)),
        mays_(all_.hullsOf(0, &Rule::may, looksFor(options.max_steps))),
        musts_(all_.hullsOf(0, &Rule::must, looksFor(options.max_steps))),
        reach_(all_.space(), options.max_steps),
        spare_(all_.space(), options.max_steps),
        redundancy_(all_.space(), options.max_steps),
        findings_(group.getId(), options.max_findings) {
    for (const auto& [id, entry] : group.getEntriesRef()) findings_.addOddities(entry);
  }

  Report run() {
    const auto count = static_cast<std::uint32_t>(rules_.size());
    std::vector<std::uint32_t> reached;
    for (std::uint32_t i = 0; i < count; ++i) {
      tell(options_, i, 3 * rules_.size());
      if (mayBeReached(i)) reached.push_back(i);
    }
    for (std::uint32_t i : reached) {
      tell(options_, count + i, 3 * rules_.size());
      if (options_.redundant) findRedundant(i);
    }
    for (std::uint32_t i = 0; i < count; ++i) {
      tell(options_, 2 * count + i, 3 * rules_.size());
      const bool told = findPairs(i) && (ordered_ || options_.overlaps || findHolders(i));
      if (!told) reportUndecided(rules_[i], "which others take its packets too");
    }
    return findings_.take();
  }
 private:
  // --- What one rule gets of its packets ---

  // False when it takes too long to find them.
  bool findSurelyBefore(const Rule& rule, std::vector<Candidate>* before) {
    if (!musts_.meeting(rule.may, 0, rule.ranks_begin, &met_)) return false;
    for (std::uint32_t p : met_) before->push_back({rules_[p].must, 0, false, p});
    return true;
  }

  // Reports when not, and when it cannot be said.
  bool mayBeReached(std::uint32_t i) {
    const Rule& rule = rules_[i];
    Takers takers(false);
    std::vector<Candidate> before;
    const Cut::Outcome outcome = findSurelyBefore(rule, &before)
                                     ? reach_.run(rule.may, rule.may, &before, &takers)
                                     : Cut::Outcome::kUndecided;
    if (outcome == Cut::Outcome::kNothingLeft) {
      if (findings_.room(Code::kEntryUnreachable))
        reportUnreachable(rule, withoutSpare(rule, std::move(takers.tags)));
    } else if (outcome == Cut::Outcome::kUndecided) {
      reportUndecided(rule, "whether it ever takes effect");
    }
    return outcome == Cut::Outcome::kLeft;
  }

  // Those of the takers without which something would be left: each is dropped if the others take
  // what it shares with the rule.
  std::vector<std::uint32_t> withoutSpare(const Rule& rule, std::vector<std::uint32_t> takers) {
    std::sort(takers.begin(), takers.end());
    takers.erase(std::unique(takers.begin(), takers.end()), takers.end());
    if (takers.size() == 1) return takers;
    std::vector<SetId> sets;
    for (std::uint32_t p : takers) sets.push_back(rules_[p].must);
    Hulls hulls(all_.space(), sets, looksFor(options_.max_steps));
    std::vector<bool> dropped(takers.size());
    std::vector<std::uint32_t> met, kept;
    for (std::size_t k = takers.size(); k-- > 0;) {
      hulls.meeting(sets[k], 0, sets.size(), &met);
      std::vector<Candidate> others;
      for (std::uint32_t other : met) {
        if (other != k && !dropped[other]) others.push_back({sets[other], 0, false, 0});
      }
      dropped[k] = spare_.run(rule.may, sets[k], &others) == Cut::Outcome::kNothingLeft;
    }
    for (std::size_t k = 0; k < takers.size(); ++k) {
      if (!dropped[k]) kept.push_back(takers[k]);
    }
    return kept;
  }

  void reportUnreachable(const Rule& rule, const std::vector<std::uint32_t>& blockers) {
    Finding& finding = findings_.add(Code::kEntryUnreachable, rule.id);
    std::vector<std::uint32_t> differing;
    const Rule* shown = &rules_[blockers[0]];
    for (std::uint32_t p : blockers) {
      finding.others.push_back(rules_[p].id);
      if (rules_[p].treatment == rule.treatment) continue;
      if (differing.empty()) shown = &rules_[p];
      differing.push_back(rules_[p].id);
    }
    const bool one = blockers.size() == 1;
    finding.message = "never takes effect: " + entriesText(finding.others) +
                      (one ? " takes" : " together take") + " all its packets first; " +
                      (differing.empty() ? "the treatment is the same"
                       : differing.size() == blockers.size()
                           ? "the treatment differs"
                           : "the treatment differs from " + entriesText(differing) + "'s");
    finding.witness = witness(rule, *shown);
  }

  // Who is removed must leave every packet it gets to rules that treat it alike, before any other.
  void findRedundant(std::uint32_t i) {
    const Rule& rule = rules_[i];
    std::vector<Candidate> list;
    if (!findSurelyBefore(rule, &list) ||
        !mays_.meeting(rule.may, rule.ranks_begin, rules_.size(), &met_)) {
      return reportUndecided(rule, "whether it is redundant");
    }
    bool alike = false;
    for (std::uint32_t p : met_) {
      const Rule& other = rules_[p];
      const bool differs = other.treatment != rule.treatment;
      if (p == i || (!differs && other.must == kNothing)) continue;
      alike = alike || !differs;
      list.push_back({differs ? other.may : other.must, 1 + other.ranks_begin, differs, p});
    }
    if (!alike || meetsAnother(rule, list)) return;
    Takers takers(true);
    const Cut::Outcome outcome = redundancy_.run(rule.may, rule.may, &list, &takers);
    if (outcome == Cut::Outcome::kUndecided)
      return reportUndecided(rule, "whether it is redundant");
    if (outcome != Cut::Outcome::kNothingLeft || !findings_.room(Code::kEntryRedundant)) return;
    Finding& finding = findings_.add(Code::kEntryRedundant, rule.id);
    for (std::uint32_t p : takers.tags) {
      if (p >= rule.ranks_begin) finding.others.push_back(rules_[p].id);
    }
    std::sort(finding.others.begin(), finding.others.end());
    finding.others.erase(std::unique(finding.others.begin(), finding.others.end()),
                         finding.others.end());
    finding.witness = packetOf(all_.space(), takers.point).toText();
    finding.message = "without it nothing changes: " + entriesText(finding.others) +
                      (finding.others.size() == 1 ? " takes its packets and treats"
                                                  : " take its packets and treat") +
                      " them alike";
  }

  // Whether it is easily seen that a packet goes to one of the next that treat it differently.
  bool meetsAnother(const Rule& rule, const std::vector<Candidate>& list) {
    constexpr int kTried = 4;
    int tried = 0;
    for (const Candidate& next : list) {
      if (!next.stops) continue;
      std::vector<Candidate> before;
      for (const Candidate& one : list) {
        if (!one.stops && one.level < next.level) before.push_back(one);
      }
      if (redundancy_.runShortly(rule.may, next.set, &before) == Cut::Outcome::kLeft) return true;
      if (++tried == kTried) return false;
    }
    return false;
  }

  void reportUndecided(const Rule& rule, const char* what) {
    if (!findings_.room(Code::kNotDecided)) return;
    findings_.add(Code::kNotDecided, rule.id).message =
        std::string(what) + " takes too many steps to say";
  }

  // --- Two rules ---

  // A packet of both, under every reading where there is one.
  std::string witness(const Rule& a, const Rule& b) const {
    const Space& space = all_.space();
    for (const auto& [x, y] : {std::pair(a.must, b.must), std::pair(a.may, b.must),
                               std::pair(a.must, b.may), std::pair(a.may, b.may)}) {
      if (space.meet(x, y)) return packetOf(space, space.common(x, y)).toText();
    }
    return {};
  }

  bool surelyHolds(const Rule& outer, const Rule& inner) const {
    return all_.space().holds(outer.must, inner.may);
  }

  void reportPair(Code code, const Rule& a, const Rule& b, const char* message) {
    if (!findings_.room(code)) return;
    Finding& finding = findings_.add(code, a.id);
    finding.others = {b.id};
    finding.witness = witness(a, b);
    finding.message = entriesText({b.id}) + message;
  }

  // False when that takes too long.
  bool findPairs(std::uint32_t i) {
    const Rule& rule = rules_[i];
    const std::size_t end = options_.overlaps ? rules_.size() : rule.ranks_end;
    if (!mays_.meeting(rule.may, i + 1, end, &met_)) return false;
    for (std::uint32_t p : met_) {
      const Rule& other = rules_[p];
      const bool differs = other.treatment != rule.treatment;
      const bool same = !ordered_ && surelyHolds(rule, other) && surelyHolds(other, rule);
      if (same && differs) {
        reportPair(Code::kEntriesTie, rule, other,
                   " takes the same packets and treats them differently: in any order at most one "
                   "of the two takes effect");
      } else if (same) {
        reportPair(Code::kEntriesOverlap, rule, other,
                   " takes the same packets and treats them alike");
      } else if (differs && ordered_ && p < rule.ranks_end) {
        reportPair(
            Code::kEntriesTie, rule, other,
            " takes packets of it too and treats them differently: nothing says which of the "
            "two comes first");
      } else if (differs && options_.overlaps) {
        reportPair(Code::kEntriesOverlap, rule, other,
                   " takes packets of it too and treats them differently");
      }
    }
    return true;
  }

  // Which rules take all that this one takes, and treat it differently. One that takes every packet
  // is not worth a word.
  bool findHolders(std::uint32_t i) {
    const Rule& rule = rules_[i];
    if (!mays_.meeting(rule.may, 0, rules_.size(), &met_)) return false;
    const Rule* shown = nullptr;
    std::vector<std::uint32_t> holders;
    for (std::uint32_t p : met_) {
      const Rule& other = rules_[p];
      if (p == i || other.treatment == rule.treatment || other.must == kNothing ||
          all_.space().begin(other.must) == all_.space().end(other.must) ||
          !surelyHolds(other, rule) || surelyHolds(rule, other)) {
        continue;
      }
      shown = shown == nullptr ? &other : shown;
      holders.push_back(other.id);
    }
    if (shown == nullptr || !findings_.room(Code::kEntriesOverlap)) return true;
    Finding& finding = findings_.add(Code::kEntriesOverlap, rule.id);
    finding.message = entriesText(holders) + (holders.size() == 1 ? " takes" : " each take") +
                      " all its packets too, and treat" + (holders.size() == 1 ? "s" : "") +
                      " them differently";
    finding.witness = witness(rule, *shown);
    if (holders.size() > kMostHolders) holders.resize(kMostHolders);
    finding.others = std::move(holders);
    return true;
  }

  const AnalysisOptions& options_;
  const bool ordered_;
  const Rules all_;
  const std::vector<Rule>& rules_;
  Hulls mays_, musts_;
  Cuts reach_, spare_, redundancy_;
  EntryFindings findings_;
  std::vector<std::uint32_t> met_;
};

}  // namespace

std::string_view nameOf(Order order) {
  switch (order) {
    case Order::kUnspecified:
      return "unspecified";
    case Order::kHighestPriority:
      return "highest-priority";
    case Order::kLowestPriority:
      return "lowest-priority";
    case Order::kAscendingId:
      return "ascending-id";
  }
  return {};
}

std::optional<Order> orderFromName(std::string_view name) {
  for (Order order : {Order::kUnspecified, Order::kHighestPriority, Order::kLowestPriority,
                      Order::kAscendingId}) {
    if (nameOf(order) == name) return order;
  }
  return std::nullopt;
}

const std::vector<std::string_view>& assumptions() {
  static const std::vector<std::string_view> assumptions = {
      "A1: the matches of a rule all have to hold; a rule without matches takes every packet",
      "A2: under a mask means (field & mask) == (value & mask)",
      "A3: a match on a field that a packet lacks does not hold, not even under a mask of 0",
      "A4: fields do not depend on each other; a packet that shows something may never occur",
      "A5: the first entry that takes a packet ends the search; all that depends on an order rests "
      "on this",
  };
  return assumptions;
}

Report analyse(const FiltersGroup& group, const AnalysisOptions& options) {
  return Analysis(group, options).run();
}

Report unusualValues(const FiltersGroup& group, std::size_t max_findings) {
  EntryFindings findings(group.getId(), max_findings);
  for (const auto& [id, entry] : group.getEntriesRef()) findings.addOddities(entry);
  return findings.take();
}

}  // namespace FiltersInspect
