#include <algorithm>
#include <set>

#include "analysis.h"
#include "file_report.h"
#include "output.h"
#include "picture.h"
#include "policy_file.h"
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
  // After the analysis, findings about entries that --entry does not name, and findings that the
  // policy accepts, are dropped. So the analysis must keep more findings than are printed.
  // Otherwise those that are dropped could displace others.
  constexpr std::size_t kMostToChooseFrom = 100000;
  const bool isAll = options.entries.empty() && options.policy.empty();
  how.max_findings =
      isAll ? options.max_findings : std::max(options.max_findings, kMostToChooseFrom);
  how.max_steps = options.max_steps;
  how.progress = console->progressOf("analysing", place);
  return how;
}

std::string assumptionNumbers() {
  const auto numberOf = [](std::string_view assumption) {
    return std::string(assumption.substr(0, assumption.find(':')));
  };
  return "assumptions " + numberOf(assumptions().front()) + '-' + numberOf(assumptions().back()) +
         ": filter-inspect(1)";
}

std::string restsOn(Order order) {
  return "order: " + std::string(nameOf(order)) + "; " + assumptionNumbers();
}

namespace {

// Reports each group that is in no file, but for which the policy accepts findings.
void tellUnseen(const Policy& policy, const std::set<FiltersCommon::filtersGroupId_t>& seen,
                const Options& options, Console* console) {
  for (const PolicyGroup& group : policy.groups()) {
    const bool isIt = !group.accepted.empty() && isAskedFor(group.group, options);
    if (!isIt || seen.count(group.group) != 0) continue;
    Finding stale =
        findingOf(Code::kAcceptStale, "there is no group " + std::to_string(group.group));
    stale.path = std::to_string(group.line) + ":1";
    console->aside(options.policy, {{stale}});
  }
}

}  // namespace

Exit runAnalyse(const Options& given, Console* console) {
  Options options = given;
  if (options.picture == "-") {
    console->trouble(Code::kUsage, "--svg", "standard output takes the report, not the picture");
    return kExitTrouble;
  }
  std::optional<Policy> policy;
  if (!options.policy.empty()) {
    policy = readPolicy(options, console);
    const auto its = policy ? orderOf(*policy, options, console) : std::nullopt;
    if (!its) return kExitTrouble;
    options.order = nameOf(*its);
  }
  const Order order = orderOf(options);
  std::vector<ReportInput> documents;
  Picture picture(order);
  Selection selection(options);
  bool found = false;
  std::set<FiltersCommon::filtersGroupId_t> seen;
  forEachInput(options, {}, console, [&](Input& input) {
    selection.choose(&input);
    tellLosses(input, console);
    FileReport all(options, input);
    std::size_t entries = 0;
    for (const InputGroup& group : input.groups) {
      if (!group.group) continue;
      Report report = analyse(*group.group, analysisOf(options, group.place, console));
      console->hideProgress();
      seen.insert(group.group->getId());
      if (policy) all.addAccepted(acceptFindings(*policy, group.group->getId(), &report));
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
  if (policy) tellUnseen(*policy, seen, options, console);
  if (options.picture) writeTo(*options.picture, picture.take(), console);
  if (options.json) console->write(documents, order);
  return found ? kExitFound : kExitFine;
}

}  // namespace FilterInspectTool
