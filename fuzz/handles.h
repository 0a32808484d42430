#ifndef FILTER_COMMON_FUZZ_HANDLES_H_
#define FILTER_COMMON_FUZZ_HANDLES_H_

// Any match and any action of the procedural interface, the message that it must write, and what
// its getters must tell.

#include <filter_common/filter_actions.h>
#include <filter_common/filter_actions_c.h>
#include <filter_common/filter_matches.h>
#include <filter_common/filter_matches_c.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "arguments.h"

namespace fuzz {

// --- Matches -------------------------------------------------------------------------------------

template <class Address>
bool sameBytes(const Address* address, const std::string& bytes) {
  return bytes == std::string(reinterpret_cast<const char*>(address), sizeof *address);
}

// An address under a mask, or under all ones from the function that takes none.
template <class Address, class Make, class MakeMask>
void* masked(Matches& a, std::string* (MatchPB::*field)(), std::string* (MatchPB::*maskField)(),
             Make make, MakeMask makeMask) {
  const auto address = a.address<Address>(field);
  if (a.in.flag()) {
    const auto mask = a.address<Address>(maskField);
    return makeMask(&address, &mask);
  }
  a.allOnes<Address>(maskField);
  return make(&address);
}

template <class Make, class MakeMask>
void* mac(Matches& a, Make make, MakeMask makeMask) {
  return masked<ether_addr>(a, &MatchPB::mutable_mac_, &MatchPB::mutable_mac_mask_, make, makeMask);
}

template <class Make, class MakeMask>
void* ipv4(Matches& a, Make make, MakeMask makeMask) {
  return masked<in_addr>(a, &MatchPB::mutable_ipv4_, &MatchPB::mutable_ipv4_mask_, make, makeMask);
}

inline void* srcIPv6(Matches& a) {
  const auto address = a.address<in6_addr>(&MatchPB::mutable_ipv6_);
  a.allOnes<in6_addr>(&MatchPB::mutable_ipv6_mask_);
  return newMatchSrcIPv6(&address);
}

template <class Make, class MakeMask>
void* l4Port(Matches& a, Make make, MakeMask makeMask) {
  const l4port_t port = a.u16(&MatchPB::set_l4port_param1_);
  if (a.in.flag()) return makeMask(port, a.u16(&MatchPB::set_l4port_param2_));
  a.message.set_l4port_param2_(0);
  return make(port);
}

template <class Message, class Make>
void* ports(Arguments<Message>& a, Make make) {
  const std::list<limid_t> list = a.ports();
  const std::vector<limid_t> array(list.begin(), list.end());
  return make(array.data(), static_cast<unsigned>(array.size()));
}

template <class Make>
void* port(Matches& a, Make make) {
  const limid_t limid = a.limid(&MatchPB::set_limid_);
  return make(&limid);
}

inline void* vlanInfo(Matches& a) {
  const vlan_info_t info{a.u32(&MatchPB::set_vlan_info_svc_vlan_type_),
                         a.u32(&MatchPB::set_vlan_info_proto_cpu_vlan_type_)};
  return newMatchVlanInfo(&info);
}

// The upper six bits of the byte, of which the function keeps the lower six of what it is given.
inline void* dscp(Matches& a) {
  const std::uint8_t value = a.in.u8();
  a.message.set_tos_(value % 64 * 4);
  return newMatchDSCP(value);
}

inline void* portRange(Matches& a) {
  const l4port_t min = a.u16(&MatchPB::set_l4port_param1_);
  return newMatchDstL4PortRange(min, a.u16(&MatchPB::set_l4port_param2_));
}

template <class Make, class Add>
void* oneOf(Matches& a, Make make, Add add) {
  const auto value = static_cast<std::uint8_t>(a.in.u8());
  (a.message.*add)(value);
  return make(value);
}

// The codes that no function makes give MatchAll.
// clang-format off
inline void* newMatch(unsigned code, Matches& a) {
  using M = MatchPB;
  a.message.set_type_(code);
  switch (code) {
    case 1: return ports(a, newMatchIngressPorts);
    case 2: return oneOf(a, newMatchExternalVlanId, &M::add_vlan_id_);
    case 3: return newMatchTPID(a.u16(&M::set_tpid_));
    case 4: return mac(a, newMatchDstMac, newMatchDstMacMask);
    case 5: return l4Port(a, newMatchDstL4Port, newMatchDstL4PortMask);
    case 6: return l4Port(a, newMatchSrcL4Port, newMatchSrcL4PortMask);
    case 7: return mac(a, newMatchSrcMac, newMatchSrcMacMask);
    case 8: return newMatchL2SrcEntryType(a.code<l2SrcEntryType_t>(&M::set_l2_src_));
    case 9: return ipv4(a, newMatchSrcIPv4, newMatchSrcIPv4Mask);
    case 10: return ipv4(a, newMatchDstIPv4, newMatchDstIPv4Mask);
    case 11: return oneOf(a, newMatchInternalVlanId, &M::add_vlan_id_);
    case 12: return oneOf(a, newMatchPcp, &M::add_pcp_);
    case 13: return oneOf(a, newMatchInternalPcp, &M::add_pcp_);
    case 14: return srcIPv6(a);
    case 15: return masked<in6_addr>(a, &M::mutable_ipv6_, &M::mutable_ipv6_mask_, newMatchDstIPv6,
                                     newMatchDstIPv6Mask);
    case 16: return newMatchVlanTagging(a.code<vlan_tagging_t>(&M::set_vlan_tagging_));
    case 17: return newMatchIpProtocol(a.u8(&M::set_ipprotocol_));
    case 18: return newMatchPacketRes(a.code<en_Resolution>(&M::set_packet_resolution_));
    case 19: return newMatchMplsTerm(a.flag(&M::set_mpls_terminated_));
    case 20: return dscp(a);
    case 21: return port(a, newMatchVirtualPort);
    case 22: return ports(a, newMatchEgressPorts);
    case 23: return newMatchIngressStpState(a.code<en_StpState>(&M::set_ingress_stp_state_));
    case 24: return vlanInfo(a);
    case 25: return port(a, newMatchSrcPort);
    case 26: return newMatchTTL(a.u8(&M::set_ttl_));
    case 27: return newMatchVrfId(a.u16(&M::set_vrf_id_));
    case 28: return newMatchDrop(a.flag(&M::set_drop_flag_));
    case 30: return newMatchCpuPort();
    case 33: return newMatchCPUInjectedPackets(a.flag(&M::set_injected_flag_));
    case 34: return portRange(a);
    default: a.message.set_type_(0); return newMatchAll();
  }
}
// clang-format on

// Each getter tells what the message tells.
inline void checkPointers(void* m, const MatchPB& message) {
  switch (message.type_()) {
    case FILTERS_MATCH_DST_MAC:
    case FILTERS_MATCH_SRC_MAC:
      FUZZ_CHECK(sameBytes(matchMacGetMac(m), message.mac_()));
      FUZZ_CHECK(sameBytes(matchMacGetMask(m), message.mac_mask_()));
      break;
    case FILTERS_MATCH_SRC_IPV4:
    case FILTERS_MATCH_DST_IPV4:
      FUZZ_CHECK(sameBytes(matchIPv4GetIPv4(m), message.ipv4_()));
      FUZZ_CHECK(sameBytes(matchIPv4GetIPv4Mask(m), message.ipv4_mask_()));
      break;
    case FILTERS_MATCH_SRC_IPV6:
    case FILTERS_MATCH_DST_IPV6:
      FUZZ_CHECK(sameBytes(matchIPv6GetIPv6(m), message.ipv6_()));
      FUZZ_CHECK(sameBytes(matchIPv6GetIPv6Mask(m), message.ipv6_mask_()));
      break;
    case FILTERS_MATCH_DST_L4_PORT_RANGE: {
      auto* range = static_cast<MatchDstL4PortRange*>(static_cast<Match*>(m));
      FUZZ_CHECK(matchGetL4PortRangeMin(range) == message.l4port_param1_());
      FUZZ_CHECK(matchGetL4PortRangeMax(range) == message.l4port_param2_());
      [[fallthrough]];
    }
    case FILTERS_MATCH_DST_L4_PORT:
    case FILTERS_MATCH_SRC_L4_PORT:
      FUZZ_CHECK(matchGetL4Port(m) == message.l4port_param1_());
      FUZZ_CHECK(matchGetL4PortMask(m) == message.l4port_param2_());
      break;
    case FILTERS_MATCH_VLAN_INFO:
      FUZZ_CHECK(matchVlanInfoGet(m).svc_vlan_type == message.vlan_info_svc_vlan_type_());
      FUZZ_CHECK(matchVlanInfoGet(m).proto_cpu_vlan_type ==
                 message.vlan_info_proto_cpu_vlan_type_());
      break;
  }
}

// clang-format off
inline void checkNumbers(void* m, const MatchPB& message) {
  auto* match = static_cast<Match*>(m);
  switch (message.type_()) {
    case 3: return FUZZ_CHECK(matchGetTPID(static_cast<MatchTPID*>(match)) == message.tpid_());
    case 8: return FUZZ_CHECK(matchGetL2SrcEntryType(static_cast<MatchL2SrcEntryType*>(match)) ==
                              message.l2_src_());
    case 17: return FUZZ_CHECK(matchIpProtocolGetIpProt(m) == message.ipprotocol_());
    case 18: return FUZZ_CHECK(matchPacketResGet(m) == message.packet_resolution_());
    case 19: return FUZZ_CHECK(matchMplsTermGet(m) == message.mpls_terminated_());
    case 20: return FUZZ_CHECK(matchDSCPGet(m) == message.tos_() / 4);
    case 21: return FUZZ_CHECK(matchGetLimId(m) == message.limid_());
    case 23: return FUZZ_CHECK(matchIngressStpStateGet(m) == message.ingress_stp_state_());
    case 25: return FUZZ_CHECK(matchGetLimId(m) == message.limid_());
    case 26: return FUZZ_CHECK(matchTTLGet(m) == message.ttl_());
    case 27: return FUZZ_CHECK(matchVrfIdGet(m) == message.vrf_id_());
    case 28: return FUZZ_CHECK(matchDropGet(m) == message.drop_flag_());
    case 33: return FUZZ_CHECK(MatchCPUInjectedPacketsGet(m) == message.injected_flag_());
  }
}
// clang-format on

// --- Actions -------------------------------------------------------------------------------------

inline void* newMplsPortSet(Actions& a) {
  const MplsPorts ports(a.in);
  void* action = nullptr;
  try {
    action = newActionMplsPortSet(ports.vpn, ports.access);
    ports.note(&a.message);
  } catch (const std::invalid_argument&) {
  }
  FUZZ_CHECK((action != nullptr) == ports.valid());
  if (action != nullptr) return action;
  a.message.set_type_(FILTERS_ACTION_PERMIT);
  return newActionPermit();
}

inline void* newCancel(Actions& a) {
  const bool ofSwitch = a.in.flag();
  a.message.set_cp2cpu_cancel_type_(ofSwitch ? SWITCH_TO_CPU_CANCEL : COPY_TO_CPU_CANCEL);
  return ofSwitch ? newActionSwitchToCpuCancel() : newActionCopyToCpuCancel();
}

inline void* newRedirect(Actions& a) {
  const limid_t port = a.limid();
  a.message.add_ports_(port);
  return newActionRedirect(port);
}

// The codes that no function makes give ActionPermit.
// clang-format off
inline void* newAction(unsigned code, Actions& a) {
  using A = ActionPB;
  a.message.set_type_(code);
  switch (code) {
    case 1: return newActionDeny();
    case 2: return newActionCopyToCpu();
    case 3: return ports(a, newActionBlockEgressPorts);
    case 4: return newCancel(a);
    case 5: return newActionSetPcp(a.u8(&A::set_pcp_));
    case 6: return newActionSetPcpAndQueue(a.u8(&A::set_pcp_and_queue_));
    case 8: return newActionSetDSCP(a.u8(&A::set_dscp_));
    case 9: return newActionMapToCosQueue(a.u8(&A::set_cosq_));
    case 10: return newActionMapToCpuCosQueue(a.u8(&A::set_cosq_));
    case 11: return newRedirect(a);
    case 12: return newReplaceDstMac(a.address<ether_addr>(&A::mutable_mac_));
    case 13: return newActionRedirectCancel();
    case 14: return newReplaceSrcMac(a.address<ether_addr>(&A::mutable_mac_));
    case 15: return newActionL3Switch(a.u32(&A::set_l3_dest_id_));
    case 17: return newActionCopyInnerPcp();
    case 18: return newMplsPortSet(a);
    default: a.message.set_type_(0); return newActionPermit();
  }
}

inline void checkGetters(void* m, const ActionPB& message) {
  switch (message.type_()) {
    case 4: return FUZZ_CHECK(actionCopyToCpuCancelGetTypeOfCancel(m) ==
                              message.cp2cpu_cancel_type_());
    case 5: return FUZZ_CHECK(actionSetPcpGetPcp(m) == message.pcp_());
    case 6: return FUZZ_CHECK(actionSetPcpAndQueueGetPcpAndQueue(m) == message.pcp_and_queue_());
    case 8: return FUZZ_CHECK(actionSetDSCPGetDSCP(m) == message.dscp_());
    case 9: return FUZZ_CHECK(actionMapToCosQueueGetCosQueue(m) == message.cosq_());
    case 15: return FUZZ_CHECK(actionL3SwitchGetL3DestinationId(m) == message.l3_dest_id_());
  }
}
// clang-format on

}  // namespace fuzz

#endif  // FILTER_COMMON_FUZZ_HANDLES_H_
