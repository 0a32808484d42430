#ifndef FILTER_INSPECT_FILTER_TEXT_H_
#define FILTER_INSPECT_FILTER_TEXT_H_

// Groups as concise text and as JSON, both ways, whatever bytes can hold: reading what was written
// gives equal groups. Both forms carry a version; readers take those they know and refuse others.
// docs/text-format.md and docs/schema/ describe them. The same groups give the same bytes on every
// machine on which the platform gives interfaces the same names.
//
// Policers are written as the bytes that the platform's library makes of them, with what they say
// beside them for people; ports as their ids, with the interface's name beside. Only bytes and ids
// are read back. JSON whose names or descriptions contradict them is refused; what stands in the
// comments of text is not looked at.
//
// May be called from any thread, as long as nobody changes the arguments meanwhile. It may throw
// std::bad_alloc, and nothing else. Time and memory grow with the size of the argument: who reads
// texts of others limits that.

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
FILTERS_API std::string toJson(const std::vector<FiltersCommon::FiltersGroup>& groups);

// The lines of one group, without the line that begins the text form.
FILTERS_API std::string groupLines(const FiltersCommon::FiltersGroup& group);

// The line of one entry, comment included, without its line end.
FILTERS_API std::string toText(const FiltersCommon::FiltersEntry& entry);

// What the line of an entry says, taken apart for tables and pictures.
struct EntryColumns {
  // Values as the text form writes them: "192.0.2.0/24", nothing for a match without a value.
  std::vector<std::pair<FiltersCommon::filtersMatch_t, std::string>> matches;
  std::vector<std::string> actions;              // "permit", "set_pcp=5"
  std::optional<std::uint32_t> policer, parent;  // the ids of those that the entry was given
};
FILTERS_API EntryColumns columnsOf(const FiltersCommon::FiltersEntry& entry);

// Where something begins in text or JSON: both count from 1.
struct TextPosition {
  std::size_t line = 1;
  std::size_t column = 1;
};
FILTERS_API std::string toText(TextPosition position);  // "12:7"

// Where a group and each of its entries begin.
struct GroupPositions {
  TextPosition group;
  std::vector<std::pair<FiltersCommon::filtersEntryId_t, TextPosition>> entries;  // by ascending id

  // The position of the entry, or of the group if it has no such entry.
  FILTERS_API TextPosition of(std::optional<FiltersCommon::filtersEntryId_t> entry) const;
};

// All or nothing: `report` is empty, or `groups` is. Findings name line and column in `path`
// ("12:7", both from 1), those about what an entry or group holds the place where it begins.
// Nothing is dropped on the way: an unknown name, one given twice, a number too large, a match that
// cannot stand beside another and an entry that its group refuses are findings. Text is read on
// behind a faulty line, which hides nothing about other entries unless it is the head of their
// group; JSON is read up to its first fault. Findings beyond `max_findings` are counted in
// Report::left_out.
struct ParsedGroups {
  std::vector<FiltersCommon::FiltersGroup> groups;
  Report report;
  std::vector<GroupPositions> positions;  // of each of the groups
};
FILTERS_API ParsedGroups groupsFromText(std::string_view text, std::size_t max_findings);
FILTERS_API ParsedGroups groupsFromJson(std::string_view json, std::size_t max_findings);
// The same with 1,000 findings.
FILTERS_API ParsedGroups groupsFromText(std::string_view text);
FILTERS_API ParsedGroups groupsFromJson(std::string_view json);

}  // namespace FiltersInspect

#endif  // FILTER_INSPECT_FILTER_TEXT_H_
