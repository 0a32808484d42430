#ifndef FILTER_COMMON_TESTS_INSPECT_TINY_CHECKS_H_
#define FILTER_COMMON_TESTS_INSPECT_TINY_CHECKS_H_

// What must hold of tiny groups, found by going through every packet and every reading. Each check
// returns what is wrong, and nothing when nothing is.

#include <filter_common/filter_entries.pb.h>

#include <sstream>

#include "tiny.h"

namespace tiny {

using Rank = std::function<std::uint64_t(const PlainRule&)>;
using Takers = std::vector<const PlainRule*>;

// Calls for every set of rules that take the packet, a set for each combination of readings. Rules
// of the same `key` are read alike.
template <class Use>
void forEachReading(const std::vector<PlainRule>& rules, const Row& row, Use use,
                    const std::function<std::size_t(const PlainRule&)>& key = nullptr) {
  Takers surely;
  std::vector<Takers> maybe;
  std::vector<std::size_t> keys;
  for (std::size_t i = 0; i < rules.size(); ++i) {
    if (row[i] == Takes::kYes) surely.push_back(&rules[i]);
    if (row[i] != Takes::kMaybe) continue;
    const std::size_t its = key ? key(rules[i]) : keys.size();
    const auto found = std::find(keys.begin(), keys.end(), its);
    const auto place = static_cast<std::size_t>(found - keys.begin());
    if (found == keys.end()) {
      maybe.emplace_back();
      keys.push_back(its);
    }
    maybe[place].push_back(&rules[i]);
  }
  for (std::uint32_t choice = 0; choice < 1U << maybe.size(); ++choice) {
    Takers takers = surely;
    for (std::size_t i = 0; i < maybe.size(); ++i) {
      if ((choice >> i & 1) != 0) takers.insert(takers.end(), maybe[i].begin(), maybe[i].end());
    }
    use(takers);
  }
}

// The first of them, all that tie.
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

// What each pair of rules is to each other, and each rule to the rest, by going through everything.
struct Facts {
  Facts(const Case& c, const std::set<Row>& rows, const Rank& rank) {
    const std::size_t n = c.rules.size();
    reached.resize(n);
    missed.resize(n);
    meets.assign(n, std::vector<bool>(n));
    holds.assign(n, std::vector<bool>(n, true));
    for (const Row& row : rows) {
      for (std::size_t i = 0; i < n; ++i) {
        for (std::size_t j = 0; row[i] != Takes::kNo && j < n; ++j) {
          if (row[j] != Takes::kNo) meets[i][j] = true;
          if (row[j] != Takes::kYes) holds[j][i] = false;
        }
      }
      forEachReading(c.rules, row, [&](const Takers& takers) {
        const Takers first = firstOf(takers, rank);
        for (const PlainRule* rule : first) {
          reached[rule->id] = true;
          // Whichever way a tie is broken, this one may come first and any of the rest next.
          const Takers then = firstOf(takers, rank, rule);
          if (treatmentsOf(then) != treatmentsOf({rule})) missed[rule->id] = true;
        }
      });
    }
  }
  std::vector<bool> reached;             // it is the first for some packet
  std::vector<bool> missed;              // without it some packet would be treated differently
  std::vector<std::vector<bool>> meets;  // under some reading
  std::vector<std::vector<bool>> holds;  // [outer][inner], under every reading
};

inline std::string lineOf(Code code, filtersEntryId_t entry,
                          const std::vector<std::uint32_t>& ids) {
  std::string line = std::string(nameOf(code)) + ' ' + std::to_string(entry) + ':';
  for (std::uint32_t id : ids) line += ' ' + std::to_string(id);
  return line + '\n';
}

// The findings that there must be, of unreachable and redundant rules without the others.
inline std::vector<std::string> expectedOf(const Case& c, const std::set<Row>& rows,
                                           const AnalysisOptions& options) {
  const bool ordered = options.order != Order::kUnspecified;
  const Rank rank = [&](const PlainRule& rule) { return rankOf(rule, options.order); };
  const Facts facts(c, rows, rank);
  std::vector<std::string> lines;
  for (std::size_t i = 0; i < c.rules.size(); ++i) {
    const PlainRule& a = c.rules[i];
    if (!facts.reached[i]) lines.push_back(lineOf(Code::kEntryUnreachable, a.id, {}));
    if (facts.reached[i] && !facts.missed[i]) {
      lines.push_back(lineOf(Code::kEntryRedundant, a.id, {}));
    }
    std::vector<std::uint32_t> holders;
    for (std::size_t j = 0; j < c.rules.size(); ++j) {
      const PlainRule& b = c.rules[j];
      const bool differ = a.treatment != b.treatment, tie = rank(a) == rank(b);
      const bool same = facts.holds[i][j] && facts.holds[j][i];
      if (i != j && differ && !same && facts.holds[j][i] && !b.asks.empty())
        holders.push_back(b.id);
      const bool first = rank(a) < rank(b) || (tie && i < j);
      if (!first || !facts.meets[i][j] || (!differ && (ordered || !same))) continue;
      const bool isTie = differ && (ordered ? tie : same);
      if (isTie) {
        lines.push_back(lineOf(Code::kEntriesTie, a.id, {b.id}));
      } else if (options.overlaps || (same && !ordered)) {
        lines.push_back(lineOf(Code::kEntriesOverlap, a.id, {b.id}));
      }
    }
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

// What a finding's packet does not show that it should.
inline std::string faultOfWitness(const Case& c, const Finding& finding, Order order) {
  const auto packet = Packet::parse(finding.witness, nullptr);
  if (!packet || packet->toText() != finding.witness) return "it does not read back";
  const Trace traced = trace(c.group, *packet, order);
  if (hitOf(traced, *finding.entry) == Hit::kMiss) return "the entry misses it";
  bool anyHit = false, anyMiss = false;
  for (std::uint32_t id : finding.others) {
    anyHit = anyHit || hitOf(traced, id) == Hit::kHit;
    anyMiss = anyMiss || hitOf(traced, id) == Hit::kMiss;
  }
  const auto& candidates = traced.candidates;
  const bool candidate =
      std::find(candidates.begin(), candidates.end(), *finding.entry) != candidates.end();
  if (finding.code == Code::kEntryUnreachable) {
    if (!anyHit || candidate || traced.entry == finding.entry) return "the entry may take it";
  } else if (finding.code == Code::kEntryRedundant) {
    if (!anyHit || !(candidate || traced.entry == finding.entry)) return "it goes elsewhere";
  } else if (anyMiss && finding.others.size() == 1) {
    return "the other entry misses it";
  }
  return {};
}

// What blocks an entry covers it, and without any of them does not.
inline std::string faultOfBlockers(const Case& c, const Finding& finding) {
  std::vector<bool> needed(finding.others.size());
  for (const PlainPacket& packet : c.everyPacket()) {
    if (takes(*c.find(*finding.entry), packet) == Takes::kNo) continue;
    std::vector<std::size_t> takers;
    for (std::size_t i = 0; i < finding.others.size(); ++i) {
      if (takes(*c.find(finding.others[i]), packet) == Takes::kYes) takers.push_back(i);
    }
    if (takers.empty()) return "nothing blocks " + c.textOf(packet);
    if (takers.size() == 1) needed[takers[0]] = true;
  }
  return std::count(needed.begin(), needed.end(), false) == 0 ? "" : "a blocker is spare";
}

inline std::string faultOfAnalysis(const Case& c, const std::set<Row>& rows,
                                   const AnalysisOptions& options) {
  const Report report = analyse(c.group, options);
  std::ostringstream all;
  all << nameOf(options.order) << '\n' << report << c.group;
  std::vector<std::string> lines;
  for (const Finding& finding : report.findings) {
    if (finding.code == Code::kValueUnusual) continue;
    const bool single =
        finding.code == Code::kEntryUnreachable || finding.code == Code::kEntryRedundant;
    lines.push_back(lineOf(finding.code, *finding.entry,
                           single ? std::vector<std::uint32_t>() : finding.others));
    std::string fault = faultOfWitness(c, finding, options.order);
    if (fault.empty() && finding.code == Code::kEntryUnreachable)
      fault = faultOfBlockers(c, finding);
    if (!fault.empty()) return fault + ": " + lines.back() + finding.witness + '\n' + all.str();
  }
  std::sort(lines.begin(), lines.end());
  const std::vector<std::string> expected = expectedOf(c, rows, options);
  if (lines == expected) return {};
  std::string text = "wanted:\n";
  for (const std::string& line : expected) text += line;
  return text + "and not:\n" + all.str();
}

// What is said without an order holds in each of them: every order of the rules is gone through.
inline std::string faultOfAnyOrder(const Case& c) {
  std::vector<std::uint64_t> ranks;
  for (std::size_t i = 0; i < c.rules.size(); ++i) ranks.push_back(i);
  const Report report = analyse(c.group);
  const std::set<Row> rows = c.everyRow();
  do {
    const Facts facts(c, rows, [&](const PlainRule& rule) { return ranks[rule.id]; });
    for (const Finding& finding : report.findings) {
      const bool tie = finding.code == Code::kEntriesTie;
      if (tie && facts.reached[*finding.entry] && facts.reached[finding.others[0]]) {
        return "both take effect: " + finding.message;
      }
      if (finding.code == Code::kEntryRedundant && facts.missed[*finding.entry]) {
        return "it is missed: " + finding.message;
      }
      if (finding.code == Code::kEntryUnreachable) return "there is no order";
    }
  } while (std::next_permutation(ranks.begin(), ranks.end()));
  return {};
}

// A trace that is decided is so for all that a packet can be, and the other way round.
inline std::string faultOfTrace(const Case& c, const PlainPacket& packet,
                                const std::vector<bool>& told, Order order) {
  std::string text;
  for (std::size_t i = 0; i < told.size(); ++i) {
    if (told[i]) text += c.fields[i].textOf(packet[i]) + ' ';
  }
  const auto parsed = Packet::parse(text, nullptr);
  if (!parsed) return "cannot be read: " + text;
  const Trace traced = trace(c.group, *parsed, order);
  std::vector<bool> hits(c.rules.size(), true), misses(c.rules.size(), true);
  std::uint32_t firsts = 0;  // ids as bits
  bool tie = false, wrong = false;
  for (const PlainPacket& whole : c.everyPacket()) {
    bool fits = true;
    for (std::size_t i = 0; i < told.size(); ++i)
      fits = fits && (!told[i] || whole[i] == packet[i]);
    if (!fits) continue;
    const Row row = rowOf(c.rules, whole);
    for (std::size_t i = 0; i < row.size(); ++i) {
      hits[i] = hits[i] && row[i] == Takes::kYes;
      misses[i] = misses[i] && row[i] == Takes::kNo;
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
  if (!wrong && (traced.outcome != Hit::kUndecided) == decided && (firsts & ~said) == 0 &&
      (!decided || said == firsts)) {
    return {};
  }
  std::ostringstream all;
  all << text << nameOf(order) << '\n' << traced << c.group;
  return all.str();
}

// --- Two groups ----------------------------------------------------------------------------------

// Whether what may happen to a packet in two groups has nothing in common.
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

// By ids, and where nothing is open, the pairs are those that some packet goes to.
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
        if (t == Takes::kMaybe) return {};
        if (t == Takes::kYes && first[c == &b] == nullptr) first[c == &b] = &rule;
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
  // Nothing to say: no packet is treated differently, however matches are read.
  if (!report.empty()) return {};
  std::vector<PlainRule> rules = a.rules;
  rules.insert(rules.end(), b.rules.begin(), b.rules.end());
  std::vector<std::string> keys;
  for (const Case* c : {&a, &b}) {
    for (const auto& [id, entry] : c->group.getEntriesRef()) {
      FiltersEntryPB message;
      entry.convertToFiltersEntryPB(&message);
      keys.emplace_back();
      for (const auto& match : message.matches_()) keys.back() += match.SerializeAsString() + '/';
    }
  }
  const auto key = [&](const PlainRule& rule) {
    const std::string& its = keys[static_cast<std::size_t>(&rule - rules.data())];
    return static_cast<std::size_t>(std::find(keys.begin(), keys.end(), its) - keys.begin());
  };
  fault.clear();
  for (const PlainPacket& packet : a.everyPacket()) {
    forEachReading(
        rules, rowOf(rules, packet),
        [&](const Takers& takers) {
          std::uint32_t bits[2] = {};
          for (const bool second : {false, true}) {
            Takers its;
            for (const PlainRule* rule : takers) {
              const bool ofB = rule >= rules.data() + a.rules.size();
              if (ofB == second) its.push_back(rule);
            }
            bits[second] = treatmentsOf(
                firstOf(its, [&](const PlainRule& rule) { return rankOf(rule, order); }));
          }
          if (bits[0] != bits[1]) fault = a.textOf(packet) + "is not found:\n" + all.str();
        },
        key);
  }
  return fault;
}

}  // namespace tiny

#endif  // FILTER_COMMON_TESTS_INSPECT_TINY_CHECKS_H_
