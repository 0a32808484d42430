#ifndef FILTER_INSPECT_SRC_FORMS_POLICER_FACTS_H_
#define FILTER_INSPECT_SRC_FORMS_POLICER_FACTS_H_

// What a policer says, for the people who read text and JSON.

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

#include <policer/policer.h>

namespace FiltersInspect {

// The bytes of the policer that an entry without one of its own holds.
const std::string& defaultPolicer();

// One fact, all but the policer's actions: the name or number behind a key.
struct PolicerFact {
  const char* key;
  std::string_view name;  // empty: the number
  std::uint32_t number;
  bool is_figure;  // a rate or a burst size, which is left out when it is 0
};
using PolicerFacts = std::array<PolicerFact, 9>;
PolicerFacts factsOf(const policer::Policer& policer);

// " 10 ingress trtcm cir=2000".
void appendFacts(const policer::Policer& policer, std::string* out);

}  // namespace FiltersInspect

#endif  // FILTER_INSPECT_SRC_FORMS_POLICER_FACTS_H_
