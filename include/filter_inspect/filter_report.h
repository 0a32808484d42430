#ifndef FILTER_INSPECT_FILTER_REPORT_H_
#define FILTER_INSPECT_FILTER_REPORT_H_

// What this library answers with: a report is a list of findings, in the order in which the
// filter_common library itself would have met them. An empty report means: nothing to say.
//
// Codes, severities and the typed fields are stable; `message` is for people and may be reworded.
// The layout of these structures may change with every minor release: programs are built anew then.
// Who cannot promise that uses filter_inspect_c.h, which is stable.

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

// The levels of compilers and of SARIF. Error: refused, or unreadable. Warning: something is lost
// or never takes effect. Note: worth knowing, nothing is lost.
enum class Severity : std::uint8_t { kNote, kWarning, kError };

// Why: the rows of findings.def. docs/findings.md has a section each.
enum class Code : std::uint16_t {
#define FINDING(code, name, severity) code,
#include <filter_inspect/findings.def>
};

// What a finding is about.
enum class Subject : std::uint8_t { kGroup, kEntry, kMatch, kAction, kPolicer, kParent, kCounter };

// "match-not-admitted"; "warning"; "entry". Each is followed by a zero.
FILTERS_API std::string_view nameOf(Code);
FILTERS_API std::string_view nameOf(Severity);
FILTERS_API std::string_view nameOf(Subject);

FILTERS_API Severity severityOf(Code);

// A part of the bytes that were read, counted from the first byte of the group (of the entry, where
// an entry alone was read).
struct ByteRange {
  std::size_t offset = 0;
  std::size_t length = 0;
};

struct Finding {
  Code code;
  Severity severity;
  // What the library returns for this; FILTERS_OK where it returns nothing (silent loss, analysis).
  FiltersCommon::filtersErr_t result = FiltersCommon::FILTERS_OK;
  Subject subject = Subject::kGroup;
  std::optional<FiltersCommon::filtersGroupId_t> group;
  // Which group of its file it is, counted from 1: set by whoever reads files, not by this library.
  std::optional<std::size_t> group_number;
  std::optional<FiltersCommon::filtersEntryId_t> entry;
  // Code of the match or action, id of the counter; of a refusal what is refused: the stage, the
  // type, the policer's stage.
  std::uint32_t offender = 0;
  std::vector<std::uint32_t>
      admitted;                       // the codes that would have been admitted instead, ascending
  std::vector<std::uint32_t> others;  // ids of other entries, codes of other matches or actions
  // "entries_[3].matches_[1].vlan_id_[2]" where `bytes` are told; line and column in text and JSON,
  // "12:7".
  std::string path;
  std::optional<ByteRange> bytes;
  // Values as text: what came, what is kept. Beside a witness: what the entry does with packets,
  // and what is done with them by others.
  std::string before, after;
  std::string witness;  // a packet that shows it
  std::string message;  // one English sentence without its full stop
};

// How many findings there are of each severity.
using SeverityCounts = std::array<std::size_t, 3>;

// "1 error, 3 warnings, 101 notes", without those that there are none of.
FILTERS_API std::string countsText(const SeverityCounts& counts);

struct Report {
  std::vector<Finding> findings;
  // Findings beyond the caller's limit are counted, not kept: all of them, and by severity. Those
  // kept are the most severe, of equal ones the first.
  std::size_t left_out = 0;
  SeverityCounts left_out_by_severity = {};

  bool empty() const { return findings.empty() && left_out == 0; }
  // The highest severity of those kept and those left out; kNote when empty.
  FILTERS_API Severity worst() const;
  // Counts findings that are not kept.
  void leaveOut(Severity severity, std::size_t number = 1) {
    left_out += number;
    left_out_by_severity[static_cast<std::size_t>(severity)] += number;
  }
  // Puts the findings of another report behind these ones, and counts what it left out.
  FILTERS_API void append(Report&& other);
  // Leaves out all but the `most` most severe findings. Those stay in their order.
  FILTERS_API void keep(std::size_t most);
};

// A report of at most so many findings. While it grows it holds up to twice as many, so that each
// costs the same however many there are.
class LimitedReport {
 public:
  explicit LimitedReport(std::size_t most) : most_(most) {}

  // A finding to fill in, valid until the next one. Null if more severe findings, or earlier ones
  // of the same severity, take all places: then it has been counted, and nothing needs to be made.
  FILTERS_API Finding* add(Code code);
  // Adds the findings of another report, and counts what it left out.
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

// One line a finding: "warning: entry 30: match vrf_id: ... [match-not-admitted]". Below it, two
// blanks further in, the witness where there is one, and what the entry and others do with it. Of a
// report also how many were left out.
FILTERS_API std::ostream& operator<<(std::ostream& os, const Finding& finding);
FILTERS_API std::ostream& operator<<(std::ostream& os, const Report& report);

// As JSON by docs/schema/filter-report-1.schema.json, the same bytes on every machine, with a
// newline at the end. `command` is what the report answers; the schema admits "check", "diff",
// "plan", "analyse", "trace", "capabilities", "show", "convert", "names" and "usage", and any other
// text makes a document that it refuses. `file` is what the one input is called.
FILTERS_API std::string toJson(const Report& report, std::string_view command = "check",
                               std::string_view file = "");

// The same of several inputs: what each is called, how many groups it holds, what is said of them.
struct ReportInput {
  std::string file;
  std::optional<std::size_t> groups;  // left out of the document where there is none
  Report report;
};
FILTERS_API std::string toJson(const std::vector<ReportInput>& inputs, std::string_view command);

}  // namespace FiltersInspect

#endif  // FILTER_INSPECT_FILTER_REPORT_H_
