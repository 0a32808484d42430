#include <filter_common/filter_groups.h>

#include <gtest/gtest.h>

#include <map>
#include <type_traits>

#include "entry_samples.h"

namespace {

using namespace FiltersCommon;
using namespace catalogue;

static_assert(std::is_copy_constructible_v<FiltersGroup> && !std::is_polymorphic_v<FiltersGroup>);
static_assert(!std::is_convertible_v<unsigned short, FiltersGroup>);

FiltersEntry entryWith(filtersEntryId_t id, filtersEntryPriority_t priority = 0) {
  FiltersEntry entry(id);
  entry.setPriority(priority);
  return entry;
}

TEST(Groups, BeginEmptyUnderTheirId) {
  const FiltersGroup group(65535);
  EXPECT_EQ(group.getId(), 65535);
  EXPECT_EQ(group.getPriority(), 0);
  EXPECT_EQ(group.getStage(), FILTERS_GROUP_STAGE_NONE);
  EXPECT_EQ(group.getType(), FILTERS_GROUP_TYPE_NONE);
  EXPECT_TRUE(group.getEntriesRef().empty());
}

TEST(Groups, KeepOneCopyOfEachEntryUnderItsIdUntilItIsRemoved) {
  FiltersGroup group(1);
  FiltersEntry entry = entryWith(7, 1);
  EXPECT_EQ(group.insertEntry(entry), FILTERS_OK);
  EXPECT_EQ(group.insertEntry(entryWith(4294967295)), FILTERS_OK);
  entry.setPriority(2);
  EXPECT_EQ(prioritiesOf(group), (Priorities{{7, 1}, {4294967295, 0}}));
  EXPECT_EQ(group.insertEntry(entry), FILTERS_OK);  // replaces
  EXPECT_EQ(prioritiesOf(group), (Priorities{{7, 2}, {4294967295, 0}}));
  EXPECT_EQ(group.getEntriesRef().at(7).getId(), 7u);
  EXPECT_EQ(group.removeEntry(0), FILTERS_ERR_NOT_FOUND);
  EXPECT_EQ(group.removeEntry(7), FILTERS_OK);
  EXPECT_EQ(group.removeEntry(7), FILTERS_ERR_NOT_FOUND);
  EXPECT_EQ(prioritiesOf(group), (Priorities{{4294967295, 0}}));
}

TEST(Groups, TakeTheirOwnEntriesAndKeysAsArguments) {
  FiltersGroup group = groupOf(0, 1);
  FiltersEntry entry = entryOf({0, 4}, {3, 5});
  entry.setPolicerParent(policerAt(policer::Stage::Egress));
  EXPECT_EQ(group.insertEntry(entry), FILTERS_OK);
  EXPECT_EQ(group.insertEntry(group.getEntriesRef().at(7)), FILTERS_OK);
  EXPECT_TRUE(group.getEntriesRef().at(7) == entry);
  EXPECT_EQ(group.removeEntry(group.getEntriesRef().begin()->first), FILTERS_OK);
  EXPECT_TRUE(group.getEntriesRef().empty());
}

TEST(Groups, RefuseAnEntryByMatchThenActionThenPolicerAndKeepItsPredecessor) {
  const FiltersEntry bare(7);
  const FiltersEntry staged = entryOf({}, {}, policer::Stage::Ingress);
  const FiltersEntry acting = entryOf({}, {10}, policer::Stage::Ingress);
  const FiltersEntry all = entryOf({14}, {10}, policer::Stage::Ingress);
  const struct {
    int stage, type;
    const FiltersEntry& entry;
    int result;
  } cases[] = {
      {0, 0, bare, 0},     {0, 0, all, -6},    {0, 0, acting, -9},
      {0, 0, staged, -10}, {4, 12, all, -4},   {-1, -1, bare, -4},
      {4, 0, all, -6},     {4, 0, acting, -8}, {4, 0, bare, -8},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(groupOf(c.stage, c.type).insertEntry(c.entry), c.result) << c.stage << ' ' << c.type;
  }
  FiltersGroup group(1);
  EXPECT_EQ(group.insertEntry(entryWith(7, 1)), FILTERS_OK);
  EXPECT_EQ(group.insertEntry(all), FILTERS_ERR_MATCH_NOT_ALLOWED);
  EXPECT_EQ(prioritiesOf(group), (Priorities{{7, 1}}));
}

TEST(Groups, CheckTheTypeThenEntryByEntryBeforeAChangeOfStage) {
  FiltersGroup group = groupOf(2, 0);
  FiltersEntry staged = entryOf({}, {}, policer::Stage::Ingress);
  staged.setId(1);
  EXPECT_EQ(group.insertEntry(entryOf({}, {10})), FILTERS_OK);
  EXPECT_EQ(group.setStage(FILTERS_GROUP_STAGE_NONE), FILTERS_ERR_ACTION_NOT_ALLOWED);
  EXPECT_EQ(group.insertEntry(staged), FILTERS_OK);
  EXPECT_EQ(group.setStage(FILTERS_GROUP_STAGE_NONE), FILTERS_ERR_POLICER_STAGE);  // of the first
  EXPECT_EQ(staged.setAction(ActionRedirect(kEth3)), FILTERS_OK);
  EXPECT_EQ(group.insertEntry(staged), FILTERS_OK);
  EXPECT_EQ(group.setStage(FILTERS_GROUP_STAGE_LOOKUP), FILTERS_ERR_ACTION_NOT_ALLOWED);
  EXPECT_EQ(group.setType(FILTERS_GROUP_TYPE_1), FILTERS_OK);
  EXPECT_EQ(group.setStage(FILTERS_GROUP_STAGE_LOOKUP), FILTERS_ERR_TYPE_NOT_ALLOWED);
  EXPECT_EQ(group.getStage(), FILTERS_GROUP_STAGE_INGRESS);
  EXPECT_EQ(group.setStage(FILTERS_GROUP_STAGE_INGRESS), FILTERS_OK);
}

TEST(Groups, CheckTheStageThenEntryByEntryBeforeAChangeOfType) {
  FiltersGroup group = groupOf(0, 1);
  EXPECT_EQ(group.insertEntry(FiltersEntry(1)), FILTERS_OK);
  EXPECT_EQ(group.insertEntry(entryOf({30})), FILTERS_OK);
  EXPECT_EQ(group.setType(FILTERS_GROUP_TYPE_2), FILTERS_ERR_MATCH_NOT_ALLOWED);
  EXPECT_EQ(group.setStage(FILTERS_GROUP_STAGE_INGRESS), FILTERS_OK);
  EXPECT_EQ(group.setType(FILTERS_GROUP_TYPE_4), FILTERS_ERR_TYPE_NOT_ALLOWED);
  EXPECT_EQ(group.getType(), FILTERS_GROUP_TYPE_1);
  EXPECT_EQ(group.setType(FILTERS_GROUP_TYPE_1), FILTERS_OK);
}

TEST(Groups, CopyIndependently) {
  FiltersGroup group = groupOf(2, 4);  // a pair that no setter lets in: copies are not checked
  group.setPriority(9);
  EXPECT_EQ(group.insertEntry(entryOf({0})), FILTERS_OK);
  FiltersGroup copy(group);
  EXPECT_TRUE(copy == group);
  EXPECT_EQ(copy.removeEntry(7), FILTERS_OK);
  group.getEntries().at(7).setPriority(5);
  EXPECT_EQ(prioritiesOf(group), (Priorities{{7, 0}}));
  FiltersGroup other(9);
  other = group;
  EXPECT_TRUE(other == group);
}

TEST(Groups, DifferInEachSingleField) {
  const auto make = [](int id, int priority, int stage, int type, const Priorities& entries) {
    FiltersGroup group(static_cast<unsigned short>(id));
    group.setPriority(static_cast<unsigned short>(priority));
    EXPECT_EQ(group.setStage(filtersGroupStage_t(stage)), FILTERS_OK);
    EXPECT_EQ(group.setType(filtersGroupType_t(type)), FILTERS_OK);
    for (const auto& [entryId, of] : entries) {
      EXPECT_EQ(group.insertEntry(entryWith(entryId, of)), FILTERS_OK);
    }
    return group;
  };
  const FiltersGroup groups[] = {
      make(1, 0, 0, 0, {}),       make(2, 0, 0, 0, {}),
      make(1, 1, 0, 0, {}),       make(1, 0, 1, 0, {}),
      make(1, 0, 0, 1, {}),       make(1, 0, 0, 0, {{1, 0}}),
      make(1, 0, 0, 0, {{2, 0}}), make(1, 0, 0, 0, {{1, 0}, {2, 0}}),
      make(1, 0, 0, 0, {{1, 1}}), make(1, 0, 0, 0, {{1, 0}, {2, 1}}),
  };
  for (const FiltersGroup& a : groups) {
    for (const FiltersGroup& b : groups) {
      EXPECT_EQ(a == b, &a == &b);
      EXPECT_EQ(a != b, &a != &b);
    }
  }
}

TEST(Groups, PrintTheirFieldsThenTheirEntries) {
  FiltersGroup group(65535);
  group.setPriority(10);
  EXPECT_EQ(group.setStage(FILTERS_GROUP_STAGE_INGRESS), FILTERS_OK);
  EXPECT_EQ(group.setType(FILTERS_GROUP_TYPE_11), FILTERS_OK);
  EXPECT_EQ(group.insertEntry(entryWith(30, 40)), FILTERS_OK);
  FiltersEntry entry = entryWith(20);
  EXPECT_EQ(entry.setMatch(MatchTPID(0x88a8)), FILTERS_OK);  // leaves the stream in hexadecimal
  EXPECT_EQ(group.insertEntry(entry), FILTERS_OK);
  EXPECT_EQ(printed(group), R"(=FiltersGroup=
  ID: 65535
  Priority: 10
  Stage: 2
  Type: 11
  =FiltersEntry=
    ID: 20
    Priority: 0
    =MatchTPID=
      Match Type ID: 3
      TPID: 0x88a8
  =FiltersEntry=
    ID: 1e
    Priority: 28
)");
  EXPECT_EQ(printed(groupOf(-1, -2147483647 - 1)),
            "=FiltersGroup=\n  ID: 0\n  Priority: 0\n  Stage: -1\n  Type: -2147483648\n");
}

}  // namespace
