#ifndef FILTER_INSPECT_SRC_FORMS_UTF8_MARK_H_
#define FILTER_INSPECT_SRC_FORMS_UTF8_MARK_H_

#include <cstddef>
#include <string_view>

namespace FiltersInspect {

inline constexpr std::string_view kUtf8Mark = "\xef\xbb\xbf";

// The length of a UTF-8 byte-order mark. Readers skip it, and columns do not count it.
inline std::size_t lengthOfMark(std::string_view text) {
  return text.substr(0, kUtf8Mark.size()) == kUtf8Mark ? kUtf8Mark.size() : 0;
}

}  // namespace FiltersInspect

#endif  // FILTER_INSPECT_SRC_FORMS_UTF8_MARK_H_
