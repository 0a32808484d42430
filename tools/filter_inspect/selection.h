#ifndef FILTER_INSPECT_TOOLS_SELECTION_H_
#define FILTER_INSPECT_TOOLS_SELECTION_H_

// The groups and entries that --group and --entry ask for.

#include <filter_inspect/filter_report.h>

#include <cstdint>
#include <optional>
#include <set>

#include "input.h"

namespace FilterInspectTool {

class Selection {
 public:
  explicit Selection(const Options& options) : options_(options) {}

  // Takes the other groups out of the input, with the findings about them.
  void choose(Input* input);
  // Reports the ids that no input has. Returns false if there is one.
  bool isThere(Console* console) const;

  bool has(std::uint32_t entry) const;
  // Drops findings about other entries. What it drops is not counted as left out.
  void keep(Report* report) const;
 private:
  // The ids that were asked for, and the ids that were found.
  struct Ids {
    std::set<std::uint32_t> there;
    bool tellMissing(const char* what, const std::vector<std::uint32_t>& asked,
                     Console* console) const;
  };

  const Options& options_;
  Ids groups_, entries_;
};

// Reads the file of a command that has one, keeps the groups that are asked for, and tells what was
// lost. Returns nothing after trouble, which has been reported.
std::optional<Input> readChosen(const Options& options, Selection* selection, Console* console);

}  // namespace FilterInspectTool

#endif  // FILTER_INSPECT_TOOLS_SELECTION_H_
