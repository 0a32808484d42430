#ifndef FILTER_INSPECT_SRC_COMPARE_ROUTE_H_
#define FILTER_INSPECT_SRC_COMPARE_ROUTE_H_

// Which setters lead from one stage and type to others, and what they cost the entries held.

#include <cstddef>
#include <cstdint>
#include <vector>

#include <filter_common/filter_groups.h>

namespace FiltersInspect {

// A set of stages and types. Those that the library does not know share a bit each, which admits
// nothing.
using Places = std::uint64_t;

struct Head {
  FiltersCommon::filtersGroupStage_t stage;
  FiltersCommon::filtersGroupType_t type;
};
inline Head headOf(const FiltersCommon::FiltersGroup& group) {
  return {group.getStage(), group.getType()};
}
inline bool operator==(const Head& a, const Head& b) {
  return a.stage == b.stage && a.type == b.type;
}

Places placesOf(const Head& head);
// The stages that admit the entry's actions and policer, the types that admit its matches.
Places placesOf(const FiltersCommon::FiltersEntry& entry);
// Whether all of `these` are among `places`: insertEntry() admits an entry where its places contain
// the head's, and a setter lets it stay where they contain the new stage or type.
inline bool contains(Places places, Places these) { return (places & these) == these; }

// A stage and type that a group has after a setter, and before the next.
struct Stop {
  Head head;
  Places places;  // of the head
  Places set;     // the one that the setter before changed; none of the first stop
};
// The first is where the group is, the last where it shall be.
using Route = std::vector<Stop>;

// The last stop up to which an entry that is held from the start on can stay; the first from which
// on an entry can be held that the last stop admits.
std::size_t lastStop(const Route& route, Places places);
std::size_t firstStop(const Route& route, Places places);

// Entries that fare alike: they are there at the start in a version that `before` admits, and at
// the end in one that `after` admits.
struct Kind {
  Places before, after;
  bool same;           // one version: it can stay, or be removed and inserted
  std::uint64_t loss;  // how many steps more where they cannot stay until they are replaced
};

struct Found {
  Route route;       // empty when there is none
  bool best = true;  // whether every other has been shown to cost as much
};
// The route of the fewest steps. Every setter of it changes to one of `allowed`.
Found findRoute(const Head& from, const Head& to, Places allowed, const std::vector<Kind>& kinds);

}  // namespace FiltersInspect

#endif  // FILTER_INSPECT_SRC_COMPARE_ROUTE_H_
