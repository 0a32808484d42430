// Calls every function of the procedural interface from C11. The values differ, so that a call of
// the wrong function would be noticed. procedural_test.cpp calls this code, and checks the values
// that C cannot read.

#include <filter_common/filter_actions_c.h>
#include <filter_common/filter_entries_c.h>
#include <filter_common/filter_groups_c.h>
#include <filter_common/filter_matches_c.h>
#include <limid/limid_standin.h>
#include <string.h>

void callEveryFunction(void);

// These functions are in procedural_test.cpp. matchPrints() and actionPrints() return true if the
// last line that the object prints is `line`.
void expectInC(bool good, int line, const char* what);
bool matchPrints(void* match, const char* line);
bool actionPrints(void* action, const char* line);

#define EXPECT(condition) expectInC((condition), __LINE__, #condition)

// Makes an object x and checks its code and the expected condition.
static void* x;
#define MATCH(code, made, expected) \
  (x = (made), EXPECT(matchGetType(x) == FILTERS_MATCH_##code && (expected)), deleteMatch(x))
#define ACTION(code, made, expected) \
  (x = (made), EXPECT(actionGetType(x) == FILTERS_ACTION_##code && (expected)), deleteAction(x))
#define SAME(a, b) (memcmp((a), (b), sizeof *(a)) == 0)
#define MAC(mac, mask) (SAME(matchMacGetMac(x), mac) && SAME(matchMacGetMask(x), mask))
#define IPV4(ip, mask) (SAME(matchIPv4GetIPv4(x), ip) && SAME(matchIPv4GetIPv4Mask(x), mask))
#define IPV6(ip, mask) (SAME(matchIPv6GetIPv6(x), ip) && SAME(matchIPv6GetIPv6Mask(x), mask))
#define PORT(port, mask) (matchGetL4Port(x) == port && matchGetL4PortMask(x) == mask)
#define RANGE(min, max) (matchGetL4PortRangeMin(x) == min && matchGetL4PortRangeMax(x) == max)

// clang-format off
static void makeMatches(const limid_t* ports) {
  const struct ether_addr mac = {{2, 0, 0, 0, 0, 1}}, mac2 = {{0xfe, 0, 0, 0, 0, 0xf1}};
  const struct in_addr ip = {htonl(0xc0000201)}, ip2 = {htonl(0xffffff00)};
  const struct in6_addr v6 = {{{0x20, 1, [15] = 1}}}, v62 = {{{0xff, 0xff}}};
  const vlan_info_t info = {3, 70000};
  char ones[16];
  memset(ones, 0xff, sizeof ones);
  MATCH(ALL, newMatchAll(), true);
  MATCH(INGRESS_PORTS, newMatchIngressPorts(ports, 3), matchPrints(x, "LIMIDs: \"lag-1\" \"eth-3\" \"lag-1\" "));
  MATCH(INGRESS_PORTS, newMatchIngressPorts(ports, 1), matchPrints(x, "LIMIDs: \"lag-1\" "));
  MATCH(INGRESS_PORTS, newMatchIngressPorts(NULL, 0), matchPrints(x, "LIMIDs: "));
  MATCH(EXTERNAL_VLAN_ID, newMatchExternalVlanId(4095), matchPrints(x, "VLAN IDs: [ 4095 ]"));
  MATCH(TPID, newMatchTPID(0x88a8), matchGetTPID(x) == 0x88a8);
  MATCH(DST_MAC, newMatchDstMac(&mac), MAC(&mac, ones));
  MATCH(DST_MAC, newMatchDstMacMask(&mac, &mac2), MAC(&mac, &mac2));
  MATCH(DST_L4_PORT, newMatchDstL4Port(80), PORT(80, 0));
  MATCH(DST_L4_PORT, newMatchDstL4PortMask(80, 0xff00), PORT(80, 0xff00));
  MATCH(SRC_L4_PORT, newMatchSrcL4Port(80), PORT(80, 0));
  MATCH(SRC_L4_PORT, newMatchSrcL4PortMask(80, 0xff00), PORT(80, 0xff00));
  MATCH(SRC_MAC, newMatchSrcMac(&mac), MAC(&mac, ones));
  MATCH(SRC_MAC, newMatchSrcMacMask(&mac, &mac2), MAC(&mac, &mac2));
  MATCH(L2_SRC_ENTRY_TYPE, newMatchL2SrcEntryType(70007), matchGetL2SrcEntryType(x) == 70007);
  MATCH(SRC_IPV4, newMatchSrcIPv4(&ip), IPV4(&ip, ones));
  MATCH(SRC_IPV4, newMatchSrcIPv4Mask(&ip, &ip2), IPV4(&ip, &ip2));
  MATCH(DST_IPV4, newMatchDstIPv4(&ip), IPV4(&ip, ones));
  MATCH(DST_IPV4, newMatchDstIPv4Mask(&ip, &ip2), IPV4(&ip, &ip2));
  MATCH(INTERNAL_VLAN_ID, newMatchInternalVlanId(4095), matchPrints(x, "VLAN IDs: [ 4095 ]"));
  MATCH(PCP, newMatchPcp(7), matchPrints(x, "PCPs: [ \7 ]"));
  MATCH(INTERNAL_PCP, newMatchInternalPcp(7), matchPrints(x, "PCPs: [ \7 ]"));
  MATCH(SRC_IPV6, newMatchSrcIPv6(&v6), IPV6(&v6, ones));
  MATCH(DST_IPV6, newMatchDstIPv6(&v6), IPV6(&v6, ones));
  MATCH(DST_IPV6, newMatchDstIPv6Mask(&v6, &v62), IPV6(&v6, &v62));
  MATCH(VLAN_TAGGING, newMatchVlanTagging(FILTERS_VLAN_TAGGED), matchPrints(x, "Tagging: tagged"));
  MATCH(IP_PROTOCOL, newMatchIpProtocol(200), matchIpProtocolGetIpProt(x) == 200);
  MATCH(PACKET_RES, newMatchPacketRes(70007), matchPacketResGet(x) == 70007);
  MATCH(MPLS_TERM, newMatchMplsTerm(true), matchMplsTermGet(x));
  MATCH(TOS, newMatchDSCP(46), matchDSCPGet(x) == 46);
  MATCH(VIRTUAL_PORT, newMatchVirtualPort(ports), matchGetLimId(x) == ports[0]);
  MATCH(EGRESS_PORTS, newMatchEgressPorts(ports, 3), matchPrints(x, "LIMIDs: \"lag-1\" \"eth-3\" \"lag-1\" "));
  MATCH(INGRESS_STP_STATE, newMatchIngressStpState(70007), matchIngressStpStateGet(x) == 70007);
  MATCH(VLAN_INFO, newMatchVlanInfo(&info), matchPrints(x, "Protocol2CPU VLAN Type: 70000") && matchVlanInfoGet(x).svc_vlan_type == 3);
  MATCH(SRC_PORT, newMatchSrcPort(ports), matchGetLimId(x) == ports[0]);
  MATCH(TTL, newMatchTTL(255), matchTTLGet(x) == 255);
  MATCH(VRF_ID, newMatchVrfId(300), matchVrfIdGet(x) == 300);
  MATCH(DROP, newMatchDrop(false), !matchDropGet(x));
  MATCH(CPU_PORT, newMatchCpuPort(), true);
  MATCH(CPU_INJECTED_PACKETS, newMatchCPUInjectedPackets(true), MatchCPUInjectedPacketsGet(x));
  MATCH(DST_L4_PORT_RANGE, newMatchDstL4PortRange(10, 20), PORT(10, 20) && RANGE(10, 20));
}

static void makeActions(const limid_t* ports) {
  const struct ether_addr mac = {{2, 0, 0, 0, 0, 1}};
  ACTION(PERMIT, newActionPermit(), true);
  ACTION(DENY, newActionDeny(), true);
  ACTION(COPY_TO_CPU, newActionCopyToCpu(), true);
  ACTION(BLOCK_EGRESS_PORTS, newActionBlockEgressPorts(ports, 2), actionPrints(x, "LIMIDs: \"lag-1\" \"eth-3\" "));
  ACTION(BLOCK_EGRESS_PORTS, newActionBlockEgressPorts(NULL, 0), actionPrints(x, "LIMIDs: "));
  ACTION(COPY_TO_CPU_CANCEL, newActionCopyToCpuCancel(), actionCopyToCpuCancelGetTypeOfCancel(x) == COPY_TO_CPU_CANCEL);
  ACTION(COPY_TO_CPU_CANCEL, newActionSwitchToCpuCancel(), actionCopyToCpuCancelGetTypeOfCancel(x) == SWITCH_TO_CPU_CANCEL);
  ACTION(SET_PCP, newActionSetPcp(7), actionSetPcpGetPcp(x) == 7);
  ACTION(SET_PCP_AND_QUEUE, newActionSetPcpAndQueue(255), actionSetPcpAndQueueGetPcpAndQueue(x) == 255);
  ACTION(SET_DSCP, newActionSetDSCP(46), actionSetDSCPGetDSCP(x) == 46);
  ACTION(MAP_TO_COS_QUEUE, newActionMapToCosQueue(5), actionMapToCosQueueGetCosQueue(x) == 5);
  ACTION(MAP_TO_CPU_COS_QUEUE, newActionMapToCpuCosQueue(255), actionPrints(x, "CPU CoS Queue: 255"));
  ACTION(REDIRECT, newActionRedirect(ports[1]), actionPrints(x, "\"eth-3\" "));
  ACTION(REPLACE_DST_MAC, newReplaceDstMac(mac), actionPrints(x, "Replace MAC: 2:0:0:0:0:1"));
  ACTION(REDIRECT_CANCEL, newActionRedirectCancel(), true);
  ACTION(REPLACE_SRC_MAC, newReplaceSrcMac(mac), actionPrints(x, "Replace MAC: 2:0:0:0:0:1"));
  ACTION(L3_SWITCH, newActionL3Switch(100000), actionL3SwitchGetL3DestinationId(x) == 100000);
  ACTION(COPY_INNER_PCP, newActionCopyInnerPcp(), true);
  ACTION(MPLS_PORT_SET, newActionMplsPortSet(limid_make_mpls_vpws(7), ports[0]), actionPrints(x, "MPLS Access Port: lag-1"));
}
// clang-format on

static void useEntries(void) {
  const filtersErr_t ok = FILTERS_OK, none = FILTERS_ERR_NOT_FOUND;
  const filtersErr_t null = FILTERS_ERR_INVALID_ARGUMENT;
  void *dscp = newMatchDSCP(46), *readDscp = newMatchDSCP(8), *vrf = newMatchVrfId(5);
  void *pcp = newActionSetPcp(7), *readPcp = newActionSetPcp(1), *deny = newActionDeny();
  FiltersEntry* entry = newFiltersEntry(70000);
  EXPECT(filtersEntryGetId(entry) == 70000 && filtersEntryGetPriority(entry) == 0);
  filtersEntrySetPriority(entry, 80000);
  EXPECT(filtersEntrySetMatch(entry, dscp) == ok && filtersEntrySetMatch(entry, vrf) == ok);
  EXPECT(filtersEntrySetAction(entry, pcp) == ok && filtersEntrySetAction(entry, deny) == ok);
  FiltersEntry* copy = copyFiltersEntry(entry);
  EXPECT(filtersEntryGetId(copy) == 70000 && filtersEntryGetPriority(copy) == 80000);
  EXPECT(filtersEntryDeleteMatch(entry, FILTERS_MATCH_TOS) == ok &&
         filtersEntryGetMatch(entry, vrf) == ok);
  EXPECT(filtersEntryDeleteMatch(entry, FILTERS_MATCH_TOS) == none &&
         filtersEntryGetMatch(entry, dscp) == none);
  EXPECT(filtersEntryDeleteAction(entry, FILTERS_ACTION_SET_PCP) == ok &&
         filtersEntryGetAction(entry, deny) == ok);
  EXPECT(filtersEntryDeleteAction(entry, FILTERS_ACTION_SET_PCP) == none &&
         filtersEntryGetAction(entry, pcp) == none);
  EXPECT(filtersEntryGetMatch(copy, readDscp) == ok && matchDSCPGet(readDscp) == 46);
  EXPECT(filtersEntryGetAction(copy, readPcp) == ok && actionSetPcpGetPcp(readPcp) == 7);
  EXPECT(filtersEntryGetMatch(NULL, dscp) == null && filtersEntryGetMatch(copy, NULL) == null);
  EXPECT(filtersEntrySetMatch(NULL, dscp) == null && filtersEntrySetMatch(copy, NULL) == null);
  EXPECT(filtersEntryGetAction(NULL, pcp) == null && filtersEntryGetAction(copy, NULL) == null);
  EXPECT(filtersEntrySetAction(NULL, pcp) == null && filtersEntrySetAction(copy, NULL) == null);
  void *matches[] = {dscp, readDscp, vrf}, *actions[] = {pcp, readPcp, deny};
  for (int i = 0; i < 3; ++i) deleteMatch(matches[i]), deleteAction(actions[i]);
  deleteFiltersEntry(copy);
  deleteFiltersEntry(entry);
}

static void useGroups(void) {
  const filtersEntryId_t inserted[] = {70009, 2, 70005}, sorted[] = {2, 70005, 70009};
  entriesStruct held = {-1, NULL, NULL};
  deleteFiltersEntriesStruct(&held);  // a count below 0 means no entries
  FiltersGroup* group = newFiltersGroup(500);
  filtersGroupSetPriority(group, 600);
  EXPECT(filtersGroupGetId(group) == 500 && filtersGroupGetPriority(group) == 600);
  EXPECT(filtersGroupSetType(group, FILTERS_GROUP_TYPE_5) == FILTERS_OK &&
         filtersGroupGetType(group) == 5);
  filtersGroupSetStage(group, FILTERS_GROUP_STAGE_INGRESS);  // refused, but not reported
  EXPECT(filtersGroupGetStage(group) == FILTERS_GROUP_STAGE_NONE);
  filtersGroupSetStage(group, FILTERS_GROUP_STAGE_EGRESS);
  EXPECT(filtersGroupGetStage(group) == FILTERS_GROUP_STAGE_EGRESS);
  EXPECT(filtersGroupSetType(group, FILTERS_GROUP_TYPE_3) == FILTERS_ERR_TYPE_NOT_ALLOWED);
  filtersGroupGetEntries(group, &held);
  EXPECT(held.count == 0 && held.ids != NULL && held.entries != NULL);
  deleteFiltersEntriesStruct(&held);
  x = newMatchVrfId(1);
  for (int i = 0; i < 3; ++i) {
    FiltersEntry* entry = newFiltersEntry(inserted[i]);
    EXPECT(filtersGroupInsertEntry(group, entry) == FILTERS_OK);
    EXPECT(filtersEntrySetMatch(entry, x) == FILTERS_OK);
    EXPECT(filtersGroupInsertEntry(group, entry) == FILTERS_ERR_MATCH_NOT_ALLOWED);
    deleteFiltersEntry(entry);
  }
  deleteMatch(x);
  filtersGroupGetEntries(group, &held);
  EXPECT(held.count == 3);
  for (int32_t i = 0; i < held.count; ++i) {
    EXPECT(held.ids[i] == sorted[i] && filtersEntryGetId(held.entries[i]) == sorted[i]);
  }
  deleteFiltersEntry(held.entries[1]);
  held.entries[1] = NULL;
  deleteFiltersEntriesStruct(&held);
  EXPECT(filtersGroupRemoveEntry(group, 70005) == FILTERS_OK);
  EXPECT(filtersGroupRemoveEntry(group, 70005) == FILTERS_ERR_NOT_FOUND);
  EXPECT(filtersGroupRemoveEntry(NULL, 2) == FILTERS_ERR_INVALID_ARGUMENT);
  deleteFiltersGroup(group);
}

void callEveryFunction(void) {
  const limid_t ports[] = {limid_make_lag(1), limid_make_ethernet(3), limid_make_lag(1)};
  makeMatches(ports);
  makeActions(ports);
  useEntries();
  useGroups();
}
