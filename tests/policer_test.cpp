#include "policer/policer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace policer {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

static_assert(std::is_trivially_copyable_v<Mode> && std::is_trivially_copyable_v<Action>);
static_assert(std::is_nothrow_move_constructible_v<Policer> &&
              std::is_nothrow_move_assignable_v<Policer>);
static_assert(!std::is_convertible_v<std::string, Policer> &&
              !std::is_convertible_v<ModeType, Mode>);

constexpr std::uint32_t kMax = UINT32_MAX;

// Mode and action values that have no name.
constexpr auto kOddMode = static_cast<ModeType>(5);
constexpr auto kOddAction = static_cast<ActionType>(3);
constexpr auto kOddColor = static_cast<Color>(3);
constexpr auto kOddStage = static_cast<Stage>(3);

// Policers of which no two are equal; most differ from another one in a single member.
std::vector<Policer> DistinctPolicers() {
  const Mode flow = Mode::Flow(1000, 1500);
  const auto with_mode = [](const Mode& mode) { return Policer(7, Stage::Ingress, mode, {}); };
  const auto with_actions = [&flow](std::vector<Action> actions) {
    return Policer(7, Stage::Ingress, flow, std::move(actions));
  };
  return {
      Policer(),
      Policer(0, Stage::None, Mode::None(), {}),
      Policer(kMax, Stage::Egress, Mode::None(), {}),
      Policer(kMax, kOddStage, Mode::None(), {}),
      Policer(kMax, static_cast<Stage>(kMax), Mode::None(), {}),
      with_mode(flow),
      with_mode(Mode::Flow(1001, 1500)),
      with_mode(Mode::Flow(1000, 1501)),
      with_mode(Mode::SrTcm(1, 2, 3)),
      with_mode(Mode::SrTcm(1, 2, 4)),
      with_mode(Mode::TrTcm(1, 2, 3, 4)),
      with_mode(Mode::TrTcm(1, 2, 5, 4)),
      with_mode(Mode::TrTcm(1, 2, 3, 5)),
      with_mode(Mode::TrTcmDs(1, 2, 3, 4)),
      with_mode(Mode::TrTcmDs(1, 2, 5, 4)),
      with_mode(Mode::TrTcmDs(1, 2, 3, 5)),
      with_mode(Mode::TrTcm(kMax, kMax, kMax, kMax)),
      with_mode(Mode(kOddMode)),
      with_mode(Mode(static_cast<ModeType>(kMax))),
      with_actions({Action::Drop(Color::Red)}),
      with_actions({Action::Drop(Color::Yellow)}),
      with_actions({Action::SetPcp(Color::Red, 0)}),
      with_actions({Action::SetPcp(Color::Red, 255)}),
      with_actions({Action::SetDscp(Color::Red, 255)}),
      with_actions({Action::SetPcp(Color::Green, 5), Action::SetDscp(Color::Yellow, 46)}),
      with_actions({Action::SetDscp(Color::Yellow, 46), Action::SetPcp(Color::Green, 5)}),
      with_actions({Action(kOddAction, kOddColor, 9)}),
      with_actions({Action(kOddAction, kOddColor, 10)}),
      with_actions({Action(static_cast<ActionType>(kMax), static_cast<Color>(kMax), 255)}),
      with_actions(std::vector<Action>(300, Action::Drop(Color::Green))),
  };
}

// Reads bytes that are no policer, and makes sure that nobody hears of it.
void ExpectReadsAsDefault(const std::string& bytes) {
  testing::internal::CaptureStderr();
  const Policer policer(bytes);
  const std::string complaints = testing::internal::GetCapturedStderr();
  EXPECT_EQ(policer, Policer());
  EXPECT_THAT(complaints, IsEmpty());
}

TEST(PolicerTest, IsNoPolicerAtAllByDefault) {
  const Policer policer;
  EXPECT_EQ(policer.GetId(), 4294967295U);
  EXPECT_EQ(policer.GetStage(), Stage::None);
  EXPECT_EQ(policer.GetMode(), Mode::None());
  EXPECT_THAT(policer.GetActions(), IsEmpty());
}

TEST(PolicerTest, HoldsWhatItIsMadeOf) {
  const std::vector<Action> actions = {Action::Drop(Color::Red), Action::SetPcp(Color::Yellow, 3)};
  const Policer policer(7, Stage::Egress, Mode::Flow(1000, 1500), actions);
  EXPECT_EQ(policer.GetId(), 7U);
  EXPECT_EQ(policer.GetStage(), Stage::Egress);
  EXPECT_EQ(policer.GetMode(), Mode::Flow(1000, 1500));
  EXPECT_EQ(policer.GetActions(), actions);
}

TEST(PolicerTest, ModesHaveTheFiguresTheyNeedAndNoOthers) {
  const struct {
    Mode mode;
    ModeType type;
    std::vector<std::uint32_t> figures;  // CIR, CBS, EBS, PIR, PBS, EIR
  } cases[] = {{Mode::SrTcm(1, 2, 3), ModeType::SrTcm, {1, 2, 3, 0, 0, 0}},
               {Mode::TrTcm(1, 2, 3, 4), ModeType::TrTcm, {1, 2, 0, 3, 4, 0}},
               {Mode::TrTcmDs(1, 2, 3, 4), ModeType::TrTcmDs, {1, 2, 4, 0, 0, 3}},
               {Mode::Flow(1, 2), ModeType::Flow, {1, 2, 0, 0, 0, 0}},
               {Mode::None(), ModeType::None, {0, 0, 0, 0, 0, 0}},
               {Mode(kOddMode), kOddMode, {0, 0, 0, 0, 0, 0}}};
  for (const auto& [made, type, figures] : cases) {
    SCOPED_TRACE(static_cast<std::uint32_t>(type));
    const Policer original(7, Stage::Ingress, made, {});
    const Policer read(original.Serialize());
    for (const Mode& mode : {original.GetMode(), read.GetMode()}) {
      EXPECT_EQ(mode.GetType(), type);
      EXPECT_EQ(figures, (std::vector{mode.GetCir(), mode.GetCbs(), mode.GetEbs(), mode.GetPir(),
                                      mode.GetPbs(), mode.GetEir()}));
    }
  }
}

TEST(PolicerTest, ActionsAnswerForTheirOwnTypeOnly) {
  const struct {
    Action action;
    ActionType type;
    Color color;
    int pcp;
    int dscp;
  } cases[] = {{Action::Drop(Color::Red), ActionType::Drop, Color::Red, 0, 0},
               {Action::SetPcp(Color::Yellow, 5), ActionType::SetPcp, Color::Yellow, 5, 0},
               {Action::SetDscp(Color::Green, 46), ActionType::SetDscp, Color::Green, 0, 46},
               {Action(ActionType::SetPcp, kOddColor, 255), ActionType::SetPcp, kOddColor, 255, 0},
               {Action(kOddAction, Color::Red, 9), kOddAction, Color::Red, 0, 0}};
  for (const auto& [action, type, color, pcp, dscp] : cases) {
    SCOPED_TRACE(static_cast<std::uint32_t>(type));
    EXPECT_EQ(action.GetType(), type);
    EXPECT_EQ(action.GetColor(), color);
    EXPECT_EQ(action.GetPcp(), pcp);
    EXPECT_EQ(action.GetDscp(), dscp);
  }
}

TEST(PolicerTest, EqualsOneMadeFromItsOwnBytesAndNoOther) {
  const std::vector<Policer> policers = DistinctPolicers();
  for (std::size_t i = 0; i < policers.size(); ++i) {
    for (std::size_t j = 0; j < policers.size(); ++j) {
      SCOPED_TRACE(testing::Message() << i << " and " << j);
      const Policer read(policers[j].Serialize());
      EXPECT_EQ(policers[i] == read, i == j);
      EXPECT_EQ(policers[i] != read, i != j);
      EXPECT_EQ(policers[i].Serialize() == read.Serialize(), i == j);
    }
  }
}

TEST(PolicerTest, CopiesAreIndependentAndMovesKeepEverything) {
  const Policer original(7, Stage::Ingress, Mode::Flow(1, 2), {Action::Drop(Color::Red)});
  Policer assigned = original;
  Policer moved = std::move(assigned);
  EXPECT_EQ(moved, original);
  assigned = Policer();
  EXPECT_EQ(moved, original);
  EXPECT_NE(assigned, original);
}

TEST(PolicerTest, BytesCutShortAnywhereGiveADefaultPolicer) {
  for (const Policer& policer : DistinctPolicers()) {
    const std::string bytes = policer.Serialize();
    for (std::size_t size = 0; size < bytes.size(); ++size) {
      SCOPED_TRACE(testing::Message() << size << " of " << bytes.size() << " bytes");
      ExpectReadsAsDefault(bytes.substr(0, size));
    }
  }
}

TEST(PolicerTest, BytesThatAreNoPolicerGiveADefaultPolicer) {
  const std::string whole =
      Policer(7, Stage::Ingress, Mode::Flow(1, 2), {Action::Drop(Color::Red)}).Serialize();
  std::string many_empty_actions;
  for (int i = 0; i < (1 << 19); ++i) {
    many_empty_actions.append("\x0a\x00", 2);
  }
  const std::string cases[] = {whole + '\0',    whole + '\x0a',     std::string(1, '\0'),
                               "not a policer", many_empty_actions, many_empty_actions + whole};
  for (const std::string& bytes : cases) {
    SCOPED_TRACE(bytes.substr(0, 40));
    ExpectReadsAsDefault(bytes);
  }
}

TEST(PolicerTest, RandomBytesGiveADefaultPolicer) {
  std::mt19937 random(1);
  for (int i = 0; i < 20000; ++i) {
    std::string bytes(random() % 64, '\0');
    for (char& byte : bytes) {
      byte = static_cast<char>(random());
    }
    ASSERT_EQ(Policer(bytes), Policer()) << testing::PrintToString(bytes);
  }
}

// Damage need not be noticeable, but what is read must be a policer like any other.
TEST(PolicerTest, DamagedBytesGiveSomePolicerThatSurvivesItsOwnBytes) {
  const Policer policer(7, Stage::Ingress, Mode::TrTcm(1, 300, 70000, kMax),
                        {Action::SetPcp(Color::Red, 5), Action::SetDscp(Color::Green, 200)});
  const std::string whole = policer.Serialize();
  for (std::size_t i = 0; i < whole.size(); ++i) {
    for (int value = 0; value < 256; ++value) {
      std::string bytes = whole;
      bytes[i] = static_cast<char>(value);
      const Policer read(bytes);
      ASSERT_EQ(Policer(read.Serialize()), read) << "byte " << i << " set to " << value;
    }
  }
}

// The bytes of Policer(9, None, None, {Action(SetPcp, Red, value)}), written out by hand, with the
// value as a two-byte number.
std::string BytesWithValue(unsigned value) {
  const std::string low(1, static_cast<char>(0x80U | (value & 0x7fU)));
  const std::string high(1, static_cast<char>(value >> 7));
  return std::string("\x0a\x07\x08\x01\x10\x00\x18", 7) + low + high +
         std::string("\x12\x02\x08\x04\x18\x02\x78\x09", 8);
}

TEST(PolicerTest, ActionValuesThatFitNoByteGiveADefaultPolicer) {
  const Policer largest(BytesWithValue(255));
  EXPECT_EQ(largest.GetId(), 9U);
  EXPECT_THAT(largest.GetActions(), ElementsAre(Action::SetPcp(Color::Red, 255)));
  for (const unsigned value : {256U, 257U, 511U, 512U, 16383U}) {
    SCOPED_TRACE(value);
    ExpectReadsAsDefault(BytesWithValue(value));
  }
}

// Mode SrTcm with all six figures, of which it has a use for three.
TEST(PolicerTest, FiguresAModeHasNoUseForAreNotReadFromBytes) {
  const std::string bytes(
      "\x12\x0e\x08\x00\x10\x01\x18\x02\x20\x03\x28\x04\x30\x05\x38\x06\x18\x02\x78\x09", 20);
  EXPECT_EQ(Policer(bytes), Policer(9, Stage::None, Mode::SrTcm(1, 2, 3), {}));
}

}  // namespace
}  // namespace policer
