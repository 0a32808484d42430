#ifndef FILTER_COMMON_TESTS_CASES_H_
#define FILTER_COMMON_TESTS_CASES_H_

#include <algorithm>
#include <cstdlib>
#include <ctime>

// How many cases the long loops of tests try. Under a sanitizer, valgrind or an emulator each case
// takes many times as long, so scripts shorten the loops there with the environment variable
// FILTERS_CASE_SECONDS. Without it a loop has five seconds of processor time.
inline double caseSeconds() {
  const char* const wanted = std::getenv("FILTERS_CASE_SECONDS");
  return wanted != nullptr ? std::atof(wanted) : 5;
}

// Counts the random cases of a loop, for example 3000. If they take longer than the loop may, a
// tenth of them is enough. If its time is shortened, so is this tenth, but not below ten cases.
//
//     for (RandomCases i(3000); i.more(); ++i) ...
class RandomCases {
 public:
  explicit RandomCases(int most) : most_(most) {}
  bool more() const { return done_ < most_ && (done_ < least_ || std::clock() < end_); }
  void operator++() { ++done_; }
  int done() const { return done_; }
 private:
  const int most_;
  const int least_ = std::max(10, static_cast<int>(most_* caseSeconds() / 50));
  int done_ = 0;
  const std::clock_t end_ =
      std::clock() + static_cast<std::clock_t>(caseSeconds() * CLOCKS_PER_SEC);
};

// The step of a loop over all bits, bytes or pairs of something. It is odd, so that a loop over
// bits meets all eight of a byte.
inline unsigned caseStep() { return caseSeconds() < 5 ? 11 : 1; }

#endif  // FILTER_COMMON_TESTS_CASES_H_
