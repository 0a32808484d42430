#ifndef FILTER_INSPECT_SRC_FORMS_POLICER_TEXT_H_
#define FILTER_INSPECT_SRC_FORMS_POLICER_TEXT_H_

// Writes and reads the values of a policer as text, for the text form and for sentences.

#include <optional>
#include <string>
#include <string_view>

#include <filter_inspect/filter_report.h>

#include "policer_facts.h"

namespace FiltersInspect {

// "{id=10 stage=ingress trtcm cir=2000 red=drop yellow=dscp:8}"
std::string policerText(const PolicerFacts& facts);

// "10 ingress trtcm cir=2000", and the same with the actions: "... red=drop yellow=dscp:8"
std::string policerRates(const PolicerFacts& facts);
std::string policerWords(const PolicerFacts& facts);
// The difference of two policers: "10 ingress trtcm cir=2000 became cir=1000".
std::string policerChange(const PolicerFacts& before, const PolicerFacts& after);

// The reason why a text is not a policer, and the wrong part of the text.
struct PolicerTextFault {
  Code code;
  std::string_view word;
  std::string why;
};
// Makes the bytes of a policer from the text between the braces. If something is missing, the fault
// is at the end of that text.
std::optional<PolicerTextFault> policerFromText(std::string_view text, std::string* bytes);

}  // namespace FiltersInspect

#endif  // FILTER_INSPECT_SRC_FORMS_POLICER_TEXT_H_
