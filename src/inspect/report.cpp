#include <filter_inspect/filter_report.h>

#include <algorithm>
#include <ostream>

#include <filter_inspect/filter_names.h>
#include <nlohmann/json.hpp>

namespace FiltersInspect {
namespace {

using namespace FiltersCommon;
using Json = nlohmann::ordered_json;

// What the numbers of a finding are codes of.
enum class CodesOf { kNothing, kMatches, kActions, kStages, kTypes, kPolicerStages, kNumbers };

CodesOf offenderOf(const Finding& finding) {
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

Json jsonOf(CodesOf codes, std::uint32_t value) {
  const std::string_view name = nameIn(codes, value);
  return name.empty() ? Json(value) : Json(name);
}

Json jsonOf(CodesOf codes, const std::vector<std::uint32_t>& values) {
  Json list = Json::array();
  for (std::uint32_t value : values) list.push_back(jsonOf(codes, value));
  return list;
}

Json jsonOf(const Finding& finding) {
  const CodesOf codes = offenderOf(finding);
  Json json = {{"code", nameOf(finding.code)}, {"level", nameOf(finding.severity)}};
  if (finding.result != FILTERS_OK) json["result"] = nameOf(finding.result);
  json["subject"] = nameOf(finding.subject);
  if (finding.group) json["group"] = *finding.group;
  if (finding.entry) json["entry"] = *finding.entry;
  if (codes != CodesOf::kNothing) json["offender"] = jsonOf(codes, finding.offender);
  if (!finding.admitted.empty()) json["admitted"] = jsonOf(codes, finding.admitted);
  if (!finding.others.empty()) {
    const bool matches = finding.subject == Subject::kMatch;
    json["others"] = jsonOf(matches ? CodesOf::kMatches : CodesOf::kNumbers, finding.others);
  }
  if (finding.bytes) {
    json["path"] = finding.path;
    json["bytes"] = {{"offset", finding.bytes->offset}, {"length", finding.bytes->length}};
  }
  for (const auto& [key, text] :
       {std::pair("before", &finding.before), std::pair("after", &finding.after),
        std::pair("witness", &finding.witness)}) {
    if (!text->empty()) json[key] = *text;
  }
  json["message"] = finding.message;
  return json;
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
  Severity worst = Severity::kNote;
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
  }
  return os << line << " [" << nameOf(finding.code) << "]\n";
}

std::ostream& operator<<(std::ostream& os, const Report& report) {
  for (const Finding& finding : report.findings) os << finding;
  if (report.left_out != 0) os << "note: " << std::to_string(report.left_out) << " more findings\n";
  return os;
}

std::string toJson(const Report& report, std::string_view command, std::string_view file) {
  Json findings = Json::array();
  for (const Finding& finding : report.findings) findings.push_back(jsonOf(finding));
  const Json json = {
      {"format", "filter-report"},
      {"version", 1},
      {"command", command},
      {"inputs",
       {{{"file", file}, {"findings", std::move(findings)}, {"left_out", report.left_out}}}}};
  // What is no UTF-8, as the name of a file may be, is replaced and not thrown at the caller.
  return json.dump(2, ' ', false, Json::error_handler_t::replace) + '\n';
}

}  // namespace FiltersInspect
