#include <filter_inspect/filter_analysis.h>

#include <algorithm>
#include <map>
#include <ostream>

#include "packet_fields.h"
#include "rules.h"
#include "shared/arena.h"
#include "treatment.h"

namespace FiltersInspect {

using namespace FiltersCommon;

// An entry, and its constraints on a packet.
struct PreparedEntry {
  std::uint64_t rank;
  filtersEntryId_t id;
  std::size_t treatment;  // the index in the list of different treatments
  std::vector<Asked> asked;
};

struct Tracer::Prepared {
  std::vector<PreparedEntry> entries;
  std::vector<std::string> treatments;
};

namespace {

// The number of steps that finding the possible candidates of one packet may take.
constexpr std::uint64_t kSteps = 20000;

// True if every packet with the field meets the constraint, because the mask is 0.
bool surelyHolds(const Asked& asked) {
  const auto takesAll = [](const Constraint& one) {
    return one.asks == Asks::kMasked && one.last == 0;
  };
  return asked.open == nullptr && isInEveryPacket(packetFields()[asked.field].layer) &&
         std::all_of(asked.may.begin(), asked.may.end(), takesAll);
}

// Compares an entry with the known fields. If a field does not match, the entry misses, and the
// first such field is the reason.
Traced traceEntry(filtersEntryId_t id, const std::vector<Asked>& all, const Packet& packet) {
  Traced traced{id, Hit::kHit, {}, {}};
  for (const Asked& asked : all) {
    const std::string_view name = packetFields()[asked.field].name;
    const auto* field = PacketFields::find(packet, asked.field);
    if (field == nullptr) {
      if (surelyHolds(asked)) continue;
      traced.hit = Hit::kUndecided;
      traced.lacking.emplace_back(name);
    } else if (!field->has || !isAmong(asked.may, field->value)) {
      return {id, Hit::kMiss, {}, std::string(name)};
    } else if (asked.open != nullptr && !isAmong(asked.must, field->value)) {
      traced.hit = Hit::kUndecided;
      if (traced.reason.empty()) traced.reason = std::string(name) + ": " + asked.open;
    }
  }
  return traced;
}

// The constraints of an entry on unknown fields. If a known value meets a constraint under some
// reading only, the match stays, and may take every packet.
std::vector<Asked> untold(const std::vector<Asked>& all, const Packet& packet) {
  std::vector<Asked> rest;
  for (const Asked& asked : all) {
    const auto* field = PacketFields::find(packet, asked.field);
    if (field == nullptr) {
      rest.push_back(asked);
    } else if (asked.open != nullptr && !isAmong(asked.must, field->value)) {
      rest.push_back({asked.field, asked.which, {}, asked.open, {}, asked.match});
    }
  }
  return rest;
}

// The entries that may take the packet, in their order, as rules on the unknown fields. An entry is
// possible if it takes some packet that no earlier entry takes.
class Candidates {
 public:
  Candidates(const std::vector<const PreparedEntry*>& entries, const Packet& packet)
      : entries_(entries) {
    for (const PreparedEntry* entry : entries) space_.add(untold(entry->asked, packet));
    space_.seal(false);
  }

  // Returns null if that takes too many steps.
  std::optional<bool> isPossible(std::uint32_t i) { return isLeft({space_.may(i)}, {i}, rank(i)); }
  std::optional<bool> mayBeNone() { return isLeft({}, {}, ~std::uint64_t{0}); }
 private:
  std::uint64_t rank(std::uint32_t i) const { return entries_[i]->rank; }

  std::optional<bool> isLeft(const std::vector<SetId>& sets,
                             const std::vector<std::uint32_t>& takers, std::uint64_t end) {
    space_.forget();
    std::vector<Candidate> before;
    for (std::uint32_t p = 0; p < entries_.size() && (takers.empty() || rank(p) < end); ++p) {
      const SetId set = space_.mustBeside(p, takers);
      if (set != kNothing) before.push_back({set, 0, false, p});
    }
    const std::uint64_t work = before.size() / 64;  // to go through all of them once
    if (steps_left_ <= work) return std::nullopt;
    Cut cut(space_.space(), steps_left_ - work);
    const Cut::Outcome outcome = cut.run(sets, &before, true);
    steps_left_ = cut.stepsLeft();
    if (outcome == Cut::Outcome::kUndecided) return std::nullopt;
    return outcome == Cut::Outcome::kLeft;
  }

  const std::vector<const PreparedEntry*>& entries_;
  RuleSpace space_;
  std::uint64_t steps_left_ = kSteps;
};

// Keeps the entries that are possible.
void narrow(std::vector<const PreparedEntry*>* entries, const Packet& packet, Trace* trace) {
  Candidates candidates(*entries, packet);
  std::vector<const PreparedEntry*> possible;
  for (std::uint32_t i = 0; i < entries->size(); ++i) {
    const std::optional<bool> known = candidates.isPossible(i);
    if (!known) trace->at_most = true;
    if (known.value_or(true)) possible.push_back((*entries)[i]);
  }
  if (trace->may_be_none) {
    const std::optional<bool> known = candidates.mayBeNone();
    if (!known) trace->at_most = true;
    trace->may_be_none = known.value_or(true);
  }
  *entries = std::move(possible);
}

void settle(const std::vector<const PreparedEntry*>& entries,
            const std::vector<std::string>& treatments, Trace* trace) {
  if (entries.empty()) {
    trace->may_be_none = false;
    return;
  }
  const std::size_t treatment = entries[0]->treatment;
  const bool alike = std::all_of(entries.begin(), entries.end(), [&](const PreparedEntry* entry) {
    return entry->treatment == treatment;
  });
  if (alike && !trace->may_be_none) trace->treatment = treatments[treatment];
  if (entries.size() == 1 && !trace->may_be_none) {
    trace->outcome = Hit::kHit;
    trace->entry = entries[0]->id;
    trace->at_most = false;
    return;
  }
  trace->outcome = Hit::kUndecided;
  for (const PreparedEntry* entry : entries) {
    trace->candidates.push_back(entry->id);
    trace->treatments.push_back(treatments[entry->treatment]);
  }
}

}  // namespace

Tracer::Tracer(const FiltersGroup& group, Order order) {
  auto prepared = std::make_shared<Prepared>();
  prepared->entries.reserve(group.getEntriesRef().size());
  MatchNumbers numbers;
  std::map<std::string, std::size_t> treatments;
  for (const auto& [id, entry] : group.getEntriesRef()) {
    MessageArena arena;
    auto& message = *arena.make<FiltersEntryPB>();
    entry.convertToFiltersEntryPB(&message);
    const auto [treatment, isNew] =
        treatments.emplace(treatmentKey(message), prepared->treatments.size());
    if (isNew) prepared->treatments.push_back(treatmentText(entry));
    std::vector<Asked> asked;
    for (const MatchPB& match : message.matches_()) appendAsked(match, &asked, &numbers);
    prepared->entries.push_back(
        {rankOf(order, id, entry.getPriority()), id, treatment->second, std::move(asked)});
  }
  std::stable_sort(prepared->entries.begin(), prepared->entries.end(),
                   [](const auto& a, const auto& b) { return a.rank < b.rank; });
  prepared_ = std::move(prepared);
}

Trace Tracer::trace(const Packet& packet) const {
  Trace trace;
  trace.may_be_none = true;
  trace.entries.reserve(prepared_->entries.size());
  // The entries that do not miss, up to the first rank with a hit.
  std::vector<const PreparedEntry*> entries;
  std::uint64_t rank = 0;
  for (const PreparedEntry& one : prepared_->entries) {
    const Traced& traced = trace.entries.emplace_back(traceEntry(one.id, one.asked, packet));
    const bool reached = trace.may_be_none || one.rank == rank;
    rank = reached ? one.rank : rank;
    if (!reached || traced.hit == Hit::kMiss) continue;
    entries.push_back(&one);
    if (traced.hit == Hit::kHit) trace.may_be_none = false;
  }
  if (entries.size() > 1 || (entries.size() == 1 && trace.may_be_none))
    narrow(&entries, packet, &trace);
  settle(entries, prepared_->treatments, &trace);
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

namespace {

// "10, 11 or 30"
std::string listed(const std::vector<filtersEntryId_t>& ids) {
  std::string list;
  for (std::size_t i = 0; i < ids.size(); ++i) {
    list += (i == 0 ? "" : i + 1 == ids.size() ? " or " : ", ") + std::to_string(ids[i]);
  }
  return list;
}

// Which candidate takes the packet: one that surely matches, unless one of the others does.
std::string candidatesText(const Trace& trace) {
  std::vector<filtersEntryId_t> sure, others;
  auto traced = trace.entries.begin();  // the candidates are in the order of the entries
  for (const filtersEntryId_t id : trace.candidates) {
    traced = std::find_if(traced, trace.entries.end(),
                          [id](const Traced& one) { return one.entry == id; });
    const bool isSure = traced != trace.entries.end() && traced->hit == Hit::kHit;
    (isSure ? sure : others).push_back(id);
  }
  std::string text = trace.may_be_none ? "no entry" : sure.empty() ? listed(others) : listed(sure);
  text += " takes it";
  const bool isUnless = !others.empty() && (trace.may_be_none || !sure.empty());
  if (isUnless) text += ", unless " + listed(others) + " does";
  if (sure.size() > 1) text += "; nothing says which of " + listed(sure) + " comes first";
  return text;
}

}  // namespace

std::string toText(const Trace& trace) {
  std::string text(nameOf(trace.outcome));
  if (trace.entry) text += ": entry " + std::to_string(*trace.entry);
  const std::size_t count = trace.candidates.size();
  if (count != 0) text += ": " + candidatesText(trace);
  if (trace.at_most) text += "; some of them may be impossible";
  if (!trace.treatment.empty()) {
    text += (count == 0 ? " (" : count == 2 ? " (both: " : " (all: ") + trace.treatment + ')';
  }
  return text;
}

std::string toText(const Traced& traced) {
  std::string why = traced.reason;
  for (std::size_t i = 0; i < traced.lacking.size(); ++i) {
    why += (i == 0 ? (why.empty() ? "" : "; ") : ", ") + traced.lacking[i];
  }
  if (!traced.lacking.empty()) why += traced.lacking.size() == 1 ? " is not told" : " are not told";
  return std::string(nameOf(traced.hit)) + (why.empty() ? "" : ": " + why);
}

std::ostream& operator<<(std::ostream& os, const Trace& trace) {
  std::string text = toText(trace) + '\n';
  for (const Traced& one : trace.entries) {
    text += "  " + std::to_string(one.entry) + ' ' + toText(one) + '\n';
  }
  return os << text;
}

}  // namespace FiltersInspect
