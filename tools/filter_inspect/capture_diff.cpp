#include "capture_diff.h"

#include <algorithm>

#include "analysis.h"
#include "capture.h"

namespace FilterInspectTool {

using namespace FiltersCommon;
using namespace FiltersInspect;

namespace {

// A row: "entry 20: 12 frames surely go to entry 30 instead: permit becomes deny; the first is ..."
Finding findingAbout(const TreatedDifferently& row) {
  const auto nameOfEntry = [](filtersEntryId_t id) { return "entry " + std::to_string(id); };
  std::string text = countsText(row.hits);
  if (!row.a) {
    text += ", which no entry took, go to " + nameOfEntry(*row.b) + " (" + row.after + ')';
  } else if (!row.b) {
    text += " go to no entry instead (it was " + row.before + ')';
  } else {
    text += (row.a == row.b ? "" : " go to " + nameOfEntry(*row.b) + " instead") + ": " +
            row.before + " becomes " + row.after;
  }
  const bool isSure = row.hits.sure.frames != 0;
  Finding finding = findingOf(isSure ? Code::kTrafficDiffers : Code::kTrafficOpen,
                              text + firstText(row.hits), row.hits);
  finding.entry = row.a;
  if (row.a) finding.subject = Subject::kEntry;
  if (row.b) finding.others = {*row.b};
  finding.before = row.before;
  finding.after = row.after;
  return finding;
}

}  // namespace

bool CaptureDiff::isReady() {
  if (!options_.capture) {
    if (options_.assumed.empty()) return true;
    console_.trouble(Code::kUsage, "--assume", "it is about the frames of --capture");
    return false;
  }
  if (options_.order.empty()) {
    console_.trouble(Code::kUsage, "--capture", "an order is needed: --order");
    return false;
  }
  std::optional<Packet> assumed = assumedOf(options_, &console_);
  if (assumed) assumed_ = std::move(*assumed);
  return assumed.has_value();
}

void CaptureDiff::add(const InputGroup& a, const InputGroup& b) {
  if (!options_.capture) return;
  all_.push_back({&a, TrafficComparison(*a.group, *b.group, orderOf(options_), assumed_)});
}

std::vector<ReportInput> CaptureDiff::run(const Selection& selection) {
  if (!options_.capture) return {};
  const auto frames = readCapture(options_, &console_, [this](const SeenFrame& frame) {
    for (Compared& one : all_) one.comparison.count(frame.packet, frame.fault, frame.time);
  });
  if (!frames) return {};
  FrameCounts faults = {};
  Report report;
  for (const Compared& one : all_) {
    const TrafficDifferences& differences = one.comparison.differences();
    faults = differences.faults;
    Report its;
    for (const TreatedDifferently& row : differences.pairs) {
      its.findings.push_back(findingAbout(row));
    }
    selection.keep(&its);
    const HitCounts& differing = differences.differing;
    const bool isAny = differing.sure.frames + differing.possible.frames != 0;
    its.findings.push_back(findingOf(
        Code::kFramesCounted,
        isAny ? countsText(differing) + " of " + std::to_string(*frames) + " treated differently"
              : counted(*frames, "frame") + ", none treated differently",
        differing));
    inputs_[0].locate(*one.group, &its);
    report.append(std::move(its));
  }
  return {{inputs_[0].file, inputs_[0].groups.size(), std::move(report)},
          aboutCapture(*options_.capture, *frames, faults)};
}

void CaptureDiff::print(const std::vector<ReportInput>& found) {
  for (const ReportInput& one : found) console_.write(one.file, one.report);
}

}  // namespace FilterInspectTool
