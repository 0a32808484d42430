#include <filter_inspect/filter_analysis.h>

#include "packet_fields.h"
#include "readings.h"

namespace FiltersInspect {
namespace {

constexpr std::string_view kLacking = "none";

// `at` counts from 0; people count from 1.
void addFault(Code code, std::size_t at, std::string_view text, const char* why,
              LimitedReport* faults) {
  Finding* finding = faults->add(code);
  if (finding == nullptr) return;
  finding->path = "1:" + std::to_string(at + 1);
  finding->before = text;
  finding->message = '\'' + finding->before + "': " + why;
}

}  // namespace

std::optional<Packet> Packet::parse(std::string_view text, Report* report,
                                    std::size_t max_findings) {
  constexpr std::string_view kBlanks = " \t\r\n";
  Packet packet;
  LimitedReport faults(max_findings);
  const char* const start = text.data();
  const auto fault = [&](Code code, std::string_view piece, const char* why) {
    addFault(code, static_cast<std::size_t>(piece.data() - start), piece, why, &faults);
  };
  while (true) {
    text.remove_prefix(std::min(text.find_first_not_of(kBlanks), text.size()));
    if (text.empty()) break;
    const std::string_view piece = text.substr(0, text.find_first_of(kBlanks));
    text.remove_prefix(piece.size());
    const std::size_t sign = piece.find('=');
    if (sign == piece.npos) {
      fault(Code::kTextSyntax, piece, "a field, '=' and its value are wanted");
      continue;
    }
    const auto field = packetField(piece.substr(0, sign));
    if (!field) {
      fault(Code::kTextValue, piece.substr(0, sign), "there is no such field");
      continue;
    }
    const std::string_view value = piece.substr(sign + 1);
    std::optional<FieldValue> known;
    if (value != kLacking) {
      known = parseField(packetFields()[*field], value);
      if (!known) {
        fault(Code::kTextValue, piece, "this is no value of the field");
        continue;
      }
    }
    if (!packet.fields_.emplace(*field, known).second) {
      fault(Code::kTextRepeated, piece, "the field is told twice");
    }
  }
  if (faults.empty()) return packet;
  if (report != nullptr) report->append(faults.take());
  return std::nullopt;
}

std::string Packet::toText() const {
  std::string text;
  for (const auto& [field, value] : fields_) {
    const FieldRow& row = packetFields()[field];
    if (!text.empty()) text += ' ';
    text += row.name;
    text += '=';
    if (value) {
      appendField(row, *value, &text);
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
