#ifndef FILTER_INSPECT_TOOLS_ANALYSIS_H_
#define FILTER_INSPECT_TOOLS_ANALYSIS_H_

// What commands of analysis share.

#include <filter_inspect/filter_analysis.h>

#include <string>
#include <string_view>

#include "console.h"

namespace FilterInspectTool {

// What --order says; unspecified where nothing does.
FiltersInspect::Order orderOf(const Options& options);

// What the command line says, and a line on a terminal for what takes longer than a second.
FiltersInspect::AnalysisOptions analysisOf(const Options& options, std::string_view place,
                                           Console* console);

// "order: unspecified; assumptions A1-A5: filter-inspect(1)"
std::string restsOn(FiltersInspect::Order order);

}  // namespace FilterInspectTool

#endif  // FILTER_INSPECT_TOOLS_ANALYSIS_H_
