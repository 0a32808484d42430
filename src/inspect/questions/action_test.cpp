#include "action_test.h"

#include <algorithm>

#include <filter_common/filter_entries.pb.h>

#include "analysis/packet_words.h"
#include "catalogue/in_quotes.h"
#include "forms/value_text.h"
#include "shared/arena.h"

namespace FiltersInspect {
namespace {

using namespace FiltersCommon;

// The actions of an entry as text.
struct EntryActions {
  explicit EntryActions(const FiltersEntry& entry) {
    MessageArena arena;
    auto& message = *arena.make<FiltersEntryPB>();
    entry.convertToFiltersEntryPB(&message);
    for (const ActionPB& action : message.actions_()) {
      all.emplace_back(action.type_(), textOf(action));
    }
  }
  template <class Action>
  bool has(const Action& wanted) const {
    return std::any_of(all.begin(), all.end(), [&](const auto& one) {
      return wanted.any_value ? one.first == static_cast<std::uint32_t>(wanted.code)
                              : one.second == wanted.text;
    });
  }
  std::vector<std::pair<std::uint32_t, std::string>> all;
};

std::string noSuchAction(std::string_view name) {
  return "there is no action " + inQuotes(name) +
         suggestion(name, kNamesOf<filtersAction_t>.all(), "filter-inspect names actions");
}

}  // namespace

std::optional<ActionWords::Fault> ActionWords::add(std::string_view word, ActionTest* test) {
  const std::size_t equals = std::min(word.find('='), word.size());
  const std::string_view name = word.substr(0, equals);
  const auto code = fromName<filtersAction_t>(name);
  if (!code) return Fault{Code::kTextValue, name, noSuchAction(name)};
  const FormRow& row = *formOf(*code);
  if (equals == word.size()) {
    test->actions_.push_back({*code, std::string(name), true});
    return std::nullopt;
  }
  if (row.form == ValueForm::kFlag) {
    return Fault{Code::kTextSyntax, word.substr(equals), std::string(name) + " takes no value"};
  }
  MessageArena arena;
  auto* action = arena.make<ActionPB>();
  action->set_type_(static_cast<std::uint32_t>(*code));
  if (const auto fault = readValue(row, word.substr(equals + 1), action)) {
    return Fault{Code::kTextValue, fault->word, fault->why};
  }
  test->actions_.push_back({*code, textOf(*action), false});
  return std::nullopt;
}

std::optional<ActionTest> ActionTest::parse(std::string_view text, Report* report,
                                            std::size_t max_findings) {
  ActionTest test;
  LimitedReport faults(max_findings);
  const char* const start = text.data();
  const auto fail = [&](const ActionWords::Fault& fault) {
    Finding* finding = faults.add(fault.code);
    if (finding == nullptr) return;
    finding->path = "1:" + std::to_string(fault.piece.data() - start + 1);
    finding->before = fault.piece;
    finding->word = fault.piece;
    finding->message = fault.why;
  };
  while (true) {
    text.remove_prefix(std::min(text.find_first_not_of(kBlanks), text.size()));
    if (text.empty()) break;
    const std::string_view word = text.substr(0, text.find_first_of(kBlanks));
    text.remove_prefix(word.size());
    if (const auto fault = ActionWords::add(word, &test)) fail(*fault);
  }
  if (test.actions_.empty() && faults.empty()) {
    fail({Code::kTextSyntax, text, "an action is missing, as in `permit`"});
  }
  if (faults.empty()) return test;
  if (report != nullptr) report->append(faults.take());
  return std::nullopt;
}

bool ActionTest::hasAll(const FiltersEntry& entry) const {
  const EntryActions its(entry);
  return std::all_of(actions_.begin(), actions_.end(),
                     [&](const Action& one) { return its.has(one); });
}

bool ActionTest::hasAny(const FiltersEntry& entry) const {
  const EntryActions its(entry);
  return std::any_of(actions_.begin(), actions_.end(),
                     [&](const Action& one) { return its.has(one); });
}

std::string ActionTest::toText() const {
  std::string text;
  for (const Action& one : actions_) text += (text.empty() ? "" : " ") + one.text;
  return text;
}

}  // namespace FiltersInspect
