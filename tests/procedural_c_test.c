// The whole procedural interface as a C program sees it: every function is called, with values that
// tell it from its neighbours.

#include <filter_common/filter_actions_c.h>
#include <filter_common/filter_entries_c.h>
#include <filter_common/filter_groups_c.h>
#include <filter_common/filter_matches_c.h>
#include <limid/limid_standin.h>
#include <stdio.h>
#include <string.h>

static int failures = 0;

static void check(bool good, int line, const char* what) {
  if (good) return;
  fprintf(stderr, "%s:%d: failed: %s\n", __FILE__, line, what);
  ++failures;
}
#define CHECK(condition) check((condition), __LINE__, #condition)

// --- Matches and actions -------------------------------------------------------------------------

// Makes an object x, puts it into an entry and gets it out again into a different one of its class:
// `holds` is true of x, false of the other (`differs`), and true of the other in the end.
#define ROUND_TRIP(Family, typeOf, code, made, different, holds, differs) \
  do {                                                                    \
    void *x = (made), *stored = x;                                        \
    FiltersEntry* entry = newFiltersEntry(1);                             \
    CHECK(typeOf(x) == (code) && (holds));                                \
    CHECK(filtersEntryGet##Family(entry, x) == FILTERS_ERR_NOT_FOUND);    \
    CHECK(filtersEntrySet##Family(entry, x) == FILTERS_OK);               \
    x = (different);                                                      \
    CHECK(typeOf(x) == (code) && (differs));                              \
    CHECK(filtersEntryGet##Family(entry, x) == FILTERS_OK && (holds));    \
    CHECK(filtersEntryDelete##Family(entry, (code)) == FILTERS_OK);       \
    CHECK(filtersEntryGet##Family(entry, x) == FILTERS_ERR_NOT_FOUND);    \
    delete##Family(x);                                                    \
    delete##Family(stored);                                               \
    deleteFiltersEntry(entry);                                            \
  } while (0)
#define MATCH(code, made, different, holds) \
  ROUND_TRIP(Match, matchGetType, code, made, different, holds, !(holds))
#define ACTION(code, made, different, holds) \
  ROUND_TRIP(Action, actionGetType, code, made, different, holds, !(holds))
// For classes that this interface does not read.
#define SEALED_MATCH(code, made) ROUND_TRIP(Match, matchGetType, code, made, made, true, true)
#define SEALED_ACTION(code, made) ROUND_TRIP(Action, actionGetType, code, made, made, true, true)

static bool isMac(void* m, const struct ether_addr* mac, const struct ether_addr* mask) {
  return memcmp(matchMacGetMac(m), mac, 6) == 0 && memcmp(matchMacGetMask(m), mask, 6) == 0;
}

static bool isIPv4(void* m, const struct in_addr* ip, const struct in_addr* mask) {
  return matchIPv4GetIPv4(m)->s_addr == ip->s_addr &&
         matchIPv4GetIPv4Mask(m)->s_addr == mask->s_addr;
}

static bool isIPv6(void* m, const struct in6_addr* ip, const struct in6_addr* mask) {
  return memcmp(matchIPv6GetIPv6(m), ip, 16) == 0 && memcmp(matchIPv6GetIPv6Mask(m), mask, 16) == 0;
}

static bool isPort(void* m, l4port_t port, l4port_t mask) {
  return matchGetL4Port(m) == port && matchGetL4PortMask(m) == mask;
}

static bool isRange(void* m, l4port_t min, l4port_t max) {
  return isPort(m, min, max) && matchGetL4PortRangeMin(m) == min &&
         matchGetL4PortRangeMax(m) == max;
}

static bool isVlanInfo(void* m, uint32_t service, uint32_t protocol) {
  const vlan_info_t info = matchVlanInfoGet(m);
  return info.svc_vlan_type == service && info.proto_cpu_vlan_type == protocol;
}

// clang-format off
static void testAddressMatches(void) {
  const struct ether_addr mac = {{2, 0, 0, 0, 0, 1}}, mac2 = {{0xfe, 0, 0, 0, 0, 0xf1}};
  const struct ether_addr macOnes = {{255, 255, 255, 255, 255, 255}};
  const struct in_addr ip = {htonl(0xc0000201)}, ip2 = {htonl(0xffffff00)}, ones = {0xffffffff};
  const struct in6_addr v6 = {{{0x20, 1, [15] = 1}}}, v62 = {{{0xff, 0xff}}};
  struct in6_addr v6Ones;
  memset(&v6Ones, 0xff, sizeof v6Ones);
  MATCH(4, newMatchDstMac(&mac), newMatchDstMac(&mac2), isMac(x, &mac, &macOnes));
  MATCH(4, newMatchDstMacMask(&mac, &mac2), newMatchDstMac(&mac), isMac(x, &mac, &mac2));
  MATCH(7, newMatchSrcMac(&mac), newMatchSrcMac(&mac2), isMac(x, &mac, &macOnes));
  MATCH(7, newMatchSrcMacMask(&mac, &mac2), newMatchSrcMac(&mac), isMac(x, &mac, &mac2));
  MATCH(9, newMatchSrcIPv4(&ip), newMatchSrcIPv4(&ip2), isIPv4(x, &ip, &ones));
  MATCH(9, newMatchSrcIPv4Mask(&ip, &ip2), newMatchSrcIPv4(&ip), isIPv4(x, &ip, &ip2));
  MATCH(10, newMatchDstIPv4(&ip), newMatchDstIPv4(&ip2), isIPv4(x, &ip, &ones));
  MATCH(10, newMatchDstIPv4Mask(&ip, &ip2), newMatchDstIPv4(&ip), isIPv4(x, &ip, &ip2));
  MATCH(14, newMatchSrcIPv6(&v6), newMatchSrcIPv6(&v62), isIPv6(x, &v6, &v6Ones));
  MATCH(15, newMatchDstIPv6(&v6), newMatchDstIPv6(&v62), isIPv6(x, &v6, &v6Ones));
  MATCH(15, newMatchDstIPv6Mask(&v6, &v62), newMatchDstIPv6(&v6), isIPv6(x, &v6, &v62));
}

static void testMatches(void) {
  const limid_t eth = limid_make_ethernet(3), lag = limid_make_lag(1);
  const vlan_info_t info = {3, 70000}, info2 = {70000, 3};
  SEALED_MATCH(0, newMatchAll());
  SEALED_MATCH(1, newMatchIngressPorts(&eth, 1));
  SEALED_MATCH(1, newMatchIngressPorts(NULL, 0));
  SEALED_MATCH(2, newMatchExternalVlanId(10));
  MATCH(3, newMatchTPID(0x88a8), newMatchTPID(0x8100), matchGetTPID(x) == 0x88a8);
  MATCH(5, newMatchDstL4Port(80), newMatchDstL4Port(81), isPort(x, 80, 0));
  MATCH(5, newMatchDstL4PortMask(80, 0xff00), newMatchDstL4Port(80), isPort(x, 80, 0xff00));
  MATCH(6, newMatchSrcL4Port(80), newMatchSrcL4Port(81), isPort(x, 80, 0));
  MATCH(6, newMatchSrcL4PortMask(80, 0xff00), newMatchSrcL4Port(80), isPort(x, 80, 0xff00));
  MATCH(8, newMatchL2SrcEntryType(2), newMatchL2SrcEntryType(1), matchGetL2SrcEntryType(x) == 2);
  SEALED_MATCH(11, newMatchInternalVlanId(10));
  SEALED_MATCH(12, newMatchPcp(5));
  SEALED_MATCH(13, newMatchInternalPcp(5));
  SEALED_MATCH(16, newMatchVlanTagging(FILTERS_VLAN_TAGGED));
  MATCH(17, newMatchIpProtocol(89), newMatchIpProtocol(6), matchIpProtocolGetIpProt(x) == 89);
  MATCH(18, newMatchPacketRes(7), newMatchPacketRes(8), matchPacketResGet(x) == 7);
  MATCH(19, newMatchMplsTerm(true), newMatchMplsTerm(false), matchMplsTermGet(x));
  MATCH(20, newMatchDSCP(46), newMatchDSCP(8), matchDSCPGet(x) == 46);
  MATCH(21, newMatchVirtualPort(&eth), newMatchVirtualPort(&lag), matchGetLimId(x) == eth);
  SEALED_MATCH(22, newMatchEgressPorts(&eth, 1));
  SEALED_MATCH(22, newMatchEgressPorts(NULL, 0));
  MATCH(23, newMatchIngressStpState(3), newMatchIngressStpState(1), matchIngressStpStateGet(x) == 3);
  MATCH(24, newMatchVlanInfo(&info), newMatchVlanInfo(&info2), isVlanInfo(x, 3, 70000));
  MATCH(25, newMatchSrcPort(&eth), newMatchSrcPort(&lag), matchGetLimId(x) == eth);
  MATCH(26, newMatchTTL(255), newMatchTTL(1), matchTTLGet(x) == 255);
  MATCH(27, newMatchVrfId(300), newMatchVrfId(44), matchVrfIdGet(x) == 300);
  MATCH(28, newMatchDrop(true), newMatchDrop(false), matchDropGet(x));
  SEALED_MATCH(30, newMatchCpuPort());
  MATCH(33, newMatchCPUInjectedPackets(true), newMatchCPUInjectedPackets(false),
        MatchCPUInjectedPacketsGet(x));
  MATCH(34, newMatchDstL4PortRange(10, 20), newMatchDstL4PortRange(20, 10), isRange(x, 10, 20));
}

static void testActions(void) {
  const limid_t eth = limid_make_ethernet(3), vpws = limid_make_mpls_vpws(7);
  const struct ether_addr mac = {{2, 0, 0, 0, 0, 1}};
  SEALED_ACTION(0, newActionPermit());
  SEALED_ACTION(1, newActionDeny());
  SEALED_ACTION(2, newActionCopyToCpu());
  SEALED_ACTION(3, newActionBlockEgressPorts(&eth, 1));
  SEALED_ACTION(3, newActionBlockEgressPorts(NULL, 0));
  ACTION(4, newActionCopyToCpuCancel(), newActionSwitchToCpuCancel(),
         actionCopyToCpuCancelGetTypeOfCancel(x) == COPY_TO_CPU_CANCEL);
  ACTION(4, newActionSwitchToCpuCancel(), newActionCopyToCpuCancel(),
         actionCopyToCpuCancelGetTypeOfCancel(x) == SWITCH_TO_CPU_CANCEL);
  ACTION(5, newActionSetPcp(7), newActionSetPcp(1), actionSetPcpGetPcp(x) == 7);
  ACTION(6, newActionSetPcpAndQueue(255), newActionSetPcpAndQueue(1),
         actionSetPcpAndQueueGetPcpAndQueue(x) == 255);
  ACTION(8, newActionSetDSCP(46), newActionSetDSCP(1), actionSetDSCPGetDSCP(x) == 46);
  ACTION(9, newActionMapToCosQueue(5), newActionMapToCosQueue(1),
         actionMapToCosQueueGetCosQueue(x) == 5);
  SEALED_ACTION(10, newActionMapToCpuCosQueue(5));
  SEALED_ACTION(11, newActionRedirect(eth));
  SEALED_ACTION(12, newReplaceDstMac(mac));
  SEALED_ACTION(13, newActionRedirectCancel());
  SEALED_ACTION(14, newReplaceSrcMac(mac));
  ACTION(15, newActionL3Switch(100000), newActionL3Switch(34464),
         actionL3SwitchGetL3DestinationId(x) == 100000);
  SEALED_ACTION(17, newActionCopyInnerPcp());
  SEALED_ACTION(18, newActionMplsPortSet(vpws, eth));
}
// clang-format on

// --- Entries and groups --------------------------------------------------------------------------

static void testEntries(void) {
  const struct in_addr ip = {htonl(0xc0000201)};
  const struct in6_addr ip6 = {{{0x20, 1}}};
  void *source = newMatchSrcIPv4(&ip), *destination = newMatchDstIPv6(&ip6);
  void* permit = newActionPermit();
  FiltersEntry* entry = newFiltersEntry(70000);
  CHECK(filtersEntryGetId(entry) == 70000 && filtersEntryGetPriority(entry) == 0);
  filtersEntrySetPriority(entry, 80000);
  CHECK(filtersEntrySetMatch(entry, source) == FILTERS_OK);
  CHECK(filtersEntrySetMatch(entry, destination) == FILTERS_ERR_INVALID);
  CHECK(filtersEntryDeleteMatch(entry, FILTERS_MATCH_DST_IPV6) == FILTERS_ERR_NOT_FOUND);
  CHECK(filtersEntryDeleteAction(entry, FILTERS_ACTION_PERMIT) == FILTERS_ERR_NOT_FOUND);

  // One of two goes, the other stays.
  void *ttl = newMatchTTL(1), *deny = newActionDeny();
  CHECK(filtersEntrySetMatch(entry, ttl) == FILTERS_OK);
  CHECK(filtersEntrySetAction(entry, permit) == FILTERS_OK);
  CHECK(filtersEntrySetAction(entry, deny) == FILTERS_OK);
  CHECK(filtersEntryDeleteMatch(entry, FILTERS_MATCH_TTL) == FILTERS_OK);
  CHECK(filtersEntryDeleteAction(entry, FILTERS_ACTION_DENY) == FILTERS_OK);
  CHECK(filtersEntryGetMatch(entry, ttl) == FILTERS_ERR_NOT_FOUND);
  CHECK(filtersEntryGetAction(entry, deny) == FILTERS_ERR_NOT_FOUND);
  CHECK(filtersEntryGetMatch(entry, source) == FILTERS_OK);
  CHECK(filtersEntryGetAction(entry, permit) == FILTERS_OK);
  deleteMatch(ttl);
  deleteAction(deny);

  CHECK(filtersEntryGetMatch(NULL, source) == FILTERS_ERR_INVALID_ARGUMENT);
  CHECK(filtersEntryGetMatch(entry, NULL) == FILTERS_ERR_INVALID_ARGUMENT);
  CHECK(filtersEntrySetMatch(NULL, source) == FILTERS_ERR_INVALID_ARGUMENT);
  CHECK(filtersEntrySetMatch(entry, NULL) == FILTERS_ERR_INVALID_ARGUMENT);
  CHECK(filtersEntryGetAction(NULL, permit) == FILTERS_ERR_INVALID_ARGUMENT);
  CHECK(filtersEntryGetAction(entry, NULL) == FILTERS_ERR_INVALID_ARGUMENT);
  CHECK(filtersEntrySetAction(NULL, permit) == FILTERS_ERR_INVALID_ARGUMENT);
  CHECK(filtersEntrySetAction(entry, NULL) == FILTERS_ERR_INVALID_ARGUMENT);

  FiltersEntry* copy = copyFiltersEntry(entry);
  CHECK(filtersEntryGetId(copy) == 70000 && filtersEntryGetPriority(copy) == 80000);
  filtersEntrySetPriority(copy, 1);
  CHECK(filtersEntryDeleteMatch(copy, FILTERS_MATCH_SRC_IPV4) == FILTERS_OK);
  CHECK(filtersEntryGetPriority(entry) == 80000);
  CHECK(filtersEntryGetMatch(entry, source) == FILTERS_OK);
  deleteFiltersEntry(copy);
  deleteFiltersEntry(entry);
  deleteMatch(source);
  deleteMatch(destination);
  deleteAction(permit);
}

static void testGroupHeader(FiltersGroup* group) {
  CHECK(filtersGroupGetId(group) == 500 && filtersGroupGetPriority(group) == 0);
  filtersGroupSetPriority(group, 600);
  CHECK(filtersGroupGetId(group) == 500 && filtersGroupGetPriority(group) == 600);
  CHECK(filtersGroupSetType(group, FILTERS_GROUP_TYPE_5) == FILTERS_OK);
  filtersGroupSetStage(group, FILTERS_GROUP_STAGE_INGRESS);  // refused, without a word
  CHECK(filtersGroupGetStage(group) == FILTERS_GROUP_STAGE_NONE);
  filtersGroupSetStage(group, FILTERS_GROUP_STAGE_EGRESS);
  CHECK(filtersGroupGetStage(group) == FILTERS_GROUP_STAGE_EGRESS);
  CHECK(filtersGroupSetType(group, FILTERS_GROUP_TYPE_3) == FILTERS_ERR_TYPE_NOT_ALLOWED);
  CHECK(filtersGroupGetType(group) == FILTERS_GROUP_TYPE_5);
}

static void testGroupEntries(FiltersGroup* group) {
  const filtersEntryId_t inserted[] = {70009, 2, 70005}, sorted[] = {2, 70005, 70009};
  entriesStruct held = {-1, NULL, NULL};
  deleteFiltersEntriesStruct(&held);  // a count below 0 is none
  filtersGroupGetEntries(group, &held);
  CHECK(held.count == 0 && held.ids != NULL && held.entries != NULL);
  deleteFiltersEntriesStruct(&held);
  void* foreign = newMatchVrfId(1);
  for (int i = 0; i < 3; ++i) {
    FiltersEntry* entry = newFiltersEntry(inserted[i]);
    filtersEntrySetPriority(entry, inserted[i] + 1);
    CHECK(filtersGroupInsertEntry(group, entry) == FILTERS_OK);
    CHECK(filtersEntrySetMatch(entry, foreign) == FILTERS_OK);
    CHECK(filtersGroupInsertEntry(group, entry) == FILTERS_ERR_MATCH_NOT_ALLOWED);
    deleteFiltersEntry(entry);
  }
  deleteMatch(foreign);
  for (int round = 0; round < 2; ++round) {  // what happens to the copies stays with them
    filtersGroupGetEntries(group, &held);
    CHECK(held.count == 3);
    for (int32_t i = 0; i < held.count; ++i) {
      CHECK(held.ids[i] == sorted[i] && filtersEntryGetId(held.entries[i]) == sorted[i]);
      CHECK(filtersEntryGetPriority(held.entries[i]) == sorted[i] + 1);
      filtersEntrySetPriority(held.entries[i], 7);
    }
    deleteFiltersEntry(held.entries[1]);
    held.entries[1] = NULL;
    deleteFiltersEntriesStruct(&held);
    CHECK(held.count == 3);
  }
  CHECK(filtersGroupRemoveEntry(group, 70005) == FILTERS_OK);
  CHECK(filtersGroupRemoveEntry(group, 70005) == FILTERS_ERR_NOT_FOUND);
  CHECK(filtersGroupRemoveEntry(NULL, 2) == FILTERS_ERR_INVALID_ARGUMENT);
  filtersGroupGetEntries(group, &held);
  CHECK(held.count == 2 && held.ids[0] == 2 && held.ids[1] == 70009);
  deleteFiltersEntriesStruct(&held);
}

int main(void) {
  testAddressMatches();
  testMatches();
  testActions();
  testEntries();
  FiltersGroup* group = newFiltersGroup(500);
  testGroupHeader(group);
  testGroupEntries(group);
  deleteFiltersGroup(group);
  return failures == 0 ? 0 : 1;
}
