#include <filter_common/filter_actions.h>

#include <filter_common/filter_actions.pb.h>

#include <stdexcept>

#include "action_visit.h"
#include "wire.h"
#include "wire_fields.h"

namespace FiltersCommon {
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

ActionRedirect::ActionRedirect(const limid_t& port) : Action(FILTERS_ACTION_REDIRECT) {
  ports_.push_back(port);
}

bool ActionRedirect::operator==(const ActionRedirect& other) const {
  return samePorts(ports_, other.ports_);
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
  if (!isAccessPort(mplsAccessPort)) {
    throw std::invalid_argument("ActionMplsPortSet: invalid mpls_access_port limid type");
  }
  mpls_access_port = mplsAccessPort;
}

bool ActionMplsPortSet::operator==(const ActionMplsPortSet& other) const {
  return limid_compare(mpls_access_port, other.mpls_access_port) == 0 &&
         limid_compare(vpn_id, other.vpn_id) == 0;
}

// --- Addresses -----------------------------------------------------------------------------------

bool ActionReplaceDstMac::operator==(const ActionReplaceDstMac& other) const {
  return sameAddress(mac_, other.mac_);
}

bool ActionReplaceSrcMac::operator==(const ActionReplaceSrcMac& other) const {
  return sameAddress(mac_, other.mac_);
}

// --- Conversion ----------------------------------------------------------------------------------

#define FILTERS_ACTION_FIELDS(Class, ...)                  \
  void Class::convertToActionPB(ActionPB* message) const { \
    Action::convertToActionPB(message);                    \
    putFields(message, *this);                             \
  }                                                        \
  void Class::convertFromActionPB(const ActionPB* message) { takeFields(*message, this); }
#include "wire_fields.def"

}  // namespace FiltersCommon
