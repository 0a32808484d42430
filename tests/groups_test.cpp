#include <climits>
#include <numeric>

#include "entry_samples.h"

namespace {

using namespace FiltersCommon;
using namespace catalogue;

static_assert(std::is_copy_constructible_v<FiltersGroup> && !std::is_polymorphic_v<FiltersGroup>);
static_assert(!std::is_convertible_v<unsigned short, FiltersGroup>);
static_assert(std::is_nothrow_move_constructible_v<FiltersGroup> &&
              std::is_nothrow_move_assignable_v<FiltersGroup>);

using Stage = filtersGroupStage_t;
using Type = filtersGroupType_t;

FiltersEntry entryWith(filtersEntryId_t id, filtersEntryPriority_t priority = 0) {
  FiltersEntry entry(id);
  entry.setPriority(priority);
  return entry;
}

// fuzz/calls.cpp compares thousands of calls with a model. These tests check single results that
// were written by hand.

TEST(Groups, CheckMatchesThenActionsThenThePolicerEntryByEntry) {
  const FiltersEntry acting =
      entryOf({}, {FILTERS_ACTION_MAP_TO_CPU_COS_QUEUE}, policer::Stage::Ingress);
  const FiltersEntry all = entryOf({FILTERS_MATCH_SRC_IPV6}, {FILTERS_ACTION_MAP_TO_CPU_COS_QUEUE},
                                   policer::Stage::Ingress);
  EXPECT_EQ(groupOf(kUnknown, kUnknown).insertEntry(all), FILTERS_ERR_INVALID);
  EXPECT_EQ(groupOf(kUnknown, 0).insertEntry(all), FILTERS_ERR_MATCH_NOT_ALLOWED);
  EXPECT_EQ(groupOf(kUnknown, 0).insertEntry(acting), FILTERS_ERR_INVALID_STAGE);
  EXPECT_EQ(groupOf(kNoStage, 0).insertEntry(acting), FILTERS_ERR_ACTION_NOT_ALLOWED);
  FiltersGroup group = groupOf(kIngress, 0);
  EXPECT_EQ(group.insertEntry(acting), FILTERS_OK);
  EXPECT_EQ(group.setStage(FILTERS_GROUP_STAGE_NONE), FILTERS_ERR_ACTION_NOT_ALLOWED);
  EXPECT_EQ(group.insertEntry(entryOf({}, {}, policer::Stage::Ingress, 1)), FILTERS_OK);
  EXPECT_EQ(group.setStage(FILTERS_GROUP_STAGE_NONE),
            FILTERS_ERR_POLICER_STAGE);  // of entry 1, which is first
}

TEST(Groups, PrintTheirFieldsThenTheirEntries) {
  EXPECT_EQ(printed(groupOf(-1, INT_MIN)),
            "=FiltersGroup=\n  ID: 0\n  Priority: 0\n  Stage: -1\n  Type: -2147483648\n");
  FiltersGroup group(65535);
  group.setPriority(10);
  EXPECT_EQ(group.insertEntry(entryWith(30, 40)), FILTERS_OK);
  EXPECT_EQ(group.insertEntry(entryWith(20)), FILTERS_OK);
  EXPECT_EQ(printed(group), "=FiltersGroup=\n  ID: 65535\n  Priority: 10\n  Stage: 0\n  Type: 0\n" +
                                printed(entryWith(20)) + printed(entryWith(30, 40)));
}

TEST(Groups, MoveTheirEntriesAndKeepTheirNumbers) {
  FiltersGroup group = groupOf(kIngress, 3);
  group.setPriority(10);
  const FiltersGroup emptied(group);
  EXPECT_EQ(group.insertEntry(entryWith(7, 40)), FILTERS_OK);
  const FiltersGroup copy(group);
  const FiltersEntry* const entry = &group.getEntriesRef().at(7);
  const auto isWhole = [&](const FiltersGroup& moved) {
    return moved == copy && &moved.getEntriesRef().at(7) == entry;
  };
  FiltersGroup made(std::move(group)), assigned = groupOf(kEgress, 5);
  EXPECT_TRUE(isWhole(made) && group == emptied);
  EXPECT_EQ(assigned.insertEntry(entryWith(8)), FILTERS_OK);
  assigned = std::move(made);
  EXPECT_TRUE(isWhole(assigned) && made == emptied);
  FiltersGroup& itself = assigned;
  assigned = std::move(itself);
  EXPECT_TRUE(isWhole(assigned));
}

// --- Reading messages; bytes_test tests writing them ---------------------------------------------

FiltersEntryPB* addEntry(FiltersGroupPB* message, unsigned id, unsigned priority = 0) {
  FiltersEntryPB* entry = message->add_entries_();
  entry->set_id_(id);
  entry->set_priority_(priority);
  return entry;
}

FiltersGroup fromMessage(const FiltersGroupPB& message) {
  FiltersGroup group(9);
  group.convertFromFiltersGroupPB(&message);
  return group;
}

// Deliberate: a group takes any stage and any type from a message, even if the setters would refuse
// them.
TEST(GroupMessage, LosesTheUpperBitsOfIdAndPriorityAndBringsAnyStageAndType) {
  FiltersGroupPB message;
  message.set_id_(65537);
  message.set_priority_(0xfffe0005);
  EXPECT_EQ(fromMessage(message).getId(), 1);
  EXPECT_EQ(fromMessage(message).getPriority(), 5);
  for (const auto& [stage, type] : {std::pair(1, 1), {kUnknown, kUnknown}, {-1, -2147483647 - 1}}) {
    const FiltersGroup group = groupOf(stage, type);
    EXPECT_TRUE(group.getStage() == stage && group.getType() == type);
    EXPECT_TRUE(FiltersGroup(bytesOf(group)) == group);
  }
}

TEST(GroupMessage, LosesEntriesThatTheGroupRefusesAndFormerOnesOfAnId) {
  FiltersGroupPB message;
  message.set_stage_(kEgress);
  message.set_type_(5);
  addEntry(&message, 7, 1)->set_policer_parent_("");
  addEntry(&message, 2)->add_matches_()->set_type_(FILTERS_MATCH_CPU_PORT);
  addEntry(&message, 3)->add_actions_()->set_type_(FILTERS_ACTION_BLACK_HOLE);
  addEntry(&message, 4)->set_policer_(policerAt(policer::Stage::Ingress).Serialize());
  addEntry(&message, 5)->set_policer_(policerAt(policer::Stage::Egress).Serialize());
  addEntry(&message, 7, 2);
  addEntry(&message, 7, 3)->add_actions_()->set_type_(FILTERS_ACTION_BLACK_HOLE);
  const FiltersGroup group = fromMessage(message);
  EXPECT_EQ(prioritiesOf(group), (Priorities{{5, 0}, {7, 2}}));
  EXPECT_EQ(group.getEntries().at(7).getPolicerParent(), nullptr);
  message.set_type_(unsigned(kUnknown));
  EXPECT_EQ(prioritiesOf(fromMessage(message)), Priorities());
}

// Reads a message with some rules into a group. Deliberate: the group takes the id, priority, stage
// and type of the message without a check. If this stage or type refuses a rule, the old rule with
// that id stays.
TEST(GroupMessage, OnTopOfAGroupReplacesItsHeadAndTheRulesOfItsIds) {
  FiltersGroup group = groupOf(kIngress, 3);
  for (unsigned id : {1u, 2u, 3u}) {
    EXPECT_EQ(
        group.insertEntry(entryOf({FILTERS_MATCH_TTL}, {FILTERS_ACTION_PERMIT, FILTERS_ACTION_DENY},
                                  policer::Stage::None, id)),
        FILTERS_OK);
  }
  const FiltersGroup before(group);
  FiltersGroupPB part;
  part.set_id_(8);
  part.set_priority_(5);
  part.set_stage_(kIngress);
  part.set_type_(3);
  *part.add_entries_() = messageOf(entryOf(
      {FILTERS_MATCH_IP_PROTOCOL}, {FILTERS_ACTION_COPY_TO_CPU}, policer::Stage::Ingress, 2));
  *part.add_entries_() =
      messageOf(entryOf({FILTERS_MATCH_DST_IPV6}, {}, policer::Stage::None, 3));  // refused
  *part.add_entries_() =
      messageOf(entryOf({FILTERS_MATCH_IP_PROTOCOL}, {}, policer::Stage::None, 4));
  group.convertFromFiltersGroupPB(&part);
  EXPECT_TRUE(group.getId() == 8 && group.getPriority() == 5);
  EXPECT_EQ(prioritiesOf(group).size(), 4u);
  const auto& entries = group.getEntriesRef();
  EXPECT_EQ(heldMatches(entries.at(2)), Codes{FILTERS_MATCH_IP_PROTOCOL});
  EXPECT_EQ(heldActions(entries.at(2)), Codes{FILTERS_ACTION_COPY_TO_CPU});
  for (unsigned id : {1u, 3u}) EXPECT_EQ(entries.at(id), before.getEntriesRef().at(id));

  part.Clear();  // the message has no stage and no type, so both are 0, and type 0 admits no match
  *part.add_entries_() = messageOf(entryOf({FILTERS_MATCH_TTL}, {}, policer::Stage::None, 1));
  group.convertFromFiltersGroupPB(&part);
  EXPECT_TRUE(group.getId() == 0 && group.getPriority() == 0 && group.getStage() == 0 &&
              group.getType() == 0);
  EXPECT_EQ(heldActions(group.getEntriesRef().at(1)),
            (Codes{FILTERS_ACTION_PERMIT, FILTERS_ACTION_DENY}));
}

// --- The checks ----------------------------------------------------------------------------------

// The checks look only at their arguments and not at the group. To show this, the group has an
// unknown stage and an unknown type.
const FiltersGroup kAnyGroup = groupOf(kUnknown, kUnknown);

// The check and the public table must agree with the table in rules.h. Each code that is not in
// `nowhere` must be in some row other than the first, which is that of stage or type NONE.
template <class Key, class Code, class Check>
void expectTable(const Table& table, const Codes& codes, const CodeSet& nowhere,
                 filtersErr_t refusal, const std::map<Key, const std::set<Code>>& published,
                 Check check) {
  CodeSet left(codes.begin(), codes.end());
  EXPECT_EQ(published.size(), table.size());
  for (unsigned row = 0; row < table.size(); ++row) {
    const std::set<Code>& codesOfRow = published.at(Key(row));
    EXPECT_EQ(CodeSet(codesOfRow.begin(), codesOfRow.end()), table[row]);
    if (row != 0) {
      for (unsigned code : table[row]) left.erase(code);
    }
    for (unsigned code : codes) {
      EXPECT_EQ(check(Key(row), code), admits(table, row, code) ? FILTERS_OK : refusal)
          << "row " << row << " code " << code;
    }
  }
  EXPECT_EQ(left, nowhere);
}

TEST(GroupValidation, AdmitsMatchesByType) {
  expectTable(kMatchesOfType, kMatchCodes, {FILTERS_MATCH_SRC_IPV6}, FILTERS_ERR_MATCH_NOT_ALLOWED,
              FiltersGroup::TypeDescription_, [](Type type, unsigned code) {
                return kAnyGroup.groupMatchValidation(entryOf({FILTERS_MATCH_ALL, code}), type);
              });
}

TEST(GroupValidation, AdmitsActionsByStage) {
  expectTable(kActionsOfStage, kActionCodes, {}, FILTERS_ERR_ACTION_NOT_ALLOWED,
              FiltersGroup::StageActionsDescription_, [](Stage stage, unsigned code) {
                return kAnyGroup.groupActionValidation(entryOf({}, {0, code}), stage);
              });
}

TEST(GroupValidation, AdmitsTypesByStage) {
  Codes types(kMatchesOfType.size());
  std::iota(types.begin(), types.end(), 0);
  expectTable(
      kTypesOfStage, types, {}, FILTERS_ERR_TYPE_NOT_ALLOWED, FiltersGroup::StageTypesDescription_,
      [](Stage stage, unsigned type) { return kAnyGroup.groupStageValidation(stage, Type(type)); });
}

filtersErr_t checkPolicer(unsigned of, int stage) {
  return kAnyGroup.groupPolicerValidation(policerAt(policer::Stage(of)), Stage(stage));
}

TEST(GroupValidation, AdmitsPolicersByStage) {
  for (int stage = 0; stage < kStages; ++stage) {
    for (unsigned of = 0; of < 4; ++of) {
      const bool fits = admits(kPolicersOfStage, static_cast<unsigned>(stage), of);
      EXPECT_EQ(checkPolicer(of, stage), fits ? FILTERS_OK : FILTERS_ERR_POLICER_STAGE)
          << of << " at " << stage;
    }
  }
}

TEST(GroupValidation, RefusesUnknownStagesAndTypesBeforeLookingAtAnEntry) {
  const FiltersEntry bare;
  for (int unknown :
       {-1, INT_MIN, INT_MAX, kTypes, kUnknown, 32, 63, 64, 65, 68, 128, 256, 65536}) {
    EXPECT_EQ(kAnyGroup.groupMatchValidation(bare, Type(unknown)), FILTERS_ERR_INVALID);
    EXPECT_EQ(kAnyGroup.groupActionValidation(bare, Stage(unknown)), FILTERS_ERR_INVALID_STAGE);
    EXPECT_EQ(groupOf(unknown, 0).setType(Type(unknown)), FILTERS_ERR_INVALID_STAGE);
    EXPECT_EQ(groupOf(0, unknown).setStage(Stage(unknown)), FILTERS_ERR_INVALID_STAGE);
    for (int stage = 0; stage < kStages; ++stage) {
      EXPECT_EQ(groupOf(stage, 0).setType(Type(unknown)), FILTERS_ERR_TYPE_NOT_ALLOWED);
      EXPECT_EQ(groupOf(0, unknown).setStage(Stage(stage)), FILTERS_ERR_TYPE_NOT_ALLOWED);
    }
    EXPECT_EQ(checkPolicer(2, unknown), FILTERS_OK);  // stage None is admitted everywhere
    EXPECT_EQ(checkPolicer(0, unknown), FILTERS_ERR_INVALID_STAGE);
    EXPECT_EQ(checkPolicer(1, unknown), FILTERS_ERR_INVALID_STAGE);
  }
  EXPECT_EQ(kAnyGroup.groupActionValidation(bare, Stage(kStages)), FILTERS_ERR_INVALID_STAGE);
}

}  // namespace
