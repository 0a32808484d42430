#include <filter_inspect/filter_analysis.h>

#include "packet_fields.h"
#include "readings.h"

namespace FiltersInspect {
namespace {

constexpr std::string_view kLacking = "none";

// `at` counts from 0; people count from 1.
void addFault(Code code, std::size_t at, std::string_view text, const std::string& why,
              LimitedReport* faults) {
  Finding* finding = faults->add(code);
  if (finding == nullptr) return;
  finding->path = "1:" + std::to_string(at + 1);
  finding->before = text;
  finding->word = text;
  finding->message = '\'' + finding->before + "': " + why;
}

// A field of the packet, as it is written. The word `dscp` is another way to write the ToS: the two
// bits of its congestion notification are 0, as in a rule with this word.
struct Written {
  explicit Written(std::string_view name)
      : is_dscp(name == kDscp),
        field(packetField(is_dscp ? nameOf(FiltersCommon::FILTERS_MATCH_TOS) : name)) {}

  FormRow form() const {
    if (is_dscp) return kDscpRow;
    const FieldRow& row = packetFields()[*field];
    return {row.form, row.bits, {}, row.names};
  }
  std::optional<FieldValue> parse(std::string_view value) const {
    if (!is_dscp) return parseField(packetFields()[*field], value);
    const auto dscp = parseName(kDscpRow.names, value, kDscpRow.bits);
    return dscp ? std::optional(FieldValue{tosOf(*dscp), 0}) : std::nullopt;
  }

  bool is_dscp;
  std::optional<std::uint8_t> field;
};

std::string noSuchField(std::string_view name) {
  std::vector<std::string_view> names = packetFieldNames();
  names.push_back(kDscp);
  return "there is no such field" + suggestion(name, names, "filter-inspect names fields");
}

std::string noValue(std::string_view name, const FormRow& form, std::string_view value) {
  if (form.names.all != nullptr) return noName(name, form.names, value, form.bits);
  return std::string(name) + " is " + describe(form);
}

}  // namespace

std::optional<Packet> Packet::parse(std::string_view text, Report* report,
                                    std::size_t max_findings) {
  constexpr std::string_view kBlanks = " \t\r\n";
  Packet packet;
  LimitedReport faults(max_findings);
  const char* const start = text.data();
  const auto fault = [&](Code code, std::string_view piece, const std::string& why) {
    addFault(code, static_cast<std::size_t>(piece.data() - start), piece, why, &faults);
  };
  while (true) {
    text.remove_prefix(std::min(text.find_first_not_of(kBlanks), text.size()));
    if (text.empty()) break;
    const std::string_view piece = text.substr(0, text.find_first_of(kBlanks));
    text.remove_prefix(piece.size());
    const std::size_t sign = piece.find('=');
    if (sign == piece.npos) {
      fault(Code::kTextSyntax, piece, "a value is missing, as in ttl=64 or ttl=none");
      continue;
    }
    const std::string_view name = piece.substr(0, sign);
    const Written written(name);
    if (!written.field) {
      fault(Code::kTextValue, name, noSuchField(name));
      continue;
    }
    const std::string_view value = piece.substr(sign + 1);
    std::optional<FieldValue> known;
    if (value != kLacking) {
      known = written.parse(value);
      if (!known) {
        fault(Code::kTextValue, piece, noValue(name, written.form(), value));
        continue;
      }
    }
    if (!PacketFields::tell(&packet, *written.field, known)) {
      fault(Code::kTextRepeated, piece, "the field is told twice");
    }
  }
  if (faults.empty()) return packet;
  if (report != nullptr) report->append(faults.take());
  return std::nullopt;
}

std::string Packet::toText() const {
  std::string text;
  for (const Field& field : fields_) {
    const FieldRow& row = packetFields()[field.number];
    if (!text.empty()) text += ' ';
    text += row.name;
    text += '=';
    if (field.has) {
      appendField(row, field.value, &text);
    } else {
      text += kLacking;
    }
  }
  return text;
}

std::vector<std::string_view> packetFieldNames() {
  std::vector<std::string_view> names;
  for (const FieldRow& row : packetFields()) names.push_back(row.name);
  return names;
}

}  // namespace FiltersInspect
