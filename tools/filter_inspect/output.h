#ifndef FILTER_INSPECT_TOOLS_OUTPUT_H_
#define FILTER_INSPECT_TOOLS_OUTPUT_H_

#include <string>
#include <string_view>

#include "console.h"

namespace FilterInspectTool {

// Writes a file that is there whole or not at all, or to standard output where it is "-". What goes
// wrong is told.
void writeTo(const std::string& name, std::string_view content, Console* console);

}  // namespace FilterInspectTool

#endif  // FILTER_INSPECT_TOOLS_OUTPUT_H_
