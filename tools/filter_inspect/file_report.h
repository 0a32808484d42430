#ifndef FILTER_INSPECT_TOOLS_FILE_REPORT_H_
#define FILTER_INSPECT_TOOLS_FILE_REPORT_H_

// What commands say of a file, group by group and then as a whole.

#include <cstddef>
#include <string>
#include <utility>

#include "input.h"

namespace FilterInspectTool {

class FileReport {
 public:
  FileReport(const Options& options, const Input& input) : options_(options), input_(input) {}

  // How many more findings are kept.
  std::size_t room() const;
  // A line for each finding, unless documents are wanted.
  void add(const InputGroup& group, Report&& report, std::size_t entries, Console* console);
  // "g.bin: 2 groups, 12 entries, nothing to say"
  std::string summary() const;
  // Whether something is above a note.
  bool hasFound() const { return all_.worst() != FiltersInspect::Severity::kNote; }
  ReportInput take() { return {input_.file, input_.groups.size(), std::move(all_)}; }
 private:
  const Options& options_;
  const Input& input_;
  Report all_;
  std::size_t entries_ = 0;
};

}  // namespace FilterInspectTool

#endif  // FILTER_INSPECT_TOOLS_FILE_REPORT_H_
