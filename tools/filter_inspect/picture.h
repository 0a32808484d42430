#ifndef FILTER_INSPECT_TOOLS_PICTURE_H_
#define FILTER_INSPECT_TOOLS_PICTURE_H_

// Draws groups as tables. A table has a row for each entry, in the order of the entries, and a
// column for each match code that some entry has. Entries with a finding are coloured. In a large
// group, only the entries with a finding and the entries that such findings name are drawn. For
// captured traffic, bars show the hits of the entries, and a large group shows only entries with
// hits.

#include <filter_inspect/filter_analysis.h>
#include <filter_inspect/filter_traffic.h>

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "console.h"

namespace FilterInspectTool {

class Picture {
 public:
  explicit Picture(FiltersInspect::Order order) : order_(order) {}
  void add(const std::string& title, const FiltersCommon::FiltersGroup& group,
           const Report& report);
  void add(const std::string& title, const FiltersCommon::FiltersGroup& group,
           const FiltersInspect::Hits& hits);
  // Returns the picture as SVG, in ASCII.
  std::string take() const;
 private:
  struct Table;
  void draw(const std::string& title, const Table& table);
  // Draws the next line of a table, one cell for each column.
  void drawRow(const char* style, const std::vector<std::string_view>& cells);
  void drawBox(std::size_t x, std::size_t width, const char* style);
  void drawText(std::size_t x, const char* style, std::string_view text, std::size_t most = 0);

  const FiltersInspect::Order order_;
  std::string body_;
  std::size_t width_ = 0, y_ = 0;
  std::vector<std::size_t> widths_;  // of the current table's columns
  Report left_out_;                  // counts the findings that are not drawn
};

}  // namespace FilterInspectTool

#endif  // FILTER_INSPECT_TOOLS_PICTURE_H_
