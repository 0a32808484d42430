#ifndef FILTER_INSPECT_SRC_RULES_H_
#define FILTER_INSPECT_SRC_RULES_H_

// The rules of groups as sets of one space, in the order in which they are gone through.

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <map>
#include <string>
#include <vector>

#include <filter_common/filter_entries.pb.h>
#include <filter_inspect/filter_analysis.h>

#include "limited_report.h"
#include "readings.h"
#include "space.h"

namespace FiltersInspect {

// Smaller comes first.
std::uint32_t rankOf(Order order, FiltersCommon::filtersEntryId_t id,
                     FiltersCommon::filtersEntryPriority_t priority);

struct Rule {
  FiltersCommon::filtersEntryId_t id;
  FiltersCommon::filtersEntryPriority_t priority;
  SetId must, may;          // what it takes under every reading, under some
  std::uint32_t matches;    // the same number: the same matches, of whatever group
  std::uint32_t treatment;  // the same number: the same actions, policer and parent
  // Positions: those before `ranks_begin` come before it, those from `ranks_end` on after it.
  std::uint32_t ranks_begin, ranks_end;
};

// Of up to two groups.
class Rules {
 public:
  Rules(std::initializer_list<const FiltersCommon::FiltersGroup*> groups, Order order);
  const Space& space() const { return space_; }
  const std::vector<Rule>& of(std::size_t group) const { return rules_[group]; }
  // By positions.
  Hulls hullsOf(std::size_t group, SetId Rule::*set, std::uint64_t max_looks) const;
 private:
  void read(const FiltersCommon::FiltersGroup& group, Order order);
  void addSets();

  Space space_{spaceFields()};
  std::vector<std::vector<Rule>> rules_;
  std::vector<std::vector<Asked>> asked_;  // of each rule, until there are sets
  std::map<std::string, std::uint32_t> matches_, treatments_;
};

// A packet of a space.
Packet packetOf(const Space& space, const Point& point);

// What Packet keeps to itself.
struct PacketFields {
  static auto& of(Packet& packet) { return packet.fields_; }
  static const auto& of(const Packet& packet) { return packet.fields_; }
};

// A report about entries of a group, of at most so many findings.
class EntryFindings {
 public:
  EntryFindings(FiltersCommon::filtersGroupId_t group, std::size_t most)
      : group_(group), report_(most) {}
  // Whether one more is kept: then add() is to follow, else it has been counted.
  bool room(Code code) { return report_.takes(severityOf(code)); }
  Finding& add(Code code, std::optional<FiltersCommon::filtersEntryId_t> entry);
  void addOddities(const FiltersCommon::FiltersEntry& entry);
  Report take() { return report_.take(); }
 private:
  FiltersCommon::filtersGroupId_t group_;
  LimitedReport report_;
};

// How many ranges are looked at to find which rules meet, where one rule may take so many steps.
std::uint64_t looksFor(std::uint64_t max_steps);

// Cuts of many rules: each may take so many steps, and all together twenty times as many.
class Cuts {
 public:
  Cuts(const Space& space, std::uint64_t max_steps);
  // As Cut::run(), quick; of one set where both are the same.
  Cut::Outcome run(SetId a, SetId b, std::vector<Candidate>* candidates,
                   Cut::Watcher* watcher = nullptr) {
    return runFor(of_one_, a, b, candidates, true, watcher);
  }
  // Within hardly any steps.
  Cut::Outcome runShortly(SetId a, SetId b, std::vector<Candidate>* candidates);
  // Not quick: the watcher hears of everything.
  Cut::Outcome runThrough(SetId set, std::vector<Candidate>* candidates, Cut::Watcher* watcher) {
    return runFor(of_one_, set, set, candidates, false, watcher);
  }
 private:
  Cut::Outcome runFor(std::uint64_t steps, SetId a, SetId b, std::vector<Candidate>* candidates,
                      bool quick, Cut::Watcher* watcher);
  Cut cut_;
  std::uint64_t of_one_, of_all_;
};

// Calls the progress function, if there is one.
void tell(const AnalysisOptions& options, std::size_t done, std::size_t all);

// "entry 10", "entries 10, 20 and 30", "entries 1, 2, 3, 4 and 60 more".
std::string entriesText(const std::vector<std::uint32_t>& ids);

}  // namespace FiltersInspect

#endif  // FILTER_INSPECT_SRC_RULES_H_
