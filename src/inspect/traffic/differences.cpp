#include <filter_inspect/filter_traffic.h>

#include <algorithm>
#include <initializer_list>
#include <map>
#include <unordered_map>
#include <utility>

#include "analysis/classifier.h"
#include "analysis/cut.h"
#include "analysis/prepared.h"
#include "analysis/rule_space.h"
#include "counting.h"

namespace FiltersInspect {
namespace {

using namespace FiltersCommon;

// The limit of steps for one frame, and the limit of examined pairs. If a frame exceeds a limit,
// impossible pairs may be counted as possible.
constexpr std::uint64_t kStepsOfFrame = 20000;
constexpr std::size_t kMostPairs = 1024;
constexpr std::size_t kMostRemembered = 16384;

}  // namespace

// A class with external linkage has members of these types, so these types cannot be in an unnamed
// namespace.
namespace two_groups {

// An entry of each group; null if no entry of the group takes the packet.
struct EntryPair {
  const PreparedEntry *a, *b;

  bool isAlike() const {
    return a == nullptr || b == nullptr ? a == b : a->treatment == b->treatment;
  }
};

// Finds the pairs of entries that can be the first to take a packet. Both entries of a pair must be
// the first for the same values of the unknown fields, under the same reading.
class Together {
 public:
  // The entries that do not miss the packet, in their order.
  Together(const std::vector<const PreparedEntry*>& a, const std::vector<const PreparedEntry*>& b,
           const Packet& packet)
      : groups_{&a, &b} {
    for (const auto* group : groups_) {
      for (const PreparedEntry* entry : *group) space_.add(leftOpen(entry->asked, packet));
    }
    space_.seal(false);
  }

  bool isPossible(const EntryPair& pair) {
    if (steps_left_ == 0) return true;
    const PreparedEntry* const pairs[] = {pair.a, pair.b};
    space_.forget();
    std::vector<std::uint32_t> takers;
    std::vector<SetId> sets;
    for (std::size_t side = 0; side < 2; ++side) {
      if (pairs[side] == nullptr) continue;
      const auto& all = *groups_[side];
      const auto at = std::find(all.begin(), all.end(), pairs[side]) - all.begin();
      takers.push_back(placeOf(side, static_cast<std::size_t>(at)));
      sets.push_back(space_.may(takers.back()));
    }
    std::vector<Candidate> before;
    for (std::size_t side = 0; side < 2; ++side) {
      const auto& all = *groups_[side];
      for (std::size_t i = 0; i < all.size(); ++i) {
        if (pairs[side] != nullptr && all[i]->rank >= pairs[side]->rank) break;
        const std::uint32_t place = placeOf(side, i);
        const SetId set = space_.mustBeside(place, takers);
        if (set != kNothing) before.push_back({set, 0, false, place});
      }
    }
    const std::uint64_t work = before.size() / 64;  // the steps to go through all of them
    if (steps_left_ <= work) {
      steps_left_ = 0;
      return true;
    }
    Cut cut(space_.space(), steps_left_ - work);
    const Cut::Outcome outcome = cut.run(sets, &before, true);
    steps_left_ = cut.stepsLeft();
    return outcome != Cut::Outcome::kNothingLeft;
  }
 private:
  std::uint32_t placeOf(std::size_t side, std::size_t i) const {
    return static_cast<std::uint32_t>(side == 0 ? i : groups_[0]->size() + i);
  }

  const std::vector<const PreparedEntry*>* groups_[2];
  RuleSpace space_;
  std::uint64_t steps_left_ = kStepsOfFrame;
};

constexpr std::uint64_t kBehindAll = ~std::uint64_t{0};

// A text that is equal for entries with the same matches. Such entries take the same packets under
// every reading.
std::string matchesKey(const PreparedEntry& entry) {
  std::string key;
  const auto add = [&key](std::initializer_list<std::uint64_t> numbers) {
    for (const std::uint64_t number : numbers) key += std::to_string(number) + ' ';
  };
  for (const Asked& asked : entry.asked) {
    add({asked.field, asked.which, asked.open != nullptr ? 1U : 0U, asked.match, asked.may.size()});
    for (const Constraint& one : asked.may) {
      add({one.field, static_cast<std::uint64_t>(one.asks), one.first, one.last});
    }
  }
  return key;
}

struct Group {
  Group(Preparer* preparer, const FiltersGroup& group, Order order)
      : tracer(group, order), entries(preparer->entriesOf(group, order)), classifier(entries) {
    for (const PreparedEntry& entry : entries) byId.emplace(entry.id, &entry);
  }

  // Finds for each entry the rank of the first entry of the other group with the same matches.
  void findTwins(const Group& other) {
    std::unordered_map<std::string, std::uint64_t> ranks;
    for (const PreparedEntry& entry : other.entries) ranks.emplace(matchesKey(entry), entry.rank);
    for (const PreparedEntry& entry : entries) {
      const auto found = ranks.find(matchesKey(entry));
      twins.push_back(found == ranks.end() ? kBehindAll : found->second);
    }
  }
  std::uint64_t twinOf(const PreparedEntry* entry) const {
    return entry == nullptr ? kBehindAll : twins[static_cast<std::size_t>(entry - entries.data())];
  }

  // The entries that can be the first to take a packet, in their order. A null at the end means
  // that perhaps no entry takes the packet.
  std::vector<const PreparedEntry*> firstOf(const Decision& decision) const {
    if (decision.entry) return {byId.at(*decision.entry)};
    std::vector<const PreparedEntry*> all;
    for (const filtersEntryId_t id : decision.candidates) all.push_back(byId.at(id));
    if (decision.may_be_none || decision.outcome == Hit::kMiss) all.push_back(nullptr);
    return all;
  }

  // The entries that do not miss the packet, up to the first entries that certainly take it.
  std::vector<const PreparedEntry*> takersOf(const Packet& packet) const {
    PossibleTakers takers;
    classifier.forEach(
        packet, [&](std::size_t i) { return takers.add(entries[i], hitOf(entries[i], packet)); });
    return std::move(takers.entries);
  }

  Tracer tracer;
  std::vector<PreparedEntry> entries;
  Classifier classifier;
  std::unordered_map<filtersEntryId_t, const PreparedEntry*> byId;
  std::vector<std::uint64_t> twins;
};

}  // namespace two_groups

using namespace two_groups;

struct TrafficComparison::Comparing {
  using Ids = std::pair<std::optional<filtersEntryId_t>, std::optional<filtersEntryId_t>>;

  Comparing(const FiltersGroup& first, const FiltersGroup& second, Order order, Packet its)
      : a(&preparer, first, order), b(&preparer, second, order), assumed(std::move(its)) {
    treatments = preparer.takeTreatments();
    a.findTwins(b);
    b.findTwins(a);
  }

  static std::uint64_t rankOf(const PreparedEntry* entry) {
    return entry == nullptr ? kBehindAll : entry->rank;
  }

  // The pairs of entries that can take the packet.
  std::vector<EntryPair> pairsOf(const Packet& packet) {
    const auto firstOfA = a.firstOf(a.tracer.decide(packet));
    const auto firstOfB = b.firstOf(b.tracer.decide(packet));
    std::vector<EntryPair> pairs;
    for (const PreparedEntry* one : firstOfA) {
      // A pair is impossible if an entry of the other group with the same matches comes before it.
      for (const PreparedEntry* other : firstOfB) {
        if (rankOf(other) > a.twinOf(one)) break;
        if (rankOf(one) <= b.twinOf(other)) pairs.push_back({one, other});
      }
    }
    if (pairs.size() == 1 || pairs.size() > kMostPairs ||
        std::all_of(pairs.begin(), pairs.end(), [](const EntryPair& one) { return one.isAlike(); }))
      return pairs;
    const std::string key = keyOf(packet);
    if (const auto known = narrowed.find(key); known != narrowed.end()) return known->second;
    const auto takersOfA = a.takersOf(packet), takersOfB = b.takersOf(packet);
    Together together(takersOfA, takersOfB, packet);
    const auto isImpossible = [&](const EntryPair& one) { return !together.isPossible(one); };
    pairs.erase(std::remove_if(pairs.begin(), pairs.end(), isImpossible), pairs.end());
    if (narrowed.size() >= kMostRemembered) narrowed.clear();
    narrowed.emplace(key, pairs);
    return pairs;
  }

  static std::string keyOf(const Packet& packet) {
    std::string key;
    for (const PacketFields::Field& field : PacketFields::of(packet)) {
      key += static_cast<char>(field.number);
      key += field.has ? '1' : '0';
      key.append(reinterpret_cast<const char*>(field.value.data()), sizeof field.value);
    }
    return key;
  }

  TreatedDifferently& rowOf(const EntryPair& pair) {
    const auto idOf = [](const PreparedEntry* entry) {
      return entry == nullptr ? std::nullopt : std::optional(entry->id);
    };
    const auto textOf = [this](const PreparedEntry* entry) {
      return entry == nullptr ? std::string() : treatments[entry->treatment];
    };
    const Ids ids(idOf(pair.a), idOf(pair.b));
    const auto known = places.find(ids);
    if (known != places.end()) return all.pairs[known->second];
    TreatedDifferently row{ids.first, ids.second, textOf(pair.a), textOf(pair.b), {}};
    if (all.pairs.size() == all.pairs.capacity()) all.pairs.reserve(2 * all.pairs.size() + 1);
    places.emplace(ids, all.pairs.size());
    return all.pairs.emplace_back(std::move(row));
  }

  // Removes the rows from `count` on.
  void keepRows(std::size_t count) {
    for (; all.pairs.size() > count; all.pairs.pop_back()) {
      places.erase(Ids(all.pairs.back().a, all.pairs.back().b));
    }
  }

  Preparer preparer;
  Group a, b;
  Packet assumed;
  std::vector<std::string> treatments;
  TrafficDifferences all;
  std::map<Ids, std::size_t> places;  // of pairs in `all.pairs`
  std::unordered_map<std::string, std::vector<EntryPair>>
      narrowed;  // the pairs of undecided packets
};

TrafficComparison::TrafficComparison(const FiltersGroup& a, const FiltersGroup& b, Order order,
                                     Packet assumed)
    : comparing_(std::make_unique<Comparing>(a, b, order, std::move(assumed))) {}
TrafficComparison::TrafficComparison(TrafficComparison&&) noexcept = default;
TrafficComparison& TrafficComparison::operator=(TrafficComparison&&) noexcept = default;
TrafficComparison::~TrafficComparison() = default;

void TrafficComparison::count(const void* frame, std::size_t captured, std::size_t length,
                              Link link, std::int64_t time) {
  FrameFault fault = FrameFault::kNone;
  const Packet packet = packetOf(frame, captured, length, link, &fault);
  count(packet, fault, time);
}

void TrafficComparison::count(const Packet& packet, FrameFault fault, std::int64_t time) {
  Comparing& its = *comparing_;
  std::vector<EntryPair> pairs = its.pairsOf(withAssumed(packet, its.assumed));
  const bool isAlone = pairs.size() == 1;
  const auto firstAlike = std::remove_if(pairs.begin(), pairs.end(),
                                         [](const EntryPair& one) { return one.isAlike(); });
  const bool isSure = firstAlike == pairs.end();
  pairs.erase(firstAlike, pairs.end());
  const std::size_t rows = its.all.pairs.size();
  try {
    for (const EntryPair& pair : pairs) its.rowOf(pair);
  } catch (...) {
    its.keepRows(rows);
    throw;
  }
  // Nothing can fail after this line, so the counts stay consistent.
  TrafficDifferences& all = its.all;
  const std::uint64_t number = ++all.frames;
  countFault(fault, number, time, &all.faults);
  if (pairs.empty()) return;
  (isSure ? all.differing.sure : all.differing.possible).add(number, time);
  for (const EntryPair& pair : pairs) {
    HitCounts& hits = its.rowOf(pair).hits;
    (isAlone ? hits.sure : hits.possible).add(number, time);
  }
}

const TrafficDifferences& TrafficComparison::differences() const { return comparing_->all; }

}  // namespace FiltersInspect
