#include "route.h"

#include <algorithm>
#include <limits>

namespace FiltersInspect {

using namespace FiltersCommon;

namespace {

// Stages use the lower half of the bits, types the upper half.
constexpr unsigned kHalf = 32;

template <class Code>
StageTypeSet bitOf(Code code, unsigned start) {
  const auto value = static_cast<std::uint32_t>(code);
  return StageTypeSet{1} << (start + std::min(value, kHalf - 1));
}
StageTypeSet bitOf(filtersGroupStage_t stage) { return bitOf(stage, 0); }
StageTypeSet bitOf(filtersGroupType_t type) { return bitOf(type, kHalf); }

// Every pair of a stage and a type that a group may have.
std::vector<Waypoint> allWaypoints() {
  std::vector<Waypoint> waypoints;
  for (const auto& [stage, types] : FiltersGroup::StageTypesDescription_) {
    for (const filtersGroupType_t type : types) {
      waypoints.push_back({{stage, type}, stageTypeSetOf(StageAndType{stage, type}), 0});
    }
  }
  return waypoints;
}

// The versions of an entry that the group can still hold: the old version, or the new version that
// has replaced it.
using HeldVersions = std::uint8_t;
constexpr HeldVersions kOld = 1, kNew = 2;

HeldVersions heldAt(const Waypoint& waypoint, const EntryKind& kind, HeldVersions held) {
  if (!contains(kind.before, waypoint.changed)) held &= static_cast<HeldVersions>(~kOld);
  if (!contains(kind.after, waypoint.changed)) held &= static_cast<HeldVersions>(~kNew);
  if (!kind.same && (held & kOld) != 0 && contains(kind.after, waypoint.bits)) held |= kNew;
  return held;
}

// Tries sequences of stages and types, short ones first. A pair of stage and type is never twice in
// a sequence, because such a loop never saves steps: an entry that can be inserted inside a loop
// can also be inserted at its end. The search drops a sequence as soon as it costs as much as the
// best one known.
class RouteSearch {
 public:
  RouteSearch(const StageAndType& from, const StageAndType& to, StageTypeSet allowed)
      : goal_(stageTypeSetOf(to)),
        allowed_(allowed),
        waypoints_(allWaypoints()),
        visited_(waypoints_.size()) {
    route_.push_back({from, stageTypeSetOf(from), 0});
    for (std::size_t i = 0; i < waypoints_.size(); ++i) {
      visited_[i] = waypoints_[i].bits == route_[0].bits;
    }
  }

  FoundRoute run(const std::vector<EntryKind>& kinds) {
    if (!canKeep({allowed_, allowed_, true, 0})) return {};
    std::vector<HeldVersions> held;
    for (const EntryKind& kind : kinds) {
      if (!canKeep(kind)) continue;
      kinds_.push_back(kind);
      held.push_back(heldAt(route_[0], kind, kOld));
    }
    for (limit_ = 1; limit_ <= waypoints_.size() && limit_ < cost_ && !outOfWork(); ++limit_) {
      extend(held, 0);
    }
    return {best_, !outOfWork()};
  }
 private:
  // This much work takes some tens of milliseconds. If no route is known after this work, the
  // search continues until it finds a route.
  static constexpr std::uint64_t kMaxWork = 1 << 23;
  bool outOfWork() const { return work_ > kMaxWork && !best_.empty(); }

  // True if some route keeps the entries of this kind. Entries that no route keeps do not matter
  // when a route is chosen.
  bool canKeep(const EntryKind& kind) const {
    const HeldVersions start = heldAt(route_[0], kind, kOld);
    std::vector<HeldVersions> reached(waypoints_.size());
    for (bool more = true; more;) {
      more = false;
      for (std::size_t i = 0; i < waypoints_.size(); ++i) {
        HeldVersions held = reached[i];
        const auto from = [&](const Waypoint& waypoint, HeldVersions its) {
          if ((waypoint.bits & waypoints_[i].bits) == 0) return;
          held |= heldAt(by(waypoint, waypoints_[i]), kind, its);
        };
        from(route_[0], start);
        for (std::size_t j = 0; j < waypoints_.size(); ++j) from(waypoints_[j], reached[j]);
        more = more || held != reached[i];
        reached[i] = held;
        if (held != 0 && waypoints_[i].bits == goal_) return true;
      }
    }
    return false;
  }

  // Returns `next`, with `changed` set to the parts that the setter changes between `waypoint` and
  // `next`.
  static Waypoint by(const Waypoint& waypoint, const Waypoint& next) {
    return {next.place, next.bits, next.bits & ~waypoint.bits};
  }

  // The smallest number of setters that are still needed.
  std::uint64_t distance(const Waypoint& waypoint) const {
    const StageTypeSet same = waypoint.bits & goal_;
    return same == goal_ ? 0 : same == 0 ? 2 : 1;
  }

  void extend(const std::vector<HeldVersions>& held, std::uint64_t lost) {
    const Waypoint here = route_.back();
    const std::size_t setters = route_.size() - 1;
    if (here.bits == goal_) {
      if (setters != limit_) return;  // a shorter search has found it
      best_ = route_;
      cost_ = setters + lost;
      return;
    }
    for (std::size_t i = 0; i < waypoints_.size() && !outOfWork(); ++i) {
      if (visited_[i] || (waypoints_[i].bits & here.bits) == 0) continue;
      const Waypoint next = by(here, waypoints_[i]);
      if (!contains(allowed_, next.changed)) continue;
      const std::uint64_t least = setters + 1 + distance(next);
      if (least > limit_ || least + lost >= cost_) continue;
      go(i, next, held, lost, least);
    }
  }

  void go(std::size_t i, const Waypoint& next, const std::vector<HeldVersions>& held,
          std::uint64_t lost, std::uint64_t least) {
    work_ += kinds_.size() + 1;
    std::vector<HeldVersions> then(held);
    for (std::size_t k = 0; k < kinds_.size(); ++k) {
      if (held[k] == 0) continue;
      then[k] = heldAt(next, kinds_[k], held[k]);
      if (then[k] == 0) lost += kinds_[k].loss;
    }
    if (least + lost >= cost_) return;
    visited_[i] = true;
    route_.push_back(next);
    extend(then, lost);
    route_.pop_back();
    visited_[i] = false;
  }

  const StageTypeSet goal_;
  const StageTypeSet allowed_;
  std::vector<EntryKind> kinds_;
  const std::vector<Waypoint> waypoints_;
  std::vector<bool> visited_;
  Route route_;
  std::size_t limit_ = 0;
  std::uint64_t work_ = 0;
  Route best_;
  std::uint64_t cost_ = std::numeric_limits<std::uint64_t>::max();
};

}  // namespace

StageTypeSet stageTypeSetOf(const StageAndType& place) {
  return bitOf(place.stage) | bitOf(place.type);
}

StageTypeSet stageTypeSetOf(const FiltersEntry& entry) {
  static const FiltersGroup checks(0);  // its checks use only their arguments, not the group
  StageTypeSet admitting = 0;
  for (const auto& row : FiltersGroup::StageActionsDescription_) {
    if (checks.groupActionValidation(entry, row.first) == FILTERS_OK &&
        checks.groupPolicerValidation(entry.getPolicer(), row.first) == FILTERS_OK) {
      admitting |= bitOf(row.first);
    }
  }
  for (const auto& row : FiltersGroup::TypeDescription_) {
    if (checks.groupMatchValidation(entry, row.first) == FILTERS_OK) admitting |= bitOf(row.first);
  }
  return admitting;
}

std::size_t lastWaypoint(const Route& route, StageTypeSet admitting) {
  std::size_t waypoint = 0;
  while (waypoint + 1 < route.size() && contains(admitting, route[waypoint + 1].changed))
    ++waypoint;
  return waypoint;
}

std::size_t firstWaypoint(const Route& route, StageTypeSet admitting) {
  std::size_t waypoint = route.size() - 1;
  while (waypoint > 0 && contains(admitting, route[waypoint - 1].bits)) --waypoint;
  return waypoint;
}

FoundRoute findRoute(const StageAndType& from, const StageAndType& to, StageTypeSet allowed,
                     const std::vector<EntryKind>& kinds) {
  if (from == to) return {{{from, stageTypeSetOf(from), 0}}};
  return RouteSearch(from, to, allowed).run(kinds);
}

}  // namespace FiltersInspect
