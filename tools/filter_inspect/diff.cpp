#include <filter_inspect/filter_diff.h>
#include <filter_inspect/filter_head.h>
#include <filter_inspect/filter_questions.h>
#include <filter_inspect/filter_text.h>

#include <algorithm>
#include <limits>
#include <map>
#include <set>
#include <utility>

#include "analysis.h"
#include "capture.h"
#include "capture_diff.h"
#include "changed_line.h"
#include "file_report.h"
#include "selection.h"

namespace FilterInspectTool {
namespace {

using namespace FiltersCommon;
using namespace FiltersInspect;

// Two groups to compare, one of each file, or a group that only one file has.
struct Pair {
  const InputGroup* a = nullptr;
  const InputGroup* b = nullptr;

  // Returns 1 if findings are about the second file, because it has the group, and otherwise 0.
  std::size_t toldOf() const { return b != nullptr ? 1 : 0; }
  // Adds the file and the position of the group to the findings.
  void locate(const std::vector<Input>& inputs, Report* report) const {
    inputs[toldOf()].locate(*(b != nullptr ? b : a), report);
  }
};

// If each file has a single group, these two are compared. Otherwise the groups with the same id
// are compared: the first of one file with the first of the other, and so on.
std::vector<Pair> pairsOf(const Input& a, const Input& b) {
  if (a.groups.size() == 1 && b.groups.size() == 1) return {{&a.groups[0], &b.groups[0]}};
  std::multimap<filtersGroupId_t, const InputGroup*> others;
  for (const InputGroup& group : b.groups) others.emplace(group.group->getId(), &group);
  std::vector<Pair> pairs;
  std::set<const InputGroup*> paired;
  for (const InputGroup& group : a.groups) {
    const auto other = others.lower_bound(group.group->getId());
    const bool isThere = other != others.end() && other->first == group.group->getId();
    pairs.push_back({&group, isThere ? other->second : nullptr});
    if (isThere) paired.insert(others.extract(other).mapped());
  }
  for (const InputGroup& group : b.groups) {
    if (paired.count(&group) == 0) pairs.push_back({nullptr, &group});
  }
  return pairs;
}

// The differences between two groups. If only one file has the group, a finding says that the group
// is new or gone.
Report compare(const Pair& pair) {
  if (pair.a != nullptr && pair.b != nullptr) return diff(*pair.a->group, *pair.b->group);
  const FiltersGroup& group = *(pair.a != nullptr ? pair.a : pair.b)->group;
  Finding alone =
      findingOf(Code::kHeadChanged, pair.a != nullptr ? "the group is gone" : "the group is new");
  alone.group = group.getId();
  (pair.a != nullptr ? alone.before : alone.after) = toText(headOf(group));
  const FiltersGroup empty = emptyGroup(headOf(group));
  Report report = pair.a != nullptr ? diff(group, empty) : diff(empty, group);
  report.findings.insert(report.findings.begin(), std::move(alone));
  return report;
}

// Writes a line that only one of the files has.
void printAlone(char sign, const std::string& line, Console* console) {
  console->writeLine(sign + line, sign == '-' ? Color::kRemoved : Color::kAdded);
}

// Writes one line for an entry that differs between the files, with marks around the differences.
void printChanged(const std::string& before, const std::string& after, Console* console) {
  std::string line(1, '~');
  for (const LinePart& part : compareLines(before, after)) {
    if (part.in == LinePart::kBoth) line += part.text;
    if (part.in == LinePart::kBefore) {
      line += console->painted("[-" + part.text + "-]", Color::kRemoved);
    }
    if (part.in == LinePart::kAfter) {
      line += console->painted("{+" + part.text + "+}", Color::kAdded);
    }
  }
  console->writeLine(line);
}

void printEntry(const Pair& pair, filtersEntryId_t id, Console* console) {
  const auto find = [id](const InputGroup* group) -> const FiltersEntry* {
    if (group == nullptr) return nullptr;
    const auto& entries = group->group->getEntriesRef();
    const auto entry = entries.find(id);
    return entry == entries.end() ? nullptr : &entry->second;
  };
  const FiltersEntry *a = find(pair.a), *b = find(pair.b);
  if (b == nullptr) return printAlone('-', shownText(*a), console);
  if (a == nullptr) return printAlone('+', shownText(*b), console);
  const std::string before = shownText(*a), after = shownText(*b);
  if (before != after) return printChanged(before, after, console);
  printChanged(toText(*a), toText(*b), console);  // their policers differ only in their bytes
}

void printHead(const Pair& pair, Console* console) {
  const auto lineOf = [](const InputGroup* group) { return toText(headOf(*group->group)); };
  if (pair.b == nullptr) return printAlone('-', lineOf(pair.a), console);
  if (pair.a == nullptr) return printAlone('+', lineOf(pair.b), console);
  printChanged(lineOf(pair.a), lineOf(pair.b), console);
}

// Writes the line of the group, and the line of each entry that has findings, in the text form.
void print(const Pair& pair, const std::string (&files)[2], const Report& report,
           Console* console) {
  if (report.empty()) return;
  const auto placeOf = [](const InputGroup* group, const std::string& file) {
    return printable(group != nullptr ? group->place : file + ": no such group");
  };
  console->writeLine("--- " + placeOf(pair.a, files[0]));
  console->writeLine("+++ " + placeOf(pair.b, files[1]));
  bool headPrinted = false;
  std::optional<filtersEntryId_t> last;
  for (const Finding& finding : report.findings) {
    if (!finding.entry && !std::exchange(headPrinted, true)) {
      printHead(pair, console);
    }
    if (!finding.entry || last == finding.entry) continue;
    last = finding.entry;
    printEntry(pair, *last, console);
  }
}

// Explains how the changes of each group affect packets.
class Treatment {
 public:
  Treatment(const Options& options, const std::vector<Input>& inputs, Console* console)
      : options_(options),
        console_(*console),
        inputs_(inputs),
        reports_{FileReport(options, inputs[0]), FileReport(options, inputs[1])} {}

  // Reads --packets. Returns false if the packet set cannot be read.
  bool readPackets() {
    if (!options_.packets) return true;
    Report faults;
    packets_ = PacketSet::parse(*options_.packets, &faults,
                                std::max<std::size_t>(options_.max_findings, 1));
    if (packets_ && !options_.order.empty()) return true;
    if (packets_) console_.trouble(Code::kUsage, "--packets", "an order is needed: --order");
    for (const Finding& fault : faults.findings) {
      console_.trouble("--packets", fault, *options_.packets, 1);
    }
    return false;
  }

  void add(const Pair& pair, const Selection& selection) {
    if (options_.order.empty() || pair.a == nullptr || pair.b == nullptr) return;
    AnalysisOptions options = analysisOf(options_, pair.a->place, &console_);
    options.max_findings = std::numeric_limits<std::size_t>::max();
    const FiltersGroup &a = *pair.a->group, &b = *pair.b->group;
    Report report = explainChanges(a, b, options, packets_ ? &*packets_ : nullptr);
    Report others;
    if (packets_) others.findings = {aboutOthers(a, changesOthers(a, b, *packets_, options))};
    console_.hideProgress();
    selection.keep(&report);
    // A finding is about the first file if it has the entry, and otherwise about the second file.
    Report parts[2];
    for (Finding& finding : report.findings) {
      ++counts_[finding.code];
      const auto& entries = pair.a->group->getEntriesRef();
      const bool isNew = finding.entry && entries.count(*finding.entry) == 0;
      parts[isNew ? 1 : 0].findings.push_back(std::move(finding));
    }
    reports_[0].add(*pair.a, std::move(parts[0]));
    reports_[1].add(*pair.b, std::move(parts[1]));
    reports_[1].add(*pair.b, std::move(others));
  }

  Report take(std::size_t file) { return reports_[file].take(); }

  void print() {
    if (options_.order.empty()) return;
    std::size_t left_out = 0;
    for (const std::size_t file : {0U, 1U}) {
      const Report report = take(file);
      left_out += report.left_out;
      console_.write(inputs_[file].file, report);
    }
    console_.writeLine(summary(left_out));
  }
 private:
  // Says whether packets outside of the set are treated differently.
  static Finding aboutOthers(const FiltersGroup& group, std::optional<bool> differ) {
    Finding finding =
        !differ   ? findingOf(Code::kNotDecided, "whether something else changes is not decided")
        : *differ ? findingOf(Code::kTreatmentDiffers, "other packets are treated differently too")
                  : findingOf(Code::kNoDifference, "nothing else changes");
    finding.group = group.getId();
    return finding;
  }

  // "a.bin, b.bin: 2 changes treat packets differently, 1 does not (order: ...)"
  std::string summary(std::size_t left_out) {
    const std::size_t differing = counts_[Code::kTreatmentDiffers];
    const std::size_t open = counts_[Code::kNotDecided], idle = counts_[Code::kNoDifference];
    std::string text = printable(inputs_[0].file + ", " + inputs_[1].file) + ": ";
    if (differing == 0 && open == 0) {
      text += packets_ ? "none of these packets" : "no packet";
      text += " is treated differently";
    } else {
      text += counted(differing, "change") + " treat" + (differing == 1 ? "s" : "") +
              (packets_ ? " these packets" : " packets") + " differently";
    }
    if (differing != 0 && idle != 0) {
      text += ", " + std::to_string(idle) + (idle == 1 ? " does not" : " do not");
    }
    if (open != 0) text += ", " + std::to_string(open) + " not decided";
    if (left_out != 0) text += "; " + counted(left_out, "finding") + " left out";
    return text + " (" + restsOn(orderOf(options_)) + ")";
  }

  const Options& options_;
  Console& console_;
  const std::vector<Input>& inputs_;
  FileReport reports_[2];
  std::map<Code, std::size_t> counts_;
  std::optional<PacketSet> packets_;
};

// The JSON document, which has one `input` object for each file.
class Document {
 public:
  explicit Document(const std::vector<Input>& inputs) {
    for (const Input& input : inputs) inputs_.push_back({input.file, input.groups.size(), {}});
  }
  void add(ReportInput&& input) {
    if (input.file != inputs_[0].file) return inputs_.push_back(std::move(input));
    inputs_[0].report.append(std::move(input.report));
  }
  void add(std::size_t file, Report&& report) { inputs_[file].report.append(std::move(report)); }
  void write(const Options& options, Console* console) {
    if (options.order.empty()) return console->write(inputs_);
    console->write(inputs_, orderOf(options));
  }
 private:
  std::vector<ReportInput> inputs_;
};

Report stepsOf(const Plan& plan, const FiltersGroup& to) {
  Report report;
  for (const Step& step : plan.steps) {
    Finding& finding = report.findings.emplace_back(findingOf(Code::kPlanStep, toText(step, to)));
    finding.group = to.getId();
    // A line of a plan has the kind of the step first, and then the entry or value.
    const std::size_t end = finding.message.find(' ');
    finding.step = finding.message.substr(0, end);
    if (step.kind != Step::Kind::kRemove) finding.value = finding.message.substr(end + 1);
    if (step.kind != Step::Kind::kInsert && step.kind != Step::Kind::kRemove) continue;
    finding.subject = Subject::kEntry;
    finding.entry = step.entry;
  }
  return report;
}

Plan planOf(const Pair& pair, PlanOrder order) {
  if (pair.a != nullptr && pair.b != nullptr) return plan(*pair.a->group, *pair.b->group, order);
  Plan none;
  const bool isGone = pair.a != nullptr;
  Finding& why = none.report.findings.emplace_back(findingOf(
      Code::kNoPlan, isGone ? "no step takes a whole group away" : "no step makes a new group"));
  why.group = (isGone ? pair.a : pair.b)->group->getId();
  return none;
}

}  // namespace

Exit runDiff(const Options& options, Console* console) {
  if (!readsInputOnce(options, console)) return kExitTrouble;
  auto inputs = readWholeInputs(options, console);
  if (!inputs) return kExitTrouble;
  Selection selection(options);
  for (Input& input : *inputs) selection.choose(&input);
  if (!selection.isThere(console)) return kExitTrouble;
  const std::string files[] = {inputs->at(0).file, inputs->at(1).file};
  Document document(*inputs);
  Treatment treatment(options, *inputs, console);
  if (!treatment.readPackets()) return kExitTrouble;
  CaptureDiff traffic(options, *inputs, console);
  if (!traffic.isReady()) return kExitTrouble;
  bool differ = false;
  for (const Pair& pair : pairsOf(inputs->at(0), inputs->at(1))) {
    Report report = compare(pair);
    selection.keep(&report);
    differ = differ || !report.empty();
    if (!options.json) print(pair, files, report, console);
    pair.locate(*inputs, &report);
    document.add(pair.toldOf(), std::move(report));
    treatment.add(pair, selection);
    if (pair.a != nullptr && pair.b != nullptr) traffic.add(*pair.a, *pair.b);
  }
  std::vector<ReportInput> seen = traffic.run(selection);
  if (options.json) {
    for (const std::size_t file : {0U, 1U}) document.add(file, treatment.take(file));
    for (ReportInput& one : seen) document.add(std::move(one));
    document.write(options, console);
  } else {
    treatment.print();
    traffic.print(seen);
  }
  return differ ? kExitFound : kExitFine;
}

Exit runPlan(const Options& options, Console* console) {
  const auto inputs = readWholeInputs(options, console);
  if (!inputs) return kExitTrouble;
  const PlanOrder order = options.remove_first ? PlanOrder::kRemoveFirst : PlanOrder::kAddFirst;
  Document document(*inputs);
  std::vector<std::pair<Pair, Report>> all;
  Exit exit = kExitFine;
  for (const Pair& pair : pairsOf(inputs->at(0), inputs->at(1))) {
    Plan plan = planOf(pair, order);
    if (plan.possible) {
      all.emplace_back(pair, stepsOf(plan, *pair.b->group));
      continue;
    }
    exit = kExitFound;
    pair.locate(*inputs, &plan.report);
    if (!options.json) console->aside(inputs->at(pair.toldOf()).file, plan.report);
    document.add(pair.toldOf(), std::move(plan.report));
  }
  if (exit == kExitFound) all.clear();  // half of a plan is of no use
  for (auto& [pair, steps] : all) {
    if (!options.json && all.size() > 1 && !steps.empty()) {
      console->writeLine("# " + printable(pair.a->place + " to " + pair.b->place));
    }
    for (const Finding& step : steps.findings) {
      if (!options.json) console->writeLine(step.message);
    }
    pair.locate(*inputs, &steps);
    document.add(pair.toldOf(), std::move(steps));
  }
  if (options.json) document.write(options, console);
  return exit;
}

}  // namespace FilterInspectTool
