#include <filter_common/filter_entries.pb.h>
#include <filter_inspect/filter_diff.h>

#include <string>
#include <type_traits>
#include <utility>

#include <filter_inspect/filter_text.h>

#include "catalogue/class_rows.h"
#include "catalogue/name_or_number.h"
#include "forms/policer_text.h"
#include "forms/value_text.h"
#include "report/hex.h"
#include "side_by_side.h"

namespace FiltersInspect {

using namespace FiltersCommon;

namespace {

template <class Value>
std::string pairOf(const char* key, Value value) {
  std::string text(key);
  if constexpr (std::is_enum_v<Value>) return (text += '=') += nameOrNumber(value);
  if constexpr (!std::is_enum_v<Value>) return (text += '=') += std::to_string(value);
}

// Fills a report with differences.
class Differences {
 public:
  explicit Differences(const FiltersGroup& group) : group_(group.getId()) {}

  Report take() { return std::move(report_); }

  void addHeads(const FiltersGroup& a, const FiltersGroup& b) {
    addHead("id", a.getId(), b.getId());
    addHead("priority", a.getPriority(), b.getPriority());
    addHead("stage", a.getStage(), b.getStage());
    addHead("type", a.getType(), b.getType());
  }

  void addEntry(const FiltersEntry* a, const FiltersEntry* b) {
    if (a != nullptr && b != nullptr) {
      if (!(*a == *b)) addParts(*a, *b);
      return;
    }
    entry_ = (a == nullptr ? b : a)->getId();
    Finding& finding = add(a == nullptr ? Code::kEntryAdded : Code::kEntryRemoved, Subject::kEntry,
                           0, a == nullptr ? "" : toText(*a), b == nullptr ? "" : toText(*b));
    finding.message = a == nullptr ? "added: " + shownText(*b) : "removed: " + shownText(*a);
  }
 private:
  void addParts(const FiltersEntry& a, const FiltersEntry& b) {
    entry_ = a.getId();
    const std::size_t found = report_.findings.size();
    a_.Clear();
    b_.Clear();
    a.convertToFiltersEntryPB(&a_);
    b.convertToFiltersEntryPB(&b_);
    if (a.getPriority() != b.getPriority()) {
      addPart(Subject::kEntry, 0, pairOf("priority", a.getPriority()),
              pairOf("priority", b.getPriority()));
    }
    addCoded<filtersMatch_t>(Subject::kMatch, a, a_.matches_(), b, b_.matches_());
    addCoded<filtersAction_t>(Subject::kAction, a, a_.actions_(), b, b_.actions_());
    addCounters(a, b);
    addPolicer(Subject::kPolicer, &a.getPolicer(), a_.policer_(), &b.getPolicer(), b_.policer_());
    addPolicer(Subject::kParent, a.getPolicerParent().get(), a_.policer_parent_(),
               b.getPolicerParent().get(), b_.policer_parent_());
    // operator== says that the entries differ. It may compare more than the parts above. If none of
    // these parts differs, the finding is about the whole entries.
    if (report_.findings.size() == found) addPart(Subject::kEntry, 0, toText(a), toText(b));
  }

  // Compares matches or actions by code.
  template <class Code, class Messages>
  void addCoded(Subject subject, const FiltersEntry& a, const Messages& ofA, const FiltersEntry& b,
                const Messages& ofB) {
    forEachOfBoth(
        ofA, ofB, [](const auto& message) { return message.type_(); },
        [&](const auto* x, const auto* y) {
          const std::uint32_t code = (x == nullptr ? y : x)->type_();
          if (x != nullptr && y != nullptr && rowOf(static_cast<Code>(code))->isSame(a, b)) return;
          addPart(subject, code, x == nullptr ? "" : textOf(*x), y == nullptr ? "" : textOf(*y));
        });
  }

  void addCounters(const FiltersEntry& a, const FiltersEntry& b) {
    const auto text = [](const auto* held) {
      if (held == nullptr) return std::string();
      CounterPB message;
      held->second.Serialize(&message);
      return textOf(message);
    };
    forEachOfBoth(
        a.getCounters(), b.getCounters(), [](const auto& held) { return held.first; },
        [&](const auto* x, const auto* y) {
          if (x != nullptr && y != nullptr && x->second == y->second) return;
          addPart(Subject::kCounter, (x == nullptr ? y : x)->first, text(x), text(y));
        });
  }

  void addPolicer(Subject subject, const policer::Policer* a, const std::string& ofA,
                  const policer::Policer* b, const std::string& ofB) {
    if (a != nullptr && b != nullptr ? *a == *b : a == b) return;
    // An entry without a policer of its own holds the default policer.
    if (subject == Subject::kPolicer && ofA == defaultPolicer()) a = nullptr;
    if (subject == Subject::kPolicer && ofB == defaultPolicer()) b = nullptr;
    const PolicerFacts before = a == nullptr ? PolicerFacts() : factsOf(*a);
    const PolicerFacts after = b == nullptr ? PolicerFacts() : factsOf(*b);
    const std::string name = std::string(nameOf(subject)) + ' ';
    if (a == nullptr) {
      addPart(subject, 0, "", policerText(after)).message =
          name + policerWords(after) + " was added";
    } else if (b == nullptr) {
      addPart(subject, 0, policerText(before), "").message =
          name + policerWords(before) + " was removed";
    } else if (policerText(before) != policerText(after)) {
      addPart(subject, 0, policerText(before), policerText(after)).message =
          name + policerChange(before, after);
    } else {
      addPart(subject, 0, hexOf(ofA), hexOf(ofB));
    }
  }

  static std::string hexOf(const std::string& bytes) {
    std::string text;
    appendHex(bytes, &text);
    return text;
  }

  template <class Value>
  void addHead(const char* key, Value a, Value b) {
    if (a != b) add(Code::kHeadChanged, Subject::kGroup, 0, pairOf(key, a), pairOf(key, b));
  }

  Finding& addPart(Subject subject, std::uint32_t offender, std::string before, std::string after) {
    return add(Code::kEntryChanged, subject, offender, std::move(before), std::move(after));
  }

  Finding& add(Code code, Subject subject, std::uint32_t offender, std::string before,
               std::string after) {
    Finding& finding = report_.findings.emplace_back();
    finding.code = code;
    finding.severity = severityOf(code);
    finding.subject = subject;
    finding.group = group_;
    if (subject != Subject::kGroup) finding.entry = entry_;
    finding.offender = offender;
    finding.message = messageOf(before, after);
    finding.before = std::move(before);
    finding.after = std::move(after);
    return finding;
  }

  static std::string messageOf(const std::string& before, const std::string& after) {
    if (before == after) return "the two are not equal, although their text is: " + before;
    if (before.empty()) return "added: " + after;
    if (after.empty()) return "removed: " + before;
    return before + " became " + after;
  }

  filtersGroupId_t group_;
  filtersEntryId_t entry_ = 0;
  FiltersEntryPB a_, b_;  // the two entries compared
  Report report_;
};

}  // namespace

Report diff(const FiltersGroup& a, const FiltersGroup& b) {
  Differences differences(a);
  differences.addHeads(a, b);
  forEachOfBoth(
      a.getEntriesRef(), b.getEntriesRef(), [](const auto& held) { return held.first; },
      [&](const auto* x, const auto* y) {
        differences.addEntry(x == nullptr ? nullptr : &x->second,
                             y == nullptr ? nullptr : &y->second);
      });
  return differences.take();
}

}  // namespace FiltersInspect
