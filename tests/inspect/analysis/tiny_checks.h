#ifndef FILTER_COMMON_TESTS_INSPECT_TINY_CHECKS_H_
#define FILTER_COMMON_TESTS_INSPECT_TINY_CHECKS_H_

// Checks properties of tiny groups by trying every packet in every reading. Each check returns the
// fault as text, or an empty text.

#include "tiny.h"

namespace tiny {

using Rank = std::function<std::uint64_t(const PlainRule&)>;
using Takers = std::vector<const PlainRule*>;

// Calls `use` with the set of rules that take the packet, once for each combination of readings.
template <class Use>
void forEachReading(const std::vector<PlainRule>& rules, const Row& row, Use use) {
  Takes open = 0;
  for (const Takes one : row) open |= one == kNo ? 0 : one;
  Takes choice = 0;
  do {
    Takers takers;
    for (std::size_t i = 0; i < rules.size(); ++i) {
      if (row[i] != kNo && (row[i] & ~choice) == 0) takers.push_back(&rules[i]);
    }
    use(takers);
    choice = (choice - open) & open;  // the next subset
  } while (choice != 0);
}

// The rule of `takers` that comes first, or several rules if they tie. Ignores the rule `without`.
inline Takers firstOf(const Takers& takers, const Rank& rank, const PlainRule* without = nullptr) {
  Takers first;
  for (const PlainRule* rule : takers) {
    if (rule == without) continue;
    if (!first.empty() && rank(*rule) < rank(*first[0])) first.clear();
    if (first.empty() || rank(*rule) == rank(*first[0])) first.push_back(rule);
  }
  return first;
}

constexpr std::uint32_t kNone = 1U << 31;
inline std::uint32_t treatmentsOf(const Takers& takers) {
  std::uint32_t bits = takers.empty() ? kNone : 0;
  for (const PlainRule* rule : takers) bits |= 1U << rule->treatment;
  return bits;
}

// The facts about each rule and each pair of rules, found by trying every packet.
struct Facts {
  Facts(const Case& c, const std::set<Row>& rows, const Rank& rank) {
    const std::size_t n = c.rules.size();
    const std::vector<std::vector<bool>> none(n, std::vector<bool>(n));
    reached.resize(n);
    missed.resize(n);
    all.resize(n, true);
    meets = ties = firsts = none;
    holds.assign(n, std::vector<bool>(n, true));
    for (const Row& row : rows) {
      for (std::size_t i = 0; i < n; ++i) {
        all[i] = all[i] && row[i] == kYes;
        for (std::size_t j = 0; row[i] != kNo && j < n; ++j) {
          if (row[j] != kNo) meets[i][j] = true;
          if (row[j] == kNo || (row[j] & ~row[i]) != 0) holds[j][i] = false;
        }
      }
      forEachReading(c.rules, row, [&](const Takers& takers) {
        const Takers first = firstOf(takers, rank);
        for (const PlainRule* rule : first) {
          reached[rule->id] = true;
          for (const PlainRule* other : first) ties[rule->id][other->id] = true;
          for (const PlainRule* other : takers) firsts[other->id][rule->id] = true;
          // If rules tie, a device may ask them in any order. So any rule of `then` may take the
          // packet if `rule` is removed.
          const Takers then = firstOf(takers, rank, rule);
          if (treatmentsOf(then) != treatmentsOf({rule})) missed[rule->id] = true;
        }
      });
    }
  }
  std::vector<bool> reached;              // the rule is first for some packet
  std::vector<bool> missed;               // without the rule some packet is treated differently
  std::vector<bool> all;                  // the rule takes every packet
  std::vector<std::vector<bool>> meets;   // both rules take one packet in some reading
  std::vector<std::vector<bool>> holds;   // [outer][inner]: `outer` takes every packet of `inner`
  std::vector<std::vector<bool>> ties;    // both rules come first for some packet: they tie
  std::vector<std::vector<bool>> firsts;  // [rule][other]: other is first for a packet of rule
};

inline std::string lineOf(Code code, filtersEntryId_t entry,
                          const std::vector<std::uint32_t>& ids) {
  std::string line = std::string(nameOf(code)) + ' ' + std::to_string(entry) + ':';
  for (std::uint32_t id : ids) line += ' ' + std::to_string(id);
  return line + '\n';
}

// The findings that the analysis must report. Findings about unreachable and redundant rules are
// listed without the other rules that they name.
inline std::vector<std::string> expectedOf(const Case& c, const Facts& facts,
                                           const AnalysisOptions& options) {
  const bool ordered = options.order != Order::kUnspecified;
  std::vector<std::string> lines;
  for (std::size_t i = 0; i < c.rules.size(); ++i) {
    const PlainRule& a = c.rules[i];
    if (!facts.reached[i]) lines.push_back(lineOf(Code::kEntryUnreachable, a.id, {}));
    bool redundant = facts.reached[i] && !facts.missed[i];
    std::vector<std::uint32_t> holders;
    for (std::size_t j = 0; j < c.rules.size(); ++j) {
      const PlainRule& b = c.rules[j];
      const bool differ = a.treatment != b.treatment;
      const bool same = i != j && facts.holds[i][j] && facts.holds[j][i];
      if (!ordered && same && !differ && j < i) redundant = true;
      if (i != j && differ && !same && facts.holds[j][i] && !facts.all[j]) holders.push_back(b.id);
      if (!differ || !facts.meets[i][j]) continue;
      const bool isTie = ordered ? facts.ties[i][j] : same;
      if (isTie && i < j) lines.push_back(lineOf(Code::kEntriesTie, std::min(a.id, b.id), {b.id}));
      const bool first = rankOf(a, options.order) < rankOf(b, options.order) ||
                         (rankOf(a, options.order) == rankOf(b, options.order) && i < j);
      if (!isTie && options.overlaps && first) {
        lines.push_back(lineOf(Code::kEntriesOverlap, a.id, {b.id}));
      }
    }
    if (redundant) lines.push_back(lineOf(Code::kEntryRedundant, a.id, {}));
    if (!ordered && !options.overlaps && !holders.empty()) {
      lines.push_back(lineOf(Code::kEntriesOverlap, a.id, holders));
    }
  }
  std::sort(lines.begin(), lines.end());
  return lines;
}

inline Hit hitOf(const Trace& trace, filtersEntryId_t id) {
  for (const Traced& traced : trace.entries) {
    if (traced.entry == id) return traced.hit;
  }
  return Hit::kMiss;
}

// The example packet must prove the finding. If a real packet can prove it, the example must be a
// real packet.
inline std::string faultOfWitness(const Case& c, const Facts& built, const Finding& finding,
                                  Order order) {
  const auto packet = Packet::parse(finding.witness, nullptr);
  if (!packet || packet->toText() != finding.witness) return "it does not read back";
  const Trace traced = trace(c.group, *packet, order);
  if (hitOf(traced, *finding.entry) == Hit::kMiss) return "the entry misses it";
  const auto isPossible = [&](std::uint32_t id) {
    const auto& all = traced.candidates;
    return traced.entry == id || std::find(all.begin(), all.end(), id) != all.end();
  };
  const auto missed = [&](std::uint32_t id) { return hitOf(traced, id) == Hit::kMiss; };
  const auto& others = finding.others;
  const std::size_t i = *finding.entry, j = others[0];
  bool canBeBuilt = false;
  if (finding.code == Code::kEntryUnreachable) {
    if (std::all_of(others.begin(), others.end(), missed)) return "all others miss it";
    if (isPossible(*finding.entry)) return "the entry may take it";
  } else if (finding.code == Code::kEntryRedundant) {
    if (std::all_of(others.begin(), others.end(), missed)) return "all others miss it";
    if (!isPossible(*finding.entry)) return "it goes elsewhere";
  } else if (finding.code == Code::kEntriesTie) {
    if (!isPossible(*finding.entry) || !isPossible(others[0])) return "it is no tie";
    canBeBuilt = built.ties[i][j];
  } else {
    if (missed(others[0])) return "the other entry misses it";
    canBeBuilt = built.meets[i][j];
  }
  return canBeBuilt ? faultOfFrame(finding.witness) : "";
}

// The blockers together must cover the entry. If one blocker is left out, the other blockers must
// not cover the entry.
inline std::string faultOfBlockers(const Case& c, const Finding& finding) {
  std::vector<bool> needed(finding.others.size());
  for (const PlainPacket& packet : c.everyPacket()) {
    const Takes its = takes(*c.find(*finding.entry), packet);
    if (its == kNo) continue;
    std::vector<std::size_t> takers;
    for (std::size_t i = 0; i < finding.others.size(); ++i) {
      const Takes other = takes(*c.find(finding.others[i]), packet);
      if (other != kNo && (other & ~its) == 0) takers.push_back(i);
    }
    if (takers.empty()) return "nothing blocks " + c.textOf(packet);
    if (takers.size() == 1) needed[takers[0]] = true;
  }
  return std::count(needed.begin(), needed.end(), false) == 0 ? "" : "a blocker is spare";
}

// Checks the sentence about an entry without effect. The sentence must compare the entry's
// treatment with the treatment by the entries that take its packets first.
inline std::string faultOfSentence(const Case& c, const Facts& facts, const Finding& finding) {
  const std::size_t i = *finding.entry;
  std::vector<std::uint32_t> differing;
  bool alike = false, only = true;
  for (const PlainRule& rule : c.rules) {
    if (!facts.firsts[i][rule.id]) continue;
    const bool differs = rule.treatment != c.rules[i].treatment;
    if (differs) differing.push_back(rule.id);
    alike = alike || !differs;
    const auto& others = finding.others;
    only = only && std::find(others.begin(), others.end(), rule.id) != others.end();
  }
  const auto says = [&](const std::string& part) {
    return finding.message.find(part) != std::string::npos;
  };
  std::string wanted = differing.empty() ? "; the treatment is the same"
                       : alike           ? "; part of its packets are treated otherwise by entr"
                                         : "; the treatment differs";
  if (!says(wanted)) return wanted + " is not said";
  if (says(" all its packets first") != only) return "others come first";
  const std::size_t by = finding.message.find(" otherwise by");
  for (std::uint32_t id = 0; by != std::string::npos && id < c.rules.size(); ++id) {
    const bool named = finding.message.find(std::to_string(id), by) != std::string::npos;
    if (named && std::count(differing.begin(), differing.end(), id) == 0) return "another is named";
  }
  return {};
}

inline std::string faultOfAnalysis(const Case& c, const Case::Rows& rows,
                                   const AnalysisOptions& options) {
  const Report report = analyse(c.group, options);
  const Rank rank = [&](const PlainRule& rule) { return rankOf(rule, options.order); };
  const Facts facts(c, rows.all, rank), built(c, rows.built, rank);
  std::ostringstream all;
  all << nameOf(options.order) << '\n' << report << c.group;
  std::vector<std::string> lines;
  for (const Finding& finding : report.findings) {
    if (finding.code == Code::kValueUnusual) continue;
    const bool single =
        finding.code == Code::kEntryUnreachable || finding.code == Code::kEntryRedundant;
    lines.push_back(lineOf(finding.code, *finding.entry,
                           single ? std::vector<std::uint32_t>() : finding.others));
    std::string fault = faultOfWitness(c, built, finding, options.order);
    if (fault.empty() && finding.code == Code::kEntryUnreachable) {
      fault = faultOfBlockers(c, finding);
      if (fault.empty()) fault = faultOfSentence(c, facts, finding);
    }
    if (!fault.empty()) return fault + ": " + lines.back() + finding.witness + '\n' + all.str();
  }
  std::sort(lines.begin(), lines.end());
  const std::vector<std::string> expected = expectedOf(c, facts, options);
  if (lines == expected) return {};
  std::string text = "wanted:\n";
  for (const std::string& line : expected) text += line;
  return text + "and not:\n" + all.str();
}

// Tries every order of the rules, because findings without an order must be true in every order.
inline std::string faultOfAnyOrder(const Case& c) {
  std::vector<std::uint64_t> ranks;
  for (std::size_t i = 0; i < c.rules.size(); ++i) ranks.push_back(i);
  const Report report = analyse(c.group);
  const std::set<Row> rows = c.everyRow().all;
  do {
    const Facts facts(c, rows, [&](const PlainRule& rule) { return ranks[rule.id]; });
    for (const Finding& finding : report.findings) {
      const bool tie = finding.code == Code::kEntriesTie;
      if (tie && facts.reached[*finding.entry] && facts.reached[finding.others[0]]) {
        return "both take effect: " + finding.message;
      }
      const bool single = finding.message.rfind("without it", 0) == 0;
      if (finding.code == Code::kEntryRedundant && single && facts.missed[*finding.entry]) {
        return "it is missed: " + finding.message;
      }
      if (finding.code == Code::kEntryRedundant && !single && facts.reached[*finding.entry] &&
          facts.reached[finding.others[0]]) {
        return "both take effect: " + finding.message;
      }
      if (finding.code == Code::kEntryUnreachable) return "there is no order";
    }
  } while (std::next_permutation(ranks.begin(), ranks.end()));
  return {};
}

// A decision must be the outcome of the trace, also when the same packet is decided again.
inline bool agrees(const Tracer& tracer, const Packet& packet, const Trace& traced) {
  const auto isSame = [&](const Decision& decision) {
    return decision.outcome == traced.outcome && decision.entry == traced.entry &&
           decision.candidates == traced.candidates && decision.may_be_none == traced.may_be_none &&
           decision.at_most == traced.at_most;
  };
  return isSame(tracer.decide(packet)) && isSame(tracer.decide(packet));
}

// A trace must be decided if and only if every packet with the given fields has the same result.
inline std::string faultOfTrace(const Case& c, const PlainPacket& packet,
                                const std::vector<bool>& told, Order order) {
  std::string text;
  for (std::size_t i = 0; i < told.size(); ++i) {
    if (told[i]) text += c.fields[i].textOf(packet[i]) + ' ';
  }
  const auto parsed = Packet::parse(text, nullptr);
  if (!parsed) return "cannot be read: " + text;
  const Tracer tracer(c.group, order);
  const Trace traced = tracer.trace(*parsed);
  if (!agrees(tracer, *parsed, traced)) return "the decision differs: " + text;
  std::vector<bool> hits(c.rules.size(), true), misses(c.rules.size(), true);
  std::uint32_t firsts = 0;  // the ids as bits
  bool tie = false, wrong = false;
  for (const PlainPacket& whole : c.everyPacket()) {
    bool fits = true;
    for (std::size_t i = 0; i < told.size(); ++i)
      fits = fits && (!told[i] || whole[i] == packet[i]);
    if (!fits) continue;
    const Row row = rowOf(c.rules, whole);
    for (std::size_t i = 0; i < row.size(); ++i) {
      hits[i] = hits[i] && row[i] == kYes;
      misses[i] = misses[i] && row[i] == kNo;
    }
    forEachReading(c.rules, row, [&](const Takers& takers) {
      const Takers first =
          firstOf(takers, [&](const PlainRule& rule) { return rankOf(rule, order); });
      tie = tie || first.size() > 1;
      if (first.empty()) firsts |= kNone;
      for (const PlainRule* rule : first) firsts |= 1U << rule->id;
    });
  }
  for (std::size_t i = 0; i < c.rules.size(); ++i) {
    const Hit expected = hits[i] ? Hit::kHit : misses[i] ? Hit::kMiss : Hit::kUndecided;
    wrong = wrong || hitOf(traced, c.rules[i].id) != expected;
  }
  std::uint32_t said = traced.may_be_none || traced.outcome == Hit::kMiss ? kNone : 0;
  for (filtersEntryId_t id : traced.candidates) said |= 1U << id;
  if (traced.entry) said |= 1U << *traced.entry;
  const bool decided = !tie && (firsts & (firsts - 1)) == 0;
  const bool isDecided = traced.outcome != Hit::kUndecided;
  if (!wrong && isDecided == decided && said == firsts && !traced.at_most) return {};
  std::ostringstream all;
  all << text << nameOf(order) << '\n' << traced << c.group;
  return all.str();
}

// --- Two groups ----------------------------------------------------------------------------------

// True if no treatment of the packet is possible in both groups.
inline bool surelyDiffers(const Case& a, const Case& b, const Packet& packet, Order order) {
  std::uint32_t may[2] = {};
  for (const Case* c : {&a, &b}) {
    const Trace traced = trace(c->group, packet, order);
    std::uint32_t& bits = may[c == &b];
    if (traced.may_be_none || traced.outcome == Hit::kMiss) bits |= kNone;
    if (traced.entry) bits |= 1U << c->find(*traced.entry)->treatment;
    for (filtersEntryId_t id : traced.candidates) bits |= 1U << c->find(id)->treatment;
  }
  return (may[0] & may[1]) == 0;
}

// If rules are ordered by id and each has one reading, exactly one rule of each group comes first
// for a packet. The report must name two rules, one of each group, if and only if they come first
// for the same packet and treat it differently.
inline std::string faultOfPairs(const Case& a, const Case& b, const Report& report) {
  const auto idText = [](const PlainRule* rule) {
    return rule == nullptr ? "none" : std::to_string(rule->id);
  };
  std::set<std::string> expected, found;
  for (const PlainPacket& packet : a.everyPacket()) {
    const PlainRule* first[2] = {};
    for (const Case* c : {&a, &b}) {
      for (const PlainRule& rule : c->rules) {
        const Takes t = takes(rule, packet);
        if (t != kNo && t != kYes) return {};
        if (t == kYes && first[c == &b] == nullptr) first[c == &b] = &rule;
      }
    }
    const bool none[] = {first[0] == nullptr, first[1] == nullptr};
    if (none[0] != none[1] || (!none[0] && first[0]->treatment != first[1]->treatment)) {
      expected.insert(idText(first[0]) + '/' + idText(first[1]));
    }
  }
  for (const Finding& finding : report.findings) {
    if (finding.code == Code::kNotDecided) return "undecided, though nothing is open\n";
    found.insert((finding.entry ? std::to_string(*finding.entry) : "none") + '/' +
                 (finding.others.empty() ? "none" : std::to_string(finding.others[0])));
  }
  return found == expected ? "" : "these are not the pairs\n";
}

inline std::string faultOfComparison(const Case& a, const Case& b, Order order) {
  AnalysisOptions options;
  options.order = order;
  const Report report = compareTreatment(a.group, b.group, options);
  std::ostringstream all;
  all << nameOf(order) << '\n' << report << a.group << b.group;
  for (const Finding& finding : report.findings) {
    if (finding.code != Code::kTreatmentDiffers) continue;
    const auto packet = Packet::parse(finding.witness, nullptr);
    if (!packet) return "no witness:\n" + all.str();
    const bool both =
        (!finding.entry || hitOf(trace(a.group, *packet, order), *finding.entry) == Hit::kHit) &&
        (finding.others.empty() ||
         hitOf(trace(b.group, *packet, order), finding.others[0]) == Hit::kHit);
    if (!both || !surelyDiffers(a, b, *packet, order)) {
      return finding.witness + " is no witness:\n" + all.str();
    }
  }
  std::string fault = faultOfPairs(a, b, report);
  if (order == Order::kAscendingId && !fault.empty()) return fault + all.str();
  // An empty report means that no packet is treated differently in any reading.
  if (!report.empty()) return {};
  std::vector<PlainRule> rules = a.rules;
  rules.insert(rules.end(), b.rules.begin(), b.rules.end());
  fault.clear();
  for (const PlainPacket& packet : a.everyPacket()) {
    forEachReading(rules, rowOf(rules, packet), [&](const Takers& takers) {
      std::uint32_t bits[2] = {};
      for (const bool second : {false, true}) {
        Takers its;
        for (const PlainRule* rule : takers) {
          const bool ofB = rule >= rules.data() + a.rules.size();
          if (ofB == second) its.push_back(rule);
        }
        bits[second] =
            treatmentsOf(firstOf(its, [&](const PlainRule& rule) { return rankOf(rule, order); }));
      }
      if (bits[0] != bits[1]) fault = a.textOf(packet) + "is not found:\n" + all.str();
    });
  }
  return fault;
}

}  // namespace tiny

#endif  // FILTER_COMMON_TESTS_INSPECT_TINY_CHECKS_H_
