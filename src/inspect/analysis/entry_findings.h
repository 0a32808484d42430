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
  // Like LimitedReport::add(). The finding is about the entry, or about the group if no entry is
  // given.
  Finding* add(Code code, std::optional<FiltersCommon::filtersEntryId_t> entry);
  Report take() { return report_.take(); }
 private:
  FiltersCommon::filtersGroupId_t group_;
  LimitedReport report_;
};

// Names entries: "entry 10", "entries 10, 20 and 30" or "entries 1, 2, 3, 4 and 60 more". `others`
// is true if there are more entries than those in `ids`: "entries 10, 20 and others".
std::string entriesText(const std::vector<std::uint32_t>& ids, bool others = false);

}  // namespace FiltersInspect

#endif  // FILTER_INSPECT_SRC_ANALYSIS_ENTRY_FINDINGS_H_
