#include <filter_inspect/filter_analysis.h>

#include <algorithm>
#include <ostream>

#include "rules.h"

namespace FiltersInspect {
namespace {

using namespace FiltersCommon;

struct Ranked {
  std::uint32_t rank;
  Traced traced;
};

// A field that misses decides; the first one found is the reason.
Traced traceEntry(const FiltersEntry& entry, const Packet& packet) {
  FiltersEntryPB message;
  entry.convertToFiltersEntryPB(&message);
  std::vector<Asked> all;
  for (const MatchPB& match : message.matches_()) appendAsked(match, &all);
  Traced traced{entry.getId(), Hit::kHit, {}, {}};
  const auto& told = PacketFields::of(packet);
  for (const Asked& asked : all) {
    const std::string name(packetFields()[asked.field].name);
    const auto field = told.find(asked.field);
    if (field == told.end()) {
      traced.hit = Hit::kUndecided;
      traced.lacking.push_back(name);
    } else if (!field->second || !isAmong(asked.may, *field->second)) {
      return {entry.getId(), Hit::kMiss, {}, name};
    } else if (asked.open != nullptr && !isAmong(asked.must, *field->second)) {
      traced.hit = Hit::kUndecided;
      if (traced.reason.empty()) traced.reason = name + ": " + asked.open;
    }
  }
  return traced;
}

// Of the rules of one rank those that do not miss.
void settle(std::vector<Ranked>::const_iterator first, std::vector<Ranked>::const_iterator last,
            Trace* trace) {
  bool hit = false;
  for (auto one = first; one != last; ++one) {
    if (one->traced.hit != Hit::kMiss) trace->candidates.push_back(one->traced.entry);
    hit = hit || one->traced.hit == Hit::kHit;
  }
  if (!hit) return;
  trace->may_be_none = false;
  if (trace->candidates.size() == 1) {
    trace->outcome = Hit::kHit;
    trace->entry = trace->candidates[0];
    trace->candidates.clear();
  } else {
    trace->outcome = Hit::kUndecided;
  }
}

}  // namespace

Trace trace(const FiltersGroup& group, const Packet& packet, Order order) {
  std::vector<Ranked> all;
  for (const auto& [id, entry] : group.getEntriesRef()) {
    all.push_back({rankOf(order, entry.getId(), entry.getPriority()), traceEntry(entry, packet)});
  }
  std::stable_sort(all.begin(), all.end(),
                   [](const Ranked& a, const Ranked& b) { return a.rank < b.rank; });
  Trace trace;
  trace.may_be_none = true;
  for (auto first = all.cbegin(); first != all.cend() && trace.may_be_none;) {
    const auto last =
        std::find_if(first, all.cend(), [&](const Ranked& one) { return one.rank != first->rank; });
    settle(first, last, &trace);
    first = last;
  }
  if (trace.candidates.empty()) {
    trace.may_be_none = false;
  } else {
    trace.outcome = Hit::kUndecided;
  }
  for (Ranked& one : all) trace.entries.push_back(std::move(one.traced));
  return trace;
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
