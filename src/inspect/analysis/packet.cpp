#include <filter_inspect/filter_analysis.h>

#include "packet_fields.h"
#include "packet_words.h"

namespace FiltersInspect {

std::optional<Packet> Packet::parse(std::string_view text, Report* report,
                                    std::size_t max_findings) {
  const auto fields = parsePacketWords(text, WordsOf::kPackets, report, max_findings);
  if (!fields) return std::nullopt;
  Packet packet;
  for (const FieldSet& field : *fields) {
    const bool has = field.form != FieldSet::Form::kLacks;
    PacketFields::tell(&packet, field.number,
                       has ? std::optional(field.values[0].first) : std::nullopt);
  }
  return packet;
}

std::string Packet::toText() const {
  std::string text;
  for (const Field& field : fields_) {
    if (!text.empty()) text += ' ';
    if (field.has) {
      appendWord({field.number, FieldSet::Form::kRanges, {{field.value, field.value}}}, &text);
    } else {
      appendWord({field.number, FieldSet::Form::kLacks, {}}, &text);
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
