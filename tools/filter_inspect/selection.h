#ifndef FILTER_INSPECT_TOOLS_SELECTION_H_
#define FILTER_INSPECT_TOOLS_SELECTION_H_

// The groups and entries that --group and --entry select.

#include <filter_inspect/filter_report.h>

#include <cstdint>
#include <optional>
#include <set>

#include "input.h"

namespace FilterInspectTool {

class Selection {
 public:
  explicit Selection(const Options& options) : options_(options) {}

  // Removes the groups that are not selected, and the findings about them, from the input.
  void choose(Input* input);
  // Reports the selected ids that no input has. Returns false if there are such ids.
  bool isThere(Console* console) const;

  bool has(std::uint32_t entry) const;
  // Drops findings about entries that are not selected. The report does not count them as left out
  // by its limit.
  void keep(Report* report) const;
 private:
  // The ids that the inputs have.
  struct Ids {
    std::set<std::uint32_t> there;
    bool tellMissing(const char* what, const std::vector<std::uint32_t>& asked,
                     Console* console) const;
  };

  const Options& options_;
  Ids groups_, entries_;
};

// Reads the input of a command that takes only one file, keeps the selected groups, and reports
// losses. If there is an error, reports it and returns nothing.
std::optional<Input> readChosen(const Options& options, Selection* selection, Console* console);

}  // namespace FilterInspectTool

#endif  // FILTER_INSPECT_TOOLS_SELECTION_H_
