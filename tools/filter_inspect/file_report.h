#ifndef FILTER_INSPECT_TOOLS_FILE_REPORT_H_
#define FILTER_INSPECT_TOOLS_FILE_REPORT_H_

// What commands say of a file: the most severe findings about all of its groups.

#include <cstddef>
#include <string>
#include <utility>

#include "input.h"

namespace FilterInspectTool {

class FileReport {
 public:
  FileReport(const Options& options, const Input& input)
      : options_(options), input_(input), all_(options.max_findings) {}

  // A report about one of the input's groups.
  void add(const InputGroup& group, Report&& report);
  // A report about several groups, which it names.
  void add(Report&& report) { all_.append(std::move(report)); }
  // All that was added: one group after the other, but where not all is told, what weighs most
  // comes first.
  Report take();
  // Writes it, with `tail` behind the summary, unless documents are wanted.
  ReportInput write(std::size_t entries, const std::string& tail, Console* console);
 private:
  const Options& options_;
  const Input& input_;
  FiltersInspect::LimitedReport all_;
};

}  // namespace FilterInspectTool

#endif  // FILTER_INSPECT_TOOLS_FILE_REPORT_H_
