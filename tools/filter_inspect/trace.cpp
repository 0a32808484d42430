#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <sstream>

#include "analysis.h"
#include "input.h"

namespace FilterInspectTool {
namespace {

using namespace FiltersCommon;
using namespace FiltersInspect;

constexpr char kPacketPlace[] = "--packet";

// Takes lines from a file one at a time, as they come.
class Lines {
 public:
  Lines(const std::string& file, std::size_t longest)
      : handle_(file == "-" ? STDIN_FILENO : ::open(file.c_str(), O_RDONLY | O_CLOEXEC)),
        error_(handle_ < 0 ? errno : 0),
        is_own_(file != "-"),
        longest_(longest) {}
  Lines(const Lines&) = delete;
  Lines& operator=(const Lines&) = delete;
  ~Lines() {
    if (is_own_ && handle_ >= 0) ::close(handle_);
  }

  // False at the end, at what the system refuses, and at a line that is too long. `wait` is called
  // before there is something to wait for.
  template <class Wait>
  bool next(std::string* line, const Wait& wait) {
    std::size_t end = held_.find('\n', begin_);
    while (end == held_.npos && !ended_ && error_ == 0 && !isTooLong()) {
      held_.erase(0, begin_);
      begin_ = 0;
      const std::size_t looked = held_.size();
      wait();
      read();
      end = held_.find('\n', looked);
    }
    if (error_ != 0 || (end == held_.npos && (isTooLong() || begin_ == held_.size()))) return false;
    end = std::min(end, held_.size());
    line->assign(held_, begin_, end - begin_);
    begin_ = std::min(end + 1, held_.size());
    return true;
  }

  int error() const { return error_; }
  bool isTooLong() const { return held_.size() - begin_ > longest_; }
 private:
  void read() {
    char bytes[16 << 10];
    const ssize_t count = ::read(handle_, bytes, sizeof bytes);
    if (count < 0 && errno != EINTR) error_ = errno;
    if (count == 0) ended_ = true;
    if (count > 0) held_.append(bytes, static_cast<std::size_t>(count));
  }

  const int handle_;
  int error_;
  const bool is_own_;
  const std::size_t longest_;
  std::string held_;
  std::size_t begin_ = 0;  // of the next line
  bool ended_ = false;
};

// "undecided: entry 10 or 60, or 1000", and behind it a line for each entry.
struct TraceText {
  explicit TraceText(const Trace& trace) {
    std::ostringstream os;
    os << trace;
    lines = os.str();
    const std::size_t end = lines.find('\n');
    outcome = lines.substr(0, end);
    lines.erase(0, end + 1);
  }
  std::string outcome, lines;
};

// Takes packets through the groups of a file.
class Packets {
 public:
  Packets(const Options& options, const Input& input, Console* console)
      : options_(options), input_(input), console_(*console) {
    for (const InputGroup& group : input.groups) {
      if (group.group) prepared_.push_back({&group, Tracer(*group.group, orderOf(options))});
    }
  }

  // `place` is where the packet stands, `line` counts from 1.
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

  // `place` is where all packets stand.
  Exit finish(const std::string& place) {
    console_.aside(place, untold_);
    report_.keep(options_.maxFindings);
    if (options_.json)
      console_.write({{input_.file, input_.groups.size(), std::move(report_)}}, orderOf(options_));
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
    const TraceText text(traced);
    Finding whole = findingOf(isDecided ? Code::kTraced : Code::kTraceUndecided, text.outcome);
    whole.entry = traced.entry;
    input_.locate(group, &whole);
    if (options_.json) {
      whole.others = traced.candidates;
      whole.after = nameOf(traced.outcome);
      whole.witness = packet.toText();
      if (!isAlone()) whole.path = place;
      return keep(std::move(whole), traced, group, text);
    }
    console_.writeLine((isAlone() ? "" : printable(place) + ": ") +
                           printable(placeOf(input_.file, whole)) + ": " + text.outcome,
                       isDecided ? Color::kNone : Color::kWarning);
    if (isAlone()) console_.write(text.lines);
  }

  // A finding of the packet, and where it is the only one also of each entry.
  void keep(Finding&& whole, const Trace& traced, const InputGroup& group, const TraceText& text) {
    add(std::move(whole));
    if (!isAlone()) return;
    std::istringstream lines(text.lines);
    std::string line;
    for (const Traced& one : traced.entries) {
      std::getline(lines, line);
      const std::string_view outcome = nameOf(one.hit);
      Finding finding = findingOf(Code::kTracedEntry, line.substr(line.find(outcome, 2)));
      finding.subject = Subject::kEntry;
      finding.entry = one.entry;
      finding.after = outcome;
      input_.locate(group, &finding);
      add(std::move(finding));
    }
  }

  void add(Finding&& finding) {
    report_.findings.push_back(std::move(finding));
    if (report_.findings.size() / 2 >= options_.maxFindings) report_.keep(options_.maxFindings);
  }

  const Options& options_;
  const Input& input_;
  Console& console_;
  std::vector<Prepared> prepared_;
  Report report_;
  // Of what cannot be read something is told, however few findings are wanted.
  std::size_t room_ = std::max(options_.maxFindings, std::size_t{1});
  Report untold_;
  bool is_decided_ = true;
};

// Blank lines and those that begin with '#' are none.
bool isPacket(std::string_view line) {
  const std::size_t first = line.find_first_not_of(" \t\r");
  return first != line.npos && line[first] != '#';
}

void traceLines(const Options& options, Packets* packets, Console* console) {
  const std::string& file = *options.packets;
  Lines lines(file, options.maxBytes);
  std::string line;
  console->showProgress(file);
  // Whoever writes the packets one by one sees what became of each.
  const auto flush = [console] { console->flush(); };
  for (std::size_t number = 1; !console->isClosed() && lines.next(&line, flush); ++number) {
    if (isPacket(line)) packets->trace(line, file, number);
  }
  if (lines.error() != 0) {
    console->systemTrouble(Code::kFileUnreadable, file.empty() ? "''" : file, lines.error());
  } else if (lines.isTooLong()) {
    console->trouble(Code::kLimitExceeded, file,
                     "a line is longer than " + counted(options.maxBytes, "byte") +
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
