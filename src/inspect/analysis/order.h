#ifndef FILTER_INSPECT_SRC_ANALYSIS_ORDER_H_
#define FILTER_INSPECT_SRC_ANALYSIS_ORDER_H_

#include <filter_inspect/filter_analysis.h>

namespace FiltersInspect {

// The entry with the smaller rank comes first. Entries of one rank tie.
std::uint64_t rankOf(Order order, FiltersCommon::filtersEntryId_t id,
                     FiltersCommon::filtersEntryPriority_t priority);

}  // namespace FiltersInspect

#endif  // FILTER_INSPECT_SRC_ANALYSIS_ORDER_H_
