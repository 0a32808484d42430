#ifndef FILTER_INSPECT_SRC_QUESTIONS_ACTION_TEST_H_
#define FILTER_INSPECT_SRC_QUESTIONS_ACTION_TEST_H_

#include <optional>
#include <string>
#include <string_view>

#include <filter_inspect/filter_questions.h>

namespace FiltersInspect {

// Reads the words of an ActionTest one by one.
struct ActionWords {
  // The reason why a word cannot be read, and the wrong part of it.
  struct Fault {
    Code code;
    std::string_view piece;
    std::string why;
  };
  // Adds the action of a word, or returns its fault.
  static std::optional<Fault> add(std::string_view word, ActionTest* test);
};

}  // namespace FiltersInspect

#endif  // FILTER_INSPECT_SRC_QUESTIONS_ACTION_TEST_H_
