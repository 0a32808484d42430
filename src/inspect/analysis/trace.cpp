#include <filter_inspect/filter_analysis.h>

#include <algorithm>
#include <utility>

#include "prepared.h"
#include "shared/arena.h"
#include "treatment.h"

namespace FiltersInspect {

using namespace FiltersCommon;

namespace {

// Compares an entry with the packet. If a field does not match, the entry misses, and the first
// such field is the reason.
Traced traceEntry(const PreparedEntry& entry, const Packet& packet) {
  Traced traced{entry.id, Hit::kHit, {}, {}};
  for (const Asked& asked : entry.asked) {
    const Answer answer = answerTo(asked, packet);
    if (answer == Answer::kYes) continue;
    const std::string_view name = packetFields()[asked.field].name;
    if (answer == Answer::kNo) return {entry.id, Hit::kMiss, {}, std::string(name)};
    traced.hit = Hit::kUndecided;
    if (answer == Answer::kUntold) {
      traced.lacking.emplace_back(name);
    } else if (traced.reason.empty()) {
      traced.reason = std::string(name) + ": " + asked.open;
    }
  }
  return traced;
}

void settle(const PossibleTakers& takers, const std::vector<std::string>& treatments,
            Trace* trace) {
  Decision decision = takers.decision();
  trace->outcome = decision.outcome;
  trace->entry = decision.entry;
  trace->candidates = std::move(decision.candidates);
  trace->may_be_none = decision.may_be_none;
  trace->at_most = decision.at_most;
  if (trace->outcome == Hit::kMiss) return;
  const auto& entries = takers.entries;
  const std::size_t treatment = entries[0]->treatment;
  const bool alike = std::all_of(entries.begin(), entries.end(), [&](const PreparedEntry* entry) {
    return entry->treatment == treatment;
  });
  if (alike && !takers.may_be_none) trace->treatment = treatments[treatment];
  if (trace->outcome == Hit::kHit) return;
  for (const PreparedEntry* entry : entries) {
    trace->treatments.push_back(treatments[entry->treatment]);
  }
}

}  // namespace

std::vector<PreparedEntry> Preparer::entriesOf(const FiltersGroup& group, Order order) {
  std::vector<PreparedEntry> entries;
  entries.reserve(group.getEntriesRef().size());
  for (const auto& [id, entry] : group.getEntriesRef()) {
    MessageArena arena;
    auto& message = *arena.make<FiltersEntryPB>();
    entry.convertToFiltersEntryPB(&message);
    const auto [treatment, isNew] = treatments_.emplace(treatmentKey(message), texts_.size());
    if (isNew) texts_.push_back(treatmentText(entry));
    std::vector<Asked> asked;
    for (const MatchPB& match : message.matches_()) appendAsked(match, &asked, &numbers_);
    entries.push_back(
        prepare(rankOf(order, id, entry.getPriority()), id, treatment->second, std::move(asked)));
  }
  std::stable_sort(entries.begin(), entries.end(),
                   [](const auto& a, const auto& b) { return a.rank < b.rank; });
  return entries;
}

Tracer::Tracer(const FiltersGroup& group, Order order) {
  Preparer preparer;
  std::vector<PreparedEntry> entries = preparer.entriesOf(group, order);
  prepared_ = std::make_shared<Prepared>(std::move(entries), preparer.takeTreatments());
}

Trace Tracer::trace(const Packet& packet) const {
  Trace trace;
  trace.entries.reserve(prepared_->entries.size());
  PossibleTakers takers;
  bool isBehind = false;  // behind the entries that can be the first
  for (const PreparedEntry& one : prepared_->entries) {
    const Traced& traced = trace.entries.emplace_back(traceEntry(one, packet));
    isBehind = isBehind || !takers.add(one, traced.hit);
  }
  takers.narrow(packet);
  settle(takers, prepared_->treatments, &trace);
  return trace;
}

Trace trace(const FiltersGroup& group, const Packet& packet, Order order) {
  return Tracer(group, order).trace(packet);
}

}  // namespace FiltersInspect
