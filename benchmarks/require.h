#ifndef FILTER_COMMON_BENCHMARKS_REQUIRE_H_
#define FILTER_COMMON_BENCHMARKS_REQUIRE_H_

#include <filter_common/filter_types.h>

#include <cstdio>
#include <cstdlib>

namespace benchmarks {

// The id of every group that is measured.
constexpr FiltersCommon::filtersGroupId_t kGroupId = 7;

inline void require(bool good, const char* what) {
  if (good) return;
  std::fprintf(stderr, "benchmarks: %s\n", what);
  std::exit(1);
}

}  // namespace benchmarks

#endif  // FILTER_COMMON_BENCHMARKS_REQUIRE_H_
