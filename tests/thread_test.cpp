// Tests what several threads may do at once. The thread sanitizer (preset tsan) finds races even if
// the results are right. Without the sanitizer, the test finds a race only if the race changes a
// result.

#include <filter_common/filter_groups_c.h>

#include <atomic>
#include <functional>
#include <thread>

#include "entry_samples.h"

namespace {

using namespace catalogue;

constexpr std::size_t kThreads = 4;

// Runs the work on every thread at once, many times. `work` gets the number of its thread.
void onManyThreads(const std::function<void(std::size_t)>& work) {
  std::atomic<std::size_t> waiting = kThreads;
  std::vector<std::thread> threads;
  for (std::size_t number = 0; number < kThreads; ++number) {
    threads.emplace_back([&, number] {
      for (--waiting; waiting != 0;) std::this_thread::yield();
      for (int round = 0; round < 50; ++round) work(number);
    });
  }
  for (std::thread& thread : threads) thread.join();
}

TEST(Threads, ReadOneGroupAndTheTables) {
  FiltersGroup group = groupOf(FILTERS_GROUP_STAGE_INGRESS, FILTERS_GROUP_TYPE_9);
  ASSERT_EQ(
      group.insertEntry(entryOf(
          {FILTERS_MATCH_INGRESS_PORTS, FILTERS_MATCH_EXTERNAL_VLAN_ID, FILTERS_MATCH_PCP},
          {FILTERS_ACTION_BLOCK_EGRESS_PORTS, FILTERS_ACTION_REDIRECT}, policer::Stage::Ingress)),
      FILTERS_OK);
  const std::string bytes = bytesOf(group), text = printed(group);
  onManyThreads([&](std::size_t) {
    EXPECT_TRUE(printed(group) == text && bytesOf(group) == bytes && FiltersGroup(bytes) == group);
    EXPECT_TRUE(FiltersGroup(group) == group);
    entriesStruct copies;
    filtersGroupGetEntries(&group, &copies);
    EXPECT_EQ(copies.count, group.convertToFiltersGroupPB().entries__size());
    deleteFiltersEntriesStruct(&copies);
    for (const auto& [stage, types] : FiltersGroup::StageTypesDescription_) {
      for (const auto type : types) EXPECT_EQ(group.groupStageValidation(stage, type), FILTERS_OK);
    }
    EXPECT_TRUE(FiltersGroup::TypeDescription_.at(FILTERS_GROUP_TYPE_NONE).empty());
    MatchIngressPorts ports{Ports()};
    EXPECT_EQ(group.getEntriesRef().at(7).getMatch(ports), FILTERS_OK);
  });
}

TEST(Threads, CopyAndDestroyEntriesThatShareAParent) {
  auto first = std::make_unique<FiltersEntry>(fullEntry());
  const std::weak_ptr<policer::Policer> parent = first->getPolicerParent();
  std::vector<FiltersEntry> own(kThreads, *first);  // one for each thread, all with the same parent
  first.reset();
  onManyThreads([&](std::size_t number) { own[number] = FiltersEntry(own[number]); });
  EXPECT_FALSE(parent.expired());
  onManyThreads([&](std::size_t number) { own[number].setPolicerParent(policer::Policer()); });
  EXPECT_TRUE(parent.expired());
}

}  // namespace
