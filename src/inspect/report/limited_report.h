#ifndef FILTER_INSPECT_SRC_REPORT_LIMITED_REPORT_H_
#define FILTER_INSPECT_SRC_REPORT_LIMITED_REPORT_H_

// A report of at most so many findings: the most severe ones, of equal ones the first. While it
// grows it holds up to twice as many, so that each costs the same however many there are.

#include <filter_inspect/filter_report.h>

#include <cstddef>
#include <utility>

namespace FiltersInspect {

class LimitedReport {
 public:
  explicit LimitedReport(std::size_t most) : most_(most) {}

  // Whether a finding of this severity has a place among those so far: then add() is to follow.
  // Else it has been counted, and nothing needs to be made for it.
  bool takes(Severity severity) {
    std::size_t ahead = 0;  // findings that are kept rather than this one
    for (auto i = static_cast<std::size_t>(severity); i < added_.size(); ++i) ahead += added_[i];
    if (ahead < most_) return true;
    report_.leaveOut(severity);
    return false;
  }
  // Valid until the next one.
  Finding& add(Code code) {
    if (report_.findings.size() / 2 >= most_) report_.keep(most_);
    Finding& finding = report_.findings.emplace_back();
    finding.code = code;
    finding.severity = severityOf(code);
    ++added_[static_cast<std::size_t>(finding.severity)];
    return finding;
  }
  void append(Report&& other) {
    for (Finding& finding : other.findings) {
      if (takes(finding.severity)) add(finding.code) = std::move(finding);
    }
    other.findings.clear();
    report_.append(std::move(other));
  }
  bool empty() const { return report_.empty(); }
  Report take() {
    report_.keep(most_);
    return std::move(report_);
  }
 private:
  const std::size_t most_;
  SeverityCounts added_ = {};
  Report report_;
};

}  // namespace FiltersInspect

#endif  // FILTER_INSPECT_SRC_REPORT_LIMITED_REPORT_H_
