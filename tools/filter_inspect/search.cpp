#include <filter_inspect/filter_questions.h>

#include <algorithm>
#include <utility>

#include "analysis.h"
#include "input.h"
#include "selection.h"

namespace FilterInspectTool {
namespace {

using namespace FiltersCommon;
using namespace FiltersInspect;

constexpr char kPacketsPlace[] = "--packets";
constexpr char kThenPlace[] = "--then";
constexpr std::size_t kWidestTreatment = 30;  // longer ones do not indent the packets

// Reports why the value of an option cannot be read.
void tellFaults(const char* option, Report&& faults, std::string_view text, Console* console) {
  for (const Finding& fault : std::exchange(faults.findings, {})) {
    console->trouble(option, fault, text);
  }
  console->aside(option, faults);
}

// The answer for one group: the entries that take packets of a set.
class Answer {
 public:
  Answer(const Options& options, const PacketSet& packets, const ActionTest* then, Console* console)
      : options_(options), packets_(packets), then_(then), console_(*console) {}

  // Writes the answer. With --json, does not write the answer, but keeps it for the document.
  void write(const Input& input, const InputGroup& group) {
    const AnalysisOptions how = analysisOf(options_, group.place, &console_);
    how_ = how.order;
    if (options_.entries.empty()) {
      Report report = writeFound(group, how);
      input.locate(group, &report);
      all_.append(std::move(report));
    }
    for (const filtersEntryId_t id : options_.entries) writeLeft(input, group, id, how);
  }

  Exit finish(const Input& input) {
    if (options_.json) {
      console_.write({{input.file, input.groups.size(), std::move(all_)}}, how_);
    }
    return is_sure_ ? kExitFound : is_open_ ? kExitTrouble : kExitFine;
  }
 private:
  Report writeFound(const InputGroup& group, const AnalysisOptions& how) {
    const auto ask = options_.touching ? touching : search;
    const auto report_on = options_.touching ? touchingReport : searchReport;
    const Destinations found = ask(*group.group, packets_, how.order, how, then_);
    console_.hideProgress();
    Report report = report_on(*group.group, found);
    is_open_ = is_open_ || !found.complete;
    if (!options_.json) console_.writeLine(printable(group.place) + ": " + summaryOf(found));
    std::vector<std::string> heads;
    std::size_t widest = 0;
    for (std::size_t i = 0; i < found.found.size(); ++i) {
      heads.push_back("  " + headOf(found.found[i], report.findings[i]));
      if (heads[i].size() <= kWidestTreatment) widest = std::max(widest, heads[i].size());
    }
    for (std::size_t i = 0; i < found.found.size(); ++i) {
      const Destination& one = found.found[i];
      tell(one.hit);
      if (options_.json) continue;
      std::string& head = heads[i];
      head.resize(std::max(widest, head.size()), ' ');
      console_.writeLine(head + "  " + one.witness.toText(),
                         one.hit == Hit::kHit ? Color::kNone : Color::kWarning);
      if (!one.reason.empty()) console_.writeLine("    " + one.reason);
    }
    return report;
  }

  void writeLeft(const Input& input, const InputGroup& group, filtersEntryId_t id,
                 const AnalysisOptions& how) {
    const auto left = remains(*group.group, id, packets_, how.order, how);
    console_.hideProgress();
    if (!left) return;  // another group has this entry
    Report report = remainsReport(*group.group, id, *left);
    input.locate(group, &report);
    tell(left->hit);
    is_open_ = is_open_ || !left->complete;
    if (!options_.json) {
      const Finding& first = report.findings[0];
      console_.writeLine(printable(placeOf(input.file, first)) + ": entry " + std::to_string(id) +
                         " (" + first.treatment + "): " + first.message);
      bool listed = false;
      for (const Finding& one : report.findings) {
        if (one.code != Code::kPacketsLeft || &one == &first) continue;
        console_.writeLine((one.after == nameOf(Hit::kHit) ? "  " : "  perhaps ") +
                           (one.value.empty() ? "every packet" : one.value));
        listed = true;
      }
      if (!listed && !first.witness.empty()) console_.writeLine("  packet: " + first.witness);
      if (!left->complete) console_.writeLine("  " + report.findings.back().message);
    }
    all_.append(std::move(report));
  }

  void tell(Hit hit) {
    is_sure_ = is_sure_ || hit == Hit::kHit;
    is_open_ = is_open_ || hit == Hit::kUndecided;
  }

  // "entry 50: permit", "entry 55: permit, perhaps", "no entry"
  static std::string headOf(const Destination& one, const Finding& finding) {
    std::string head =
        one.entry ? "entry " + std::to_string(*one.entry) + ": " + finding.treatment : "no entry";
    return head + (one.hit == Hit::kHit ? "" : ", perhaps");
  }

  // "3 entries with permit take some of these packets, 1 perhaps"
  std::string summaryOf(const Destinations& found) const {
    std::size_t sure = 0, open = 0;
    for (const Destination& one : found.found) {
      if (one.entry) ++(one.hit == Hit::kHit ? sure : open);
    }
    const std::string verb = options_.touching ? "match" : "take";
    const std::string with = then_ == nullptr ? "" : " with " + then_->toText();
    const auto entries = [&](std::size_t count) {
      return std::to_string(count) + (count == 1 ? " entry" : " entries") + with;
    };
    const bool all = found.found.size() == 1 && found.found[0].all;
    std::string text;
    if (sure == 0 && open == 0) {
      text = "no entry" + with + ' ' + verb + "s any of these packets";
    } else if (sure == 0) {
      text = entries(open) + " may " + verb + " some of these packets";
    } else {
      text = entries(sure) + ' ' + verb + (sure == 1 ? "s " : " ") + (all ? "all" : "some") +
             " of these packets" + (open == 0 ? "" : ", " + std::to_string(open) + " perhaps");
    }
    return text + (found.complete ? "" : "; what else there is takes too many steps to say");
  }

  const Options& options_;
  const PacketSet& packets_;
  const ActionTest* then_;
  Console& console_;
  Order how_ = Order::kUnspecified;
  Report all_;
  bool is_sure_ = false, is_open_ = false;
};

}  // namespace

Exit runSearch(const Options& options, Console* console) {
  if (!options.entries.empty() && (options.touching || options.then)) {
    console->trouble(Code::kUsage, "", "--entry stands without --touching and --then");
    return kExitTrouble;
  }
  Report faults;
  const std::string text = options.packets.value_or("");
  const auto packets =
      PacketSet::parse(text, &faults, std::max<std::size_t>(options.max_findings, 1));
  if (!packets) {
    tellFaults(kPacketsPlace, std::move(faults), text, console);
    return kExitTrouble;
  }
  std::optional<ActionTest> then;
  if (options.then) {
    then =
        ActionTest::parse(*options.then, &faults, std::max<std::size_t>(options.max_findings, 1));
    if (!then) {
      tellFaults(kThenPlace, std::move(faults), *options.then, console);
      return kExitTrouble;
    }
  }
  Selection selection(options);
  const std::optional<Input> chosen = readChosen(options, &selection, console);
  if (!chosen) return kExitTrouble;
  const Input& input = *chosen;
  Answer answer(options, *packets, then ? &*then : nullptr, console);
  for (const InputGroup& group : input.groups) {
    if (group.group) answer.write(input, group);
  }
  return answer.finish(input);
}

}  // namespace FilterInspectTool
