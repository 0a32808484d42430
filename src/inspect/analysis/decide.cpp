#include <filter_inspect/filter_analysis.h>

#include <array>
#include <map>
#include <mutex>

#include "packet_fields.h"
#include "prepared.h"

namespace FiltersInspect {
namespace {

// Not every target has atomic numbers of 64 bits.
std::uint64_t nextSerial() {
  static std::mutex mutex;
  static std::uint64_t last = 0;
  const std::lock_guard<std::mutex> guard(mutex);
  return ++last;
}

bool areEqual(const Packet& a, const Packet& b) {
  const auto& x = PacketFields::of(a);
  const auto& y = PacketFields::of(b);
  return std::equal(x.begin(), x.end(), y.begin(), y.end(), [](const auto& f, const auto& g) {
    return f.number == g.number && f.has == g.has && f.value == g.value;
  });
}

std::uint64_t hashOf(const Packet& packet) {
  std::uint64_t hash = 0;
  const auto add = [&hash](std::uint64_t value) {
    hash = (hash ^ value) * 0x9e3779b97f4a7c15;
    hash ^= hash >> 32;
  };
  for (const PacketFields::Field& field : PacketFields::of(packet)) {
    add(field.value[0] + field.number);
    if (field.value[1] != 0) add(field.value[1]);
  }
  return hash;
}

// The last decisions of a thread. Packets of a connection often come one after the other, and have
// the same values in all fields that rules test.
struct LastDecisions {
  struct Slot {
    std::uint64_t serial = 0;  // of the group; 0 if the slot is free
    Packet packet;
    Decision decision;
  };
  std::array<Slot, 256> slots;

  // Whether an entry may take a packet depends only on the constraints that the packet meets. Many
  // packets meet the same constraints, so one search for possible takers serves all these packets.
  struct Narrowed {
    std::vector<std::uint32_t> entries;
    bool may_be_none, at_most;
  };
  std::uint64_t narrowed_serial = 0;
  std::map<std::vector<std::uint32_t>, Narrowed> narrowed;
};

constexpr std::size_t kMostNarrowed = 1024;

LastDecisions& lastDecisions() {
  thread_local LastDecisions last;
  return last;
}

}  // namespace

Tracer::Prepared::Prepared(std::vector<PreparedEntry> itsEntries,
                           std::vector<std::string> itsTreatments)
    : entries(std::move(itsEntries)),
      treatments(std::move(itsTreatments)),
      classifier(entries),
      serial(nextSerial()) {}

namespace {

// Like PossibleTakers::narrow(), but first looks for the result of an earlier call for a packet
// that met the same constraints of the same entries.
void narrow(const std::vector<PreparedEntry>& entries, std::uint64_t serial, const Packet& packet,
            PossibleTakers* takers) {
  if (takers->isNarrow()) return;
  LastDecisions& last = lastDecisions();
  if (last.narrowed_serial != serial || last.narrowed.size() >= kMostNarrowed) {
    last.narrowed.clear();
    last.narrowed_serial = serial;
  }
  std::vector<std::uint32_t> key;
  for (const PreparedEntry* entry : takers->entries) {
    key.push_back(static_cast<std::uint32_t>(entry - entries.data()));
    for (const Asked& asked : entry->asked) {
      key.push_back(static_cast<std::uint32_t>(answerTo(asked, packet)));
    }
  }
  const auto known = last.narrowed.find(key);
  if (known != last.narrowed.end()) {
    takers->entries.clear();
    for (const std::uint32_t i : known->second.entries) takers->entries.push_back(&entries[i]);
    takers->may_be_none = known->second.may_be_none;
    takers->at_most = known->second.at_most;
    return;
  }
  takers->narrow(packet);
  LastDecisions::Narrowed narrowed{{}, takers->may_be_none, takers->at_most};
  for (const PreparedEntry* entry : takers->entries) {
    narrowed.entries.push_back(static_cast<std::uint32_t>(entry - entries.data()));
  }
  last.narrowed.emplace(std::move(key), std::move(narrowed));
}

}  // namespace

Decision Tracer::decide(const Packet& packet) const {
  const Prepared& prepared = *prepared_;
  auto& slot =
      lastDecisions().slots[hashOf(packet) % std::tuple_size<decltype(LastDecisions::slots)>()];
  if (slot.serial == prepared.serial && areEqual(slot.packet, packet)) return slot.decision;

  std::uint64_t told = 0;
  for (const PacketFields::Field& field : PacketFields::of(packet)) {
    if (field.has && field.number < 64) told |= std::uint64_t{1} << field.number;
  }
  const bool isExact = prepared.classifier.isExact();
  PossibleTakers takers;
  prepared.classifier.forEach(packet, [&](std::size_t i) {
    const PreparedEntry& entry = prepared.entries[i];
    const bool isHit = isExact && entry.closed && (entry.fields & ~told) == 0;
    return takers.add(entry, isHit ? Hit::kHit : hitOf(entry, packet));
  });
  narrow(prepared.entries, prepared.serial, packet, &takers);
  Decision decision = takers.decision();
  slot.serial = 0;  // the slot stays free if memory runs out
  slot.packet = packet;
  slot.decision = decision;
  slot.serial = prepared.serial;
  return decision;
}

}  // namespace FiltersInspect
