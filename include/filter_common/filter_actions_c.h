#ifndef FILTER_COMMON_FILTER_ACTIONS_C_H_
#define FILTER_COMMON_FILTER_ACTIONS_C_H_

// Actions for procedural code, in C11 and C++. The classes of filter_actions.h say what each action
// means; this header says what is special to its C functions.
//
// Handles. A new... function returns an action object as void*, never null. The caller owns it
// until deleteAction(). In C the handle can be passed wherever an Action* is expected; in C++ it
// must be cast with static_cast.
//
// Classes. A getter does not check that the handle is of the class that it reads. These cause
// undefined behaviour: an action of another class, a null handle, and a null array whose count is
// not 0. actionGetType() accepts an action of any class.
//
// Assertions. deleteAction() and actionGetType() stop the process on a null handle with the C
// library's assertion message, in every kind of build.
//
// Exceptions. The new... functions may throw std::bad_alloc, and newActionMplsPortSet() throws
// std::invalid_argument on interfaces of the wrong kind. The exception passes through C callers if
// they are compiled with -fexceptions. If no C++ caller above them catches it, the process ends.
// Nothing is leaked.
//
// Threads. Any number of threads may read an action at once. A thread that deletes it, or fills it
// anew from an entry, must be the only one to use it.
//
// Gaps are all deliberate. No function makes an ActionSetInnerPcp, ActionBlackHole or
// ActionL2ToCpuDrop. No getter reads an ActionBlockEgressPorts, ActionRedirect,
// ActionReplaceDstMac, ActionReplaceSrcMac, ActionMapToCpuCosQueue or ActionMplsPortSet. No
// function compares, prints or serializes actions.

#include <filter_common/filter_types.h>

#ifdef __cplusplus
namespace FiltersCommon {
extern "C" {
#endif

// --- Making --------------------------------------------------------------------------------------

FILTERS_API void* newActionPermit(void);
FILTERS_API void* newActionDeny(void);
FILTERS_API void* newActionCopyToCpu(void);
FILTERS_API void* newActionCopyToCpuCancel(void);    // takes back a copy to the CPU
FILTERS_API void* newActionSwitchToCpuCancel(void);  // takes back a switch to the CPU
// The array has `count` ports, whose order is kept. If count is 0, the array is not read.
FILTERS_API void* newActionBlockEgressPorts(const limid_t* ports, unsigned int count);
FILTERS_API void* newActionSetPcp(unsigned char pcp);
FILTERS_API void* newActionSetPcpAndQueue(unsigned char pcpAndQueue);
FILTERS_API void* newActionSetDSCP(unsigned char dscp);
FILTERS_API void* newActionMapToCosQueue(unsigned char queue);
FILTERS_API void* newActionMapToCpuCosQueue(unsigned char queue);
FILTERS_API void* newActionRedirect(limid_t port);
FILTERS_API void* newActionRedirectCancel(void);
FILTERS_API void* newActionL3Switch(unsigned int destinationId);
FILTERS_API void* newActionCopyInnerPcp(void);
// Throws std::invalid_argument unless the VPN is a VPWS or VPLS and the port is a LAG or Ethernet
// port. The exception ends a program that is written only in C. Such a program checks the values
// first, with the functions of limid/limid.h:
//   uint32_t type, number;
//   bool vpn = limid_is_from_type(vpnId, limid_type_mpls_vpws) ||
//              (limid_to_bridgedomain_components(vpnId, &type, &number) == 0 &&
//               type == limid_bridgedomain_type_vpls);
//   bool port = limid_is_from_type(accessPort, limid_type_lag) ||
//               limid_is_from_type_ethernet(accessPort);
FILTERS_API void* newActionMplsPortSet(limid_t vpnId, limid_t accessPort);
// Deliberate: these two names lack the word Action.
FILTERS_API void* newReplaceDstMac(struct ether_addr mac);
FILTERS_API void* newReplaceSrcMac(struct ether_addr mac);

// --- Any action ----------------------------------------------------------------------------------

FILTERS_API void deleteAction(void* a);
FILTERS_API filtersAction_t actionGetType(void* a);

// --- Getters: a null handle causes undefined behaviour -------------------------------------------

FILTERS_API cp2cpuCancelParam_t actionCopyToCpuCancelGetTypeOfCancel(void* a);
FILTERS_API unsigned char actionSetPcpGetPcp(void* a);
FILTERS_API unsigned char actionSetPcpAndQueueGetPcpAndQueue(void* a);
FILTERS_API unsigned char actionSetDSCPGetDSCP(void* a);
FILTERS_API unsigned char actionMapToCosQueueGetCosQueue(void* a);
FILTERS_API unsigned int actionL3SwitchGetL3DestinationId(void* a);

#ifdef __cplusplus
}  // extern "C"
}  // namespace FiltersCommon
#endif

#endif  // FILTER_COMMON_FILTER_ACTIONS_C_H_
