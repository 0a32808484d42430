#include "entry_samples.h"

namespace {

using namespace FiltersCommon;
using namespace catalogue;
using policer::Action, policer::Color, policer::Mode, policer::Policer, policer::Stage;

const Policer kPolicer(300, Stage::Egress, Mode::Flow(1000, 1500),
                       {Action::SetPcp(Color::Green, 255), Action::SetDscp(Color::Yellow, 46)});
const std::string kHead = "  =FiltersEntry=\n    ID: 0\n    Priority: 0\n";

// Deliberate: after a TPID, the stream stays hexadecimal. All later numbers of this entry and the
// next print in hexadecimal, except a policer's id and code points.
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
  EXPECT_EQ(os.str(),
            "  =FiltersEntry=\n    ID: 4000000000\n    Priority: 10\n"
            "  =Policer=\nPolicer Id: 300\nStage: Egress\n"
            "Mode: Flow (CIR: 1000 kbits/s, CBS: 1500 bytes)\n"
            "Actions:\n+ Green Set PCP 255\n+ Yellow Set DSCP 46\n"
            "  =Counter=\nID: 300\nType: Not Red Octets\n"
            "    =MatchTPID=\n      Match Type ID: 3\n      TPID: 0x8100\n"
            "    =ActionSetDSCP=\n      Action Type ID: 8\n      DSCP: 2e\n"
            "  =Parent=\nPolicer Id: 300\nStage: Egress\n"
            "Mode: Flow (CIR: 3e8 kbits/s, CBS: 5dc bytes)\n"
            "Actions:\n+ Green Set PCP 255\n+ Yellow Set DSCP 46\n"
            "  =FiltersEntry=\n    ID: 14\n    Priority: 15\n"
            "  =Counter=\nID: 12c\nType: Octets\n");
}

// The flags of the stream do not change the TPID, but they change the numbers after it.
TEST(EntryPrinting, WritesATpidInSmallDigitsAndLeavesTheFlagsOfTheStream) {
  std::ostringstream os;
  os << std::uppercase << std::showbase << MatchTPID(0x88a8) << MatchTTL(30);
  EXPECT_EQ(os.str(),
            "    =MatchTPID=\n      Match Type ID: 3\n      TPID: 0x88a8\n"
            "    =MatchTTL=\n      Match Type ID: 0X1A\n      TTL: 0X1E\n");
}

TEST(EntryPrinting, WritesEveryKindOfPolicerAndOfTheEntrysOwnNoneWithoutStage) {
  const std::pair<Policer, const char*> cases[] = {
      {Policer(), "Invalid\nStage: None\nMode: None\nActions:\n"},
      {{4294967294, Stage::None, Mode::SrTcm(11, 12, 13), {Action::Drop(Color::Red)}},
       "4294967294\nStage: None\nMode: SrTcm (CIR: 11 kbits/s, CBS: 12 bytes, EBS: 13 bytes)\n"
       "Actions:\n+ Red Drop\n"},
      {{0, Stage::None, Mode::TrTcm(21, 22, 23, 24), {Action::SetPcp(Color::Yellow, 7)}},
       "0\nStage: None\nMode: TrTcm (CIR: 21 kbits/s, CBS: 22 bytes, PIR: 23 kbits/s, "
       "PBS: 24 bytes)\nActions:\n+ Yellow Set PCP 7\n"},
      {{1, Stage::Ingress, Mode::TrTcmDs(31, 32, 33, 34), {Action::SetDscp(Color::Green, 255)}},
       "1\nStage: Ingress\nMode: TrTcmDs (CIR: 31 kbits/s, CBS: 32 bytes, EIR: 33 kbits/s, "
       "EBS: 34 bytes)\nActions:\n+ Green Set DSCP 255\n"},
      // A stage without a name prints as Ingress. A mode, a colour or an action without a name
      // prints nothing.
      {{3, Stage{3}, Mode(policer::ModeType{5}), {Action(policer::ActionType{3}, Color{3}, 9)}},
       "3\nStage: Ingress\nMode: \nActions:\n+  \n"},
  };
  for (const auto& [policer, text] : cases) {
    const std::string block = std::string("Policer Id: ") + text;
    const bool staged = policer.GetStage() != Stage::None;
    FiltersEntry entry;
    entry.setPolicer(policer);
    entry.setPolicerParent(policer);
    EXPECT_EQ(printed(entry),
              kHead + (staged ? "  =Policer=\n" + block : "") + "  =Parent=\n" + block);
  }
}

// Each line is flushed before the next one begins.
TEST(EntryPrinting, PadsItsFirstLineAloneToAWidthAndFlushesTheLinesOfItsOwn) {
  CountingBuffer buffer;
  FiltersEntry entry;
  entry.setPolicer(kPolicer);
  EXPECT_EQ(entry.setCounter({2, FILTERS_COUNTER_TYPE_PACKETS}), FILTERS_OK);
  entry.setPolicerParent(kPolicer);
  std::ostream(&buffer) << std::setfill('.') << std::setw(20) << entry;
  EXPECT_EQ(buffer.str(), "...." + printed(entry));
  EXPECT_EQ(buffer.flushes, 3 + 2 + 1 + 2);  // head, policer, counter, parent
}

}  // namespace
