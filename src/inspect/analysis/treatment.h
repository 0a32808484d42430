#ifndef FILTER_INSPECT_SRC_ANALYSIS_TREATMENT_H_
#define FILTER_INSPECT_SRC_ANALYSIS_TREATMENT_H_

// The treatment of packets by an entry.

#include <string>

#include <filter_common/filter_entries.h>
#include <filter_common/filter_entries.pb.h>

namespace FiltersInspect {

// The bytes of several messages, one after the other. Two lists of messages are equal if their
// bytes are equal.
template <class Messages>
std::string bytesOf(const Messages& messages) {
  std::string bytes;
  for (const auto& message : messages) {
    const std::string one = message.SerializePartialAsString();
    bytes += std::to_string(one.size()) + ':' + one;
  }
  return bytes;
}

// Two entries treat packets in the same way if their keys are equal. The text is for people, for
// example "permit, set_pcp=5, policer 10 ingress", and may leave out details.
std::string treatmentKey(const FiltersCommon::FiltersEntryPB& entry);
std::string treatmentText(const FiltersCommon::FiltersEntry& entry);

}  // namespace FiltersInspect

#endif  // FILTER_INSPECT_SRC_ANALYSIS_TREATMENT_H_
