#include <algorithm>
#include <map>
#include <utility>

#include <filter_inspect/filter_questions.h>

#include "analysis/entry_findings.h"
#include "analysis/limited_cuts.h"
#include "analysis/packet_shapes.h"
#include "analysis/points.h"
#include "analysis/rules.h"
#include "analysis/witness.h"
#include "packet_set.h"
#include "part_sets.h"

namespace FiltersInspect {
namespace {

using namespace FiltersCommon;

constexpr unsigned kTries = 6;  // packets that are looked at before a cut
constexpr char kNotSure[] = "whether it surely takes one takes too many steps to say";

// Looks among the first parts that a cut leaves for a packet that can be real.
struct FirstParts : Cut::Watcher {
  explicit FirstParts(const RuleSpace& space) : witness(space) {}
  bool left(const Cut& cut) override {
    witness.consider(cut);
    return --looks_left_ != 0 && !witness.isGood();
  }
  Witness witness;
 private:
  int looks_left_ = 4;
};

// Finds the rules of a group that take packets of a set. Rules are named by their positions.
class Search {
 public:
  Search(const FiltersGroup& group, const PacketSet& packets, Order order,
         const AnalysisOptions& options)
      : group_(group),
        order_(order),
        progress_(options),
        all_({&group}, order, {PacketSetFields::of(packets)}),
        rules_(all_.of(0)),
        space_(all_.space()),
        set_(space_.set(0)),
        met_by_(all_.meetingsOf(0, looksFor(options.max_steps))),
        cuts_(space_.space(), options.max_steps, rules_.size(), &progress_),
        points_(space_.space()),
        is_met_(rules_.size()),
        taken_by_(rules_.size(), kNothing) {
    met_by_.meeting(set_.core, 0, rules_.size(), &met_);
    for (const std::uint32_t i : met_) is_met_[i] = true;
  }

  Destinations destinations() {
    for (std::size_t k = 0; k < met_.size(); ++k) {
      progress_.tell(k, met_.size() + 1);
      space_.forget();
      findEntry(met_[k]);
    }
    progress_.tell(met_.size(), met_.size() + 1);
    space_.forget();
    findNone();
    if (found_.found.size() == 1 && found_.complete) found_.found[0].all = true;
    return std::move(found_);
  }

  Destinations touched() {
    for (std::size_t k = 0; k < met_.size(); ++k) {
      progress_.tell(k, met_.size());
      const Rule& rule = rules_[met_[k]];
      const Left may = leftOf(rule.may, {});
      if (!may.known) found_.complete = false;
      if (!may.packet) continue;
      Left surely = isClosed(rule) ? may : leftOf(rule.must, {});
      if (!surely.known) found_.complete = false;
      Destination& one = add(rule.id, may, surely);
      std::vector<Candidate> its;
      if (rule.must != kNothing) its.push_back({rule.must, 0, false, met_[k]});
      const Left others = leftOf(kEverything, std::move(its), met_[k] + 1);
      if (!others.known) found_.complete = false;
      one.all = others.known && !others.packet;
    }
    return std::move(found_);
  }

  std::optional<Remains> remainsOf(filtersEntryId_t id) {
    const auto rule =
        std::find_if(rules_.begin(), rules_.end(), [id](const Rule& one) { return one.id == id; });
    if (rule == rules_.end()) return std::nullopt;
    const auto i = static_cast<std::uint32_t>(rule - rules_.begin());
    Remains remains;
    if (is_met_[i]) {
      findEntry(i);
      for (const Destination& one : found_.found) {
        const Before before = beforeOf(i);
        remains.hit = one.hit;
        remains.reason = one.reason;
        remains.witness = one.witness;
        remains.possibly = allOf(rule->may, before.surely);
        if (one.hit != Hit::kHit) continue;
        remains.surely = before.settled ? remains.possibly : allOf(rule->must, before.maybe);
      }
    }
    remains.complete = found_.complete;
    return remains;
  }
 private:
  // An example of the packets that entries leave. `known` is true if it is certain whether they
  // leave any packets.
  struct Left {
    bool known = true;
    std::optional<Packet> packet;
  };

  bool isClosed(const Rule& rule) const { return rule.must == rule.may; }

  // Finds the packets that the other entries leave, among the packets of the set that are in
  // `within`. Each candidate in `others` has packets of one rule before `end`, and its tag is the
  // position of that rule.
  Left leftOf(SetId within, std::vector<Candidate> others, std::size_t end = 0) {
    if (within == kNothing) return {};
    std::vector<SetId> sets = {set_.core};
    if (within != kEverything) sets.push_back(within);
    if (auto packet = tryPackets(sets, others, end)) return {true, std::move(packet)};
    for (const SetId gap : set_.outside) others.push_back({gap, 0, false, 0});
    FirstParts parts(space_);
    std::vector<Candidate> list = others;
    const Cut::Outcome outcome = cuts_.runThrough(sets, &list, &parts);
    if (!parts.witness.found()) return {outcome != Cut::Outcome::kUndecided, std::nullopt};
    // Another part may have a packet that can be real.
    const auto& shapes = space_.shapes();
    for (std::size_t i = 0; i < parts.witness.shape() && !parts.witness.isGood(); ++i) {
      sets.push_back(shapes[i]);
      FirstParts shaped(space_);
      list = others;
      cuts_.runBriefly(sets, &list, &shaped);
      parts.witness.take(shaped.witness);
      sets.pop_back();
    }
    return {true, parts.witness.packet()};
  }

  // Looks for an answer among a few packets that real traffic could have. Most entries have one.
  std::optional<Packet> tryPackets(std::vector<SetId> sets, const std::vector<Candidate>& others,
                                   std::size_t end) {
    std::optional<Packet> found;
    for (const Candidate& one : others) taken_by_[one.tag] = one.set;
    const Space& space = space_.space();
    const auto isLeft = [&](const Point& point) {
      const auto has = [&](SetId set) { return set != kNothing && space.isIn(set, point); };
      met_by_.mayHold(point, 0, end, &tried_);
      return std::none_of(set_.outside.begin(), set_.outside.end(), has) &&
             std::none_of(tried_.begin(), tried_.end(),
                          [&](std::uint32_t p) { return has(taken_by_[p]); });
    };
    for (const SetId shape : space_.shapes()) {
      sets.push_back(shape);
      const unsigned tries = points_.haveCommon(sets) ? kTries : 0;
      for (unsigned k = 0; k < tries && !found; ++k) {
        const Point point = points_.pointOf(sets, k);
        if (isLeft(point)) found = packetOf(space, point);
      }
      sets.pop_back();
      if (found) break;
    }
    for (const Candidate& one : others) taken_by_[one.tag] = kNothing;
    return found;
  }

  // The other entries that take packets of an entry before it does.
  struct Before {
    std::vector<Candidate> surely, maybe;  // under every reading, or under some
    bool settled;                          // no reading and no tie makes a difference
  };
  Before beforeOf(std::uint32_t i) {
    const Rule& rule = rules_[i];
    std::vector<std::uint32_t> others;
    met_by_.meeting(rule.may, 0, rule.ranks_end, &others);
    Before before = {{}, {}, isClosed(rule)};
    for (const std::uint32_t p : others) {
      if (p == i || !is_met_[p]) continue;
      before.settled = before.settled && p < rule.ranks_begin && isClosed(rules_[p]);
      before.maybe.push_back({rules_[p].may, 0, false, p});
      if (p >= rule.ranks_begin) continue;
      const SetId set =
          isClosed(rules_[p]) ? rules_[p].must : space_.mustBeside(rules_[p].number, {rule.number});
      if (set != kNothing) before.surely.push_back({set, 0, false, p});
    }
    return before;
  }

  void findEntry(std::uint32_t i) {
    const Rule& rule = rules_[i];
    const Before before = beforeOf(i);
    const Left may = leftOf(rule.may, before.surely, rule.ranks_begin);
    if (!may.known) found_.complete = false;
    if (!may.packet) return;
    add(rule.id, may, before.settled ? may : leftOf(rule.must, before.maybe, rule.ranks_end));
  }

  // Returns all packets of the set that are in `within` and in no candidate of `others`. Returns
  // nothing if there are too many sets or steps.
  std::vector<PacketSet> allOf(SetId within, std::vector<Candidate> others) {
    if (set_.is_sample) return {};
    for (const SetId gap : set_.outside) others.push_back({gap, 0, false, 0});
    PartSets parts(space_.space());
    const Cut::Outcome outcome = cuts_.runThrough({set_.core, within}, &others, &parts);
    std::vector<PacketSet> sets;
    if (outcome == Cut::Outcome::kUndecided || parts.tooMany()) return sets;
    for (const auto& fields : parts.sets()) sets.push_back(PacketSetFields::make(fields));
    return sets;
  }

  void findNone() {
    std::vector<Candidate> surely_taken, maybe_taken;
    bool settled = true;
    for (const std::uint32_t p : met_) {
      settled = settled && isClosed(rules_[p]);
      maybe_taken.push_back({rules_[p].may, 0, false, p});
      if (rules_[p].must != kNothing) surely_taken.push_back({rules_[p].must, 0, false, p});
    }
    const std::size_t end = rules_.size();
    const Left may = leftOf(kEverything, std::move(surely_taken), end);
    if (!may.known) found_.complete = false;
    if (!may.packet) return;
    add(std::nullopt, may, settled ? may : leftOf(kEverything, std::move(maybe_taken), end));
  }

  Destination& add(std::optional<filtersEntryId_t> entry, const Left& may, const Left& surely) {
    Destination& one = found_.found.emplace_back();
    one.entry = entry;
    one.hit = surely.packet ? Hit::kHit : Hit::kUndecided;
    one.witness = surely.packet ? *surely.packet : *may.packet;
    if (!surely.known) {
      found_.complete = false;
      one.reason = kNotSure;
    } else if (!surely.packet) {
      one.reason = reasonFor(entry, one.witness);
    }
    return one;
  }

  // Says why it is not certain that a packet goes to this entry.
  std::string reasonFor(std::optional<filtersEntryId_t> entry, const Packet& packet) {
    if (!tracer_) tracer_.emplace(group_, order_);
    const Trace trace = tracer_->trace(packet);
    std::map<filtersEntryId_t, const Traced*> traced;
    for (const Traced& one : trace.entries) traced[one.entry] = &one;
    if (entry && !traced[*entry]->reason.empty()) return traced[*entry]->reason;
    std::vector<filtersEntryId_t> sure;
    for (const filtersEntryId_t id : trace.candidates) {
      if (!traced[id]->reason.empty()) return entriesText({id}) + ": " + traced[id]->reason;
      sure.push_back(id);
    }
    return "nothing says which of " + entriesText(sure) + " comes first";
  }

  const FiltersGroup& group_;
  const Order order_;
  Progress progress_;
  Rules all_;
  const std::vector<Rule>& rules_;
  RuleSpace& space_;
  const SetAmongRules& set_;
  Meetings met_by_;
  Cuts cuts_;
  Points points_;
  std::vector<std::uint32_t> met_;  // rules that may take a packet of the set
  std::vector<bool> is_met_;
  std::vector<SetId> taken_by_;  // the set of each rule while packets are tried
  std::vector<std::uint32_t> tried_;
  std::optional<Tracer> tracer_;
  Destinations found_;
};

Destinations onlyWith(const ActionTest* then, const FiltersGroup& group, Destinations all) {
  if (then == nullptr) return all;
  const auto& entries = group.getEntriesRef();
  all.found.erase(std::remove_if(all.found.begin(), all.found.end(),
                                 [&](const Destination& one) {
                                   return !one.entry || !then->hasAll(entries.at(*one.entry));
                                 }),
                  all.found.end());
  return all;
}

}  // namespace

Destinations search(const FiltersGroup& group, const PacketSet& packets, Order order,
                    const AnalysisOptions& options, const ActionTest* then) {
  return onlyWith(then, group, Search(group, packets, order, options).destinations());
}

Destinations touching(const FiltersGroup& group, const PacketSet& packets, Order order,
                      const AnalysisOptions& options, const ActionTest* then) {
  return onlyWith(then, group, Search(group, packets, order, options).touched());
}

std::optional<Remains> remains(const FiltersGroup& group, filtersEntryId_t entry,
                               const PacketSet& packets, Order order,
                               const AnalysisOptions& options) {
  return Search(group, packets, order, options).remainsOf(entry);
}

}  // namespace FiltersInspect
