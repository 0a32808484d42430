#include <algorithm>
#include <map>
#include <set>
#include <utility>
#include <vector>

#include "analysis.h"
#include "file_report.h"
#include "input.h"
#include "output.h"
#include "policy_file.h"
#include "selection.h"
#include "xml.h"

namespace FilterInspectTool {
namespace {

using namespace FiltersCommon;
using namespace FiltersInspect;

// The words and the colour of each verdict, in the order of the summary.
struct Verdict {
  Code code;
  const char* name;
  const char *one, *many;  // its words in the summary
  Color color;
};
constexpr Verdict kVerdicts[] = {
    {Code::kPolicyHolds, "holds", "holds", "hold", Color::kAdded},
    {Code::kPolicyFails, "fails", "fails", "fail", Color::kError},
    {Code::kPolicyOpen, "not decided", "is not decided", "are not decided", Color::kWarning},
};
const Verdict& verdictOf(const Finding& finding) {
  return *std::find_if(std::begin(kVerdicts), std::end(kVerdicts),
                       [&](const Verdict& one) { return one.code == finding.code; });
}

// The XML document for build servers, with a test suite for each group and a test case for each
// promise.
class TestReport {
 public:
  explicit TestReport(std::string policy) : policy_(std::move(policy)) {}

  void add(const std::string& place, const PolicyGroup& group, const Report& report) {
    std::size_t failures = 0;
    std::string cases;
    for (std::size_t i = 0; i < report.findings.size(); ++i) {
      const Finding& finding = report.findings[i];
      const Promise& promise = group.promises[i];
      const bool holds = finding.code == Code::kPolicyHolds;
      const std::string comment = promise.comment.empty() ? "" : "  # " + promise.comment;
      cases += "    <testcase classname=\"" + inXml(policy_) + "\" name=\"line " +
               std::to_string(promise.line) + ": " + inXml(promise.text + comment) + "\" file=\"" +
               inXml(policy_) + "\" line=\"" + std::to_string(promise.line) + '"';
      if (holds) {
        cases += "/>\n";
        continue;
      }
      ++failures;
      const std::string what = inXml(std::string(verdictOf(finding).name) + ": " + finding.message);
      cases += ">\n      <failure type=\"" + std::string(nameOf(finding.code)) + "\" message=\"" +
               what + "\">" + what + "</failure>\n    </testcase>\n";
    }
    suites_ += "  <testsuite name=\"" + inXml(place) + "\"" +
               counts(report.findings.size(), failures) + ">\n" + cases + "  </testsuite>\n";
    tests_ += report.findings.size();
    failures_ += failures;
  }

  std::string take() const {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<testsuites name=\"" + inXml(policy_) +
           "\"" + counts(tests_, failures_) + ">\n" + suites_ + "</testsuites>\n";
  }
 private:
  static std::string counts(std::size_t tests, std::size_t failures) {
    return " tests=\"" + std::to_string(tests) + "\" failures=\"" + std::to_string(failures) +
           "\" errors=\"0\" skipped=\"0\"";
  }

  const std::string policy_;
  std::string suites_;
  std::size_t tests_ = 0, failures_ = 0;
};

class Expectations {
 public:
  Expectations(const Options& options, const Policy& policy, Console* console)
      : options_(options), policy_(policy), console_(*console), tests_(options.policy) {}

  // Checks the promises about the groups of a file. If the policy names a group that the file
  // lacks, checks nothing and returns false.
  bool check(const Input& input) {
    std::map<filtersGroupId_t, std::size_t> counts;
    for (const InputGroup& group : input.groups) {
      if (group.group) ++counts[group.group->getId()];
    }
    if (tellMissing(input, counts)) return false;
    ReportInput document = {input.file, input.groups.size(), {}};
    for (const InputGroup& group : input.groups) {
      if (!group.group) continue;
      const PolicyGroup* its = policy_.find(group.group->getId());
      if (its == nullptr || its->promises.empty()) {
        without_.push_back(group.group->getId());
        continue;
      }
      Report report =
          checkPolicy(*group.group, policy_, analysisOf(options_, group.place, &console_));
      console_.hideProgress();
      orders_.insert(its->order);
      tests_.add(group.place, *its, report);
      for (Finding& finding : report.findings) {
        ++verdicts_[&verdictOf(finding)];
        const std::string place = options_.policy + ':' + std::to_string(lineOf(finding));
        if (!options_.json) show(finding, place, counts[*finding.group] > 1 ? group.place : "");
        input.locate(group, &finding);
        finding.path = place;
        document.report.findings.push_back(std::move(finding));
      }
    }
    documents_.push_back(std::move(document));
    return true;
  }

  Exit finish() {
    if (options_.junit) writeTo(*options_.junit, tests_.take(), &console_);
    if (options_.json && orders_.size() == 1) {
      console_.write(documents_, *orders_.begin());
    } else if (options_.json) {
      console_.write(documents_);
    } else {
      console_.writeLine(summary());
    }
    const bool areKept = count(Code::kPolicyFails) == 0 && count(Code::kPolicyOpen) == 0;
    return areKept ? kExitFine : kExitFound;
  }
 private:
  static std::size_t lineOf(const Finding& finding) { return std::stoul(finding.path); }

  bool tellMissing(const Input& input, const std::map<filtersGroupId_t, std::size_t>& counts) {
    bool isMissing = false;
    for (const PolicyGroup& group : policy_.groups()) {
      if (counts.count(group.group) != 0 || !isAskedFor(group.group, options_)) continue;
      Finding missing =
          findingOf(Code::kUsage, input.file + " has no group " + std::to_string(group.group));
      missing.path = std::to_string(group.line) + ":1";
      console_.trouble(options_.policy, missing);
      isMissing = true;
    }
    return isMissing;
  }

  // Writes the line of a verdict. `group` says which group of several with the same id is meant,
  // and is empty if only one group has the id.
  void show(const Finding& finding, const std::string& place, const std::string& group) {
    const Verdict& verdict = verdictOf(finding);
    const bool holds = finding.code == Code::kPolicyHolds;
    console_.writeLine(printable(place) + ": " + console_.painted(verdict.name, verdict.color) +
                       ": " + (group.empty() ? "" : printable(group) + ": ") +
                       printable(holds ? finding.word : finding.message) + " [" +
                       std::string(nameOf(finding.code)) + ']');
  }

  std::size_t count(Code code) const {
    for (const auto& [verdict, number] : verdicts_) {
      if (verdict->code == code) return number;
    }
    return 0;
  }

  // "policy.txt: 3 promises: 1 holds, 2 fail; no promises about group 4"
  std::string summary() const {
    std::size_t all = 0;
    std::string each;
    for (const Verdict& verdict : kVerdicts) {
      const std::size_t number = count(verdict.code);
      if (number == 0) continue;
      all += number;
      each += (each.empty() ? ": " : ", ") + std::to_string(number) + ' ' +
              (number == 1 ? verdict.one : verdict.many);
    }
    std::string text = printable(options_.policy) + ": " + counted(all, "promise") + each;
    for (std::size_t i = 0; i < without_.size(); ++i) {
      const bool isFirst = i == 0, isLast = i + 1 == without_.size();
      text += isFirst  ? isLast ? "; no promise about group " : "; no promise about groups "
              : isLast ? " and "
                       : ", ";
      text += std::to_string(without_[i]);
    }
    return text + " (" + assumptionNumbers() + ')';
  }

  const Options& options_;
  const Policy& policy_;
  Console& console_;
  TestReport tests_;
  std::vector<ReportInput> documents_;
  std::map<const Verdict*, std::size_t> verdicts_;
  std::set<Order> orders_;                 // of the groups that were checked
  std::vector<filtersGroupId_t> without_;  // groups without promises
};

}  // namespace

Exit runExpect(const Options& options, Console* console) {
  if (options.junit == "-") {
    console->trouble(Code::kUsage, "--junit", "standard output takes the verdicts, not the XML");
    return kExitTrouble;
  }
  const std::optional<Policy> policy = readPolicy(options, console);
  if (!policy) return kExitTrouble;
  Expectations expectations(options, *policy, console);
  Selection selection(options);
  bool isWhole = false;
  forEachInput(options, {}, console, [&](Input& input) {
    selection.choose(&input);
    tellLosses(input, console);
    isWhole = selection.isThere(console) && expectations.check(input);
  });
  return isWhole ? expectations.finish() : kExitTrouble;
}

}  // namespace FilterInspectTool
