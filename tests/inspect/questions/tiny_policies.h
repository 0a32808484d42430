#ifndef FILTER_COMMON_TESTS_INSPECT_TINY_POLICIES_H_
#define FILTER_COMMON_TESTS_INSPECT_TINY_POLICIES_H_

// Promises about tiny groups, and a plain evaluator that tries every packet and every reading.

#include <filter_inspect/filter_policy.h>

#include "tiny_sets.h"

namespace tiny {

struct PlainPromise {
  const char* words;
  bool keeps_none;
  bool (*keeps)(const PlainRule& rule);
};
inline bool isDenied(const PlainRule& rule) { return rule.treatment == 1; }
constexpr PlainPromise kPromises[] = {
    {"always deny", false, isDenied},
    {"never deny", true, [](const PlainRule& rule) { return !isDenied(rule); }},
    {"always taken", false, [](const PlainRule&) { return true; }},
    {"never taken", true, [](const PlainRule&) { return false; }},
    {"always permit", false, [](const PlainRule&) { return false; }},
    {"never permit set_pcp=5 deny", true, [](const PlainRule& rule) { return !isDenied(rule); }},
};

// Whether some packets of a set surely or perhaps break a promise.
struct PlainVerdict {
  bool surely_broken = false, maybe_broken = false;
  bool built_surely = false, built_maybe = false;  // the same for packets that a sender can build
  Code code() const {
    return surely_broken  ? Code::kPolicyFails
           : maybe_broken ? Code::kPolicyOpen
                          : Code::kPolicyHolds;
  }
};

// One verdict for each of kPromises.
inline std::vector<PlainVerdict> verdictsOf(const Case& c, const PlainSet& set, const Rank& rank) {
  std::map<Row, bool> rows;  // whether one of its packets can be built
  set.forEach([&](const PlainPacket& packet) {
    bool& built = rows[rowOf(c.rules, packet)];
    built = built || faultOfFrame(set.textOf(packet)).empty();
  });
  constexpr std::size_t kCount = std::size(kPromises);
  std::vector<PlainVerdict> verdicts(kCount);
  for (const auto& [row, built] : rows) {
    std::vector<bool> kept(kCount), broken(kCount);
    forEachReading(c.rules, row, [&](const Takers& takers) {
      const Takers first = firstOf(takers, rank);
      for (std::size_t i = 0; i < kCount; ++i) {
        const auto go = [&](bool keeps) { (keeps ? kept : broken)[i] = true; };
        for (const PlainRule* rule : first) go(kPromises[i].keeps(*rule));
        if (first.empty()) go(kPromises[i].keeps_none);
      }
    });
    for (std::size_t i = 0; i < kCount; ++i) {
      PlainVerdict& verdict = verdicts[i];
      const bool surely = broken[i] && !kept[i];
      verdict.maybe_broken = verdict.maybe_broken || broken[i];
      verdict.surely_broken = verdict.surely_broken || surely;
      verdict.built_maybe = verdict.built_maybe || (broken[i] && built);
      verdict.built_surely = verdict.built_surely || (surely && built);
    }
  }
  return verdicts;
}

inline std::string faultOfVerdictWitness(const Case& c, const PlainSet& set,
                                         const PlainPromise& promise, const PlainVerdict& verdict,
                                         const Finding& finding, Order order) {
  const bool fails = finding.code == Code::kPolicyFails;
  const auto packet = Packet::parse(finding.witness, nullptr);
  if (!packet || packet->toText() != finding.witness) return "it does not read back";
  if (!set.has(finding.witness)) return "it is not in the set";
  const Trace traced = trace(c.group, *packet, order);
  std::vector<std::optional<filtersEntryId_t>> all(traced.candidates.begin(),
                                                   traced.candidates.end());
  if (traced.entry) all.emplace_back(traced.entry);
  if (traced.may_be_none || traced.outcome == Hit::kMiss) all.emplace_back();
  bool kept = false, broken = false, named = false;
  for (const auto& one : all) {
    const bool keeps = one ? promise.keeps(*c.find(*one)) : promise.keeps_none;
    (keeps ? kept : broken) = true;
    named = named || (!keeps && one == finding.entry);
  }
  if (!named) return "it does not go there";
  if (!broken || kept == fails) return "trace() has another verdict";
  for (const filtersEntryId_t other : finding.others) {
    if (promise.keeps(*c.find(other)) == fails) return "an alternative is none";
  }
  const bool canBeBuilt = fails ? verdict.built_surely : verdict.built_maybe;
  return canBeBuilt ? faultOfFrame(finding.witness) : "";
}

// Compares the verdicts about all promises and sets with the plain evaluator. If the limit of steps
// is low, some promises may be not decided.
inline std::string faultOfPolicy(const Case& c, const std::vector<PlainSet>& sets, Order order,
                                 std::uint64_t max_steps) {
  std::string text = "filter-policy 1\ngroup 1 order=" + std::string(nameOf(order)) + '\n';
  for (const PlainPromise& promise : kPromises) {
    for (const PlainSet& set : sets) {
      text += promise.words + (set.text.empty() ? "" : " if " + set.text) + '\n';
    }
  }
  Report faults;
  const auto policy = Policy::parse(text, &faults);
  std::ostringstream all;
  all << text << faults << c.group;
  if (!policy) return all.str();
  AnalysisOptions options;
  options.max_steps = max_steps;
  const Report report = checkPolicy(c.group, *policy, options);
  if (report.findings.size() != std::size(kPromises) * sets.size()) return "one is missing";
  const Rank rank = [&](const PlainRule& rule) { return rankOf(rule, order); };
  for (std::size_t k = 0; k < sets.size(); ++k) {
    std::vector<PlainVerdict> verdicts = verdictsOf(c, sets[k], rank);
    for (std::size_t i = 0; i < verdicts.size(); ++i) {
      const Finding& finding = report.findings[i * sets.size() + k];
      std::ostringstream said;
      said << finding << finding.word << '\n';
      const bool isLimited = max_steps < 100 && finding.code == Code::kPolicyOpen &&
                             finding.message.find("too many steps") != std::string::npos;
      if (finding.code != verdicts[i].code() && !isLimited) {
        return "it is " + std::string(nameOf(verdicts[i].code())) + ":\n" + said.str() + all.str();
      }
      if (finding.code == Code::kPolicyHolds || isLimited) continue;
      // The search for a packet that a sender can build may need more steps.
      if (max_steps < 100) verdicts[i].built_surely = verdicts[i].built_maybe = false;
      const std::string fault =
          faultOfVerdictWitness(c, sets[k], kPromises[i], verdicts[i], finding, order);
      if (!fault.empty()) return fault + ":\n" + said.str() + all.str();
    }
  }
  return {};
}

}  // namespace tiny

#endif  // FILTER_COMMON_TESTS_INSPECT_TINY_POLICIES_H_
