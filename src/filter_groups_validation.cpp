#include <filter_common/filter_groups.h>

#include <array>
#include <cstdint>
#include <initializer_list>
#include <utility>

namespace FiltersCommon {
namespace {

// A set of small codes; the checks ask it, and the published tables are made from it.
template <class Code>
class CodeSet {
 public:
  constexpr CodeSet(std::initializer_list<Code> codes) {
    for (Code code : codes) bits_ |= bit(code);
  }
  constexpr bool contains(Code code) const {
    return static_cast<std::uint32_t>(code) < 64 && (bits_ & bit(code)) != 0;
  }
  std::set<Code> toSet() const {
    std::set<Code> codes;
    for (std::uint32_t value = 0; value < 64; ++value) {
      if (contains(static_cast<Code>(value))) codes.insert(static_cast<Code>(value));
    }
    return codes;
  }
 private:
  static constexpr std::uint64_t bit(Code code) { return std::uint64_t{1} << code; }
  std::uint64_t bits_ = 0;
};

// The matches of each group type; the index is the type. Deliberate: none admits an IPv6 source.
constexpr std::array<CodeSet<filtersMatch_t>, 12> kTypeMatches = {{
    {},
    {FILTERS_MATCH_ALL, FILTERS_MATCH_INGRESS_PORTS, FILTERS_MATCH_EXTERNAL_VLAN_ID,
     FILTERS_MATCH_TPID, FILTERS_MATCH_DST_MAC, FILTERS_MATCH_SRC_MAC,
     FILTERS_MATCH_L2_SRC_ENTRY_TYPE, FILTERS_MATCH_PACKET_RES, FILTERS_MATCH_MPLS_TERM,
     FILTERS_MATCH_INGRESS_STP_STATE, FILTERS_MATCH_DROP, FILTERS_MATCH_CPU_PORT},
    {FILTERS_MATCH_ALL, FILTERS_MATCH_INGRESS_PORTS, FILTERS_MATCH_EXTERNAL_VLAN_ID,
     FILTERS_MATCH_TPID, FILTERS_MATCH_SRC_MAC, FILTERS_MATCH_SRC_IPV4,
     FILTERS_MATCH_INTERNAL_VLAN_ID, FILTERS_MATCH_VIRTUAL_PORT},
    {FILTERS_MATCH_ALL, FILTERS_MATCH_INGRESS_PORTS, FILTERS_MATCH_EXTERNAL_VLAN_ID,
     FILTERS_MATCH_TPID, FILTERS_MATCH_DST_L4_PORT, FILTERS_MATCH_SRC_L4_PORT,
     FILTERS_MATCH_SRC_IPV4, FILTERS_MATCH_DST_IPV4, FILTERS_MATCH_IP_PROTOCOL, FILTERS_MATCH_TTL,
     FILTERS_MATCH_MY_STATION_HIT, FILTERS_MATCH_FORWARDING_TYPE, FILTERS_MATCH_DESTINATION_CPU},
    {FILTERS_MATCH_ALL, FILTERS_MATCH_INGRESS_PORTS, FILTERS_MATCH_EXTERNAL_VLAN_ID,
     FILTERS_MATCH_TPID, FILTERS_MATCH_DST_L4_PORT, FILTERS_MATCH_SRC_IPV4, FILTERS_MATCH_DST_IPV4,
     FILTERS_MATCH_INTERNAL_VLAN_ID, FILTERS_MATCH_PCP, FILTERS_MATCH_INTERNAL_PCP,
     FILTERS_MATCH_IP_PROTOCOL, FILTERS_MATCH_TOS},
    {FILTERS_MATCH_ALL, FILTERS_MATCH_INGRESS_PORTS, FILTERS_MATCH_EXTERNAL_VLAN_ID,
     FILTERS_MATCH_TPID, FILTERS_MATCH_DST_MAC, FILTERS_MATCH_INTERNAL_VLAN_ID, FILTERS_MATCH_PCP,
     FILTERS_MATCH_INTERNAL_PCP, FILTERS_MATCH_EGRESS_PORTS},
    {FILTERS_MATCH_ALL, FILTERS_MATCH_INGRESS_PORTS, FILTERS_MATCH_EXTERNAL_VLAN_ID,
     FILTERS_MATCH_TPID, FILTERS_MATCH_DST_MAC, FILTERS_MATCH_SRC_MAC,
     FILTERS_MATCH_INTERNAL_VLAN_ID, FILTERS_MATCH_PCP, FILTERS_MATCH_INTERNAL_PCP,
     FILTERS_MATCH_VLAN_TAGGING},
    {FILTERS_MATCH_ALL, FILTERS_MATCH_INGRESS_PORTS, FILTERS_MATCH_TPID, FILTERS_MATCH_DST_MAC,
     FILTERS_MATCH_DST_L4_PORT, FILTERS_MATCH_L2_SRC_ENTRY_TYPE, FILTERS_MATCH_IP_PROTOCOL,
     FILTERS_MATCH_VLAN_INFO, FILTERS_MATCH_SRC_PORT, FILTERS_MATCH_FORWARDING_TYPE},
    {FILTERS_MATCH_ALL, FILTERS_MATCH_DST_IPV6, FILTERS_MATCH_VRF_ID},
    {FILTERS_MATCH_ALL, FILTERS_MATCH_INGRESS_PORTS, FILTERS_MATCH_EXTERNAL_VLAN_ID,
     FILTERS_MATCH_INTERNAL_VLAN_ID, FILTERS_MATCH_PCP, FILTERS_MATCH_INTERNAL_PCP,
     FILTERS_MATCH_TOS},
    {FILTERS_MATCH_ALL, FILTERS_MATCH_INGRESS_PORTS, FILTERS_MATCH_TPID, FILTERS_MATCH_SRC_IPV4,
     FILTERS_MATCH_DST_IPV4},
    {FILTERS_MATCH_ALL, FILTERS_MATCH_TPID, FILTERS_MATCH_DST_MAC, FILTERS_MATCH_IP_PROTOCOL,
     FILTERS_MATCH_VLAN_INFO, FILTERS_MATCH_CPU_INJECTED_PACKETS, FILTERS_MATCH_DST_L4_PORT_RANGE},
}};

// What each stage admits and requires; the index is the stage.
struct StageRules {
  CodeSet<filtersGroupType_t> types;
  CodeSet<filtersAction_t> actions;
  policer::Stage policerStage;
};

constexpr std::array<StageRules, 4> kStages = {{
    // Every type. Deliberate: every action but the queue towards the CPU, which ingress alone
    // admits.
    {{FILTERS_GROUP_TYPE_NONE, FILTERS_GROUP_TYPE_1, FILTERS_GROUP_TYPE_2, FILTERS_GROUP_TYPE_3,
      FILTERS_GROUP_TYPE_4, FILTERS_GROUP_TYPE_5, FILTERS_GROUP_TYPE_6, FILTERS_GROUP_TYPE_7,
      FILTERS_GROUP_TYPE_8, FILTERS_GROUP_TYPE_9, FILTERS_GROUP_TYPE_10, FILTERS_GROUP_TYPE_11},
     {FILTERS_ACTION_PERMIT, FILTERS_ACTION_DENY, FILTERS_ACTION_COPY_TO_CPU,
      FILTERS_ACTION_BLOCK_EGRESS_PORTS, FILTERS_ACTION_COPY_TO_CPU_CANCEL, FILTERS_ACTION_SET_PCP,
      FILTERS_ACTION_SET_PCP_AND_QUEUE, FILTERS_ACTION_SET_INNER_PCP, FILTERS_ACTION_SET_DSCP,
      FILTERS_ACTION_MAP_TO_COS_QUEUE, FILTERS_ACTION_REDIRECT, FILTERS_ACTION_REPLACE_DST_MAC,
      FILTERS_ACTION_REDIRECT_CANCEL, FILTERS_ACTION_REPLACE_SRC_MAC, FILTERS_ACTION_L3_SWITCH,
      FILTERS_ACTION_BLACK_HOLE, FILTERS_ACTION_COPY_INNER_PCP, FILTERS_ACTION_MPLS_PORT_SET,
      FILTERS_ACTION_L2_TO_CPU_DROP},
     policer::Stage::None},
    // Lookup.
    {{FILTERS_GROUP_TYPE_NONE, FILTERS_GROUP_TYPE_4, FILTERS_GROUP_TYPE_6},
     {FILTERS_ACTION_PERMIT, FILTERS_ACTION_DENY, FILTERS_ACTION_SET_PCP_AND_QUEUE,
      FILTERS_ACTION_SET_INNER_PCP, FILTERS_ACTION_COPY_INNER_PCP, FILTERS_ACTION_MPLS_PORT_SET},
     policer::Stage::None},
    // Ingress.
    {{FILTERS_GROUP_TYPE_NONE, FILTERS_GROUP_TYPE_1, FILTERS_GROUP_TYPE_2, FILTERS_GROUP_TYPE_3,
      FILTERS_GROUP_TYPE_7, FILTERS_GROUP_TYPE_8, FILTERS_GROUP_TYPE_9, FILTERS_GROUP_TYPE_10,
      FILTERS_GROUP_TYPE_11},
     {FILTERS_ACTION_PERMIT, FILTERS_ACTION_DENY, FILTERS_ACTION_COPY_TO_CPU,
      FILTERS_ACTION_BLOCK_EGRESS_PORTS, FILTERS_ACTION_COPY_TO_CPU_CANCEL, FILTERS_ACTION_SET_PCP,
      FILTERS_ACTION_SET_DSCP, FILTERS_ACTION_MAP_TO_COS_QUEUE, FILTERS_ACTION_MAP_TO_CPU_COS_QUEUE,
      FILTERS_ACTION_REDIRECT, FILTERS_ACTION_REPLACE_DST_MAC, FILTERS_ACTION_REDIRECT_CANCEL,
      FILTERS_ACTION_REPLACE_SRC_MAC, FILTERS_ACTION_L3_SWITCH, FILTERS_ACTION_BLACK_HOLE,
      FILTERS_ACTION_L2_TO_CPU_DROP},
     policer::Stage::Ingress},
    // Egress.
    {{FILTERS_GROUP_TYPE_NONE, FILTERS_GROUP_TYPE_5},
     {FILTERS_ACTION_PERMIT, FILTERS_ACTION_DENY},
     policer::Stage::Egress},
}};

// The row of a code, null when it has none. Codes come from outside: any value is possible.
template <class Row, std::size_t Size, class Code>
const Row* findRow(const std::array<Row, Size>& rows, Code code) {
  const auto index = static_cast<std::uint32_t>(code);
  return index < Size ? &rows[index] : nullptr;
}

// A published table: a row a code, made by `codesOf` from the rows above.
template <class Key, class Code, class Rows, class CodesOf>
std::map<Key, const std::set<Code>> publish(const Rows& rows, CodesOf codesOf) {
  std::map<Key, const std::set<Code>> table;
  for (std::size_t i = 0; i < rows.size(); ++i) {
    table.emplace(static_cast<Key>(i), codesOf(rows[i]).toSet());
  }
  return table;
}

}  // namespace

const std::map<filtersGroupType_t, const std::set<filtersMatch_t>> FiltersGroup::TypeDescription_ =
    publish<filtersGroupType_t, filtersMatch_t>(kTypeMatches, [](const auto& row) { return row; });

const std::map<filtersGroupStage_t, const std::set<filtersAction_t>>
    FiltersGroup::StageActionsDescription_ = publish<filtersGroupStage_t, filtersAction_t>(
        kStages, [](const StageRules& row) { return row.actions; });

const std::map<filtersGroupStage_t, const std::set<filtersGroupType_t>>
    FiltersGroup::StageTypesDescription_ = publish<filtersGroupStage_t, filtersGroupType_t>(
        kStages, [](const StageRules& row) { return row.types; });

filtersErr_t FiltersGroup::groupMatchValidation(const FiltersEntry& entry,
                                                filtersGroupType_t type) const {
  const CodeSet<filtersMatch_t>* admitted = findRow(kTypeMatches, type);
  if (admitted == nullptr) return FILTERS_ERR_INVALID;
  for (const auto& [key, match] : entry.matches_) {
    if (!admitted->contains(match->getType())) return FILTERS_ERR_MATCH_NOT_ALLOWED;
  }
  return FILTERS_OK;
}

filtersErr_t FiltersGroup::groupActionValidation(const FiltersEntry& entry,
                                                 filtersGroupStage_t stage) const {
  const StageRules* rules = findRow(kStages, stage);
  if (rules == nullptr) return FILTERS_ERR_INVALID_STAGE;
  for (const auto& [key, action] : entry.actions_) {
    if (!rules->actions.contains(action->getType())) return FILTERS_ERR_ACTION_NOT_ALLOWED;
  }
  return FILTERS_OK;
}

filtersErr_t FiltersGroup::groupStageValidation(filtersGroupStage_t stage,
                                                filtersGroupType_t type) const {
  const StageRules* rules = findRow(kStages, stage);
  if (rules == nullptr) return FILTERS_ERR_INVALID_STAGE;
  return rules->types.contains(type) ? FILTERS_OK : FILTERS_ERR_TYPE_NOT_ALLOWED;
}

filtersErr_t FiltersGroup::groupPolicerValidation(const policer::Policer& policer,
                                                  filtersGroupStage_t stage) const {
  if (policer.GetStage() == policer::Stage::None) return FILTERS_OK;
  const StageRules* rules = findRow(kStages, stage);
  if (rules == nullptr) return FILTERS_ERR_INVALID_STAGE;
  return policer.GetStage() == rules->policerStage ? FILTERS_OK : FILTERS_ERR_POLICER_STAGE;
}

}  // namespace FiltersCommon
