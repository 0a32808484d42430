#ifndef FILTER_INSPECT_SRC_ANALYSIS_READINGS_H_
#define FILTER_INSPECT_SRC_ANALYSIS_READINGS_H_

// The fields of a packet, and the constraints of a match on them under each reading.

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "forms/value_text.h"
#include "space.h"

namespace FiltersInspect {

// --- Fields --------------------------------------------------------------------------------------

// A number of up to 128 bits. For 128 bits, the first element is the upper half.
using FieldValue = std::array<std::uint64_t, 2>;

struct FieldRow {
  std::string_view name;
  ValueForm form;  // the form of one value; a flag is a boolean
  std::uint8_t bits;
  Enumeration names;  // the names of values, if the form is kName
  Layer layer;
  std::vector<FieldValue> usual;  // the usual values, at least one
};

// The fields that forms.def names, each field once, in the order of the rows.
const std::vector<FieldRow>& packetFields();
std::optional<std::uint8_t> packetField(std::string_view name);

std::optional<FieldValue> parseField(const FieldRow& row, std::string_view text);
void appendField(const FieldRow& row, const FieldValue& value, std::string* out);

// A space has two fields for each field of a packet. Half 0 holds the upper 64 bits of an IPv6
// address, or the whole value of any other field. Half 1 holds the lower 64 bits of an IPv6
// address. If the packet lacks the field, only half 0 is absent.
constexpr std::uint32_t halfOf(std::uint32_t field, unsigned half) { return 2 * field + half; }
std::vector<Space::Field> spaceFields();

// --- Readings ------------------------------------------------------------------------------------

// The constraints of a match on one field. If a half has constraints, its value must meet at least
// one of them.
struct Asked {
  std::uint8_t field;
  std::uint8_t which;           // the first or second field of the match
  std::vector<Constraint> may;  // what it takes under some reading
  // A sentence that says why the match has several readings. It is null if the match has only one
  // reading. If `open` is not null, `must` has the constraints that hold under every reading. An
  // empty `must` then means that there is no packet that the match takes under every reading.
  const char* open = nullptr;
  std::vector<Constraint> must;
  std::uint32_t match = 0;  // for an open match: equal matches have the same number
};

// Numbers for open matches, which are matches with several readings. Equal matches get equal
// numbers, since they take the same packets under every reading.
class MatchNumbers {
 public:
  std::uint32_t numberOf(const MatchPB& match);
 private:
  std::map<std::string, std::uint32_t> numbers_;
};

// Appends the constraints of a match. Appends nothing for a match that takes every packet or has no
// class.
void appendAsked(const MatchPB& match, std::vector<Asked>* asked, MatchNumbers* numbers);

// True if the value meets one of the constraints.
bool isAmong(const std::vector<Constraint>& constraints, const FieldValue& value);

}  // namespace FiltersInspect

#endif  // FILTER_INSPECT_SRC_ANALYSIS_READINGS_H_
