#ifndef FILTER_COMMON_TESTS_INSPECT_RANDOM_CASES_H_
#define FILTER_COMMON_TESTS_INSPECT_RANDOM_CASES_H_

#include <ctime>

// Counts the random cases of a test, for example 3000. If the cases take more than five seconds of
// processor time, a tenth of the number is enough. Under a sanitizer, valgrind or an emulator each
// case takes many times as long.
//
//     for (RandomCases i(3000); i.more(); ++i) ...
class RandomCases {
 public:
  explicit RandomCases(int most) : most_(most) {}
  bool more() const { return done_ < most_ && (done_ < most_ / 10 || std::clock() < end_); }
  void operator++() { ++done_; }
  int done() const { return done_; }
 private:
  const int most_;
  int done_ = 0;
  const std::clock_t end_ = std::clock() + 5 * CLOCKS_PER_SEC;
};

#endif  // FILTER_COMMON_TESTS_INSPECT_RANDOM_CASES_H_
