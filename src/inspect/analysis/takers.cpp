#include "takers.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "cut.h"
#include "packet_fields.h"
#include "rule_space.h"

namespace FiltersInspect {

using namespace FiltersCommon;

namespace {

// The limit of steps for finding the possible candidates of one packet.
constexpr std::uint64_t kSteps = 20000;

// True if every packet with the field meets the constraint, because the mask is 0.
bool surelyHolds(const Asked& asked) {
  const auto takesAll = [](const Constraint& one) {
    return one.asks == Asks::kMasked && one.last == 0;
  };
  return asked.open == nullptr && isInEveryPacket(packetFields()[asked.field].layer) &&
         std::all_of(asked.may.begin(), asked.may.end(), takesAll);
}

// The entries that may take the packet, in their order. Each entry becomes a rule that constrains
// only the unknown fields. An entry is possible if it takes some packet that no earlier entry
// takes.
class Candidates {
 public:
  Candidates(const std::vector<const PreparedEntry*>& entries, const Packet& packet)
      : entries_(entries) {
    for (const PreparedEntry* entry : entries) space_.add(leftOpen(entry->asked, packet));
    space_.seal(false);
  }

  // Returns nothing if the answer takes too many steps.
  std::optional<bool> isPossible(std::uint32_t i) { return isLeft({space_.may(i)}, {i}, rank(i)); }
  std::optional<bool> mayBeNone() { return isLeft({}, {}, ~std::uint64_t{0}); }
 private:
  std::uint64_t rank(std::uint32_t i) const { return entries_[i]->rank; }

  std::optional<bool> isLeft(const std::vector<SetId>& sets,
                             const std::vector<std::uint32_t>& takers, std::uint64_t end) {
    if (steps_left_ == 0) return std::nullopt;
    space_.forget();
    std::vector<Candidate> before;
    for (std::uint32_t p = 0; p < entries_.size() && (takers.empty() || rank(p) < end); ++p) {
      const SetId set = space_.mustBeside(p, takers);
      if (set != kNothing) before.push_back({set, 0, false, p});
    }
    const std::uint64_t work = before.size() / 64;  // the steps to go through all of them
    if (steps_left_ <= work) {
      steps_left_ = 0;
      return std::nullopt;
    }
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

}  // namespace

PreparedEntry prepare(std::uint64_t rank, filtersEntryId_t id, std::size_t treatment,
                      std::vector<Asked> asked) {
  constexpr unsigned kWordBits = 64;
  PreparedEntry entry{rank, id, treatment, std::move(asked), 0, true};
  for (const Asked& one : entry.asked) {
    entry.closed = entry.closed && one.open == nullptr && one.field < kWordBits;
    entry.fields |= std::uint64_t{1} << one.field % kWordBits;
  }
  return entry;
}

Answer answerTo(const Asked& asked, const Packet& packet) {
  const auto* field = PacketFields::find(packet, asked.field);
  if (field == nullptr) return surelyHolds(asked) ? Answer::kYes : Answer::kUntold;
  if (!field->has || !isAmong(asked.may, field->value)) return Answer::kNo;
  const bool isOpen = asked.open != nullptr && !isAmong(asked.must, field->value);
  return isOpen ? Answer::kOpen : Answer::kYes;
}

std::vector<Asked> leftOpen(const std::vector<Asked>& all, const Packet& packet) {
  std::vector<Asked> rest;
  for (const Asked& asked : all) {
    const Answer answer = answerTo(asked, packet);
    if (answer == Answer::kUntold) rest.push_back(asked);
    if (answer == Answer::kOpen) {
      rest.push_back({asked.field, asked.which, {}, asked.open, {}, asked.match});
    }
  }
  return rest;
}

Hit hitOf(const PreparedEntry& entry, const Packet& packet) {
  Hit hit = Hit::kHit;
  for (const Asked& asked : entry.asked) {
    const Answer answer = answerTo(asked, packet);
    if (answer == Answer::kNo) return Hit::kMiss;
    if (answer != Answer::kYes) hit = Hit::kUndecided;
  }
  return hit;
}

bool PossibleTakers::add(const PreparedEntry& entry, Hit hit) {
  if (!may_be_none && entry.rank != rank_) return false;
  if (hit == Hit::kMiss) return true;
  entries.push_back(&entry);
  if (hit == Hit::kHit) {
    may_be_none = false;
    rank_ = entry.rank;
  }
  return true;
}

void PossibleTakers::narrow(const Packet& packet) {
  if (isNarrow()) return;
  Candidates candidates(entries, packet);
  std::vector<const PreparedEntry*> possible;
  for (std::uint32_t i = 0; i < entries.size(); ++i) {
    const std::optional<bool> known = candidates.isPossible(i);
    if (!known) at_most = true;
    if (known.value_or(true)) possible.push_back(entries[i]);
  }
  if (may_be_none) {
    const std::optional<bool> known = candidates.mayBeNone();
    if (!known) at_most = true;
    may_be_none = known.value_or(true);
  }
  entries = std::move(possible);
}

Decision PossibleTakers::decision() const {
  if (entries.empty()) return {};
  if (isNarrow()) return {Hit::kHit, entries[0]->id, {}, false, false};
  Decision decision{Hit::kUndecided, std::nullopt, {}, may_be_none, at_most};
  decision.candidates.reserve(entries.size());
  for (const PreparedEntry* entry : entries) decision.candidates.push_back(entry->id);
  return decision;
}

}  // namespace FiltersInspect
