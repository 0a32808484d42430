#ifndef FILTER_INSPECT_SRC_ANALYSIS_UNUSUAL_H_
#define FILTER_INSPECT_SRC_ANALYSIS_UNUSUAL_H_

// Finds values that senders hardly ever mean.

#include <filter_common/filter_entries.h>

#include "entry_findings.h"

namespace FiltersInspect {

// Adds a finding for each odd value of a match or action, each contradiction between parts of the
// entry, and a missing action. The sentence says what to write instead. An oddity is reported only
// if hardly any rule of a working filter has it. So two usual things are not reported: a mask of 0,
// which takes every address, and a rule that denies packets that no station should send.
void addOddities(const FiltersCommon::FiltersEntry& entry, EntryFindings* findings);

}  // namespace FiltersInspect

#endif  // FILTER_INSPECT_SRC_ANALYSIS_UNUSUAL_H_
