#include <filter_inspect/filter_text.h>
#include <unistd.h>

#include "input.h"
#include "output.h"

namespace FilterInspectTool {
namespace {

// The framing of the output. If the input has bytes, the output has the framing of the input.
// Otherwise --framing decides. Without --framing, several groups are written with a length before
// each of them, and a single group without.
std::string framingOf(const Options& options, const Input& input) {
  if (input.form == FileForm::kBytes) return input.framing;
  if (options.framing != "auto") return options.framing;
  return input.groups.size() == 1 ? "none" : "be32";
}

// If there is no group, the output would be empty, but empty bytes are read as a group of zeros.
const char* whyNotBytes(std::size_t groups, const std::string& framing) {
  if (groups == 0) return "there is no group, and an empty file would be read as a group of zeros";
  if (groups > 1 && framing == "none")
    return "bytes of several groups need --framing=be32 or varint";
  return nullptr;
}

}  // namespace

Exit runConvert(const Options& options, Console* console) {
  if (options.to == "bytes" && options.output == "-" && ::isatty(STDOUT_FILENO) != 0) {
    console->trouble(Code::kUsage, "--to=bytes",
                     "bytes are not written to a terminal; use -o FILE or a pipe");
    return kExitTrouble;
  }
  if (!isCompactForJson(options, options.to, console)) return kExitTrouble;
  const auto inputs = readWholeInputs(options, console);
  if (!inputs) return kExitTrouble;
  const Input& input = inputs->front();
  if (!input.report.empty()) {
    console->hint(input.file + ": not converted, since that would lose something");
    return kExitFound;
  }
  const std::vector<FiltersGroup> groups = groupsOf(*inputs);
  if (options.to == "text") {
    writeTo(options.output, FiltersInspect::toText(groups), console);
  } else if (options.to == "json") {
    writeTo(options.output, jsonOf(groups, options), console);
  } else {
    const std::string framing = framingOf(options, input);
    if (const char* why = whyNotBytes(groups.size(), framing)) {
      console->trouble(Code::kUsage, input.file, why);
      return kExitTrouble;
    }
    writeTo(options.output, framed(groups, framing), console);
  }
  return kExitFine;
}

}  // namespace FilterInspectTool
