// Tests the stand-ins for the device's two libraries: the conversions of ids and policers and back,
// and the names and kinds of ids.

#include <gtest/gtest.h>
#include <limid/limid_standin.h>
#include <policer/policer.h>
#include <policer/policer_values.h>

namespace {

using namespace policer;

// Returns E, L, V or B for an id of a known kind, and a dash for any other id.
char kindOf(limid_t limid) {
  if (limid_is_from_type_ethernet(limid)) return 'E';
  if (limid_is_from_type(limid, limid_type_lag)) return 'L';
  if (limid_is_from_type(limid, limid_type_mpls_vpws)) return 'V';
  return limid_is_from_type(limid, limid_type_bridgedomain) ? 'B' : '-';
}

TEST(Limid, HasAKindANameAndAnIndexThatIsNoPort) {
  const auto expect = [](limid_t limid, char kind, const std::string& name) {
    EXPECT_EQ(kindOf(limid), kind) << name;
    std::string buffer(64, '#');
    EXPECT_NE(limid_to_intfname(limid, buffer.data(), name.size()), 0);
    EXPECT_EQ(buffer, std::string(64, '#')) << name;
    EXPECT_EQ(limid_to_intfname(limid, buffer.data(), name.size() + 1), 0);
    EXPECT_EQ(buffer, name + '\0' + std::string(63 - name.size(), '#'));
    limid_t index = 0, back = 0;
    EXPECT_TRUE(limid_to_ifindex(limid, &index) == 0 && limid_from_ifindex(&back, index) == 0);
    EXPECT_TRUE(limid_compare(back, limid) == 0 && kindOf(index) == '-') << name;
  };
  expect(limid_make_ethernet(65535), 'E', "eth-65535");
  expect(limid_make_lag(1), 'L', "lag-1");
  expect(limid_make_mpls_vpws(65535), 'V', "vpws-65535");
  expect(limid_make_bridgedomain(limid_bridgedomain_type_vpls, 65535), 'B', "vpls-65535");
  expect(limid_make_bridgedomain(limid_bridgedomain_type_vpls + 256, 9), 'B', "bd-9");
  expect(0xffffffff, '-', "limid-ffffffff");
}

// Each policer differs from the previous policer in only one member.
TEST(Policer, EqualsOneMadeFromItsOwnBytesAndNoOther) {
  const auto odd = static_cast<ActionType>(UINT32_MAX);
  const Policer policers[] = {
      Policer(),
      Policer(0, Stage::None, Mode::None(), {}),
      Policer(0, Stage{9}, Mode::None(), {}),
      Policer(0, Stage{9}, Mode::SrTcm(1, 2, 3), {}),
      Policer(0, Stage{9}, Mode::TrTcm(1, 2, 3, 4), {}),
      Policer(0, Stage{9}, Mode::TrTcmDs(1, 2, 3, 4), {}),
      Policer(0, Stage{9}, Mode::Flow(1, 2), {}),
      Policer(0, Stage{9}, Mode::Flow(1, 2), {Action::SetPcp(Color::Green, 255)}),
      Policer(0, Stage{9}, Mode::Flow(1, 2), {Action(odd, Color{9}, 255)}),
  };
  for (const Policer& one : policers) {
    for (const Policer& other : policers) {
      const Policer read(other.Serialize());
      EXPECT_EQ(one == read, &one == &other);
      EXPECT_EQ(one != read, &one != &other);
    }
  }
  EXPECT_EQ(MakePolicer({0, 9, 3, 1, 2, 0, 0, 0, 0, {{2, 1, 255}}}), policers[7]);
  EXPECT_EQ(MakePolicer({0, 9, 2, 1, 2, 7, 7, 3, 4, {}}), policers[5]);  // without pir and pbs
  const std::string whole = policers[7].Serialize();
  for (std::size_t size = 0; size < whole.size(); ++size) {
    EXPECT_EQ(Policer(whole.substr(0, size)), Policer()) << size;
  }
}

}  // namespace
