#ifndef FILTER_INSPECT_TOOLS_ANALYSIS_H_
#define FILTER_INSPECT_TOOLS_ANALYSIS_H_

// Functions that the commands of analysis share.

#include <filter_inspect/filter_analysis.h>

#include <string>
#include <string_view>

#include "console.h"

namespace FilterInspectTool {

// The order that --order gives; unspecified without it.
FiltersInspect::Order orderOf(const Options& options);

// The options of the command line. Work that takes longer than a second shows its progress on a
// terminal.
FiltersInspect::AnalysisOptions analysisOf(const Options& options, std::string_view place,
                                           Console* console);

// "order: unspecified; assumptions A1-A5: filter-inspect(1)", and the part behind the order.
std::string assumptionNumbers();
std::string restsOn(FiltersInspect::Order order);

}  // namespace FilterInspectTool

#endif  // FILTER_INSPECT_TOOLS_ANALYSIS_H_
