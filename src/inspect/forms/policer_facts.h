#ifndef FILTER_INSPECT_SRC_FORMS_POLICER_FACTS_H_
#define FILTER_INSPECT_SRC_FORMS_POLICER_FACTS_H_

// Converts policers to plain values, and plain values to policers.

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <policer/policer.h>

#include "form_rows.h"

namespace FiltersInspect {

// The bytes of the default policer, which an entry without a policer of its own holds.
const std::string& defaultPolicer();

extern const Enumeration kPolicerModes, kPolicerColors, kPolicerActionTypes;

// The numbers of a policer, in the order in which they are written. The rates and burst sizes begin
// at kFirstParameter; writers leave out those that are 0.
enum PolicerNumber : std::size_t { kNumberId, kNumberStage, kNumberMode, kFirstParameter };
struct PolicerKey {
  const char* key;
  const Enumeration* names;  // null if the values have no names
};
inline constexpr std::array<PolicerKey, 9> kPolicerKeys = {{
    {"id", nullptr},
    {"stage", &kNamesOf<policer::Stage>},
    {"mode", &kPolicerModes},
    {"cir", nullptr},
    {"cbs", nullptr},
    {"pir", nullptr},
    {"pbs", nullptr},
    {"eir", nullptr},
    {"ebs", nullptr},
}};

struct PolicerAction {
  std::uint32_t color;
  std::uint32_t type;
  std::uint32_t value;  // a code point; 0 for a type without one
};
inline bool operator==(const PolicerAction& a, const PolicerAction& b) {
  return a.color == b.color && a.type == b.type && a.value == b.value;
}
// True if actions of the type write a code point.
bool hasCodePoint(std::uint32_t action_type);

struct PolicerFacts {
  std::array<std::uint32_t, kPolicerKeys.size()> numbers = {};
  std::vector<PolicerAction> actions;
};
PolicerFacts factsOf(const policer::Policer& policer);

// The reason why a policer cannot be made from the given values. `number` is the index of the wrong
// value in kPolicerKeys, or kPolicerKeys.size() if the fault is in the policer as a whole.
struct PolicerFault {
  std::size_t number;
  std::string why;
};
// Makes the bytes of a policer. `given` has a 1 bit for each number that the input has; the other
// numbers are 0.
std::optional<PolicerFault> makePolicer(const PolicerFacts& facts, std::uint32_t given,
                                        std::string* bytes);

// True if the values describe the bytes completely, so that the policer made from the values is the
// same.
bool sayAllOf(std::string_view bytes, const PolicerFacts& facts);

}  // namespace FiltersInspect

#endif  // FILTER_INSPECT_SRC_FORMS_POLICER_FACTS_H_
