#ifndef FILTER_INSPECT_SRC_REPORT_REPORT_JSON_H_
#define FILTER_INSPECT_SRC_REPORT_REPORT_JSON_H_

#include <filter_inspect/filter_report.h>

#include <string>
#include <string_view>
#include <vector>

namespace FiltersInspect {

// The order and the assumptions behind the claims of an analysis.
struct ReportBasis {
  std::string_view order;
  const std::vector<std::string_view>& assumptions;
};

// The JSON document of reports. `basis` is null for reports without an analysis. A document on one
// line leaves out the assumptions, because a stream of such lines would repeat them.
std::string reportJson(const std::vector<ReportInput>& inputs, std::string_view command,
                       const ReportBasis* basis, bool isLine = false);

}  // namespace FiltersInspect

#endif  // FILTER_INSPECT_SRC_REPORT_REPORT_JSON_H_
