#include <filter_common/filter_actions.h>

#include <filter_common/filter_actions.pb.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <stdexcept>

#include "action_visit.h"
#include "wire.h"

namespace FiltersCommon {
namespace {

std::uint32_t interfaceIndex(limid_t limid) {
  std::uint32_t index = 0;
  limid_to_ifindex(limid, &index);
  return index;
}

limid_t interfaceAt(std::uint32_t index) {
  limid_t limid{};
  limid_from_ifindex(&limid, index);
  return limid;
}

}  // namespace

void Action::convertToActionPB(ActionPB* message) const { message->set_type_(getType()); }

void Action::convertFromActionPB(const ActionPB*) {}

bool Action::operator==(const Action& other) const {
  if (getType() != other.getType()) return false;
  // Deliberate: two actions with the same unknown code are equal, while two such matches differ.
  return visitAction(getType(), true, [&](auto tag) {
    using T = typename decltype(tag)::Class;
    if constexpr (isOf<Action>(&T::operator==)) {
      return true;  // the class has no data and no comparison of its own
    } else {
      return static_cast<const T&>(*this) == static_cast<const T&>(other);
    }
  });
}

// --- Ports ---------------------------------------------------------------------------------------

ActionPorts::ActionPorts(filtersAction_t actionType, const std::list<limid_t>& ports)
    : Action(actionType), ports_(ports.begin(), ports.end()) {}

bool ActionPorts::operator==(const ActionPorts& other) const {
  return samePorts(ports_, other.ports_);
}

ActionBlockEgressPorts::ActionBlockEgressPorts(const std::list<limid_t>& ports)
    : ActionPorts(FILTERS_ACTION_BLOCK_EGRESS_PORTS, ports) {}

void ActionBlockEgressPorts::convertToActionPB(ActionPB* message) const {
  Action::convertToActionPB(message);
  appendPortsTo(message->mutable_ports_(), ports_);
}

// Deliberate: these ports are added to those held, while the ports of a redirection replace them.
void ActionBlockEgressPorts::convertFromActionPB(const ActionPB* message) {
  ports_.reserve(ports_.size() + static_cast<std::size_t>(message->ports__size()));
  appendPortsFrom(message->ports_(), &ports_);
}

ActionRedirect::ActionRedirect(const limid_t& port) : Action(FILTERS_ACTION_REDIRECT) {
  ports_.push_back(port);
}

bool ActionRedirect::operator==(const ActionRedirect& other) const {
  return samePorts(ports_, other.ports_);
}

void ActionRedirect::convertToActionPB(ActionPB* message) const {
  Action::convertToActionPB(message);
  appendPortsTo(message->mutable_ports_(), ports_);
}

void ActionRedirect::convertFromActionPB(const ActionPB* message) {
  const auto& ports = message->ports_();
  ports_.resize(static_cast<std::size_t>(ports.size()));  // if memory runs out, nothing changes
  std::transform(ports.begin(), ports.end(), ports_.begin(), limidFromWire);
}

// --- MPLS ----------------------------------------------------------------------------------------

ActionMplsPortSet::ActionMplsPortSet(limid_t vpnId, limid_t mplsAccessPort) : ActionMplsPortSet() {
  setVpnId(vpnId);
  setMplsAccessPort(mplsAccessPort);
}

bool ActionMplsPortSet::IsLimidFromVpnType(limid_t limid) {
  if (limid_is_from_type(limid, limid_type_mpls_vpws)) return true;
  if (!limid_is_from_type(limid, limid_type_bridgedomain)) return false;
  std::uint32_t bridgeDomainType = 0;
  std::uint32_t bridgeDomainId = 0;
  limid_to_bridgedomain_components(limid, &bridgeDomainType, &bridgeDomainId);
  return bridgeDomainType == limid_bridgedomain_type_vpls;
}

void ActionMplsPortSet::setVpnId(limid_t vpnId) {
  if (!IsLimidFromVpnType(vpnId)) {
    throw std::invalid_argument("ActionMplsPortSet: invalid vpn_id limid type");
  }
  vpn_id = vpnId;
}

void ActionMplsPortSet::setMplsAccessPort(limid_t mplsAccessPort) {
  if (!limid_is_from_type(mplsAccessPort, limid_type_lag) &&
      !limid_is_from_type_ethernet(mplsAccessPort)) {
    throw std::invalid_argument("ActionMplsPortSet: invalid mpls_access_port limid type");
  }
  mpls_access_port = mplsAccessPort;
}

bool ActionMplsPortSet::operator==(const ActionMplsPortSet& other) const {
  return limid_compare(mpls_access_port, other.mpls_access_port) == 0 &&
         limid_compare(vpn_id, other.vpn_id) == 0;
}

// Deliberate: this class sends interface indexes, while every other class sends limids. Neither
// conversion checks the platform's result: an id that the platform cannot convert is sent as 0.
void ActionMplsPortSet::convertToActionPB(ActionPB* message) const {
  Action::convertToActionPB(message);
  message->set_vpn_id(interfaceIndex(vpn_id));
  message->set_mpls_access_port(interfaceIndex(mpls_access_port));
}

void ActionMplsPortSet::convertFromActionPB(const ActionPB* message) {
  if (!message->has_vpn_id() || !message->has_mpls_access_port()) {
    throw std::invalid_argument("ActionMplsPortSet: ActionPB missing vpn_id and mpls_access_port");
  }
  const limid_t vpnId = interfaceAt(message->vpn_id());
  const limid_t mplsAccessPort = interfaceAt(message->mpls_access_port());
  setVpnId(vpnId);
  setMplsAccessPort(mplsAccessPort);
}

// --- Addresses -----------------------------------------------------------------------------------

bool ActionReplaceDstMac::operator==(const ActionReplaceDstMac& other) const {
  return sameAddress(mac_, other.mac_);
}

void ActionReplaceDstMac::convertToActionPB(ActionPB* message) const {
  Action::convertToActionPB(message);
  addressToWire(mac_, message->mutable_mac_());
}

void ActionReplaceDstMac::convertFromActionPB(const ActionPB* message) {
  mac_ = addressFromWire<ether_addr>(message->mac_());
}

bool ActionReplaceSrcMac::operator==(const ActionReplaceSrcMac& other) const {
  return sameAddress(mac_, other.mac_);
}

void ActionReplaceSrcMac::convertToActionPB(ActionPB* message) const {
  Action::convertToActionPB(message);
  addressToWire(mac_, message->mutable_mac_());
}

void ActionReplaceSrcMac::convertFromActionPB(const ActionPB* message) {
  mac_ = addressFromWire<ether_addr>(message->mac_());
}

// --- Single values -------------------------------------------------------------------------------

// The map of the wire for classes with a single value: class, member, message field. Reading cuts a
// number to the width of the member.
#define FILTERS_SINGLE(Class, member, field)                  \
  void Class::convertToActionPB(ActionPB* message) const {    \
    Action::convertToActionPB(message);                       \
    message->set_##field(member);                             \
  }                                                           \
  void Class::convertFromActionPB(const ActionPB* message) {  \
    member = static_cast<decltype(member)>(message->field()); \
  }

FILTERS_SINGLE(ActionCopyToCpuCancel, cancelType_, cp2cpu_cancel_type_)
FILTERS_SINGLE(ActionSetPcp, pcp_, pcp_)
FILTERS_SINGLE(ActionSetPcpAndQueue, pcpAndQueue_, pcp_and_queue_)
FILTERS_SINGLE(ActionSetInnerPcp, pcp_, pcp_)
FILTERS_SINGLE(ActionSetDSCP, dscp_, dscp_)
FILTERS_SINGLE(ActionMapToCosQueue, queue_, cosq_)
FILTERS_SINGLE(ActionMapToCpuCosQueue, queue_, cosq_)
FILTERS_SINGLE(ActionL3Switch, destinationId_, l3_dest_id_)

#undef FILTERS_SINGLE

}  // namespace FiltersCommon
