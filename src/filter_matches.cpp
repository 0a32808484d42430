#include <filter_common/filter_matches.h>

#include <filter_common/filter_matches.pb.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <utility>

#include "match_visit.h"
#include "wire.h"

namespace FiltersCommon {
namespace {

// All 128 bits, the same in every byte order.
in6_addr allOnesIPv6() {
  in6_addr mask;
  std::memset(&mask, 0xff, sizeof mask);
  return mask;
}

// Writes a set of values, which is a sorted vector without duplicates.
template <class Value, class Field>
void setTo(Field* field, const std::vector<Value>& values) {
  field->Clear();
  for (Value value : values) field->Add(value);
}

void makeSet(std::vector<unsigned short>* values) {
  std::sort(values->begin(), values->end());
  values->erase(std::unique(values->begin(), values->end()), values->end());
}

// The numbers of a field as a set, each modulo `valueCount`. Duplicates are removed whenever
// 2 * valueCount numbers are held, so that a long field needs no more memory than these.
template <class Field>
std::vector<unsigned short> setFrom(const Field& field, std::size_t valueCount) {
  std::vector<unsigned short> read;
  read.reserve(std::min(2 * valueCount, static_cast<std::size_t>(field.size())));
  for (auto value : field) {
    if (read.size() == 2 * valueCount) makeSet(&read);
    read.push_back(static_cast<unsigned short>(value % valueCount));
  }
  makeSet(&read);
  return read;
}

std::vector<unsigned char> pcpsFrom(const MatchPB& message) {
  const std::vector<unsigned short> pcps = setFrom(message.pcp_(), 1u << 8);
  return {pcps.begin(), pcps.end()};
}

}  // namespace

void Match::convertToMatchPB(MatchPB* message) const { message->set_type_(getType()); }

void Match::convertFromMatchPB(const MatchPB*) {}

bool Match::operator==(const Match& other) const {
  if (getType() != other.getType()) return false;
  // Deliberate: two matches with the same unknown code differ, while two such actions are equal.
  return visitMatch(getType(), false, [&](auto tag) {
    using T = typename decltype(tag)::Class;
    return static_cast<const T&>(*this) == static_cast<const T&>(other);
  });
}

// --- Ports ---------------------------------------------------------------------------------------

MatchPorts::MatchPorts(filtersMatch_t type, const std::list<limid_t>& ports)
    : Match(type), ports_(ports.begin(), ports.end()) {}

MatchPorts::MatchPorts(filtersMatch_t type, const std::list<port_type_t>& excludedPortTypes)
    : Match(type), excludedPortTypes_(excludedPortTypes.begin(), excludedPortTypes.end()) {}

std::list<port_type_t> MatchPorts::getExcludedPortTypes() const {
  return {excludedPortTypes_.begin(), excludedPortTypes_.end()};
}

filtersErr_t MatchPorts::setPorts(const std::list<limid_t>& ports) {
  if (!excludedPortTypes_.empty()) return FILTERS_ERR_INVALID_ARGUMENT;
  ports_ = std::vector<limid_t>(ports.begin(), ports.end());
  return FILTERS_OK;
}

bool MatchPorts::operator==(const MatchPorts& other) const {
  return getType() == other.getType() && samePorts(ports_, other.ports_) &&
         excludedPortTypes_ == other.excludedPortTypes_;
}

void MatchPorts::appendTo(MatchPB* message) const {
  for (port_type_t type : excludedPortTypes_) message->add_excluded_port_types_(type);
  appendPortsTo(message->mutable_ports_(), ports_);
}

void MatchPorts::appendFrom(const MatchPB& message, bool withExcludedTypes) {
  const auto& types = message.excluded_port_types_();
  ports_.reserve(ports_.size() + static_cast<std::size_t>(message.ports__size()));
  if (withExcludedTypes) {
    excludedPortTypes_.reserve(excludedPortTypes_.size() + static_cast<std::size_t>(types.size()));
    for (std::uint32_t type : types) {
      excludedPortTypes_.push_back(static_cast<port_type_t>(type));
    }
  }
  appendPortsFrom(message.ports_(), &ports_);
}

MatchIngressPorts::MatchIngressPorts(const std::list<limid_t>& ports)
    : MatchPorts(FILTERS_MATCH_INGRESS_PORTS, ports) {}

MatchIngressPorts::MatchIngressPorts(const std::list<port_type_t>& excludedPortTypes)
    : MatchPorts(FILTERS_MATCH_INGRESS_PORTS, excludedPortTypes) {}

// Deliberate: ports are added to those that the message or the object already holds, while VLAN ids
// and PCPs replace the old ones.
void MatchIngressPorts::convertToMatchPB(MatchPB* message) const {
  Match::convertToMatchPB(message);
  appendTo(message);
}

void MatchIngressPorts::convertFromMatchPB(const MatchPB* message) { appendFrom(*message, true); }

MatchEgressPorts::MatchEgressPorts(const std::list<limid_t>& ports)
    : MatchPorts(FILTERS_MATCH_EGRESS_PORTS, ports) {}

void MatchEgressPorts::convertToMatchPB(MatchPB* message) const {
  Match::convertToMatchPB(message);
  appendTo(message);  // this class never has excluded types
}

void MatchEgressPorts::convertFromMatchPB(const MatchPB* message) { appendFrom(*message, false); }

bool MatchLimId::operator==(const MatchLimId& other) const {
  return getType() == other.getType() && sameBytes(limId_, other.limId_);
}

void MatchLimId::convertToMatchPB(MatchPB* message) const {
  Match::convertToMatchPB(message);
  message->set_limid_(limidToWire(limId_));
}

void MatchLimId::convertFromMatchPB(const MatchPB* message) {
  limId_ = limidFromWire(message->limid_());
}

// --- Sets ----------------------------------------------------------------------------------------

MatchVlanId::MatchVlanId(filtersMatch_t type, std::set<unsigned short>&& vlanIds)
    : Match(type), vlanIds_(vlanIds.begin(), vlanIds.end()) {}

bool MatchVlanId::operator==(const MatchVlanId& other) const {
  return getType() == other.getType() && vlanIds_ == other.vlanIds_;
}

void MatchVlanId::convertToMatchPB(MatchPB* message) const {
  Match::convertToMatchPB(message);
  setTo(message->mutable_vlan_id_(), vlanIds_);
}

void MatchVlanId::convertFromMatchPB(const MatchPB* message) {
  vlanIds_ = setFrom(message->vlan_id_(), 1u << 16);
}

MatchExternalVlanId::MatchExternalVlanId(std::set<unsigned short> vlanIds)
    : MatchVlanId(FILTERS_MATCH_EXTERNAL_VLAN_ID, std::move(vlanIds)) {}

MatchExternalVlanId::MatchExternalVlanId(unsigned short vlanId)
    : MatchVlanId(FILTERS_MATCH_EXTERNAL_VLAN_ID, {vlanId}) {}

MatchInternalVlanId::MatchInternalVlanId(std::set<unsigned short> vlanIds)
    : MatchVlanId(FILTERS_MATCH_INTERNAL_VLAN_ID, std::move(vlanIds)) {}

MatchInternalVlanId::MatchInternalVlanId(unsigned short vlanId)
    : MatchVlanId(FILTERS_MATCH_INTERNAL_VLAN_ID, {vlanId}) {}

MatchPcp::MatchPcp(const std::set<unsigned char>& pcps)
    : Match(FILTERS_MATCH_PCP), pcps_(pcps.begin(), pcps.end()) {}

MatchPcp::MatchPcp(unsigned char pcp) : Match(FILTERS_MATCH_PCP), pcps_{pcp} {}

void MatchPcp::convertToMatchPB(MatchPB* message) const {
  Match::convertToMatchPB(message);
  setTo(message->mutable_pcp_(), pcps_);
}

void MatchPcp::convertFromMatchPB(const MatchPB* message) { pcps_ = pcpsFrom(*message); }

MatchInternalPcp::MatchInternalPcp(const std::set<unsigned char>& pcps)
    : Match(FILTERS_MATCH_INTERNAL_PCP), pcps_(pcps.begin(), pcps.end()) {}

MatchInternalPcp::MatchInternalPcp(unsigned char pcp)
    : Match(FILTERS_MATCH_INTERNAL_PCP), pcps_{pcp} {}

void MatchInternalPcp::convertToMatchPB(MatchPB* message) const {
  Match::convertToMatchPB(message);
  setTo(message->mutable_pcp_(), pcps_);
}

void MatchInternalPcp::convertFromMatchPB(const MatchPB* message) { pcps_ = pcpsFrom(*message); }

// --- Addresses and layer-4 ports -----------------------------------------------------------------

MatchMac::MatchMac(filtersMatch_t type, ether_addr mac)
    : MatchMac(type, mac, {{0xff, 0xff, 0xff, 0xff, 0xff, 0xff}}) {}

bool MatchMac::operator==(const MatchMac& other) const {
  return getType() == other.getType() && sameAddress(mac_, other.mac_) &&
         sameAddress(mask_, other.mask_);
}

void MatchMac::convertToMatchPB(MatchPB* message) const {
  Match::convertToMatchPB(message);
  addressToWire(mac_, message->mutable_mac_());
  addressToWire(mask_, message->mutable_mac_mask_());
}

void MatchMac::convertFromMatchPB(const MatchPB* message) {
  mac_ = addressFromWire<ether_addr>(message->mac_());
  mask_ = addressFromWire<ether_addr>(message->mac_mask_());
}

MatchIPv4::MatchIPv4(filtersMatch_t type, in_addr ip) : MatchIPv4(type, ip, {INADDR_NONE}) {}

bool MatchIPv4::operator==(const MatchIPv4& other) const {
  return getType() == other.getType() && sameAddress(ip_, other.ip_) &&
         sameAddress(mask_, other.mask_);
}

void MatchIPv4::convertToMatchPB(MatchPB* message) const {
  Match::convertToMatchPB(message);
  addressToWire(ip_, message->mutable_ipv4_());
  addressToWire(mask_, message->mutable_ipv4_mask_());
}

void MatchIPv4::convertFromMatchPB(const MatchPB* message) {
  ip_ = addressFromWire<in_addr>(message->ipv4_());
  mask_ = addressFromWire<in_addr>(message->ipv4_mask_());
}

MatchIPv6::MatchIPv6(filtersMatch_t type, in6_addr ip) : MatchIPv6(type, ip, allOnesIPv6()) {}

bool MatchIPv6::operator==(const MatchIPv6& other) const {
  return getType() == other.getType() && sameAddress(ip_, other.ip_) &&
         sameAddress(mask_, other.mask_);
}

void MatchIPv6::convertToMatchPB(MatchPB* message) const {
  Match::convertToMatchPB(message);
  addressToWire(ip_, message->mutable_ipv6_());
  addressToWire(mask_, message->mutable_ipv6_mask_());
}

void MatchIPv6::convertFromMatchPB(const MatchPB* message) {
  ip_ = addressFromWire<in6_addr>(message->ipv6_());
  mask_ = addressFromWire<in6_addr>(message->ipv6_mask_());
}

bool MatchL4Port::operator==(const MatchL4Port& other) const {
  return getType() == other.getType() && param1_ == other.param1_ && param2_ == other.param2_;
}

void MatchL4Port::convertToMatchPB(MatchPB* message) const {
  Match::convertToMatchPB(message);
  message->set_l4port_param1_(param1_);
  message->set_l4port_param2_(param2_);
}

void MatchL4Port::convertFromMatchPB(const MatchPB* message) {
  param1_ = static_cast<l4port_t>(message->l4port_param1_());
  param2_ = static_cast<l4port_t>(message->l4port_param2_());
}

bool MatchDstL4PortRange::operator==(const MatchDstL4PortRange& other) const {
  return MatchL4Port::operator==(other);
}

// --- Single values -------------------------------------------------------------------------------

// The map of the wire for classes with a single value: class, member, message field. Reading cuts a
// number to the width of the member.
#define FILTERS_SINGLE(Class, member, field)                  \
  void Class::convertToMatchPB(MatchPB* message) const {      \
    Match::convertToMatchPB(message);                         \
    message->set_##field(member);                             \
  }                                                           \
  void Class::convertFromMatchPB(const MatchPB* message) {    \
    member = static_cast<decltype(member)>(message->field()); \
  }

FILTERS_SINGLE(MatchTPID, tpid_, tpid_)
FILTERS_SINGLE(MatchL2SrcEntryType, entryType_, l2_src_)
FILTERS_SINGLE(MatchVlanTagging, tagging_, vlan_tagging_)
FILTERS_SINGLE(MatchIpProtocol, protocol_, ipprotocol_)
FILTERS_SINGLE(MatchPacketRes, res_, packet_resolution_)
FILTERS_SINGLE(MatchMplsTerm, terminated_, mpls_terminated_)
FILTERS_SINGLE(MatchToS, tos_, tos_)
FILTERS_SINGLE(MatchTTL, ttl_, ttl_)
FILTERS_SINGLE(MatchIngressStpState, state_, ingress_stp_state_)
FILTERS_SINGLE(MatchVrfId, vrfId_, vrf_id_)
FILTERS_SINGLE(MatchDrop, drop_, drop_flag_)
FILTERS_SINGLE(MatchMyStationHit, hit_, hit_flag_)
FILTERS_SINGLE(MatchForwardingType, fwd_, fwd_type_)
FILTERS_SINGLE(MatchCPUInjectedPackets, injected_, injected_flag_)

#undef FILTERS_SINGLE

bool MatchVlanInfo::operator==(const MatchVlanInfo& other) const {
  return info_.svc_vlan_type == other.info_.svc_vlan_type &&
         info_.proto_cpu_vlan_type == other.info_.proto_cpu_vlan_type;
}

void MatchVlanInfo::convertToMatchPB(MatchPB* message) const {
  Match::convertToMatchPB(message);
  message->set_vlan_info_svc_vlan_type_(info_.svc_vlan_type);
  message->set_vlan_info_proto_cpu_vlan_type_(info_.proto_cpu_vlan_type);
}

void MatchVlanInfo::convertFromMatchPB(const MatchPB* message) {
  info_.svc_vlan_type = message->vlan_info_svc_vlan_type_();
  info_.proto_cpu_vlan_type = message->vlan_info_proto_cpu_vlan_type_();
}

}  // namespace FiltersCommon
