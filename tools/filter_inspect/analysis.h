#ifndef FILTER_INSPECT_TOOLS_ANALYSIS_H_
#define FILTER_INSPECT_TOOLS_ANALYSIS_H_

// Functions for all commands that analyse rules.

#include <filter_inspect/filter_analysis.h>

#include <string>
#include <string_view>

#include "console.h"

namespace FilterInspectTool {

// The order that --order names, or kUnspecified.
FiltersInspect::Order orderOf(const Options& options);

// The options of the command line for an analysis. If the work takes longer than a second, a
// terminal shows its progress.
FiltersInspect::AnalysisOptions analysisOf(const Options& options, std::string_view place,
                                           Console* console);

// assumptionNumbers() returns "assumptions A1-A5: filter-inspect(1)". restsOn() puts the order
// before this text: "order: unspecified; assumptions ...".
std::string assumptionNumbers();
std::string restsOn(FiltersInspect::Order order);

}  // namespace FilterInspectTool

#endif  // FILTER_INSPECT_TOOLS_ANALYSIS_H_
