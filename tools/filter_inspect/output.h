#ifndef FILTER_INSPECT_TOOLS_OUTPUT_H_
#define FILTER_INSPECT_TOOLS_OUTPUT_H_

#include <string>
#include <string_view>

#include "console.h"

namespace FilterInspectTool {

// Writes a file completely or not at all; the name "-" is standard output. Reports errors.
void writeTo(const std::string& name, std::string_view content, Console* console);

}  // namespace FilterInspectTool

#endif  // FILTER_INSPECT_TOOLS_OUTPUT_H_
