#ifndef FILTER_INSPECT_SRC_FORMS_POLICER_FACTS_H_
#define FILTER_INSPECT_SRC_FORMS_POLICER_FACTS_H_

// The description of a policer in text and JSON, for people.

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

#include <policer/policer.h>

namespace FiltersInspect {

// The bytes of the policer that an entry holds if it was given none.
const std::string& defaultPolicer();

// A fact about a policer: a key with a name or a number. The facts are everything in a policer but
// its actions.
struct PolicerFact {
  const char* key;
  std::string_view name;  // empty if the number is the value
  std::uint32_t number;
  bool is_figure;  // a rate or burst size; writers leave out 0
};
using PolicerFacts = std::array<PolicerFact, 9>;
PolicerFacts factsOf(const policer::Policer& policer);

// Appends, for example, " 10 ingress trtcm cir=2000".
void appendFacts(const policer::Policer& policer, std::string* out);

}  // namespace FiltersInspect

#endif  // FILTER_INSPECT_SRC_FORMS_POLICER_FACTS_H_
