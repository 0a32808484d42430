#ifndef FILTER_INSPECT_FILTER_REPORT_H_
#define FILTER_INSPECT_FILTER_REPORT_H_

// Every function of this library answers with a report: a list of findings, in the order in which
// the filter_common library itself would check. An empty report means that nothing was found.
//
// Codes, severities and the typed fields are stable; `message` is for people and may be reworded.
// The layout of these structures may change with every minor release, and programs must be rebuilt
// then. Programs that cannot be rebuilt use filter_inspect_c.h, which is stable.

#include <array>
#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <filter_common/filter_types.h>

namespace FiltersInspect {

// The levels are those of compilers and of SARIF. An error means that something is refused or
// unreadable. A warning means that something is lost or never takes effect. A note is worth
// knowing, but nothing is lost.
enum class Severity : std::uint8_t { kNote, kWarning, kError };

// The reason for a finding. Each row of findings.def makes one code; docs/findings.md explains
// each.
enum class Code : std::uint16_t {
#define FINDING(code, name, severity) code,
#include <filter_inspect/findings.def>
};

// The kinds of object that a finding can be about.
enum class Subject : std::uint8_t { kGroup, kEntry, kMatch, kAction, kPolicer, kParent, kCounter };

// The names are "match-not-admitted", "warning" and "entry", for example. Each name ends with a
// zero byte.
FILTERS_API std::string_view nameOf(Code);
FILTERS_API std::string_view nameOf(Severity);
FILTERS_API std::string_view nameOf(Subject);

FILTERS_API Severity severityOf(Code);

// A part of the bytes that were read. Offsets count from the first byte of the group, or of the
// entry if an entry alone was read.
struct ByteRange {
  std::size_t offset = 0;
  std::size_t length = 0;
};

// Frames of captured traffic: their count, the number of the first frame (counted from 1), and its
// time in UTC (RFC 3339). If the first frame is not known, its number is 0 and its time is empty.
struct SeenFrames {
  std::uint64_t frames = 0, first = 0;
  std::string time;
};

struct Finding {
  Code code;
  Severity severity;
  // The result code that the library returns. It is FILTERS_OK if the library reports no failure,
  // for example because it loses something silently.
  FiltersCommon::filtersErr_t result = FiltersCommon::FILTERS_OK;
  Subject subject = Subject::kGroup;
  std::optional<FiltersCommon::filtersGroupId_t> group;
  // The number of the group in its file, counted from 1. The readers of text and JSON set it.
  // Programs that read files of bytes set it too. The other functions do not know the number.
  std::optional<std::size_t> group_number;
  std::optional<FiltersCommon::filtersEntryId_t> entry;
  // The code of the match or action, or the id of the counter. If a stage, a type or a policer's
  // stage is refused, `offender` is that stage or type.
  std::uint32_t offender = 0;
  std::vector<std::uint32_t>
      admitted;                       // the codes that would have been admitted instead, ascending
  std::vector<std::uint32_t> others;  // ids of other entries, codes of other matches or actions
  // The position. In bytes it is the path of a field, for example
  // "entries_[3].matches_[1].vlan_id_[2]". In text and JSON it is the line and the column, for
  // example "12:7".
  std::string path;
  std::optional<ByteRange> bytes;
  // Values as text: the received value, and the value that is kept. If there is an example packet
  // (`witness`): what this entry does with that packet, and what another entry does with it.
  std::string before, after;
  std::string witness;  // a packet that shows what the finding says
  std::string message;  // one English sentence without its full stop
  // For a step of a plan: its kind, for example "insert" or "set-priority", and what it inserts or
  // sets.
  std::string step, value;
  // For a traced packet: what is done with it, and the unknown fields on which the answer depends.
  std::string treatment;
  std::vector<std::string> lacking;
  // For captured traffic: the frames for which the finding is certainly true, and the frames for
  // which it may be true.
  std::optional<SeenFrames> sure, possible;
  // The wrong word in text or JSON, as it was written at `path`; a long word is cut. If `path` is
  // the line where an entry begins, `word` is the name of the match or action.
  std::string word;
};

// The number of findings for each severity.
using SeverityCounts = std::array<std::size_t, 3>;

// For example "1 error, 101 notes"; severities without findings are not named.
FILTERS_API std::string countsText(const SeverityCounts& counts);

struct Report {
  std::vector<Finding> findings;
  // Findings beyond the caller's limit are counted, not kept. The most severe findings are kept,
  // and among equally severe findings the earlier ones.
  std::size_t left_out = 0;
  SeverityCounts left_out_by_severity = {};

  bool empty() const { return findings.empty() && left_out == 0; }
  // The highest severity of all findings, kept or left out; kNote if there is none.
  FILTERS_API Severity worst() const;
  // Adds to the number of findings that were left out.
  void leaveOut(Severity severity, std::size_t number = 1) {
    left_out += number;
    left_out_by_severity[static_cast<std::size_t>(severity)] += number;
  }
  // Appends the findings of another report, and adds the number of findings that it left out.
  FILTERS_API void append(Report&& other);
  // Keeps at most `most` findings: the most severe ones, in their order. Leaves out the others.
  FILTERS_API void keep(std::size_t most);
};

// A report with a limit of findings. While it grows it holds up to twice as many findings as the
// limit, so that the cost of adding a finding does not depend on the limit.
class LimitedReport {
 public:
  explicit LimitedReport(std::size_t most) : most_(most) {}

  // Returns a new finding to fill in, which is valid until the next call. Returns null if the
  // report is full of findings that are at least as severe. The new finding is then counted as left
  // out.
  FILTERS_API Finding* add(Code code);
  // Adds the findings of another report, and the number of findings that it left out.
  FILTERS_API void append(Report&& other);
  bool empty() const { return report_.empty(); }
  FILTERS_API Report take();
 private:
  bool hasRoom(Severity severity);
  Finding& addNew(Severity severity);

  std::size_t most_;
  SeverityCounts added_ = {};
  Report report_;
};

// Writes one line for each finding: "warning: entry 30: match vrf_id: ... [match-not-admitted]". If
// the finding has an example packet (`witness`), the next lines show the packet, and what this
// entry and other entries do with it. A report ends with the number of findings left out.
FILTERS_API std::ostream& operator<<(std::ostream& os, const Finding& finding);
FILTERS_API std::ostream& operator<<(std::ostream& os, const Report& report);

// Writes JSON that follows docs/schema/filter-report-1.schema.json, with a newline at the end. The
// bytes are the same on every machine. `command` names the command that the report answers. The
// schema accepts "check", "diff", "plan", "analyse", "trace", "search", "hits", "capabilities",
// "show", "convert", "names", "expect" and "usage", and refuses a document with any other command.
// `file` is the name of the input.
FILTERS_API std::string toJson(const Report& report, std::string_view command = "check",
                               std::string_view file = "");

// One of several inputs: its name, the number of its groups, and the findings about it.
struct ReportInput {
  std::string file;
  std::optional<std::size_t> groups;  // the document leaves it out if unset
  Report report;
  std::size_t accepted = 0;  // findings that a policy accepts; the document leaves out 0
};
FILTERS_API std::string toJson(const std::vector<ReportInput>& inputs, std::string_view command);

}  // namespace FiltersInspect

#endif  // FILTER_INSPECT_FILTER_REPORT_H_
