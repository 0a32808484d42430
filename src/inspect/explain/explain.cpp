#include <filter_inspect/filter_explain.h>

#include <map>
#include <optional>
#include <string>
#include <utility>

#include "catalogue/class_rows.h"
#include "catalogue/name_or_number.h"

namespace FiltersInspect {

using namespace FiltersCommon;

namespace {

template <class Codes>
std::vector<std::uint32_t> numbersOf(const Codes& codes) {
  std::vector<std::uint32_t> numbers;
  for (const auto code : codes) numbers.push_back(static_cast<std::uint32_t>(code));
  return numbers;
}

// The row of one of the library's tables, or an empty row.
template <class Table, class Key>
typename Table::mapped_type rowOr(const Table& table, Key key) {
  const auto row = table.find(key);
  return row == table.end() ? typename Table::mapped_type() : row->second;
}

template <class Table>
std::vector<std::uint32_t> keysOf(const Table& table) {
  std::vector<std::uint32_t> keys;
  for (const auto& row : table) keys.push_back(static_cast<std::uint32_t>(row.first));
  return keys;
}

// The keys of the rows that hold the code, in the form "; types that do: 3, 8".
template <class Table, class Code>
std::string rowsWith(const char* rows, const Table& table, Code code) {
  std::string names;
  for (const auto& [key, codes] : table) {
    if (codes.count(code) != 0) names += (names.empty() ? "" : ", ") + nameOrNumber(key);
  }
  if (names.empty()) return std::string("; no ") + rows + " does";
  return std::string("; ") + rows + "s that do: " + names;
}

// Names a stage, for example "stage ingress" or "stage 99, which does not exist".
std::string stageText(policer::Stage stage) {
  return "stage " + nameOrNumber(stage) +
         (FiltersInspect::nameOf(stage).empty() ? ", which does not exist" : "");
}

// The stages of policers that a group's stage admits. The library has these rules only in its
// checks, so a test compares every row with the checks.
std::vector<policer::Stage> policersOf(filtersGroupStage_t stage) {
  switch (stage) {
    case FILTERS_GROUP_STAGE_NONE:
    case FILTERS_GROUP_STAGE_LOOKUP:
      return {policer::Stage::None};
    case FILTERS_GROUP_STAGE_INGRESS:
      return {policer::Stage::Ingress, policer::Stage::None};
    case FILTERS_GROUP_STAGE_EGRESS:
      return {policer::Stage::Egress, policer::Stage::None};
  }
  return {};
}

// The library's checks are members of a group. They use only their arguments, so they can be called
// on any group.
const FiltersGroup& checks() {
  static const FiltersGroup group(0);
  return group;
}

// Stands for a match in the library's checks of compatibility, which use only the code.
struct JustCode {
  filtersMatch_t code;
  filtersMatch_t getType() const { return code; }
};

// Fills a report with refusals. The library decides. The code here looks for the cause only if the
// library has refused something.
class Refusals {
 public:
  Refusals() = default;
  explicit Refusals(const FiltersGroup& group) : group_(group.getId()) {}

  Report take() { return std::move(report_); }

  // Checks whether a group may have this stage and type together.
  void addStage(filtersGroupStage_t stage, filtersGroupType_t type) {
    switch (checks().groupStageValidation(stage, type)) {
      case FILTERS_OK:
        break;
      case FILTERS_ERR_INVALID_STAGE:
        addUnknownStage(stage);
        break;
      default:
        Finding& finding = add(Code::kTypeNotAdmitted, FILTERS_ERR_TYPE_NOT_ALLOWED);
        finding.offender = static_cast<std::uint32_t>(type);
        finding.admitted = numbersOf(rowOr(FiltersGroup::StageTypesDescription_, stage));
        finding.message = "the stage " + nameOrNumber(stage) + " does not admit a group of type " +
                          nameOrNumber(type);
    }
  }

  void addMatches(const FiltersEntry& entry, filtersGroupType_t type) {
    const filtersErr_t verdict = checks().groupMatchValidation(entry, type);
    if (verdict == FILTERS_OK) return;
    if (verdict != FILTERS_ERR_MATCH_NOT_ALLOWED) return addUnknownType(type);
    for (const MatchRow& row : matchRows()) {
      if (!row.isIn(entry)) continue;
      FiltersEntry alone;
      row.putBlank(&alone);
      if (checks().groupMatchValidation(alone, type) == FILTERS_OK) continue;
      Finding& finding = add(Code::kMatchNotAdmitted, verdict, Subject::kMatch, &entry);
      finding.offender = row.code;
      finding.admitted = numbersOf(rowOr(FiltersGroup::TypeDescription_, type));
      finding.message = type == FILTERS_GROUP_TYPE_NONE
                            ? "the group has no type yet and does not admit it: set one first"
                            : "a group of type " + nameOrNumber(type) + " does not admit it";
      finding.message += rowsWith("type", FiltersGroup::TypeDescription_, row.code);
    }
  }

  void addActions(const FiltersEntry& entry, filtersGroupStage_t stage) {
    const filtersErr_t verdict = checks().groupActionValidation(entry, stage);
    if (verdict == FILTERS_OK) return;
    if (verdict != FILTERS_ERR_ACTION_NOT_ALLOWED) return addUnknownStage(stage);
    for (const ActionRow& row : actionRows()) {
      if (!row.isIn(entry)) continue;
      FiltersEntry alone;
      row.putBlank(&alone);
      if (checks().groupActionValidation(alone, stage) == FILTERS_OK) continue;
      Finding& finding = add(Code::kActionNotAdmitted, verdict, Subject::kAction, &entry);
      finding.offender = row.code;
      finding.admitted = numbersOf(rowOr(FiltersGroup::StageActionsDescription_, stage));
      finding.message = "the stage " + nameOrNumber(stage) + " does not admit it" +
                        rowsWith("stage", FiltersGroup::StageActionsDescription_, row.code);
    }
  }

  void addPolicer(const FiltersEntry& entry, filtersGroupStage_t stage) {
    const filtersErr_t verdict = checks().groupPolicerValidation(entry.getPolicer(), stage);
    if (verdict == FILTERS_OK) return;
    if (verdict != FILTERS_ERR_POLICER_STAGE) return addUnknownStage(stage);
    const policer::Stage its = entry.getPolicer().GetStage();
    Finding& finding = add(Code::kPolicerStage, verdict, Subject::kPolicer, &entry);
    finding.offender = static_cast<std::uint32_t>(its);
    finding.admitted = numbersOf(policersOf(stage));
    finding.message =
        "it is made for " + stageText(its) + ", and the group's stage is " + nameOrNumber(stage);
  }

  // Makes the same checks as insertEntry(), in the same order.
  void addEntry(const FiltersEntry& entry, filtersGroupStage_t stage, filtersGroupType_t type) {
    addMatches(entry, type);
    addActions(entry, stage);
    addPolicer(entry, stage);
  }

  // Reports a match that another match excludes.
  void addConflict(const FiltersEntry& holder, filtersMatch_t held, filtersMatch_t code,
                   const FiltersEntry* entry = nullptr) {
    const bool ip = !holder.isL3CompatibleMatch(JustCode{code});
    if (!ip && holder.isL4DstPortCompatibleMatch(JustCode{code})) return;
    Finding& finding = add(ip ? Code::kIpVersionConflict : Code::kDstPortConflict,
                           FILTERS_ERR_INVALID, Subject::kMatch, entry);
    finding.offender = code;
    finding.others = {held};
    finding.message = "it cannot stand beside " + nameOrNumber(held) +
                      (ip ? ": an entry has addresses of one IP version"
                          : ": an entry tests the destination port in one way");
  }

  Finding& add(Code code, filtersErr_t result, Subject subject = Subject::kGroup,
               const FiltersEntry* entry = nullptr) {
    Finding& finding = report_.findings.emplace_back();
    finding.code = code;
    finding.severity = severityOf(code);
    finding.result = result;
    finding.subject = subject;
    finding.group = group_;
    if (entry != nullptr) finding.entry = entry->getId();
    return finding;
  }
 private:
  // One finding is enough for an unknown stage or type, because it is the same for every entry and
  // check.
  void addUnknownStage(filtersGroupStage_t stage) {
    if (std::exchange(stage_is_unknown_, true)) return;
    Finding& finding = add(Code::kStageUnknown, FILTERS_ERR_INVALID_STAGE);
    finding.offender = static_cast<std::uint32_t>(stage);
    finding.admitted = keysOf(FiltersGroup::StageTypesDescription_);
    finding.message = "there is no stage " + std::to_string(stage);
  }
  void addUnknownType(filtersGroupType_t type) {
    if (std::exchange(type_is_unknown_, true)) return;
    Finding& finding = add(Code::kTypeUnknown, FILTERS_ERR_INVALID);
    finding.offender = static_cast<std::uint32_t>(type);
    finding.admitted = keysOf(FiltersGroup::TypeDescription_);
    finding.message = "there is no type " + std::to_string(type) + ", which admits no entry";
  }

  std::optional<filtersGroupId_t> group_;
  Report report_;
  bool stage_is_unknown_ = false, type_is_unknown_ = false;
};

// An entry that holds a blank match of the code; nothing if the code has no class.
FiltersEntry holderOf(filtersMatch_t code) {
  FiltersEntry holder;
  if (const MatchRow* row = rowOf(code)) row->putBlank(&holder);
  return holder;
}

}  // namespace

Report explainInsert(const FiltersGroup& group, const FiltersEntry& entry) {
  Refusals refusals(group);
  refusals.addEntry(entry, group.getStage(), group.getType());
  return refusals.take();
}

Report explainInsert(filtersGroupStage_t stage, filtersGroupType_t type,
                     const FiltersEntry& entry) {
  Refusals refusals;
  refusals.addEntry(entry, stage, type);
  return refusals.take();
}

Report explainStage(const FiltersGroup& group, filtersGroupStage_t stage) {
  Refusals refusals(group);
  refusals.addStage(stage, group.getType());
  for (const auto& [id, entry] : group.getEntriesRef()) {
    refusals.addActions(entry, stage);
    refusals.addPolicer(entry, stage);
  }
  return refusals.take();
}

Report explainType(const FiltersGroup& group, filtersGroupType_t type) {
  Refusals refusals(group);
  refusals.addStage(group.getStage(), type);
  for (const auto& [id, entry] : group.getEntriesRef()) refusals.addMatches(entry, type);
  return refusals.take();
}

// Goes through the matches as setMatches() does: in the order of the map, with the code of the
// match itself, and without unknown codes.
Report explainMatches(const FiltersEntry::Matches& matches) {
  Refusals refusals;
  std::map<filtersMatch_t, FiltersEntry> held;  // a blank match of each code
  for (const auto& [key, match] : matches) {
    if (match == nullptr || rowOf(match->getType()) == nullptr) continue;
    const filtersMatch_t code = match->getType();
    if (held.count(code) != 0) continue;  // the later match replaces the earlier one
    for (const auto& [other, holder] : held) refusals.addConflict(holder, other, code);
    held.emplace(code, holderOf(code));
  }
  return refusals.take();
}

Report explainMatch(const FiltersEntry& entry, filtersMatch_t code) {
  Refusals refusals;
  if (rowOf(code) == nullptr) {
    Finding& finding =
        refusals.add(Code::kMatchCodeUnknown, FILTERS_ERR_INVALID, Subject::kMatch, &entry);
    finding.offender = code;
    finding.message = "no class of the library carries this code";
  }
  for (const MatchRow& row : matchRows()) {
    if (row.isIn(entry)) refusals.addConflict(holderOf(row.code), row.code, code, &entry);
  }
  return refusals.take();
}

Report explainCounter(const FiltersEntry& entry, const Counter& counter) {
  Refusals refusals;
  if (FiltersEntry(entry).setCounter(counter) == FILTERS_OK) return refusals.take();
  std::vector<std::uint32_t> holders;
  for (const auto& [id, held] : entry.getCounters()) {
    if (held.GetType() == counter.GetType()) holders.push_back(id);
  }
  const bool invalid = counter.GetType() == FILTERS_COUNTER_TYPE_INVALID;
  Finding& finding = refusals.add(invalid ? Code::kCounterTypeInvalid : Code::kCounterTypeTaken,
                                  FILTERS_ERR_INVALID, Subject::kCounter, &entry);
  finding.offender = counter.GetId();
  if (invalid) {
    finding.message = "its type says that it counts nothing";
  } else {
    finding.message = "counter " + std::to_string(holders.front()) + " of the entry counts " +
                      nameOrNumber(counter.GetType()) + " already";
    finding.others = std::move(holders);
  }
  return refusals.take();
}

Capability capabilityOf(filtersGroupStage_t stage, filtersGroupType_t type) {
  return {checks().groupStageValidation(stage, type) == FILTERS_OK,
          rowOr(FiltersGroup::TypeDescription_, type),
          rowOr(FiltersGroup::StageActionsDescription_, stage),
          rowOr(FiltersGroup::StageTypesDescription_, stage), policersOf(stage)};
}

std::vector<Placement> placementsOf(const FiltersEntry& entry) {
  std::vector<Placement> placements;
  for (const auto& [stage, types] : FiltersGroup::StageTypesDescription_) {
    if (checks().groupActionValidation(entry, stage) != FILTERS_OK ||
        checks().groupPolicerValidation(entry.getPolicer(), stage) != FILTERS_OK) {
      continue;
    }
    for (const filtersGroupType_t type : types) {
      if (checks().groupMatchValidation(entry, type) == FILTERS_OK) {
        placements.push_back({stage, type});
      }
    }
  }
  return placements;
}

}  // namespace FiltersInspect
