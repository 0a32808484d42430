#include <filter_common/filter_groups.h>

#include <cstdint>
#include <initializer_list>
#include <optional>

namespace FiltersCommon {
namespace {

constexpr std::uint32_t kCodes = 64;  // more than any enumeration has

// A set of codes. The checks use it, and the public tables are made from it.
template <class Code>
class CodeSet {
 public:
  constexpr CodeSet(std::initializer_list<Code> codes) {
    for (Code code : codes) insert(code);
  }
  constexpr void insert(Code code) { bits_ |= bit(code); }
  constexpr bool contains(Code code) const {
    return static_cast<std::uint32_t>(code) < kCodes && (bits_ & bit(code)) != 0;
  }
  std::set<Code> toSet() const {
    std::set<Code> codes;
    for (std::uint32_t value = 0; value < kCodes; ++value) {
      if (contains(static_cast<Code>(value))) codes.insert(static_cast<Code>(value));
    }
    return codes;
  }
 private:
  static constexpr std::uint64_t bit(Code code) { return std::uint64_t{1} << code; }
  std::uint64_t bits_ = 0;
};

template <filtersMatch_t... codes>
constexpr CodeSet<filtersMatch_t> kMatches = {codes...};
template <filtersAction_t... codes>
constexpr CodeSet<filtersAction_t> kActions = {codes...};
template <filtersGroupType_t... codes>
constexpr CodeSet<filtersGroupType_t> kTypes = {codes...};

// The matches that a group type admits, or null for an unknown type. Deliberate: no type admits an
// IPv6 source. If this function were inlined, the check of each entry would take more instructions.
[[gnu::noinline]] constexpr const CodeSet<filtersMatch_t>* matchesOf(filtersGroupType_t type) {
  switch (type) {
    case FILTERS_GROUP_TYPE_NONE:
      return &kMatches<>;
    case FILTERS_GROUP_TYPE_1:
      return &kMatches<FILTERS_MATCH_ALL, FILTERS_MATCH_INGRESS_PORTS,
                       FILTERS_MATCH_EXTERNAL_VLAN_ID, FILTERS_MATCH_TPID, FILTERS_MATCH_DST_MAC,
                       FILTERS_MATCH_SRC_MAC, FILTERS_MATCH_L2_SRC_ENTRY_TYPE,
                       FILTERS_MATCH_PACKET_RES, FILTERS_MATCH_MPLS_TERM,
                       FILTERS_MATCH_INGRESS_STP_STATE, FILTERS_MATCH_DROP, FILTERS_MATCH_CPU_PORT>;
    case FILTERS_GROUP_TYPE_2:
      return &kMatches<FILTERS_MATCH_ALL, FILTERS_MATCH_INGRESS_PORTS,
                       FILTERS_MATCH_EXTERNAL_VLAN_ID, FILTERS_MATCH_TPID, FILTERS_MATCH_SRC_MAC,
                       FILTERS_MATCH_SRC_IPV4, FILTERS_MATCH_INTERNAL_VLAN_ID,
                       FILTERS_MATCH_VIRTUAL_PORT>;
    case FILTERS_GROUP_TYPE_3:
      return &kMatches<FILTERS_MATCH_ALL, FILTERS_MATCH_INGRESS_PORTS,
                       FILTERS_MATCH_EXTERNAL_VLAN_ID, FILTERS_MATCH_TPID,
                       FILTERS_MATCH_DST_L4_PORT, FILTERS_MATCH_SRC_L4_PORT, FILTERS_MATCH_SRC_IPV4,
                       FILTERS_MATCH_DST_IPV4, FILTERS_MATCH_IP_PROTOCOL, FILTERS_MATCH_TTL,
                       FILTERS_MATCH_MY_STATION_HIT, FILTERS_MATCH_FORWARDING_TYPE,
                       FILTERS_MATCH_DESTINATION_CPU>;
    case FILTERS_GROUP_TYPE_4:
      return &kMatches<FILTERS_MATCH_ALL, FILTERS_MATCH_INGRESS_PORTS,
                       FILTERS_MATCH_EXTERNAL_VLAN_ID, FILTERS_MATCH_TPID,
                       FILTERS_MATCH_DST_L4_PORT, FILTERS_MATCH_SRC_IPV4, FILTERS_MATCH_DST_IPV4,
                       FILTERS_MATCH_INTERNAL_VLAN_ID, FILTERS_MATCH_PCP,
                       FILTERS_MATCH_INTERNAL_PCP, FILTERS_MATCH_IP_PROTOCOL, FILTERS_MATCH_TOS>;
    case FILTERS_GROUP_TYPE_5:
      return &kMatches<FILTERS_MATCH_ALL, FILTERS_MATCH_INGRESS_PORTS,
                       FILTERS_MATCH_EXTERNAL_VLAN_ID, FILTERS_MATCH_TPID, FILTERS_MATCH_DST_MAC,
                       FILTERS_MATCH_INTERNAL_VLAN_ID, FILTERS_MATCH_PCP,
                       FILTERS_MATCH_INTERNAL_PCP, FILTERS_MATCH_EGRESS_PORTS>;
    case FILTERS_GROUP_TYPE_6:
      return &kMatches<FILTERS_MATCH_ALL, FILTERS_MATCH_INGRESS_PORTS,
                       FILTERS_MATCH_EXTERNAL_VLAN_ID, FILTERS_MATCH_TPID, FILTERS_MATCH_DST_MAC,
                       FILTERS_MATCH_SRC_MAC, FILTERS_MATCH_INTERNAL_VLAN_ID, FILTERS_MATCH_PCP,
                       FILTERS_MATCH_INTERNAL_PCP, FILTERS_MATCH_VLAN_TAGGING>;
    case FILTERS_GROUP_TYPE_7:
      return &kMatches<
          FILTERS_MATCH_ALL, FILTERS_MATCH_INGRESS_PORTS, FILTERS_MATCH_TPID, FILTERS_MATCH_DST_MAC,
          FILTERS_MATCH_DST_L4_PORT, FILTERS_MATCH_L2_SRC_ENTRY_TYPE, FILTERS_MATCH_IP_PROTOCOL,
          FILTERS_MATCH_VLAN_INFO, FILTERS_MATCH_SRC_PORT, FILTERS_MATCH_FORWARDING_TYPE>;
    case FILTERS_GROUP_TYPE_8:
      return &kMatches<FILTERS_MATCH_ALL, FILTERS_MATCH_DST_IPV6, FILTERS_MATCH_VRF_ID>;
    case FILTERS_GROUP_TYPE_9:
      return &kMatches<FILTERS_MATCH_ALL, FILTERS_MATCH_INGRESS_PORTS,
                       FILTERS_MATCH_EXTERNAL_VLAN_ID, FILTERS_MATCH_INTERNAL_VLAN_ID,
                       FILTERS_MATCH_PCP, FILTERS_MATCH_INTERNAL_PCP, FILTERS_MATCH_TOS>;
    case FILTERS_GROUP_TYPE_10:
      return &kMatches<FILTERS_MATCH_ALL, FILTERS_MATCH_INGRESS_PORTS, FILTERS_MATCH_TPID,
                       FILTERS_MATCH_SRC_IPV4, FILTERS_MATCH_DST_IPV4>;
    case FILTERS_GROUP_TYPE_11:
      return &kMatches<FILTERS_MATCH_ALL, FILTERS_MATCH_TPID, FILTERS_MATCH_DST_MAC,
                       FILTERS_MATCH_IP_PROTOCOL, FILTERS_MATCH_VLAN_INFO,
                       FILTERS_MATCH_CPU_INJECTED_PACKETS, FILTERS_MATCH_DST_L4_PORT_RANGE>;
  }
  return nullptr;
}

constexpr CodeSet<filtersGroupType_t> kEveryType = [] {
  CodeSet<filtersGroupType_t> types = {};
  for (std::uint32_t value = 0; value < kCodes; ++value) {
    const auto type = static_cast<filtersGroupType_t>(value);
    if (matchesOf(type) != nullptr) types.insert(type);
  }
  return types;
}();

// Deliberate: only the ingress stage admits the queue to the CPU.
constexpr CodeSet<filtersAction_t> kEveryActionButCpuQueue = [] {
  CodeSet<filtersAction_t> actions = {};
#define FILTERS_ACTION(code, T, blank) \
  if (code != FILTERS_ACTION_MAP_TO_CPU_COS_QUEUE) actions.insert(code);
#include <filter_common/filter_actions.def>
  return actions;
}();

// The types and actions that a stage admits, and the policer stage that it requires.
struct StageRules {
  const CodeSet<filtersGroupType_t>& types;
  const CodeSet<filtersAction_t>& actions;
  policer::Stage policerStage;
};

// The rules of a stage, or nothing for an unknown stage.
std::optional<StageRules> rulesOf(filtersGroupStage_t stage) {
  switch (stage) {
    case FILTERS_GROUP_STAGE_NONE:
      return StageRules{kEveryType, kEveryActionButCpuQueue, policer::Stage::None};
    case FILTERS_GROUP_STAGE_LOOKUP:
      return StageRules{kTypes<FILTERS_GROUP_TYPE_NONE, FILTERS_GROUP_TYPE_4, FILTERS_GROUP_TYPE_6>,
                        kActions<FILTERS_ACTION_PERMIT, FILTERS_ACTION_DENY,
                                 FILTERS_ACTION_SET_PCP_AND_QUEUE, FILTERS_ACTION_SET_INNER_PCP,
                                 FILTERS_ACTION_COPY_INNER_PCP, FILTERS_ACTION_MPLS_PORT_SET>,
                        policer::Stage::None};
    case FILTERS_GROUP_STAGE_INGRESS:
      return StageRules{
          kTypes<FILTERS_GROUP_TYPE_NONE, FILTERS_GROUP_TYPE_1, FILTERS_GROUP_TYPE_2,
                 FILTERS_GROUP_TYPE_3, FILTERS_GROUP_TYPE_7, FILTERS_GROUP_TYPE_8,
                 FILTERS_GROUP_TYPE_9, FILTERS_GROUP_TYPE_10, FILTERS_GROUP_TYPE_11>,
          kActions<FILTERS_ACTION_PERMIT, FILTERS_ACTION_DENY, FILTERS_ACTION_COPY_TO_CPU,
                   FILTERS_ACTION_BLOCK_EGRESS_PORTS, FILTERS_ACTION_COPY_TO_CPU_CANCEL,
                   FILTERS_ACTION_SET_PCP, FILTERS_ACTION_SET_DSCP, FILTERS_ACTION_MAP_TO_COS_QUEUE,
                   FILTERS_ACTION_MAP_TO_CPU_COS_QUEUE, FILTERS_ACTION_REDIRECT,
                   FILTERS_ACTION_REPLACE_DST_MAC, FILTERS_ACTION_REDIRECT_CANCEL,
                   FILTERS_ACTION_REPLACE_SRC_MAC, FILTERS_ACTION_L3_SWITCH,
                   FILTERS_ACTION_BLACK_HOLE, FILTERS_ACTION_L2_TO_CPU_DROP>,
          policer::Stage::Ingress};
    case FILTERS_GROUP_STAGE_EGRESS:
      return StageRules{kTypes<FILTERS_GROUP_TYPE_NONE, FILTERS_GROUP_TYPE_5>,
                        kActions<FILTERS_ACTION_PERMIT, FILTERS_ACTION_DENY>,
                        policer::Stage::Egress};
  }
  return std::nullopt;
}

// Makes a public table. The table has a row for each stage or type that the checks know.
template <class Key, class Code, class RowOf>
std::map<Key, const std::set<Code>> publish(RowOf rowOf) {
  std::map<Key, const std::set<Code>> table;
  for (std::uint32_t value = 0; value < kCodes; ++value) {
    const auto key = static_cast<Key>(value);
    if (const CodeSet<Code>* row = rowOf(key)) table.emplace(key, row->toSet());
  }
  return table;
}

}  // namespace

const std::map<filtersGroupType_t, const std::set<filtersMatch_t>> FiltersGroup::TypeDescription_ =
    publish<filtersGroupType_t, filtersMatch_t>(matchesOf);

const std::map<filtersGroupStage_t, const std::set<filtersAction_t>>
    FiltersGroup::StageActionsDescription_ =
        publish<filtersGroupStage_t, filtersAction_t>([](filtersGroupStage_t stage) {
          const auto rules = rulesOf(stage);
          return rules ? &rules->actions : nullptr;
        });

const std::map<filtersGroupStage_t, const std::set<filtersGroupType_t>>
    FiltersGroup::StageTypesDescription_ =
        publish<filtersGroupStage_t, filtersGroupType_t>([](filtersGroupStage_t stage) {
          const auto rules = rulesOf(stage);
          return rules ? &rules->types : nullptr;
        });

filtersErr_t FiltersGroup::groupMatchValidation(const FiltersEntry& entry,
                                                filtersGroupType_t type) const {
  const CodeSet<filtersMatch_t>* admitted = matchesOf(type);
  if (admitted == nullptr) return FILTERS_ERR_INVALID;
  for (const auto& match : entry.matches_) {
    if (!admitted->contains(match->getType())) return FILTERS_ERR_MATCH_NOT_ALLOWED;
  }
  return FILTERS_OK;
}

filtersErr_t FiltersGroup::groupActionValidation(const FiltersEntry& entry,
                                                 filtersGroupStage_t stage) const {
  const std::optional<StageRules> rules = rulesOf(stage);
  if (!rules) return FILTERS_ERR_INVALID_STAGE;
  for (const auto& action : entry.actions_) {
    if (!rules->actions.contains(action->getType())) return FILTERS_ERR_ACTION_NOT_ALLOWED;
  }
  return FILTERS_OK;
}

filtersErr_t FiltersGroup::groupStageValidation(filtersGroupStage_t stage,
                                                filtersGroupType_t type) const {
  const std::optional<StageRules> rules = rulesOf(stage);
  if (!rules) return FILTERS_ERR_INVALID_STAGE;
  return rules->types.contains(type) ? FILTERS_OK : FILTERS_ERR_TYPE_NOT_ALLOWED;
}

filtersErr_t FiltersGroup::groupPolicerValidation(const policer::Policer& policer,
                                                  filtersGroupStage_t stage) const {
  if (policer.GetStage() == policer::Stage::None) return FILTERS_OK;
  const std::optional<StageRules> rules = rulesOf(stage);
  if (!rules) return FILTERS_ERR_INVALID_STAGE;
  return policer.GetStage() == rules->policerStage ? FILTERS_OK : FILTERS_ERR_POLICER_STAGE;
}

}  // namespace FiltersCommon
