#ifndef FILTER_INSPECT_TOOLS_TABLE_H_
#define FILTER_INSPECT_TOOLS_TABLE_H_

// The entries of a group as a table, for lines of text and for pictures.

#include <filter_common/filter_groups.h>
#include <filter_inspect/filter_analysis.h>

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace FilterInspectTool {

// A column with a cell for each entry.
struct Column {
  enum class Holds { kKey, kField, kTreatment };  // treatment: what is done with a packet
  std::string name;
  Holds holds;
  std::vector<std::string> cells;
};

using Entries = std::vector<const FiltersCommon::FiltersEntry*>;

// The entries of a group in the given order. Entries of equal rank are in the order of their ids.
Entries inOrder(const FiltersCommon::FiltersGroup& group, FiltersInspect::Order order);

// The columns: id, priority, each packet field that some entry tests, actions, policers and
// counters. A column without any value is left out, unless it is that of the ids, the priorities or
// the actions. Lists longer than `width` letters are cut, and end in the number of values that are
// left out. A `width` of 0 means any width.
std::vector<Column> columnsOf(const Entries& entries, std::size_t width);

// Draws a table of entries that is at most `width` letters wide. A `width` of 0 means any width. If
// the table would be wider than `width`, the widest columns move to lines of their own below each
// row, and long lists are cut. The columns of `more` stand behind the priority.
std::string drawn(const Entries& entries, std::size_t width, const std::vector<Column>& more = {});

// Breaks a text at blanks into lines of at most `width` letters. All lines but the first are
// indented.
std::string wrapped(std::string_view text, std::size_t width, std::size_t indent);

}  // namespace FilterInspectTool

#endif  // FILTER_INSPECT_TOOLS_TABLE_H_
