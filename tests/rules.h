#ifndef FILTER_COMMON_TESTS_RULES_H_
#define FILTER_COMMON_TESTS_RULES_H_

// The codes of the catalogue, and tables of what each type and stage admits. The tables are written
// by hand.

#include <filter_common/filter_types.h>

#include <algorithm>
#include <cstdint>
#include <numeric>
#include <set>
#include <vector>

namespace catalogue {

using Codes = std::vector<unsigned>;

#define FILTERS_ROW(code, Class, blank) FiltersCommon::code,
#define FILTERS_MATCH FILTERS_ROW
inline const Codes kMatchCodes = {
#include <filter_common/filter_matches.def>
};
#define FILTERS_ACTION FILTERS_ROW
inline const Codes kActionCodes = {
#include <filter_common/filter_actions.def>
};
#undef FILTERS_ROW

using CodeSet = std::set<unsigned>;

#define MATCH_CODE(name) FiltersCommon::FILTERS_MATCH_##name
#define ACTION_CODE(name) FiltersCommon::FILTERS_ACTION_##name

// Pairs of matches that exclude each other: a destination port beside a range of ports, and IPv4
// beside IPv6.
inline const std::set<CodeSet> kExcludedPairs = {
    {MATCH_CODE(DST_L4_PORT), MATCH_CODE(DST_L4_PORT_RANGE)},
    {MATCH_CODE(SRC_IPV4), MATCH_CODE(SRC_IPV6)},
    {MATCH_CODE(SRC_IPV4), MATCH_CODE(DST_IPV6)},
    {MATCH_CODE(DST_IPV4), MATCH_CODE(SRC_IPV6)},
    {MATCH_CODE(DST_IPV4), MATCH_CODE(DST_IPV6)},
};

// The matches that only the C++ classes support.
inline const CodeSet kMatchesOfClassesAlone = {MATCH_CODE(MY_STATION_HIT),
                                               MATCH_CODE(FORWARDING_TYPE)};

// A table of what each type or stage admits, with one row for each type or stage.
using Table = std::vector<CodeSet>;
enum : int { kNoStage, kLookup, kIngress, kEgress };
inline const Table kMatchesOfType = {
    // type none
    {},
    // type 1
    {MATCH_CODE(ALL), MATCH_CODE(INGRESS_PORTS), MATCH_CODE(EXTERNAL_VLAN_ID), MATCH_CODE(TPID),
     MATCH_CODE(DST_MAC), MATCH_CODE(SRC_MAC), MATCH_CODE(L2_SRC_ENTRY_TYPE),
     MATCH_CODE(PACKET_RES), MATCH_CODE(MPLS_TERM), MATCH_CODE(INGRESS_STP_STATE), MATCH_CODE(DROP),
     MATCH_CODE(CPU_PORT)},
    // type 2
    {MATCH_CODE(ALL), MATCH_CODE(INGRESS_PORTS), MATCH_CODE(EXTERNAL_VLAN_ID), MATCH_CODE(TPID),
     MATCH_CODE(SRC_MAC), MATCH_CODE(SRC_IPV4), MATCH_CODE(INTERNAL_VLAN_ID),
     MATCH_CODE(VIRTUAL_PORT)},
    // type 3
    {MATCH_CODE(ALL), MATCH_CODE(INGRESS_PORTS), MATCH_CODE(EXTERNAL_VLAN_ID), MATCH_CODE(TPID),
     MATCH_CODE(DST_L4_PORT), MATCH_CODE(SRC_L4_PORT), MATCH_CODE(SRC_IPV4), MATCH_CODE(DST_IPV4),
     MATCH_CODE(IP_PROTOCOL), MATCH_CODE(TTL), MATCH_CODE(MY_STATION_HIT),
     MATCH_CODE(FORWARDING_TYPE), MATCH_CODE(DESTINATION_CPU)},
    // type 4
    {MATCH_CODE(ALL), MATCH_CODE(INGRESS_PORTS), MATCH_CODE(EXTERNAL_VLAN_ID), MATCH_CODE(TPID),
     MATCH_CODE(DST_L4_PORT), MATCH_CODE(SRC_IPV4), MATCH_CODE(DST_IPV4),
     MATCH_CODE(INTERNAL_VLAN_ID), MATCH_CODE(PCP), MATCH_CODE(INTERNAL_PCP),
     MATCH_CODE(IP_PROTOCOL), MATCH_CODE(TOS)},
    // type 5
    {MATCH_CODE(ALL), MATCH_CODE(INGRESS_PORTS), MATCH_CODE(EXTERNAL_VLAN_ID), MATCH_CODE(TPID),
     MATCH_CODE(DST_MAC), MATCH_CODE(INTERNAL_VLAN_ID), MATCH_CODE(PCP), MATCH_CODE(INTERNAL_PCP),
     MATCH_CODE(EGRESS_PORTS)},
    // type 6
    {MATCH_CODE(ALL), MATCH_CODE(INGRESS_PORTS), MATCH_CODE(EXTERNAL_VLAN_ID), MATCH_CODE(TPID),
     MATCH_CODE(DST_MAC), MATCH_CODE(SRC_MAC), MATCH_CODE(INTERNAL_VLAN_ID), MATCH_CODE(PCP),
     MATCH_CODE(INTERNAL_PCP), MATCH_CODE(VLAN_TAGGING)},
    // type 7
    {MATCH_CODE(ALL), MATCH_CODE(INGRESS_PORTS), MATCH_CODE(TPID), MATCH_CODE(DST_MAC),
     MATCH_CODE(DST_L4_PORT), MATCH_CODE(L2_SRC_ENTRY_TYPE), MATCH_CODE(IP_PROTOCOL),
     MATCH_CODE(VLAN_INFO), MATCH_CODE(SRC_PORT), MATCH_CODE(FORWARDING_TYPE)},
    // type 8
    {MATCH_CODE(ALL), MATCH_CODE(DST_IPV6), MATCH_CODE(VRF_ID)},
    // type 9
    {MATCH_CODE(ALL), MATCH_CODE(INGRESS_PORTS), MATCH_CODE(EXTERNAL_VLAN_ID),
     MATCH_CODE(INTERNAL_VLAN_ID), MATCH_CODE(PCP), MATCH_CODE(INTERNAL_PCP), MATCH_CODE(TOS)},
    // type 10
    {MATCH_CODE(ALL), MATCH_CODE(INGRESS_PORTS), MATCH_CODE(TPID), MATCH_CODE(SRC_IPV4),
     MATCH_CODE(DST_IPV4)},
    // type 11
    {MATCH_CODE(ALL), MATCH_CODE(TPID), MATCH_CODE(DST_MAC), MATCH_CODE(IP_PROTOCOL),
     MATCH_CODE(VLAN_INFO), MATCH_CODE(CPU_INJECTED_PACKETS), MATCH_CODE(DST_L4_PORT_RANGE)},
};
inline const Table kActionsOfStage = {
    // stage none: every action but one
    [] {
      CodeSet codes(kActionCodes.begin(), kActionCodes.end());
      codes.erase(ACTION_CODE(MAP_TO_CPU_COS_QUEUE));
      return codes;
    }(),
    // lookup
    {ACTION_CODE(PERMIT), ACTION_CODE(DENY), ACTION_CODE(SET_PCP_AND_QUEUE),
     ACTION_CODE(SET_INNER_PCP), ACTION_CODE(COPY_INNER_PCP), ACTION_CODE(MPLS_PORT_SET)},
    // ingress
    {ACTION_CODE(PERMIT), ACTION_CODE(DENY), ACTION_CODE(COPY_TO_CPU),
     ACTION_CODE(BLOCK_EGRESS_PORTS), ACTION_CODE(COPY_TO_CPU_CANCEL), ACTION_CODE(SET_PCP),
     ACTION_CODE(SET_DSCP), ACTION_CODE(MAP_TO_COS_QUEUE), ACTION_CODE(MAP_TO_CPU_COS_QUEUE),
     ACTION_CODE(REDIRECT), ACTION_CODE(REPLACE_DST_MAC), ACTION_CODE(REDIRECT_CANCEL),
     ACTION_CODE(REPLACE_SRC_MAC), ACTION_CODE(L3_SWITCH), ACTION_CODE(BLACK_HOLE),
     ACTION_CODE(L2_TO_CPU_DROP)},
    // egress
    {ACTION_CODE(PERMIT), ACTION_CODE(DENY)},
};
inline const auto kTypes = static_cast<int>(kMatchesOfType.size());
inline const Table kTypesOfStage = {
    // stage none: every type
    [] {
      CodeSet types;
      for (int type = 0; type < kTypes; ++type) types.insert(unsigned(type));
      return types;
    }(),
    {0, 4, 6},
    {0, 1, 2, 3, 7, 8, 9, 10, 11},
    {0, 5},
};
inline const auto kStages = static_cast<int>(kTypesOfStage.size());
#undef MATCH_CODE
#undef ACTION_CODE

// A code that no stage, type, match, action or counter will ever have.
constexpr int kUnknown = 99;

// The highest codes in the files of golden/. The bytes and the text of higher codes are in the rows
// of samples.cpp.
constexpr unsigned kLastGoldenMatch = FiltersCommon::FILTERS_MATCH_DST_L4_PORT_RANGE;
constexpr unsigned kLastGoldenAction = FiltersCommon::FILTERS_ACTION_L2_TO_CPU_DROP;
template <class Sorted>
Codes upTo(unsigned last, const Sorted& codes) {
  return {codes.begin(), std::upper_bound(codes.begin(), codes.end(), last)};
}

// The numbers of all rows of a table, and a number that is no row.
inline std::vector<int> rowsAndUnknown(const Table& table) {
  std::vector<int> rows(table.size());
  std::iota(rows.begin(), rows.end(), 0);
  rows.push_back(kUnknown);
  return rows;
}

inline const Table kPolicersOfStage = {{2}, {2}, {0, 2}, {1, 2}};  // 0 Ingress, 1 Egress, 2 None

inline bool admits(const Table& table, std::uint32_t row, unsigned code) {
  return row < table.size() && table[row].count(code) != 0;
}

}  // namespace catalogue

#endif  // FILTER_COMMON_TESTS_RULES_H_
