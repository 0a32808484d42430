#ifndef FILTER_INSPECT_TOOLS_PICTURE_H_
#define FILTER_INSPECT_TOOLS_PICTURE_H_

// Groups drawn as tables: a row for each entry, in the order in which they come, a column for each
// field that some entry asks. Entries that an analysis has something to say of are coloured; of
// large groups they and those that it names are all that is drawn.

#include <filter_inspect/filter_analysis.h>

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
  // SVG: XML in ASCII.
  std::string take() const;
 private:
  // The next line of a table, with what stands in its columns.
  void drawRow(const char* style, const std::vector<std::string_view>& cells);
  void drawText(std::size_t x, const char* style, std::string_view text, std::size_t most = 0);

  const FiltersInspect::Order order_;
  std::string body_;
  std::size_t width_ = 0, y_ = 0;
  std::vector<std::size_t> widths_;  // of the columns at hand
  Report left_out_;                  // findings that are not drawn
};

}  // namespace FilterInspectTool

#endif  // FILTER_INSPECT_TOOLS_PICTURE_H_
