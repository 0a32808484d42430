#include <filter_inspect/filter_analysis.h>

#include <algorithm>
#include <iterator>
#include <utility>

#include "entry_findings.h"
#include "limited_cuts.h"
#include "packet_shapes.h"
#include "points.h"
#include "rules.h"
#include "treatment.h"
#include "unusual.h"
#include "witness.h"

namespace FiltersInspect {
namespace {

using namespace FiltersCommon;

// A holder of an entry is another entry that takes all packets of that entry. The field `others` of
// a finding has at most this number of holders.
constexpr std::size_t kMostHolders = 16;
// If more entries than this have a holder, one finding reports all of them.
constexpr std::size_t kMostHeld = 8;
// If a rule shares packets with at most kFew earlier rules, it is compared with each of them. If
// there are more such rules, some packets are tried first.
constexpr std::size_t kFew = 24;
constexpr unsigned kTried = 6;
constexpr std::size_t kCheaper = 256;  // comparisons that cost as much as trying one more packet

using Positions = std::vector<std::uint32_t>;

void sortUnique(std::vector<std::uint32_t>* numbers) {
  std::sort(numbers->begin(), numbers->end());
  numbers->erase(std::unique(numbers->begin(), numbers->end()), numbers->end());
}

// Remembers which candidates took packets, and one packet that a candidate above level 0 took.
struct Takers : Cut::Watcher {
  explicit Takers(const RuleSpace& space) : witness(space) {}
  void took(const Candidate& candidate, const Cut& cut) override {
    tags.push_back(candidate.tag);
    if (candidate.level != 0 && !witness.isGood()) witness.consider(cut);
  }
  Positions tags;
  Witness witness;
};

class Analysis {
 public:
  Analysis(const FiltersGroup& group, const AnalysisOptions& options)
      : group_(group),
        options_(options),
        progress_(options),
        ordered_(options.order != Order::kUnspecified),
        all_({&group}, options.order),
        rules_(all_.of(0)),
        space_(all_.space()),
        met_by_(all_.meetingsOf(0, looksFor(options.max_steps))),
        reach_(space_.space(), options.max_steps, rules_.size(), &progress_),
        spare_(space_.space(), options.max_steps, rules_.size(), &progress_),
        redundancy_(space_.space(), options.max_steps, rules_.size(), &progress_),
        ties_(space_.space(), options.max_steps, rules_.size(), &progress_),
        findings_(group.getId(), options.max_findings),
        reached_(rules_.size()),
        redundant_(rules_.size()),
        points_(space_.space()) {
    for (const auto& [id, entry] : group.getEntriesRef()) addOddities(entry, &findings_);
  }

  Report run() {
    const auto count = static_cast<std::uint32_t>(rules_.size());
    const auto tellRule = [&](std::uint32_t part, std::uint32_t i) {
      progress_.tell(part * rules_.size() + i, 3 * rules_.size());
      space_.forget();
    };
    std::vector<bool> decided(count, true);
    for (std::uint32_t i = 0; i < count; ++i) {
      tellRule(0, i);
      const Cut::Outcome outcome = findReached(i);
      reached_[i] = outcome != Cut::Outcome::kNothingLeft;
      decided[i] = outcome != Cut::Outcome::kUndecided;
    }
    for (std::uint32_t i = 0; i < count; ++i) {
      tellRule(1, i);
      if (options_.redundant && reached_[i] && decided[i]) findRedundant(i);
    }
    for (std::uint32_t i = 0; i < count; ++i) {
      tellRule(2, i);
      const bool told = findPairs(i) && (ordered_ || options_.overlaps || findHolders(i));
      if (!told) reportUndecided(rules_[i], "which others take its packets too");
    }
    reportHeld();
    return findings_.take();
  }
 private:
  // --- Sets ---

  bool isClosed(const Rule& rule) const { return rule.must == rule.may; }
  bool differ(std::uint32_t a, std::uint32_t b) const {
    return rules_[a].treatment != rules_[b].treatment;
  }

  // The packets that the rule at `p` must take, among the packets that all rules at `takers` take.
  SetId mustBeside(std::uint32_t p, const Positions& takers) {
    if (isClosed(rules_[p])) return rules_[p].must;
    numbers_.clear();
    for (std::uint32_t taker : takers) numbers_.push_back(rules_[taker].number);
    return space_.mustBeside(rules_[p].number, numbers_);
  }
  bool isSettledBeside(std::uint32_t p, std::uint32_t taker) const {
    return isClosed(rules_[p]) || space_.isSettledBeside(rules_[p].number, {rules_[taker].number});
  }
  void addSurely(std::uint32_t p, const Positions& takers, std::uint32_t level,
                 std::vector<Candidate>* list) {
    const SetId set = mustBeside(p, takers);
    if (set == kNothing) return;
    const bool meet = set == rules_[p].may || space_.space().meet(set, rules_[takers[0]].may);
    if (meet) list->push_back({set, level, false, p});
  }
  bool surelyHolds(std::uint32_t outer, std::uint32_t inner) {
    return space_.space().holds(mustBeside(outer, {inner}), rules_[inner].may);
  }

  // --- Trying a few packets, which is enough for most rules ---

  // True if some rule before `end` must take this packet, which all rules at `takers` take.
  bool isTakenBefore(std::uint32_t end, const Positions& takers, const Point& point) {
    met_by_.mayHold(point, 0, end, &tried_);
    return std::any_of(tried_.begin(), tried_.end(), [&](std::uint32_t p) {
      const SetId set = mustBeside(p, takers);
      return set != kNothing && space_.space().isIn(set, point);
    });
  }

  bool mayBeTakenBefore(std::uint32_t end, const Point& point) {
    met_by_.mayHold(point, 0, end, &tried_);
    return std::any_of(tried_.begin(), tried_.end(),
                       [&](std::uint32_t p) { return space_.space().isIn(rules_[p].may, point); });
  }

  // --- Whether a rule takes effect ---

  // Returns kLeft if the rule takes effect. Reports the rule if it never takes effect, or if the
  // answer takes too many steps.
  Cut::Outcome findReached(std::uint32_t i) {
    const Rule& rule = rules_[i];
    Cut::Outcome outcome = Cut::Outcome::kUndecided;
    Takers takers(space_);
    const std::size_t met = met_by_.count(rule.may, 0, rule.ranks_begin);
    if (met > kFew) {
      if (const auto holder = findHolder(i)) {
        if (Finding* finding = addUnreachable(i)) tellUnreachable(i, {*holder}, finding);
        return Cut::Outcome::kNothingLeft;
      }
      for (unsigned k = 0; k < kTried + met / kCheaper; ++k) {
        const Point point = points_.pointOf({rule.may}, k);
        if (!isTakenBefore(rule.ranks_begin, {i}, point)) return Cut::Outcome::kLeft;
      }
    }
    if (met_by_.meeting(rule.may, 0, rule.ranks_begin, &met_)) {
      std::vector<Candidate> before;
      for (std::uint32_t p : met_) addSurely(p, {i}, 0, &before);
      outcome = reach_.run({rule.may}, &before, &takers);
    }
    if (outcome == Cut::Outcome::kUndecided) reportUndecided(rule, "whether it ever takes effect");
    if (outcome != Cut::Outcome::kNothingLeft) return outcome;
    if (Finding* finding = addUnreachable(i)) {
      tellUnreachable(i, withoutSpare(i, std::move(takers.tags)), finding);
    }
    return outcome;
  }

  Finding* addUnreachable(std::uint32_t i) {
    return findings_.add(Code::kEntryUnreachable, rules_[i].id);
  }

  // The first rule before the rule at `i` that takes all packets of the rule at `i`.
  std::optional<std::uint32_t> findHolder(std::uint32_t i) {
    met_by_.holding(rules_[i].may, 0, rules_[i].ranks_begin, &met_);
    for (std::uint32_t p : met_) {
      if (isSettledBeside(p, i)) return p;
    }
    return std::nullopt;
  }

  // Leaves out each taker whose packets the other takers take too. So every taker in the result is
  // needed.
  Positions withoutSpare(std::uint32_t i, Positions takers) {
    sortUnique(&takers);
    if (takers.size() == 1) return takers;
    std::vector<SetId> sets;
    for (std::uint32_t p : takers) sets.push_back(mustBeside(p, {i}));
    Meetings meetings(space_.space(), sets, looksFor(options_.max_steps));
    std::vector<bool> dropped(takers.size());
    Positions met, kept;
    for (std::size_t k = takers.size(); k-- > 0;) {
      meetings.meeting(sets[k], 0, sets.size(), &met);
      std::vector<Candidate> others;
      for (std::uint32_t other : met) {
        if (other != k && !dropped[other]) others.push_back({sets[other], 0, false, 0});
      }
      dropped[k] = spare_.run({rules_[i].may, sets[k]}, &others) == Cut::Outcome::kNothingLeft;
    }
    for (std::size_t k = 0; k < takers.size(); ++k) {
      if (!dropped[k]) kept.push_back(takers[k]);
    }
    return kept;
  }

  // Writes a finding about a rule that never takes effect. `blockers` are rules before it that
  // together take all its packets, and none of them can be left out. Other rules may take some of
  // these packets before a blocker does; those rules then decide how the packets are treated.
  void tellUnreachable(std::uint32_t i, const Positions& blockers, Finding* finding) {
    constexpr std::size_t kNamed = 4;
    // Rules after the last blocker are never the first to take a packet of the rule at `i`.
    // Blockers are tried before other rules, since the finding names the blockers anyway.
    const std::uint32_t end = rules_[blockers.back()].ranks_end;
    met_by_.meeting(rules_[i].may, 0, end, &met_);
    const Positions before = met_;
    Positions all = blockers, differing, alike;
    std::set_difference(before.begin(), before.end(), blockers.begin(), blockers.end(),
                        std::back_inserter(all));
    bool known = true, only = true;  // `only`: only blockers come first; `known`: this is certain
    std::size_t most = kNamed;
    for (std::size_t k = 0; k < all.size(); ++k) {
      const bool differs = differ(all[k], i), other = k >= blockers.size();
      if (k == blockers.size() && !differing.empty()) most = differing.size();
      Positions& its = differs ? differing : alike;
      if (other && !only && its.size() > (differs ? most : 0)) continue;
      const Cut::Outcome outcome = findFirst(i, all[k], before);
      known = known && outcome != Cut::Outcome::kUndecided;
      if (outcome != Cut::Outcome::kLeft) continue;
      its.push_back(all[k]);
      only = only && !other;
    }
    only = only && known;
    const bool one = blockers.size() == 1;

    finding->others = idsOf(blockers);
    finding->message = "never takes effect: " + entriesText(finding->others) +
                       (only ? "" : " before it") + (one ? "" : " together") +
                       (only  ? one ? " takes" : " take"
                        : one ? " matches"
                              : " match") +
                       " all its packets" + (only ? " first" : "");
    const Positions shown = differing.empty() ? alike : differing;
    if (!differing.empty() && (!alike.empty() || !known)) {
      const bool more = differing.size() > most;
      if (more) differing.resize(most);
      finding->message +=
          "; part of its packets are treated otherwise by " + entriesText(idsOf(differing), more);
    } else if (known) {
      finding->message +=
          differing.empty() ? "; the treatment is the same" : "; the treatment differs";
    }
    if (shown.empty()) return;
    Witness witness(space_);
    std::uint32_t taker = shown[0];
    for (std::size_t k = 0; k < shown.size() && !witness.isGood(); ++k) {
      const std::size_t before_it = witness.shape();
      showFirst(i, shown[k], before, &witness);
      if (witness.shape() < before_it) taker = shown[k];
    }
    addTreatments(i, taker, finding);
    finding->witness = witness.text();
  }

  // Looks for a packet of the rule at `i` that the rule at `p` is the first to take.
  void showFirst(std::uint32_t i, std::uint32_t p, const Positions& before, Witness* witness) {
    if (tryPackets(i, p, rules_[p].ranks_begin, witness)) return;
    Leftover left(space_);
    std::vector<Candidate> list = takenBefore(i, p, before);
    spare_.runBriefly({rules_[i].may, rules_[p].may}, &list, &left);
    witness->take(left.witness);
  }

  // Tries some packets of both rules; packets with the most fields come first. Among packets with
  // equally many fields, a packet is best if both rules surely take it and no rule before `end` may
  // take it. A packet is second best if no rule before `end` must take it. Returns true if no other
  // packet of both rules can have more fields than the packet that was found.
  bool tryPackets(std::uint32_t i, std::uint32_t p, std::uint32_t end, Witness* witness) {
    const Rule &a = rules_[i], &b = rules_[p];
    std::optional<std::size_t> least;  // of all packets of both rules, the fewest missing fields
    for (std::size_t begin = 0; begin < witness->shape();) {
      const std::size_t lacking = space_.lacking(begin);
      std::size_t last = begin;
      while (last < witness->shape() && space_.lacking(last) == lacking) ++last;
      for (const bool surely : {true, false}) {
        if (surely && (a.must == kNothing || b.must == kNothing)) continue;
        for (std::size_t shape = begin; shape < last; ++shape) {
          const std::vector<SetId> sets = {surely ? a.must : a.may, surely ? b.must : b.may,
                                           space_.shapes()[shape]};
          if (!points_.haveCommon(sets)) continue;
          if (!least) least = lacking;
          for (unsigned k = 0; k < kTried; ++k) {
            const Point point = points_.pointOf(sets, k);
            if (surely ? mayBeTakenBefore(end, point) : isTakenBefore(end, {i, p}, point)) continue;
            witness->take(point, shape);
            return lacking == *least;
          }
        }
      }
      begin = last;
    }
    return false;
  }

  // The packets that rules before the rule at `p` must take, among the packets that the rules at
  // `p` and `i` share.
  std::vector<Candidate> takenBefore(std::uint32_t i, std::uint32_t p, const Positions& before) {
    std::vector<Candidate> list;
    for (std::uint32_t q : before) {
      if (q < rules_[p].ranks_begin) addSurely(q, {p, i}, 0, &list);
    }
    return list;
  }

  // Returns kLeft if the rule at `p` is the first to take some packet of the rule at `i`.
  Cut::Outcome findFirst(std::uint32_t i, std::uint32_t p, const Positions& before) {
    for (unsigned k = 0; k < kTried; ++k) {
      const Point point = points_.pointOf({rules_[i].may, rules_[p].may}, k);
      if (!isTakenBefore(rules_[p].ranks_begin, {i, p}, point)) return Cut::Outcome::kLeft;
    }
    std::vector<Candidate> list = takenBefore(i, p, before);
    return spare_.run({rules_[i].may, rules_[p].may}, &list);
  }

  // --- Redundant rules ---

  // A rule is redundant if nothing changes without it. Then every packet that it is the first to
  // take goes to another rule with the same treatment.
  void findRedundant(std::uint32_t i) {
    const Rule& rule = rules_[i];
    if (isSurelyMissed(i)) return;
    Positions before, next;
    if (!met_by_.meeting(rule.may, 0, rule.ranks_begin, &before) ||
        !met_by_.meeting(rule.may, rule.ranks_begin, rules_.size(), &next)) {
      return reportUndecided(rule, "whether it is redundant");
    }
    next.erase(std::find(next.begin(), next.end(), i));
    if (std::all_of(next.begin(), next.end(), [&](auto p) { return differ(p, i); })) return;
    if (isSurelyMissedBy(i, next)) return;
    Takers takers(space_);
    const Cut::Outcome outcome = runByRank(i, before, next, &takers);
    if (outcome == Cut::Outcome::kUndecided)
      return reportUndecided(rule, "whether it is redundant");
    if (outcome != Cut::Outcome::kNothingLeft) return;
    redundant_[i] = true;
    Finding* finding = findings_.add(Code::kEntryRedundant, rule.id);
    if (finding == nullptr) return;
    const auto isBefore = [&](std::uint32_t p) { return p < rule.ranks_begin; };
    takers.tags.erase(std::remove_if(takers.tags.begin(), takers.tags.end(), isBefore),
                      takers.tags.end());
    finding->others = idsOf(takers.tags);
    Witness witness(space_);
    for (std::size_t k = 0; k < takers.tags.size() && !witness.isGood() && k < kFew; ++k) {
      tryPackets(i, takers.tags[k], rule.ranks_begin, &witness);
    }
    witness.take(takers.witness);
    finding->witness = witness.text();
    finding->message = "without it nothing changes: " + entriesText(finding->others) +
                       (finding->others.size() == 1 ? " takes its packets and treats"
                                                    : " take its packets and treat") +
                       " them alike";
    addTreatments(i, takers.tags[0], finding);
  }

  // Subtracts rules from the packets of the rule at `i`: first the rules before it, and then, rank
  // by rank, the rules that treat packets in the same way. A rule with another treatment stops the
  // cut. But a rule with several readings may stop it only under some reading, and under the same
  // reading an earlier rule may take the packet. So a rule that devices read in several ways is
  // examined alone.
  Cut::Outcome runByRank(std::uint32_t i, const Positions& before, const Positions& next,
                         Takers* takers) {
    Positions doubtful;
    std::vector<Candidate> list;
    for (std::uint32_t p : before) addSurely(p, {i}, 0, &list);
    for (std::uint32_t p : next) {
      const std::uint32_t level = 1 + rules_[p].ranks_begin;
      if (!differ(p, i)) {
        addSurely(p, {i}, level, &list);
      } else if (isSettledBeside(p, i)) {
        list.push_back({rules_[p].may, level, true, p});
      } else {
        doubtful.push_back(p);
      }
    }
    Cut::Outcome outcome = redundancy_.run({rules_[i].may}, &list, takers);
    for (std::uint32_t p : doubtful) {
      if (outcome != Cut::Outcome::kNothingLeft) break;
      list.clear();
      for (const Positions* all : {&before, &next}) {
        for (std::uint32_t q : *all) {
          if (q < rules_[p].ranks_begin) addSurely(q, {p, i}, 0, &list);
        }
      }
      outcome = redundancy_.run({rules_[i].may, rules_[p].may}, &list);
    }
    return outcome;
  }

  // Tries a few packets of the rule. Returns true if one of them would be treated differently
  // without the rule.
  bool isSurelyMissed(std::uint32_t i) {
    for (unsigned k = 0; k < kTried; ++k) {
      const Point point = points_.pointOf({rules_[i].may}, k);
      const bool taken = isTakenBefore(rules_[i].ranks_begin, {i}, point);
      if (!taken && isMissedFor(i, point)) return true;
    }
    return false;
  }

  // Tries a few packets that the rule shares with later rules of another treatment. Returns true if
  // one of them would be treated differently without the rule.
  bool isSurelyMissedBy(std::uint32_t i, const Positions& next) {
    unsigned tried = 0;
    for (std::uint32_t p : next) {
      if (!differ(p, i)) continue;
      for (unsigned k = 0; k < 4; ++k) {
        const Point point = points_.pointOf({rules_[i].may, rules_[p].may}, k);
        const bool taken = isTakenBefore(rules_[i].ranks_begin, {i}, point);
        if (!taken && isMissedFor(i, point)) return true;
      }
      if (++tried == 8) return false;
    }
    return false;
  }

  // True if this packet would be treated differently without the rule at `i`. The caller knows that
  // no earlier rule is certain to take the packet.
  bool isMissedFor(std::uint32_t i, const Point& point) {
    met_by_.mayHold(point, rules_[i].ranks_begin, rules_.size(), &tried_);
    const Rule* taker = nullptr;
    for (std::uint32_t p : tried_) {
      if (p == i || !space_.space().isIn(rules_[p].may, point)) continue;
      if (taker != nullptr && p >= taker->ranks_end) return false;
      if (!isSettledBeside(p, i)) return false;
      if (differ(p, i)) return true;
      taker = &rules_[p];
    }
    return taker == nullptr;
  }

  // --- Two rules ---

  // Looks for a packet of both rules that none of the candidates takes. The candidates are rules
  // before `end`. Prefers a packet for which this holds under every reading. Returns kLeft if there
  // is such a packet.
  Cut::Outcome findPacket(std::uint32_t i, std::uint32_t p, std::uint32_t end,
                          const std::vector<Candidate>& candidates, Witness* witness) {
    if (tryPackets(i, p, end, witness)) return Cut::Outcome::kLeft;
    std::vector<Candidate> list = candidates;
    Leftover left(space_);
    const Cut::Outcome outcome = ties_.runThrough({rules_[i].may, rules_[p].may}, &list, &left);
    witness->take(left.witness);
    return left.witness.found() ? Cut::Outcome::kLeft : outcome;
  }

  void tellPair(std::uint32_t i, std::uint32_t p, const std::string& message,
                const Witness& witness, Finding* finding) const {
    finding->others = {rules_[p].id};
    finding->witness = witness.text();
    finding->message = entriesText({rules_[p].id}) + message;
    addTreatments(i, p, finding);
  }

  // Returns false if the search for pairs takes too many steps.
  bool findPairs(std::uint32_t i) {
    const Rule& rule = rules_[i];
    const std::size_t end = options_.overlaps ? rules_.size() : rule.ranks_end;
    if (end <= i + 1) return true;
    Positions next;
    if (!met_by_.meeting(rule.may, i + 1, end, &next)) return false;
    if (next.empty()) return true;
    Positions before;
    const bool ties = ordered_ && reached_[i];
    if (ties && !met_by_.meeting(rule.may, 0, rule.ranks_begin, &before)) return false;
    bool known = true;
    for (std::uint32_t p : next) {
      if (!ordered_) {
        findPair(i, p);
      } else if (!differ(i, p)) {
        continue;
      } else if (p < rule.ranks_end && ties && reached_[p]) {
        known = findTie(i, p, before) && known;
      } else if (options_.overlaps) {
        findOverlap(i, p);
      }
    }
    return known;
  }

  // Looks for a packet that reaches two rules of the same rank. Returns false if the search takes
  // too many steps.
  bool findTie(std::uint32_t i, std::uint32_t p, const Positions& before) {
    std::vector<Candidate> list;
    for (std::uint32_t q : before) addSurely(q, {i, p}, 0, &list);
    Witness witness(space_);
    const Cut::Outcome outcome = findPacket(i, p, rules_[i].ranks_begin, list, &witness);
    if (outcome == Cut::Outcome::kUndecided) return false;
    if (outcome != Cut::Outcome::kLeft) {
      if (options_.overlaps) findOverlap(i, p);
    } else if (Finding* finding = findings_.add(Code::kEntriesTie, rules_[i].id)) {
      tellPair(i, p,
               " takes packets of it too and treats them differently: nothing says which of the "
               "two comes first",
               witness, finding);
    }
    return true;
  }

  // Without an order, it is not known which of two rules comes first. But if the two rules take
  // exactly the same packets, only one of them takes effect.
  void findPair(std::uint32_t i, std::uint32_t p) {
    const bool differing = differ(i, p);
    const bool same = surelyHolds(i, p) && surelyHolds(p, i);
    const Code code = !same       ? Code::kEntriesOverlap
                      : differing ? Code::kEntriesTie
                                  : Code::kEntryRedundant;
    if (same && !differing && (!options_.redundant || redundant_[i] || redundant_[p])) return;
    if (!same) {
      if (differing && options_.overlaps) findOverlap(i, p);
      return;
    }
    if (!differing) redundant_[p] = true;
    const auto [of, other] = differing ? std::pair(i, p) : std::pair(p, i);
    Finding* finding = findings_.add(code, rules_[of].id);
    if (finding == nullptr) return;
    Witness witness(space_);
    findPacket(i, p, 0, {}, &witness);
    if (differing) {
      tellPair(of, other,
               " takes the same packets and treats them differently: in any order at most one of "
               "the two takes effect",
               witness, finding);
    } else {
      tellPair(of, other,
               " takes the same packets and treats them alike: in any order at most one of the "
               "two takes effect",
               witness, finding);
    }
  }

  void findOverlap(std::uint32_t i, std::uint32_t p) {
    Finding* finding = findings_.add(Code::kEntriesOverlap, rules_[i].id);
    if (finding == nullptr) return;
    Witness witness(space_);
    findPacket(i, p, 0, {}, &witness);
    tellPair(i, p, " takes packets of it too and treats them differently", witness, finding);
  }

  // --- Rules whose packets other rules take too, without an order ---

  // Finds the rules that take all packets of the rule at `i` and treat them differently. A rule
  // that takes every packet is ignored, because it is not worth a finding. Returns false if the
  // search takes too many steps.
  bool findHolders(std::uint32_t i) {
    Positions met, holders;
    if (!met_by_.meeting(rules_[i].may, 0, rules_.size(), &met)) return false;
    const Space& space = space_.space();
    for (std::uint32_t p : met) {
      const SetId must = rules_[p].must;
      const bool all = must != kNothing && space.begin(must) == space.end(must);
      if (p == i || !differ(p, i) || all || !surelyHolds(p, i) || surelyHolds(i, p)) continue;
      holders.push_back(p);
    }
    if (!holders.empty()) held_.emplace_back(i, std::move(holders));
    return true;
  }

  // Removes rules for "all other packets" from the holders. Such a rule takes all packets of nearly
  // all other rules, and large groups often have one.
  void dropRests() {
    if (rules_.size() <= kMostHeld) return;
    std::vector<std::size_t> counts(rules_.size());
    for (const auto& [i, holders] : held_) {
      for (std::uint32_t p : holders) ++counts[p];
    }
    const auto isRest = [&](std::uint32_t p) { return 4 * counts[p] >= 3 * (rules_.size() - 1); };
    for (auto& [i, holders] : held_) {
      holders.erase(std::remove_if(holders.begin(), holders.end(), isRest), holders.end());
    }
    held_.erase(std::remove_if(held_.begin(), held_.end(),
                               [](const auto& one) { return one.second.empty(); }),
                held_.end());
  }

  void reportHeld() {
    dropRests();
    if (held_.size() > kMostHeld) return reportHeldTogether();
    for (const auto& [i, holders] : held_) {
      Finding* finding = findings_.add(Code::kEntriesOverlap, rules_[i].id);
      if (finding == nullptr) continue;
      space_.forget();
      Witness witness(space_);
      findPacket(i, holders[0], 0, {}, &witness);
      finding->others = idsOf(holders);
      finding->message = entriesText(finding->others) +
                         (holders.size() == 1 ? " takes" : " each take") +
                         " all its packets too, and treat" + (holders.size() == 1 ? "s" : "") +
                         " them differently";
      finding->witness = witness.text();
      const std::uint32_t first = holders[0];
      const bool alike = std::all_of(holders.begin(), holders.end(),
                                     [&](std::uint32_t p) { return !differ(p, first); });
      if (alike) addTreatments(i, holders[0], finding);
      if (finding->others.size() > kMostHolders) finding->others.resize(kMostHolders);
    }
  }

  void reportHeldTogether() {
    Finding* finding = findings_.add(Code::kEntriesOverlap, std::nullopt);
    if (finding == nullptr) return;
    finding->message = std::to_string(held_.size()) +
                       " entries take only packets that another entry takes too and treats "
                       "differently: an order tells which of them never take effect";
    for (const auto& [i, holders] : held_) {
      if (finding->others.size() < kMostHolders) finding->others.push_back(rules_[i].id);
    }
  }

  // --- Writing the findings ---

  std::vector<std::uint32_t> idsOf(const Positions& positions) const {
    std::vector<std::uint32_t> ids;
    for (std::uint32_t p : positions) ids.push_back(rules_[p].id);
    sortUnique(&ids);
    return ids;
  }

  void addTreatments(std::uint32_t i, std::uint32_t other, Finding* finding) const {
    const auto& entries = group_.getEntriesRef();
    finding->before = treatmentText(entries.at(rules_[i].id));
    finding->after = treatmentText(entries.at(rules_[other].id));
  }

  void reportUndecided(const Rule& rule, const char* what) {
    Finding* finding = findings_.add(Code::kNotDecided, rule.id);
    if (finding != nullptr) finding->message = std::string(what) + " takes too many steps to say";
  }

  const FiltersGroup& group_;
  const AnalysisOptions& options_;
  Progress progress_;
  const bool ordered_;
  Rules all_;
  const std::vector<Rule>& rules_;
  RuleSpace& space_;
  Meetings met_by_;
  Cuts reach_, spare_, redundancy_, ties_;
  EntryFindings findings_;
  std::vector<bool> reached_, redundant_;
  std::vector<std::pair<std::uint32_t, Positions>> held_;  // each with its holders
  Positions met_, tried_;
  std::vector<std::uint32_t> numbers_;  // of the rules that take a packet
  Points points_;
};

}  // namespace

Report analyse(const FiltersGroup& group, const AnalysisOptions& options) {
  return Analysis(group, options).run();
}

}  // namespace FiltersInspect
