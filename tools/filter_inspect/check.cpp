#include <filter_inspect/filter_analysis.h>
#include <filter_inspect/filter_decode.h>
#include <filter_inspect/filter_explain.h>
#include <filter_inspect/filter_names.h>

#include <algorithm>
#include <cstdint>

#include "file_report.h"

namespace FilterInspectTool {
namespace {

using namespace FiltersCommon;
using namespace FiltersInspect;

// Reports an error if no group may have this stage and type together.
Report explainHead(const FiltersGroup& group) {
  FiltersGroup blank(group.getId());
  Report report = explainStage(blank, group.getStage());
  if (report.empty() && blank.setStage(group.getStage()) == FILTERS_OK) {
    report = explainType(blank, group.getType());
  }
  return report;
}

class Checker {
 public:
  Checker(const Options& options, Console* console) : options_(options), console_(*console) {
    if (!options.stage.empty()) instead_.stage = fromName<filtersGroupStage_t>(options.stage);
    if (!options.type.empty()) instead_.type = fromName<filtersGroupType_t>(options.type);
  }

  Exit check(Input& input) {
    FileReport all(options_, input);
    if (isAgainstOthers()) dropOwn(input);
    all.add(std::move(input.report));
    std::size_t entries = 0;
    for (const InputGroup& group : input.groups) {
      if (!group.group) continue;
      all.add(group, check(input, group, &entries));
      all.add(group, unusualValues(*group.group, options_.max_findings));
    }
    ReportInput document = all.write(entries, "", &console_);
    const bool found = document.report.worst() != Severity::kNote;
    if (options_.json) inputs_.push_back(std::move(document));
    return found ? kExitFound : kExitFine;
  }

  // True if the command line has another stage or type for which groups are checked.
  bool isAgainstOthers() const { return instead_.stage || instead_.type; }

  void finish() {
    if (!inputs_.empty()) console_.write(inputs_);
  }
 private:
  // The findings about a group that has been read. The findings of reading it are not among them.
  Report check(const Input& input, const InputGroup& group, std::size_t* entries) const {
    const DecodeLimits limits = {options_.max_findings, SIZE_MAX};  // the file was not too large
    if (isAgainstOthers()) {
      Report report = checkInstead(input.bytesOf(group), limits, entries);
      if (input.form != FileForm::kBytes) dropOrder(&report);
      return report;
    }
    *entries += group.group->getEntriesRef().size();
    return input.form == FileForm::kBytes ? Report()
                                          : decodeGroup(input.bytesOf(group), limits).report;
  }

  // The findings about the group as if it had the stage and type of --stage and --type.
  Report checkInstead(const std::string& bytes, const DecodeLimits& limits,
                      std::size_t* entries) const {
    DecodedGroup decoded = decodeGroupAs(bytes, instead_, limits);
    LimitedReport all(limits.max_findings);
    if (decoded.group) {
      all.append(explainHead(*decoded.group));
      *entries += decoded.group->getEntriesRef().size();
    }
    all.append(std::move(decoded.report));
    return all.take();
  }

  // Drops findings about the order of matches, actions and entries, because people write these in
  // any order.
  static void dropOrder(Report* report) {
    auto& all = report->findings;
    const auto isOrder = [](const Finding& one) { return one.code == Code::kOrderDiffers; };
    all.erase(std::remove_if(all.begin(), all.end(), isOrder), all.end());
  }

  // Drops the findings about groups with the stage and type that the file gives them. Keeps
  // findings about groups that could not be made, because nothing else is known about these groups.
  static void dropOwn(Input& input) {
    Report own;
    // There is an error for each group that could not be made, but the report may lack this error
    // because of its limit.
    const bool areMade =
        std::all_of(input.groups.begin(), input.groups.end(),
                    [](const InputGroup& group) { return group.group.has_value(); });
    const auto errors = static_cast<std::size_t>(Severity::kError);
    if (!areMade) own.leaveOut(Severity::kError, input.report.left_out_by_severity[errors]);
    for (Finding& finding : input.report.findings) {
      const bool isMade = input.groups[*finding.group_number - 1].group.has_value();
      if (!isMade) own.findings.push_back(std::move(finding));
    }
    input.report = std::move(own);
  }

  const Options& options_;
  Console& console_;
  StageTypeInstead instead_;  // replaces the stage or type of each group
  std::vector<ReportInput> inputs_;
};

}  // namespace

Exit runCheck(const Options& options, Console* console) {
  Checker checker(options, console);
  Exit exit = kExitFine;
  forEachInput(options, {Severity::kNote, checker.isAgainstOthers()}, console,
               [&](Input& input) { exit = std::max(exit, checker.check(input)); });
  checker.finish();
  return exit;
}

}  // namespace FilterInspectTool
