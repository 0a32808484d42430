#include <filter_inspect/filter_policy.h>

#include <algorithm>
#include <map>
#include <utility>

#include <filter_inspect/filter_text.h>

#include "analysis/entry_findings.h"
#include "analysis/limited_cuts.h"
#include "analysis/packet_shapes.h"
#include "analysis/points.h"
#include "analysis/rules.h"
#include "analysis/treatment.h"
#include "packet_set.h"

namespace FiltersInspect {
namespace {

using namespace FiltersCommon;

constexpr std::uint64_t kUnlimited = ~std::uint64_t{0};
// The number of rules that one step of the search for rules with shared open matches may examine.
constexpr std::uint64_t kRulesAStep = 500;

using Positions = std::vector<std::uint32_t>;
using Sets = std::vector<SetId>;

// Looks for packets of one set that break a promise. The destination of a packet is the entry that
// takes it, or "none" if no entry does. Some destinations are good, and all others are bad. An
// entry is a possible destination of a packet if two things hold: the entry may take the packet,
// and no entry of a lower rank must take it too.
class Breaches {
 public:
  // `good` holds for each rule, by position, whether it is a good destination. `none` is true if
  // "none" is a good destination.
  Breaches(Rules* all, Meetings* meetings, const AnalysisOptions& options, const Progress* progress,
           const SetAmongRules& set, const std::vector<bool>& good, bool none)
      : rules_(all->of(0)),
        space_(all->space()),
        meetings_(*meetings),
        progress_(progress),
        max_steps_(options.max_steps),
        core_(set.core),
        good_(good),
        none_(none) {
    for (const SetId gap : set.outside) outside_.push_back({gap, 0, false, 0});
  }

  enum class Answer : std::uint8_t { kNo, kYes, kUnknown };

  // Returns whether a bad destination is possible for some packet of the set. If the answer is
  // kYes, `*packet` gets such a packet: one that can be real, if it is easy to find.
  Answer mayBreak(std::optional<Point>* packet) {
    if (!begin()) return Answer::kUnknown;
    Answer answer = none_ ? Answer::kNo : mayBeNone(packet);
    for (std::uint32_t p : met_) {
      if (is_real_) break;
      if (good_[p]) continue;
      const Answer its = mayGoTo(p, packet);
      if (its != Answer::kNo && answer != Answer::kYes) answer = its;
    }
    return answer;
  }
  // True if a quick test shows that every packet keeps the promise: some good entry must take it,
  // and no bad entry of the same or a lower rank may take it.
  bool surelyKeeps() {
    if (!begin()) return false;
    const auto isGood = [this](std::uint32_t p) { return good_[p]; };
    const bool ordered = !std::all_of(met_.begin(), met_.end(), isGood);
    if (none_ && !ordered) return true;
    std::vector<Candidate> list = outside_;
    for (std::uint32_t p : met_) {
      const Rule& rule = rules_[p];
      if (!good_[p]) {
        list.push_back({rule.may, 1 + 2 * rule.ranks_begin, true, p});
      } else if (rule.must != kNothing) {
        list.push_back({rule.must, ordered ? 2 + 2 * rule.ranks_begin : 0, false, p});
      }
    }
    GoOn watcher(none_);
    return cuts_->runThrough({core_}, &list, &watcher) == Cut::Outcome::kNothingLeft;
  }
  // Returns whether there is a packet for which every possible destination is bad.
  Answer mustBreak(std::optional<Point>* packet) {
    if (!begin()) return Answer::kUnknown;
    is_known_ = true;
    is_brief_ = false;
    looks_left_ = std::min(max_steps_, kUnlimited / kRulesAStep) * kRulesAStep;
    settled_.assign(rules_.size(), false);
    kept_.assign(rules_.size(), false);
    if (!findFailure({core_}, packet)) return is_known_ ? Answer::kNo : Answer::kUnknown;
    is_brief_ = true;
    for (const SetId shape : space_.shapes()) {
      settled_.assign(rules_.size(), false);
      kept_.assign(rules_.size(), false);
      if (findFailure({core_, shape}, packet)) break;
    }
    return Answer::kYes;
  }
 private:
  // Finds the rules that may take packets of the set. Returns false if that takes too long.
  bool begin() {
    space_.forget();
    cuts_.emplace(space_.space(), max_steps_, rules_.size(),
                  progress_);  // each question has its steps
    const bool known = meetings_.meeting(core_, 0, rules_.size(), &met_);
    is_met_.assign(rules_.size(), false);
    for (std::uint32_t p : met_) is_met_[p] = true;
    return known;
  }

  // --- Possible failures ---

  // Returns whether the rule at `i` is a possible destination.
  Answer mayGoTo(std::uint32_t i, std::optional<Point>* packet) {
    const Rule& rule = rules_[i];
    space_.forget();
    Positions before;
    if (!meetings_.meeting(rule.may, 0, rule.ranks_begin, &before)) return Answer::kUnknown;
    std::vector<Candidate> list = outside_;
    for (std::uint32_t p : before) {
      const SetId sure = is_met_[p] ? mustBeside(p, i) : kNothing;
      if (sure != kNothing) list.push_back({sure, 0, false, p});
    }
    return look({core_, rule.may}, list, packet);
  }
  Answer mayBeNone(std::optional<Point>* packet) {
    std::vector<Candidate> list = outside_;
    for (std::uint32_t p : met_) {
      if (rules_[p].must != kNothing) list.push_back({rules_[p].must, 0, false, p});
    }
    return look({core_}, list, packet);
  }

  // --- Certain failures ---

  // A packet certainly breaks the promise if no good destination is possible. A good entry is not a
  // possible destination of a packet in two cases: the good entry cannot take the packet, or an
  // entry of a lower rank must take the packet too. There are two kinds of such an entry of a lower
  // rank. An entry of the first kind must take the packet in any case, and a cut by ranks finds it.
  // An entry of the second kind must take the packet because it shares an open match with the good
  // entry. The good entry is then settled: the search continues among the packets that both entries
  // take, and ignores the good entry.
  bool findFailure(const Sets& sets, std::optional<Point>* packet) {
    if (looks_left_ <= met_.size()) {
      is_known_ = false;
      return false;
    }
    looks_left_ -= met_.size() + 1;
    GoodTakers takers(none_);
    std::vector<Candidate> list = byRank(sets);
    // If "none" is a good destination, only a rule that must take packets can break the promise.
    const auto isBad = [](const Candidate& one) { return one.stops; };
    if (none_ && std::none_of(list.begin(), list.end(), isBad)) return false;
    const Cut::Outcome outcome = is_brief_ ? cuts_->runBriefly(sets, &list, &takers)
                                           : cuts_->runThrough(sets, &list, &takers);
    if (outcome == Cut::Outcome::kLeft || outcome == Cut::Outcome::kStopped) {
      *packet = cuts_->cut().point();
      return true;
    }
    is_known_ = is_known_ && outcome == Cut::Outcome::kNothingLeft;
    Positions tried;
    for (std::uint32_t i : takers.take()) {
      if (kept_[i]) continue;
      if (settle(i, sets, packet)) return true;
      // All failures that can be found while this entry is settled have now been found.
      kept_[i] = true;
      tried.push_back(i);
    }
    for (std::uint32_t i : tried) kept_[i] = false;
    return false;
  }

  // Looks for failures among the packets that a rule takes before the rule at `i`, where the two
  // rules share an open match.
  bool settle(std::uint32_t i, const Sets& sets, std::optional<Point>* packet) {
    const Rule& rule = rules_[i];
    if (rule.must == rule.may) return false;
    Positions before;
    if (!meetings_.meeting(rule.may, 0, rule.ranks_begin, &before)) {
      is_known_ = false;
      return false;
    }
    settled_[i] = true;
    bool found = false;
    for (std::uint32_t p : before) {
      if (found || !is_met_[p] || rules_[p].must == rules_[p].may) continue;
      const SetId sure = mustBeside(p, i);
      const Space& space = space_.space();
      if (sure == kNothing || sure == rules_[p].must || !space.meet(sure, rule.may)) continue;
      Sets fewer = sets;
      fewer.insert(fewer.end(), {rule.may, sure});
      found = findFailure(fewer, packet);
    }
    settled_[i] = false;
    return found;
  }

  // The candidates of all ranks. In each rank, the good entries that may take packets of all sets
  // come first, and then the bad entries that must take some.
  std::vector<Candidate> byRank(const Sets& sets) const {
    const auto meetsAll = [&](SetId one) {
      return std::all_of(sets.begin(), sets.end(),
                         [&](SetId set) { return space_.space().meet(one, set); });
    };
    std::vector<Candidate> list = outside_;
    for (std::uint32_t p : met_) {
      const Rule& rule = rules_[p];
      if (settled_[p]) continue;
      const SetId takes = good_[p] ? rule.may : rule.must;
      if (takes == kNothing || !meetsAll(takes)) continue;
      list.push_back({takes, (good_[p] ? 1 : 2) + 2 * rule.ranks_begin, !good_[p], p});
    }
    return list;
  }

  // --- Cuts ---

  // If "none" is a good destination, a part that no entry takes does not end the cut.
  struct GoOn : Cut::Watcher {
    explicit GoOn(bool is_good) : none(is_good) {}
    bool left(const Cut&) override { return none; }
    bool none;
  };
  struct GoodTakers : GoOn {
    using GoOn::GoOn;
    void took(const Candidate& candidate, const Cut&) override {
      if (candidate.level != 0) tags.push_back(candidate.tag);
    }
    Positions take() {
      std::sort(tags.begin(), tags.end());
      tags.erase(std::unique(tags.begin(), tags.end()), tags.end());
      return std::move(tags);
    }
    Positions tags;
  };

  // Returns whether the candidates leave a part of the sets. If they do, looks for a packet in that
  // part that can be real.
  Answer look(Sets sets, const std::vector<Candidate>& list, std::optional<Point>* packet) {
    std::vector<Candidate> all = list;
    const Cut::Outcome outcome = cuts_->runThrough(sets, &all, nullptr);
    if (outcome == Cut::Outcome::kNothingLeft) return Answer::kNo;
    if (outcome == Cut::Outcome::kUndecided) return Answer::kUnknown;
    if (!*packet) *packet = cuts_->cut().point();
    sets.push_back(kEverything);
    for (const SetId shape : space_.shapes()) {
      sets.back() = shape;
      all = list;
      is_real_ = cuts_->runBriefly(sets, &all, nullptr) == Cut::Outcome::kLeft;
      if (!is_real_) continue;
      *packet = cuts_->cut().point();
      break;
    }
    return Answer::kYes;
  }

  SetId mustBeside(std::uint32_t p, std::uint32_t taker) {
    const Rule& rule = rules_[p];
    if (rule.must == rule.may) return rule.must;
    return space_.mustBeside(rule.number, {rules_[taker].number});
  }

  const std::vector<Rule>& rules_;
  RuleSpace& space_;
  Meetings& meetings_;
  std::optional<Cuts> cuts_;
  const Progress* const progress_;
  const std::uint64_t max_steps_;
  const SetId core_;  // the set: all packets of this, but none of `outside_`
  std::vector<Candidate> outside_;
  const std::vector<bool>& good_;
  const bool none_;
  Positions met_;
  std::vector<bool> is_met_;
  bool is_real_ = false;  // the packet that mayBreak() has found can be real
  // These are about mustBreak().
  bool is_known_ = true;
  bool is_brief_ = false;  // looks for a better packet, with few steps
  std::uint64_t looks_left_ = 0;
  std::vector<bool> settled_;
  std::vector<bool> kept_;  // rules that are not settled here
};

// --- Verdicts ------------------------------------------------------------------------------------

constexpr char kUnanswered[] = " takes too many steps to say";

// An entry that takes a packet, or nothing if no entry takes it.
using Taker = std::optional<filtersEntryId_t>;

class PolicyCheck {
 public:
  PolicyCheck(const FiltersGroup& group, const PolicyGroup& policy, const AnalysisOptions& options)
      : group_(group),
        policy_(policy),
        options_(options),
        progress_(options),
        all_({&group}, policy.order, setsOf(policy)),
        meetings_(all_.meetingsOf(0, looksFor(options.max_steps))),
        tracer_(group, policy.order),
        points_(all_.space().space()) {}

  Report run() {
    Report report;
    const std::size_t count = policy_.promises.size();
    for (std::size_t i = 0; i < count; ++i) {
      progress_.tell(i, count);
      report.findings.push_back(judge(policy_.promises[i], all_.space().set(i)));
    }
    return report;
  }
 private:
  using Answer = Breaches::Answer;

  Finding judge(const Promise& promise, const SetAmongRules& set) {
    std::vector<bool> shown = all_.space().fieldsOfRules();
    for (const FieldSet& field : PacketSetFields::of(promise.packets)) shown[field.number] = true;
    if (const auto packet = tryPackets(promise, set, shown)) {
      return broken(promise, *packet, Answer::kYes);
    }
    const std::vector<bool> good = keepers(promise);
    Breaches breaches(&all_, &meetings_, options_, &progress_, set, good, !promise.always);
    if (breaches.surelyKeeps()) return holds(promise);
    std::optional<Point> packet;
    const Answer must = breaches.mustBreak(&packet);
    const Answer may = must == Answer::kYes ? must : breaches.mayBreak(&packet);
    if (may == Answer::kYes) {
      return broken(promise, packetOf(all_.space().space(), *packet, &shown), must);
    }
    if (may == Answer::kNo) return holds(promise);
    return findingOf(Code::kPolicyOpen, promise, std::string("whether it holds") + kUnanswered);
  }
  // Tries a few real packets of the set. Most failing promises are broken by one of these packets,
  // and with many rules this is much faster than a cut.
  std::optional<Packet> tryPackets(const Promise& promise, const SetAmongRules& set,
                                   const std::vector<bool>& shown) {
    constexpr std::size_t kFewRules = 24;  // rules of which a cut makes short work
    constexpr unsigned kTries = 3;         // packets to try for each shape
    if (all_.of(0).size() <= kFewRules) return std::nullopt;
    const Space& space = all_.space().space();
    for (const SetId shape : all_.space().shapes()) {
      const std::vector<SetId> sets = {set.core, shape};
      const unsigned tries = points_.haveCommon(sets) ? kTries : 0;
      for (unsigned k = 0; k < tries; ++k) {
        const Point point = points_.pointOf(sets, k);
        const auto hasIt = [&](SetId gap) { return space.isIn(gap, point); };
        if (std::any_of(set.outside.begin(), set.outside.end(), hasIt)) continue;
        Packet packet = packetOf(space, point, &shown);
        if (surelyBreaks(promise, tracer_.decide(packet))) return packet;
      }
    }
    return std::nullopt;
  }
  // True if each entry that may be the first to take the packet breaks the promise.
  bool surelyBreaks(const Promise& promise, const Decision& decision) const {
    const bool may_be_none = decision.outcome == Hit::kMiss || decision.may_be_none;
    const auto breaks = [&](filtersEntryId_t id) { return !isKeptBy(promise, entryOf(id)); };
    return (!may_be_none || promise.always) && (!decision.entry || breaks(*decision.entry)) &&
           std::all_of(decision.candidates.begin(), decision.candidates.end(), breaks);
  }

  Finding holds(const Promise& promise) const {
    return findingOf(Code::kPolicyHolds, promise, "no packet breaks the promise");
  }

  static std::vector<std::vector<FieldSet>> setsOf(const PolicyGroup& policy) {
    std::vector<std::vector<FieldSet>> sets;
    for (const Promise& promise : policy.promises) {
      sets.push_back(PacketSetFields::of(promise.packets));
    }
    return sets;
  }

  bool isKeptBy(const Promise& promise, const FiltersEntry& entry) const {
    if (promise.always) return promise.taken || promise.actions.hasAll(entry);
    return !promise.taken && !promise.actions.hasAny(entry);
  }
  const FiltersEntry& entryOf(filtersEntryId_t id) const { return group_.getEntriesRef().at(id); }

  // For each rule, returns whether the promise is kept when the rule takes a packet.
  std::vector<bool> keepers(const Promise& promise) const {
    enum : std::uint8_t { kUnseen, kBreaks, kKeeps };
    std::vector<std::uint8_t> known(all_.of(0).size(), kUnseen);  // indexed by treatment
    std::vector<bool> keepers;
    for (const Rule& rule : all_.of(0)) {
      std::uint8_t& its = known[rule.treatment];
      if (its == kUnseen) its = isKeptBy(promise, entryOf(rule.id)) ? kKeeps : kBreaks;
      keepers.push_back(its == kKeeps);
    }
    return keepers;
  }

  Finding findingOf(Code code, const Promise& promise, std::string message) const {
    Finding finding;
    finding.code = code;
    finding.severity = severityOf(code);
    finding.group = group_.getId();
    finding.path = toText(TextPosition{promise.line, promise.column});
    finding.word = promise.text;
    finding.message = std::move(message);
    return finding;
  }

  // The verdict about a promise that this packet may break. If `must` is kYes, the packet certainly
  // breaks the promise.
  Finding broken(const Promise& promise, const Packet& packet, Answer must) const {
    const Trace traced = tracer_.trace(packet);
    std::vector<Taker> good, bad;
    const auto add = [&](Taker one) {
      const bool keeps = one ? isKeptBy(promise, entryOf(*one)) : !promise.always;
      (keeps ? good : bad).push_back(one);
    };
    if (traced.entry) add(traced.entry);
    for (const filtersEntryId_t id : traced.candidates) add(id);
    if (traced.outcome == Hit::kMiss || traced.may_be_none) add(std::nullopt);
    if (must == Answer::kYes) good.clear();  // a trace may name too many

    const bool fails = good.empty();
    const std::string text = packet.toText();
    Finding finding =
        findingOf(fails ? Code::kPolicyFails : Code::kPolicyOpen, promise, doing(bad[0], text));
    const std::vector<Taker>& others = fails ? bad : good;
    const std::size_t begin = fails ? 1 : 0;
    if (begin < others.size()) {
      finding.message += ", unless " + doing(others[begin], "it");
      if (begin + 1 < others.size()) finding.message += ", or another entry takes it";
      finding.message += fails ? "; each breaks the promise" : ": " + whyOpen(traced);
    }
    if (!fails && must == Answer::kUnknown)
      finding.message += std::string("; whether a packet surely breaks it") + kUnanswered;
    finding.witness = text;
    if (bad[0]) {
      finding.subject = Subject::kEntry;
      finding.entry = bad[0];
      finding.before = treatmentText(entryOf(*bad[0]));
    }
    for (std::size_t i = begin; i < others.size(); ++i) {
      if (others[i]) finding.others.push_back(*others[i]);
    }
    if (!finding.others.empty()) finding.after = treatmentText(entryOf(finding.others[0]));
    return finding;
  }

  // "entry 50 permits it", "entry 60 takes it (set_pcp=5)", "no entry takes it"
  std::string doing(Taker where, const std::string& what) const {
    if (!where) return "no entry takes " + what;
    std::string verb = " takes ", rest;
    for (const std::string& action : columnsOf(entryOf(*where)).actions) {
      const bool permits = action == nameOf(FILTERS_ACTION_PERMIT);
      if (rest.empty() && (permits || action == nameOf(FILTERS_ACTION_DENY))) {
        verb = permits ? " permits " : " denies ";
      } else {
        rest += (rest.empty() ? " (" : ", ") + action;
      }
    }
    if (!rest.empty()) rest += ')';
    return "entry " + std::to_string(*where) + verb + what + rest;
  }

  // Says why it is not certain where the packet goes: it depends on readings, or on ties.
  std::string whyOpen(const Trace& traced) const {
    constexpr std::size_t kMostNamed = 2;
    std::size_t readings = 0;
    std::string why;
    const auto add = [&why](const std::string& one) { why += (why.empty() ? "" : "; ") + one; };
    std::map<std::uint64_t, std::vector<std::uint32_t>> ranks;
    for (const filtersEntryId_t id : traced.candidates) {
      const auto isIt = [id](const Traced& one) { return one.entry == id; };
      const auto its = std::find_if(traced.entries.begin(), traced.entries.end(), isIt);
      if (!its->reason.empty() && ++readings <= kMostNamed) {
        add("entry " + std::to_string(id) + ": " + its->reason);
      }
      ranks[rankOf(policy_.order, id, entryOf(id).getPriority())].push_back(id);
    }
    if (readings > kMostNamed) add(std::to_string(readings - kMostNamed) + " more readings");
    for (const auto& [rank, tied] : ranks) {
      if (tied.size() > 1) add("nothing says which of " + entriesText(tied) + " comes first");
    }
    return why;
  }

  const FiltersGroup& group_;
  const PolicyGroup& policy_;
  const AnalysisOptions& options_;
  Progress progress_;
  Rules all_;
  Meetings meetings_;
  Tracer tracer_;
  Points points_;
};

}  // namespace

Report checkPolicy(const FiltersGroup& group, const Policy& policy,
                   const AnalysisOptions& options) {
  const PolicyGroup* its = policy.find(group.getId());
  return its == nullptr ? Report() : PolicyCheck(group, *its, options).run();
}

}  // namespace FiltersInspect
