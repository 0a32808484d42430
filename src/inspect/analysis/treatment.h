#ifndef FILTER_INSPECT_SRC_ANALYSIS_TREATMENT_H_
#define FILTER_INSPECT_SRC_ANALYSIS_TREATMENT_H_

// What an entry does with the packets that it takes.

#include <string>

#include <filter_common/filter_entries.h>
#include <filter_common/filter_entries.pb.h>

namespace FiltersInspect {

// The bytes of messages one behind the other: two lists are equal when these are.
template <class Messages>
std::string bytesOf(const Messages& messages) {
  std::string bytes;
  for (const auto& message : messages) {
    const std::string one = message.SerializePartialAsString();
    bytes += std::to_string(one.size()) + ':' + one;
  }
  return bytes;
}

// What is done with a packet: two entries treat packets alike when the keys are the same. The text
// is for people, "permit, set_pcp=5, policer 10 ingress", and need not tell everything.
std::string treatmentKey(const FiltersCommon::FiltersEntryPB& entry);
std::string treatmentText(const FiltersCommon::FiltersEntry& entry);

}  // namespace FiltersInspect

#endif  // FILTER_INSPECT_SRC_ANALYSIS_TREATMENT_H_
