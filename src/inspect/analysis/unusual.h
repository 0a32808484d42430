#ifndef FILTER_INSPECT_SRC_ANALYSIS_UNUSUAL_H_
#define FILTER_INSPECT_SRC_ANALYSIS_UNUSUAL_H_

// What hardly any sender means.

#include <filter_common/filter_entries.h>

#include "entry_findings.h"

namespace FiltersInspect {

// Adds what is odd about the entry: about the value of a match or action, about what stands beside
// what, about what is missing. Each sentence says what to write instead. Only that is told which
// hardly any rule of a working filter has: a mask of 0 for every address, a rule that denies
// packets which no station should send, and the like are usual.
void addOddities(const FiltersCommon::FiltersEntry& entry, EntryFindings* findings);

}  // namespace FiltersInspect

#endif  // FILTER_INSPECT_SRC_ANALYSIS_UNUSUAL_H_
