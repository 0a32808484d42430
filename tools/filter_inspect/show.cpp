#include <filter_inspect/filter_text.h>

#include <sstream>

#include "input.h"

namespace FilterInspectTool {
namespace {

std::string dumped(const FiltersGroup& group) {
  std::ostringstream dump;
  dump << group;
  return dump.str();
}

// With several files, each group comes after a comment that names its file. All groups make one
// document.
void show(const std::vector<Input>& inputs, bool asText, Console* console) {
  if (asText) console->write(FiltersInspect::toText(std::vector<FiltersGroup>()));
  for (const Input& input : inputs) {
    for (const InputGroup& group : input.groups) {
      if (!group.group) continue;
      if (inputs.size() > 1) console->writeLine("# " + printable(group.place));
      console->write(asText ? FiltersInspect::groupLines(*group.group) : dumped(*group.group));
    }
  }
}

}  // namespace

Exit runShow(const Options& options, Console* console) {
  const std::vector<Input> inputs = readInputs(options, console);
  const std::string as = !options.as.empty() ? options.as : options.json ? "json" : "text";
  if (inputs.empty()) return kExitTrouble;
  if (as == "json") {
    console->write(FiltersInspect::toJson(groupsOf(inputs)));
  } else {
    show(inputs, as == "text", console);
  }
  for (const Input& input : inputs) tellLosses(input, console);
  return kExitFine;
}

}  // namespace FilterInspectTool
