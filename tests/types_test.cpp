#include <filter_common/filter_types.h>

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <type_traits>
#include <utility>

namespace {

using namespace FiltersCommon;

template <class Enum, class Underlying>
constexpr bool isHeldIn = std::is_same_v<std::underlying_type_t<Enum>, Underlying>;

static_assert(isHeldIn<filtersErr_t, std::int32_t> && isHeldIn<counter_type_t, std::int32_t> &&
              isHeldIn<filtersGroupStage_t, std::int32_t> &&
              isHeldIn<filtersGroupType_t, std::int32_t>);
static_assert(isHeldIn<filtersMatch_t, std::uint32_t> && isHeldIn<filtersAction_t, std::uint32_t> &&
              isHeldIn<cp2cpuCancelParam_t, std::uint32_t> &&
              isHeldIn<l2SrcEntryType_t, std::uint32_t> &&
              isHeldIn<vlan_tagging_t, std::uint32_t> && isHeldIn<en_Resolution, std::uint32_t> &&
              isHeldIn<en_StpState, std::uint32_t> && isHeldIn<en_ForwardingType, std::uint32_t> &&
              isHeldIn<port_type_t, std::uint32_t>);
static_assert(std::is_same_v<filtersEntryId_t, std::uint32_t> &&
              std::is_same_v<filtersEntryPriority_t, std::uint32_t> &&
              std::is_same_v<filtersGroupId_t, std::uint16_t> &&
              std::is_same_v<filtersGroupPriority_t, std::uint16_t> &&
              std::is_same_v<l4port_t, std::uint16_t> && std::is_same_v<tpid_t, std::uint16_t>);
static_assert(sizeof(vlan_info_t) == 8 && offsetof(vlan_info_t, svc_vlan_type) == 0 &&
              offsetof(vlan_info_t, proto_cpu_vlan_type) == 4);

// The values stand on the wire and in other processes: whoever renumbers one has to do it twice.
// clang-format off
constexpr std::pair<std::int64_t, std::int64_t> kValues[] = {
    {FILTERS_OK, 0}, {FILTERS_ERR_NOT_FOUND, -3}, {FILTERS_ERR_INVALID, -4},
    {FILTERS_ERR_INVALID_ARGUMENT, -5}, {FILTERS_ERR_MATCH_NOT_ALLOWED, -6},
    {FILTERS_ERR_TYPE_NOT_ALLOWED, -7}, {FILTERS_ERR_INVALID_STAGE, -8},
    {FILTERS_ERR_ACTION_NOT_ALLOWED, -9}, {FILTERS_ERR_POLICER_STAGE, -10},
    {FILTERS_GROUP_STAGE_NONE, 0}, {FILTERS_GROUP_STAGE_LOOKUP, 1},
    {FILTERS_GROUP_STAGE_INGRESS, 2}, {FILTERS_GROUP_STAGE_EGRESS, 3},
    {FILTERS_GROUP_TYPE_NONE, 0}, {FILTERS_GROUP_TYPE_1, 1}, {FILTERS_GROUP_TYPE_2, 2},
    {FILTERS_GROUP_TYPE_3, 3}, {FILTERS_GROUP_TYPE_4, 4}, {FILTERS_GROUP_TYPE_5, 5},
    {FILTERS_GROUP_TYPE_6, 6}, {FILTERS_GROUP_TYPE_7, 7}, {FILTERS_GROUP_TYPE_8, 8},
    {FILTERS_GROUP_TYPE_9, 9}, {FILTERS_GROUP_TYPE_10, 10}, {FILTERS_GROUP_TYPE_11, 11},
    {FILTERS_MATCH_ALL, 0}, {FILTERS_MATCH_INGRESS_PORTS, 1}, {FILTERS_MATCH_EXTERNAL_VLAN_ID, 2},
    {FILTERS_MATCH_TPID, 3}, {FILTERS_MATCH_DST_MAC, 4}, {FILTERS_MATCH_DST_L4_PORT, 5},
    {FILTERS_MATCH_SRC_L4_PORT, 6}, {FILTERS_MATCH_SRC_MAC, 7},
    {FILTERS_MATCH_L2_SRC_ENTRY_TYPE, 8}, {FILTERS_MATCH_SRC_IPV4, 9}, {FILTERS_MATCH_DST_IPV4, 10},
    {FILTERS_MATCH_INTERNAL_VLAN_ID, 11}, {FILTERS_MATCH_PCP, 12}, {FILTERS_MATCH_INTERNAL_PCP, 13},
    {FILTERS_MATCH_SRC_IPV6, 14}, {FILTERS_MATCH_DST_IPV6, 15}, {FILTERS_MATCH_VLAN_TAGGING, 16},
    {FILTERS_MATCH_IP_PROTOCOL, 17}, {FILTERS_MATCH_PACKET_RES, 18}, {FILTERS_MATCH_MPLS_TERM, 19},
    {FILTERS_MATCH_TOS, 20}, {FILTERS_MATCH_VIRTUAL_PORT, 21}, {FILTERS_MATCH_EGRESS_PORTS, 22},
    {FILTERS_MATCH_INGRESS_STP_STATE, 23}, {FILTERS_MATCH_VLAN_INFO, 24},
    {FILTERS_MATCH_SRC_PORT, 25}, {FILTERS_MATCH_TTL, 26}, {FILTERS_MATCH_VRF_ID, 27},
    {FILTERS_MATCH_DROP, 28}, {FILTERS_MATCH_MY_STATION_HIT, 29}, {FILTERS_MATCH_CPU_PORT, 30},
    {FILTERS_MATCH_FORWARDING_TYPE, 31}, {FILTERS_MATCH_DESTINATION_CPU, 32},
    {FILTERS_MATCH_CPU_INJECTED_PACKETS, 33}, {FILTERS_MATCH_DST_L4_PORT_RANGE, 34},
    {FILTERS_ACTION_PERMIT, 0}, {FILTERS_ACTION_DENY, 1}, {FILTERS_ACTION_COPY_TO_CPU, 2},
    {FILTERS_ACTION_BLOCK_EGRESS_PORTS, 3}, {FILTERS_ACTION_COPY_TO_CPU_CANCEL, 4},
    {FILTERS_ACTION_SET_PCP, 5}, {FILTERS_ACTION_SET_PCP_AND_QUEUE, 6},
    {FILTERS_ACTION_SET_INNER_PCP, 7}, {FILTERS_ACTION_SET_DSCP, 8},
    {FILTERS_ACTION_MAP_TO_COS_QUEUE, 9}, {FILTERS_ACTION_MAP_TO_CPU_COS_QUEUE, 10},
    {FILTERS_ACTION_REDIRECT, 11}, {FILTERS_ACTION_REPLACE_DST_MAC, 12},
    {FILTERS_ACTION_REDIRECT_CANCEL, 13}, {FILTERS_ACTION_REPLACE_SRC_MAC, 14},
    {FILTERS_ACTION_L3_SWITCH, 15}, {FILTERS_ACTION_BLACK_HOLE, 16},
    {FILTERS_ACTION_COPY_INNER_PCP, 17}, {FILTERS_ACTION_MPLS_PORT_SET, 18},
    {FILTERS_ACTION_L2_TO_CPU_DROP, 19}, {COPY_TO_CPU_CANCEL, 0}, {SWITCH_TO_CPU_CANCEL, 1},
    {FILTERS_COUNTER_TYPE_INVALID, 0}, {FILTERS_COUNTER_TYPE_PACKETS, 1},
    {FILTERS_COUNTER_TYPE_OCTETS, 2}, {FILTERS_COUNTER_TYPE_RED_OCTETS, 3},
    {FILTERS_COUNTER_TYPE_NOT_RED_OCTETS, 4}, {FILTERS_COUNTER_TYPE_YELLOW_OCTETS, 5},
    {FILTERS_COUNTER_TYPE_NOT_YELLOW_OCTETS, 6}, {FILTERS_COUNTER_TYPE_GREEN_OCTETS, 7},
    {FILTERS_COUNTER_TYPE_NOT_GREEN_OCTETS, 8},
    {FILTERS_L2_SRC_ENTRY_NONE, 0}, {FILTERS_L2_SRC_ENTRY_DYNAMIC, 1},
    {FILTERS_L2_SRC_ENTRY_STATIC, 2}, {FILTERS_VLAN_UNTAGGED, 0}, {FILTERS_VLAN_TAGGED, 1},
    {FILTERS_RESOLUTION_UNKNOWN, 0}, {FILTERS_RESOLUTION_CONTROL, 1},
    {FILTERS_RESOLUTION_BROADCAST, 2}, {FILTERS_RESOLUTION_L2_UNICAST, 3},
    {FILTERS_RESOLUTION_L2_UNKNOWN_UNICAST, 4}, {FILTERS_RESOLUTION_L2_MULTICAST, 5},
    {FILTERS_RESOLUTION_L2_UNKNOWN_MULTICAST, 6}, {FILTERS_RESOLUTION_L3_UNICAST, 7},
    {FILTERS_RESOLUTION_L3_MULTICAST, 8}, {FILTERS_STP_STATE_DISABLED, 0},
    {FILTERS_STP_STATE_BLOCKING, 1}, {FILTERS_STP_STATE_LISTENING, 2},
    {FILTERS_STP_STATE_LEARNING, 3}, {FILTERS_STP_STATE_FORWARDING, 4},
    {FILTERS_FORWARDING_TYPE_L2, 0}, {FILTERS_FORWARDING_TYPE_L3, 1},
    {FILTERS_FORWARDING_TYPE_MPLS, 2}, {FILTERS_PORT_TYPE_CPU, 0}};
// clang-format on

TEST(Types, KeepTheirNumbers) {
  for (const auto& [enumerator, value] : kValues) EXPECT_EQ(enumerator, value);
}

}  // namespace
