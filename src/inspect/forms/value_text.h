#ifndef FILTER_INSPECT_SRC_FORMS_VALUE_TEXT_H_
#define FILTER_INSPECT_SRC_FORMS_VALUE_TEXT_H_

// The text of one match, action or counter, from its message and back. These functions work on
// messages and not on objects, so that values that every setter refuses are kept.

#include <cstddef>
#include <cstdint>
#include <limits>
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
constexpr bool isWordBreak(char c) { return c == kWordBreaks[0] || c == kWordBreaks[1]; }
// Removes the next word from the beginning of a text and returns it. The word is empty at the end
// of the text.
std::string_view takeWord(std::string_view* text);

// For example "dst_l4_port=179/0xffff", "permit" or "1=packets". A code or type without a name is
// written as its number.
std::string textOf(const MatchPB& match);
std::string textOf(const ActionPB& action);
std::string textOf(const CounterPB& counter);
void appendCounter(const CounterPB& counter, std::string* out);

// appendValue() appends '=' and the value, or nothing for a flag. valueText() is the value alone.
void appendValue(const FormRow& row, const AnyMessage& message, std::string* out);
std::string valueText(const FormRow& row, const AnyMessage& message);

// The reason why a text is not a value of the row, and the wrong part of the text.
struct ValueFault {
  std::string why;
  std::string_view word;
};
// Sets the message's fields, but not its code.
std::optional<ValueFault> readValue(const FormRow& row, std::string_view text, AnyMessage* message);

// The largest number of this many bits.
constexpr std::uint32_t mostOf(unsigned bits) {
  return bits < 32 ? (std::uint32_t{1} << bits) - 1 : std::numeric_limits<std::uint32_t>::max();
}

// Describes the values of the row, for sentences: "a number from 0 to 255".
std::string describe(const FormRow& row);
std::string noNumber(std::string_view text, unsigned bits);  // "'256' is no number from 0 to 255"
// A sentence for a text that is neither a name nor a number of that many bits: "there is no stage
// 'x'; it can be ...".
std::string noName(std::string_view kind, const Enumeration& names, std::string_view text,
                   unsigned bits);

// These functions read parts of values. A number is decimal, or hexadecimal after 0x. They return
// nothing if the text is not a number, or if the number has more bits. A name can also be a number.
std::optional<std::uint32_t> parseNumber(std::string_view text, unsigned bits);
std::optional<std::uint32_t> parseName(const Enumeration& names, std::string_view text,
                                       unsigned bits = 32);
std::optional<std::int32_t> parseCounterType(std::string_view text);  // signed, as in messages

void appendNumber(std::uint32_t value, std::string* out);
void appendName(const Enumeration& names, std::uint32_t value, std::string* out);
void appendLimid(std::uint32_t limid, std::string* out);  // 0x01000003

}  // namespace FiltersInspect

#endif  // FILTER_INSPECT_SRC_FORMS_VALUE_TEXT_H_
