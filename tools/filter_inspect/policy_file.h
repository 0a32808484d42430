#ifndef FILTER_INSPECT_TOOLS_POLICY_FILE_H_
#define FILTER_INSPECT_TOOLS_POLICY_FILE_H_

#include <filter_inspect/filter_policy.h>

#include <optional>
#include <string>

#include "console.h"

namespace FilterInspectTool {

// Reads the policy that the options name. If the policy cannot be read, reports the reason.
std::optional<FiltersInspect::Policy> readPolicy(const Options& options, Console* console);

// Returns the order of --order. Without --order, returns the order that the policy has for the
// groups of --group. Reports an error if the policy has another order for one of these groups.
std::optional<FiltersInspect::Order> orderOf(const FiltersInspect::Policy& policy,
                                             const Options& options, Console* console);

// True if --group names the group or is not given.
bool isAskedFor(FiltersCommon::filtersGroupId_t group, const Options& options);

}  // namespace FilterInspectTool

#endif  // FILTER_INSPECT_TOOLS_POLICY_FILE_H_
