#ifndef FILTER_INSPECT_SRC_ANALYSIS_TAKERS_H_
#define FILTER_INSPECT_SRC_ANALYSIS_TAKERS_H_

// Compares entries with one packet, and finds the entries that can be the first to take it.

#include <cstddef>
#include <cstdint>
#include <vector>

#include <filter_inspect/filter_analysis.h>

#include "readings.h"

namespace FiltersInspect {

// An entry, and its constraints on a packet.
struct PreparedEntry {
  std::uint64_t rank;
  FiltersCommon::filtersEntryId_t id;
  std::size_t treatment;  // the index in the list of different treatments
  std::vector<Asked> asked;
  std::uint64_t fields;  // a bit for each of these fields
  // True if no match has several readings. For a packet whose fields are all known, it is then
  // certain if the entry takes it.
  bool closed;
};
PreparedEntry prepare(std::uint64_t rank, FiltersCommon::filtersEntryId_t id, std::size_t treatment,
                      std::vector<Asked> asked);

// Whether a packet meets one constraint.
enum class Answer : std::uint8_t {
  kNo,      // it does not hold
  kYes,     // it holds under every reading
  kOpen,    // it holds under some readings
  kUntold,  // the field is unknown in the packet
};
Answer answerTo(const Asked& asked, const Packet& packet);

// Whether a packet meets all constraints of an entry.
Hit hitOf(const PreparedEntry& entry, const Packet& packet);

// The constraints that the known fields do not decide. If a known value meets a constraint only
// under some reading, the match stays, and may take every packet.
std::vector<Asked> leftOpen(const std::vector<Asked>& all, const Packet& packet);

// The entries that can be the first to take a packet. For each of these entries there are a reading
// and values of the unknown fields for which it is the first.
struct PossibleTakers {
  std::vector<const PreparedEntry*> entries;  // in their order
  bool may_be_none = true;                    // perhaps no entry takes the packet
  bool at_most = false;                       // true if some of these were not decided

  // Call this function for each entry that does not miss the packet, in the order of the entries,
  // until the function returns false.
  bool add(const PreparedEntry& entry, Hit hit);
  // Leaves out the entries that are impossible. Call it after all entries are added.
  void narrow(const Packet& packet);
  bool isNarrow() const { return entries.empty() || (entries.size() == 1 && !may_be_none); }
  Decision decision() const;
 private:
  std::uint64_t rank_ = 0;  // of the first entry that surely takes the packet
};

}  // namespace FiltersInspect

#endif  // FILTER_INSPECT_SRC_ANALYSIS_TAKERS_H_
