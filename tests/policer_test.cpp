// The stand-in for policers.

#include "policer/policer.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace policer {
namespace {

constexpr std::uint32_t kMax = UINT32_MAX;

Policer withMode(const Mode& mode) { return Policer(7, Stage::Ingress, mode, {}); }
Policer withActions(const std::vector<Action>& actions) {
  return Policer(7, Stage::Egress, Mode::Flow(1000, 1500), actions);
}

TEST(Policer, IsNoPolicerByDefaultAndFromBytesThatAreNone) {
  const Policer none;
  EXPECT_TRUE(none.GetId() == 4294967295U && none.GetStage() == Stage::None);
  EXPECT_TRUE(none.GetMode() == Mode::None() && none.GetActions().empty());
  const std::string whole = withActions({Action::Drop(Color::Red)}).Serialize();
  EXPECT_EQ(Policer(whole + '\0'), none);
  for (std::size_t size = 0; size < whole.size(); ++size) {
    EXPECT_EQ(Policer(whole.substr(0, size)), none) << size;
  }
}

// Most differ from another one in a single member.
TEST(Policer, EqualsOneMadeFromItsOwnBytesAndNoOther) {
  const Policer policers[] = {
      Policer(),
      Policer(0, Stage::None, Mode::None(), {}),
      Policer(kMax, static_cast<Stage>(kMax), Mode::None(), {}),
      withMode(Mode::Flow(1000, 1500)),
      withMode(Mode::Flow(1000, 1501)),
      withMode(Mode::SrTcm(1, 2, 3)),
      withMode(Mode::TrTcm(1, 2, 3, 4)),
      withMode(Mode::TrTcmDs(1, 2, 3, 4)),
      withMode(Mode(static_cast<ModeType>(kMax))),
      withActions({Action::Drop(Color::Red)}),
      withActions({Action::SetPcp(Color::Green, 255), Action::SetDscp(Color::Yellow, 46)}),
      withActions({Action::SetDscp(Color::Yellow, 46), Action::SetPcp(Color::Green, 255)}),
      withActions({Action(static_cast<ActionType>(kMax), static_cast<Color>(kMax), 9)}),
  };
  for (const Policer& one : policers) {
    for (const Policer& other : policers) {
      const Policer read(other.Serialize());
      EXPECT_EQ(one == read, &one == &other);
      EXPECT_EQ(one != read, &one != &other);
    }
  }
}

TEST(Policer, HoldsWhatItIsMadeOf) {
  const auto isMadeOf = [](const Mode& mode, std::uint32_t ebs, std::uint32_t pir,
                           std::uint32_t pbs, std::uint32_t eir) {
    return mode.GetCir() == 1 && mode.GetCbs() == 2 && mode.GetEbs() == ebs &&
           mode.GetPir() == pir && mode.GetPbs() == pbs && mode.GetEir() == eir;
  };
  EXPECT_TRUE(isMadeOf(Mode::Flow(1, 2), 0, 0, 0, 0));
  EXPECT_TRUE(isMadeOf(Mode::SrTcm(1, 2, 3), 3, 0, 0, 0));
  EXPECT_TRUE(isMadeOf(Mode::TrTcm(1, 2, 3, 4), 0, 3, 4, 0));
  EXPECT_TRUE(isMadeOf(Mode::TrTcmDs(1, 2, 3, 4), 4, 0, 0, 3));
  const Action pcp = Action::SetPcp(Color::Red, 5), dscp = Action::SetDscp(Color::Green, 46);
  EXPECT_TRUE(pcp.GetType() == ActionType::SetPcp && pcp.GetPcp() == 5 && pcp.GetDscp() == 0);
  EXPECT_TRUE(dscp.GetColor() == Color::Green && dscp.GetPcp() == 0 && dscp.GetDscp() == 46);
}

}  // namespace
}  // namespace policer
