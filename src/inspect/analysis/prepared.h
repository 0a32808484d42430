#ifndef FILTER_INSPECT_SRC_ANALYSIS_PREPARED_H_
#define FILTER_INSPECT_SRC_ANALYSIS_PREPARED_H_

// The entries of a group, prepared for tracing.

#include <cstdint>
#include <string>
#include <vector>

#include "classifier.h"
#include "takers.h"

namespace FiltersInspect {

struct Tracer::Prepared {
  Prepared(std::vector<PreparedEntry> itsEntries, std::vector<std::string> itsTreatments);

  const std::vector<PreparedEntry> entries;  // in their order
  const std::vector<std::string> treatments;
  const Classifier classifier;
  const std::uint64_t serial;  // no other object of this process has this number
};

}  // namespace FiltersInspect

#endif  // FILTER_INSPECT_SRC_ANALYSIS_PREPARED_H_
