#include <filter_inspect/filter_report.h>

#include <algorithm>
#include <iterator>
#include <ostream>
#include <utility>

#include <filter_inspect/filter_names.h>

#include "json_writer.h"
#include "report_json.h"

namespace FiltersInspect {
namespace {

using namespace FiltersCommon;

constexpr Severity kWorstFirst[] = {Severity::kError, Severity::kWarning, Severity::kNote};

// Returns the enumeration to which the numbers of a finding belong.
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

void write(CodesOf codes, std::uint32_t value, JsonWriter* json) {
  const std::string_view name = nameIn(codes, value);
  if (name.empty()) {
    json->value(value);
  } else {
    json->value(name);
  }
}

void write(const char* key, CodesOf codes, const std::vector<std::uint32_t>& values,
           JsonWriter* json) {
  if (values.empty()) return;
  json->key(key);
  json->open('[');
  for (std::uint32_t value : values) write(codes, value, json);
  json->close(']');
}

template <class Value>
void write(const char* key, Value value, JsonWriter* json) {
  json->key(key);
  json->value(value);
}

void write(const Finding& finding, JsonWriter* json) {
  const CodesOf codes = offenderOf(finding);
  json->open('{');
  write("code", nameOf(finding.code), json);
  write("level", nameOf(finding.severity), json);
  if (finding.result != FILTERS_OK) write("result", nameOf(finding.result), json);
  write("subject", nameOf(finding.subject), json);
  if (finding.group) write("group", *finding.group, json);
  if (finding.group_number) write("group_number", std::uint64_t{*finding.group_number}, json);
  if (finding.entry) write("entry", *finding.entry, json);
  if (codes != CodesOf::kNothing) {
    json->key("offender");
    write(codes, finding.offender, json);
  }
  write("admitted", admittedOf(finding), finding.admitted, json);
  const bool isPart = finding.subject == Subject::kMatch || finding.subject == Subject::kAction;
  write("others", isPart ? codes : CodesOf::kNumbers, finding.others, json);
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
        std::pair("witness", &finding.witness), std::pair("word", &finding.word)}) {
    if (!text->empty()) write(key, std::string_view(*text), json);
  }
  for (const auto& [key, text] :
       {std::pair("step", &finding.step), std::pair("value", &finding.value),
        std::pair("treatment", &finding.treatment)}) {
    if (!text->empty()) write(key, std::string_view(*text), json);
  }
  if (!finding.lacking.empty()) {
    json->key("lacking");
    json->open('[');
    for (const std::string& field : finding.lacking) json->value(field);
    json->close(']');
  }
  for (const auto& [key, seen] :
       {std::pair("sure", &finding.sure), {"possible", &finding.possible}}) {
    if (!*seen) continue;
    json->key(key);
    json->open('{');
    write("frames", (*seen)->frames, json);
    if ((*seen)->first != 0) write("first", (*seen)->first, json);
    if (!(*seen)->time.empty()) write("time", std::string_view((*seen)->time), json);
    json->close('}');
  }
  write("message", std::string_view(finding.message), json);
  json->close('}');
}

// The two treatments as text: "permit becomes deny". The text is empty if the finding does not have
// two treatments.
std::string treatmentsText(const Finding& finding) {
  if (finding.witness.empty() || finding.before.empty() || finding.after.empty()) return {};
  if (finding.before == finding.after) return "alike: " + finding.before;
  const bool beside = finding.code == Code::kEntriesTie || finding.code == Code::kEntriesOverlap ||
                      finding.code == Code::kPolicyFails || finding.code == Code::kPolicyOpen;
  if (!beside || !finding.entry) return finding.before + " becomes " + finding.after;
  const std::string other =
      finding.others.size() == 1 ? "entry " + std::to_string(finding.others[0]) : "others";
  return "entry " + std::to_string(*finding.entry) + ": " + finding.before + "; " + other + ": " +
         finding.after;
}

void write(const ReportInput& input, JsonWriter* json) {
  json->open('{');
  write("file", std::string_view(input.file), json);
  if (input.groups) write("groups", std::uint64_t{*input.groups}, json);
  json->key("findings");
  json->open('[');
  for (const Finding& finding : input.report.findings) write(finding, json);
  json->close(']');
  write("left_out", std::uint64_t{input.report.left_out}, json);
  if (input.accepted != 0) write("accepted", std::uint64_t{input.accepted}, json);
  json->key("left_out_by_level");
  json->open('{');
  for (const Severity severity : kWorstFirst) {
    json->key(nameOf(severity));
    json->value(input.report.left_out_by_severity[static_cast<std::size_t>(severity)]);
  }
  json->close('}');
  json->close('}');
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

std::string countsText(const SeverityCounts& counts) {
  std::string text;
  for (const Severity severity : kWorstFirst) {
    const std::size_t count = counts[static_cast<std::size_t>(severity)];
    if (count == 0) continue;
    text += (text.empty() ? "" : ", ") + std::to_string(count) + ' ';
    text.append(nameOf(severity)).append(count == 1 ? "" : "s");
  }
  return text;
}

Severity Report::worst() const {
  Severity worst = Severity::kNote;
  for (const Finding& finding : findings) worst = std::max(worst, finding.severity);
  for (const Severity severity : kWorstFirst) {
    if (left_out_by_severity[static_cast<std::size_t>(severity)] != 0) {
      return std::max(worst, severity);
    }
  }
  return worst;
}

void Report::append(Report&& other) {
  findings.insert(findings.end(), std::move_iterator(other.findings.begin()),
                  std::move_iterator(other.findings.end()));
  for (const Severity severity : kWorstFirst) {
    leaveOut(severity, other.left_out_by_severity[static_cast<std::size_t>(severity)]);
  }
}

void Report::keep(std::size_t most) {
  if (findings.size() <= most) return;
  SeverityCounts room = {};  // how many findings of each severity are kept
  for (const Finding& finding : findings) ++room[static_cast<std::size_t>(finding.severity)];
  for (const Severity severity : kWorstFirst) {
    std::size_t& its = room[static_cast<std::size_t>(severity)];
    its = std::min(its, most);
    most -= its;
  }
  const auto isLeftOut = [&](const Finding& finding) {
    std::size_t& its = room[static_cast<std::size_t>(finding.severity)];
    if (its == 0) {
      leaveOut(finding.severity);
      return true;
    }
    --its;
    return false;
  };
  findings.erase(std::remove_if(findings.begin(), findings.end(), isLeftOut), findings.end());
}

bool LimitedReport::hasRoom(Severity severity) {
  std::size_t ahead = 0;  // findings that have a place before this one
  for (auto i = static_cast<std::size_t>(severity); i < added_.size(); ++i) ahead += added_[i];
  if (ahead < most_) return true;
  report_.leaveOut(severity);
  return false;
}

Finding& LimitedReport::addNew(Severity severity) {
  if (report_.findings.size() / 2 >= most_) report_.keep(most_);
  ++added_[static_cast<std::size_t>(severity)];
  return report_.findings.emplace_back();
}

Finding* LimitedReport::add(Code code) {
  const Severity severity = severityOf(code);
  if (!hasRoom(severity)) return nullptr;
  Finding& finding = addNew(severity);
  finding.code = code;
  finding.severity = severity;
  return &finding;
}

void LimitedReport::append(Report&& other) {
  for (Finding& finding : other.findings) {
    if (hasRoom(finding.severity)) addNew(finding.severity) = std::move(finding);
  }
  other.findings.clear();
  report_.append(std::move(other));
}

Report LimitedReport::take() {
  report_.keep(most_);
  added_ = {};
  return std::exchange(report_, {});
}

std::ostream& operator<<(std::ostream& os, const Finding& finding) {
  std::string line(nameOf(finding.severity));
  line += ": ";
  if (finding.entry) {
    // A sentence can begin with its entry: "entry 5 permits ttl=1".
    const std::string entry = "entry " + std::to_string(*finding.entry);
    if (finding.message.compare(0, entry.size() + 1, entry + ' ') != 0) line += entry + ": ";
  } else if (finding.group) {
    line += "group " + std::to_string(*finding.group) + ": ";
  }
  if (finding.subject != Subject::kGroup && finding.subject != Subject::kEntry) {
    std::string subject(nameOf(finding.subject));
    const CodesOf codes = offenderOf(finding);
    if (codes != CodesOf::kNothing && finding.subject != Subject::kPolicer) {
      const std::string_view name = nameIn(codes, finding.offender);
      subject += ' ' + (name.empty() ? std::to_string(finding.offender) : std::string(name));
    }
    // A sentence can begin with its subject: "policer 5 was added".
    if (finding.message.compare(0, subject.size() + 1, subject + ' ') != 0) {
      line += subject + ": ";
    }
  }
  line += finding.message;
  if (finding.bytes) {
    line += " (" + finding.path + (finding.path.empty() ? "" : ", ") + "byte " +
            std::to_string(finding.bytes->offset) + " + " + std::to_string(finding.bytes->length) +
            ')';
  } else if (!finding.path.empty()) {
    line += " (" + finding.path + ')';
  }
  os << line << " [" << nameOf(finding.code) << "]\n";
  if (!finding.witness.empty()) os << "  packet: " << finding.witness << '\n';
  const std::string treatments = treatmentsText(finding);
  if (!treatments.empty()) os << "  " << treatments << '\n';
  return os;
}

std::ostream& operator<<(std::ostream& os, const Report& report) {
  for (const Finding& finding : report.findings) os << finding;
  if (report.left_out != 0) {
    os << "left out: " << countsText(report.left_out_by_severity) << '\n';
  }
  return os;
}

std::string reportJson(const std::vector<ReportInput>& inputs, std::string_view command,
                       const ReportBasis* basis, bool isLine) {
  JsonWriter json(isLine ? JsonStyle::kLine : JsonStyle::kIndented);
  json.open('{');
  write("format", std::string_view("filter-report"), &json);
  write("version", std::uint64_t{1}, &json);
  write("command", command, &json);
  if (basis != nullptr) {
    write("order", basis->order, &json);
    if (!isLine) {
      json.key("assumptions");
      json.open('[');
      for (std::string_view assumption : basis->assumptions) json.value(assumption);
      json.close(']');
    }
  }
  json.key("inputs");
  json.open('[');
  for (const ReportInput& input : inputs) write(input, &json);
  json.close(']');
  json.close('}');
  return json.take();
}

std::string toJson(const Report& report, std::string_view command, std::string_view file) {
  return toJson({{std::string(file), std::nullopt, report}}, command);
}

std::string toJson(const std::vector<ReportInput>& inputs, std::string_view command) {
  return reportJson(inputs, command, nullptr);
}

}  // namespace FiltersInspect
