#ifndef FILTER_INSPECT_SRC_ANALYSIS_READINGS_H_
#define FILTER_INSPECT_SRC_ANALYSIS_READINGS_H_

// The fields of a packet, and what a match asks of them under each reading.

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

// A number of up to 128 bits: the first half of an address of 128, else all of it.
using FieldValue = std::array<std::uint64_t, 2>;

struct FieldRow {
  std::string_view name;
  ValueForm form;  // of one value: a flag is a boolean
  std::uint8_t bits;
  Enumeration names;  // of kName
  Layer layer;
  std::vector<FieldValue> usual;  // at least one
};

// Every field that the rows of forms.def name, in their order and each once.
const std::vector<FieldRow>& packetFields();
std::optional<std::uint8_t> packetField(std::string_view name);

std::optional<FieldValue> parseField(const FieldRow& row, std::string_view text);
void appendField(const FieldRow& row, const FieldValue& value, std::string* out);

// In a space each field has two, one a half. The lower half of an address is never lacking: lacking
// the field is told by the upper one.
constexpr std::uint32_t halfOf(std::uint32_t field, unsigned half) { return 2 * field + half; }
std::vector<Space::Field> spaceFields();

// --- Readings ------------------------------------------------------------------------------------

// What a match asks of one field: one of the constraints of each half that has any.
struct Asked {
  std::uint8_t field;
  std::uint8_t which;           // of the match's fields
  std::vector<Constraint> may;  // under some reading
  // Why the match has several readings, as a sentence; null if it has one. If set, `must` is what
  // every reading takes; empty means nothing.
  const char* open = nullptr;
  std::vector<Constraint> must;
  std::uint32_t match = 0;  // of an open one: the same number for equal matches
};

// Numbers of open matches. Equal matches take equal packets, whatever the device makes of them.
class MatchNumbers {
 public:
  std::uint32_t numberOf(const MatchPB& match);
 private:
  std::map<std::string, std::uint32_t> numbers_;
};

// Appends what the match asks: nothing of one that takes every packet or has no class.
void appendAsked(const MatchPB& match, std::vector<Asked>* asked, MatchNumbers* numbers);

// Whether a value is among those asked for.
bool isAmong(const std::vector<Constraint>& constraints, const FieldValue& value);

}  // namespace FiltersInspect

#endif  // FILTER_INSPECT_SRC_ANALYSIS_READINGS_H_
