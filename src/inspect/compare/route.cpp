#include "route.h"

#include <algorithm>
#include <limits>

namespace FiltersInspect {

using namespace FiltersCommon;

namespace {

// Stages take the lower half of the bits, types the upper.
constexpr unsigned kHalf = 32;

template <class Code>
Places bitOf(Code code, unsigned start) {
  const auto value = static_cast<std::uint32_t>(code);
  return Places{1} << (start + std::min(value, kHalf - 1));
}
Places bitOf(filtersGroupStage_t stage) { return bitOf(stage, 0); }
Places bitOf(filtersGroupType_t type) { return bitOf(type, kHalf); }

// Every stage and type that a group may have together.
std::vector<Stop> allStops() {
  std::vector<Stop> stops;
  for (const auto& [stage, types] : FiltersGroup::StageTypesDescription_) {
    for (const filtersGroupType_t type : types) {
      stops.push_back({{stage, type}, placesOf(Head{stage, type}), 0});
    }
  }
  return stops;
}

// What can still be of the entries of a kind without loss: the old version is still held, or the
// new one is, having replaced it.
using Fate = std::uint8_t;
constexpr Fate kOld = 1, kNew = 2;

Fate fateAt(const Stop& stop, const Kind& kind, Fate fate) {
  if (!contains(kind.before, stop.set)) fate &= static_cast<Fate>(~kOld);
  if (!contains(kind.after, stop.set)) fate &= static_cast<Fate>(~kNew);
  if (!kind.same && (fate & kOld) != 0 && contains(kind.after, stop.places)) fate |= kNew;
  return fate;
}

// Walks through the stages and types, short routes first, never twice through one: who can take a
// roundabout way can take it without the loop, an entry that comes in within it being admitted
// where it closes. A walk ends where it has cost as much as the best that is known.
class Search {
 public:
  Search(const Head& from, const Head& to, Places allowed)
      : goal_(placesOf(to)), allowed_(allowed), stops_(allStops()), visited_(stops_.size()) {
    route_.push_back({from, placesOf(from), 0});
    for (std::size_t i = 0; i < stops_.size(); ++i) {
      visited_[i] = stops_[i].places == route_[0].places;
    }
  }

  Found run(const std::vector<Kind>& kinds) {
    if (!canKeep({allowed_, allowed_, true, 0})) return {};
    std::vector<Fate> fates;
    for (const Kind& kind : kinds) {
      if (!canKeep(kind)) continue;
      kinds_.push_back(kind);
      fates.push_back(fateAt(route_[0], kind, kOld));
    }
    for (limit_ = 1; limit_ <= stops_.size() && limit_ < cost_ && !outOfWork(); ++limit_) {
      extend(fates, 0);
    }
    return {best_, !outOfWork()};
  }
 private:
  // Some tens of milliseconds. Only a search that has found a route stops.
  static constexpr std::uint64_t kMaxWork = 1 << 23;
  bool outOfWork() const { return work_ > kMaxWork && !best_.empty(); }

  // Whether any route at all spares the kind its loss: those that none spares decide nothing.
  bool canKeep(const Kind& kind) const {
    const Fate start = fateAt(route_[0], kind, kOld);
    std::vector<Fate> reached(stops_.size());
    for (bool more = true; more;) {
      more = false;
      for (std::size_t i = 0; i < stops_.size(); ++i) {
        Fate fate = reached[i];
        const auto from = [&](const Stop& stop, Fate its) {
          if ((stop.places & stops_[i].places) == 0) return;
          fate |= fateAt(by(stop, stops_[i]), kind, its);
        };
        from(route_[0], start);
        for (std::size_t j = 0; j < stops_.size(); ++j) from(stops_[j], reached[j]);
        more = more || fate != reached[i];
        reached[i] = fate;
        if (fate != 0 && stops_[i].places == goal_) return true;
      }
    }
    return false;
  }

  // The next stop, as it is when it is reached from this one.
  static Stop by(const Stop& stop, const Stop& next) {
    return {next.head, next.places, next.places & ~stop.places};
  }

  // At least so many setters are still to come.
  std::uint64_t distance(const Stop& stop) const {
    const Places same = stop.places & goal_;
    return same == goal_ ? 0 : same == 0 ? 2 : 1;
  }

  void extend(const std::vector<Fate>& fates, std::uint64_t lost) {
    const Stop here = route_.back();
    const std::size_t setters = route_.size() - 1;
    if (here.places == goal_) {
      if (setters != limit_) return;  // found before
      best_ = route_;
      cost_ = setters + lost;
      return;
    }
    for (std::size_t i = 0; i < stops_.size() && !outOfWork(); ++i) {
      if (visited_[i] || (stops_[i].places & here.places) == 0) continue;
      const Stop next = by(here, stops_[i]);
      if (!contains(allowed_, next.set)) continue;
      const std::uint64_t least = setters + 1 + distance(next);
      if (least > limit_ || least + lost >= cost_) continue;
      go(i, next, fates, lost, least);
    }
  }

  void go(std::size_t i, const Stop& next, const std::vector<Fate>& fates, std::uint64_t lost,
          std::uint64_t least) {
    work_ += kinds_.size() + 1;
    std::vector<Fate> then(fates);
    for (std::size_t k = 0; k < kinds_.size(); ++k) {
      if (fates[k] == 0) continue;
      then[k] = fateAt(next, kinds_[k], fates[k]);
      if (then[k] == 0) lost += kinds_[k].loss;
    }
    if (least + lost >= cost_) return;
    visited_[i] = true;
    route_.push_back(next);
    extend(then, lost);
    route_.pop_back();
    visited_[i] = false;
  }

  const Places goal_;
  const Places allowed_;
  std::vector<Kind> kinds_;
  const std::vector<Stop> stops_;
  std::vector<bool> visited_;
  Route route_;
  std::size_t limit_ = 0;
  std::uint64_t work_ = 0;
  Route best_;
  std::uint64_t cost_ = std::numeric_limits<std::uint64_t>::max();
};

}  // namespace

Places placesOf(const Head& head) { return bitOf(head.stage) | bitOf(head.type); }

Places placesOf(const FiltersEntry& entry) {
  static const FiltersGroup checks(0);  // members of a group, which look at their arguments alone
  Places places = 0;
  for (const auto& row : FiltersGroup::StageActionsDescription_) {
    if (checks.groupActionValidation(entry, row.first) == FILTERS_OK &&
        checks.groupPolicerValidation(entry.getPolicer(), row.first) == FILTERS_OK) {
      places |= bitOf(row.first);
    }
  }
  for (const auto& row : FiltersGroup::TypeDescription_) {
    if (checks.groupMatchValidation(entry, row.first) == FILTERS_OK) places |= bitOf(row.first);
  }
  return places;
}

std::size_t lastStop(const Route& route, Places places) {
  std::size_t stop = 0;
  while (stop + 1 < route.size() && contains(places, route[stop + 1].set)) ++stop;
  return stop;
}

std::size_t firstStop(const Route& route, Places places) {
  std::size_t stop = route.size() - 1;
  while (stop > 0 && contains(places, route[stop - 1].places)) --stop;
  return stop;
}

Found findRoute(const Head& from, const Head& to, Places allowed, const std::vector<Kind>& kinds) {
  if (from == to) return {{{from, placesOf(from), 0}}};
  return Search(from, to, allowed).run(kinds);
}

}  // namespace FiltersInspect
