#include <algorithm>

#include "analysis.h"
#include "file_report.h"
#include "output.h"
#include "picture.h"
#include "selection.h"

namespace FilterInspectTool {

using namespace FiltersInspect;

Order orderOf(const Options& options) {
  return orderFromName(options.order).value_or(Order::kUnspecified);
}

AnalysisOptions analysisOf(const Options& options, std::string_view place, Console* console) {
  AnalysisOptions how;
  how.order = orderOf(options);
  how.overlaps = options.overlaps;
  how.redundant = options.redundant;
  // Findings about other entries are dropped later, and must not take the place of these.
  constexpr std::size_t kMostToChooseFrom = 100000;
  how.max_findings = options.entries.empty() ? options.max_findings
                                             : std::max(options.max_findings, kMostToChooseFrom);
  how.max_steps = options.max_steps;
  how.progress = console->progressOf("analysing", place);
  return how;
}

std::string restsOn(Order order) {
  const auto numberOf = [](std::string_view assumption) {
    return std::string(assumption.substr(0, assumption.find(':')));
  };
  return "order: " + std::string(nameOf(order)) + "; assumptions " +
         numberOf(assumptions().front()) + '-' + numberOf(assumptions().back()) +
         ": filter-inspect(1)";
}

Exit runAnalyse(const Options& options, Console* console) {
  if (options.picture == "-") {
    console->trouble(Code::kUsage, "--svg", "standard output takes the report, not the picture");
    return kExitTrouble;
  }
  const Order order = orderOf(options);
  std::vector<ReportInput> documents;
  Picture picture(order);
  Selection selection(options);
  bool found = false;
  forEachInput(options, {}, console, [&](Input& input) {
    selection.choose(&input);
    tellLosses(input, console);
    FileReport all(options, input);
    std::size_t entries = 0;
    for (const InputGroup& group : input.groups) {
      if (!group.group) continue;
      Report report = analyse(*group.group, analysisOf(options, group.place, console));
      console->hideProgress();
      selection.keep(&report);
      if (options.picture) picture.add(group.place, *group.group, report);
      all.add(group, std::move(report));
      entries += group.group->getEntriesRef().size();
    }
    ReportInput document = all.write(entries, " (" + restsOn(order) + ")", console);
    found = found || document.report.worst() != Severity::kNote;
    documents.push_back(options.json ? std::move(document) : ReportInput());
  });
  if (documents.empty() || !selection.isThere(console)) return kExitTrouble;
  if (options.picture) writeTo(*options.picture, picture.take(), console);
  if (options.json) console->write(documents, order);
  return found ? kExitFound : kExitFine;
}

}  // namespace FilterInspectTool
