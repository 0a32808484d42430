#include <filter_inspect/filter_names.h>
#include <filter_inspect/filter_text.h>

#include <sstream>

#include "analysis.h"
#include "input.h"
#include "output.h"
#include "selection.h"
#include "table.h"

namespace FilterInspectTool {
namespace {

std::string dumped(const FiltersGroup& group) {
  std::ostringstream dump;
  dump << group;
  return dump.str();
}

// A text such as "ingress (as packets come in)". If the code has no name, the text is its number.
template <class Code>
std::string described(Code code) {
  const std::string_view name = FiltersInspect::nameOf(code);
  const std::string text =
      name.empty() ? std::to_string(static_cast<std::uint32_t>(code)) : std::string(name);
  return text + " (" + std::string(FiltersInspect::describe(code)) + ')';
}

std::string titleOf(const Input& input, const InputGroup& group) {
  const FiltersGroup& its = *group.group;
  // For bytes, the position of a group already has the word "group", so the word would appear
  // twice.
  const char* id = input.form == FileForm::kBytes ? ": id " : ": group ";
  return printable(group.place) + id + std::to_string(its.getId()) + ", priority " +
         std::to_string(its.getPriority()) + ", stage " + described(its.getStage()) + ", type " +
         described(its.getType());
}

// Writes one table for each group.
void showTables(const std::vector<Input>& inputs, const Options& options, Console* console) {
  const std::size_t width = console->width();
  const char* gap = "";  // a blank line between two tables
  for (const Input& input : inputs) {
    if (input.groups.empty()) console->writeLine(printable(input.file) + ": no groups");
    for (const InputGroup& group : input.groups) {
      if (!group.group) continue;
      console->write(gap + wrapped(titleOf(input, group), width, 4) + '\n');
      const Entries entries = inOrder(*group.group, orderOf(options));
      console->write(entries.empty() ? "no entries\n" : drawn(entries, width));
      gap = "\n";
    }
  }
}

// Writes all groups as one document of text or JSON. If there are several files, a comment before
// each group names its file.
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

// Keeps the selected groups and entries. Drops a group without selected entries. Returns false if
// no input has a selected id.
bool choose(const Options& options, std::vector<Input>* inputs, Console* console) {
  Selection selection(options);
  for (Input& input : *inputs) {
    selection.choose(&input);
    for (InputGroup& group : input.groups) {
      if (!group.group || options.entries.empty()) continue;
      std::vector<FiltersCommon::filtersEntryId_t> others;
      for (const auto& [id, entry] : group.group->getEntriesRef()) {
        if (!selection.has(id)) others.push_back(id);
      }
      for (const auto id : others) static_cast<void>(group.group->removeEntry(id));
      if (!others.empty() && group.group->getEntriesRef().empty()) group.group.reset();
    }
    selection.keep(&input.report);
  }
  return selection.isThere(console);
}

}  // namespace

Exit runShow(const Options& options, Console* console) {
  const std::string as = !options.as.empty() ? options.as : options.json ? "json" : "table";
  if (!isCompactForJson(options, as, console)) return kExitTrouble;
  std::vector<Input> inputs = readInputs(options, console);
  if (inputs.empty() || !choose(options, &inputs, console)) return kExitTrouble;
  if (as == "json") {
    console->write(jsonOf(groupsOf(inputs), options));
  } else if (as == "table") {
    showTables(inputs, options, console);
  } else {
    show(inputs, as == "text", console);
  }
  for (const Input& input : inputs) tellLosses(input, console);
  return kExitFine;
}

}  // namespace FilterInspectTool
