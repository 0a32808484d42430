#include <algorithm>
#include <map>

#include "analysis.h"
#include "input.h"
#include "input_file.h"
#include "selection.h"

namespace FilterInspectTool {
namespace {

using namespace FiltersCommon;
using namespace FiltersInspect;

constexpr char kPacketPlace[] = "--packet";

// Reads lines from a file one at a time, as they arrive.
class Lines {
 public:
  Lines(const std::string& file, std::size_t longest) : file_(file), longest_(longest) {}

  // Returns false at the end of the file, after an error, and if a line is too long. Calls `wait`
  // before each read that may block.
  template <class Wait>
  bool next(std::string* line, const Wait& wait) {
    std::size_t end = held_.find('\n', begin_);
    while (end == held_.npos && !ended_ && error() == 0 && !isTooLong()) {
      held_.erase(0, begin_);
      begin_ = 0;
      const std::size_t looked = held_.size();
      wait();
      read();
      end = held_.find('\n', looked);
    }
    if (error() != 0 || (end == held_.npos && (isTooLong() || begin_ == held_.size())))
      return false;
    end = std::min(end, held_.size());
    line->assign(held_, begin_, end - begin_);
    begin_ = std::min(end + 1, held_.size());
    return true;
  }

  int error() const { return file_.error(); }
  bool isTooLong() const { return held_.size() - begin_ > longest_; }
 private:
  void read() {
    char bytes[16 << 10];
    const std::size_t count = file_.read(bytes, sizeof bytes);
    ended_ = count == 0;
    held_.append(bytes, count);
  }

  InputFile file_;
  const std::size_t longest_;
  std::string held_;
  std::size_t begin_ = 0;  // where the next line begins
  bool ended_ = false;
};

// Traces packets through the groups of a file.
class Packets {
 public:
  Packets(const Options& options, const Input& input, const Selection& selection, Console* console)
      : options_(options), input_(input), console_(*console), selection_(selection) {
    for (const InputGroup& group : input.groups) {
      if (group.group) prepared_.push_back({&group, Tracer(*group.group, orderOf(options)), {}});
    }
  }

  // `place` is the name of the packet's source. `line` is the number of its line, counted from 1.
  void trace(std::string_view text, const std::string& place, std::size_t line) {
    Report faults;
    const std::optional<Packet> packet = Packet::parse(text, &faults, room_);
    room_ -= faults.findings.size();
    for (Finding& fault : std::exchange(faults.findings, {})) {
      fault.path = std::to_string(line) + fault.path.substr(fault.path.find(':'));
      console_.trouble(place, fault, text, line);
    }
    untold_.append(std::move(faults));
    if (!packet) return;
    const std::string itsPlace = place + ':' + std::to_string(line);
    Report all;
    for (Prepared& one : prepared_) {
      const Trace traced = hasLines() ? one.tracer.trace(*packet) : one.outcomeOf(*packet);
      is_decided_ = is_decided_ && traced.outcome != Hit::kUndecided;
      Finding whole = findingAbout(traced, *packet, *one.group);
      if (options_.json) {
        keep(traced, *one.group, std::move(whole), &all);
      } else {
        show(traced, whole, itsPlace);
      }
    }
    if (options_.json) write(std::move(all), itsPlace);
  }

  // Says how many faults of packets were not reported because of the limit. `place` is the source
  // of all packets.
  Exit finish(const std::string& place) {
    console_.aside(place, untold_);
    return is_decided_ ? kExitFine : kExitFound;
  }
 private:
  struct Prepared {
    // The trace of a packet. If the packet is decided, the trace has no list of entries, because
    // nothing prints the list.
    Trace outcomeOf(const Packet& packet) {
      const Decision decision = tracer.decide(packet);
      if (decision.outcome == Hit::kUndecided) return tracer.trace(packet);
      Trace traced;
      traced.outcome = decision.outcome;
      traced.entry = decision.entry;
      if (!decision.entry) return traced;
      const auto [known, isNew] = treatments.try_emplace(*decision.entry);
      if (isNew) known->second = tracer.trace(packet).treatment;
      traced.treatment = known->second;
      return traced;
    }

    const InputGroup* group;
    Tracer tracer;
    std::map<filtersEntryId_t, std::string> treatments;  // by the ids of entries that took a packet
  };

  bool isAlone() const { return !options_.packets; }
  // The lines about entries are printed only if they are few: for a single packet, or for entries
  // that --entry names.
  bool hasLines() const { return isAlone() || !options_.entries.empty(); }
  bool hasLine(const Traced& one) const { return hasLines() && selection_.has(one.entry); }

  // Writes the answer about a packet and a group.
  void show(const Trace& traced, const Finding& whole, const std::string& place) {
    console_.writeLine((isAlone() ? "" : printable(place) + ": ") +
                           printable(placeOf(input_.file, whole)) + ": " + whole.message,
                       traced.outcome == Hit::kUndecided ? Color::kWarning : Color::kNone);
    for (const Traced& one : traced.entries) {
      if (!hasLine(one)) continue;
      console_.writeLine("  " + std::to_string(one.entry) + ' ' + sentenceOf(traced, one));
    }
  }

  static bool isBeaten(const Trace& traced, const Traced& one) {
    return traced.entry && traced.entry != one.entry && one.hit == Hit::kHit;
  }

  // The sentence about one entry, for example "hit, but 10 comes first".
  static std::string sentenceOf(const Trace& traced, const Traced& one) {
    std::string text = toText(one);
    if (const std::string then = treatmentOf(traced, one); !then.empty()) text += " (" + then + ')';
    if (isBeaten(traced, one)) text += ", but " + std::to_string(*traced.entry) + " comes first";
    return text;
  }

  Finding findingAbout(const Trace& traced, const Packet& packet, const InputGroup& group) const {
    const bool isDecided = traced.outcome != Hit::kUndecided;
    Finding whole = findingOf(isDecided ? Code::kTraced : Code::kTraceUndecided, toText(traced));
    whole.entry = traced.entry;
    whole.others = traced.candidates;
    whole.after = nameOf(traced.outcome);
    whole.witness = packet.toText();
    whole.treatment = traced.treatment;
    if (!isDecided) whole.lacking = lackingOf(traced);
    input_.locate(group, &whole);
    return whole;
  }

  // Says what an entry that may take the packet does with it. The text is empty if all such entries
  // do the same, because the answer already says what they do.
  static std::string treatmentOf(const Trace& traced, const Traced& one) {
    const auto at = std::find(traced.candidates.begin(), traced.candidates.end(), one.entry);
    if (at == traced.candidates.end() || !traced.treatment.empty()) return {};
    return traced.treatments[static_cast<std::size_t>(at - traced.candidates.begin())];
  }

  // The unknown fields on which it depends which entry takes the packet.
  static std::vector<std::string> lackingOf(const Trace& traced) {
    std::vector<std::string> all;
    auto candidate = traced.candidates.begin();  // in the order of the entries
    for (const Traced& one : traced.entries) {
      if (candidate == traced.candidates.end() || one.entry != *candidate) continue;
      ++candidate;
      for (const std::string& field : one.lacking) {
        if (std::find(all.begin(), all.end(), field) == all.end()) all.push_back(field);
      }
    }
    return all;
  }

  // Writes the JSON document about a packet. The document of a packet from a file is one line.
  void write(Report&& all, const std::string& place) {
    if (isAlone()) {
      return console_.write({{input_.file, input_.groups.size(), std::move(all)}},
                            orderOf(options_));
    }
    for (Finding& finding : all.findings) finding.path = place;
    console_.write(toJsonLine({{input_.file, input_.groups.size(), std::move(all)}},
                              orderOf(options_), options_.command));
  }

  // Adds a finding about the packet, and a finding about each entry for which hasLine() is true.
  void keep(const Trace& traced, const InputGroup& group, Finding&& whole, Report* all) const {
    all->findings.push_back(std::move(whole));
    for (const Traced& one : traced.entries) {
      if (!hasLine(one)) continue;
      Finding& finding =
          all->findings.emplace_back(findingOf(Code::kTracedEntry, sentenceOf(traced, one)));
      if (isBeaten(traced, one)) finding.others = {*traced.entry};
      finding.subject = Subject::kEntry;
      finding.entry = one.entry;
      finding.after = nameOf(one.hit);
      finding.lacking = one.lacking;
      finding.treatment = treatmentOf(traced, one);
      input_.locate(group, &finding);
    }
  }

  const Options& options_;
  const Input& input_;
  Console& console_;
  const Selection& selection_;
  std::vector<Prepared> prepared_;
  // Keeps one finding even if --max-findings is 0, to say why a packet cannot be read.
  std::size_t room_ = std::max(options_.max_findings, std::size_t{1});
  Report untold_;
  bool is_decided_ = true;
};

// False for a blank line, and for a line that begins with '#'.
bool isPacket(std::string_view line) {
  const std::size_t first = line.find_first_not_of(" \t\r");
  return first != line.npos && line[first] != '#';
}

void traceLines(const Options& options, Packets* packets, Console* console) {
  const std::string& file = *options.packets;
  Lines lines(file, options.max_bytes);
  std::string line;
  console->showProgress(file);
  // Each result is written at once, because the user may type packets one by one.
  const auto flush = [console] { console->flush(); };
  for (std::size_t number = 1; !console->isClosed() && lines.next(&line, flush); ++number) {
    if (isPacket(line)) packets->trace(line, file, number);
  }
  if (lines.error() != 0) {
    console->systemTrouble(Code::kFileUnreadable, file.empty() ? "''" : file, lines.error());
  } else if (lines.isTooLong()) {
    console->trouble(Code::kLimitExceeded, file,
                     "a line is longer than " + counted(options.max_bytes, "byte") +
                         "; --max-bytes=N raises the limit");
  }
}

}  // namespace

Exit runTrace(const Options& options, Console* console) {
  if (options.packet.has_value() == options.packets.has_value()) {
    console->trouble(Code::kUsage, "", "give either --packet or --packets");
    return kExitTrouble;
  }
  if (options.packets == "-" && options.files[0] == "-") {
    console->trouble(Code::kUsage, "-", "standard input is read once");
    return kExitTrouble;
  }
  Selection selection(options);
  const std::optional<Input> input = readChosen(options, &selection, console);
  if (!input) return kExitTrouble;
  Packets packets(options, *input, selection, console);
  if (options.packet) {
    packets.trace(*options.packet, kPacketPlace, 1);
    return packets.finish(kPacketPlace);
  }
  traceLines(options, &packets, console);
  return packets.finish(*options.packets);
}

}  // namespace FilterInspectTool
