#ifndef FILTER_INSPECT_TOOLS_OUTPUT_H_
#define FILTER_INSPECT_TOOLS_OUTPUT_H_

#include <filter_common/filter_groups.h>

#include <string>
#include <string_view>
#include <vector>

#include "commands.h"
#include "console.h"

namespace FilterInspectTool {

// Writes a file completely or not at all; the name "-" is standard output. Reports errors.
void writeTo(const std::string& name, std::string_view content, Console* console);

// Returns false and reports an error if --compact is given and the form is not JSON.
bool isCompactForJson(const Options& options, std::string_view form, Console* console);
// The groups as JSON, with or without blanks.
std::string jsonOf(const std::vector<FiltersCommon::FiltersGroup>& groups, const Options& options);

}  // namespace FilterInspectTool

#endif  // FILTER_INSPECT_TOOLS_OUTPUT_H_
