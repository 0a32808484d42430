#ifndef FILTER_COMMON_TESTS_REPLACED_H_
#define FILTER_COMMON_TESTS_REPLACED_H_

#include <string>

namespace catalogue {

// The text with everything replaced that fits a regular expression, by the rules of
// std::regex_replace. Only samples.cpp compiles these, because each file would need seconds.
std::string replaced(const std::string& text, const std::string& pattern, const std::string& by);

}  // namespace catalogue

#endif  // FILTER_COMMON_TESTS_REPLACED_H_
