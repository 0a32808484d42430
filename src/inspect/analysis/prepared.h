#ifndef FILTER_INSPECT_SRC_ANALYSIS_PREPARED_H_
#define FILTER_INSPECT_SRC_ANALYSIS_PREPARED_H_

// The entries of a group, prepared for tracing.

#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "classifier.h"
#include "takers.h"

namespace FiltersInspect {

// Prepares the entries of one or more groups. Equal matches of different groups get the same
// number, and equal treatments get the same number.
class Preparer {
 public:
  // Returns the prepared entries, sorted by `order`.
  std::vector<PreparedEntry> entriesOf(const FiltersCommon::FiltersGroup& group, Order order);
  std::vector<std::string> takeTreatments() { return std::move(texts_); }
 private:
  MatchNumbers numbers_;
  std::map<std::string, std::size_t> treatments_;
  std::vector<std::string> texts_;  // of the different treatments
};

struct Tracer::Prepared {
  Prepared(std::vector<PreparedEntry> itsEntries, std::vector<std::string> itsTreatments);

  const std::vector<PreparedEntry> entries;  // in their order
  const std::vector<std::string> treatments;
  const Classifier classifier;
  const std::uint64_t serial;  // no other object of this process has this number
};

}  // namespace FiltersInspect

#endif  // FILTER_INSPECT_SRC_ANALYSIS_PREPARED_H_
