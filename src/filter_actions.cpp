#include <filter_common/filter_actions.h>

#include <filter_common/filter_actions.pb.h>

#include <cstring>
#include <stdexcept>

#include "action_visit.h"
#include "wire.h"

namespace FiltersCommon {
namespace {

// Whether T is compared by a comparison of its own or of its family. Were it the base's, the
// generic comparison would call itself for ever.
template <class T, class = void>
constexpr bool hasOwnEquality = true;
template <class T>
constexpr bool
    hasOwnEquality<T, std::enable_if_t<std::is_same_v<decltype(&T::operator==),
                                                      bool (Action::*)(const Action&) const>>> =
        false;

bool sameMac(const ether_addr& a, const ether_addr& b) {
  return std::memcmp(&a, &b, sizeof a) == 0;
}

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
  // Deliberate: two actions of one unknown code are equal, while two such matches differ.
  return visitAction(getType(), true, [&](auto tag) {
    using T = typename decltype(tag)::Class;
    if constexpr (std::is_same_v<T, ActionCopyInnerPcp>) {
      return true;  // it has no fields and no comparison of its own
    } else {
      static_assert(hasOwnEquality<T>, "the class needs an operator== of its own");
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

// Deliberate: the ports of the message are added to those held, while a redirection's replace them.
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
  std::list<limid_t> ports;
  appendPortsFrom(message->ports_(), &ports);
  ports_.swap(ports);
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

// Deliberate: interface indexes, where every other class sends limids. Neither conversion looks at
// the platform's result: an id that the platform cannot convert travels as 0.
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

// --- Addresses and single values -----------------------------------------------------------------

bool ActionReplaceDstMac::operator==(const ActionReplaceDstMac& other) const {
  return sameMac(mac_, other.mac_);
}

void ActionReplaceDstMac::convertToActionPB(ActionPB* message) const {
  Action::convertToActionPB(message);
  addressToWire(mac_, message->mutable_mac_());
}

void ActionReplaceDstMac::convertFromActionPB(const ActionPB* message) {
  mac_ = addressFromWire<ether_addr>(message->mac_());
}

bool ActionReplaceSrcMac::operator==(const ActionReplaceSrcMac& other) const {
  return sameMac(mac_, other.mac_);
}

void ActionReplaceSrcMac::convertToActionPB(ActionPB* message) const {
  Action::convertToActionPB(message);
  addressToWire(mac_, message->mutable_mac_());
}

void ActionReplaceSrcMac::convertFromActionPB(const ActionPB* message) {
  mac_ = addressFromWire<ether_addr>(message->mac_());
}

void ActionCopyToCpuCancel::convertToActionPB(ActionPB* message) const {
  Action::convertToActionPB(message);
  message->set_cp2cpu_cancel_type_(cancelType_);
}

void ActionCopyToCpuCancel::convertFromActionPB(const ActionPB* message) {
  cancelType_ = static_cast<cp2cpuCancelParam_t>(message->cp2cpu_cancel_type_());
}

void ActionSetPcp::convertToActionPB(ActionPB* message) const {
  Action::convertToActionPB(message);
  message->set_pcp_(pcp_);
}

void ActionSetPcp::convertFromActionPB(const ActionPB* message) {
  pcp_ = static_cast<unsigned char>(message->pcp_());
}

void ActionSetPcpAndQueue::convertToActionPB(ActionPB* message) const {
  Action::convertToActionPB(message);
  message->set_pcp_and_queue_(pcpAndQueue_);
}

void ActionSetPcpAndQueue::convertFromActionPB(const ActionPB* message) {
  pcpAndQueue_ = static_cast<unsigned char>(message->pcp_and_queue_());
}

void ActionSetInnerPcp::convertToActionPB(ActionPB* message) const {
  Action::convertToActionPB(message);
  message->set_pcp_(pcp_);
}

void ActionSetInnerPcp::convertFromActionPB(const ActionPB* message) {
  pcp_ = static_cast<unsigned char>(message->pcp_());
}

void ActionSetDSCP::convertToActionPB(ActionPB* message) const {
  Action::convertToActionPB(message);
  message->set_dscp_(dscp_);
}

void ActionSetDSCP::convertFromActionPB(const ActionPB* message) {
  dscp_ = static_cast<unsigned char>(message->dscp_());
}

void ActionMapToCosQueue::convertToActionPB(ActionPB* message) const {
  Action::convertToActionPB(message);
  message->set_cosq_(queue_);
}

void ActionMapToCosQueue::convertFromActionPB(const ActionPB* message) {
  queue_ = static_cast<unsigned char>(message->cosq_());
}

void ActionMapToCpuCosQueue::convertToActionPB(ActionPB* message) const {
  Action::convertToActionPB(message);
  message->set_cosq_(queue_);
}

void ActionMapToCpuCosQueue::convertFromActionPB(const ActionPB* message) {
  queue_ = static_cast<unsigned char>(message->cosq_());
}

void ActionL3Switch::convertToActionPB(ActionPB* message) const {
  Action::convertToActionPB(message);
  message->set_l3_dest_id_(destinationId_);
}

void ActionL3Switch::convertFromActionPB(const ActionPB* message) {
  destinationId_ = message->l3_dest_id_();
}

}  // namespace FiltersCommon
