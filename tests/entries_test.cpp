#include <filter_common/filter_entries.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <type_traits>
#include <typeinfo>
#include <utility>
#include <vector>

#include "entry_samples.h"

namespace {

using namespace FiltersCommon;
using namespace catalogue;

static_assert(std::is_copy_constructible_v<FiltersEntry> &&
              std::is_move_assignable_v<FiltersEntry>);
static_assert(!std::is_copy_assignable_v<FiltersEntry> && !std::is_polymorphic_v<FiltersEntry>);
static_assert(!std::is_convertible_v<filtersEntryId_t, FiltersEntry>);

// --- Typed access --------------------------------------------------------------------------------

template <class T>
filtersErr_t erase(FiltersEntry& entry) {
  if constexpr (isMatch<T>) return entry.deleteMatch(filtersMatch_t(codeOf<T>()));
  if constexpr (!isMatch<T>) return entry.deleteAction(filtersAction_t(codeOf<T>()));
}

template <class T>
class TypedAccess : public testing::Test {};
TYPED_TEST_SUITE(TypedAccess, EveryClass);

TYPED_TEST(TypedAccess, StoresACopyThatCanBeReadReplacedAndDeleted) {
  const std::vector<TypeParam>& objects = samples<TypeParam>();
  FiltersEntry entry;
  TypeParam out = objects.back();
  EXPECT_EQ(take(entry, out), FILTERS_ERR_NOT_FOUND);
  EXPECT_TRUE(out == objects.back());
  EXPECT_EQ(erase<TypeParam>(entry), FILTERS_ERR_NOT_FOUND);
  for (const TypeParam& object : objects) {
    TypeParam given = object;
    EXPECT_EQ(put(entry, given), FILTERS_OK);
    given = objects.back();
    for (const FiltersEntry& held : {FiltersEntry(entry), entry}) {
      out = objects.back();
      EXPECT_EQ(take(held, out), FILTERS_OK);
      EXPECT_TRUE(out == object);
    }
  }
  EXPECT_EQ(heldMatches(entry).size() + heldActions(entry).size(), 1u);
  EXPECT_EQ(erase<TypeParam>(entry), FILTERS_OK);
  EXPECT_EQ(take(entry, out), FILTERS_ERR_NOT_FOUND);
}

TYPED_TEST(TypedAccess, TakesAConstClassAsTheClass) {
  FiltersEntry entry;
  TypeParam out = samples<TypeParam>().back();
  EXPECT_EQ(put<const TypeParam>(entry, samples<TypeParam>().front()), FILTERS_OK);
  EXPECT_EQ(take(entry, out), FILTERS_OK);
  EXPECT_TRUE(out == samples<TypeParam>().front());
}

TYPED_TEST(TypedAccess, IsPublishedAsAnAdmittedClass) {
  static_assert(isEntryClass<TypeParam>);
  const auto& published =
      isMatch<TypeParam> ? FiltersEntry::validMatchTypes : FiltersEntry::validActionTypes;
  EXPECT_EQ(published.count(typeid(TypeParam).hash_code()), 1u);
}

TEST(Entries, PublishWhatTheSettersGoBy) {
  EXPECT_EQ(FiltersEntry::validMatchTypes.size(), 36u);
  EXPECT_EQ(FiltersEntry::validActionTypes.size(), 20u);
  using Set = std::set<filtersMatch_t>;
  EXPECT_EQ(FiltersEntry::ipv4OnlyMatchTypes,
            (Set{FILTERS_MATCH_SRC_IPV4, FILTERS_MATCH_DST_IPV4}));
  EXPECT_EQ(FiltersEntry::ipv6OnlyMatchTypes,
            (Set{FILTERS_MATCH_SRC_IPV6, FILTERS_MATCH_DST_IPV6}));
  EXPECT_EQ(FiltersEntry::l4DstPortMatchTypes,
            (Set{FILTERS_MATCH_DST_L4_PORT, FILTERS_MATCH_DST_L4_PORT_RANGE}));
}

// A caller's class: it has a base of the library, its own content, and cannot be copied.
template <class Base>
struct Own : Base {
  using Base::Base;
  std::unique_ptr<int> content = std::make_unique<int>(1);
};

TEST(Entries, RefuseClassesThatAreNotTheLibrarys) {
  const auto expectRefused = [](auto&& own) {
    for (FiltersEntry entry : {FiltersEntry(), fullEntry()}) {
      const FiltersEntry before(entry);
      EXPECT_EQ(put(entry, own), FILTERS_ERR_INVALID);
      EXPECT_EQ(take(entry, own), FILTERS_ERR_INVALID);
      EXPECT_TRUE(entry == before);
    }
  };
  expectRefused(Match(FILTERS_MATCH_CPU_PORT));
  expectRefused(MatchMac(FILTERS_MATCH_DST_MAC, kMac));
  expectRefused(Action(FILTERS_ACTION_DENY));
  expectRefused(Own<Match>(FILTERS_MATCH_ALL));
  expectRefused(Own<MatchPorts>(FILTERS_MATCH_INGRESS_PORTS, Ports{kEth3}));
  expectRefused(Own<MatchDSCP>(std::uint8_t{1}));
  expectRefused(Own<Action>(FILTERS_ACTION_PERMIT));
  expectRefused(Own<ActionPorts>(FILTERS_ACTION_BLOCK_EGRESS_PORTS, Ports{kEth3}));
  expectRefused(Own<ActionSetPcp>(std::uint8_t{1}));
  Own<MatchTTL> own(std::uint8_t{1});
  expectRefused(own);
  EXPECT_EQ(own.getTTL(), 1);
}

// Deliberate: one code, so one takes the other's place and either reads as the other, bit by bit.
TEST(Entries, HoldToSAndDscpInOnePlace) {
  FiltersEntry entry = entryOf({20});
  MatchToS tos(0);
  MatchDSCP dscp(46);
  EXPECT_EQ(entry.setMatch(dscp), FILTERS_OK);
  EXPECT_EQ(heldMatches(entry), Codes{20});
  EXPECT_EQ(entry.getMatch(tos), FILTERS_OK);
  EXPECT_EQ(tos.getToS(), 184);
  EXPECT_EQ(entry.setMatch(MatchToS(191)), FILTERS_OK);
  EXPECT_EQ(entry.getMatch(dscp), FILTERS_OK);
  EXPECT_EQ(dscp.getToS(), 191);
}

// --- Which matches stand together ----------------------------------------------------------------

TEST(Entries, RefuseFivePairsOfMatchesAndNoOther) {
  using Pair = std::set<unsigned>;
  const std::set<Pair> twoIpVersions = {{9, 14}, {9, 15}, {10, 14}, {10, 15}};
  const auto matches = oneMatchOfEachCode();
  for (unsigned held = 0; held < 35; ++held) {
    const FiltersEntry before = entryOf({held});
    for (unsigned added = 0; added < 35; ++added) {
      SCOPED_TRACE(testing::Message() << held << " then " << added);
      const bool l3 = twoIpVersions.count({held, added}) == 0;
      const bool l4 = Pair{held, added} != Pair{5, 34};
      EXPECT_EQ(before.isL3CompatibleMatch(*matches[added].second), l3);
      EXPECT_EQ(before.isL4DstPortCompatibleMatch(*matches[added].second), l4);
      FiltersEntry entry(before);
      EXPECT_EQ(entry.copyMatches(matchesOf({added})), l3 && l4 ? FILTERS_OK : FILTERS_ERR_INVALID);
      EXPECT_EQ(entry == before, !(l3 && l4) || held == added);
    }
  }
}

TEST(Entries, RefuseAMatchForAnyOneOfThoseHeld) {
  FiltersEntry entry = fullEntry();
  EXPECT_EQ(entry.setMatch(MatchDstL4PortRange(1, 2)), FILTERS_ERR_INVALID);
  EXPECT_EQ(entry.setMatch(MatchSrcIPv6(kIPv6)), FILTERS_ERR_INVALID);
  EXPECT_EQ(entry.deleteMatch(FILTERS_MATCH_SRC_IPV4), FILTERS_OK);
  EXPECT_EQ(entry.setMatch(MatchSrcIPv6(kIPv6)), FILTERS_ERR_INVALID);
  EXPECT_EQ(entry.deleteMatch(FILTERS_MATCH_DST_IPV4), FILTERS_OK);
  EXPECT_EQ(entry.setMatch(MatchSrcIPv6(kIPv6)), FILTERS_OK);
}

// --- Whole maps ----------------------------------------------------------------------------------

// What a caller's map may hold besides: no object, objects of unknown codes, a key that is not the
// object's code.
template <class Base, class Stray, class Code>
auto withOddities(std::map<Code, std::unique_ptr<Base>> map, Code unknown) {
  map[Code(12)] = nullptr;
  map[Code(0)] = std::make_unique<Base>(unknown);
  map[unknown] = std::make_unique<Base>(Code(0xffffffff));
  map[Code(99)] = std::make_unique<Stray>();
  return map;
}

TEST(Entries, SetMatchesInPlaceOfAllHeldOrNone) {
  FiltersEntry entry = entryOf({0, 9, 26});
  const auto given = withOddities<Match, MatchCpuPort>(matchesOf({14, 26}), filtersMatch_t(35));
  EXPECT_EQ(entry.setMatches(given), FILTERS_OK);
  EXPECT_EQ(heldMatches(entry), (Codes{14, 26, 30}));
  EXPECT_EQ(entry.setMatch(MatchTTL(9)), FILTERS_OK);
  const FiltersEntry before(entry);
  EXPECT_EQ(entry.setMatches(matchesOf({5, 9, 14, 26})), FILTERS_ERR_INVALID);
  EXPECT_TRUE(entry == before);
  EXPECT_EQ(entry.setMatches({}), FILTERS_OK);
  EXPECT_EQ(heldMatches(entry), Codes());
}

TEST(Entries, CopyMatchesInOrderOfTheKeysUpToTheFirstRefusal) {
  FiltersEntry entry = entryOf({0, 26});
  FiltersEntry::Matches given = matchesOf({0, 5, 26});
  given[filtersMatch_t(1)] = std::make_unique<MatchSrcIPv6>(kIPv6);
  given[filtersMatch_t(6)] = std::make_unique<MatchSrcIPv4>(kIPv4);
  EXPECT_EQ(entry.setMatch(MatchTTL(9)), FILTERS_OK);
  EXPECT_EQ(entry.copyMatches(given), FILTERS_ERR_INVALID);
  EXPECT_EQ(heldMatches(entry), (Codes{0, 5, 14, 26}));
  MatchTTL ttl(0);
  EXPECT_EQ(entry.getMatch(ttl), FILTERS_OK);
  EXPECT_EQ(ttl.getTTL(), 9);
  given.erase(filtersMatch_t(6));
  EXPECT_EQ(entry.copyMatches(given), FILTERS_OK);
  EXPECT_EQ(entry.getMatch(ttl), FILTERS_OK);
  EXPECT_EQ(ttl.getTTL(), 64);
}

TEST(Entries, SetActionsInPlaceOfAllHeldAndCopyThemToThoseHeld) {
  FiltersEntry entry = entryOf({}, {0, 5});
  FiltersEntry copy(entry);
  const auto given = withOddities<Action, ActionBlackHole>(actionsOf({1, 18}), filtersAction_t(20));
  EXPECT_EQ(entry.setActions(given), FILTERS_OK);
  EXPECT_EQ(heldActions(entry), (Codes{1, 16, 18}));
  EXPECT_EQ(copy.copyActions(given), FILTERS_OK);
  EXPECT_EQ(heldActions(copy), (Codes{0, 1, 5, 16, 18}));
  EXPECT_EQ(entry.setActions(actionsOf(kActionCodes)), FILTERS_OK);
  EXPECT_EQ(heldActions(entry), kActionCodes);  // none excludes another
}

TEST(CopyMap, HandsTheObjectsThemselvesOver) {
  std::map<int, std::unique_ptr<std::shared_ptr<int>>> destination, source;
  for (auto* object : {&destination[1], &destination[2], &source[2], &source[3]}) {
    *object = std::make_unique<std::shared_ptr<int>>(new int);
  }
  const std::weak_ptr<int> replaced = *destination[2];
  const std::vector<void*> objects = {destination[1].get(), source[2].get(), source[3].get()};
  copy_map(destination, source);
  EXPECT_TRUE(source.empty());
  EXPECT_TRUE(replaced.expired());
  std::vector<void*> held;
  for (const auto& [key, object] : destination) held.push_back(object.get());
  EXPECT_EQ(held, objects);
  copy_map(destination, destination);
  EXPECT_EQ(destination.size(), 3u);
}

// --- Scalars, policers, counters -----------------------------------------------------------------

TEST(Entries, BeginWithADefaultPolicerAndNothingElse) {
  const FiltersEntry entry(4294967295);
  EXPECT_EQ(entry.getId(), 4294967295);
  EXPECT_EQ(entry.getPriority(), 0u);
  EXPECT_EQ(entry.getPolicer(), policer::Policer());
  EXPECT_EQ(entry.getPolicerParent(), nullptr);
  EXPECT_TRUE(entry.getCounters().empty());
  EXPECT_TRUE(FiltersEntry() == FiltersEntry(0));
}

TEST(Entries, TakeTheirOwnPolicersAsArguments) {
  FiltersEntry entry = fullEntry();
  const FiltersEntry copy(entry);
  const auto parent = entry.getPolicerParent();
  EXPECT_EQ(entry.setPolicer(entry.getPolicer()), FILTERS_OK);
  EXPECT_EQ(entry.setPolicerParent(*entry.getPolicerParent()), FILTERS_OK);
  EXPECT_TRUE(entry == copy);  // two parents, compared by value
  EXPECT_NE(entry.getPolicerParent(), parent);
  EXPECT_EQ(copy.getPolicerParent(), parent);  // which the copy shared
}

TEST(Entries, MoveTheirContentAndDropWhatTheyHeld) {
  FiltersEntry source = fullEntry();
  FiltersEntry target = entryOf({14, 26}, {2});
  target.setPolicerParent(policerAt(policer::Stage::None));
  const std::weak_ptr<policer::Policer> dropped = target.getPolicerParent();
  const auto parent = source.getPolicerParent();
  target = std::move(source);
  EXPECT_TRUE(target == fullEntry());
  EXPECT_EQ(target.getPolicerParent(), parent);
  EXPECT_TRUE(dropped.expired());
  FiltersEntry& alias = target;
  target = std::move(alias);
  EXPECT_TRUE(target == fullEntry());
}

TEST(Entries, GiveACounterTypeOnceAndNeverTheInvalidOne) {
  FiltersEntry entry;
  const auto set = [&entry](unsigned short id, int type) {
    return entry.setCounter({id, counter_type_t(type)});
  };
  EXPECT_EQ(set(1, 0), FILTERS_ERR_INVALID);
  EXPECT_EQ(set(1, 1), FILTERS_OK);
  EXPECT_EQ(set(1, 1), FILTERS_ERR_INVALID);  // deliberate: also the very same
  EXPECT_EQ(set(2, 1), FILTERS_ERR_INVALID);
  EXPECT_EQ(set(1, 2), FILTERS_OK);  // changes the type
  EXPECT_EQ(set(2, 2), FILTERS_ERR_INVALID);
  EXPECT_EQ(set(65535, 1), FILTERS_OK);
  EXPECT_EQ(set(0, -1), FILTERS_OK);
  ASSERT_EQ(entry.getCounters().size(), 3u);
  for (const auto& [id, counter] : entry.getCounters()) {
    EXPECT_EQ(entry.getCounter(id), &counter);
    EXPECT_EQ(counter.GetId(), id);
  }
  EXPECT_EQ(entry.getCounter(1)->GetType(), FILTERS_COUNTER_TYPE_OCTETS);
  EXPECT_EQ(entry.deleteCounter(2), FILTERS_ERR_INVALID_ARGUMENT);
  EXPECT_EQ(entry.deleteCounter(1), FILTERS_OK);
  EXPECT_EQ(entry.getCounter(1), nullptr);
  EXPECT_EQ(entry.getCounters().size(), 2u);
  EXPECT_EQ(entry.deleteCounters(), FILTERS_OK);
  EXPECT_TRUE(entry.getCounters().empty());
}

// --- Equality ------------------------------------------------------------------------------------

TEST(Entries, DifferInEachSingleValue) {
  using E = FiltersEntry&;
  const std::vector<std::function<void(E)>> changes = {
      [](E) {},
      [](E e) { e.setId(1); },
      [](E e) { e.setPriority(4294967295); },
      [](E e) { e.setPolicer(policerAt(policer::Stage::None, 1)); },
      [](E e) { e.setPolicerParent(policerAt(policer::Stage::None)); },
      [](E e) { e.setPolicerParent(policerAt(policer::Stage::None, 1)); },
      [](E e) { e.deleteCounters(); },
      [](E e) {
        EXPECT_EQ(e.setCounter({1, FILTERS_COUNTER_TYPE_OCTETS}), FILTERS_OK);
      },
      [](E e) {
        EXPECT_EQ(e.setCounter({2, FILTERS_COUNTER_TYPE_OCTETS}), FILTERS_OK);
      },
      [](E e) { EXPECT_EQ(e.setMatches(matchesOf({26})), FILTERS_OK); },
      [](E e) {
        EXPECT_EQ(e.setMatches(matchesOf({26, 30})), FILTERS_OK);
      },
      [](E e) {
        EXPECT_EQ(e.setMatches(matchesOf({0, 26, 30})), FILTERS_OK);
      },
      [](E e) { EXPECT_EQ(e.setMatch(MatchTTL(1)), FILTERS_OK); },
      [](E e) { EXPECT_EQ(e.setActions(actionsOf({5})), FILTERS_OK); },
      [](E e) {
        EXPECT_EQ(e.setActions(actionsOf({5, 16})), FILTERS_OK);
      },
      [](E e) {
        EXPECT_EQ(e.setActions(actionsOf({0, 5, 16})), FILTERS_OK);
      },
      [](E e) { EXPECT_EQ(e.setAction(ActionSetPcp(1)), FILTERS_OK); },
  };
  std::vector<FiltersEntry> entries;
  for (const auto& change : changes) {
    entries.push_back(entryOf({0, 26}, {0, 5}));
    EXPECT_EQ(entries.back().setCounter({1, FILTERS_COUNTER_TYPE_PACKETS}), FILTERS_OK);
    change(entries.back());
  }
  for (const FiltersEntry& a : entries) {
    for (const FiltersEntry& b : entries) {
      EXPECT_EQ(a == b, &a == &b) << &a - entries.data() << ' ' << &b - entries.data();
    }
  }
}

}  // namespace
