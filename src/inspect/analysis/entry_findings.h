#ifndef FILTER_INSPECT_SRC_ANALYSIS_ENTRY_FINDINGS_H_
#define FILTER_INSPECT_SRC_ANALYSIS_ENTRY_FINDINGS_H_

// Findings about the entries of one group.

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <filter_inspect/filter_report.h>

namespace FiltersInspect {

// A report about entries of a group, with a limit of findings.
class EntryFindings {
 public:
  EntryFindings(FiltersCommon::filtersGroupId_t group, std::size_t most)
      : group_(group), report_(most) {}
  // As LimitedReport::add(), for a finding about the entry, or about the group if there is none.
  Finding* add(Code code, std::optional<FiltersCommon::filtersEntryId_t> entry);
  Report take() { return report_.take(); }
 private:
  FiltersCommon::filtersGroupId_t group_;
  LimitedReport report_;
};

// "entry 10", "entries 10, 20 and 30", "entries 1, 2, 3, 4 and 60 more". With `others`, for more
// entries than are known, "entries 10, 20 and others".
std::string entriesText(const std::vector<std::uint32_t>& ids, bool others = false);

}  // namespace FiltersInspect

#endif  // FILTER_INSPECT_SRC_ANALYSIS_ENTRY_FINDINGS_H_
