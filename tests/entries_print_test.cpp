#include <filter_common/filter_entries.h>

#include <gtest/gtest.h>

#include <iomanip>
#include <sstream>
#include <string>

#include "entry_samples.h"

namespace {

using namespace FiltersCommon;
using namespace catalogue;

const policer::Policer kPolicer(300, policer::Stage::Egress, policer::Mode::Flow(1000, 1500),
                                {policer::Action::SetPcp(policer::Color::Green, 255),
                                 policer::Action::SetDscp(policer::Color::Yellow, 46)});
const policer::Policer kUnstaged(8, policer::Stage::None, policer::Mode::None(), {});

// Deliberate: the TPID leaves the stream in hexadecimal. What follows prints so, in this entry and
// the next, but for a policer's id and code points.
TEST(EntryPrinting, WritesEverySectionInItsPlaceAndHexadecimalAfterATpid) {
  FiltersEntry first(4000000000);
  first.setPriority(10);
  first.setPolicer(kPolicer);
  first.setPolicerParent(kPolicer);
  EXPECT_EQ(first.setCounter({300, FILTERS_COUNTER_TYPE_NOT_RED_OCTETS}), FILTERS_OK);
  EXPECT_EQ(first.setMatch(MatchTPID(0x8100)), FILTERS_OK);
  EXPECT_EQ(first.setAction(ActionSetDSCP(46)), FILTERS_OK);
  FiltersEntry second(20);
  second.setPriority(21);
  EXPECT_EQ(second.setCounter({300, FILTERS_COUNTER_TYPE_OCTETS}), FILTERS_OK);
  std::ostringstream os;
  os << first << second;
  EXPECT_EQ(os.str(), R"(  =FiltersEntry=
    ID: 4000000000
    Priority: 10
  =Policer=
Policer Id: 300
Stage: Egress
Mode: Flow (CIR: 1000 kbits/s, CBS: 1500 bytes)
Actions:
+ Green Set PCP 255
+ Yellow Set DSCP 46
  =Counter=
ID: 300
Type: Not Red Octets
    =MatchTPID=
      Match Type ID: 3
      TPID: 0x8100
    =ActionSetDSCP=
      Action Type ID: 8
      DSCP: 2e
  =Parent=
Policer Id: 300
Stage: Egress
Mode: Flow (CIR: 3e8 kbits/s, CBS: 5dc bytes)
Actions:
+ Green Set PCP 255
+ Yellow Set DSCP 46
  =FiltersEntry=
    ID: 14
    Priority: 15
  =Counter=
ID: 12c
Type: Octets
)");
}

const std::string kHead = "  =FiltersEntry=\n    ID: 0\n    Priority: 0\n";

TEST(EntryPrinting, LeavesOutAPolicerWithoutStageButNeverAParent) {
  FiltersEntry entry;
  entry.setPolicer(kUnstaged);
  EXPECT_EQ(printed(entry), kHead);
  entry.setPolicerParent(kUnstaged);
  EXPECT_EQ(printed(entry),
            kHead + "  =Parent=\nPolicer Id: 8\nStage: None\nMode: None\nActions:\n");
}

TEST(EntryPrinting, WritesEveryKindOfPolicer) {
  using policer::Action, policer::Color, policer::Mode, policer::Stage;
  const struct {
    policer::Policer policer;
    const char* text;
  } cases[] = {
      {policer::Policer(), "Invalid\nStage: None\nMode: None\nActions:\n"},
      {{4294967294, Stage::Egress, Mode::SrTcm(11, 12, 13), {Action::Drop(Color::Red)}},
       "4294967294\nStage: Egress\nMode: SrTcm (CIR: 11 kbits/s, CBS: 12 bytes, EBS: 13 bytes)\n"
       "Actions:\n+ Red Drop\n"},
      {{0, Stage::Ingress, Mode::TrTcm(21, 22, 23, 24), {Action::SetPcp(Color::Yellow, 7)}},
       "0\nStage: Ingress\nMode: TrTcm (CIR: 21 kbits/s, CBS: 22 bytes, PIR: 23 kbits/s, "
       "PBS: 24 bytes)\nActions:\n+ Yellow Set PCP 7\n"},
      {{1,
        Stage::None,
        Mode::TrTcmDs(31, 32, 33, 34),
        {Action::SetDscp(Color::Green, 255), Action::Drop(Color::Red)}},
       "1\nStage: None\nMode: TrTcmDs (CIR: 31 kbits/s, CBS: 32 bytes, EIR: 33 kbits/s, "
       "EBS: 34 bytes)\nActions:\n+ Green Set DSCP 255\n+ Red Drop\n"},
      // Values without a name: a stage reads as Ingress, the others as nothing.
      {{3, Stage{3}, Mode(policer::ModeType{5}), {Action(policer::ActionType{3}, Color{3}, 9)}},
       "3\nStage: Ingress\nMode: \nActions:\n+  \n"},
  };
  for (const auto& c : cases) {
    FiltersEntry entry;
    entry.setPolicerParent(c.policer);
    EXPECT_EQ(printed(entry), kHead + "  =Parent=\nPolicer Id: " + c.text);
  }
}

TEST(EntryPrinting, PadsItsFirstLineAloneToAWidth) {
  FiltersEntry entry;
  entry.setPolicerParent(kUnstaged);
  std::ostringstream os;
  os << std::setfill('.') << std::setw(20) << entry;
  EXPECT_EQ(os.str(), "...." + printed(entry));
}

// A line is on its way to the console before the next one is begun.
TEST(EntryPrinting, FlushesTheLinesOfItsOwn) {
  struct : std::stringbuf {
    int sync() override { return ++flushes, 0; }
    int flushes = 0;
  } buffer;
  FiltersEntry entry;
  entry.setPolicer(kPolicer);
  EXPECT_EQ(entry.setCounter({2, FILTERS_COUNTER_TYPE_PACKETS}), FILTERS_OK);
  entry.setPolicerParent(kUnstaged);
  std::ostream(&buffer) << entry;
  EXPECT_EQ(buffer.flushes, 3 + 2 + 1 + 2);  // head, policer, counter, parent
}

}  // namespace
