#ifndef FILTER_INSPECT_SRC_ANALYSIS_PACKET_WORDS_H_
#define FILTER_INSPECT_SRC_ANALYSIS_PACKET_WORDS_H_

// Packets and packet sets as words: "ttl=1", "src_ipv4=10.0.0.0/8", "pcp={1,4-6}", "tpid=none".
// A packet is a set in which each field has one value, so packets and sets have the same parser.

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <filter_inspect/filter_report.h>

#include "readings.h"

namespace FiltersInspect {

inline constexpr std::string_view kBlanks = " \t\r\n";  // separate words

// The first and the last value of a range, both included. In the form kMasked they are the value
// and the mask.
struct ValuePair {
  FieldValue first, last;
};

// The values that a field has in the packets of a set. The same set of values always has the same
// form:
// - kLacks: the packets lack the field, and `values` is empty.
// - kMasked: one value and its mask, which has holes. The value has no bit outside of the mask. As
//   ranges, the same values would be more than kMostRanges.
struct FieldSet {
  enum class Form : std::uint8_t { kLacks, kRanges, kMasked };
  static constexpr std::size_t kMostRanges = 16;

  std::uint8_t number;  // as in packetFields()
  Form form;
  std::vector<ValuePair> values;
};

// Reads words between blanks. The fields are in the order of their numbers. If a word cannot be
// read, returns nothing and appends the faults to the report, which may be null. For kPackets each
// field must be written as one value or `none`.
enum class WordsOf : std::uint8_t { kPackets, kSets };
std::optional<std::vector<FieldSet>> parsePacketWords(std::string_view text, WordsOf kind,
                                                      Report* report, std::size_t max_findings);

// The values that a field of this width has under a mask.
FieldSet fieldUnder(std::uint8_t number, FieldValue value, const FieldValue& mask, unsigned width);
// Takes a field of form kRanges, with any ranges in any order, and gives it the right form for its
// values.
void joinRanges(FieldSet* field, unsigned width);

// Appends the word of a field. Reading the word gives the same set.
void appendWord(const FieldSet& field, std::string* out);

// --- Numbers of up to 128 bits -------------------------------------------------------------------

// The number with the lowest `count` bits set, or with all bits of a field set.
FieldValue lowBits(unsigned count, unsigned width);
// The next larger number. A field of at most 64 bits uses only the first element.
FieldValue nextOf(FieldValue value, unsigned width);

// The number one smaller. The value must not be 0.
FieldValue lastBefore(FieldValue value, unsigned width);

// Appends the smallest number of masks without holes that together take exactly a range.
void appendPrefixes(const ValuePair& range, unsigned width, std::vector<ValuePair>* masks);
// Appends the smallest number of masks without holes for all values outside of these ascending
// ranges.
void appendGaps(const std::vector<ValuePair>& ranges, unsigned width,
                std::vector<ValuePair>* masks);

}  // namespace FiltersInspect

#endif  // FILTER_INSPECT_SRC_ANALYSIS_PACKET_WORDS_H_
