#ifndef FILTER_INSPECT_SRC_CATALOGUE_IN_QUOTES_H_
#define FILTER_INSPECT_SRC_CATALOGUE_IN_QUOTES_H_

#include <string>
#include <string_view>

namespace FiltersInspect {

// Puts a word of the input in quotes, for a sentence: 'src_ip'. A long word ends in "...", and
// control characters become question marks.
std::string inQuotes(std::string_view word);

}  // namespace FiltersInspect

#endif  // FILTER_INSPECT_SRC_CATALOGUE_IN_QUOTES_H_
