#include <algorithm>

#include "analysis.h"
#include "input.h"
#include "input_file.h"

namespace FilterInspectTool {
namespace {

using namespace FiltersCommon;
using namespace FiltersInspect;

constexpr char kPacketPlace[] = "--packet";

// Reads lines from a file one at a time, as they arrive.
class Lines {
 public:
  Lines(const std::string& file, std::size_t longest) : file_(file), longest_(longest) {}

  // Returns false at the end, after an error, and for a line that is too long. Calls `wait` before
  // it may have to wait.
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
  Packets(const Options& options, const Input& input, Console* console)
      : options_(options), input_(input), console_(*console) {
    for (const InputGroup& group : input.groups) {
      if (group.group) prepared_.push_back({&group, Tracer(*group.group, orderOf(options))});
    }
  }

  // `place` is the name of the packet's source; `line` counts from 1.
  void trace(std::string_view text, const std::string& place, std::size_t line) {
    Report faults;
    const std::optional<Packet> packet = Packet::parse(text, &faults, room_);
    room_ -= faults.findings.size();
    for (Finding& fault : std::exchange(faults.findings, {})) {
      fault.path = std::to_string(line) + fault.path.substr(fault.path.find(':'));
      console_.trouble(place, fault);
    }
    untold_.append(std::move(faults));
    if (!packet) return;
    for (const Prepared& one : prepared_) {
      show(one.tracer.trace(*packet), *packet, *one.group, place + ':' + std::to_string(line));
    }
  }

  // `place` is the source of all packets.
  Exit finish(const std::string& place) {
    console_.aside(place, untold_);
    if (options_.json)
      console_.write({{input_.file, input_.groups.size(), report_.take()}}, orderOf(options_));
    return is_decided_ ? kExitFine : kExitFound;
  }
 private:
  struct Prepared {
    const InputGroup* group;
    Tracer tracer;
  };

  bool isAlone() const { return !options_.packets; }

  void show(Trace traced, const Packet& packet, const InputGroup& group, const std::string& place) {
    if (!isAlone()) traced.entries.clear();
    const bool isDecided = traced.outcome != Hit::kUndecided;
    is_decided_ = is_decided_ && isDecided;
    const std::string outcome = toText(traced);
    Finding whole = findingOf(isDecided ? Code::kTraced : Code::kTraceUndecided, outcome);
    whole.entry = traced.entry;
    input_.locate(group, &whole);
    if (options_.json) {
      whole.others = traced.candidates;
      whole.after = nameOf(traced.outcome);
      whole.witness = packet.toText();
      if (!isAlone()) whole.path = place;
      return keep(std::move(whole), traced, group);
    }
    console_.writeLine((isAlone() ? "" : printable(place) + ": ") +
                           printable(placeOf(input_.file, whole)) + ": " + outcome,
                       isDecided ? Color::kNone : Color::kWarning);
    for (const Traced& one : traced.entries) {
      console_.writeLine("  " + std::to_string(one.entry) + ' ' + toText(one));
    }
  }

  // Adds a finding about the packet. If it is the only packet, also adds a finding about each
  // entry.
  void keep(Finding&& whole, const Trace& traced, const InputGroup& group) {
    add(std::move(whole));
    for (const Traced& one : traced.entries) {
      Finding finding = findingOf(Code::kTracedEntry, toText(one));
      finding.subject = Subject::kEntry;
      finding.entry = one.entry;
      finding.after = nameOf(one.hit);
      input_.locate(group, &finding);
      add(std::move(finding));
    }
  }

  void add(Finding&& finding) {
    Report one;
    one.findings.push_back(std::move(finding));
    report_.append(std::move(one));
  }

  const Options& options_;
  const Input& input_;
  Console& console_;
  std::vector<Prepared> prepared_;
  FiltersInspect::LimitedReport report_{options_.max_findings};
  // Even if no findings are wanted, one finding is kept, to say what cannot be read.
  std::size_t room_ = std::max(options_.max_findings, std::size_t{1});
  Report untold_;
  bool is_decided_ = true;
};

// Blank lines and lines that begin with '#' hold no packet.
bool isPacket(std::string_view line) {
  const std::size_t first = line.find_first_not_of(" \t\r");
  return first != line.npos && line[first] != '#';
}

void traceLines(const Options& options, Packets* packets, Console* console) {
  const std::string& file = *options.packets;
  Lines lines(file, options.max_bytes);
  std::string line;
  console->showProgress(file);
  // A person who types packets sees each result at once.
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
    console->trouble(Code::kUsage, "", "either --packet or --packets is wanted");
    return kExitTrouble;
  }
  if (options.packets == "-" && options.files[0] == "-") {
    console->trouble(Code::kUsage, "-", "standard input is read once");
    return kExitTrouble;
  }
  const std::vector<Input> inputs = readInputs(options, console);
  if (inputs.empty()) return kExitTrouble;
  tellLosses(inputs.front(), console);
  Packets packets(options, inputs.front(), console);
  if (options.packet) {
    packets.trace(*options.packet, kPacketPlace, 1);
    return packets.finish(kPacketPlace);
  }
  traceLines(options, &packets, console);
  return packets.finish(*options.packets);
}

}  // namespace FilterInspectTool
