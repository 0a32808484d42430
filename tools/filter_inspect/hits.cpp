#include <algorithm>
#include <utility>

#include "analysis.h"
#include "capture.h"
#include "input.h"
#include "output.h"
#include "picture.h"
#include "selection.h"
#include "table.h"

namespace FilterInspectTool {
namespace {

using namespace FiltersCommon;
using namespace FiltersInspect;

struct Counted {
  const InputGroup* group;
  HitCounter counter;
};

bool isHit(const HitCounts& hits) { return hits.sure.frames + hits.possible.frames != 0; }

// The summary of the hits of a group: "1000 frames, 980 decided and 20 not".
Finding wholeOf(const Hits& hits) {
  const std::uint64_t open = hits.undecided.frames;
  std::string text = counted(hits.frames, "frame");
  if (open != 0) {
    text += ", " + std::to_string(hits.decided.frames) + " decided and " + std::to_string(open) +
            " not";
  } else if (hits.frames != 0) {
    text += ", all decided";
  }
  return findingOf(Code::kFramesCounted, std::move(text), {hits.decided, hits.undecided});
}

std::optional<Finding> noneOf(const Hits& hits) {
  if (!isHit(hits.none)) return std::nullopt;
  return findingOf(Code::kNoEntryHit,
                   "no entry takes " + countsText(hits.none) + firstText(hits.none), hits.none);
}

Report reportOf(const Hits& hits, const Selection& selection) {
  Report report;
  report.findings.push_back(wholeOf(hits));
  for (const EntryHits& one : hits.entries) {
    if (!selection.has(one.entry)) continue;
    const bool its = isHit(one.hits);
    Finding& finding = report.findings.emplace_back(
        findingOf(its ? Code::kEntryHit : Code::kEntryNotHit,
                  its ? "takes " + countsText(one.hits) + firstText(one.hits) : "no frame hits it",
                  one.hits));
    finding.subject = Subject::kEntry;
    finding.entry = one.entry;
  }
  if (const auto none = noneOf(hits)) report.findings.push_back(*none);
  return report;
}

// A table of the entries: their hits, matches and actions.
std::string tableOf(const InputGroup& group, const Hits& hits, const Selection& selection,
                    std::size_t width) {
  Entries entries;
  Column sure{"sure", Column::Holds::kKey, {}}, possible{"perhaps", Column::Holds::kKey, {}},
      first{"first", Column::Holds::kTreatment, {}};
  const auto& all = group.group->getEntriesRef();
  for (const EntryHits& one : hits.entries) {
    if (!selection.has(one.entry)) continue;
    entries.push_back(&all.at(one.entry));
    sure.cells.push_back(std::to_string(one.hits.sure.frames));
    possible.cells.push_back(std::to_string(one.hits.possible.frames));
    first.cells.push_back(isHit(one.hits) ? placeText(firstOf(one.hits)) : "");
  }
  if (entries.empty()) return "no entries\n";
  return drawn(entries, width, {sure, possible, first});
}

// "no frame hits entries 11 and 20"
std::string unhitText(const Hits& hits, const Selection& selection) {
  constexpr std::size_t kMost = 12;
  std::vector<std::string> ids;
  std::size_t count = 0;
  for (const EntryHits& one : hits.entries) {
    if (!selection.has(one.entry) || isHit(one.hits)) continue;
    if (count++ < kMost) ids.push_back(std::to_string(one.entry));
  }
  if (count == 0) return {};
  std::string text = count == 1 ? "no frame hits entry " : "no frame hits entries ";
  for (std::size_t i = 0; i < ids.size(); ++i) {
    text += (i == 0 ? "" : i + 1 == count ? " and " : ", ") + ids[i];
  }
  return text + (count > kMost ? " and " + std::to_string(count - kMost) + " more" : "");
}

void show(const Input& input, const std::vector<Counted>& all, const Selection& selection,
          const Options& options, Console* console) {
  for (const Counted& one : all) {
    const Hits& hits = one.counter.hits();
    Finding whole = wholeOf(hits);
    input.locate(*one.group, &whole);
    console->writeLine(printable(placeOf(input.file, whole)) + ": " + whole.message + " (" +
                       restsOn(orderOf(options)) + ")");
    console->write(tableOf(*one.group, hits, selection, console->width()));
    if (const auto none = noneOf(hits)) console->writeLine(none->message);
    if (const std::string text = unhitText(hits, selection); !text.empty())
      console->writeLine(text);
    console->writeLine("");
  }
}

}  // namespace

Exit runHits(const Options& options, Console* console) {
  if (options.picture == "-") {
    console->trouble(Code::kUsage, "--svg", "standard output takes the table, not the picture");
    return kExitTrouble;
  }
  if (!readsInputOnce(options, console)) return kExitTrouble;
  const std::optional<Packet> assumed = assumedOf(options, console);
  if (!assumed) return kExitTrouble;
  Selection selection(options);
  const std::optional<Input> chosen = readChosen(options, &selection, console);
  if (!chosen) return kExitTrouble;
  const Input& input = *chosen;
  std::vector<Counted> all;
  for (const InputGroup& group : input.groups) {
    if (!group.group) continue;
    all.push_back({&group, HitCounter(*group.group, orderOf(options), *assumed)});
  }
  FrameCounts faults = {};
  const auto frames = readCapture(options, console, [&](const SeenFrame& frame) {
    for (Counted& one : all) one.counter.count(frame.packet, frame.fault, frame.time);
  });
  if (!frames) return kExitTrouble;
  if (!all.empty()) faults = all.front().counter.hits().faults;

  ReportInput whole = aboutCapture(*options.capture, *frames, faults);
  bool isDecided = true;
  Picture picture(orderOf(options));
  Report report;
  for (const Counted& one : all) {
    const Hits& hits = one.counter.hits();
    isDecided = isDecided && hits.undecided.frames == 0;
    if (options.picture) picture.add(one.group->place, *one.group->group, hits);
    if (!options.json) continue;
    Report its = reportOf(hits, selection);
    input.locate(*one.group, &its);
    report.append(std::move(its));
  }
  if (options.json) {
    console->write({{input.file, input.groups.size(), std::move(report)}, std::move(whole)},
                   orderOf(options));
  } else {
    show(input, all, selection, options, console);
    console->write(whole.file, whole.report);
  }
  if (options.picture) writeTo(*options.picture, picture.take(), console);
  return isDecided ? kExitFine : kExitFound;
}

}  // namespace FilterInspectTool
