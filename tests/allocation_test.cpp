// Memory that runs out in the middle of a change. This program's operator new fails on demand.

#include <gmock/gmock.h>
#include <limid/limid_standin.h>

#include <cstdlib>
#include <map>
#include <memory>
#include <new>
#include <string>

#include <filter_common/filter_groups.h>

namespace {
int allocationsLeft = -1;  // negative: as many as anybody wants
}

void* operator new(std::size_t size) {
  if (allocationsLeft == 0) throw std::bad_alloc();
  if (allocationsLeft > 0) --allocationsLeft;
  if (void* memory = std::malloc(size)) return memory;
  throw std::bad_alloc();
}
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }

namespace {

using namespace FiltersCommon;

FiltersEntry ruleOf(unsigned int id, std::list<limid_t> ports) {
  FiltersEntry entry(id);
  ports.push_back(limid_make_lag(1));
  EXPECT_EQ(entry.setMatch(MatchIngressPorts(ports)), FILTERS_OK);
  EXPECT_EQ(entry.setMatch(MatchExternalVlanId(std::set<unsigned short>{1, 2, 3})), FILTERS_OK);
  EXPECT_EQ(entry.setAction(ActionRedirect(limid_make_ethernet(2))), FILTERS_OK);
  EXPECT_EQ(entry.setPolicer(policer::Policer(id, policer::Stage::None, policer::Mode::None(),
                                              {policer::Action::Drop(policer::Color::Red)})),
            FILTERS_OK);
  return entry;
}

// Runs the change with one allocation more each time until it succeeds. A change that fails must
// leave what `look` sees as it was.
template <class Change, class Look>
void expectAllOrNothing(Change change, Look look) {
  const auto before = look();
  for (int allocations = 0;; ++allocations) {
    ASSERT_LT(allocations, 1000);
    bool failed = false;
    allocationsLeft = allocations;
    try {
      change();
    } catch (const std::bad_alloc&) {
      failed = true;
    }
    allocationsLeft = -1;
    if (!failed) {
      EXPECT_GT(allocations, 0) << "nothing was allocated";
      return;
    }
    ASSERT_EQ(look(), before) << "after " << allocations << " allocations";
  }
}

template <class T>
std::string bytesOf(const T& object) {
  std::string bytes;
  object.serialize(&bytes);
  return bytes;
}

TEST(Allocation, LeavesAnEntryAsItWas) {
  FiltersEntry entry = ruleOf(1, {});
  const auto look = [&] { return bytesOf(entry); };
  FiltersEntry::Matches matches;
  matches[FILTERS_MATCH_INGRESS_PORTS] =
      std::make_unique<MatchIngressPorts>(std::list<limid_t>{limid_make_lag(5)});
  matches[FILTERS_MATCH_TTL] = std::make_unique<MatchTTL>(1);
  FiltersEntry::Actions actions;
  actions[FILTERS_ACTION_DENY] = std::make_unique<ActionDeny>();
  actions[FILTERS_ACTION_REDIRECT] = std::make_unique<ActionRedirect>(limid_make_lag(5));
  const policer::Policer policer = ruleOf(9, {}).getPolicer();
  expectAllOrNothing([&] { entry.setMatches(matches); }, look);
  expectAllOrNothing([&] { entry.setActions(actions); }, look);
  expectAllOrNothing([&] { entry.setMatch(MatchDstL4Port(5)); }, look);
  expectAllOrNothing([&] { entry.setPolicer(policer); }, look);
  expectAllOrNothing([&] { entry.setPolicerParent(policer); }, look);
  expectAllOrNothing([&] { entry.setCounter(Counter(1, FILTERS_COUNTER_TYPE_OCTETS)); }, look);
}

TEST(Allocation, LeavesWhatIsReadOutAsItWas) {
  const FiltersEntry entry = ruleOf(1, {limid_make_ethernet(1)});
  MatchIngressPorts ports{std::list<limid_t>{limid_make_lag(5)}};
  MatchExternalVlanId vlans(7);
  std::string bytes = "before";
  expectAllOrNothing([&] { entry.getMatch(ports); }, [&] { return ports.getPorts().size(); });
  expectAllOrNothing([&] { entry.getMatch(vlans); }, [&] { return vlans.getVlanIds().size(); });
  FiltersGroup group(1);
  ASSERT_EQ(group.setType(FILTERS_GROUP_TYPE_1), FILTERS_OK);
  ASSERT_EQ(group.insertEntry(entry), FILTERS_OK);
  FiltersGroup assigned(2);
  expectAllOrNothing([&] { assigned = group; },
                     [&] { return assigned.getId() + assigned.getEntriesRef().size(); });
}

TEST(Allocation, LosesTheReplacedEntryWhenItsSuccessorCannotBeCopied) {
  FiltersGroup group(1);
  ASSERT_EQ(group.setType(FILTERS_GROUP_TYPE_1), FILTERS_OK);
  const FiltersEntry entry = ruleOf(1, {});
  ASSERT_EQ(group.insertEntry(ruleOf(2, {})), FILTERS_OK);
  ASSERT_EQ(group.insertEntry(entry), FILTERS_OK);
  allocationsLeft = 3;
  EXPECT_THROW(group.insertEntry(entry), std::bad_alloc);
  allocationsLeft = -1;
  EXPECT_EQ(group.getEntriesRef().count(1), 0u);
  EXPECT_EQ(group.getEntriesRef().count(2), 1u);
}

}  // namespace
