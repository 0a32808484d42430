#include <gmock/gmock.h>

#include <typeinfo>

#include "entry_samples.h"

namespace {

using namespace FiltersCommon;
using namespace catalogue;

static_assert(!std::is_copy_assignable_v<FiltersEntry> && !std::is_polymorphic_v<FiltersEntry>);
static_assert(!std::is_convertible_v<filtersEntryId_t, FiltersEntry>);

// fuzz/calls.cpp compares thousands of calls with a model. These tests check single results that
// were written by hand.

// --- Typed access --------------------------------------------------------------------------------

template <class T>
class TypedAccess : public testing::Test {};
TYPED_TEST_SUITE(TypedAccess, EveryClass);

TYPED_TEST(TypedAccess, IsPublishedAndTakesAConstClassAsTheClass) {
  FiltersEntry entry;
  EXPECT_EQ(put<const TypeParam>(entry, samples<TypeParam>().front()), FILTERS_OK);
  const auto& published =
      isMatch<TypeParam> ? FiltersEntry::validMatchTypes : FiltersEntry::validActionTypes;
  EXPECT_EQ(published.count(typeid(TypeParam).hash_code()), 1u);
}

template <class... T>
constexpr std::size_t countOf(testing::Types<T...>) {
  return sizeof...(T);
}

TEST(Entries, PublishWhatTheSettersGoBy) {
  EXPECT_EQ(FiltersEntry::validMatchTypes.size(), countOf(AllMatches()));
  EXPECT_EQ(FiltersEntry::validActionTypes.size(), countOf(AllActions()));
  using Set = std::set<filtersMatch_t>;
  EXPECT_EQ(FiltersEntry::ipv4OnlyMatchTypes,
            (Set{FILTERS_MATCH_SRC_IPV4, FILTERS_MATCH_DST_IPV4}));
  EXPECT_EQ(FiltersEntry::ipv6OnlyMatchTypes,
            (Set{FILTERS_MATCH_SRC_IPV6, FILTERS_MATCH_DST_IPV6}));
  EXPECT_EQ(FiltersEntry::l4DstPortMatchTypes,
            (Set{FILTERS_MATCH_DST_L4_PORT, FILTERS_MATCH_DST_L4_PORT_RANGE}));
}

// A caller's class: it derives from a class of the library, has its own data and cannot be copied.
template <class Base>
struct Own : Base {
  using Base::Base;
  std::unique_ptr<int> content = std::make_unique<int>(1);
};

TEST(Entries, RefuseClassesThatAreNotTheLibrarys) {
  const auto expectRefused = [](auto&& own) {
    FiltersEntry entry = fullEntry();
    EXPECT_EQ(put(entry, own), FILTERS_ERR_INVALID);
    EXPECT_EQ(take(entry, own), FILTERS_ERR_INVALID);
    EXPECT_TRUE(entry == fullEntry());
  };
  expectRefused(Action(FILTERS_ACTION_DENY));
  expectRefused(Own<ActionSetPcp>(std::uint8_t{1}));
  Own<MatchTTL> own(std::uint8_t{1});
  expectRefused(own);
  EXPECT_EQ(own.getTTL(), 1);
}

// --- Matches that exclude each other -------------------------------------------------------------

TEST(Entries, RefuseTheExcludedPairsOfMatchesAndNoOther) {
  const auto matches = oneMatchOfEachCode();
  for (unsigned held : kMatchCodes) {
    const FiltersEntry before = entryOf({held});
    for (unsigned added : kMatchCodes) {
      SCOPED_TRACE(testing::Message() << held << " then " << added);
      const bool fits = kExcludedPairs.count({held, added}) == 0;
      const bool ofPorts = FiltersEntry::l4DstPortMatchTypes.count(filtersMatch_t(held)) != 0;
      EXPECT_EQ(before.isL3CompatibleMatch(*matches[added].second), fits || ofPorts);
      EXPECT_EQ(before.isL4DstPortCompatibleMatch(*matches[added].second), fits || !ofPorts);
      FiltersEntry entry(before);
      EXPECT_EQ(entry.copyMatches(matchesOf({added})), fits ? FILTERS_OK : FILTERS_ERR_INVALID);
      EXPECT_EQ(entry == before, !fits || held == added);
    }
  }
}

TEST(Entries, PassOverTheNullsOfAList) {
  auto matches = matchesOf({FILTERS_MATCH_ALL, FILTERS_MATCH_TTL});
  auto actions = actionsOf({FILTERS_ACTION_PERMIT, FILTERS_ACTION_SET_PCP});
  matches[FILTERS_MATCH_ALL] = nullptr;
  actions[FILTERS_ACTION_PERMIT] = nullptr;
  FiltersEntry entry = entryOf({});
  EXPECT_EQ(entry.copyMatches(matches) + entry.copyActions(actions), FILTERS_OK);
  EXPECT_TRUE(entry == entryOf({FILTERS_MATCH_TTL}, {FILTERS_ACTION_SET_PCP}));
}

TEST(CopyMap, HandsTheObjectsThemselvesOver) {
  std::map<int, std::unique_ptr<int>> destination, source;
  for (int key : {1, 2}) destination[key] = std::make_unique<int>(key);
  for (int key : {2, 3}) source[key] = std::make_unique<int>(10 * key);
  const int* object = source[2].get();
  copy_map(destination, source);
  copy_map(destination, destination);
  EXPECT_TRUE(source.empty() && destination.size() == 3 && destination[2].get() == object);
  EXPECT_EQ(*destination[1] + *destination[3], 31);
}

// --- Scalars, policers, counters -----------------------------------------------------------------

TEST(Entries, DifferByTheirPriorityAndPolicers) {
  void (*const changes[])(FiltersEntry&) = {
      [](FiltersEntry& entry) { entry.setPriority(301); },
      [](FiltersEntry& entry) { entry.setPolicer(policerAt(policer::Stage::Ingress, 301)); },
      [](FiltersEntry& entry) { entry.setPolicerParent(policerAt(policer::Stage::Egress)); },
  };
  for (const auto change : changes) {
    FiltersEntry entry = fullEntry();
    change(entry);
    EXPECT_FALSE(entry == fullEntry());
  }
}

TEST(Entries, MoveTheirContentAndDropWhatTheyHeld) {
  FiltersEntry source = fullEntry();
  FiltersEntry target =
      entryOf({FILTERS_MATCH_SRC_IPV6, FILTERS_MATCH_TTL}, {FILTERS_ACTION_COPY_TO_CPU},
              policer::Stage::None, 8);  // has another id
  target.setPolicerParent(policerAt(policer::Stage::None));
  const std::weak_ptr<policer::Policer> dropped = target.getPolicerParent();
  const auto parent = source.getPolicerParent();
  target = std::move(source);
  EXPECT_EQ(target.getPolicerParent(), parent);
  EXPECT_TRUE(dropped.expired());
  FiltersEntry& alias = target;
  target = std::move(alias);
  EXPECT_TRUE(target == fullEntry());
}

using Numbers = std::vector<std::pair<int, int>>;
Numbers countersOf(const FiltersEntry& entry) {
  Numbers held;
  for (const auto& [id, counter] : entry.getCounters()) held.emplace_back(id, counter.GetType());
  return held;
}

// Deliberate: setCounter() also refuses a counter that is equal to a held one.
TEST(Entries, GiveACounterTypeOnceAndNeverTheInvalidOne) {
  FiltersEntry entry;
  for (const int expected : {FILTERS_OK, FILTERS_ERR_INVALID}) {
    EXPECT_EQ(entry.setCounter({65535, counter_type_t(-1)}), expected);
    EXPECT_EQ(entry.setCounter({1, FILTERS_COUNTER_TYPE_INVALID}), FILTERS_ERR_INVALID);
  }
  EXPECT_EQ(entry.getCounter(65535), &entry.getCounters().at(65535));
}

// --- Reading messages; bytes_test tests writing them ---------------------------------------------

// A message with an element for each code, in the given order.
FiltersEntryPB messageWith(const Codes& matches, const Codes& actions) {
  FiltersEntryPB message;
  for (unsigned code : matches) message.add_matches_()->set_type_(code);
  for (unsigned code : actions) message.add_actions_()->set_type_(code);
  return message;
}

FiltersEntry fromMessage(const FiltersEntryPB& message) {
  FiltersEntry entry;
  entry.convertFromFiltersEntryPB(&message);
  return entry;
}

TEST(EntryMessage, LosesElementsOfUnknownCodesAndMatchesThatAnEarlierOneExcludes) {
  const std::pair<Codes, Codes> cases[] = {
      {{kUnknown, FILTERS_MATCH_ALL, 1000, kMax, FILTERS_MATCH_TTL},
       {FILTERS_MATCH_ALL, FILTERS_MATCH_TTL}},
      {{FILTERS_MATCH_SRC_IPV4, FILTERS_MATCH_SRC_IPV6, FILTERS_MATCH_DST_IPV6,
        FILTERS_MATCH_DST_IPV4, FILTERS_MATCH_DST_L4_PORT, FILTERS_MATCH_DST_L4_PORT_RANGE,
        FILTERS_MATCH_TTL},
       {FILTERS_MATCH_DST_L4_PORT, FILTERS_MATCH_SRC_IPV4, FILTERS_MATCH_DST_IPV4,
        FILTERS_MATCH_TTL}},
      {{FILTERS_MATCH_DST_IPV6, FILTERS_MATCH_DST_IPV4, FILTERS_MATCH_DST_L4_PORT_RANGE,
        FILTERS_MATCH_SRC_IPV6, FILTERS_MATCH_DST_L4_PORT, FILTERS_MATCH_SRC_IPV4,
        FILTERS_MATCH_SRC_L4_PORT},
       {FILTERS_MATCH_SRC_L4_PORT, FILTERS_MATCH_SRC_IPV6, FILTERS_MATCH_DST_IPV6,
        FILTERS_MATCH_DST_L4_PORT_RANGE}},
  };
  for (const auto& [sent, held] : cases) {
    EXPECT_EQ(heldMatches(fromMessage(messageWith(sent, {}))), held);
  }
  const Codes actions = {kUnknown, FILTERS_ACTION_DENY, kMax, FILTERS_ACTION_BLACK_HOLE};
  EXPECT_EQ(heldActions(fromMessage(messageWith({}, actions))),
            (Codes{FILTERS_ACTION_DENY, FILTERS_ACTION_BLACK_HOLE}));
}

// Deliberate: counters from the message of another process are not checked.
TEST(EntryMessage, KeepsRepeatedAndInvalidCounterTypes) {
  FiltersEntryPB message;
  for (const auto& [id, type] : Numbers{{65537, 0}, {2, 5}, {-1, 5}, {2, 0}, {65536, -9}}) {
    message.add_counters_()->set_id(id);
    message.mutable_counters_()->rbegin()->set_type(type);
  }
  EXPECT_EQ(countersOf(fromMessage(message)), (Numbers{{0, -9}, {1, 0}, {2, 0}, {65535, 5}}));
}

TEST(EntryMessage, PassesTheMplsActionsExceptionOnAndKeepsWhatCameBeforeIt) {
  FiltersEntryPB message = messageOf(entryOf({FILTERS_MATCH_TTL}, {FILTERS_ACTION_PERMIT}));
  message.add_actions_()->set_type_(FILTERS_ACTION_MPLS_PORT_SET);
  message.add_actions_()->set_type_(FILTERS_ACTION_DENY);
  EXPECT_THROW(FiltersEntry(message.SerializeAsString()), std::invalid_argument);
  FiltersEntry entry = entryOf({}, {FILTERS_ACTION_MPLS_PORT_SET});
  EXPECT_THAT([&] { entry.convertFromFiltersEntryPB(&message); },
              testing::ThrowsMessage<std::invalid_argument>(
                  "ActionMplsPortSet: ActionPB missing vpn_id and mpls_access_port"));
  EXPECT_TRUE(entry ==
              entryOf({FILTERS_MATCH_TTL}, {FILTERS_ACTION_PERMIT, FILTERS_ACTION_MPLS_PORT_SET}));
}

}  // namespace
