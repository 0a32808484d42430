#ifndef FILTER_INSPECT_FILTER_TEXT_H_
#define FILTER_INSPECT_FILTER_TEXT_H_

// Writes groups as concise text and as JSON, and reads both. The forms can write everything that
// bytes can hold, so reading them back gives equal groups. Both forms carry a version number.
// Readers accept the versions that they know and refuse all others. docs/text-format.md and
// docs/schema/ describe the forms. The same groups give the same bytes on every machine, if the
// platform gives interfaces the same names.
//
// A policer is written by its values, for example its rates, if the platform's library can make the
// same policer from them. If not, it is written as the bytes that the library makes of it, with its
// values beside them for people. The name of an interface is written beside its id in the same way.
// Readers use the bytes and ids. They refuse JSON whose names or descriptions contradict the bytes
// and ids. In text, names and descriptions are comments, which readers ignore.
//
// The functions may be called from any thread, if nobody changes the arguments meanwhile. They may
// throw std::bad_alloc, and nothing else. Time and memory grow with the size of the argument, so
// limit the size of texts that you do not trust.

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <filter_common/filter_groups.h>
#include <filter_inspect/filter_report.h>

namespace FiltersInspect {

inline constexpr int kTextVersion = 1;
inline constexpr int kJsonVersion = 1;

FILTERS_API std::string toText(const std::vector<FiltersCommon::FiltersGroup>& groups);
FILTERS_API std::string toText(const FiltersCommon::FiltersGroup& group);

// JSON has a line for each value, or is all on one line without blanks. JSON on one line takes less
// than half as many bytes. Readers accept both layouts.
enum class JsonLayout : std::uint8_t { kIndented, kCompact };
FILTERS_API std::string toJson(const std::vector<FiltersCommon::FiltersGroup>& groups);
FILTERS_API std::string toJson(const std::vector<FiltersCommon::FiltersGroup>& groups,
                               JsonLayout layout);
FILTERS_API std::string toJson(const FiltersCommon::FiltersGroup& group,
                               JsonLayout layout = JsonLayout::kIndented);

// The lines of one group, without the line that begins the text form.
FILTERS_API std::string groupLines(const FiltersCommon::FiltersGroup& group);

// The line of one entry, with its comment but without the line end.
FILTERS_API std::string toText(const FiltersCommon::FiltersEntry& entry);
// The JSON object of one entry, as in the list of a group.
FILTERS_API std::string toJson(const FiltersCommon::FiltersEntry& entry,
                               JsonLayout layout = JsonLayout::kIndented);

// The line for people. It has the values of each policer, even if these do not describe the policer
// completely. So the lines of different entries can be the same, and some platforms cannot read the
// line back.
FILTERS_API std::string shownText(const FiltersCommon::FiltersEntry& entry);

// The parts of an entry's line, for tables and pictures.
struct EntryColumns {
  // Values as the text form writes them, for example "192.0.2.0/24"; empty for a match without a
  // value.
  std::vector<std::pair<FiltersCommon::filtersMatch_t, std::string>> matches;
  std::vector<std::string> actions;              // "permit", "set_pcp=5"
  std::optional<std::uint32_t> policer, parent;  // ids; none for the default policer
  // For each match, the name of the packet field that it tests, for example "dst_l4_port" for a
  // range of ports. If the match tests several fields or none, the name of the match stands here.
  std::vector<std::string_view> fields;
  // For each match, its value in a form for people: "tcp" for protocol 6, "179" for a single port,
  // "[eth-1,eth-2]" for interfaces, and "yes" for a match without a value.
  std::vector<std::string> shown;
  std::string policer_text, parent_text;  // "10 ingress trtcm cir=2000"; empty without an id
  std::vector<std::string> counters;      // "1=packets"
};
FILTERS_API EntryColumns columnsOf(const FiltersCommon::FiltersEntry& entry);

// The place in text or JSON where something begins. Both numbers count from 1.
struct TextPosition {
  std::size_t line = 1;
  std::size_t column = 1;
};
FILTERS_API std::string toText(TextPosition position);  // "12:7"

// The places where a group and each of its entries begin.
struct GroupPositions {
  TextPosition group;
  std::vector<std::pair<FiltersCommon::filtersEntryId_t, TextPosition>> entries;  // by ascending id

  // The position of the entry, or of the group if it has no such entry.
  FILTERS_API TextPosition of(std::optional<FiltersCommon::filtersEntryId_t> entry) const;
};

// A reader returns all groups or none: either `report` or `groups` is empty. A finding has its line
// and column in `path`, for example "12:7", and the wrong word in `word`. If the finding is about
// the content of an entry or group, `path` is the position of its beginning. Nothing is dropped
// silently: an unknown name, a repeated name, a number that is too large, a match that excludes
// another match, and an entry that its group refuses are findings. Every finding is an error, even
// if the same code is a warning when bytes are read. The reader of text continues after a faulty
// line, and still finds every fault of other entries. But if the line of a group is faulty, faults
// of its entries may be missed. The reader of JSON stops at the first fault. Findings beyond
// `max_findings` are counted in Report::left_out.
struct ParsedGroups {
  std::vector<FiltersCommon::FiltersGroup> groups;
  Report report;
  std::vector<GroupPositions> positions;  // one for each group
};
FILTERS_API ParsedGroups groupsFromText(std::string_view text, std::size_t max_findings);
FILTERS_API ParsedGroups groupsFromJson(std::string_view json, std::size_t max_findings);
// Reads groups with a limit of 1,000 findings.
FILTERS_API ParsedGroups groupsFromText(std::string_view text);
FILTERS_API ParsedGroups groupsFromJson(std::string_view json);

// Reads one entry, from its line of the text form or its object of the JSON form. The entry is not
// checked against the stage and type of a group. There is an entry exactly if the report is empty.
// The findings are those of groupsFromText() and groupsFromJson().
struct ParsedEntry {
  std::optional<FiltersCommon::FiltersEntry> entry;
  Report report;
};
FILTERS_API ParsedEntry entryFromText(std::string_view line);
FILTERS_API ParsedEntry entryFromJson(std::string_view json);

// Reads groups without checking what their stages and types admit, and returns the bytes of each. A
// program can ask which other stages and types admit the entries: decodeGroupAs() reads the bytes
// as a group of another stage or type. The report has only faults of the grammar; the decoder
// reports all others.
struct ParsedBytes {
  std::vector<std::string> groups;
  Report report;
  std::vector<GroupPositions> positions;  // one for each group
};
FILTERS_API ParsedBytes groupBytesFromText(std::string_view text, std::size_t max_findings);
FILTERS_API ParsedBytes groupBytesFromJson(std::string_view json, std::size_t max_findings);

}  // namespace FiltersInspect

#endif  // FILTER_INSPECT_FILTER_TEXT_H_
