#include <filter_common/filter_actions_c.h>

#include <filter_common/filter_actions.h>

#include "assertion.h"
#include "handle.h"

namespace FiltersCommon {
namespace {

template <class T>
const T& as(void* a) {
  return fromHandle<Action, T>(a);
}

}  // namespace

extern "C" {

// Both assertions report fixed line numbers, which are part of the interface.
void deleteAction(void* a) {
  FILTERS_ASSERT_AT(a != nullptr, 23, "void FiltersCommon::deleteAction(void*)");
  delete &fromHandle<Action>(a);
}

filtersAction_t actionGetType(void* a) {
  FILTERS_ASSERT_AT(a != nullptr, 31,
                    "FiltersCommon::filtersAction_t FiltersCommon::actionGetType(void*)");
  return as<Action>(a).getType();
}

void* newActionPermit() { return newHandle<Action, ActionPermit>(); }

void* newActionDeny() { return newHandle<Action, ActionDeny>(); }

void* newActionCopyToCpu() { return newHandle<Action, ActionCopyToCpu>(); }

void* newActionCopyToCpuCancel() {
  return newHandle<Action, ActionCopyToCpuCancel>(COPY_TO_CPU_CANCEL);
}

void* newActionSwitchToCpuCancel() {
  return newHandle<Action, ActionCopyToCpuCancel>(SWITCH_TO_CPU_CANCEL);
}

void* newActionBlockEgressPorts(const limid_t* ports, unsigned int count) {
  return newHandle<Action, ActionBlockEgressPorts>(portList(ports, count));
}

void* newActionSetPcp(unsigned char pcp) { return newHandle<Action, ActionSetPcp>(pcp); }

void* newActionSetPcpAndQueue(unsigned char pcpAndQueue) {
  return newHandle<Action, ActionSetPcpAndQueue>(pcpAndQueue);
}

void* newActionSetDSCP(unsigned char dscp) { return newHandle<Action, ActionSetDSCP>(dscp); }

void* newActionMapToCosQueue(unsigned char queue) {
  return newHandle<Action, ActionMapToCosQueue>(queue);
}

void* newActionMapToCpuCosQueue(unsigned char queue) {
  return newHandle<Action, ActionMapToCpuCosQueue>(queue);
}

void* newActionRedirect(limid_t port) { return newHandle<Action, ActionRedirect>(port); }

void* newActionRedirectCancel() { return newHandle<Action, ActionRedirectCancel>(); }

void* newActionL3Switch(unsigned int destinationId) {
  return newHandle<Action, ActionL3Switch>(destinationId);
}

void* newActionCopyInnerPcp() { return newHandle<Action, ActionCopyInnerPcp>(); }

void* newActionMplsPortSet(limid_t vpnId, limid_t accessPort) {
  return newHandle<Action, ActionMplsPortSet>(vpnId, accessPort);
}

void* newReplaceDstMac(ether_addr mac) { return newHandle<Action, ActionReplaceDstMac>(mac); }

void* newReplaceSrcMac(ether_addr mac) { return newHandle<Action, ActionReplaceSrcMac>(mac); }

cp2cpuCancelParam_t actionCopyToCpuCancelGetTypeOfCancel(void* a) {
  return as<ActionCopyToCpuCancel>(a).getCancelType();
}

unsigned char actionSetPcpGetPcp(void* a) { return as<ActionSetPcp>(a).getPcp(); }

unsigned char actionSetPcpAndQueueGetPcpAndQueue(void* a) {
  return as<ActionSetPcpAndQueue>(a).getPcpAndQueue();
}

unsigned char actionSetDSCPGetDSCP(void* a) { return as<ActionSetDSCP>(a).getDSCP(); }

unsigned char actionMapToCosQueueGetCosQueue(void* a) {
  return as<ActionMapToCosQueue>(a).getCosQueue();
}

unsigned int actionL3SwitchGetL3DestinationId(void* a) {
  return as<ActionL3Switch>(a).getL3DestinationId();
}

}  // extern "C"
}  // namespace FiltersCommon
