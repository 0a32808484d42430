// Tests diff(). The report must be empty if and only if operator== is true, and must name every
// planted change.

#include <filter_inspect/filter_diff.h>

#include <random>

#include "../../cases.h"
#include "../../entry_samples.h"

namespace {

using namespace catalogue;
using namespace FiltersInspect;
using FiltersInspect::Code;

FiltersGroup holding(const FiltersEntry& entry, int stage = 0, int type = 3) {
  FiltersGroup group = groupOf(stage, type);
  EXPECT_EQ(group.insertEntry(entry), FILTERS_OK);
  return group;
}

// A group with the entry, even if no type admits all its matches.
FiltersGroup received(FiltersEntry entry) {
  for (int type = 0; type < kTypes; ++type) {
    FiltersGroup group = groupOf(0, type);
    if (group.insertEntry(entry) == FILTERS_OK) return group;
  }
  ADD_FAILURE() << entry;
  return groupOf(kNoStage, 0);
}

// The report must be empty if and only if the groups are equal. If the two groups are exchanged,
// only `before` and `after` are exchanged in the report.
void expectTrue(const FiltersGroup& a, const FiltersGroup& b) {
  const Report there = diff(a, b), back = diff(b, a);
  ASSERT_EQ(there.empty(), a == b) << there << a << b;
  ASSERT_EQ(there.findings.size(), back.findings.size());
  for (std::size_t i = 0; i < there.findings.size(); ++i) {
    const Finding &one = there.findings[i], &other = back.findings[i];
    EXPECT_EQ(one.before, other.after);
    EXPECT_EQ(one.after, other.before);
    EXPECT_NE(one.before, one.after) << one;
    EXPECT_EQ(one.severity, Severity::kNote);
    EXPECT_FALSE(one.message.empty());
  }
}

TEST(Diff, IsEmptyExactlyWhenEqual) {
  FiltersGroup group = groupOf(kIngress, 3);
  for (unsigned id : {1u, 300u, 70000u}) {
    FiltersEntry entry =
        entryOf(Codes(kMatchesOfType[3].begin(), kMatchesOfType[3].end()),
                {FILTERS_ACTION_PERMIT, FILTERS_ACTION_SET_PCP, FILTERS_ACTION_REDIRECT},
                policer::Stage::Ingress, id);
    entry.setPolicerParent(policerAt(policer::Stage::Egress, 301));
    EXPECT_EQ(entry.setCounter({2, FILTERS_COUNTER_TYPE_OCTETS}), FILTERS_OK);
    EXPECT_EQ(group.insertEntry(entry), FILTERS_OK);
  }
  const std::string bytes = bytesOf(group);
  std::mt19937 random(1);
  std::size_t equal = 0;
  for (std::size_t bit = 0; bit < 8 * bytes.size(); bit += caseStep()) {
    std::string damaged = bytes;
    damaged[bit / 8] = static_cast<char>(damaged[bit / 8] ^ 1 << bit % 8);
    const FiltersGroup other(damaged);
    equal += other == group;
    expectTrue(group, other);
    if (HasFatalFailure()) return;
  }
  EXPECT_GT(equal, 0u);
  EXPECT_LT(equal, bytes.size());
}

// Expects exactly one finding, for the one difference that the test makes.
void expectOne(const FiltersGroup& a, const FiltersGroup& b, Code code, Subject subject,
               std::uint32_t offender, const char* before, const char* after) {
  const Report report = diff(a, b);
  ASSERT_EQ(report.findings.size(), 1u) << report << a << b;
  const Finding& finding = report.findings.front();
  EXPECT_EQ(finding.code, code);
  EXPECT_EQ(finding.subject, subject) << finding;
  EXPECT_EQ(finding.offender, offender) << finding;
  EXPECT_EQ(finding.before, before != nullptr ? before : finding.before);
  EXPECT_EQ(finding.after, after != nullptr ? after : finding.after);
  EXPECT_EQ(finding.entry.has_value(), subject != Subject::kGroup);
  expectTrue(a, b);
}

// Tests two changes for every class: an added object, and a changed object.
template <class Fill>
std::size_t expectNamed(Subject subject, unsigned code, const FiltersEntry& sample, Fill fill) {
  FiltersEntry none(7), blank(7);
  for (FiltersEntry* entry : {&none, &blank}) entry->setPolicer(sample.getPolicer());
  fill(blank);
  const FiltersGroup a = received(sample);
  const auto like = [&](const FiltersEntry& entry) {
    return holding(entry, a.getStage(), a.getType());
  };
  expectOne(like(none), a, Code::kEntryChanged, subject, code, "", nullptr);
  if (sample == blank) return 0;
  expectOne(a, like(blank), Code::kEntryChanged, subject, code, nullptr, nullptr);
  return 1;
}

TEST(Diff, NamesEveryMatchAndAction) {
  std::size_t matches = 0, actions = 0;
#define FILTERS_MATCH(code, T, blank)                                                        \
  if (code != FILTERS_MATCH_SRC_IPV6) {                                                      \
    matches += expectNamed(Subject::kMatch, code, entryOf({code}), [](FiltersEntry& entry) { \
      EXPECT_EQ(entry.setMatch(T blank), FILTERS_OK);                                        \
    });                                                                                      \
  }
#include <filter_common/filter_matches.def>
#define FILTERS_ACTION(code, T, blank)                                                            \
  if (code != FILTERS_ACTION_MAP_TO_CPU_COS_QUEUE) {                                              \
    actions += expectNamed(Subject::kAction, code, entryOf({}, {code}), [](FiltersEntry& entry) { \
      EXPECT_EQ(entry.setAction(T blank), FILTERS_OK);                                            \
    });                                                                                           \
  }
#include <filter_common/filter_actions.def>
  EXPECT_GT(matches, 25u);
  EXPECT_GT(actions, 8u);
}

TEST(Diff, NamesEveryOtherPart) {
  const auto expectPart = [&](Subject subject, std::uint32_t offender, const char* before,
                              const char* after, auto change) {
    FiltersEntry entry = entryOf({FILTERS_MATCH_TTL}, {FILTERS_ACTION_PERMIT});
    EXPECT_EQ(entry.setCounter({5, FILTERS_COUNTER_TYPE_PACKETS}), FILTERS_OK);
    const FiltersGroup group = holding(entry, 2);
    change(entry);
    expectOne(group, holding(entry, 2), Code::kEntryChanged, subject, offender, before, after);
  };
  expectPart(Subject::kEntry, 0, "priority=0", "priority=9",
             [](FiltersEntry& entry) { entry.setPriority(9); });
  const char *none = "{id=300 stage=none flow cir=1000 cbs=1500 red=drop}",
             *ingress = "{id=300 stage=ingress flow cir=1000 cbs=1500 red=drop}";
  expectPart(Subject::kPolicer, 0, none, ingress,
             [](FiltersEntry& entry) { entry.setPolicer(policerAt(policer::Stage::Ingress)); });
  expectPart(Subject::kPolicer, 0, none, "",
             [](FiltersEntry& entry) { entry.setPolicer(policer::Policer()); });
  expectPart(Subject::kParent, 0, "", ingress, [](FiltersEntry& entry) {
    entry.setPolicerParent(policerAt(policer::Stage::Ingress));
  });
  expectPart(Subject::kCounter, 5, "5=packets", "",
             [](FiltersEntry& entry) { EXPECT_EQ(entry.deleteCounters(), FILTERS_OK); });
  expectPart(Subject::kCounter, 5, "5=packets", "5=octets", [](FiltersEntry& entry) {
    EXPECT_EQ(entry.setCounter({5, FILTERS_COUNTER_TYPE_OCTETS}), FILTERS_OK);
  });
  expectPart(Subject::kMatch, FILTERS_MATCH_TTL, nullptr, "ttl=3",
             [](FiltersEntry& entry) { EXPECT_EQ(entry.setMatch(MatchTTL(3)), FILTERS_OK); });
}

TEST(Diff, SaysWhatBecameOfEachPart) {
  FiltersEntry before = entryOf({FILTERS_MATCH_TTL}), after = entryOf({}, {FILTERS_ACTION_DENY});
  before.setPolicerParent(policer::Policer());
  EXPECT_EQ(before.setMatch(MatchTTL(1)), FILTERS_OK);
  EXPECT_EQ(before.setCounter({5, FILTERS_COUNTER_TYPE_PACKETS}), FILTERS_OK);
  EXPECT_EQ(after.setCounter({5, counter_type_t(-9)}), FILTERS_OK);
  std::ostringstream os;
  os << diff(holding(before), holding(after, 2));
  EXPECT_EQ(os.str(),
            "note: group 0: stage=none became stage=ingress [head-changed]\n"
            "note: entry 7: match ttl: removed: ttl=1 [entry-changed]\n"
            "note: entry 7: action deny: added: deny [entry-changed]\n"
            "note: entry 7: counter 5: 5=packets became 5=-9 [entry-changed]\n"
            "note: entry 7: parent 4294967295 none none was removed [entry-changed]\n");
}

TEST(Diff, SaysWhatBecameOfPolicers) {
  using policer::Action;
  using policer::Color;
  using policer::Mode;
  const auto at = policer::Stage::Ingress;
  const policer::Policer none, flow(5, at, Mode::Flow(1000, 0), {});
  const auto hidden = [&](std::uint8_t value) {  // the action writes no value
    return policer::Policer(5, at, Mode::None(),
                            {Action(policer::ActionType::Drop, Color::Red, value)});
  };
  const std::tuple<policer::Policer, policer::Policer, const char*> rows[] = {
      {none, flow, "policer 5 ingress flow cir=1000 was added"},
      {flow, none, "policer 5 ingress flow cir=1000 was removed"},
      {flow, {5, at, Mode::Flow(2000, 0), {}}, "policer 5 ingress flow cir=1000 became cir=2000"},
      {flow,
       {5, at, Mode::Flow(0, 1500), {Action::Drop(Color::Red)}},
       "policer 5 ingress flow cir=1000 cbs=0 no actions became cir=0 cbs=1500 red=drop"},
      {flow,
       {6, at, Mode::SrTcm(1000, 0, 3), {}},
       "policer 5 ingress flow cir=1000 became 6 ingress srtcm cir=1000 ebs=3"},
      {hidden(8), hidden(9),
       "policer: 0a06080010001808120e08041000180020002800300038001800"
       "7805 became 0a06080010001809120e080410001800200028003000380018007805"},
  };
  for (const auto& [before, after, said] : rows) {
    FiltersEntry a = entryOf({FILTERS_MATCH_TTL}), b = a;
    a.setPolicer(before);
    b.setPolicer(after);
    std::ostringstream os;
    os << diff(holding(a, 2), holding(b, 2));
    EXPECT_EQ(os.str(), "note: entry 7: " + std::string(said) + " [entry-changed]\n");
    expectTrue(holding(a, 2), holding(b, 2));
  }
}

TEST(Diff, NamesHeadsAndWholeEntries) {
  const FiltersGroup empty = groupOf(kIngress, 3), full = holding(entryOf({FILTERS_MATCH_TTL}), 2);
  expectOne(empty, full, Code::kEntryAdded, Subject::kEntry, 0, "", nullptr);
  expectOne(full, empty, Code::kEntryRemoved, Subject::kEntry, 0, nullptr, "");
  expectOne(empty, groupOf(kNoStage, 3), Code::kHeadChanged, Subject::kGroup, 0, "stage=ingress",
            "stage=none");
  expectOne(empty, groupOf(kIngress, kUnknown), Code::kHeadChanged, Subject::kGroup, 0, "type=3",
            "type=99");
  FiltersGroup other = empty;
  other.setPriority(9);
  expectOne(empty, other, Code::kHeadChanged, Subject::kGroup, 0, "priority=0", "priority=9");
  expectOne(FiltersGroup(1), FiltersGroup(2), Code::kHeadChanged, Subject::kGroup, 0, "id=1",
            "id=2");
}

}  // namespace
