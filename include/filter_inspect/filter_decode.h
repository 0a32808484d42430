#ifndef FILTER_INSPECT_FILTER_DECODE_H_
#define FILTER_INSPECT_FILTER_DECODE_H_

// Reads the bytes of a group or an entry as their constructors do, and reports what the
// constructors lose or change silently.
//
// Promises, for any bytes:
// - `group` equals FiltersGroup(bytes). It is absent exactly when that constructor throws, or when
//   there are more bytes than the limit.
// - If there is no finding, writing the group gives the same bytes again.
// - If no finding is above Severity::kNote, the group holds everything that was in the bytes.
// - Every range lies inside the bytes.
// - No more memory is needed than for a parse of the whole message and `max_findings` findings. The
//   time grows with the number of bytes, and not faster for hostile bytes.
//
// Losses of the group's own fields come first, then the losses of each entry, in the order of the
// bytes. A range covers a whole field: its tag, its length and its value. There are three
// exceptions. For packed numbers the range covers one number. For a missing field it covers the
// message that lacks the field, and for broken bytes everything from the break to the end.
//
// If the bytes break off, the constructors keep everything before the break. If a match, an action,
// a counter or a number is incomplete, they also keep what they make of it. About the incomplete
// part there is only the finding kBytesBroken, and kEntryRefused if the group refuses the entry.
// Both findings name the entry and the offender with the ids and codes that were kept. Fields that
// may have followed the break are not reported as missing. Bytes that end exactly before an entry
// are not broken: they are the bytes of a shorter group.
//
// The functions may be called from any thread. They may throw std::bad_alloc, and nothing else.

#include <cstddef>
#include <optional>
#include <string_view>
#include <vector>

#include <filter_common/filter_groups.h>
#include <filter_inspect/filter_report.h>

namespace FiltersInspect {

struct DecodeLimits {
  std::size_t max_findings = 1000;                // more are counted in Report::left_out
  std::size_t max_bytes = std::size_t{64} << 20;  // longer bytes are not read: kBytesBroken
  Severity least = Severity::kNote;               // less severe ones are neither kept nor counted
};

struct DecodedGroup {
  std::optional<FiltersCommon::FiltersGroup> group;
  Report report;
};
FILTERS_API DecodedGroup decodeGroup(std::string_view bytes, const DecodeLimits& limits = {});
// Like decodeGroup(), and also appends the entries as they were received, in the order of the
// bytes. Entries that the group refuses are appended too, and so are entries that a later entry
// replaces. Entries that cannot be made are not appended.
FILTERS_API DecodedGroup decodeGroupAndEntries(std::string_view bytes,
                                               std::vector<FiltersCommon::FiltersEntry>* entries,
                                               const DecodeLimits& limits = {});

// A stage and a type that replace those in the bytes. Either of the two may be absent.
struct StageTypeInstead {
  std::optional<FiltersCommon::filtersGroupStage_t> stage;
  std::optional<FiltersCommon::filtersGroupType_t> type;
};
// Decodes the group as if it had come with this stage or type. The findings are still about the
// bytes that were passed. No finding says whether a group may have this stage and type together;
// call explainStage() and explainType() for that.
FILTERS_API DecodedGroup decodeGroupAs(std::string_view bytes, const StageTypeInstead& instead,
                                       const DecodeLimits& limits = {});

struct DecodedEntry {
  std::optional<FiltersCommon::FiltersEntry> entry;
  Report report;
};
FILTERS_API DecodedEntry decodeEntry(std::string_view bytes, const DecodeLimits& limits = {});

}  // namespace FiltersInspect

#endif  // FILTER_INSPECT_FILTER_DECODE_H_
