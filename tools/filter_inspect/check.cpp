#include <filter_common/filter_groups.pb.h>
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

// The stage and type that groups are checked against in place of their own.
struct Against {
  std::optional<filtersGroupStage_t> stage;
  std::optional<filtersGroupType_t> type;

  bool isGiven() const { return stage || type; }
  // What makes of a group's bytes those of one that has them: of a number that stands there twice
  // the later one counts, and every byte keeps its place.
  std::string suffix() const {
    FiltersGroupPB head;
    if (stage) head.set_stage_(static_cast<std::uint32_t>(*stage));
    if (type) head.set_type_(static_cast<std::uint32_t>(*type));
    return head.SerializePartialAsString();
  }
};

// Whether a group may have both at all.
Report explainHead(const FiltersGroup& group) {
  FiltersGroup blank(group.getId());
  Report report = explainStage(blank, group.getStage());
  if (report.empty() && blank.setStage(group.getStage()) == FILTERS_OK) {
    report = explainType(blank, group.getType());
  }
  return report;
}

constexpr std::size_t kMostOfSuffix = 4;  // findings

// Whether something is said of the suffix, which stands behind so many bytes, and not of these.
bool isOfSuffix(const Finding& finding, std::size_t size) {
  const bool isHead = finding.subject == Subject::kGroup && !finding.entry;
  const bool isTwice = finding.code == Code::kFieldRepeated || finding.code == Code::kStageTypePair;
  return (finding.bytes && finding.bytes->offset + finding.bytes->length > size) ||
         (isHead && isTwice);
}

// How many findings the suffix makes behind a head.
SeverityCounts countOfSuffix(const std::string& head, const std::string& suffix) {
  SeverityCounts counts = {};
  for (const Finding& finding : decodeGroup(head + suffix).report.findings) {
    if (isOfSuffix(finding, head.size())) ++counts[static_cast<std::size_t>(finding.severity)];
  }
  return counts;
}

Report checkAgainst(const Against& against, const std::string& bytes, DecodeLimits limits,
                    std::size_t* entries) {
  FiltersGroupPB head;
  // A suffix behind broken bytes would be read as what they lack.
  const std::string suffix = head.ParsePartialFromString(bytes) ? against.suffix() : "";
  const bool hasEntries = head.entries__size() != 0;
  head.clear_entries_();
  if (hasEntries) head.add_entries_();  // behind one the suffix is out of order
  SeverityCounts of_suffix = {};
  if (!suffix.empty()) of_suffix = countOfSuffix(head.SerializePartialAsString(), suffix);
  const std::size_t room = limits.max_findings;
  limits.max_findings = room + std::min(SIZE_MAX - room, kMostOfSuffix);
  DecodedGroup decoded = decodeGroup(bytes + suffix, limits);
  Report all = decoded.group ? explainHead(*decoded.group) : Report();
  *entries += decoded.group ? decoded.group->getEntriesRef().size() : 0;
  for (Finding& finding : decoded.report.findings) {
    if (suffix.empty() || !isOfSuffix(finding, bytes.size())) {
      all.findings.push_back(std::move(finding));
    } else {
      std::size_t& left = of_suffix[static_cast<std::size_t>(finding.severity)];
      left -= std::min<std::size_t>(left, 1);
    }
  }
  for (const Severity severity : {Severity::kNote, Severity::kWarning, Severity::kError}) {
    const auto i = static_cast<std::size_t>(severity);
    const std::size_t left = decoded.report.left_out_by_severity[i];
    all.leaveOut(severity, left - std::min(left, of_suffix[i]));
  }
  all.keep(room);
  return all;
}

class Checker {
 public:
  Checker(const Options& options, Console* console) : options_(options), console_(*console) {
    if (!options.stage.empty()) against_.stage = fromName<filtersGroupStage_t>(options.stage);
    if (!options.type.empty()) against_.type = fromName<filtersGroupType_t>(options.type);
  }

  Exit check(Input& input) {
    FileReport all(options_, input);
    if (against_.isGiven()) dropOwn(input);
    all.add(std::move(input.report));
    std::size_t entries = 0;
    for (const InputGroup& group : input.groups) {
      if (!group.group) continue;
      all.add(group, check(input, group, &entries));
      all.add(group, unusualValues(*group.group, options_.maxFindings));
    }
    ReportInput document = all.write(entries, "", &console_);
    const bool found = document.report.worst() != Severity::kNote;
    if (options_.json) inputs_.push_back(std::move(document));
    return found ? kExitFound : kExitFine;
  }

  void finish() {
    if (!inputs_.empty()) console_.write(inputs_);
  }
 private:
  // What is said of a group beside what was said when it was read.
  Report check(const Input& input, const InputGroup& group, std::size_t* entries) const {
    const DecodeLimits limits = {options_.maxFindings, SIZE_MAX};  // the file was not too large
    if (against_.isGiven()) return checkAgainst(against_, input.bytesOf(group), limits, entries);
    *entries += group.group->getEntriesRef().size();
    return input.form == FileForm::kBytes ? Report()
                                          : decodeGroup(input.bytesOf(group), limits).report;
  }

  // What is said of groups as they are; but of those that could not be made nothing else is known.
  static void dropOwn(Input& input) {
    Report own;
    // An error that was left out may be about one of them.
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
  Against against_;
  std::vector<ReportInput> inputs_;
};

}  // namespace

Exit runCheck(const Options& options, Console* console) {
  Checker checker(options, console);
  Exit exit = kExitFine;
  forEachInput(options, Severity::kNote, console,
               [&](Input& input) { exit = std::max(exit, checker.check(input)); });
  checker.finish();
  return exit;
}

}  // namespace FilterInspectTool
