// What several threads may do at a time. The thread sanitizer (preset tsan) sees what only happens
// to go well; without it, results that differ from those of a single thread are seen.

#include <filter_common/filter_groups_c.h>
#include <filter_common/filter_serialized.h>

#include <atomic>
#include <functional>
#include <memory>
#include <thread>

#include "entry_samples.h"

namespace {

using namespace catalogue;

constexpr int kThreads = 4;
constexpr int kRounds = 50;

// Runs all of it on every thread at once, again and again. Each thread is told its number.
void onManyThreads(const std::function<void(int)>& work) {
  std::atomic<int> waiting = kThreads;
  std::vector<std::thread> threads;
  for (int number = 0; number < kThreads; ++number) {
    threads.emplace_back([&, number] {
      for (--waiting; waiting != 0;) std::this_thread::yield();
      for (int round = 0; round < kRounds; ++round) work(number);
    });
  }
  for (std::thread& thread : threads) thread.join();
}

// Two entries that hold, between them, every class that a group of stage and type can hold.
FiltersGroup fullGroup(int stage, filtersGroupType_t type) {
  const Codes matches(FiltersGroup::TypeDescription_.at(type).begin(),
                      FiltersGroup::TypeDescription_.at(type).end());
  const auto& allowed = FiltersGroup::StageActionsDescription_.at(filtersGroupStage_t(stage));
  FiltersGroup group = groupOf(stage, type);
  FiltersEntry entry = entryOf(matches, Codes(allowed.begin(), allowed.end()));
  entry.setPolicerParent(policerAt(policer::Stage::Egress));
  EXPECT_EQ(entry.setCounter({1, FILTERS_COUNTER_TYPE_OCTETS}), FILTERS_OK);
  EXPECT_EQ(group.insertEntry(entry), FILTERS_OK);
  EXPECT_EQ(group.insertEntry(FiltersEntry(8)), FILTERS_OK);
  return group;
}

TEST(Threads, ReadOneGroup) {
  for (const auto& description : FiltersGroup::TypeDescription_) {
    const filtersGroupType_t type = description.first;
    FiltersGroup group = fullGroup(FILTERS_GROUP_STAGE_NONE, type);
    const std::string bytes = bytesOf(group), text = printed(group);
    onManyThreads([&](int number) {
      EXPECT_EQ(group.getType(), type);
      EXPECT_EQ(group.getStage() + group.getPriority() + group.getId(), 0);
      EXPECT_EQ(printed(group), text);
      EXPECT_EQ(bytesOf(group), bytes);
      FiltersSerialized buffer;
      group.serialize(&buffer);
      EXPECT_TRUE((number % 2 == 0 ? FiltersGroup(bytes) : FiltersGroup(buffer)) == group);
      EXPECT_TRUE(FiltersGroup(group) == group && group.getEntries() == group.getEntriesRef());
      EXPECT_EQ(group.convertToFiltersGroupPB().entries__size(), 2);
      entriesStruct copies;
      filtersGroupGetEntries(&group, &copies);
      EXPECT_EQ(copies.count, 2);
      deleteFiltersEntriesStruct(&copies);
    });
  }
}

// Reads out an object of each class; how many the entry holds.
template <class... T>
int readEach(const FiltersEntry& entry, testing::Types<T...>) {
  const auto isHeld = [&](auto out) {
    return take(entry, out) == FILTERS_OK && !printed(out).empty() && !wireOf(out).empty();
  };
  return (isHeld(samples<T>().back()) + ...);
}

TEST(Threads, ReadOneEntry) {
  const FiltersEntry entry = fullEntry(), same = fullEntry();
  onManyThreads([&](int) {
    EXPECT_TRUE(entry == same);
    EXPECT_EQ(entry.getId() + entry.getPriority(), 307u);
    EXPECT_EQ(entry.getPolicer(), same.getPolicer());
    EXPECT_EQ(*entry.getPolicerParent(), *same.getPolicerParent());
    EXPECT_EQ(*entry.getCounter(300), entry.getCounters().at(300));
    EXPECT_TRUE(entry.isL3CompatibleMatch(MatchTTL(1)));
    EXPECT_FALSE(entry.isL4DstPortCompatibleMatch(MatchDstL4PortRange(1, 2)));
    EXPECT_EQ(readEach(entry, AllMatches()), 33);  // no IPv6, no port range
    EXPECT_EQ(readEach(entry, AllActions()), 20);
    EXPECT_EQ(bytesOf(entry), bytesOf(same));
  });
}

TEST(Threads, ReadTheTables) {
  const FiltersGroup group(1);
  onManyThreads([&](int) {
    for (const auto& [type, matches] : FiltersGroup::TypeDescription_) {
      for (filtersMatch_t code : matches) {
        EXPECT_EQ(group.groupMatchValidation(entryOf({code}), type), FILTERS_OK);
      }
    }
    for (const auto& [stage, types] : FiltersGroup::StageTypesDescription_) {
      for (filtersGroupType_t type : types) {
        EXPECT_EQ(group.groupStageValidation(stage, type), FILTERS_OK);
      }
      EXPECT_EQ(FiltersGroup::StageActionsDescription_.at(stage).count(FILTERS_ACTION_DENY), 1u);
      EXPECT_EQ(group.groupPolicerValidation(policer::Policer(), stage), FILTERS_OK);
    }
  });
}

TEST(Threads, CopyAndDestroyEntriesThatShareAParent) {
  auto first = std::make_unique<FiltersEntry>(fullEntry());
  const std::weak_ptr<policer::Policer> parent = first->getPolicerParent();
  std::vector<FiltersEntry> own(kThreads, *first);  // one a thread, all of one parent
  first.reset();
  onManyThreads([&](int number) {
    FiltersEntry& mine = own[static_cast<std::size_t>(number)];
    FiltersEntry copy(mine);
    EXPECT_EQ(copy.getPolicerParent(), mine.getPolicerParent());
    mine = std::move(copy);
  });
  EXPECT_FALSE(parent.expired());
  onManyThreads([&](int number) {
    own[static_cast<std::size_t>(number)].setPolicerParent(policer::Policer());
  });
  EXPECT_TRUE(parent.expired());
}

}  // namespace
