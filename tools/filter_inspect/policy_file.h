#ifndef FILTER_INSPECT_TOOLS_POLICY_FILE_H_
#define FILTER_INSPECT_TOOLS_POLICY_FILE_H_

#include <filter_inspect/filter_policy.h>

#include <optional>
#include <string>

#include "console.h"

namespace FilterInspectTool {

// Reads the policy that the options name. Reports why it cannot be read.
std::optional<FiltersInspect::Policy> readPolicy(const Options& options, Console* console);

// Returns the order of --order, or without it the order that the policy has for the groups of
// --group. Reports a group that has another order in the policy.
std::optional<FiltersInspect::Order> orderOf(const FiltersInspect::Policy& policy,
                                             const Options& options, Console* console);

// True if --group asks for the group, or is not given.
bool isAskedFor(FiltersCommon::filtersGroupId_t group, const Options& options);

}  // namespace FilterInspectTool

#endif  // FILTER_INSPECT_TOOLS_POLICY_FILE_H_
