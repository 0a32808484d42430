#ifndef FILTER_INSPECT_SRC_FORMS_UTF8_MARK_H_
#define FILTER_INSPECT_SRC_FORMS_UTF8_MARK_H_

#include <cstddef>
#include <string_view>

namespace FiltersInspect {

// The length of a UTF-8 byte-order mark. Readers skip it, and columns do not count it.
inline std::size_t lengthOfMark(std::string_view text) {
  return text.substr(0, 3) == "\xef\xbb\xbf" ? 3 : 0;
}

}  // namespace FiltersInspect

#endif  // FILTER_INSPECT_SRC_FORMS_UTF8_MARK_H_
