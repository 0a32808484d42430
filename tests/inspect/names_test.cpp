// Names and reports, which the forms of other programs are made of.

#include <filter_inspect/filter_names.h>
#include <filter_inspect/filter_report.h>
#include <gtest/gtest.h>

#include <set>
#include <sstream>

using namespace FiltersCommon;
using namespace FiltersInspect;

namespace {

template <class Enum>
class NamesTest : public testing::Test {};
using Enums = testing::Types<filtersErr_t, filtersGroupStage_t, filtersGroupType_t, filtersMatch_t,
                             filtersAction_t, counter_type_t, cp2cpuCancelParam_t, l2SrcEntryType_t,
                             vlan_tagging_t, en_Resolution, en_StpState, en_ForwardingType,
                             port_type_t, policer::Stage>;
TYPED_TEST_SUITE(NamesTest, Enums);

TYPED_TEST(NamesTest, LeadBothWays) {
  std::set<std::string_view> names;
  for (const auto& [code, name] : namesOf<TypeParam>()) {
    EXPECT_EQ(nameOf(code), name);
    EXPECT_EQ(fromName<TypeParam>(name), code);
    EXPECT_EQ(name.data()[name.size()], '\0') << name;
    EXPECT_EQ(name.find_first_not_of("abcdefghijklmnopqrstuvwxyz0123456789_"), name.npos) << name;
    EXPECT_TRUE(names.insert(name).second) << name;
  }
  EXPECT_EQ(nameOf(static_cast<TypeParam>(1000)), "");
  for (const char* none : {"", "None", " none", "1000", "FILTERS_OK"}) {
    EXPECT_EQ(fromName<TypeParam>(none), std::nullopt) << none;
  }
}

// Other programs read these.
TEST(NamesTest, AreTheEnumeratorsWithoutTheirPrefix) {
  EXPECT_EQ(nameOf(FILTERS_MATCH_DST_L4_PORT), "dst_l4_port");
  EXPECT_EQ(nameOf(FILTERS_MATCH_CPU_INJECTED_PACKETS), "cpu_injected_packets");
  EXPECT_EQ(nameOf(FILTERS_ACTION_L2_TO_CPU_DROP), "l2_to_cpu_drop");
  EXPECT_EQ(nameOf(FILTERS_ERR_POLICER_STAGE), "policer_stage");
  EXPECT_EQ(nameOf(FILTERS_RESOLUTION_L2_UNKNOWN_UNICAST), "l2_unknown_unicast");
}

TEST(Describe, HasASentenceForEachResult) {
  std::set<std::string_view> sentences = {describe(static_cast<filtersErr_t>(-1))};
  for (const auto& [result, name] : namesOf<filtersErr_t>()) {
    EXPECT_TRUE(sentences.insert(describe(result)).second) << name;
    EXPECT_EQ(describe(result).back(), '.') << name;
  }
}

}  // namespace
