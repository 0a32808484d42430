#ifndef FILTER_COMMON_FUZZ_OBJECTS_H_
#define FILTER_COMMON_FUZZ_OBJECTS_H_

// Any match and any action of the class interface, and the message that it must write.

#include <filter_common/filter_actions.h>
#include <filter_common/filter_matches.h>

#include <list>
#include <set>
#include <stdexcept>
#include <string>
#include <type_traits>

#include "arguments.h"

namespace fuzz {

inline std::set<unsigned short> vlanIds(Matches& a) {
  std::set<unsigned short> ids;
  for (unsigned left = a.in.below(4); left > 0; --left) ids.insert(a.in.u16());
  for (unsigned short id : ids) a.message.add_vlan_id_(id);
  return ids;
}

inline std::set<unsigned char> pcps(Matches& a) {
  std::set<unsigned char> values;
  for (unsigned left = a.in.below(4); left > 0; --left) values.insert(a.in.u8());
  for (unsigned char value : values) a.message.add_pcp_(value);
  return values;
}

inline std::list<port_type_t> portTypes(Matches& a) {
  std::list<port_type_t> types;
  for (unsigned left = a.in.below(3); left > 0; --left) {
    types.push_back(static_cast<port_type_t>(a.in.below(3)));
    a.message.add_excluded_port_types_(types.back());
  }
  return types;
}

inline vlan_info_t vlanInfo(Matches& a) {
  return {a.u32(&MatchPB::set_vlan_info_svc_vlan_type_),
          a.u32(&MatchPB::set_vlan_info_proto_cpu_vlan_type_)};
}

// An address under a mask, or under all ones from the constructor that takes none.
template <class Address, class T>
T masked(Matches& a, std::string* (MatchPB::*field)(), std::string* (MatchPB::*maskField)()) {
  const auto address = a.address<Address>(field);
  if constexpr (std::is_constructible_v<T, Address, Address>) {
    if (a.in.flag()) return T(address, a.address<Address>(maskField));
  }
  a.allOnes<Address>(maskField);
  return T(address);
}

template <class T>
T mac(Matches& a) {
  return masked<ether_addr, T>(a, &MatchPB::mutable_mac_, &MatchPB::mutable_mac_mask_);
}

template <class T>
T ipv4(Matches& a) {
  return masked<in_addr, T>(a, &MatchPB::mutable_ipv4_, &MatchPB::mutable_ipv4_mask_);
}

template <class T>
T ipv6(Matches& a) {
  return masked<in6_addr, T>(a, &MatchPB::mutable_ipv6_, &MatchPB::mutable_ipv6_mask_);
}

template <class T>
T l4Ports(Matches& a) {
  return T{a.u16(&MatchPB::set_l4port_param1_), a.u16(&MatchPB::set_l4port_param2_)};
}

inline MatchDSCP dscp(Matches& a) {
  const std::uint8_t value = a.in.u8();
  a.message.set_tos_(value % 64 * 4);
  return MatchDSCP(value);
}

// Calls `use` with an object and its message. Code 35 stands for the second class of code 20.
// clang-format off
template <class Use>
auto withMatch(ByteReader& in, Use use) {
  Matches a{in, {}};
  const auto give = [&](const auto& match) { return use(match, a.message); };
  const unsigned code = in.below(36);
  a.message.set_type_(code == 35 ? 20 : code);
  using M = MatchPB;
  switch (code) {
    case 0: return give(MatchAll());
    case 1: return in.flag() ? give(MatchIngressPorts(a.ports()))
                             : give(MatchIngressPorts(portTypes(a)));
    case 2: return give(MatchExternalVlanId(vlanIds(a)));
    case 3: return give(MatchTPID(a.u16(&M::set_tpid_)));
    case 4: return give(mac<MatchDstMac>(a));
    case 5: return give(l4Ports<MatchDstL4Port>(a));
    case 6: return give(l4Ports<MatchSrcL4Port>(a));
    case 7: return give(mac<MatchSrcMac>(a));
    case 8: return give(MatchL2SrcEntryType(a.code<l2SrcEntryType_t>(&M::set_l2_src_)));
    case 9: return give(ipv4<MatchSrcIPv4>(a));
    case 10: return give(ipv4<MatchDstIPv4>(a));
    case 11: return give(MatchInternalVlanId(vlanIds(a)));
    case 12: return give(MatchPcp(pcps(a)));
    case 13: return give(MatchInternalPcp(pcps(a)));
    case 14: return give(ipv6<MatchSrcIPv6>(a));
    case 15: return give(ipv6<MatchDstIPv6>(a));
    case 16: return give(MatchVlanTagging(a.code<vlan_tagging_t>(&M::set_vlan_tagging_)));
    case 17: return give(MatchIpProtocol(a.u8(&M::set_ipprotocol_)));
    case 18: return give(MatchPacketRes(a.code<en_Resolution>(&M::set_packet_resolution_)));
    case 19: return give(MatchMplsTerm(a.flag(&M::set_mpls_terminated_)));
    case 20: return give(MatchToS(a.u8(&M::set_tos_)));
    case 21: return give(MatchVirtualPort(a.limid(&M::set_limid_)));
    case 22: return give(MatchEgressPorts(a.ports()));
    case 23: return give(MatchIngressStpState(a.code<en_StpState>(&M::set_ingress_stp_state_)));
    case 24: return give(MatchVlanInfo(vlanInfo(a)));
    case 25: return give(MatchSrcPort(a.limid(&M::set_limid_)));
    case 26: return give(MatchTTL(a.u8(&M::set_ttl_)));
    case 27: return give(MatchVrfId(a.u16(&M::set_vrf_id_)));
    case 28: return give(MatchDrop(a.flag(&M::set_drop_flag_)));
    case 29: return give(MatchMyStationHit(a.flag(&M::set_hit_flag_)));
    case 30: return give(MatchCpuPort());
    case 31: return give(MatchForwardingType(a.code<en_ForwardingType>(&M::set_fwd_type_)));
    case 32: return give(MatchDestinationCpu());
    case 33: return give(MatchCPUInjectedPackets(a.flag(&M::set_injected_flag_)));
    case 34: return give(l4Ports<MatchDstL4PortRange>(a));
    default: return give(dscp(a));
  }
}
// clang-format on

inline ActionMplsPortSet mplsPortSet(Actions& a) {
  const MplsPorts ports(a.in);
  ActionMplsPortSet action;
  bool thrown = false;
  try {
    action = ActionMplsPortSet(ports.vpn, ports.access);
  } catch (const std::invalid_argument&) {
    thrown = true;
    action = ActionMplsPortSet(limid_make_mpls_vpws(7), limid_make_lag(1));
  }
  FUZZ_CHECK(thrown != ports.valid());
  action.convertToActionPB(&a.message);
  if (!thrown) ports.note(&a.message);
  return action;
}

inline ActionRedirect redirect(Actions& a) {
  const limid_t port = a.limid();
  a.message.add_ports_(port);
  return ActionRedirect(port);
}

// clang-format off
template <class Use>
auto withAction(ByteReader& in, Use use) {
  Actions a{in, {}};
  const auto give = [&](const auto& action) { return use(action, a.message); };
  const unsigned code = in.below(20);
  a.message.set_type_(code);
  using A = ActionPB;
  switch (code) {
    case 0: return give(ActionPermit());
    case 1: return give(ActionDeny());
    case 2: return give(ActionCopyToCpu());
    case 3: return give(ActionBlockEgressPorts(a.ports()));
    case 4: return give(ActionCopyToCpuCancel(
        a.code<cp2cpuCancelParam_t>(&A::set_cp2cpu_cancel_type_)));
    case 5: return give(ActionSetPcp(a.u8(&A::set_pcp_)));
    case 6: return give(ActionSetPcpAndQueue(a.u8(&A::set_pcp_and_queue_)));
    case 7: return give(ActionSetInnerPcp(a.u8(&A::set_pcp_)));
    case 8: return give(ActionSetDSCP(a.u8(&A::set_dscp_)));
    case 9: return give(ActionMapToCosQueue(a.u8(&A::set_cosq_)));
    case 10: return give(ActionMapToCpuCosQueue(a.u8(&A::set_cosq_)));
    case 11: return give(redirect(a));
    case 12: return give(ActionReplaceDstMac(a.address<ether_addr>(&A::mutable_mac_)));
    case 13: return give(ActionRedirectCancel());
    case 14: return give(ActionReplaceSrcMac(a.address<ether_addr>(&A::mutable_mac_)));
    case 15: return give(ActionL3Switch(a.u32(&A::set_l3_dest_id_)));
    case 16: return give(ActionBlackHole());
    case 17: return give(ActionCopyInnerPcp());
    case 18: return give(mplsPortSet(a));
    default: return give(ActionL2ToCpuDrop());
  }
}
// clang-format on

}  // namespace fuzz

#endif  // FILTER_COMMON_FUZZ_OBJECTS_H_
