#include <filter_common/filter_entries.pb.h>
#include <filter_inspect/filter_head.h>
#include <filter_inspect/filter_text.h>

#include <algorithm>

#include "interface_ids.h"
#include "policer_text.h"
#include "report/hex.h"
#include "shared/arena.h"
#include "value_text.h"

namespace FiltersInspect {
namespace {

using namespace FiltersCommon;

void appendNumberFor(std::string_view key, std::uint32_t value, std::string* out) {
  *out += key;
  appendNumber(value, out);
}

// Appends the names of a row's interfaces, after the name of the match or action.
void appendPorts(std::string_view name, const FormRow& row, const AnyMessage& message,
                 std::string* out) {
  const auto append = [&](std::uint32_t limid) { *out += ' ' + interfaceName(limid); };
  if (row.form == ValueForm::kLimids) {
    const NumberList& limids = numbersIn(message, row.fields[0]);
    if (limids.empty()) return;
    (*out += ", ") += name;
    std::for_each(limids.begin(), limids.end(), append);
  } else if (row.form == ValueForm::kLimid || row.form == ValueForm::kMplsPorts) {
    (*out += ", ") += name;
    append(limidFromField(row, numberIn(message, row.fields[0])));
    if (row.fields[1]) append(limidFromField(row, numberIn(message, row.fields[1])));
  }
}

// Writes matches or actions, and the names of their interfaces into the comment.
template <class Code, class Messages>
void appendAll(const char* keyword, const Messages& messages, std::string* out,
               std::string* comment) {
  if (messages.empty()) return;
  *out += keyword;
  for (const auto& message : messages) {
    const auto code = static_cast<Code>(message.type_());
    const FormRow& row = *formOf(code);
    *out += ' ';
    *out += nameOf(code);
    appendValue(row, message, out);
    appendPorts(nameOf(code), row, message, comment);
  }
}

// The reader of a line: people, or the library, which must get the same entry back.
enum class For { kReading, kShowing };

// Writes a policer by its values if they describe it completely. Otherwise writes its bytes, and
// puts its values into the comment.
void appendPolicer(For use, Subject subject, const policer::Policer& policer,
                   std::string_view bytes, std::string* out, std::string* comment) {
  *out += subject == Subject::kParent ? " parent " : " police ";
  const PolicerFacts facts = factsOf(policer);
  if (use == For::kShowing || sayAllOf(bytes, facts)) {
    *out += policerText(facts);
    return;
  }
  if (bytes.empty()) *out += '-';  // the keyword needs a value
  appendHex(bytes, out);
  ((*comment += ", ") += nameOf(subject)) += ' ';
  *comment += policerWords(facts);
}

void appendEntry(const FiltersEntry& entry, For use, FiltersEntryPB* message, std::string* out) {
  message->Clear();
  entry.convertToFiltersEntryPB(message);
  std::string comment;
  appendNumberFor("entry ", message->id_(), out);
  appendNumberFor(" priority=", message->priority_(), out);
  appendAll<filtersMatch_t>(" if", message->matches_(), out, &comment);
  appendAll<filtersAction_t>(" then", message->actions_(), out, &comment);
  if (!message->counters_().empty()) *out += " count";
  for (const CounterPB& counter : message->counters_()) {
    *out += ' ';
    appendCounter(counter, out);
  }
  if (message->policer_() != defaultPolicer()) {
    appendPolicer(use, Subject::kPolicer, entry.getPolicer(), message->policer_(), out, &comment);
  }
  if (const auto parent = entry.getPolicerParent()) {
    appendPolicer(use, Subject::kParent, *parent, message->policer_parent_(), out, &comment);
  }
  if (!comment.empty()) (*out += "  #").append(comment, 1);
}

std::string firstLine() {
  std::string text = "filter-groups ";
  appendNumber(kTextVersion, &text);
  return text += '\n';
}

// Appends this many groups.
std::string textOfGroups(const FiltersGroup* groups, std::size_t count, std::string text) {
  MessageArena arena;
  auto& message = *arena.make<FiltersEntryPB>();  // used again for each entry
  for (const FiltersGroup* group = groups; group != groups + count; ++group) {
    text += toText(headOf(*group));
    text += '\n';
    for (const auto& [id, entry] : group->getEntriesRef()) {
      appendEntry(entry, For::kReading, &message, &text);
      text += '\n';
    }
  }
  return text;
}

}  // namespace

std::string toText(const std::vector<FiltersGroup>& groups) {
  return textOfGroups(groups.data(), groups.size(), firstLine());
}

std::string toText(const FiltersGroup& group) { return textOfGroups(&group, 1, firstLine()); }

std::string groupLines(const FiltersGroup& group) { return textOfGroups(&group, 1, {}); }

namespace {

std::string shownValue(const FormRow& row, const MatchPB& match) {
  const auto number = [&](int which) { return numberIn(match, row.fields[which]); };
  const auto nameOrId = [](std::uint32_t limid) {
    std::string text = interfaceName(limid);
    if (text.empty()) appendLimid(limid, &text);
    return text;
  };
  std::string text = valueText(row, match);
  if (row.form == ValueForm::kFlag) return "yes";
  if (row.form == ValueForm::kLimid) return nameOrId(number(0));
  if (row.form == ValueForm::kPortMask && number(1) == 0xffff) return std::to_string(number(0));
  if (row.form == ValueForm::kNumber && row.names.nameOf != nullptr) {
    const std::string_view name = row.names.nameOf(number(0));
    return name.empty() ? text : std::string(name);
  }
  if (row.form == ValueForm::kLimids) {
    std::string names;
    for (const std::uint32_t limid : numbersIn(match, row.fields[0])) {
      names += (names.empty() ? "" : ",") + nameOrId(limid);
    }
    return '[' + names + text.substr(text.find(']'));
  }
  return text;
}

}  // namespace

EntryColumns columnsOf(const FiltersEntry& entry) {
  MessageArena arena;
  auto& message = *arena.make<FiltersEntryPB>();
  entry.convertToFiltersEntryPB(&message);
  EntryColumns columns;
  for (const MatchPB& match : message.matches_()) {
    const auto code = static_cast<filtersMatch_t>(match.type_());
    const FormRow& row = *formOf(code);
    columns.matches.emplace_back(code, valueText(row, match));
    columns.shown.push_back(shownValue(row, match));
    const bool isOneField = packetFieldName(code, 1).empty();
    const std::string_view field = isOneField ? packetFieldName(code, 0) : std::string_view();
    columns.fields.push_back(field.empty() ? nameOf(code) : field);
  }
  for (const ActionPB& action : message.actions_()) columns.actions.push_back(textOf(action));
  const auto take = [](const policer::Policer& policer, auto* id, std::string* text) {
    *id = policer.GetId();
    *text = policerWords(factsOf(policer));
  };
  if (message.policer_() != defaultPolicer()) {
    take(entry.getPolicer(), &columns.policer, &columns.policer_text);
  }
  if (const auto parent = entry.getPolicerParent()) {
    take(*parent, &columns.parent, &columns.parent_text);
  }
  for (const CounterPB& counter : message.counters_()) columns.counters.push_back(textOf(counter));
  return columns;
}

std::string toText(const FiltersEntry& entry) {
  std::string text;
  MessageArena arena;
  auto& message = *arena.make<FiltersEntryPB>();
  appendEntry(entry, For::kReading, &message, &text);
  return text;
}

std::string shownText(const FiltersEntry& entry) {
  std::string text;
  MessageArena arena;
  auto& message = *arena.make<FiltersEntryPB>();
  appendEntry(entry, For::kShowing, &message, &text);
  return text;
}

}  // namespace FiltersInspect
