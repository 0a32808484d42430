#include <filter_inspect/filter_traffic.h>

#include <algorithm>
#include <unordered_map>
#include <utility>

#include "counting.h"

namespace FiltersInspect {

using namespace FiltersCommon;

struct HitCounter::Counting {
  Counting(const FiltersGroup& group, Order order, Packet its)
      : tracer(group, order), assumed(std::move(its)) {
    std::vector<std::pair<std::uint64_t, filtersEntryId_t>> ranks;
    for (const auto& [id, entry] : group.getEntriesRef()) {
      ranks.emplace_back(rankOf(order, id, entry.getPriority()), id);
    }
    std::sort(ranks.begin(), ranks.end());
    for (const auto& [rank, id] : ranks) {
      places.emplace(id, hits.entries.size());
      hits.entries.push_back({id, {}});
    }
  }

  HitCounts& countsOf(filtersEntryId_t id) { return hits.entries[places.find(id)->second].hits; }

  Tracer tracer;
  Packet assumed;
  Hits hits;
  std::unordered_map<filtersEntryId_t, std::size_t> places;  // of entries, in `hits`
};

HitCounter::HitCounter(const FiltersGroup& group, Order order, Packet assumed)
    : counting_(std::make_unique<Counting>(group, order, std::move(assumed))) {}
HitCounter::HitCounter(HitCounter&&) noexcept = default;
HitCounter& HitCounter::operator=(HitCounter&&) noexcept = default;
HitCounter::~HitCounter() = default;

void HitCounter::count(const void* frame, std::size_t captured, std::size_t length, Link link,
                       std::int64_t time) {
  FrameFault fault = FrameFault::kNone;
  const Packet packet = packetOf(frame, captured, length, link, &fault);
  count(packet, fault, time);
}

void HitCounter::count(const Packet& packet, FrameFault fault, std::int64_t time) {
  Counting& all = *counting_;
  const Decision decision = all.tracer.decide(withAssumed(packet, all.assumed));
  // Nothing can fail after this line, so the counts stay consistent.
  Hits& hits = all.hits;
  const std::uint64_t number = ++hits.frames;
  countFault(fault, number, time, &hits.faults);
  const bool isDecided = decision.outcome != Hit::kUndecided;
  (isDecided ? hits.decided : hits.undecided).add(number, time);
  if (decision.outcome == Hit::kHit) all.countsOf(*decision.entry).sure.add(number, time);
  if (decision.outcome == Hit::kMiss) hits.none.sure.add(number, time);
  for (const filtersEntryId_t id : decision.candidates) {
    all.countsOf(id).possible.add(number, time);
  }
  if (!isDecided && decision.may_be_none) hits.none.possible.add(number, time);
}

const Hits& HitCounter::hits() const { return counting_->hits; }

}  // namespace FiltersInspect
