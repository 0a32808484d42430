#ifndef FILTER_COMMON_FILTER_MATCHES_C_H_
#define FILTER_COMMON_FILTER_MATCHES_C_H_

// Matches for procedural code, in C11 and C++. The classes of filter_matches.h say what each match
// means; this header says what is special to its C functions.
//
// Handles. A new... function returns a match object as void*, never null. The caller owns it until
// deleteMatch(). In C the handle can be passed wherever a Match* or another pointer to a match is
// expected; in C++ it must be cast with static_cast. Arguments given by pointer are copied. A null
// argument causes undefined behaviour, unless it is an array whose count is 0.
//
// Classes. A function does not check that the handle is of the class that it reads. A match of
// another class causes undefined behaviour. matchGetType() accepts a match of any class.
//
// Assertions. deleteMatch() and the first group of getters below stop the process on a null handle
// with the C library's assertion message, in every kind of build. The second group of getters does
// not check the handle: a null handle causes undefined behaviour.
//
// Exceptions. The new... functions may throw std::bad_alloc. The exception passes through C callers
// if they are compiled with -fexceptions. If no C++ caller above them catches it, the process ends.
// Nothing is leaked.
//
// Threads. Any number of threads may read a match at once. A thread that deletes it, or fills it
// anew from an entry, must be the only one to use it.
//
// Gaps are all deliberate. No function makes a MatchToS, MatchMyStationHit, MatchForwardingType or
// MatchDestinationCpu. No function makes an IPv6 source with a mask, or a match that excludes port
// types. Sets of VLAN ids and PCPs can be made only with exactly one element. No getter reads a
// MatchIngressPorts, MatchEgressPorts, MatchExternalVlanId, MatchInternalVlanId, MatchPcp,
// MatchInternalPcp or MatchVlanTagging. No function compares, prints or serializes matches.

#include <filter_common/filter_types.h>

#ifdef __cplusplus
namespace FiltersCommon {
class MatchDstL4PortRange;
class MatchL2SrcEntryType;
class MatchTPID;
extern "C" {
#else
typedef struct MatchDstL4PortRange MatchDstL4PortRange;
typedef struct MatchL2SrcEntryType MatchL2SrcEntryType;
typedef struct MatchTPID MatchTPID;
#endif

// --- Making --------------------------------------------------------------------------------------

FILTERS_API void* newMatchAll(void);

// The array has `count` ports, whose order is kept. If count is 0, the array is not read.
FILTERS_API void* newMatchIngressPorts(const limid_t* ports, unsigned int count);
FILTERS_API void* newMatchEgressPorts(const limid_t* ports, unsigned int count);
FILTERS_API void* newMatchVirtualPort(const limid_t* port);
FILTERS_API void* newMatchSrcPort(const limid_t* port);
FILTERS_API void* newMatchCpuPort(void);
FILTERS_API void* newMatchCPUInjectedPackets(bool injected);
FILTERS_API void* newMatchDrop(bool drop);
FILTERS_API void* newMatchPacketRes(en_Resolution resolution);
FILTERS_API void* newMatchIngressStpState(en_StpState state);
FILTERS_API void* newMatchMplsTerm(bool terminated);

// Layer 2. Addresses are in transmission order. The default mask is all ones.
FILTERS_API void* newMatchDstMac(const struct ether_addr* mac);
FILTERS_API void* newMatchDstMacMask(const struct ether_addr* mac, const struct ether_addr* mask);
FILTERS_API void* newMatchSrcMac(const struct ether_addr* mac);
FILTERS_API void* newMatchSrcMacMask(const struct ether_addr* mac, const struct ether_addr* mask);
FILTERS_API void* newMatchL2SrcEntryType(l2SrcEntryType_t entryType);
FILTERS_API void* newMatchTPID(tpid_t tpid);
FILTERS_API void* newMatchVlanTagging(vlan_tagging_t tagging);
FILTERS_API void* newMatchExternalVlanId(uint16_t vlanId);
FILTERS_API void* newMatchInternalVlanId(uint16_t vlanId);
FILTERS_API void* newMatchPcp(uint8_t pcp);
FILTERS_API void* newMatchInternalPcp(uint8_t pcp);
FILTERS_API void* newMatchVlanInfo(const vlan_info_t* info);

// Layer 3. Addresses are in network byte order. The default mask is all ones.
FILTERS_API void* newMatchSrcIPv4(const struct in_addr* ip);
FILTERS_API void* newMatchSrcIPv4Mask(const struct in_addr* ip, const struct in_addr* mask);
FILTERS_API void* newMatchDstIPv4(const struct in_addr* ip);
FILTERS_API void* newMatchDstIPv4Mask(const struct in_addr* ip, const struct in_addr* mask);
FILTERS_API void* newMatchSrcIPv6(const struct in6_addr* ip);
FILTERS_API void* newMatchDstIPv6(const struct in6_addr* ip);
FILTERS_API void* newMatchDstIPv6Mask(const struct in6_addr* ip, const struct in6_addr* mask);
FILTERS_API void* newMatchIpProtocol(uint8_t protocol);
FILTERS_API void* newMatchDSCP(uint8_t dscp);  // its code is FILTERS_MATCH_TOS
FILTERS_API void* newMatchTTL(uint8_t ttl);
FILTERS_API void* newMatchVrfId(uint16_t vrfId);

// Layer 4. Ports are in host byte order. Deliberate: the default mask is 0.
FILTERS_API void* newMatchDstL4Port(l4port_t port);
FILTERS_API void* newMatchDstL4PortMask(l4port_t port, l4port_t mask);
FILTERS_API void* newMatchSrcL4Port(l4port_t port);
FILTERS_API void* newMatchSrcL4PortMask(l4port_t port, l4port_t mask);
FILTERS_API void* newMatchDstL4PortRange(l4port_t min, l4port_t max);

FILTERS_API void deleteMatch(void* m);

// --- Getters that stop the process on a null handle ----------------------------------------------

FILTERS_API filtersMatch_t matchGetType(void* m);  // for any match

// The next functions return pointers into the match, which are valid until the match is deleted or
// filled anew.
FILTERS_API const struct ether_addr* matchMacGetMac(void* m);
FILTERS_API const struct ether_addr* matchMacGetMask(void* m);
FILTERS_API const struct in_addr* matchIPv4GetIPv4(void* m);
FILTERS_API const struct in_addr* matchIPv4GetIPv4Mask(void* m);
FILTERS_API const struct in6_addr* matchIPv6GetIPv6(void* m);
FILTERS_API const struct in6_addr* matchIPv6GetIPv6Mask(void* m);

FILTERS_API limid_t matchGetLimId(void* m);  // for a virtual port or source port
FILTERS_API tpid_t matchGetTPID(MatchTPID* m);
FILTERS_API l2SrcEntryType_t matchGetL2SrcEntryType(MatchL2SrcEntryType* m);

// For any layer-4 match. For a range they return its bounds.
FILTERS_API l4port_t matchGetL4Port(void* m);
FILTERS_API l4port_t matchGetL4PortMask(void* m);
FILTERS_API l4port_t matchGetL4PortRangeMin(MatchDstL4PortRange* m);
FILTERS_API l4port_t matchGetL4PortRangeMax(MatchDstL4PortRange* m);

// --- Getters: a null handle causes undefined behaviour -------------------------------------------

FILTERS_API uint8_t matchIpProtocolGetIpProt(void* m);
FILTERS_API en_Resolution matchPacketResGet(void* m);
FILTERS_API bool matchMplsTermGet(void* m);
FILTERS_API uint8_t matchDSCPGet(void* m);  // for a match from newMatchDSCP()
FILTERS_API uint8_t matchTTLGet(void* m);
FILTERS_API en_StpState matchIngressStpStateGet(void* m);
FILTERS_API vlan_info_t matchVlanInfoGet(void* m);
FILTERS_API uint16_t matchVrfIdGet(void* m);
FILTERS_API bool matchDropGet(void* m);
FILTERS_API bool MatchCPUInjectedPacketsGet(void* m);  // Deliberate: the capital stays

#ifdef __cplusplus
}  // extern "C"
}  // namespace FiltersCommon
#endif

#endif  // FILTER_COMMON_FILTER_MATCHES_C_H_
