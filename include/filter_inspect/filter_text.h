#ifndef FILTER_INSPECT_FILTER_TEXT_H_
#define FILTER_INSPECT_FILTER_TEXT_H_

// Writes groups as concise text and as JSON, and reads both. Everything that bytes can hold
// survives, so reading what was written gives equal groups. Both forms carry a version; readers
// accept the versions that they know and refuse others. docs/text-format.md and docs/schema/
// describe the forms. The same groups give the same bytes on every machine, if the platform gives
// interfaces the same names.
//
// A policer is written by its values, its rates for example, if the platform's library can make the
// same policer of them. If not, it is written as the bytes that the library makes of it, and its
// values stand beside them for people, as the name of an interface stands beside its id. Readers
// use the bytes and ids. They refuse JSON if its names or descriptions contradict the bytes and
// ids, and ignore the comments of text.
//
// The functions may be called from any thread, if nobody changes the arguments meanwhile. They may
// throw std::bad_alloc, and nothing else. Time and memory grow with the size of the argument, so
// limit the size of texts from strangers.

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

// JSON with a line for each value, or all on one line without blanks, which takes less than half of
// the bytes. Readers take both.
enum class JsonLayout : std::uint8_t { kIndented, kCompact };
FILTERS_API std::string toJson(const std::vector<FiltersCommon::FiltersGroup>& groups);
FILTERS_API std::string toJson(const std::vector<FiltersCommon::FiltersGroup>& groups,
                               JsonLayout layout);
FILTERS_API std::string toJson(const FiltersCommon::FiltersGroup& group,
                               JsonLayout layout = JsonLayout::kIndented);

// The lines of one group, without the line that begins the text form.
FILTERS_API std::string groupLines(const FiltersCommon::FiltersGroup& group);

// The line of one entry, comment included, without its line end.
FILTERS_API std::string toText(const FiltersCommon::FiltersEntry& entry);
// The object of one entry, as it stands in the list of a group.
FILTERS_API std::string toJson(const FiltersCommon::FiltersEntry& entry,
                               JsonLayout layout = JsonLayout::kIndented);

// The line as people read it. It has the values of each policer, even if these do not say
// everything. So the lines of different entries can be the same, and not every platform reads them.
FILTERS_API std::string shownText(const FiltersCommon::FiltersEntry& entry);

// The parts of an entry's line, for tables and pictures.
struct EntryColumns {
  // Values as the text form writes them, "192.0.2.0/24"; empty for a match without a value.
  std::vector<std::pair<FiltersCommon::filtersMatch_t, std::string>> matches;
  std::vector<std::string> actions;              // "permit", "set_pcp=5"
  std::optional<std::uint32_t> policer, parent;  // ids; none for the default policer
  // For each match, the packet field that it tests: "dst_l4_port" also for a range of ports. It is
  // the name of the match if it tests several fields, or none.
  std::vector<std::string_view> fields;
  // For each match, its value as people say it: "tcp", "179" for that port alone, "[eth-1,eth-2]"
  // for interfaces, and "yes" for a match without a value.
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

// Reading gives all groups or none: either `report` is empty, or `groups` is. A finding has its
// line and column in `path`, "12:7", and the wrong word in `word`. If it is about the content of an
// entry or group, `path` is the place where the entry or group begins. Nothing is dropped silently:
// an unknown name, a repeated one, a number that is too large, a match that excludes another one
// and an entry that its group refuses are findings. Every finding is an error, also one whose code
// is a warning about bytes. After a faulty line the reader of text goes on, and still finds every
// fault of other entries; only a faulty head hides those of its own group. The reader of JSON stops
// at the first fault. Findings beyond `max_findings` are counted in Report::left_out.
struct ParsedGroups {
  std::vector<FiltersCommon::FiltersGroup> groups;
  Report report;
  std::vector<GroupPositions> positions;  // one for each group
};
FILTERS_API ParsedGroups groupsFromText(std::string_view text, std::size_t max_findings);
FILTERS_API ParsedGroups groupsFromJson(std::string_view json, std::size_t max_findings);
// The same with a limit of 1,000 findings.
FILTERS_API ParsedGroups groupsFromText(std::string_view text);
FILTERS_API ParsedGroups groupsFromJson(std::string_view json);

// One entry, whatever groups admit: its line of the text form, or its object of the JSON form.
// There is an entry exactly if the report is empty. Reports are those of the readers above.
struct ParsedEntry {
  std::optional<FiltersCommon::FiltersEntry> entry;
  Report report;
};
FILTERS_API ParsedEntry entryFromText(std::string_view line);
FILTERS_API ParsedEntry entryFromJson(std::string_view json);

// The bytes of groups, whatever their stages and types admit. A program can ask which other stages
// and types admit the entries: decodeGroupAs() reads the bytes as a group of another stage or type.
// Only what the grammar refuses is in the report; the decoder reports the rest.
struct ParsedBytes {
  std::vector<std::string> groups;
  Report report;
  std::vector<GroupPositions> positions;  // one for each group
};
FILTERS_API ParsedBytes groupBytesFromText(std::string_view text, std::size_t max_findings);
FILTERS_API ParsedBytes groupBytesFromJson(std::string_view json, std::size_t max_findings);

}  // namespace FiltersInspect

#endif  // FILTER_INSPECT_FILTER_TEXT_H_
