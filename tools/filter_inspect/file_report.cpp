#include "file_report.h"

#include <algorithm>
#include <array>
#include <iterator>

namespace FilterInspectTool {

std::size_t FileReport::room() const {
  return options_.maxFindings - std::min(all_.findings.size(), options_.maxFindings);
}

void FileReport::add(const InputGroup& group, Report&& report, std::size_t entries,
                     Console* console) {
  if (!options_.json) console->write(group.place, report);
  entries_ += entries;
  for (Finding& finding : report.findings) {
    if (!finding.group && group.group) finding.group = group.group->getId();
  }
  std::move(report.findings.begin(), report.findings.end(), std::back_inserter(all_.findings));
  all_.leaveOut(report.left_out_worst, report.left_out);
}

std::string FileReport::summary() const {
  std::array<std::size_t, 3> counts = {};
  for (const Finding& finding : all_.findings) ++counts[static_cast<std::size_t>(finding.severity)];
  std::string text = printable(input_.file) + ": " + counted(input_.groups.size(), "group") + ", " +
                     counted(entries_, "entry");
  for (const Severity severity : {Severity::kError, Severity::kWarning, Severity::kNote}) {
    const std::size_t count = counts[static_cast<std::size_t>(severity)];
    if (count != 0) text += ", " + counted(count, nameOf(severity));
  }
  if (all_.left_out != 0)
    text += ", " + std::to_string(all_.left_out) + " left out; --max-findings=N shows more";
  return all_.empty() ? text + ", nothing to say" : text;
}

}  // namespace FilterInspectTool
