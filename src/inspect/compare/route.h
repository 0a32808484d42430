#ifndef FILTER_INSPECT_SRC_COMPARE_ROUTE_H_
#define FILTER_INSPECT_SRC_COMPARE_ROUTE_H_

// Finds the setters that lead from one stage and type to another stage and type. Also finds the
// further steps that these setters cost, because the group loses entries under the stages and types
// in between.

#include <cstddef>
#include <cstdint>
#include <vector>

#include <filter_common/filter_groups.h>

namespace FiltersInspect {

// A set of stages and types. All unknown stages share one bit, and all unknown types share another
// bit. No entry is admitted under these two bits.
using StageTypeSet = std::uint64_t;

struct StageAndType {
  FiltersCommon::filtersGroupStage_t stage;
  FiltersCommon::filtersGroupType_t type;
};
inline StageAndType stageAndTypeOf(const FiltersCommon::FiltersGroup& group) {
  return {group.getStage(), group.getType()};
}
inline bool operator==(const StageAndType& a, const StageAndType& b) {
  return a.stage == b.stage && a.type == b.type;
}

StageTypeSet stageTypeSetOf(const StageAndType& place);
// The stages that admit the entry's actions and policer, and the types that admit its matches.
StageTypeSet stageTypeSetOf(const FiltersCommon::FiltersEntry& entry);
// True if `all` has all of `these`. insertEntry() admits an entry if the entry's set contains the
// group's stage and type. A setter lets an entry stay if the entry's set contains the new stage or
// type.
inline bool contains(StageTypeSet all, StageTypeSet these) { return (all & these) == these; }

// A stage and type of the group between two setters.
struct Waypoint {
  StageAndType place;
  StageTypeSet bits;     // the stage and the type as bits
  StageTypeSet changed;  // the stage or type that the last setter changed; empty at first
};
// The first waypoint is the group's own stage and type, and the last waypoint is the target's.
using Route = std::vector<Waypoint>;

// These functions are for an entry that the stages and types in `admitting` admit. If the group
// holds the entry from the start, the entry can stay up to the waypoint lastWaypoint(). If the
// entry is inserted at the waypoint firstWaypoint() or later, it can stay until the end.
std::size_t lastWaypoint(const Route& route, StageTypeSet admitting);
std::size_t firstWaypoint(const Route& route, StageTypeSet admitting);

// A kind of entries: every route treats these entries in the same way. Each entry has a version at
// the start and a version at the end.
struct EntryKind {
  StageTypeSet before, after;  // what admits the first version, and the last one
  bool same;                   // both versions are equal: an entry that can stay needs no step
  std::uint64_t loss;          // additional steps if the entries must be removed on the way
};

struct FoundRoute {
  Route route;       // empty if there is none
  bool best = true;  // true if it is certain that no other route costs less
};
// Finds the route with the fewest steps. The setters of the route set only stages and types that
// are in `allowed`.
FoundRoute findRoute(const StageAndType& from, const StageAndType& to, StageTypeSet allowed,
                     const std::vector<EntryKind>& kinds);

}  // namespace FiltersInspect

#endif  // FILTER_INSPECT_SRC_COMPARE_ROUTE_H_
