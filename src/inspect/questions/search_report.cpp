#include <algorithm>

#include <filter_inspect/filter_questions.h>

#include "analysis/entry_findings.h"
#include "analysis/treatment.h"

namespace FiltersInspect {
namespace {

using namespace FiltersCommon;

constexpr char kIncomplete[] = "what else there is takes too many steps to say";

Report start(const FiltersGroup& group, bool complete) {
  Report report;
  if (complete) return report;
  EntryFindings all(group.getId(), 1);
  if (Finding* finding = all.add(Code::kNotDecided, std::nullopt)) finding->message = kIncomplete;
  return all.take();
}

Finding& add(const FiltersGroup& group, Code code, std::optional<filtersEntryId_t> entry, Hit hit,
             Report* report) {
  Finding finding{};
  finding.code = code;
  finding.severity = severityOf(code);
  finding.subject = entry ? Subject::kEntry : Subject::kGroup;
  finding.group = group.getId();
  finding.entry = entry;
  finding.after = nameOf(hit);
  if (entry) finding.treatment = treatmentText(group.getEntriesRef().at(*entry));
  report->findings.push_back(std::move(finding));
  return report->findings.back();
}

bool isAmong(const std::vector<PacketSet>& sets, const std::string& text) {
  return std::any_of(sets.begin(), sets.end(),
                     [&](const PacketSet& set) { return set.toText() == text; });
}

}  // namespace

Report searchReport(const FiltersGroup& group, const Destinations& found) {
  Report undecided = start(group, found.complete), report;
  for (const Destination& one : found.found) {
    const bool is_sure = one.hit == Hit::kHit;
    Finding& finding =
        add(group, is_sure ? Code::kPacketsGo : Code::kPacketsMayGo, one.entry, one.hit, &report);
    finding.witness = one.witness.toText();
    finding.message = one.entry ? one.all ? "it takes every packet" : "it takes some packets"
                      : one.all ? "no entry takes any packet"
                                : "no entry takes some packets";
    if (!is_sure) {
      finding.message =
          one.entry ? "it may take some packets" : "perhaps no entry takes some packets";
      finding.message += ": " + one.reason;
    }
  }
  report.append(std::move(undecided));
  return report;
}

Report touchingReport(const FiltersGroup& group, const Destinations& found) {
  Report undecided = start(group, found.complete), report;
  for (const Destination& one : found.found) {
    Finding& finding = add(group, Code::kPacketsMatch, one.entry, one.hit, &report);
    finding.witness = one.witness.toText();
    finding.message = one.all                ? "it matches every packet"
                      : one.hit == Hit::kHit ? "it matches some packets"
                                             : "it may match some packets: " + one.reason;
  }
  report.append(std::move(undecided));
  return report;
}

Report remainsReport(const FiltersGroup& group, filtersEntryId_t entry, const Remains& left) {
  Report undecided = start(group, left.complete), report;
  Finding& first = add(group, Code::kPacketsLeft, entry, left.hit, &report);
  first.message = left.hit == Hit::kMiss  ? "nothing is left of it"
                  : left.hit == Hit::kHit ? "packets are left for it"
                                          : "packets may be left for it: " + left.reason;
  if (left.hit != Hit::kMiss) first.witness = left.witness.toText();
  const auto addSets = [&](const std::vector<PacketSet>& sets, Hit hit, const char* what,
                           const std::vector<PacketSet>* but) {
    for (const PacketSet& set : sets) {
      const std::string text = set.toText();
      if (but != nullptr && isAmong(*but, text)) continue;
      Finding& finding = add(group, Code::kPacketsLeft, entry, hit, &report);
      finding.value = text;
      finding.message = what + (text.empty() ? "every packet" : text);
    }
  };
  // If one list would be too long, the other list alone would look like the whole answer.
  if (!left.possibly.empty() && (left.hit != Hit::kHit || !left.surely.empty())) {
    addSets(left.surely, Hit::kHit, "it takes ", nullptr);
    addSets(left.possibly, Hit::kUndecided, "it may take ", &left.surely);
  }
  report.append(std::move(undecided));
  return report;
}

}  // namespace FiltersInspect
