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

// What is said of a group, and how many entries it keeps.
struct Checked {
  Report report;
  std::size_t entries = 0;
};

std::size_t entriesOf(const std::optional<FiltersGroup>& group) {
  return group ? group->getEntriesRef().size() : 0;
}

Checked checkAgainst(const Against& against, const std::string& bytes, DecodeLimits limits) {
  const std::size_t room = limits.max_findings;
  limits.max_findings = std::min(room, SIZE_MAX - 3) + 3;  // those that come of the suffix
  DecodedGroup decoded = decodeGroup(bytes + against.suffix(), limits);
  Report all = decoded.group ? explainHead(*decoded.group) : Report();
  for (Finding& finding : decoded.report.findings) {
    const bool isHead = finding.subject == Subject::kGroup && !finding.entry;
    const bool isOurs =
        finding.bytes && finding.bytes->offset + finding.bytes->length > bytes.size();
    const bool isTwice =
        finding.code == Code::kFieldRepeated || finding.code == Code::kStageTypePair;
    if (!isOurs && !(isHead && isTwice)) all.findings.push_back(std::move(finding));
  }
  decoded.report.findings.clear();
  all.append(std::move(decoded.report));
  all.keep(room);
  return {std::move(all), entriesOf(decoded.group)};
}

// What was read from text or JSON has no bytes; those that it writes are no place in the file.
Report checkWritten(const std::string& bytes, const DecodeLimits& limits) {
  Report report = decodeGroup(bytes, limits).report;
  for (Finding& finding : report.findings) {
    finding.path.clear();
    finding.bytes.reset();
  }
  return report;
}

class Checker {
 public:
  Checker(const Options& options, Console* console) : options_(options), console_(*console) {
    if (!options.stage.empty()) against_.stage = fromName<filtersGroupStage_t>(options.stage);
    if (!options.type.empty()) against_.type = fromName<filtersGroupType_t>(options.type);
  }

  Exit check(Input& input) {
    FileReport all(options_, input);
    for (InputGroup& group : input.groups) {
      auto [report, kept] = check(input, group, all.room());
      all.add(group, std::move(report), kept, &console_);
      if (group.group) all.add(group, unusualValues(*group.group, all.room()), 0, &console_);
    }
    const bool found = all.hasFound();
    if (!options_.json) console_.writeLine(all.summary());
    inputs_.push_back(all.take());
    return found ? kExitFound : kExitFine;
  }

  void finish() {
    if (!inputs_.empty() && options_.json) console_.write(inputs_);
  }
 private:
  Checked check(const Input& input, InputGroup& group, std::size_t room) {
    const DecodeLimits limits = {room, SIZE_MAX};  // the file was not too large
    if (!group.group) return {std::move(group.report)};
    if (against_.isGiven()) return checkAgainst(against_, input.bytesOf(group), limits);
    if (input.form != Form::kBytes) group.report = checkWritten(input.bytesOf(group), limits);
    return {std::move(group.report), entriesOf(group.group)};
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
