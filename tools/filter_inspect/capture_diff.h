#ifndef FILTER_INSPECT_TOOLS_CAPTURE_DIFF_H_
#define FILTER_INSPECT_TOOLS_CAPTURE_DIFF_H_

// Counts the captured packets that the groups of two files treat differently.

#include <filter_inspect/filter_traffic.h>

#include <utility>
#include <vector>

#include "file_report.h"
#include "selection.h"

namespace FilterInspectTool {

class CaptureDiff {
 public:
  CaptureDiff(const Options& options, const std::vector<Input>& inputs, Console* console)
      : options_(options), inputs_(inputs), console_(*console) {}

  // Returns false, and reports an error, if the options contradict each other.
  bool isReady();
  // Adds two groups to compare: one of the first file, and one of the second.
  void add(const InputGroup& a, const InputGroup& b);
  // Reads the capture, if there is one. Returns the findings about groups and the findings about
  // the capture.
  std::vector<ReportInput> run(const Selection& selection);
  // Writes the findings of run() as text.
  void print(const std::vector<ReportInput>& found);
 private:
  struct Compared {
    const InputGroup* group;  // of the first file
    FiltersInspect::TrafficComparison comparison;
  };

  const Options& options_;
  const std::vector<Input>& inputs_;
  Console& console_;
  FiltersInspect::Packet assumed_;
  std::vector<Compared> all_;
};

}  // namespace FilterInspectTool

#endif  // FILTER_INSPECT_TOOLS_CAPTURE_DIFF_H_
