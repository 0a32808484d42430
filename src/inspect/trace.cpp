#include <filter_inspect/filter_analysis.h>

#include <algorithm>
#include <ostream>

#include "../arena.h"
#include "rules.h"

namespace FiltersInspect {

using namespace FiltersCommon;

// An entry, and what it asks of a packet.
struct Tracer::Prepared {
  std::uint32_t rank;
  filtersEntryId_t id;
  std::vector<Asked> asked;
};

namespace {

std::vector<Asked> askedBy(const FiltersEntry& entry) {
  MessageArena arena;
  auto& message = *arena.make<FiltersEntryPB>();
  entry.convertToFiltersEntryPB(&message);
  std::vector<Asked> asked;
  for (const MatchPB& match : message.matches_()) appendAsked(match, &asked);
  return asked;
}

// A field that misses decides; the first one found is the reason.
Traced traceEntry(filtersEntryId_t id, const std::vector<Asked>& all, const Packet& packet) {
  Traced traced{id, Hit::kHit, {}, {}};
  const auto& told = PacketFields::of(packet);
  for (const Asked& asked : all) {
    const std::string_view name = packetFields()[asked.field].name;
    const auto field = told.find(asked.field);
    if (field == told.end()) {
      traced.hit = Hit::kUndecided;
      traced.lacking.emplace_back(name);
    } else if (!field->second || !isAmong(asked.may, *field->second)) {
      return {id, Hit::kMiss, {}, std::string(name)};
    } else if (asked.open != nullptr && !isAmong(asked.must, *field->second)) {
      traced.hit = Hit::kUndecided;
      if (traced.reason.empty()) traced.reason = std::string(name) + ": " + asked.open;
    }
  }
  return traced;
}

// One more entry that does not miss.
void addCandidate(const Traced& traced, Trace* trace) {
  trace->candidates.push_back(traced.entry);
  if (traced.hit == Hit::kHit) trace->may_be_none = false;
}

// What the candidates say: they end with the first rank that has a hit.
void settle(Trace* trace) {
  if (trace->candidates.empty()) {
    trace->may_be_none = false;
  } else if (trace->candidates.size() == 1 && !trace->may_be_none) {
    trace->outcome = Hit::kHit;
    trace->entry = trace->candidates[0];
    trace->candidates.clear();
  } else {
    trace->outcome = Hit::kUndecided;
  }
}

}  // namespace

Tracer::Tracer(const FiltersGroup& group, Order order) {
  std::vector<Prepared> entries;
  entries.reserve(group.getEntriesRef().size());
  for (const auto& [id, entry] : group.getEntriesRef()) {
    entries.push_back({rankOf(order, id, entry.getPriority()), id, askedBy(entry)});
  }
  std::stable_sort(entries.begin(), entries.end(),
                   [](const Prepared& a, const Prepared& b) { return a.rank < b.rank; });
  entries_ = std::make_shared<const std::vector<Prepared>>(std::move(entries));
}

Trace Tracer::trace(const Packet& packet) const {
  Trace trace;
  trace.may_be_none = true;
  trace.entries.reserve(entries_->size());
  std::uint32_t rank = 0;
  for (const Prepared& one : *entries_) {
    const Traced& traced = trace.entries.emplace_back(traceEntry(one.id, one.asked, packet));
    const bool reached = trace.may_be_none || one.rank == rank;
    rank = reached ? one.rank : rank;
    if (reached && traced.hit != Hit::kMiss) addCandidate(traced, &trace);
  }
  settle(&trace);
  return trace;
}

Trace trace(const FiltersGroup& group, const Packet& packet, Order order) {
  return Tracer(group, order).trace(packet);
}

std::string_view nameOf(Hit hit) {
  switch (hit) {
    case Hit::kMiss:
      return "miss";
    case Hit::kHit:
      return "hit";
    case Hit::kUndecided:
      return "undecided";
  }
  return {};
}

std::ostream& operator<<(std::ostream& os, const Trace& trace) {
  std::string text(nameOf(trace.outcome));
  if (trace.entry) text += ": entry " + std::to_string(*trace.entry);
  const std::size_t count = trace.candidates.size();
  for (std::size_t i = 0; i < count; ++i) {
    const bool last = count > 2 && i + 1 == count && !trace.may_be_none;
    text += (i == 0 ? ": entry " : last ? ", or " : " or ") + std::to_string(trace.candidates[i]);
  }
  if (trace.may_be_none) text += ", or none";
  text += '\n';
  for (const Traced& one : trace.entries) {
    text += "  " + std::to_string(one.entry) + ' ' + std::string(nameOf(one.hit));
    std::string why = one.reason;
    for (std::size_t i = 0; i < one.lacking.size(); ++i) {
      why += (i == 0 ? (why.empty() ? "" : "; ") : ", ") + one.lacking[i];
    }
    if (!one.lacking.empty()) why += one.lacking.size() == 1 ? " is not told" : " are not told";
    text += (why.empty() ? "" : ": " + why) + '\n';
  }
  return os << text;
}

}  // namespace FiltersInspect
