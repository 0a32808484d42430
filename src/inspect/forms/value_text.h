#ifndef FILTER_INSPECT_SRC_FORMS_VALUE_TEXT_H_
#define FILTER_INSPECT_SRC_FORMS_VALUE_TEXT_H_

// The text of one match, action or counter, from its message and back. These functions work on
// messages and not on objects, so that values that no setter accepts survive a round trip.

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include <filter_common/filter_actions.pb.h>
#include <filter_common/filter_counter.pb.h>
#include <filter_common/filter_matches.pb.h>

#include "form_rows.h"
#include "message_fields.h"

namespace FiltersInspect {

using FiltersCommon::ActionPB;
using FiltersCommon::CounterPB;
using FiltersCommon::MatchPB;

inline constexpr std::string_view kWordBreaks = " \t";  // separate words

// For example "dst_l4_port=179/0xffff", "permit" or "1=packets". A code or type without a name is
// written as its number.
std::string textOf(const MatchPB& match);
std::string textOf(const ActionPB& action);
std::string textOf(const CounterPB& counter);

// appendValue() appends '=' and the value, or nothing for a flag. valueText() is the value alone.
void appendValue(const FormRow& row, const AnyMessage& message, std::string* out);
std::string valueText(const FormRow& row, const AnyMessage& message);

// The reason why a text is no value of the row, and its place in the text.
struct ValueFault {
  std::string why;
  std::size_t at = 0;
};
// Sets the message's fields, but not its code.
std::optional<ValueFault> readValue(const FormRow& row, std::string_view text, AnyMessage* message);

// These functions read parts of values. A number is decimal, or hexadecimal after 0x. They return
// nothing if the text is no number or the number has more bits. A name can also be a number.
std::optional<std::uint32_t> parseNumber(std::string_view text, unsigned bits);
std::optional<std::uint32_t> parseName(const Enumeration& names, std::string_view text);
std::optional<std::int32_t> parseCounterType(std::string_view text);  // signed, as in messages

void appendNumber(std::uint32_t value, std::string* out);
void appendName(const Enumeration& names, std::uint32_t value, std::string* out);
void appendLimid(std::uint32_t limid, std::string* out);  // 0x01000003

}  // namespace FiltersInspect

#endif  // FILTER_INSPECT_SRC_FORMS_VALUE_TEXT_H_
