#include <filter_common/filter_groups.h>

#include <gtest/gtest.h>

#include <climits>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "entry_samples.h"

namespace {

using namespace FiltersCommon;
using namespace catalogue;

using Stage = filtersGroupStage_t;
using Type = filtersGroupType_t;

// Who admits what: a row a type or a stage, a digit a code, 1 for admitted.
using Table = std::vector<std::string>;
// clang-format off
const Table kMatchesOfType = {
    // 0-9        10-19        20-29        30-34
    "0000000000" "0000000000" "0000000000" "00000",
    "1111100110" "0000000011" "0001000010" "10000",
    "1111000101" "0100000000" "0100000000" "00000",
    "1111011001" "1000000100" "0000001001" "01100",
    "1111010001" "1111000100" "1000000000" "00000",
    "1111100000" "0111000000" "0010000000" "00000",
    "1111100100" "0111001000" "0000000000" "00000",
    "1101110010" "0000000100" "0000110000" "01000",
    "1000000000" "0000010000" "0000000100" "00000",
    "1110000000" "0111000000" "1000000000" "00000",
    "1101000001" "1000000000" "0000000000" "00000",
    "1001100000" "0000000100" "0000100000" "00011",
};
const Table kActionsOfStage = {
    "1111111111" "0111111111",
    "1100001100" "0000000110",
    "1111110011" "1111111001",
    "1100000000" "0000000000",
};
const Table kTypesOfStage = {
    "111111111111",
    "100010100000",
    "111100011111",
    "100001000000",
};
const Table kPolicersOfStage = {  // Ingress, Egress, None
    "001",
    "001",
    "101",
    "011",
};
// clang-format on

// The checks read their arguments alone: this group's own stage and type are unknown.
const FiltersGroup kAnyGroup = groupOf(99, 99);

// Calls check(row, code, expected result) for every place of a table.
template <class Check>
void walk(const Table& table, filtersErr_t refusal, Check check) {
  for (std::size_t row = 0; row < table.size(); ++row) {
    for (std::size_t code = 0; code < table[row].size(); ++code) {
      SCOPED_TRACE(testing::Message() << "row " << row << " code " << code);
      check(static_cast<int>(row), static_cast<unsigned>(code),
            table[row][code] == '1' ? FILTERS_OK : refusal);
    }
  }
}

// A row that admits the code, or -1.
int rowWith(const Table& table, unsigned code) {
  int row = static_cast<int>(table.size()) - 1;
  while (row >= 0 && table[static_cast<unsigned>(row)][code] == '0') --row;
  return row;
}

TEST(GroupValidation, AdmitsMatchesByType) {
  walk(kMatchesOfType, FILTERS_ERR_MATCH_NOT_ALLOWED, [](int type, unsigned code, int expected) {
    const FiltersEntry entry = entryOf({code});
    EXPECT_EQ(kAnyGroup.groupMatchValidation(entry, Type(type)), expected);
    EXPECT_EQ(groupOf(0, type).insertEntry(entry), expected);
    const int former = rowWith(kMatchesOfType, code);
    if (former < 0) return;
    FiltersGroup group = groupOf(0, former);
    EXPECT_EQ(group.insertEntry(entry), FILTERS_OK);
    EXPECT_EQ(group.setType(Type(type)), expected);
    EXPECT_EQ(group.getType(), expected == FILTERS_OK ? type : former);
  });
}

TEST(GroupValidation, AdmitsActionsByStage) {
  walk(kActionsOfStage, FILTERS_ERR_ACTION_NOT_ALLOWED, [](int stage, unsigned code, int expected) {
    const FiltersEntry entry = entryOf({}, {code});
    EXPECT_EQ(kAnyGroup.groupActionValidation(entry, Stage(stage)), expected);
    EXPECT_EQ(groupOf(stage, 0).insertEntry(entry), expected);
    const int former = rowWith(kActionsOfStage, code);
    FiltersGroup group = groupOf(former, 0);
    EXPECT_EQ(group.insertEntry(entry), FILTERS_OK);
    EXPECT_EQ(group.setStage(Stage(stage)), expected);
    EXPECT_EQ(group.getStage(), expected == FILTERS_OK ? stage : former);
  });
}

TEST(GroupValidation, AdmitsPolicersByStage) {
  walk(kPolicersOfStage, FILTERS_ERR_POLICER_STAGE, [](int stage, unsigned of, int expected) {
    const FiltersEntry entry = entryOf({}, {}, policer::Stage(of));
    EXPECT_EQ(kAnyGroup.groupPolicerValidation(entry.getPolicer(), Stage(stage)), expected);
    EXPECT_EQ(groupOf(stage, 0).insertEntry(entry), expected);
    FiltersGroup group = groupOf(rowWith(kPolicersOfStage, of), 0);
    EXPECT_EQ(group.insertEntry(entry), FILTERS_OK);
    EXPECT_EQ(group.setStage(Stage(stage)), expected);
    EXPECT_EQ(kAnyGroup.groupPolicerValidation(policerAt(policer::Stage{3}), Stage(stage)),
              FILTERS_ERR_POLICER_STAGE);
  });
}

TEST(GroupValidation, AdmitsTypesByStage) {
  walk(kTypesOfStage, FILTERS_ERR_TYPE_NOT_ALLOWED, [](int stage, unsigned type, int expected) {
    EXPECT_EQ(kAnyGroup.groupStageValidation(Stage(stage), Type(type)), expected);
    FiltersGroup ofType = groupOf(0, static_cast<int>(type));
    EXPECT_EQ(ofType.setStage(Stage(stage)), expected);
    FiltersGroup ofStage = groupOf(stage, 0);
    EXPECT_EQ(ofStage.setType(Type(type)), expected);
  });
}

TEST(GroupValidation, RefusesUnknownStagesAndTypesBeforeLookingAtAnEntry) {
  const FiltersEntry bare;
  for (int unknown : {-1, INT_MIN, INT_MAX, 12, 32, 63, 64, 65, 68, 128, 256, 65536}) {
    SCOPED_TRACE(unknown);
    EXPECT_EQ(kAnyGroup.groupMatchValidation(bare, Type(unknown)), FILTERS_ERR_INVALID);
    EXPECT_EQ(kAnyGroup.groupActionValidation(bare, Stage(unknown)), FILTERS_ERR_INVALID_STAGE);
    EXPECT_EQ(groupOf(0, unknown).insertEntry(bare), FILTERS_ERR_INVALID);
    EXPECT_EQ(groupOf(unknown, 0).insertEntry(bare), FILTERS_ERR_INVALID_STAGE);
    EXPECT_EQ(groupOf(unknown, 0).setType(Type(unknown)), FILTERS_ERR_INVALID_STAGE);
    EXPECT_EQ(groupOf(0, unknown).setStage(Stage(unknown)), FILTERS_ERR_INVALID_STAGE);
    for (int stage = 0; stage < 4; ++stage) {
      EXPECT_EQ(groupOf(stage, 0).setType(Type(unknown)), FILTERS_ERR_TYPE_NOT_ALLOWED);
      EXPECT_EQ(groupOf(0, unknown).setStage(Stage(stage)), FILTERS_ERR_TYPE_NOT_ALLOWED);
    }
    const auto policerCheck = [unknown](policer::Stage stage) {
      return kAnyGroup.groupPolicerValidation(policerAt(stage), Stage(unknown));
    };
    EXPECT_EQ(policerCheck(policer::Stage::None), FILTERS_OK);  // it fits everywhere
    EXPECT_EQ(policerCheck(policer::Stage::Ingress), FILTERS_ERR_INVALID_STAGE);
    EXPECT_EQ(policerCheck(policer::Stage::Egress), FILTERS_ERR_INVALID_STAGE);
  }
  EXPECT_EQ(kAnyGroup.groupActionValidation(bare, Stage(4)), FILTERS_ERR_INVALID_STAGE);
}

TEST(GroupValidation, LooksAtEveryMatchAndAction) {
  EXPECT_EQ(kAnyGroup.groupMatchValidation(entryOf({0, 15, 27}), Type(8)), FILTERS_OK);
  EXPECT_EQ(kAnyGroup.groupMatchValidation(entryOf({0, 15, 27, 33}), Type(8)),
            FILTERS_ERR_MATCH_NOT_ALLOWED);
  EXPECT_EQ(kAnyGroup.groupActionValidation(entryOf({}, {0, 1}), Stage(3)), FILTERS_OK);
  EXPECT_EQ(kAnyGroup.groupActionValidation(entryOf({}, {0, 1, 19}), Stage(3)),
            FILTERS_ERR_ACTION_NOT_ALLOWED);
}

// A published table in the form of those above.
template <class Key, class Code>
Table digitsOf(const std::map<Key, const std::set<Code>>& published, std::size_t codes) {
  Table table(published.size(), std::string(codes, '0'));
  for (const auto& [key, admitted] : published) {
    for (Code code : admitted)
      table.at(static_cast<std::size_t>(key)).at(static_cast<std::size_t>(code)) = '1';
  }
  return table;
}

TEST(GroupValidation, GoesByThePublishedTables) {
  EXPECT_EQ(digitsOf(FiltersGroup::TypeDescription_, 35), kMatchesOfType);
  EXPECT_EQ(digitsOf(FiltersGroup::StageActionsDescription_, 20), kActionsOfStage);
  EXPECT_EQ(digitsOf(FiltersGroup::StageTypesDescription_, 12), kTypesOfStage);
}

}  // namespace
