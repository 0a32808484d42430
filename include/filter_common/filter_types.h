#ifndef FILTER_COMMON_FILTER_TYPES_H_
#define FILTER_COMMON_FILTER_TYPES_H_

// The types that every other header uses: result codes, the codes of stages, group types, matches,
// actions and counters, and the integer types of ids and header fields.
//
// The header is valid C11 and C++17. In C++ everything is in namespace FiltersCommon. Every value
// is part of the binary interface and is never renumbered. Every value except a result code is also
// part of the wire format. The enumerations are 32 bits wide, and any 32-bit value can be cast to
// them, since messages of other processes can hold any value. The library keeps such values
// unchanged, unless a function says otherwise.

#include <net/ethernet.h>  // ether_addr: 6 bytes in transmission order
#include <netinet/in.h>    // in_addr, in6_addr: 4 and 16 bytes in network byte order
#include <stdint.h>
#ifndef __cplusplus
#include <stdbool.h>
#endif

#include <limid/limid.h>

// With _GLIBCXX_DEBUG the standard containers have another layout, so the program and the library
// must both be built with it or both without it.
#if defined(__cplusplus) && defined(_GLIBCXX_DEBUG) && !defined(FILTER_COMMON_GLIBCXX_DEBUG)
#error "-D_GLIBCXX_DEBUG needs a library that was built with it; docs/porting.md says how"
#endif

// Marks the names that the shared library exports. All other names stay hidden in it.
#define FILTERS_API __attribute__((visibility("default")))
// Marks a member that the library does not export although it exports the class of the member.
#define FILTERS_INTERNAL __attribute__((visibility("hidden")))

// Marks functions that may refuse: C++ compilers warn about code that ignores their result. A
// program that defines FILTERS_NO_NODISCARD before the first header of the library gets no
// warnings.
#if defined(__cplusplus) && !defined(FILTERS_NO_NODISCARD)
#define FILTERS_NODISCARD [[nodiscard]]
#else
#define FILTERS_NODISCARD
#endif

#ifdef __cplusplus
#define FILTERS_ENUM(name, type) typedef enum name : type
#define FILTERS_STATIC_ASSERT static_assert
namespace FiltersCommon {
#else
#define FILTERS_ENUM(name, type) typedef enum name
#define FILTERS_STATIC_ASSERT _Static_assert
#endif

// The results of operations that can refuse: zero is success, and every failure is negative. A
// refused operation leaves its object unchanged, unless its description says otherwise. The values
// -1 and -2 are never returned.
FILTERS_ENUM(filtersErr_t, int32_t){
    FILTERS_OK = 0,
    // The object does not hold the requested match, action or entry.
    FILTERS_ERR_NOT_FOUND = -3,
    // One of these: an entry does not admit the class; a held match excludes the new one; the type
    // of the group is unknown; a counter's type is invalid or already used; a C function does not
    // accept the code of the match or action.
    FILTERS_ERR_INVALID = -4,
    // One of these: the handle is null (in functions that return this code for null); the entry has
    // no such counter; ports were given to a match that excludes port types.
    FILTERS_ERR_INVALID_ARGUMENT = -5,
    // The group's type does not admit one of the entry's matches.
    FILTERS_ERR_MATCH_NOT_ALLOWED = -6,
    // The group's stage does not admit the group's type. No stage admits an unknown type.
    FILTERS_ERR_TYPE_NOT_ALLOWED = -7,
    // The group's stage is unknown.
    FILTERS_ERR_INVALID_STAGE = -8,
    // The group's stage does not admit one of the entry's actions.
    FILTERS_ERR_ACTION_NOT_ALLOWED = -9,
    // The entry's policer belongs to another stage than the group's stage requires.
    FILTERS_ERR_POLICER_STAGE = -10,
} filtersErr_t;

// The place in the packet pipeline at which a group's rules are applied. The stage decides which
// types, actions and policers a group admits.
FILTERS_ENUM(filtersGroupStage_t, int32_t){
    // The group has no place in the pipeline yet.
    FILTERS_GROUP_STAGE_NONE = 0,
    // The rules work while the device looks up what a packet belongs to. They let the packet
    // through or drop it, give it a priority, or put it into an MPLS VPN.
    FILTERS_GROUP_STAGE_LOOKUP = 1,
    // The rules work on packets that come in. Most actions and types belong to this stage.
    FILTERS_GROUP_STAGE_INGRESS = 2,
    // The rules work on packets that are about to leave. They let these packets through or drop
    // them.
    FILTERS_GROUP_STAGE_EGRESS = 3,
} filtersGroupStage_t;

// The kind of table that a group forms. Each type admits one fixed set of matches, which callers
// can read as FiltersGroup::TypeDescription_; docs/capabilities.md shows the sets by name.
FILTERS_ENUM(filtersGroupType_t, int32_t){
    FILTERS_GROUP_TYPE_NONE = 0, FILTERS_GROUP_TYPE_1 = 1,   FILTERS_GROUP_TYPE_2 = 2,
    FILTERS_GROUP_TYPE_3 = 3,    FILTERS_GROUP_TYPE_4 = 4,   FILTERS_GROUP_TYPE_5 = 5,
    FILTERS_GROUP_TYPE_6 = 6,    FILTERS_GROUP_TYPE_7 = 7,   FILTERS_GROUP_TYPE_8 = 8,
    FILTERS_GROUP_TYPE_9 = 9,    FILTERS_GROUP_TYPE_10 = 10, FILTERS_GROUP_TYPE_11 = 11,
} filtersGroupType_t;

// The kind of a match: one code for each criterion. An entry holds at most one match of each code.
FILTERS_ENUM(filtersMatch_t, uint32_t){
    FILTERS_MATCH_ALL = 0,
    FILTERS_MATCH_INGRESS_PORTS = 1,
    FILTERS_MATCH_EXTERNAL_VLAN_ID = 2,
    FILTERS_MATCH_TPID = 3,
    FILTERS_MATCH_DST_MAC = 4,
    FILTERS_MATCH_DST_L4_PORT = 5,
    FILTERS_MATCH_SRC_L4_PORT = 6,
    FILTERS_MATCH_SRC_MAC = 7,
    FILTERS_MATCH_L2_SRC_ENTRY_TYPE = 8,
    FILTERS_MATCH_SRC_IPV4 = 9,
    FILTERS_MATCH_DST_IPV4 = 10,
    FILTERS_MATCH_INTERNAL_VLAN_ID = 11,
    FILTERS_MATCH_PCP = 12,
    FILTERS_MATCH_INTERNAL_PCP = 13,
    FILTERS_MATCH_SRC_IPV6 = 14,
    FILTERS_MATCH_DST_IPV6 = 15,
    FILTERS_MATCH_VLAN_TAGGING = 16,
    FILTERS_MATCH_IP_PROTOCOL = 17,
    FILTERS_MATCH_PACKET_RES = 18,
    FILTERS_MATCH_MPLS_TERM = 19,
    FILTERS_MATCH_TOS = 20,  // MatchToS and MatchDSCP
    FILTERS_MATCH_VIRTUAL_PORT = 21,
    FILTERS_MATCH_EGRESS_PORTS = 22,
    FILTERS_MATCH_INGRESS_STP_STATE = 23,
    FILTERS_MATCH_VLAN_INFO = 24,
    FILTERS_MATCH_SRC_PORT = 25,
    FILTERS_MATCH_TTL = 26,
    FILTERS_MATCH_VRF_ID = 27,
    FILTERS_MATCH_DROP = 28,
    FILTERS_MATCH_MY_STATION_HIT = 29,
    FILTERS_MATCH_CPU_PORT = 30,
    FILTERS_MATCH_FORWARDING_TYPE = 31,
    FILTERS_MATCH_DESTINATION_CPU = 32,
    FILTERS_MATCH_CPU_INJECTED_PACKETS = 33,
    FILTERS_MATCH_DST_L4_PORT_RANGE = 34,
} filtersMatch_t;

// The kind of an action. An entry holds at most one action of each code.
FILTERS_ENUM(filtersAction_t, uint32_t){
    FILTERS_ACTION_PERMIT = 0,
    FILTERS_ACTION_DENY = 1,
    FILTERS_ACTION_COPY_TO_CPU = 2,
    FILTERS_ACTION_BLOCK_EGRESS_PORTS = 3,
    FILTERS_ACTION_COPY_TO_CPU_CANCEL = 4,
    FILTERS_ACTION_SET_PCP = 5,
    FILTERS_ACTION_SET_PCP_AND_QUEUE = 6,
    FILTERS_ACTION_SET_INNER_PCP = 7,
    FILTERS_ACTION_SET_DSCP = 8,
    FILTERS_ACTION_MAP_TO_COS_QUEUE = 9,
    FILTERS_ACTION_MAP_TO_CPU_COS_QUEUE = 10,
    FILTERS_ACTION_REDIRECT = 11,
    FILTERS_ACTION_REPLACE_DST_MAC = 12,
    FILTERS_ACTION_REDIRECT_CANCEL = 13,
    FILTERS_ACTION_REPLACE_SRC_MAC = 14,
    FILTERS_ACTION_L3_SWITCH = 15,
    FILTERS_ACTION_BLACK_HOLE = 16,
    FILTERS_ACTION_COPY_INNER_PCP = 17,
    FILTERS_ACTION_MPLS_PORT_SET = 18,
    FILTERS_ACTION_L2_TO_CPU_DROP = 19,
} filtersAction_t;

// The quantity that a counter counts: packets or octets, of all or of some colours. A policer gives
// each packet its colour (RFC 2697, RFC 2698).
FILTERS_ENUM(counter_type_t, int32_t){
    FILTERS_COUNTER_TYPE_INVALID = 0,
    FILTERS_COUNTER_TYPE_PACKETS = 1,
    FILTERS_COUNTER_TYPE_OCTETS = 2,
    FILTERS_COUNTER_TYPE_RED_OCTETS = 3,
    FILTERS_COUNTER_TYPE_NOT_RED_OCTETS = 4,
    FILTERS_COUNTER_TYPE_YELLOW_OCTETS = 5,
    FILTERS_COUNTER_TYPE_NOT_YELLOW_OCTETS = 6,
    FILTERS_COUNTER_TYPE_GREEN_OCTETS = 7,
    FILTERS_COUNTER_TYPE_NOT_GREEN_OCTETS = 8,
} counter_type_t;

// The earlier decision that ActionCopyToCpuCancel cancels.
FILTERS_ENUM(cp2cpuCancelParam_t, uint32_t){
    COPY_TO_CPU_CANCEL = 0,
    SWITCH_TO_CPU_CANCEL = 1,
} cp2cpuCancelParam_t;

// The way in which the layer-2 table learned the packet's source address.
FILTERS_ENUM(l2SrcEntryType_t, uint32_t){
    FILTERS_L2_SRC_ENTRY_NONE = 0,  // no entry: an unknown source
    FILTERS_L2_SRC_ENTRY_DYNAMIC = 1,
    FILTERS_L2_SRC_ENTRY_STATIC = 2,
} l2SrcEntryType_t;

// Whether a frame has an IEEE 802.1Q tag. Every value except 0 means that the frame has a tag.
FILTERS_ENUM(vlan_tagging_t, uint32_t){
    FILTERS_VLAN_UNTAGGED = 0,
    FILTERS_VLAN_TAGGED = 1,
} vlan_tagging_t;

// The packet's resolution by the forwarding tables.
FILTERS_ENUM(en_Resolution, uint32_t){
    FILTERS_RESOLUTION_UNKNOWN = 0,
    FILTERS_RESOLUTION_CONTROL = 1,
    FILTERS_RESOLUTION_BROADCAST = 2,
    FILTERS_RESOLUTION_L2_UNICAST = 3,
    FILTERS_RESOLUTION_L2_UNKNOWN_UNICAST = 4,
    FILTERS_RESOLUTION_L2_MULTICAST = 5,
    FILTERS_RESOLUTION_L2_UNKNOWN_MULTICAST = 6,
    FILTERS_RESOLUTION_L3_UNICAST = 7,
    FILTERS_RESOLUTION_L3_MULTICAST = 8,
} en_Resolution;

// Spanning-tree state of the ingress port (IEEE 802.1D).
FILTERS_ENUM(en_StpState, uint32_t){
    FILTERS_STP_STATE_DISABLED = 0,    // the port is off
    FILTERS_STP_STATE_BLOCKING = 1,    // receives only BPDUs
    FILTERS_STP_STATE_LISTENING = 2,   // takes part in the election
    FILTERS_STP_STATE_LEARNING = 3,    // learns addresses, does not forward yet
    FILTERS_STP_STATE_FORWARDING = 4,  // forwards
} en_StpState;

// How the device forwards the packet.
FILTERS_ENUM(en_ForwardingType, uint32_t){
    FILTERS_FORWARDING_TYPE_L2 = 0,
    FILTERS_FORWARDING_TYPE_L3 = 1,
    FILTERS_FORWARDING_TYPE_MPLS = 2,
} en_ForwardingType;

// Kinds of port that MatchIngressPorts can exclude.
FILTERS_ENUM(port_type_t, uint32_t){
    FILTERS_PORT_TYPE_CPU = 0,
} port_type_t;

// A C compiler chooses the width of an enumeration; the interface needs 32 bits.
FILTERS_STATIC_ASSERT(sizeof(filtersErr_t) == 4 && sizeof(filtersGroupStage_t) == 4 &&
                          sizeof(filtersGroupType_t) == 4 && sizeof(filtersMatch_t) == 4 &&
                          sizeof(filtersAction_t) == 4 && sizeof(counter_type_t) == 4 &&
                          sizeof(cp2cpuCancelParam_t) == 4 && sizeof(l2SrcEntryType_t) == 4 &&
                          sizeof(vlan_tagging_t) == 4 && sizeof(en_Resolution) == 4 &&
                          sizeof(en_StpState) == 4 && sizeof(en_ForwardingType) == 4 &&
                          sizeof(port_type_t) == 4,
                      "enumerations cross the interface as 32-bit integers");

typedef uint32_t filtersEntryId_t;
typedef uint32_t filtersEntryPriority_t;
typedef uint16_t filtersGroupId_t;
typedef uint16_t filtersGroupPriority_t;
typedef uint16_t l4port_t;  // a TCP or UDP port number, a mask for one, or a bound of a range
typedef uint16_t tpid_t;    // an Ethernet tag protocol identifier (IEEE 802.1Q), as 0x8100

// Two VLAN classes that the device attaches to a packet; the numbers are the device's own.
typedef struct vlan_info_t {
  uint32_t svc_vlan_type;        // of the service
  uint32_t proto_cpu_vlan_type;  // of the protocol's path to the CPU
} vlan_info_t;

#ifdef __cplusplus
}  // namespace FiltersCommon
#endif

#undef FILTERS_ENUM
#undef FILTERS_STATIC_ASSERT

#endif  // FILTER_COMMON_FILTER_TYPES_H_
