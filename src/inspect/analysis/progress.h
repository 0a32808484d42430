#ifndef FILTER_INSPECT_SRC_ANALYSIS_PROGRESS_H_
#define FILTER_INSPECT_SRC_ANALYSIS_PROGRESS_H_

// Tells the caller of a question how far it is.

#include <cstddef>

#include <filter_inspect/filter_analysis.h>

namespace FiltersInspect {

class Progress {
 public:
  explicit Progress(const AnalysisOptions& options) : function_(options.progress) {}

  void tell(std::size_t done, std::size_t all) {
    done_ = done;
    all_ = all;
    repeat();
  }
  // Tells the same numbers again, so that the caller can end a part of the work that takes long.
  void repeat() const {
    if (function_) function_(done_, all_);
  }
 private:
  const std::function<void(std::size_t done, std::size_t all)>& function_;
  std::size_t done_ = 0, all_ = 0;
};

}  // namespace FiltersInspect

#endif  // FILTER_INSPECT_SRC_ANALYSIS_PROGRESS_H_
