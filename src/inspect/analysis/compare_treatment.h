#ifndef FILTER_INSPECT_SRC_ANALYSIS_COMPARE_TREATMENT_H_
#define FILTER_INSPECT_SRC_ANALYSIS_COMPARE_TREATMENT_H_

#include <vector>

#include <filter_inspect/filter_analysis.h>

#include "packet_words.h"

namespace FiltersInspect {

// The packets that are compared: those in a set, or those outside of it.
struct Among {
  const std::vector<FieldSet>& packets;
  bool others;
};

// Like compareTreatment() of filter_analysis.h. `among` may be null.
Report compareTreatment(const FiltersCommon::FiltersGroup& a, const FiltersCommon::FiltersGroup& b,
                        const AnalysisOptions& options, const Among* among);

}  // namespace FiltersInspect

#endif  // FILTER_INSPECT_SRC_ANALYSIS_COMPARE_TREATMENT_H_
