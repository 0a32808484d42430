#include "console.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <sstream>
#include <utility>

namespace FilterInspectTool {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::size_t kWrittenAtOnce = 64 << 10;

const char* codeOf(Color color) {
  switch (color) {
    case Color::kNone:
      return "";
    case Color::kRemoved:
    case Color::kError:
      return "\33[31m";
    case Color::kAdded:
      return "\33[32m";
    case Color::kWarning:
      return "\33[33m";
    case Color::kNote:
      return "\33[36m";
  }
  return "";
}

Color colorOf(Severity severity) {
  switch (severity) {
    case Severity::kNote:
      return Color::kNote;
    case Severity::kWarning:
      return Color::kWarning;
    case Severity::kError:
      return Color::kError;
  }
  return Color::kNone;
}

// Returns two lines: the line of the source that the finding is about, and a line with a mark under
// the wrong word. A long line is cut. The text is empty if the source has no such line.
std::string excerptOf(std::string_view source, std::size_t first_line, const Finding& finding) {
  constexpr std::size_t kWidth = 76;
  std::size_t line = 0, column = 0;
  const char* const end = finding.path.data() + finding.path.size();
  const auto colon = std::from_chars(finding.path.data(), end, line);
  if (colon.ptr == end || std::from_chars(colon.ptr + 1, end, column).ptr != end) return {};
  for (; line > first_line && !source.empty(); --line) {
    source.remove_prefix(std::min(source.find('\n'), source.size() - 1) + 1);
  }
  source = withoutMark(source);
  source = source.substr(0, source.find_first_of("\r\n"));
  if (column == 0 || column > source.size() + 1) return {};
  // If a finding is about the grammar, its position is that of the wrong word, or of the quote
  // before that word. The position of any other finding is that of its entry, and the wrong word is
  // somewhere behind it.
  const bool isAtWord = nameOf(finding.code).substr(0, 5) == "text-";
  std::size_t at = column - 1;
  if (!isAtWord) at = finding.word.empty() ? source.npos : source.find(' ' + finding.word, at);
  if (at == source.npos) return {};
  if (!isAtWord || source.substr(at, finding.word.size() + 2) == '"' + finding.word + '"') ++at;
  const std::size_t begin = at < kWidth - 20 ? 0 : at - kWidth / 2;
  std::string part(source.substr(begin, kWidth));
  if (begin != 0) part.replace(0, 3, "...");
  if (begin + kWidth < source.size()) part.replace(kWidth - 3, 3, "...");
  std::replace(part.begin(), part.end(), '\t', ' ');
  std::string mark;
  for (std::size_t i = begin; i < at; ++i) {
    const bool isBegun = (static_cast<unsigned char>(source[i]) & 0xc0) == 0x80;
    if (!isBegun) mark += ' ';  // each character of UTF-8 once
  }
  mark += '^';
  const std::size_t end_of_part = begin + part.size();
  const std::size_t end_of_word = std::min(at + finding.word.size(), end_of_part);
  if (end_of_word > at + 1) mark.append(end_of_word - at - 1, '~');
  return "  " + printable(part) + "\n  " + mark + '\n';
}

// The text that the signal handler writes. It is made before the signal comes, because a signal
// handler may call hardly any functions.
char progressLine[256];
volatile std::sig_atomic_t progressShown = 0;
bool progressStarted = false;

void printProgress(int) {
  const int error = errno;
  if (::write(STDERR_FILENO, progressLine, std::strlen(progressLine)) > 0) progressShown = 1;
  errno = error;
}

}  // namespace

std::string printable(std::string text) {
  for (std::size_t i = 0; i < text.size(); ++i) {
    const auto byte = [&](std::size_t at) {
      return at < text.size() ? static_cast<unsigned char>(text[at]) : 0U;
    };
    const auto follows = [&](std::size_t at) { return (byte(at) & 0xc0) == 0x80; };
    // The bytes of one character in UTF-8 (RFC 3629). The characters from 80 to 9f control
    // terminals.
    std::size_t length = byte(i) < 0x80 ? 1 : byte(i) < 0xe0 ? 2 : byte(i) < 0xf0 ? 3 : 4;
    bool isShown = byte(i) >= ' ' && byte(i) != 0x7f && byte(i) < 0xf8;
    if (length > 1)
      isShown = isShown && byte(i) >= 0xc2 && !(byte(i) == 0xc2 && byte(i + 1) < 0xa0);
    for (std::size_t next = 1; next < length; ++next) isShown = isShown && follows(i + next);
    if (!isShown) {
      text[i] = '?';
      length = 1;
    }
    i += length - 1;
  }
  return text;
}

int writeAll(int stream, std::string_view text) {
  while (!text.empty()) {
    const ssize_t written = ::write(stream, text.data(), text.size());
    if (written >= 0) {
      text.remove_prefix(static_cast<std::size_t>(written));
    } else if (errno != EINTR) {
      return errno;
    }
  }
  return 0;
}

std::string counted(std::uint64_t number, std::string_view what) {
  std::string text = std::to_string(number) + ' ';
  if (number == 1) return text.append(what);
  const bool toIes = what.back() == 'y';
  return text.append(what, 0, what.size() - (toIes ? 1 : 0)) + (toIes ? "ies" : "s");
}

Finding findingOf(Code code, std::string message) {
  Finding finding{};
  finding.code = code;
  finding.severity = severityOf(code);
  finding.message = std::move(message);
  return finding;
}

std::string placeOf(const std::string& file, const Finding& finding) {
  if (!finding.bytes && !finding.path.empty()) return file + ':' + finding.path;
  if (!finding.group_number) return file;
  return file + ": group " + std::to_string(*finding.group_number);
}

std::string leftOutText(const Report& report) {
  return "left out: " + FiltersInspect::countsText(report.left_out_by_severity) +
         "; --max-findings=N shows more";
}

// --- Results -------------------------------------------------------------------------------------

Console::Console(const Options* options)
    : options_(*options), shares_terminal_(::isatty(STDOUT_FILENO) != 0) {}

void Console::write(std::string_view text) {
  if (options_.quiet) return;
  if (shares_terminal_) hideProgress();
  results_ += text;
  if (results_.size() >= kWrittenAtOnce) flush();
}

void Console::writeLine(std::string_view line, Color color) { write(painted(line, color) + '\n'); }

std::string Console::painted(std::string_view text, Color color) const {
  return painted(STDOUT_FILENO, text, color);
}

void Console::write(const std::string& file, const Report& report) {
  findings_ += report.findings.size();
  for (const Finding& finding : report.findings) write(linesOf(STDOUT_FILENO, file, finding));
}

void Console::write(const std::vector<ReportInput>& inputs) {
  write(toJson(inputs, options_.command));
}

void Console::write(const std::vector<ReportInput>& inputs, FiltersInspect::Order order) {
  write(toJson(inputs, order, options_.command));
}

std::size_t Console::width() const {
  if (options_.width) return *options_.width;
  struct winsize size = {};
  if (::ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col != 0) return size.ws_col;
  std::size_t columns = 0;
  if (const char* text = std::getenv("COLUMNS")) {
    std::from_chars(text, text + std::strlen(text), columns);
  }
  return columns != 0 ? columns : 80;
}

void Console::flush() {
  const int error = closed_ ? 0 : writeAll(STDOUT_FILENO, results_);
  results_.clear();
  if (error == 0) return;
  closed_ = true;
  systemTrouble(Code::kOutputFailed, "standard output", error);
}

// --- Errors --------------------------------------------------------------------------------------

void Console::trouble(Code code, const std::string& file, const std::string& message) {
  failed_ = true;
  if (options_.json) return keep(file, {{findingOf(code, message)}});
  say("filter-inspect: " + printable(file.empty() ? message : file + ": " + message) + '\n');
}

void Console::trouble(const std::string& file, const Finding& finding, std::string_view source,
                      std::size_t first_line) {
  failed_ = true;
  if (options_.json) return keep(file, {{finding}});
  say(linesOf(STDERR_FILENO, file, finding) +
      (showsSource(STDERR_FILENO) ? excerptOf(source, first_line, finding) : ""));
}

void Console::systemTrouble(Code code, const std::string& file, int error) {
  trouble(code, file, std::strerror(error));
}

void Console::aside(const std::string& file, const Report& report) {
  if (options_.quiet) return;
  if (options_.json) return keep(file, report);
  for (const Finding& finding : report.findings) say(linesOf(STDERR_FILENO, file, finding));
  if (report.left_out != 0) say(printable(file) + ": " + leftOutText(report) + '\n');
}

void Console::hint(const std::string& line) {
  if (!options_.json && !options_.quiet) say("filter-inspect: " + printable(line) + '\n');
}

void Console::refuse(const std::string& file) {
  if (!options_.json) say(printable(file) + ": refused; nothing was read\n");
}

void Console::showProgress(const std::string& file) {
  if (::isatty(STDERR_FILENO) == 0) return;
  const std::string line = "reading " + printable(file).substr(0, 60) + " ...";
  line.copy(progressLine, sizeof progressLine - 1);
  progressLine[line.size()] = '\0';
  struct sigaction action = {};
  action.sa_handler = printProgress;
  action.sa_flags = SA_RESTART;
  ::sigaction(SIGALRM, &action, nullptr);
  progressStarted = true;
  ::alarm(1);
}

std::function<void(std::size_t, std::size_t)> Console::progressOf(std::string_view doing,
                                                                  std::string_view place) {
  if (::isatty(STDERR_FILENO) == 0) return {};
  const std::string line =
      "\r" + std::string(doing) + ' ' + printable(std::string(place)).substr(0, 60) + " ... ";
  return [line, next = Clock::now() + std::chrono::seconds(1)](std::size_t done,
                                                               std::size_t all) mutable {
    if (Clock::now() < next) return;
    next = Clock::now() + std::chrono::milliseconds(200);
    progressStarted = true;
    progressShown = 1;
    writeAll(STDERR_FILENO, line + std::to_string(100 * done / all) + " %");
  };
}

void Console::hideProgress() {
  if (!std::exchange(progressStarted, false)) return;
  ::alarm(0);
  if (progressShown != 0) writeAll(STDERR_FILENO, "\r\33[K");
  progressShown = 0;
}

void Console::note(const std::string& line) {
  if (options_.verbose) hint(line);
}

Exit Console::finish(Exit exit) {
  hideProgress();
  flush();
  const std::chrono::duration<double> time = Clock::now() - begin_;
  char seconds[32];
  std::snprintf(seconds, sizeof seconds, "%.3f s", time.count());
  note((findings_ == 0 ? "" : counted(findings_, "finding") + ", ") + seconds);
  if (!troubles_.empty()) {
    const std::string& command = options_.command;
    say(toJson(troubles_, command.empty() ? "usage" : command));
  }
  return failed_ ? kExitTrouble : exit;
}

std::string Console::painted(int stream, std::string_view text, Color color) const {
  std::string result(text);
  if (color == Color::kNone || options_.color == "never") return result;
  if (options_.color == "auto") {
    const char* noColor = std::getenv("NO_COLOR");
    const char* terminal = std::getenv("TERM");
    const bool isDumb = terminal == nullptr || std::string_view(terminal) == "dumb";
    if ((noColor != nullptr && *noColor != '\0') || isDumb || ::isatty(stream) == 0) return result;
  }
  return codeOf(color) + result + "\33[0m";
}

bool Console::showsSource(int stream) const {
  return options_.color == "always" || ::isatty(stream) != 0;
}

std::string Console::linesOf(int stream, const std::string& file, Finding finding) const {
  const std::string place = printable(placeOf(file, finding));
  if (!finding.bytes) finding.path.clear();  // the place says it
  for (std::string* text :
       {&finding.path, &finding.before, &finding.after, &finding.witness, &finding.message}) {
    *text = printable(std::move(*text));
  }
  std::ostringstream os;
  os << finding;
  const std::string_view severity = nameOf(finding.severity);
  return place + ": " + painted(stream, severity, colorOf(finding.severity)) +
         os.str().substr(severity.size());
}

void Console::keep(const std::string& file, Report report) {
  if (report.empty()) return;
  if (troubles_.empty() || troubles_.back().file != file) troubles_.push_back({file, {}, {}});
  troubles_.back().report.append(std::move(report));
}

void Console::say(const std::string& text) {
  hideProgress();
  flush();  // on a terminal, output and trouble keep their order
  // If writing to standard error fails, the program cannot report that.
  static_cast<void>(writeAll(STDERR_FILENO, text));
}

}  // namespace FilterInspectTool
