#include <filter_inspect/filter_analysis.h>

#include "readings.h"
#include "report/report_json.h"

namespace FiltersInspect {

const std::vector<std::string_view>& assumptions() {
  static const std::string lacking = [] {
    std::string text =
        "A3: a match on a field that a packet lacks does not hold, not even under a mask of 0; "
        "every packet has ";
    std::vector<std::string_view> names;
    for (const FieldRow& field : packetFields()) {
      if (isInEveryPacket(field.layer)) names.push_back(field.name);
    }
    for (std::size_t i = 0; i < names.size(); ++i) {
      text += (i == 0 ? "" : i + 1 == names.size() ? " and " : ", ") + std::string(names[i]);
    }
    return text;
  }();
  static const std::vector<std::string_view> assumptions = {
      "A1: the matches of a rule all have to hold; a rule without matches takes every packet",
      "A2: under a mask means (field & mask) == (value & mask)",
      lacking,
      "A4: fields do not depend on each other; a packet that shows something may never occur",
      "A5: the first entry that takes a packet ends the search; all that depends on an order rests "
      "on this",
  };
  return assumptions;
}

std::string toJson(const Report& report, Order order, std::string_view command,
                   std::string_view file) {
  return toJson({{std::string(file), std::nullopt, report}}, order, command);
}

std::string toJson(const std::vector<ReportInput>& inputs, Order order, std::string_view command) {
  const ReportBasis basis = {nameOf(order), assumptions()};
  return reportJson(inputs, command, &basis);
}

std::string toJsonLine(const std::vector<ReportInput>& inputs, Order order,
                       std::string_view command) {
  const ReportBasis basis = {nameOf(order), assumptions()};
  return reportJson(inputs, command, &basis, true);
}

}  // namespace FiltersInspect
