// Measures diff(), operator== and plan() for two groups of 10,000 rules that differ in one rule.
// Also measures the bytes that a plan sends in place of the group, and the longest search for a
// plan. Figures are CPU time, the fastest of five runs. Fails if diff() takes more than ten times
// as long as operator==, or a plan takes more than a second.

#include <filter_inspect/filter_diff.h>

#include <random>

#include "workload.h"

namespace {

using namespace benchmarks;
using namespace FiltersInspect;

constexpr unsigned kRules = 10000;

template <class T>
std::size_t sizeOf(const T& object) {
  std::string bytes;
  object.serialize(&bytes);
  return bytes.size();
}

void oneOfMany() {
  const FiltersGroup before = makeGroup(kRules);
  FiltersGroup after = before;
  FiltersEntry changed = makeRule(kRules - 1);
  changed.setPriority(0);
  require(after.insertEntry(changed) == FILTERS_OK, "a rule is refused");
  bool equal = true;
  const double compared = secondsOf([&] { equal = before == after; });
  std::size_t findings = 0;
  const double told = secondsOf([&] { findings = diff(before, after).findings.size(); });
  Plan way;
  const double planned = secondsOf([&] { way = plan(before, after); });
  require(!equal && findings == 1 && way.steps.size() == 1, "it is one difference");
  std::printf("%u rules, one differs: operator== %.2f ms, diff %.2f ms, plan %.2f ms\n", kRules,
              compared * 1e3, told * 1e3, planned * 1e3);
  std::printf("the group %zu bytes, the one rule %zu\n", sizeOf(after), sizeOf(changed));
  require(told < 10 * compared, "diff takes more than ten times what operator== takes");
}

// Rules that have one or two of a few matches, so that each stage and type admits different rules.
FiltersEntry randomRule(unsigned id, filtersGroupType_t type, std::mt19937* random) {
  const FiltersGroup checks(0);
  for (;;) {
    FiltersEntry rule(id);
    const auto codes = (*random)();
    const filtersErr_t results[] = {
        codes & 1 ? rule.setMatch(MatchTPID(kTpid)) : FILTERS_OK,
        codes & 2 ? rule.setMatch(MatchDstMac(kMac)) : FILTERS_OK,
        codes & 4 ? rule.setMatch(MatchIpProtocol(6)) : FILTERS_OK,
        codes & 8 ? rule.setMatch(MatchDstIPv4(in_addr{1})) : FILTERS_OK,
        codes & 16 ? rule.setMatch(MatchInternalVlanId({kVlans[0]})) : FILTERS_OK,
        codes & 32 ? rule.setMatch(MatchSrcMac(kMac)) : FILTERS_OK,
        codes & 64 ? rule.setAction(ActionCopyInnerPcp()) : FILTERS_OK,
        codes & 128 ? rule.setAction(ActionBlackHole()) : FILTERS_OK,
    };
    for (filtersErr_t result : results) require(result == FILTERS_OK, "a part is refused");
    if (checks.groupMatchValidation(rule, type) == FILTERS_OK) return rule;
  }
}

void manyManners() {
  std::mt19937 random(1);
  FiltersGroup before(1), after(1);
  require(before.setType(FILTERS_GROUP_TYPE_4) == FILTERS_OK, "the type is refused");
  require(after.setType(FILTERS_GROUP_TYPE_1) == FILTERS_OK, "the type is refused");
  for (unsigned id = 0; id < kRules; ++id) {
    for (FiltersGroup* group : {&before, &after}) {
      const FiltersEntry rule = randomRule(id, group->getType(), &random);
      require(group->insertEntry(rule) == FILTERS_OK, "a rule is refused");
    }
  }
  Plan way;
  const double planned = secondsOf([&] { way = plan(before, after); });
  std::printf("%u rules, all of them and the type differ: plan %.0f ms, %zu steps, %s\n", kRules,
              planned * 1e3, way.steps.size(),
              way.fewest ? "the fewest" : "perhaps not the fewest");
  require(way.possible && planned < 1, "a plan takes longer than a second");
}

}  // namespace

int main() {
  oneOfMany();
  manyManners();
}
