#ifndef FILTER_INSPECT_TOOLS_FILE_REPORT_H_
#define FILTER_INSPECT_TOOLS_FILE_REPORT_H_

// Collects the findings of a command about all groups of a file, and keeps the most severe of them.

#include <cstddef>
#include <string>
#include <utility>

#include "input.h"

namespace FilterInspectTool {

class FileReport {
 public:
  FileReport(const Options& options, const Input& input)
      : options_(options), input_(input), all_(options.max_findings) {}

  // Adds a report about one of the input's groups.
  void add(const InputGroup& group, Report&& report);
  // Adds a report about several groups. The findings of this report must already name their groups.
  void add(Report&& report) { all_.append(std::move(report)); }
  // Counts findings that a policy accepts. The reports do not include these findings.
  void addAccepted(std::size_t number) { accepted_ += number; }
  // All findings, group by group. If the limit left out some findings, the most severe of the
  // others come first.
  Report take();
  // Writes the findings and a summary that ends in `tail`. With --json, only returns the `input`
  // object of a document.
  ReportInput write(std::size_t entries, const std::string& tail, Console* console);
 private:
  const Options& options_;
  const Input& input_;
  FiltersInspect::LimitedReport all_;
  std::size_t accepted_ = 0;
};

}  // namespace FilterInspectTool

#endif  // FILTER_INSPECT_TOOLS_FILE_REPORT_H_
