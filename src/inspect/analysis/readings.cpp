#include "readings.h"

#include <algorithm>
#include <sstream>

#include "catalogue/class_rows.h"
#include "report/hex.h"

namespace FiltersInspect {
namespace {

using namespace FiltersCommon;

constexpr std::uint64_t kMost = ~std::uint64_t{0};
constexpr std::uint64_t kDscpBits = 0xfc;

// The form of a single value of the match's packet field `which`.
ValueForm formOfOne(const MatchForm& row, std::size_t which) {
  switch (row.form) {
    case ValueForm::kFlag:
      return ValueForm::kBoolean;
    case ValueForm::kLimids:
      return which == 0 ? ValueForm::kLimid : ValueForm::kName;
    case ValueForm::kPortMask:
    case ValueForm::kPortRange:
    case ValueForm::kNumbers:
    case ValueForm::kVlanInfo:
    case ValueForm::kMplsPorts:
      return ValueForm::kNumber;
    case ValueForm::kNumber:
    case ValueForm::kHexadecimal:
    case ValueForm::kName:
    case ValueForm::kBoolean:
    case ValueForm::kMac:
    case ValueForm::kIPv4:
    case ValueForm::kIPv6:
    case ValueForm::kLimid:
      break;
  }
  return row.form;
}

struct Fields {
  Fields() {
    for (const MatchRow& match : matchRows()) {
      const MatchForm& row = *formOf(match.code);
      for (std::size_t which = 0; which < 2; ++which) {
        const std::string_view name = packetFieldName(match.code, which);
        if (name.empty()) continue;
        auto found = std::find_if(rows.begin(), rows.end(),
                                  [&](const FieldRow& field) { return field.name == name; });
        if (found == rows.end()) {
          const auto bits = row.form == ValueForm::kFlag ? std::uint8_t{1} : row.bits;
          const PacketField& packet = row.packet[which];
          rows.push_back({name, formOfOne(row, which), bits, row.names, packet.layer, {}});
          found = rows.end() - 1;
          std::istringstream usual(packet.usual == nullptr ? "0" : packet.usual);
          for (std::string value; usual >> value;) {
            found->usual.push_back(*parseField(*found, value));
          }
        }
        numbers[match.code][which] = static_cast<std::uint8_t>(found - rows.begin());
      }
    }
  }
  std::vector<FieldRow> rows;
  std::uint8_t numbers[256][2] = {};  // for each match code and each of its fields
};

const Fields& fields() {
  static const Fields fields;
  return fields;
}

FieldValue valueOf(ValueForm form, const AddressBytes& bytes) {
  FieldValue value = {};
  for (std::size_t i = 0; i < sizeOf(form); ++i) value[i / 8] = value[i / 8] << 8 | bytes[i];
  return value;
}

AddressBytes bytesOf(ValueForm form, const FieldValue& value) {
  AddressBytes bytes = {};
  const std::size_t size = sizeOf(form);
  for (std::size_t i = 0; i < size; ++i) {
    const std::size_t behind = std::min<std::size_t>(size - i / 8 * 8, 8) - i % 8 - 1;
    bytes[i] = static_cast<unsigned char>(value[i / 8] >> 8 * behind);
  }
  return bytes;
}

// --- One field of a match ------------------------------------------------------------------------

class Reader {
 public:
  Reader(const MatchPB& match, const MatchForm& row, std::size_t which)
      : match_(match), row_(row), which_(which), packet_(row.packet[which]) {
    asked_.field = fields().numbers[match.type_()][which];
    asked_.which = static_cast<std::uint8_t>(which);
  }

  // Returns nothing if this match does not constrain the field.
  std::optional<Asked> read() {
    switch (packet_.test) {
      case FieldTest::kNone:
        return std::nullopt;
      case FieldTest::kFlag:
        range(1, 1, &asked_.may);
        break;
      case FieldTest::kValue:
        readValue();
        break;
      case FieldTest::kTernary:
        readTernary();
        break;
      case FieldTest::kRange:
        readRange();
        break;
      case FieldTest::kSet:
        if (!readSet()) return std::nullopt;
        break;
      case FieldTest::kNotIn:
        if (!readNotIn()) return std::nullopt;
        break;
    }
    return std::move(asked_);
  }
 private:
  void range(std::uint64_t first, std::uint64_t last, std::vector<Constraint>* out) {
    out->push_back({halfOf(asked_.field, 0), Asks::kRange, first, last});
  }
  void masked(const FieldValue& value, const FieldValue& mask, std::vector<Constraint>* out) {
    out->push_back({halfOf(asked_.field, 0), Asks::kMasked, value[0], mask[0]});
    if (mask[1] != 0) out->push_back({halfOf(asked_.field, 1), Asks::kMasked, value[1], mask[1]});
  }
  std::uint64_t most() const { return kMost >> (64 - packetFields()[asked_.field].bits); }
  void openToAnything(const char* why) {
    asked_.open = why;
    range(0, most(), &asked_.may);
  }

  void readValue() {
    const std::uint64_t value = numberIn(match_, row_.fields[which_]);
    if (packet_.reading == Reading::kNotZeroIsOpen && value != 0) {
      asked_.open = "a value other than 0 may stand for every one of them";
      range(1, most(), &asked_.may);
    } else if (packet_.reading == Reading::kMayBeDscp && (value & ~kDscpBits) == 0) {
      asked_.open = "it may be a DSCP, which leaves the two low bits open";
      range(value, value | (most() & ~kDscpBits), &asked_.may);
    } else {
      return range(value, value, &asked_.may);
    }
    range(value, value, &asked_.must);
  }

  void readTernary() {
    FieldValue value, mask;
    if (isAddress(row_.form)) {
      value = valueOf(row_.form, addressIn(match_, row_.fields[0], row_.form));
      mask = valueOf(row_.form, addressIn(match_, row_.fields[1], row_.form));
    } else {
      value = {numberIn(match_, row_.fields[0]) & most(), 0};
      mask = {numberIn(match_, row_.fields[1]) & most(), 0};
    }
    masked(value, mask, &asked_.may);
    if (packet_.reading != Reading::kNoMaskIsOpen || mask[0] != 0) return;
    asked_.open = "its mask of 0 may mean that value alone";
    masked(value, {most(), 0}, &asked_.must);
  }

  void readRange() {
    const std::uint64_t min = numberIn(match_, row_.fields[0]) & most();
    const std::uint64_t max = numberIn(match_, row_.fields[1]) & most();
    if (min > max) return openToAnything("its range ends before it begins");
    range(min, max, &asked_.may);
  }

  // The numbers of a field, in ascending order.
  std::vector<std::uint64_t> numbers(const MessageField& field) const {
    std::vector<std::uint64_t> numbers;
    for (std::uint64_t number : numbersIn(match_, field)) numbers.push_back(number & most());
    std::sort(numbers.begin(), numbers.end());
    return numbers;
  }

  bool readSet() {
    const std::vector<std::uint64_t> set = numbers(row_.fields[0]);
    // A match that excludes kinds of port and names no ports does not constrain this field.
    const bool leavesOut = row_.packet[1].test == FieldTest::kNotIn;
    if (set.empty() && leavesOut && !numbersIn(match_, row_.fields[1]).empty()) return false;
    if (set.empty()) openToAnything("its set is empty");
    for (std::uint64_t number : set) {
      if (!asked_.may.empty() && number <= asked_.may.back().last + 1) {
        asked_.may.back().last = number;
      } else {
        range(number, number, &asked_.may);
      }
    }
    return true;
  }

  bool readNotIn() {
    std::uint64_t next = 0;
    for (std::uint64_t number : numbers(row_.fields[1])) {
      if (number > next) range(next, number - 1, &asked_.may);
      next = std::max(next, number + 1);
    }
    if (next <= most()) range(next, most(), &asked_.may);
    return !numbersIn(match_, row_.fields[1]).empty();
  }

  const MatchPB& match_;
  const MatchForm& row_;
  const std::size_t which_;
  const PacketField& packet_;
  Asked asked_;
};

}  // namespace

// --- Fields --------------------------------------------------------------------------------------

const std::vector<FieldRow>& packetFields() { return fields().rows; }

std::optional<std::uint8_t> packetField(std::string_view name) {
  const auto& rows = packetFields();
  for (std::size_t i = 0; i < rows.size(); ++i) {
    if (rows[i].name == name) return static_cast<std::uint8_t>(i);
  }
  return std::nullopt;
}

std::optional<FieldValue> parseField(const FieldRow& row, std::string_view text) {
  if (isAddress(row.form)) {
    const auto bytes = parseAddress(row.form, text);
    return bytes ? std::optional(valueOf(row.form, *bytes)) : std::nullopt;
  }
  std::optional<std::uint32_t> number;
  if (row.form == ValueForm::kName ||
      (row.form == ValueForm::kNumber && row.names.all != nullptr)) {
    number = parseName(row.names, text, row.bits);
  } else if (row.form == ValueForm::kBoolean && (text == "true" || text == "false")) {
    number = text == "true" ? 1 : 0;
  } else {
    number = parseNumber(text, row.bits);
  }
  return number ? std::optional(FieldValue{*number, 0}) : std::nullopt;
}

void appendField(const FieldRow& row, const FieldValue& value, std::string* out) {
  const auto number = static_cast<std::uint32_t>(value[0]);
  if (isAddress(row.form)) {
    appendAddress(row.form, bytesOf(row.form, value), out);
  } else if (row.form == ValueForm::kName) {
    // The word "none" says that a packet lacks the field.
    std::string name;
    appendName(row.names, number, &name);
    *out += name == "none" ? std::to_string(number) : name;
  } else if (row.form == ValueForm::kBoolean) {
    *out += number != 0 ? "true" : "false";
  } else if (row.form == ValueForm::kLimid) {
    appendLimid(number, out);
  } else if (row.form == ValueForm::kHexadecimal) {
    appendHexNumber(number, row.bits / 4, out);
  } else {
    appendNumber(number, out);
  }
}

std::vector<Space::Field> spaceFields() {
  std::vector<Space::Field> halves;
  for (const FieldRow& row : packetFields()) {
    halves.push_back({std::min<unsigned>(row.bits, 64), !isInEveryPacket(row.layer), {}});
    halves.push_back({64, false, {}});
    for (const FieldValue& value : row.usual) {
      halves.end()[-2].usual.push_back(value[0]);
      halves.end()[-1].usual.push_back(value[1]);
    }
  }
  return halves;
}

// --- Readings ------------------------------------------------------------------------------------

std::uint32_t MatchNumbers::numberOf(const MatchPB& match) {
  const auto next = static_cast<std::uint32_t>(numbers_.size());
  return numbers_.emplace(match.SerializePartialAsString(), next).first->second;
}

void appendAsked(const MatchPB& match, std::vector<Asked>* asked, MatchNumbers* numbers) {
  const MatchForm* row = formOf(static_cast<filtersMatch_t>(match.type_()));
  if (row == nullptr) return;
  for (std::size_t which = 0; which < 2; ++which) {
    auto one = Reader(match, *row, which).read();
    if (!one) continue;
    if (one->open != nullptr) one->match = numbers->numberOf(match);
    asked->push_back(std::move(*one));
  }
}

bool isAmong(const std::vector<Constraint>& constraints, const FieldValue& value) {
  bool asked[2] = {}, held[2] = {};
  for (const Constraint& one : constraints) {
    const unsigned half = one.field % 2;
    asked[half] = true;
    held[half] = held[half] ||
                 (one.asks == Asks::kMasked ? ((value[half] ^ one.first) & one.last) == 0
                                            : one.first <= value[half] && value[half] <= one.last);
  }
  return asked[0] && held[0] && held[1] == asked[1];
}

}  // namespace FiltersInspect
