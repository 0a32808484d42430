#include <filter_common/filter_matches.h>

#include <filter_common/filter_matches.pb.h>

#include <cstring>
#include <utility>

#include "match_visit.h"
#include "wire.h"
#include "wire_fields.h"

namespace FiltersCommon {
namespace {

// Returns a mask with all 128 bits set. It is the same in every byte order.
in6_addr allOnesIPv6() {
  in6_addr mask;
  std::memset(&mask, 0xff, sizeof mask);
  return mask;
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

MatchIngressPorts::MatchIngressPorts(const std::list<limid_t>& ports)
    : MatchPorts(FILTERS_MATCH_INGRESS_PORTS, ports) {}

MatchIngressPorts::MatchIngressPorts(const std::list<port_type_t>& excludedPortTypes)
    : MatchPorts(FILTERS_MATCH_INGRESS_PORTS, excludedPortTypes) {}

MatchEgressPorts::MatchEgressPorts(const std::list<limid_t>& ports)
    : MatchPorts(FILTERS_MATCH_EGRESS_PORTS, ports) {}

bool MatchLimId::operator==(const MatchLimId& other) const {
  return getType() == other.getType() && sameBytes(limId_, other.limId_);
}

// --- Sets ----------------------------------------------------------------------------------------

MatchVlanId::MatchVlanId(filtersMatch_t type, std::set<unsigned short>&& vlanIds)
    : Match(type), vlanIds_(vlanIds.begin(), vlanIds.end()) {}

bool MatchVlanId::operator==(const MatchVlanId& other) const {
  return getType() == other.getType() && vlanIds_ == other.vlanIds_;
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

MatchInternalPcp::MatchInternalPcp(const std::set<unsigned char>& pcps)
    : Match(FILTERS_MATCH_INTERNAL_PCP), pcps_(pcps.begin(), pcps.end()) {}

MatchInternalPcp::MatchInternalPcp(unsigned char pcp)
    : Match(FILTERS_MATCH_INTERNAL_PCP), pcps_{pcp} {}

// --- Addresses and layer-4 ports -----------------------------------------------------------------

MatchMac::MatchMac(filtersMatch_t type, ether_addr mac)
    : MatchMac(type, mac, {{0xff, 0xff, 0xff, 0xff, 0xff, 0xff}}) {}

bool MatchMac::operator==(const MatchMac& other) const {
  return getType() == other.getType() && sameAddress(mac_, other.mac_) &&
         sameAddress(mask_, other.mask_);
}

MatchIPv4::MatchIPv4(filtersMatch_t type, in_addr ip) : MatchIPv4(type, ip, {INADDR_NONE}) {}

bool MatchIPv4::operator==(const MatchIPv4& other) const {
  return getType() == other.getType() && sameAddress(ip_, other.ip_) &&
         sameAddress(mask_, other.mask_);
}

MatchIPv6::MatchIPv6(filtersMatch_t type, in6_addr ip) : MatchIPv6(type, ip, allOnesIPv6()) {}

bool MatchIPv6::operator==(const MatchIPv6& other) const {
  return getType() == other.getType() && sameAddress(ip_, other.ip_) &&
         sameAddress(mask_, other.mask_);
}

bool MatchL4Port::operator==(const MatchL4Port& other) const {
  return getType() == other.getType() && param1_ == other.param1_ && param2_ == other.param2_;
}

bool MatchDstL4PortRange::operator==(const MatchDstL4PortRange& other) const {
  return MatchL4Port::operator==(other);
}

bool MatchVlanInfo::operator==(const MatchVlanInfo& other) const {
  return info_.svc_vlan_type == other.info_.svc_vlan_type &&
         info_.proto_cpu_vlan_type == other.info_.proto_cpu_vlan_type;
}

// --- Conversion ----------------------------------------------------------------------------------

// This match has two lists. The message is read into a copy, so that both lists are unchanged if
// memory runs out.
static void takeFields(const MatchPB& message, MatchIngressPorts* match) {
  MatchIngressPorts filled(*match);
  takeFields<MatchPB, MatchIngressPorts>(message, &filled);
  *match = std::move(filled);
}

#define FILTERS_MATCH_FIELDS(Class, ...)                 \
  void Class::convertToMatchPB(MatchPB* message) const { \
    Match::convertToMatchPB(message);                    \
    putFields(message, *this);                           \
  }                                                      \
  void Class::convertFromMatchPB(const MatchPB* message) { takeFields(*message, this); }
#include "wire_fields.def"

}  // namespace FiltersCommon
