#include <utility>

#include "packet_set.h"

namespace FiltersInspect {

struct PacketSet::Fields {
  std::vector<FieldSet> all;
};

const std::vector<FieldSet>& PacketSetFields::of(const PacketSet& set) {
  static const std::vector<FieldSet> none;
  return set.fields_ ? set.fields_->all : none;
}

PacketSet PacketSetFields::make(std::vector<FieldSet> fields) {
  PacketSet set;
  set.fields_ = std::make_shared<const PacketSet::Fields>(PacketSet::Fields{std::move(fields)});
  return set;
}

std::optional<PacketSet> PacketSet::parse(std::string_view text, Report* report,
                                          std::size_t max_findings) {
  auto fields = parsePacketWords(text, WordsOf::kSets, report, max_findings);
  if (!fields) return std::nullopt;
  return PacketSetFields::make(std::move(*fields));
}

std::string PacketSet::toText() const {
  std::string text;
  for (const FieldSet& field : PacketSetFields::of(*this)) {
    if (!text.empty()) text += ' ';
    appendWord(field, &text);
  }
  return text;
}

}  // namespace FiltersInspect
