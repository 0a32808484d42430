#include <filter_common/filter_matches_c.h>

#include <filter_common/filter_matches.h>

#include "assertion.h"
#include "handle.h"

namespace FiltersCommon {
namespace {

template <class T>
const T& as(void* m) {
  return fromHandle<Match, T>(m);
}

}  // namespace

extern "C" {

void* newMatchAll() { return newHandle<Match, MatchAll>(); }

void* newMatchIngressPorts(const limid_t* ports, unsigned int count) {
  return newHandle<Match, MatchIngressPorts>(portList(ports, count));
}

void* newMatchEgressPorts(const limid_t* ports, unsigned int count) {
  return newHandle<Match, MatchEgressPorts>(portList(ports, count));
}

void* newMatchVirtualPort(const limid_t* port) { return newHandle<Match, MatchVirtualPort>(*port); }

void* newMatchSrcPort(const limid_t* port) { return newHandle<Match, MatchSrcPort>(*port); }

void* newMatchCpuPort() { return newHandle<Match, MatchCpuPort>(); }

void* newMatchCPUInjectedPackets(bool injected) {
  return newHandle<Match, MatchCPUInjectedPackets>(injected);
}

void* newMatchDrop(bool drop) { return newHandle<Match, MatchDrop>(drop); }

void* newMatchPacketRes(en_Resolution resolution) {
  return newHandle<Match, MatchPacketRes>(resolution);
}

void* newMatchIngressStpState(en_StpState state) {
  return newHandle<Match, MatchIngressStpState>(state);
}

void* newMatchMplsTerm(bool terminated) { return newHandle<Match, MatchMplsTerm>(terminated); }

void* newMatchDstMac(const ether_addr* mac) { return newHandle<Match, MatchDstMac>(*mac); }

void* newMatchDstMacMask(const ether_addr* mac, const ether_addr* mask) {
  return newHandle<Match, MatchDstMac>(*mac, *mask);
}

void* newMatchSrcMac(const ether_addr* mac) { return newHandle<Match, MatchSrcMac>(*mac); }

void* newMatchSrcMacMask(const ether_addr* mac, const ether_addr* mask) {
  return newHandle<Match, MatchSrcMac>(*mac, *mask);
}

void* newMatchL2SrcEntryType(l2SrcEntryType_t entryType) {
  return newHandle<Match, MatchL2SrcEntryType>(entryType);
}

void* newMatchTPID(tpid_t tpid) { return newHandle<Match, MatchTPID>(tpid); }

void* newMatchVlanTagging(vlan_tagging_t tagging) {
  return newHandle<Match, MatchVlanTagging>(tagging);
}

void* newMatchExternalVlanId(uint16_t vlanId) {
  return newHandle<Match, MatchExternalVlanId>(vlanId);
}

void* newMatchInternalVlanId(uint16_t vlanId) {
  return newHandle<Match, MatchInternalVlanId>(vlanId);
}

void* newMatchPcp(uint8_t pcp) { return newHandle<Match, MatchPcp>(pcp); }

void* newMatchInternalPcp(uint8_t pcp) { return newHandle<Match, MatchInternalPcp>(pcp); }

void* newMatchVlanInfo(const vlan_info_t* info) { return newHandle<Match, MatchVlanInfo>(*info); }

void* newMatchSrcIPv4(const in_addr* ip) { return newHandle<Match, MatchSrcIPv4>(*ip); }

void* newMatchSrcIPv4Mask(const in_addr* ip, const in_addr* mask) {
  return newHandle<Match, MatchSrcIPv4>(*ip, *mask);
}

void* newMatchDstIPv4(const in_addr* ip) { return newHandle<Match, MatchDstIPv4>(*ip); }

void* newMatchDstIPv4Mask(const in_addr* ip, const in_addr* mask) {
  return newHandle<Match, MatchDstIPv4>(*ip, *mask);
}

void* newMatchSrcIPv6(const in6_addr* ip) { return newHandle<Match, MatchSrcIPv6>(*ip); }

void* newMatchDstIPv6(const in6_addr* ip) { return newHandle<Match, MatchDstIPv6>(*ip); }

void* newMatchDstIPv6Mask(const in6_addr* ip, const in6_addr* mask) {
  return newHandle<Match, MatchDstIPv6>(*ip, *mask);
}

void* newMatchIpProtocol(uint8_t protocol) { return newHandle<Match, MatchIpProtocol>(protocol); }

void* newMatchDSCP(uint8_t dscp) { return newHandle<Match, MatchDSCP>(dscp); }

void* newMatchTTL(uint8_t ttl) { return newHandle<Match, MatchTTL>(ttl); }

void* newMatchVrfId(uint16_t vrfId) { return newHandle<Match, MatchVrfId>(vrfId); }

void* newMatchDstL4Port(l4port_t port) { return newHandle<Match, MatchDstL4Port>(port); }

void* newMatchDstL4PortMask(l4port_t port, l4port_t mask) {
  return newHandle<Match, MatchDstL4Port>(port, mask);
}

void* newMatchSrcL4Port(l4port_t port) { return newHandle<Match, MatchSrcL4Port>(port); }

void* newMatchSrcL4PortMask(l4port_t port, l4port_t mask) {
  return newHandle<Match, MatchSrcL4Port>(port, mask);
}

void* newMatchDstL4PortRange(l4port_t min, l4port_t max) {
  return newHandle<Match, MatchDstL4PortRange>(min, max);
}

void deleteMatch(void* m) {
  FILTERS_ASSERT(m != nullptr, "void FiltersCommon::deleteMatch(void*)");
  delete &fromHandle<Match>(m);
}

filtersMatch_t matchGetType(void* m) {
  FILTERS_ASSERT(m != nullptr, "FiltersCommon::filtersMatch_t FiltersCommon::matchGetType(void*)");
  return as<Match>(m).getType();
}

const ether_addr* matchMacGetMac(void* m) {
  FILTERS_ASSERT(m != nullptr, "const ether_addr* FiltersCommon::matchMacGetMac(void*)");
  return as<MatchMac>(m).getMac();
}

const ether_addr* matchMacGetMask(void* m) {
  FILTERS_ASSERT(m != nullptr, "const ether_addr* FiltersCommon::matchMacGetMask(void*)");
  return as<MatchMac>(m).getMask();
}

const in_addr* matchIPv4GetIPv4(void* m) {
  FILTERS_ASSERT(m != nullptr, "const in_addr* FiltersCommon::matchIPv4GetIPv4(void*)");
  return as<MatchIPv4>(m).getIPv4();
}

const in_addr* matchIPv4GetIPv4Mask(void* m) {
  FILTERS_ASSERT(m != nullptr, "const in_addr* FiltersCommon::matchIPv4GetIPv4Mask(void*)");
  return as<MatchIPv4>(m).getIPv4Mask();
}

const in6_addr* matchIPv6GetIPv6(void* m) {
  FILTERS_ASSERT(m != nullptr, "const in6_addr* FiltersCommon::matchIPv6GetIPv6(void*)");
  return as<MatchIPv6>(m).getIPv6();
}

const in6_addr* matchIPv6GetIPv6Mask(void* m) {
  FILTERS_ASSERT(m != nullptr, "const in6_addr* FiltersCommon::matchIPv6GetIPv6Mask(void*)");
  return as<MatchIPv6>(m).getIPv6Mask();
}

limid_t matchGetLimId(void* m) {
  FILTERS_ASSERT(m != nullptr, "limid_t FiltersCommon::matchGetLimId(void*)");
  return as<MatchLimId>(m).getLimId();
}

tpid_t matchGetTPID(MatchTPID* m) {
  FILTERS_ASSERT(m != nullptr,
                 "FiltersCommon::tpid_t FiltersCommon::matchGetTPID(FiltersCommon::MatchTPID*)");
  return m->getTPID();
}

l2SrcEntryType_t matchGetL2SrcEntryType(MatchL2SrcEntryType* m) {
  FILTERS_ASSERT(m != nullptr,
                 "FiltersCommon::l2SrcEntryType_t "
                 "FiltersCommon::matchGetL2SrcEntryType(FiltersCommon::MatchL2SrcEntryType*)");
  return m->getL2SrcEntryType();
}

l4port_t matchGetL4Port(void* m) {
  FILTERS_ASSERT(m != nullptr, "FiltersCommon::l4port_t FiltersCommon::matchGetL4Port(void*)");
  return as<MatchL4Port>(m).getParam1();
}

l4port_t matchGetL4PortMask(void* m) {
  FILTERS_ASSERT(m != nullptr, "FiltersCommon::l4port_t FiltersCommon::matchGetL4PortMask(void*)");
  return as<MatchL4Port>(m).getParam2();
}

l4port_t matchGetL4PortRangeMin(MatchDstL4PortRange* m) {
  FILTERS_ASSERT(m != nullptr,
                 "FiltersCommon::l4port_t "
                 "FiltersCommon::matchGetL4PortRangeMin(FiltersCommon::MatchDstL4PortRange*)");
  return m->getMinPort();
}

l4port_t matchGetL4PortRangeMax(MatchDstL4PortRange* m) {
  FILTERS_ASSERT(m != nullptr,
                 "FiltersCommon::l4port_t "
                 "FiltersCommon::matchGetL4PortRangeMax(FiltersCommon::MatchDstL4PortRange*)");
  return m->getMaxPort();
}

uint8_t matchIpProtocolGetIpProt(void* m) { return as<MatchIpProtocol>(m).getIpProtocol(); }

en_Resolution matchPacketResGet(void* m) { return as<MatchPacketRes>(m).getPktRes(); }

bool matchMplsTermGet(void* m) { return as<MatchMplsTerm>(m).getMplsTerm(); }

uint8_t matchDSCPGet(void* m) { return as<MatchDSCP>(m).getDSCP(); }

uint8_t matchTTLGet(void* m) { return as<MatchTTL>(m).getTTL(); }

en_StpState matchIngressStpStateGet(void* m) {
  return as<MatchIngressStpState>(m).getIngressStpState();
}

vlan_info_t matchVlanInfoGet(void* m) { return as<MatchVlanInfo>(m).getVlanInfo(); }

uint16_t matchVrfIdGet(void* m) { return as<MatchVrfId>(m).getVrfId(); }

bool matchDropGet(void* m) { return as<MatchDrop>(m).getDropFlag(); }

bool MatchCPUInjectedPacketsGet(void* m) { return as<MatchCPUInjectedPackets>(m).getInjected(); }

}  // extern "C"
}  // namespace FiltersCommon
