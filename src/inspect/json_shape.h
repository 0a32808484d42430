#ifndef FILTER_INSPECT_SRC_JSON_SHAPE_H_
#define FILTER_INSPECT_SRC_JSON_SHAPE_H_

// What may stand where in the JSON form, and where it stands in the text.

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "forms.h"
#include "groups_reader.h"

namespace FiltersInspect {

// Finds the place of each token that the parser hands over. The parser has held the tokens to be
// well-formed, and between two of them stand blanks, commas and colons alone.
class TokenPlaces {
 public:
  explicit TokenPlaces(std::string_view text) : text_(text) {
    if (text_.substr(0, 3) == "\xef\xbb\xbf") at_ = lineStart_ = 3;  // skipped by the parser too
  }

  TextPlace next();

  // Of an offset that the parser tells.
  static TextPlace of(std::string_view before);
 private:
  static constexpr std::string_view kBetween = " \t\r\n,:";

  std::string_view text_;
  std::size_t at_ = 0;
  std::size_t line_ = 1;
  std::size_t lineStart_ = 0;
};

// What the reader is inside of.
enum class In : std::uint8_t {
  kNowhere,
  kFile,
  kGroups,
  kGroup,
  kEntries,
  kEntry,
  kMatches,
  kActions,
  kCounters,
  kCounter,
  kPolicer,
  kAbout,
  kPair,
  kNumbers,
  kLimids,
  kPorts,
  kTypes,
  kLimid,
  kMplsPorts,
};

// The keys of an object; the first `required` of them must stand there.
struct Keys {
  std::string_view names[9] = {};
  std::size_t required = 0;
};
Keys keysOf(In in, const FormRow* row);

// What may begin where: behind which key of an object, or in which list.
struct Nesting {
  In outer;
  std::size_t key;
  char bracket;
  In inner;
};
// For the value of a match or action by its row. A bracket of zero: none may begin there.
Nesting nestingOf(In outer, std::size_t key, const FormRow* row);

}  // namespace FiltersInspect

#endif  // FILTER_INSPECT_SRC_JSON_SHAPE_H_
