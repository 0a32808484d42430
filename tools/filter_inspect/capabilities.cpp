#include <filter_inspect/filter_explain.h>
#include <filter_inspect/filter_names.h>

#include <algorithm>

#include "input.h"
#include "table.h"

namespace FilterInspectTool {
namespace {

using namespace FiltersCommon;
using namespace FiltersInspect;

template <class Codes>
std::string listed(const Codes& codes) {
  std::string list;
  for (const auto code : codes) list.append(list.empty() ? "" : ", ").append(nameOf(code));
  return list;
}

template <class Codes>
Finding admits(const std::string& which, const char* what, Subject subject, const Codes& codes) {
  const std::string admitted =
      codes.empty() ? std::string("no ") + what : std::string("the ") + what + ' ' + listed(codes);
  Finding finding = findingOf(Code::kAdmits, which + " admits " + admitted);
  finding.subject = subject;
  for (const auto code : codes) finding.admitted.push_back(static_cast<std::uint32_t>(code));
  return finding;
}

// The stages or types that the user asked for, or all.
template <class Enum>
std::vector<Enum> chosen(const std::string& name) {
  std::vector<Enum> codes;
  for (const auto& [code, itsName] : namesOf<Enum>()) {
    if (name.empty() || name == itsName) codes.push_back(code);
  }
  return codes;
}

using Stages = std::vector<filtersGroupStage_t>;
using Types = std::vector<filtersGroupType_t>;

void addStage(filtersGroupStage_t stage, Report* report) {
  const Capability its = capabilityOf(stage, FILTERS_GROUP_TYPE_NONE);
  const std::string name = "stage " + std::string(nameOf(stage));
  report->findings.push_back(admits(name, "types", Subject::kGroup, its.types));
  report->findings.push_back(admits(name, "actions", Subject::kAction, its.actions));
  report->findings.push_back(admits(name, "policer stages", Subject::kPolicer, its.policers));
}

void addType(filtersGroupType_t type, Report* report) {
  Stages stages;
  for (const filtersGroupStage_t stage : chosen<filtersGroupStage_t>("")) {
    if (capabilityOf(stage, type).valid) stages.push_back(stage);
  }
  const Capability its = capabilityOf(FILTERS_GROUP_STAGE_NONE, type);
  const std::string name = "type " + std::string(nameOf(type));
  report->findings.push_back(admits(name, "matches", Subject::kMatch, its.matches));
  Finding& finding = report->findings.emplace_back(
      findingOf(Code::kAdmits, name + " lives in the stages " + listed(stages)));
  finding.after = listed(stages);
}

Report tablesOf(const Options& options) {
  Report report;
  const Stages stages = chosen<filtersGroupStage_t>(options.stage);
  const Types types = chosen<filtersGroupType_t>(options.type);
  if (!options.stage.empty() && !options.type.empty()) {
    const Capability both = capabilityOf(stages[0], types[0]);
    if (!both.valid) {
      report.findings.push_back(findingOf(Code::kAdmits, options.stage + " does not admit type " +
                                                             options.type + "; it admits types " +
                                                             listed(both.types)));
      for (const filtersGroupType_t type : both.types) {
        report.findings.back().admitted.push_back(static_cast<std::uint32_t>(type));
      }
      return report;
    }
  }
  if (options.type.empty() || !options.stage.empty()) {
    for (const filtersGroupStage_t stage : stages) addStage(stage, &report);
  }
  if (options.stage.empty() || !options.type.empty()) {
    for (const filtersGroupType_t type : types) addType(type, &report);
  }
  return report;
}

// --- The matrix -------------------------------------------------------------------------------

// A table with an x where the column (a stage or a type) admits the row (a match, for example).
// `wordsOf` may add words about a row, which are broken into several lines if one line would be
// longer than `width` letters.
template <class Row, class Column, class Admits>
std::string matrixOf(const char* title, const Admits& admits,
                     std::string_view (*wordsOf)(Row) = nullptr, std::size_t width = 0) {
  std::string text, head = title;
  std::size_t first = head.size();
  for (const auto& [code, name] : namesOf<Row>()) first = std::max(first, name.size());
  head.append(first - head.size(), ' ');
  for (const auto& [code, name] : namesOf<Column>()) head.append("  ").append(name);
  text = head + '\n';
  for (const auto& [code, name] : namesOf<Row>()) {
    std::string line(name);
    line.append(first - line.size(), ' ');
    for (const auto& [column, its] : namesOf<Column>()) {
      line.append(1 + its.size(), ' ').append(1, admits(code, column) ? 'x' : '.');
    }
    const std::size_t indent = line.size() + 2;
    if (wordsOf != nullptr) line.append("  ").append(wordsOf(code));
    text += wrapped(line, width > indent ? width : 0, indent) + '\n';
  }
  return text;
}

// Tables of everything that the stages and types admit.
std::string matrices(std::size_t width) {
  const auto ofStage = [](filtersGroupStage_t stage) {
    return capabilityOf(stage, FILTERS_GROUP_TYPE_NONE);
  };
  const auto hasMatch = [](filtersMatch_t match, filtersGroupType_t type) {
    return capabilityOf(FILTERS_GROUP_STAGE_NONE, type).matches.count(match) != 0;
  };
  const auto hasAction = [&](filtersAction_t action, filtersGroupStage_t stage) {
    return ofStage(stage).actions.count(action) != 0;
  };
  const auto hasType = [&](filtersGroupType_t type, filtersGroupStage_t stage) {
    return ofStage(stage).types.count(type) != 0;
  };
  const auto hasPolicer = [&](policer::Stage policer, filtersGroupStage_t stage) {
    const auto its = ofStage(stage).policers;
    return std::find(its.begin(), its.end(), policer) != its.end();
  };
  return "The matches that each type admits:\n" +
         matrixOf<filtersMatch_t, filtersGroupType_t>("type", hasMatch) +
         "\nThe types that each stage admits:\n" +
         matrixOf<filtersGroupType_t, filtersGroupStage_t>("stage", hasType, describe, width) +
         "\nThe actions that each stage admits:\n" +
         matrixOf<filtersAction_t, filtersGroupStage_t>("stage", hasAction) +
         "\nThe stages of policers that each stage admits:\n" +
         matrixOf<policer::Stage, filtersGroupStage_t>("stage", hasPolicer);
}

Finding placeFor(const FiltersEntry& entry, const Stages& stages, const Types& types) {
  std::string places;
  for (const Placement& placement : placementsOf(entry)) {
    if (std::count(stages.begin(), stages.end(), placement.stage) == 0 ||
        std::count(types.begin(), types.end(), placement.type) == 0) {
      continue;
    }
    places.append(places.empty() ? "" : " ").append(nameOf(placement.stage)).append("/");
    places.append(nameOf(placement.type));
  }
  Finding finding = places.empty() ? findingOf(Code::kNoPlacement,
                                               "none of the stages and types asked about admits it")
                                   : findingOf(Code::kPlacement, "fits " + places);
  finding.subject = Subject::kEntry;
  finding.entry = entry.getId();
  finding.after = places;
  return finding;
}

// Drops findings about entries that their own group refuses. This command looks for other groups
// that admit the entries, so such a refusal is no loss.
void dropRefusals(Report* report) {
  auto& all = report->findings;
  const auto isRefusal = [](const Finding& finding) {
    return finding.code == Code::kEntryRefused || finding.result != FILTERS_OK;
  };
  all.erase(std::remove_if(all.begin(), all.end(), isRefusal), all.end());
}

// Finds the stages and types that admit each entry of the input files. Looks only at the chosen
// stages and types.
class Placer {
 public:
  Placer(const Options& options, Console* console)
      : options_(options),
        console_(*console),
        stages_(chosen<filtersGroupStage_t>(options.stage)),
        types_(chosen<filtersGroupType_t>(options.type)) {}

  void place(Input& input) {
    Report all;
    for (const InputGroup& group : input.groups) {
      if (group.group) place(input, group, &all);
    }
    dropRefusals(&input.report);
    tellLosses(input, &console_);
    document_.push_back({input.file, input.groups.size(), std::move(all)});
  }

  Exit finish() {
    if (options_.json && !document_.empty()) console_.write(document_);
    return exit_;
  }
 private:
  void place(const Input& input, const InputGroup& group, Report* all) {
    for (const FiltersEntry& entry : group.entries) {
      Finding finding = placeFor(entry, stages_, types_);
      input.locate(group, &finding);
      if (finding.severity != Severity::kNote) exit_ = kExitFound;
      if (options_.json) {
        all->findings.push_back(std::move(finding));
      } else {
        console_.writeLine(printable(placeOf(input.file, finding)) + ": entry " +
                           std::to_string(entry.getId()) + ": " + finding.message);
      }
    }
  }

  const Options& options_;
  Console& console_;
  const Stages stages_;
  const Types types_;
  std::vector<ReportInput> document_;
  Exit exit_ = kExitFine;
};

}  // namespace

Exit runCapabilities(const Options& options, Console* console) {
  if (!options.files.empty()) {
    Placer placer(options, console);
    forEachInput(options, {Severity::kWarning, true}, console,
                 [&](Input& input) { placer.place(input); });
    return placer.finish();
  }
  const Report tables = tablesOf(options);
  if (options.json) {
    console->write({{"", {}, tables}});
    return kExitFine;
  }
  if (options.stage.empty() && options.type.empty()) {
    console->write(matrices(console->width()));
    return kExitFine;
  }
  for (const Finding& finding : tables.findings) {
    console->writeLine(wrapped(finding.message, console->width(), 2));
  }
  return kExitFine;
}

}  // namespace FilterInspectTool
