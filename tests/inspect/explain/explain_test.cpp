// Compares the result codes of explanations with those of the library. All other parts of an
// explanation are compared with the tables of rules.h, which are written by hand.

#include <filter_inspect/filter_explain.h>

#include <random>

#include "../../cases.h"
#include "../../entry_samples.h"
#include "../sentences.h"

namespace {

using namespace catalogue;
using namespace FiltersInspect;

using Said = std::vector<std::pair<FiltersInspect::Code, std::uint32_t>>;
using FiltersInspect::Code;

filtersErr_t resultOf(const Report& report) {
  return report.empty() ? FILTERS_OK : report.findings.front().result;
}

Said said(const Report& report) {
  Said said;
  for (const Finding& finding : report.findings) {
    said.emplace_back(finding.code, finding.offender);
    EXPECT_EQ(finding.severity, Severity::kError) << report;
    EXPECT_FALSE(finding.message.empty());
  }
  return said;
}

// An entry, and the codes of its matches and actions.
struct Parts {
  std::set<unsigned> matches, actions;
  policer::Stage policer = policer::Stage::None;
  FiltersEntry entry{7};
};

Parts randomParts(std::mt19937& random) {
  Parts parts;
  for (int tries = static_cast<int>(random() % 6); tries > 0; --tries) {
    const unsigned match = kMatchCodes[random() % kMatchCodes.size()];
    if (parts.entry.copyMatches(matchesOf({match})) == FILTERS_OK) parts.matches.insert(match);
    const unsigned action = kActionCodes[random() % kActionCodes.size()];
    EXPECT_EQ(parts.entry.copyActions(actionsOf({action})), FILTERS_OK);
    parts.actions.insert(action);
  }
  parts.policer = static_cast<policer::Stage>(random() % 3);
  parts.entry.setPolicer(policerAt(parts.policer));
  return parts;
}

// The findings about what a type, or a stage, refuses in an entry.
Said byType(const Parts& parts, unsigned type) {
  if (type >= kMatchesOfType.size()) return {{Code::kTypeUnknown, type}};
  Said said;
  for (unsigned match : parts.matches) {
    if (!admits(kMatchesOfType, type, match)) said.emplace_back(Code::kMatchNotAdmitted, match);
  }
  return said;
}

Said byStage(const Parts& parts, unsigned stage) {
  if (stage >= kTypesOfStage.size()) return {{Code::kStageUnknown, stage}};
  Said said;
  for (unsigned action : parts.actions) {
    if (!admits(kActionsOfStage, stage, action))
      said.emplace_back(Code::kActionNotAdmitted, action);
  }
  const auto policer = static_cast<unsigned>(parts.policer);
  if (policer != 2 && !admits(kPolicersOfStage, stage, policer)) {
    said.emplace_back(Code::kPolicerStage, policer);
  }
  return said;
}

Said byHead(unsigned stage, unsigned type) {
  if (stage >= kTypesOfStage.size()) return {{Code::kStageUnknown, stage}};
  if (admits(kTypesOfStage, stage, type)) return {};
  return {{Code::kTypeNotAdmitted, type}};
}

// Appends findings. It appends the finding about an unknown stage or type only once.
Said operator+(Said said, const Said& more) {
  for (const auto& one : more) {
    const bool unknown = one.first == Code::kStageUnknown || one.first == Code::kTypeUnknown;
    if (!unknown || std::count(said.begin(), said.end(), one) == 0) said.push_back(one);
  }
  return said;
}

template <class F>
void forEachStageAndType(F f) {
  for (int stage : rowsAndUnknown(kTypesOfStage)) {
    for (int type : rowsAndUnknown(kMatchesOfType)) f(stage, type);
  }
}

void expectAdmitted(const Report& report, int stage, int type) {
  for (const Finding& finding : report.findings) {
    CodeSet expected;
    if (finding.code == Code::kMatchNotAdmitted) expected = kMatchesOfType[unsigned(type)];
    if (finding.code == Code::kActionNotAdmitted) expected = kActionsOfStage[unsigned(stage)];
    if (finding.code == Code::kPolicerStage) expected = kPolicersOfStage[unsigned(stage)];
    if (finding.code == Code::kPolicerStage) expected.insert(2);
    if (finding.code == Code::kTypeNotAdmitted) expected = kTypesOfStage[unsigned(stage)];
    for (int i = 0; finding.code == Code::kStageUnknown && i < kStages; ++i)
      expected.insert(unsigned(i));
    for (int i = 0; finding.code == Code::kTypeUnknown && i < kTypes; ++i)
      expected.insert(unsigned(i));
    EXPECT_EQ(finding.admitted, Codes(expected.begin(), expected.end())) << finding;
  }
}

TEST(ExplainInsert, SaysAllThatTheTablesRefuse) {
  std::mt19937 random(1);
  for (RandomCases i(200); i.more(); ++i) {
    const Parts parts = randomParts(random);
    std::vector<std::pair<int, int>> places, expected;
    for (const Placement& place : placementsOf(parts.entry)) {
      places.emplace_back(place.stage, place.type);
    }
    forEachStageAndType([&](int stage, int type) {
      FiltersGroup group = groupOf(stage, type);
      const Report report = explainInsert(group, parts.entry);
      const auto s = unsigned(stage), t = unsigned(type);
      ASSERT_EQ(said(report), byType(parts, t) + byStage(parts, s)) << report;
      EXPECT_EQ(said(explainInsert(group.getStage(), group.getType(), parts.entry)), said(report));
      expectAdmitted(report, stage, type);
      ASSERT_EQ(resultOf(report), group.insertEntry(parts.entry)) << report;
      if (report.empty() && byHead(s, t).empty()) expected.emplace_back(stage, type);
    });
    EXPECT_EQ(places, expected);
  }
}

// Tests groups that can only be read from bytes, with stages and types that the setters refuse.
TEST(ExplainStageAndType, SayWhatStandsInTheWay) {
  std::mt19937 random(2);
  unsigned pairs = 0;
  forEachStageAndType([&](int stage, int type) {
    if (pairs++ % caseStep() != 0) return;
    FiltersGroup group = groupOf(stage, type);
    std::vector<Parts> held;
    for (unsigned id = 0; id < 40; ++id) {
      Parts parts = randomParts(random);
      parts.entry.setId(id);
      if (group.insertEntry(parts.entry) == FILTERS_OK) held.push_back(std::move(parts));
    }
    forEachStageAndType([&](int newStage, int newType) {
      const auto s = static_cast<filtersGroupStage_t>(newStage);
      const auto t = static_cast<filtersGroupType_t>(newType);
      Said ofStage = byHead(unsigned(newStage), unsigned(type));
      Said ofType = byHead(unsigned(stage), unsigned(newType));
      for (const Parts& parts : held) {
        ofStage = ofStage + byStage(parts, unsigned(newStage));
        ofType = ofType + byType(parts, unsigned(newType));
      }
      const Report stageReport = explainStage(group, s), typeReport = explainType(group, t);
      EXPECT_EQ(said(stageReport), ofStage) << stageReport;
      EXPECT_EQ(said(typeReport), ofType) << typeReport;
      expectAdmitted(stageReport, newStage, type);
      expectAdmitted(typeReport, stage, newType);
      EXPECT_EQ(resultOf(stageReport), FiltersGroup(group).setStage(s));
      EXPECT_EQ(resultOf(typeReport), FiltersGroup(group).setType(t));
    });
  });
}

TEST(CapabilityOf, IsWhatTheTablesSay) {
  forEachStageAndType([](int stage, int type) {
    const Capability capability = capabilityOf(static_cast<filtersGroupStage_t>(stage),
                                               static_cast<filtersGroupType_t>(type));
    const auto row = [](const Table& table, int key) {
      return key < int(table.size()) ? table[unsigned(key)] : CodeSet();
    };
    const auto codes = [](const auto& set) { return CodeSet(set.begin(), set.end()); };
    EXPECT_EQ(capability.valid, byHead(unsigned(stage), unsigned(type)).empty());
    EXPECT_EQ(codes(capability.matches), row(kMatchesOfType, type));
    EXPECT_EQ(codes(capability.actions), row(kActionsOfStage, stage));
    EXPECT_EQ(codes(capability.types), row(kTypesOfStage, stage));
    CodeSet policers;
    for (policer::Stage of : capability.policers) policers.insert(static_cast<unsigned>(of));
    for (unsigned of = 0; of < 3; ++of) {
      const filtersErr_t verdict = FiltersGroup(0).groupPolicerValidation(
          policerAt(policer::Stage(of)), static_cast<filtersGroupStage_t>(stage));
      // A policer with stage None is admitted even at an unknown stage.
      const bool listed = policers.count(of) != 0 || (stage == kUnknown && of == 2);
      EXPECT_EQ(listed, verdict == FILTERS_OK) << stage << ' ' << of;
    }
  });
}

TEST(ExplainMatches, NamesEveryPairThatMayNotStandTogether) {
  std::mt19937 random(3);
  for (int i = 0; i < 500; ++i) {
    Codes codes = {FILTERS_MATCH_TTL, FILTERS_MATCH_DST_L4_PORT_RANGE};
    for (const CodeSet& pair : kExcludedPairs) codes.insert(codes.end(), pair.begin(), pair.end());
    std::shuffle(codes.begin(), codes.end(), random);
    codes.resize(1 + random() % codes.size());
    auto matches = matchesOf(codes);
    matches[FILTERS_MATCH_TPID];  // a null pointer
    std::set<CodeSet> pairs, expected;
    const Report report = explainMatches(matches);
    for (const Finding& finding : report.findings) {
      pairs.insert({finding.offender, finding.others.at(0)});
      EXPECT_EQ(finding.code, finding.offender == FILTERS_MATCH_DST_L4_PORT_RANGE
                                  ? Code::kDstPortConflict
                                  : Code::kIpVersionConflict);
    }
    for (const CodeSet& pair : kExcludedPairs) {
      const auto there = [&](unsigned code) { return matches.count(filtersMatch_t(code)) != 0; };
      if (std::all_of(pair.begin(), pair.end(), there)) expected.insert(pair);
    }
    EXPECT_EQ(pairs, expected) << report;
    EXPECT_EQ(resultOf(report), FiltersEntry().setMatches(matches));
  }
}

// The checks use the code of the match, and not the key under which the map has the match.
TEST(ExplainMatches, GoesByTheMatchesOwnCodes) {
  FiltersEntry::Matches matches;
  matches[filtersMatch_t(1000)] =
      std::move(matchesOf({FILTERS_MATCH_SRC_IPV4})[FILTERS_MATCH_SRC_IPV4]);
  matches[filtersMatch_t(1001)] =
      std::move(matchesOf({FILTERS_MATCH_SRC_IPV6})[FILTERS_MATCH_SRC_IPV6]);
  matches[filtersMatch_t(1002)] =
      std::move(matchesOf({FILTERS_MATCH_SRC_IPV4})[FILTERS_MATCH_SRC_IPV4]);
  EXPECT_EQ(said(explainMatches(matches)),
            Said({{Code::kIpVersionConflict, FILTERS_MATCH_SRC_IPV6}}));
}

TEST(ExplainMatch, SaysWhatIsInTheWay) {
  for (unsigned held : kMatchCodes) {
    for (unsigned added : kMatchCodes) {
      FiltersEntry entry = entryOf({held});
      const Report report = explainMatch(entry, filtersMatch_t(added));
      EXPECT_EQ(report.empty(), kExcludedPairs.count({held, added}) == 0) << held << ' ' << added;
      EXPECT_EQ(resultOf(report), entry.copyMatches(matchesOf({added})));
      for (const Finding& finding : report.findings) EXPECT_EQ(finding.others, Codes{held});
    }
  }
  const Report unknown = explainMatch(FiltersEntry(1), filtersMatch_t(kUnknown));
  EXPECT_EQ(resultOf(unknown), FILTERS_ERR_INVALID);
  EXPECT_EQ(said(unknown), Said({{Code::kMatchCodeUnknown, kUnknown}}));
  EXPECT_EQ(explainMatch(entryOf({FILTERS_MATCH_SRC_IPV4, FILTERS_MATCH_DST_IPV4}),
                         FILTERS_MATCH_SRC_IPV6)
                .findings.size(),
            2u);
}

TEST(Explain, SaysEachSentence) {
  const FiltersEntry entry = fullEntry();
  Sentences said;
  for (const auto& [stage, type] : {std::pair<int, int>(kLookup, 3), {kUnknown, kUnknown}}) {
    const FiltersGroup group = groupOf(stage, type);
    said.add(explainInsert(group, entry));
    said.add(explainStage(group, group.getStage()));
  }
  for (const unsigned code :
       {FILTERS_MATCH_SRC_IPV6, FILTERS_MATCH_DST_L4_PORT_RANGE, filtersMatch_t(kUnknown)}) {
    said.add(explainMatch(entry, filtersMatch_t(code)));
  }
  for (const int type : {0, 1}) said.add(explainCounter(entry, {1, counter_type_t(type)}));
  said.expectGolden("sentences_explain.txt");
}

TEST(ExplainCounter, NamesTheHolder) {
  FiltersEntry entry = fullEntry();  // 2 counts octets that are not green, 300 packets
  for (int type = 0; type < 10; ++type) {
    for (const auto id : std::vector<unsigned short>{1, 2, 300}) {
      const Counter counter(id, counter_type_t(type));
      const Report report = explainCounter(entry, counter);
      EXPECT_EQ(resultOf(report), FiltersEntry(entry).setCounter(counter)) << type << ' ' << id;
      if (type != 1 && type != 8 && type != 0) continue;
      const auto& finding = report.findings.at(0);
      EXPECT_EQ(finding.offender, id);
      EXPECT_EQ(finding.code, type == 0 ? Code::kCounterTypeInvalid : Code::kCounterTypeTaken);
      EXPECT_EQ(finding.others, type == 0 ? Codes() : type == 1 ? Codes{300} : Codes{2});
    }
  }
}

}  // namespace
