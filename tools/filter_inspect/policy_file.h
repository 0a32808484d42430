#ifndef FILTER_INSPECT_TOOLS_POLICY_FILE_H_
#define FILTER_INSPECT_TOOLS_POLICY_FILE_H_

#include <filter_inspect/filter_policy.h>

#include <optional>
#include <string>

#include "console.h"

namespace FilterInspectTool {

// Reads the policy that the options name. Reports why it cannot be read.
std::optional<FiltersInspect::Policy> readPolicy(const Options& options, Console* console);

// The order of the groups that the policy and --group name, and of --order if that is given.
// Reports groups with another order.
std::optional<FiltersInspect::Order> orderOf(const FiltersInspect::Policy& policy,
                                             const Options& options, Console* console);

// True if --group asks for the group, or is not given.
bool isAskedFor(FiltersCommon::filtersGroupId_t group, const Options& options);

}  // namespace FilterInspectTool

#endif  // FILTER_INSPECT_TOOLS_POLICY_FILE_H_
