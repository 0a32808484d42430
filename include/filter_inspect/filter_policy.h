#ifndef FILTER_INSPECT_FILTER_POLICY_H_
#define FILTER_INSPECT_FILTER_POLICY_H_

// A policy is a text with promises about the rules of a group, one on each line. Each promise says
// what the rules do with some packets. The policy is kept beside the rules, and after each change
// checkPolicy() says if they still keep the promises:
//
//     filter-policy 1
//     group 1 order=highest-priority
//     never permit if ip_protocol=tcp dst_l4_port=23          # no telnet
//     always permit if src_ipv4=192.0.2.0/24 ip_protocol=tcp dst_l4_port=179
//     never taken if src_ipv4=203.0.113.0/24                  # no entry takes them
//     accept entry-redundant entry 60                         # kept for its counter
//
//     Report faults;
//     const auto policy = Policy::parse(text, &faults);
//     if (policy) std::cout << checkPolicy(group, *policy);
//
// The orders, the readings and the assumptions of filter_analysis.h hold here too: a promise holds
// only if it holds under every reading, and fails only if it fails under every reading.
// docs/policies.md describes the file.
//
// All functions may be called from any thread, if nobody changes the arguments meanwhile. They
// throw only std::bad_alloc and exceptions of a progress function.

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <filter_inspect/filter_analysis.h>
#include <filter_inspect/filter_questions.h>

namespace FiltersInspect {

inline constexpr int kPolicyVersion = 1;

// A promise about all packets of a set. `always` promises that every packet of the set is taken by
// an entry that has all of the actions. `never` promises that no packet of the set is taken by an
// entry that has any of the actions. A packet that no entry takes breaks `always`, but does not
// break `never`.
struct Promise {
  bool always;
  bool taken;          // any entry counts, whatever its actions
  ActionTest actions;  // an action without its value stands for every value
  PacketSet packets;
  std::size_t line, column;  // in the file, counted from 1
  std::string text;          // the line without its comment
  std::string comment;       // without `#` and the blanks around it
};

// A finding of analyse() that is known and wanted.
struct Acceptance {
  Code code;
  FiltersCommon::filtersEntryId_t entry;
  std::size_t line;
};

// The part of a policy that is about one group.
struct PolicyGroup {
  FiltersCommon::filtersGroupId_t group;
  Order order;
  std::size_t line;
  std::vector<Promise> promises;
  std::vector<Acceptance> accepted;
};

class FILTERS_API Policy {
 public:
  // Reads the text of a policy. Returns nothing if a part of it cannot be read. The report, which
  // may be null, then has all faults: `path` has the line and the column, for example "12:7", and
  // `word` has the wrong word. Findings beyond `max_findings` are counted in Report::left_out.
  static std::optional<Policy> parse(std::string_view text, Report* report,
                                     std::size_t max_findings = 1000);
  // The groups in the order of the file. The file names each group once.
  const std::vector<PolicyGroup>& groups() const { return groups_; }
  // Null if the policy says nothing about the group.
  const PolicyGroup* find(FiltersCommon::filtersGroupId_t group) const;
 private:
  std::vector<PolicyGroup> groups_;
};

// Checks all promises that the policy has for this group, and gives one finding for each, in the
// order of the file. The policy decides the order of the rules. options.order, options.redundant,
// options.overlaps and options.max_findings are ignored. The codes:
// - kPolicyHolds: no packet of the set can break the promise.
// - kPolicyFails: the packet in `witness` breaks the promise, under every reading and however ties
//   are decided. trace() sends the packet to `entry`, or no entry takes it if `entry` is empty. If
//   trace() names several entries, `others` has the rest of them, and each breaks the promise.
// - kPolicyOpen: the answer depends on which entry takes the packet in `witness`. The promise is
//   broken if `entry` takes the packet, and kept if one of `others` does. If `entry` or `others` is
//   empty, it stands for the case that no entry takes the packet. The message says why there is no
//   answer: the reading, the tie, or the limit of steps. If the limit was reached before a packet
//   was found, `witness` is empty.
// `path` is the line and column of the promise, and `word` is its text. `before` is what `entry`
// does with the packet, and `after` what the first of `others` does. max_steps is the limit of
// steps for each question about an entry.
FILTERS_API Report checkPolicy(const FiltersCommon::FiltersGroup& group, const Policy& policy,
                               const AnalysisOptions& options = {});

// Removes the findings that the policy accepts for this group from a report of analyse(), and
// returns their number. Adds a note (kAcceptStale) for each acceptance that fits no finding. It
// adds no such note if the report has reached its limit and left out findings, because an
// acceptance may fit one of these. Give analyse() the order that the policy has for the group.
FILTERS_API std::size_t acceptFindings(const Policy& policy, FiltersCommon::filtersGroupId_t group,
                                       Report* report);

}  // namespace FiltersInspect

#endif  // FILTER_INSPECT_FILTER_POLICY_H_
