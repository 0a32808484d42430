#ifndef FILTER_INSPECT_FILTER_DECODE_H_
#define FILTER_INSPECT_FILTER_DECODE_H_

// Reads a group's or an entry's bytes as their constructors do, and says what those do silently.
//
// Promises, for any bytes: `group` equals FiltersGroup(bytes), and is absent exactly when that
// constructor throws (or when there are more bytes than the limit). No finding: writing the group
// gives the very bytes again. No finding above Severity::kNote: the group says all that the bytes
// said. Every range lies inside the bytes. Memory: that of a parse of the whole message, and
// `max_findings` findings; time grows with the number of bytes, whatever they are.
//
// What the head of a group loses comes first, then what each entry loses, in the order of the
// bytes. A range covers a whole field: its tag, its length and its value; of packed numbers one
// number; of what is missing, the part that misses it; of broken bytes, all from there to the end.
//
// Where the bytes are broken the constructors keep what came before, and what they make of half a
// match, action, counter or number. Nothing is said of that half beside kBytesBroken, and
// kEntryRefused where the group refuses its entry, nor is what may have followed called missing;
// the entry and the offender of both are as they are kept. Bytes that end exactly before an entry
// are those of a shorter group, and not broken.
//
// May be called from any thread. It may throw std::bad_alloc, and nothing else.

#include <cstddef>
#include <optional>
#include <string_view>
#include <vector>

#include <filter_common/filter_groups.h>
#include <filter_inspect/filter_report.h>

namespace FiltersInspect {

struct DecodeLimits {
  std::size_t max_findings = 1000;                // more are counted in Report::left_out
  std::size_t max_bytes = std::size_t{64} << 20;  // more is not read: kBytesBroken
  Severity least = Severity::kNote;               // findings below are neither kept nor counted
};

struct DecodedGroup {
  std::optional<FiltersCommon::FiltersGroup> group;
  Report report;
};
FILTERS_API DecodedGroup decodeGroup(std::string_view bytes, const DecodeLimits& limits = {});
// Also adds the entries as they came, in the order of the bytes. Those that the group refuses and
// those that a later one replaces are among them, those that throw are not.
FILTERS_API DecodedGroup decodeGroup(std::string_view bytes, const DecodeLimits& limits,
                                     std::vector<FiltersCommon::FiltersEntry>* entries);

// A stage or a type, or both, in place of those that a group came with.
struct StageTypeInstead {
  std::optional<FiltersCommon::filtersGroupStage_t> stage;
  std::optional<FiltersCommon::filtersGroupType_t> type;
};
// Decodes the group as if its bytes said these. Every finding is about the bytes as they are;
// whether a group may have such a stage and type together is not looked at (explainStage(),
// explainType()).
FILTERS_API DecodedGroup decodeGroup(std::string_view bytes, const StageTypeInstead& instead,
                                     const DecodeLimits& limits = {});

struct DecodedEntry {
  std::optional<FiltersCommon::FiltersEntry> entry;
  Report report;
};
FILTERS_API DecodedEntry decodeEntry(std::string_view bytes, const DecodeLimits& limits = {});

}  // namespace FiltersInspect

#endif  // FILTER_INSPECT_FILTER_DECODE_H_
