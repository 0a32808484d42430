#include "file_report.h"

#include <algorithm>

namespace FilterInspectTool {
namespace {

// "g.bin: 2 groups, 12 entries, nothing to say"
std::string summaryOf(const Input& input, std::size_t entries, const Report& all,
                      std::size_t accepted) {
  FiltersInspect::SeverityCounts counts = {};
  for (const Finding& finding : all.findings) ++counts[static_cast<std::size_t>(finding.severity)];
  std::string text = printable(input.file) + ": " + counted(input.groups.size(), "group") + ", " +
                     counted(entries, "entry");
  if (!all.findings.empty()) text += ", " + FiltersInspect::countsText(counts);
  if (all.left_out != 0) text += "; " + leftOutText(all);
  if (all.empty()) text += accepted == 0 ? ", nothing to say" : ", nothing else to say";
  if (accepted != 0) text += "; " + std::to_string(accepted) + " accepted";
  return text;
}

}  // namespace

void FileReport::add(const InputGroup& group, Report&& report) {
  input_.locate(group, &report);
  add(std::move(report));
}

Report FileReport::take() {
  Report all = all_.take();
  const bool isAll = all.left_out == 0;
  std::stable_sort(all.findings.begin(), all.findings.end(),
                   [isAll](const Finding& a, const Finding& b) {
                     if (!isAll && a.severity != b.severity) return a.severity > b.severity;
                     return a.group_number < b.group_number;
                   });
  return all;
}

ReportInput FileReport::write(std::size_t entries, const std::string& tail, Console* console) {
  Report all = take();
  if (!options_.json) {
    console->write(input_.file, all);
    console->writeLine(summaryOf(input_, entries, all, accepted_) + tail);
  }
  return {input_.file, input_.groups.size(), std::move(all), accepted_};
}

}  // namespace FilterInspectTool
