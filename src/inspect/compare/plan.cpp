#include <filter_inspect/filter_diff.h>

#include <algorithm>
#include <map>
#include <string>
#include <tuple>
#include <utility>

#include <filter_inspect/filter_explain.h>
#include <filter_inspect/filter_head.h>
#include <filter_inspect/filter_text.h>

#include "catalogue/name_or_number.h"
#include "route.h"
#include "side_by_side.h"

namespace FiltersInspect {

using namespace FiltersCommon;

namespace {

// The entries with one id in the two groups, each null if its group has none, and the stages and
// types that admit each of them.
struct Pair {
  const FiltersEntry* before;
  const FiltersEntry* after;
  bool same;
  StageTypeSet admits_before = 0, admits_after = 0;
};

// The entries that a plan must consider: the entries that differ, or all entries if the stage or
// the type changes.
std::vector<Pair> pairsOf(const FiltersGroup& from, const FiltersGroup& to) {
  const bool moves = !(stageAndTypeOf(from) == stageAndTypeOf(to));
  std::vector<Pair> pairs;
  forEachOfBoth(
      from.getEntriesRef(), to.getEntriesRef(), [](const auto& held) { return held.first; },
      [&](const auto* a, const auto* b) {
        const bool same = a != nullptr && b != nullptr && a->second == b->second;
        if (same && !moves) return;
        Pair pair{a ? &a->second : nullptr, b ? &b->second : nullptr, same};
        if (b != nullptr) pair.admits_after = stageTypeSetOf(*pair.after);
        if (moves && a != nullptr) {
          pair.admits_before = same ? pair.admits_after : stageTypeSetOf(*pair.before);
        }
        pairs.push_back(pair);
      });
  return pairs;
}

// The entries that a good route does not remove. They can stay, or be replaced in one step.
std::vector<EntryKind> kindsOf(const std::vector<Pair>& pairs) {
  std::map<std::tuple<StageTypeSet, StageTypeSet, bool>, std::uint64_t> losses;
  for (const Pair& pair : pairs) {
    if (pair.before == nullptr || pair.after == nullptr) continue;
    losses[{pair.admits_before, pair.admits_after, pair.same}] += pair.same ? 2 : 1;
  }
  std::vector<EntryKind> kinds;
  for (const auto& [key, loss] : losses) {
    const auto& [before, after, same] = key;
    kinds.push_back({before, after, same, loss});
  }
  return kinds;
}

// The steps between two setters. The order of the plan decides if removals or insertions come
// first.
struct StepsAtWaypoint {
  std::vector<Step> removals, insertions;
};

// Decides when each entry is removed and inserted.
std::vector<StepsAtWaypoint> scheduleOf(const std::vector<Pair>& pairs, const Route& route,
                                        PlanOrder order) {
  std::vector<StepsAtWaypoint> schedule(route.size());
  const auto remove = [&](std::size_t waypoint, const FiltersEntry& entry) {
    schedule[waypoint].removals.push_back({Step::Kind::kRemove, entry.getId()});
  };
  const auto insert = [&](std::size_t waypoint, const FiltersEntry& entry) {
    schedule[waypoint].insertions.push_back({Step::Kind::kInsert, entry.getId()});
  };
  const bool early = order == PlanOrder::kAddFirst;
  for (const Pair& pair : pairs) {
    const std::size_t last = lastWaypoint(route, pair.admits_before);
    const std::size_t first = firstWaypoint(route, pair.admits_after);
    if (pair.after == nullptr) {
      remove(early ? last : 0, *pair.before);
    } else if (pair.before == nullptr) {
      insert(early ? first : route.size() - 1, *pair.after);
    } else if (pair.same && last + 1 == route.size()) {
      continue;
    } else {
      if (pair.same || last < first) remove(last, *pair.before);
      insert(first, *pair.after);
    }
  }
  return schedule;
}

Step setterTo(const StageAndType& from, const StageAndType& to) {
  if (from.stage != to.stage) return {Step::Kind::kSetStage, 0, to.stage};
  return {Step::Kind::kSetType, 0, to.type};
}

void addSteps(const std::vector<StepsAtWaypoint>& schedule, const Route& route, PlanOrder order,
              std::vector<Step>* steps) {
  for (std::size_t i = 0; i < route.size(); ++i) {
    if (i > 0) steps->push_back(setterTo(route[i - 1].place, route[i].place));
    const auto& [removals, insertions] = schedule[i];
    const bool addFirst = order == PlanOrder::kAddFirst;
    const auto& first = addFirst ? insertions : removals;
    const auto& second = addFirst ? removals : insertions;
    steps->insert(steps->end(), first.begin(), first.end());
    steps->insert(steps->end(), second.begin(), second.end());
  }
}

void append(Report more, Report* report) {
  for (Finding& finding : more.findings) report->findings.push_back(std::move(finding));
}

filtersErr_t take(const Step& step, const FiltersGroup& to, FiltersGroup* group) {
  switch (step.kind) {
    case Step::Kind::kRemove:
      return group->removeEntry(step.entry);
    case Step::Kind::kInsert: {
      const auto held = to.getEntriesRef().find(step.entry);
      if (held == to.getEntriesRef().end()) return FILTERS_ERR_NOT_FOUND;
      return group->insertEntry(held->second);
    }
    case Step::Kind::kSetPriority: {
      const auto priority = static_cast<filtersGroupPriority_t>(step.value);
      if (priority != step.value) return FILTERS_ERR_INVALID_ARGUMENT;
      group->setPriority(priority);
      return FILTERS_OK;
    }
    case Step::Kind::kSetStage:
      return group->setStage(static_cast<filtersGroupStage_t>(step.value));
    case Step::Kind::kSetType:
      return group->setType(static_cast<filtersGroupType_t>(step.value));
  }
  return FILTERS_ERR_INVALID_ARGUMENT;
}

// True for an entry that the target group holds although insertEntry() would refuse it there. Such
// an entry can stay in the group, but cannot be inserted.
bool isStray(const Pair& pair, StageTypeSet goal) {
  return pair.after != nullptr && !contains(pair.admits_after, goal);
}

// Reports why the target cannot be reached.
Report refusalsOf(const FiltersGroup& from, const FiltersGroup& to,
                  const std::vector<Pair>& pairs) {
  Report report;
  if (!(stageAndTypeOf(from) == stageAndTypeOf(to))) {
    append(explainStage(emptyGroup(headOf(to)), to.getStage()), &report);
    // If the target's stage and type are valid, the reason is that every setter refuses to change
    // the stage and type of `from`.
    if (report.empty() &&
        findRoute(stageAndTypeOf(from), stageAndTypeOf(to), ~StageTypeSet{0}, {}).route.empty()) {
      append(explainStage(emptyGroup(headOf(from)), to.getStage()), &report);
    }
  }
  for (const Pair& pair : pairs) {
    if (isStray(pair, stageTypeSetOf(stageAndTypeOf(to))))
      append(explainInsert(to, *pair.after), &report);
  }
  return report;
}

// Finds the route. An entry that could not be inserted again must stay in the group at all
// waypoints. If one of these entries cannot stay, there is no route.
FoundRoute routeOf(const FiltersGroup& from, const FiltersGroup& to,
                   const std::vector<Pair>& pairs) {
  StageTypeSet allowed = ~StageTypeSet{0};
  for (const Pair& pair : pairs) {
    if (!isStray(pair, stageTypeSetOf(stageAndTypeOf(to)))) continue;
    if (!pair.same) return {};
    allowed &= pair.admits_after;
  }
  return findRoute(stageAndTypeOf(from), stageAndTypeOf(to), allowed, kindsOf(pairs));
}

// A plan whose steps have not been tried yet.
Plan draft(const FiltersGroup& from, const FiltersGroup& to, PlanOrder order) {
  const std::vector<Pair> pairs = pairsOf(from, to);
  const FoundRoute found = routeOf(from, to, pairs);
  if (found.route.empty()) return {false, false, {}, refusalsOf(from, to, pairs)};
  Plan plan{true, found.best, {}, {}};
  if (from.getPriority() != to.getPriority()) {
    plan.steps.push_back({Step::Kind::kSetPriority, 0, to.getPriority()});
  }
  addSteps(scheduleOf(pairs, found.route, order), found.route, order, &plan.steps);
  return plan;
}

}  // namespace

Plan plan(const FiltersGroup& from, const FiltersGroup& to, PlanOrder order) {
  if (from.getId() != to.getId()) {
    Report report = diff(FiltersGroup(from.getId()), FiltersGroup(to.getId()));
    Finding& why = report.findings.front();
    why.code = Code::kNoPlan;
    why.severity = severityOf(why.code);
    why.message = "the groups have the ids " + std::to_string(from.getId()) + " and " +
                  std::to_string(to.getId()) + ", and no setter changes an id: there is no plan";
    return {false, false, {}, std::move(report)};
  }
  Plan plan = draft(from, to, order);
  if (!plan.possible) return plan;
  FiltersGroup reached(from);
  if (apply(plan.steps, to, &reached) == FILTERS_OK && reached == to) return plan;
  return {false, false, {}, diff(reached, to)};
}

std::string toText(const Step& step, const FiltersGroup& to) {
  switch (step.kind) {
    case Step::Kind::kRemove:
      return "remove entry " + std::to_string(step.entry);
    case Step::Kind::kInsert: {
      const auto held = to.getEntriesRef().find(step.entry);
      if (held != to.getEntriesRef().end()) return "insert " + toText(held->second);
      return "insert entry " + std::to_string(step.entry);
    }
    case Step::Kind::kSetPriority:
      return "set-priority " + std::to_string(step.value);
    case Step::Kind::kSetStage:
      return "set-stage " + nameOrNumber(static_cast<filtersGroupStage_t>(step.value));
    case Step::Kind::kSetType:
      return "set-type " + nameOrNumber(static_cast<filtersGroupType_t>(step.value));
  }
  return {};
}

filtersErr_t apply(const std::vector<Step>& steps, const FiltersGroup& to, FiltersGroup* group) {
  for (const Step& step : steps) {
    const filtersErr_t result = take(step, to, group);
    if (result != FILTERS_OK) return result;
  }
  return FILTERS_OK;
}

}  // namespace FiltersInspect
