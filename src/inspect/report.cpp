#include <filter_inspect/filter_report.h>

#include <algorithm>
#include <ostream>

#include <filter_inspect/filter_analysis.h>
#include <filter_inspect/filter_names.h>

#include "json_text.h"

namespace FiltersInspect {
namespace {

using namespace FiltersCommon;

// What the numbers of a finding are codes of.
enum class CodesOf { kNothing, kMatches, kActions, kStages, kTypes, kPolicerStages, kNumbers };

CodesOf offenderOf(const Finding& finding) {
  if (finding.code == Code::kAdmits) return CodesOf::kNothing;
  switch (finding.result) {
    case FILTERS_ERR_MATCH_NOT_ALLOWED:
      return CodesOf::kMatches;
    case FILTERS_ERR_ACTION_NOT_ALLOWED:
      return CodesOf::kActions;
    case FILTERS_ERR_TYPE_NOT_ALLOWED:
      return CodesOf::kTypes;
    case FILTERS_ERR_INVALID_STAGE:
      return CodesOf::kStages;
    case FILTERS_ERR_POLICER_STAGE:
      return CodesOf::kPolicerStages;
    case FILTERS_OK:
    case FILTERS_ERR_NOT_FOUND:
    case FILTERS_ERR_INVALID:
    case FILTERS_ERR_INVALID_ARGUMENT:
      break;
  }
  switch (finding.subject) {
    case Subject::kMatch:
      return CodesOf::kMatches;
    case Subject::kAction:
      return CodesOf::kActions;
    case Subject::kCounter:
      return CodesOf::kNumbers;
    case Subject::kGroup:
    case Subject::kEntry:
    case Subject::kPolicer:
    case Subject::kParent:
      break;
  }
  return finding.result == FILTERS_OK ? CodesOf::kNothing : CodesOf::kTypes;
}

CodesOf admittedOf(const Finding& finding) {
  if (finding.code != Code::kAdmits) return offenderOf(finding);
  switch (finding.subject) {
    case Subject::kMatch:
      return CodesOf::kMatches;
    case Subject::kAction:
      return CodesOf::kActions;
    case Subject::kPolicer:
    case Subject::kParent:
      return CodesOf::kPolicerStages;
    case Subject::kGroup:
      return CodesOf::kTypes;
    case Subject::kEntry:
    case Subject::kCounter:
      break;
  }
  return CodesOf::kNumbers;
}

std::string_view nameIn(CodesOf codes, std::uint32_t value) {
  switch (codes) {
    case CodesOf::kMatches:
      return nameOf(static_cast<filtersMatch_t>(value));
    case CodesOf::kActions:
      return nameOf(static_cast<filtersAction_t>(value));
    case CodesOf::kStages:
      return nameOf(static_cast<filtersGroupStage_t>(value));
    case CodesOf::kTypes:
      return nameOf(static_cast<filtersGroupType_t>(value));
    case CodesOf::kPolicerStages:
      return nameOf(static_cast<policer::Stage>(value));
    case CodesOf::kNothing:
    case CodesOf::kNumbers:
      break;
  }
  return {};
}

void write(CodesOf codes, std::uint32_t value, JsonText* json) {
  const std::string_view name = nameIn(codes, value);
  if (name.empty()) {
    json->value(value);
  } else {
    json->value(name);
  }
}

void write(const char* key, CodesOf codes, const std::vector<std::uint32_t>& values,
           JsonText* json) {
  if (values.empty()) return;
  json->key(key);
  json->open('[');
  for (std::uint32_t value : values) write(codes, value, json);
  json->close(']');
}

template <class Value>
void write(const char* key, Value value, JsonText* json) {
  json->key(key);
  json->value(value);
}

void write(const Finding& finding, JsonText* json) {
  const CodesOf codes = offenderOf(finding);
  json->open('{');
  write("code", nameOf(finding.code), json);
  write("level", nameOf(finding.severity), json);
  if (finding.result != FILTERS_OK) write("result", nameOf(finding.result), json);
  write("subject", nameOf(finding.subject), json);
  if (finding.group) write("group", *finding.group, json);
  if (finding.entry) write("entry", *finding.entry, json);
  if (codes != CodesOf::kNothing) {
    json->key("offender");
    write(codes, finding.offender, json);
  }
  write("admitted", admittedOf(finding), finding.admitted, json);
  const bool matches = finding.subject == Subject::kMatch;
  write("others", matches ? CodesOf::kMatches : CodesOf::kNumbers, finding.others, json);
  if (finding.bytes || !finding.path.empty()) {
    write("path", std::string_view(finding.path), json);
  }
  if (finding.bytes) {
    json->key("bytes");
    json->open('{');
    write("offset", finding.bytes->offset, json);
    write("length", finding.bytes->length, json);
    json->close('}');
  }
  for (const auto& [key, text] :
       {std::pair("before", &finding.before), std::pair("after", &finding.after),
        std::pair("witness", &finding.witness)}) {
    if (!text->empty()) write(key, std::string_view(*text), json);
  }
  write("message", std::string_view(finding.message), json);
  json->close('}');
}

void write(const ReportInput& input, JsonText* json) {
  json->open('{');
  write("file", std::string_view(input.file), json);
  if (input.groups) write("groups", std::uint64_t{*input.groups}, json);
  json->key("findings");
  json->open('[');
  for (const Finding& finding : input.report.findings) write(finding, json);
  json->close(']');
  write("left_out", std::uint64_t{input.report.left_out}, json);
  json->close('}');
}

std::string document(const std::vector<ReportInput>& inputs, std::string_view command,
                     std::optional<Order> order) {
  JsonText json;
  json.open('{');
  write("format", std::string_view("filter-report"), &json);
  write("version", std::uint64_t{1}, &json);
  write("command", command, &json);
  if (order) {
    write("order", *order == Order::kAscendingId ? std::string_view("id") : nameOf(*order), &json);
    json.key("assumptions");
    json.open('[');
    for (std::string_view assumption : assumptions()) json.value(assumption);
    json.close(']');
  }
  json.key("inputs");
  json.open('[');
  for (const ReportInput& input : inputs) write(input, &json);
  json.close(']');
  json.close('}');
  return json.take();
}

}  // namespace

std::string_view nameOf(Code code) {
  switch (code) {
#define FINDING(code, name, severity) \
  case Code::code:                    \
    return name;
#include <filter_inspect/findings.def>
  }
  return {};
}

Severity severityOf(Code code) {
  switch (code) {
#define FINDING(code, name, severity) \
  case Code::code:                    \
    return Severity::severity;
#include <filter_inspect/findings.def>
  }
  return Severity::kError;
}

std::string_view nameOf(Severity severity) {
  switch (severity) {
    case Severity::kNote:
      return "note";
    case Severity::kWarning:
      return "warning";
    case Severity::kError:
      return "error";
  }
  return {};
}

std::string_view nameOf(Subject subject) {
  switch (subject) {
    case Subject::kGroup:
      return "group";
    case Subject::kEntry:
      return "entry";
    case Subject::kMatch:
      return "match";
    case Subject::kAction:
      return "action";
    case Subject::kPolicer:
      return "policer";
    case Subject::kParent:
      return "parent";
    case Subject::kCounter:
      return "counter";
  }
  return {};
}

Severity Report::worst() const {
  Severity worst = left_out_worst;
  for (const Finding& finding : findings) worst = std::max(worst, finding.severity);
  return worst;
}

std::ostream& operator<<(std::ostream& os, const Finding& finding) {
  std::string line(nameOf(finding.severity));
  line += ": ";
  if (finding.entry) line += "entry " + std::to_string(*finding.entry) + ": ";
  if (finding.subject != Subject::kGroup && finding.subject != Subject::kEntry) {
    line += nameOf(finding.subject);
    const CodesOf codes = offenderOf(finding);
    if (codes != CodesOf::kNothing && finding.subject != Subject::kPolicer) {
      const std::string_view name = nameIn(codes, finding.offender);
      line += ' ' + (name.empty() ? std::to_string(finding.offender) : std::string(name));
    }
    line += ": ";
  }
  line += finding.message;
  if (finding.bytes) {
    line += " (" + finding.path + (finding.path.empty() ? "" : ", ") + "byte " +
            std::to_string(finding.bytes->offset) + " + " + std::to_string(finding.bytes->length) +
            ')';
  } else if (!finding.path.empty()) {
    line += " (" + finding.path + ')';
  }
  return os << line << " [" << nameOf(finding.code) << "]\n";
}

std::ostream& operator<<(std::ostream& os, const Report& report) {
  for (const Finding& finding : report.findings) os << finding;
  if (report.left_out != 0) {
    os << nameOf(report.left_out_worst) << ": " << std::to_string(report.left_out)
       << " more findings\n";
  }
  return os;
}

std::string toJson(const Report& report, std::string_view command, std::string_view file) {
  return toJson({{std::string(file), std::nullopt, report}}, command);
}

std::string toJson(const std::vector<ReportInput>& inputs, std::string_view command) {
  return document(inputs, command, std::nullopt);
}

std::string toJson(const Report& report, Order order, std::string_view command,
                   std::string_view file) {
  return toJson({{std::string(file), std::nullopt, report}}, order, command);
}

std::string toJson(const std::vector<ReportInput>& inputs, Order order, std::string_view command) {
  return document(inputs, command, order);
}

}  // namespace FiltersInspect
