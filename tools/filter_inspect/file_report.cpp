#include "file_report.h"

#include <algorithm>

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
  all_.append(std::move(report));
}

std::string FileReport::summary() const {
  FiltersInspect::SeverityCounts counts = {};
  for (const Finding& finding : all_.findings) ++counts[static_cast<std::size_t>(finding.severity)];
  std::string text = printable(input_.file) + ": " + counted(input_.groups.size(), "group") + ", " +
                     counted(entries_, "entry");
  if (!all_.findings.empty()) text += ", " + FiltersInspect::countsText(counts);
  if (all_.left_out != 0)
    text += "; left out: " + FiltersInspect::countsText(all_.left_out_by_severity) +
            "; --max-findings=N shows more";
  return all_.empty() ? text + ", nothing to say" : text;
}

}  // namespace FilterInspectTool
