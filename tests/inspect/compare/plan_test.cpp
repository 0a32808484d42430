// Compares plans with a search over all states of a small group. The search uses the tables of
// rules.h. Then the test applies each plan step by step.

#include <filter_inspect/filter_diff.h>

#include <deque>
#include <optional>
#include <random>
#include <sstream>
#include <tuple>

#include "../../cases.h"
#include "../../entry_samples.h"

namespace {

using namespace catalogue;
using namespace FiltersInspect;
using FiltersInspect::Code;

constexpr PlanOrder kOrders[] = {PlanOrder::kAddFirst, PlanOrder::kRemoveFirst};

// Random numbers from 0 to n - 1.
class Random {
 public:
  unsigned operator()(std::size_t n) { return unsigned(engine_() % n); }
 private:
  std::mt19937 engine_{1};
};

// A version of an entry: the matches, the actions and the stage of the policer, which decide
// whether a group admits it, and a priority to distinguish versions.
struct Version {
  CodeSet matches, actions;
  unsigned policer = 2, priority = 0;
  bool operator==(const Version& o) const {
    return matches == o.matches && actions == o.actions && policer == o.policer &&
           priority == o.priority;
  }
  bool isFor(const Table& table, int row, const CodeSet& codes) const {
    return std::all_of(codes.begin(), codes.end(),
                       [&](unsigned code) { return admits(table, std::uint32_t(row), code); });
  }
  bool fitsType(int type) const { return type < kTypes && isFor(kMatchesOfType, type, matches); }
  bool fitsStage(int stage) const {
    return stage < kStages && isFor(kActionsOfStage, stage, actions) &&
           admits(kPolicersOfStage, std::uint32_t(stage), policer);
  }
};

struct Head {
  int stage, type;
  bool isValid() const { return admits(kTypesOfStage, std::uint32_t(stage), unsigned(type)); }
};

struct Model {
  Head head;
  std::map<unsigned, Version> entries;
};

// Makes a group from any model. The group may hold entries that its stage and type would refuse,
// like a group that was read from bytes.
FiltersGroup made(const Model& model) {
  FiltersGroup group(1);
  const auto setHead = [&](Head head) {
    FiltersGroupPB message;
    message.set_id_(1);
    message.set_stage_(std::uint32_t(head.stage));
    message.set_type_(std::uint32_t(head.type));
    group.convertFromFiltersGroupPB(&message);
  };
  for (const auto& [id, version] : model.entries) {
    Head fitting = {0, 0};
    while (!version.fitsStage(fitting.stage)) ++fitting.stage;
    while (!version.fitsType(fitting.type)) ++fitting.type;
    setHead(fitting);
    FiltersEntry entry = entryOf({version.matches.begin(), version.matches.end()},
                                 {version.actions.begin(), version.actions.end()},
                                 policer::Stage(version.policer), id);
    entry.setPriority(version.priority);
    EXPECT_EQ(group.insertEntry(entry), FILTERS_OK);
  }
  setHead(model.head);
  return group;
}

// Finds the smallest number of steps by trying every step. Returns nothing if there is no plan.
class Oracle {
 public:
  Oracle(const Model& from, const Model& to) : to_(to.head) {
    for (const auto& [id, version] : from.entries) entries_[id].before = version;
    for (const auto& [id, version] : to.entries) entries_[id].after = version;
    State start{from.head, {}};
    for (const auto& [id, entry] : entries_) {
      start.held.push_back(!entry.before ? kNone : entry.isSame() ? kAfter : kBefore);
    }
    reach(start, 0);
  }

  std::optional<std::size_t> distance() {
    for (; !queue_.empty(); queue_.pop_front()) {
      const auto [state, steps] = queue_.front();
      if (isGoal(state)) return steps;
      takeAll(state, steps + 1);
    }
    return std::nullopt;
  }
 private:
  enum Held : char { kNone, kBefore, kAfter };
  struct Both {
    std::optional<Version> before, after;
    bool isSame() const { return before && after && *before == *after; }
  };
  struct State {
    Head head;
    std::string held;
  };

  bool isGoal(const State& state) const {
    std::string goal;
    for (const auto& [id, entry] : entries_) goal.push_back(entry.after ? kAfter : kNone);
    return state.held == goal && state.head.stage == to_.stage && state.head.type == to_.type;
  }

  void takeAll(const State& state, std::size_t steps) {
    for (int stage = 0; stage < kStages; ++stage) {
      State next{{stage, state.head.type}, state.held};
      if (next.head.isValid() && all(next, [&](auto& v) { return v.fitsStage(stage); })) {
        reach(next, steps);
      }
    }
    for (int type = 0; type < kTypes; ++type) {
      State next{{state.head.stage, type}, state.held};
      if (next.head.isValid() && all(next, [&](auto& v) { return v.fitsType(type); })) {
        reach(next, steps);
      }
    }
    std::size_t i = 0;
    for (const auto& [id, entry] : entries_) {
      State next = state;
      next.held[i] = kNone;
      if (state.held[i] != kNone) reach(next, steps);
      next.held[i++] = kAfter;
      if (entry.after && entry.after->fitsStage(state.head.stage) &&
          entry.after->fitsType(state.head.type)) {
        reach(next, steps);
      }
    }
  }

  template <class Fits>
  bool all(const State& state, Fits fits) const {
    std::size_t i = 0;
    for (const auto& [id, entry] : entries_) {
      const char held = state.held[i++];
      if (held != kNone && !fits(held == kBefore ? *entry.before : *entry.after)) return false;
    }
    return true;
  }

  void reach(const State& state, std::size_t steps) {
    if (seen_.insert({state.head.stage, state.head.type, state.held}).second) {
      queue_.emplace_back(state, steps);
    }
  }

  Head to_;
  std::map<unsigned, Both> entries_;
  std::set<std::tuple<int, int, std::string>> seen_;
  std::deque<std::pair<State, std::size_t>> queue_;
};

Head randomHead(Random& random, bool valid = true) {
  for (;;) {
    const auto rowOf = [&](const Table& table) {
      return rowsAndUnknown(table)[random(table.size() + !valid)];
    };
    const Head head = {rowOf(kTypesOfStage), rowOf(kMatchesOfType)};
    if (!valid || head.isValid()) return head;
  }
}

// A version with few matches and actions, so that several stages and types admit it.
Version randomVersion(Random& random, Head head) {
  const auto some = [&](const CodeSet& codes) {
    CodeSet chosen;
    for (unsigned n = random(3); n > 0 && !codes.empty(); --n) {
      chosen.insert(*std::next(codes.begin(), int(random(codes.size()))));
    }
    return chosen;
  };
  Version version{some(kMatchesOfType[unsigned(head.type)]),
                  some(kActionsOfStage[unsigned(head.stage)]), 2, random(2)};
  if (random(4) == 0) version.policer = *kPolicersOfStage[unsigned(head.stage)].begin();
  return version;
}

// Two groups with common entries, some of them changed. If `wild` is true, the groups may have
// stages, types and entries that a group can get only by reading bytes.
std::pair<Model, Model> randomPair(Random& random, unsigned ids, bool wild) {
  std::pair<Model, Model> pair{{randomHead(random, !wild), {}}, {randomHead(random, !wild), {}}};
  auto& [from, to] = pair;
  if (random(4) == 0) to.head = from.head;
  const auto versionFor = [&](const Model& model) {
    return randomVersion(random, wild ? randomHead(random) : model.head);
  };
  const unsigned share = random(8);  // how similar the groups are
  for (unsigned id = 1; id <= ids; ++id) {
    if (random(5) != 0) from.entries[id] = versionFor(from);
    if (random(5) == 0) continue;
    to.entries[id] = versionFor(to);
    if (random(8) > share || from.entries.count(id) == 0) continue;
    const Version& kept = from.entries[id];
    if (wild || (kept.fitsStage(to.head.stage) && kept.fitsType(to.head.type))) {
      to.entries[id] = kept;
    }
  }
  return pair;
}

std::string shown(const Plan& plan, const FiltersGroup& from, const FiltersGroup& to) {
  std::ostringstream os;
  os << from << to;
  for (const Step& step : plan.steps) os << toText(step, to) << '\n';
  os << plan.report;
  return os.str();
}

// Applies the steps of the plan. The library must refuse none of them.
void expectWorks(const Plan& plan, const FiltersGroup& from, const FiltersGroup& to) {
  FiltersGroup group(from);
  ASSERT_TRUE(plan.possible) << shown(plan, from, to);
  EXPECT_TRUE(plan.report.empty());
  ASSERT_EQ(apply(plan.steps, to, &group), FILTERS_OK) << shown(plan, from, to);
  ASSERT_EQ(group, to) << shown(plan, from, to);
}

TEST(Plan, TakesTheFewestSteps) {
  Random random;
  std::size_t impossible = 0;
  RandomCases i(1000);
  for (; i.more(); ++i) {
    const auto [a, b] = randomPair(random, 1 + random(3), i.done() % 3 == 0);
    const FiltersGroup from = made(a), to = made(b);
    const auto distance = Oracle(a, b).distance();
    impossible += !distance;
    for (PlanOrder order : kOrders) {
      const Plan plan = FiltersInspect::plan(from, to, order);
      ASSERT_EQ(plan.possible, distance.has_value()) << shown(plan, from, to);
      EXPECT_EQ(plan.possible, plan.report.empty());
      if (!distance) continue;
      expectWorks(plan, from, to);
      EXPECT_TRUE(plan.fewest);
      EXPECT_EQ(plan.steps.size(), *distance) << shown(plan, from, to);
    }
  }
  EXPECT_GT(50 * impossible, static_cast<std::size_t>(i.done()));
}

// Tests plans between empty groups with any stages and types, even those that the setters refuse.
TEST(Plan, FindsTheShortestWayBetweenAllHeads) {
  std::vector<Head> heads;
  for (int stage : rowsAndUnknown(kTypesOfStage)) {
    for (int type : rowsAndUnknown(kMatchesOfType)) heads.push_back({stage, type});
  }
  unsigned pairs = 0;
  for (const Head& i : heads) {
    for (const Head& j : heads) {
      if (pairs++ % caseStep() != 0) continue;
      const Model a{i, {}}, b{j, {}};
      const auto distance = Oracle(a, b).distance();
      const Plan plan = FiltersInspect::plan(made(a), made(b));
      ASSERT_EQ(plan.possible, distance.has_value()) << shown(plan, made(a), made(b));
      ASSERT_EQ(plan.steps.size(), distance.value_or(0)) << shown(plan, made(a), made(b));
      if (plan.possible) expectWorks(plan, made(a), made(b));
    }
  }
}

std::string linesOf(const Plan& plan, const FiltersGroup& to) {
  std::string lines;
  for (const Step& step : plan.steps) lines += toText(step, to).substr(0, 14) + '\n';
  return lines;
}

TEST(Plan, GoesByWayOfOthers) {
  const FiltersGroup to = groupOf(kEgress, 5);
  EXPECT_EQ(linesOf(plan(groupOf(kLookup, 6), to), to),
            "set-stage none\nset-type 5\nset-stage egre\n");
  // Only type 6 admits both the old and the new entries. If the plan sets type 6 for a time, this
  // costs one step and saves one step for each entry.
  Model a{{0, 4}, {}}, b{{0, 1}, {}};
  for (unsigned id = 1; id <= 2; ++id) {
    a.entries[id] = {{FILTERS_MATCH_PCP}, {}};
    b.entries[id] = {{FILTERS_MATCH_SRC_MAC}, {}};
  }
  EXPECT_EQ(linesOf(plan(made(a), made(b)), made(b)),
            "set-type 6\ninsert entry 1\ninsert entry 2\nset-type 1\n");
}

// Between two setters, and in a plan without setters, all insertions must come before all removals.
// If the plan removes an entry before a setter, that setter must refuse the entry. If the plan
// inserts an entry after a setter, it must be impossible to insert the entry earlier: the group
// refuses it before that setter is called, or the setter would refuse it.
void expectAddedFirst(const Plan& plan, const FiltersGroup& from, const FiltersGroup& to) {
  FiltersGroup group(from),
      before(from.getId());  // the state before the last setter, without entries
  std::vector<FiltersEntry> removed;
  const Step* setter = nullptr;
  const auto setterRefuses = [&](const FiltersEntry& entry, const Step& step) {
    FiltersGroup alone(before);
    return alone.insertEntry(entry) != FILTERS_OK || apply({step}, to, &alone) != FILTERS_OK;
  };
  const auto bare = [](FiltersGroup copy) {
    while (!copy.getEntriesRef().empty()) {
      EXPECT_EQ(copy.removeEntry(copy.getEntriesRef().begin()->first), FILTERS_OK);
    }
    return copy;
  };
  for (const Step& step : plan.steps) {
    if (step.kind == Step::Kind::kRemove) {
      removed.emplace_back(group.getEntriesRef().at(step.entry));
    } else if (step.kind == Step::Kind::kInsert) {
      EXPECT_TRUE(removed.empty()) << shown(plan, from, to);
      const FiltersEntry& entry = to.getEntriesRef().at(step.entry);
      EXPECT_TRUE(setter == nullptr || setterRefuses(entry, *setter)) << shown(plan, from, to);
    } else if (step.kind != Step::Kind::kSetPriority) {
      before = bare(group);
      setter = &step;
      for (const FiltersEntry& entry : removed) {
        EXPECT_TRUE(setterRefuses(entry, step)) << shown(plan, from, to);
      }
      removed.clear();
    }
    ASSERT_EQ(apply({step}, to, &group), FILTERS_OK);
  }
}

std::size_t mostEntries(const Plan& plan, FiltersGroup group, const FiltersGroup& to) {
  std::size_t most = 0;
  for (const Step& step : plan.steps) {
    EXPECT_EQ(apply({step}, to, &group), FILTERS_OK);
    most = std::max(most, group.getEntriesRef().size());
  }
  return most;
}

TEST(Plan, KeepsItsOrder) {
  Random random;
  for (RandomCases i(300); i.more(); ++i) {
    const auto [a, b] = randomPair(random, 1 + random(40), false);
    FiltersGroup from = made(a), to = made(b);
    if (i.done() % 3 == 0) to.setPriority(9);
    const Plan add = plan(from, to), remove = plan(from, to, PlanOrder::kRemoveFirst);
    expectWorks(add, from, to);
    expectWorks(remove, from, to);
    EXPECT_EQ(add.steps.size(), remove.steps.size());
    expectAddedFirst(add, from, to);
    EXPECT_LE(mostEntries(remove, from, to), std::max(a.entries.size(), b.entries.size()))
        << shown(remove, from, to);
    if (HasFailure()) return;
  }
}

TEST(Plan, SaysWhyThereIsNone) {
  const auto expectWhy = [](const FiltersGroup& from, const FiltersGroup& to, Code code) {
    const Plan none = plan(from, to);
    EXPECT_FALSE(none.possible);
    EXPECT_TRUE(none.steps.empty());
    ASSERT_EQ(none.report.findings.size(), 1u) << none.report;
    EXPECT_EQ(none.report.findings[0].code, code);
    EXPECT_EQ(none.report.worst(), Severity::kError);
  };
  expectWhy(FiltersGroup(1), FiltersGroup(2), Code::kNoPlan);
  expectWhy(groupOf(kNoStage, 0), groupOf(kLookup, 3), Code::kTypeNotAdmitted);
  expectWhy(groupOf(kNoStage, 0), groupOf(kUnknown, 3), Code::kStageUnknown);
  expectWhy(groupOf(kUnknown, kUnknown), groupOf(kNoStage, 3),
            Code::kTypeNotAdmitted);  // the group refuses every setter
  expectWhy(made({{kNoStage, 3}, {}}), made({{kNoStage, 3}, {{7, {{FILTERS_MATCH_VRF_ID}, {}}}}}),
            Code::kMatchNotAdmitted);
}

TEST(Apply, StopsAtTheFirstRefusal) {
  const FiltersGroup to = made({{kIngress, 3}, {{7, {{FILTERS_MATCH_TTL}, {}}}}});
  const auto applied = [&](const std::vector<Step>& steps, std::size_t held) {
    FiltersGroup group = made({{2, 3}, {}});
    const filtersErr_t result = apply(steps, to, &group);
    EXPECT_EQ(group.getEntriesRef().size(), held);
    return result;
  };
  using Kind = Step::Kind;
  const Step insert{Kind::kInsert, 7};
  EXPECT_EQ(applied({{Kind::kSetType, 0, 4}, insert}, 0), FILTERS_ERR_TYPE_NOT_ALLOWED);
  EXPECT_EQ(applied({insert, {Kind::kRemove, 8}}, 1), FILTERS_ERR_NOT_FOUND);
  EXPECT_EQ(applied({{Kind::kInsert, 8}, insert}, 0), FILTERS_ERR_NOT_FOUND);
  EXPECT_EQ(toText(Step{Kind::kInsert, 8}, to), "insert entry 8");
  EXPECT_EQ(toText(Step{Kind::kSetPriority, 0, 9}, to), "set-priority 9");
  EXPECT_EQ(applied({{Kind::kSetPriority, 0, 65536}}, 0), FILTERS_ERR_INVALID_ARGUMENT);
  EXPECT_EQ(applied({{Kind(5)}}, 0), FILTERS_ERR_INVALID_ARGUMENT);
}

}  // namespace
