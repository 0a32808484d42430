// The tutorial in C: builds a group of filter rules, reads it back and shows a refusal. The program
// exits with 0 only if everything was as expected.

#include <arpa/inet.h>
#include <filter_common/filter_actions_c.h>
#include <filter_common/filter_entries_c.h>
#include <filter_common/filter_groups_c.h>
#include <filter_common/filter_matches_c.h>
#include <stdio.h>

static int surprises = 0;

static void show(const char* what, long value, long expected) {
  printf("  %-48s %ld\n", what, value);
  if (value == expected) return;
  fprintf(stderr, "procedural: %s: %ld was expected\n", what, expected);
  ++surprises;
}

// Stops the program if the library refuses a call. Otherwise a rule could lack one of its matches,
// and would apply to more packets.
static void require(filtersErr_t result) {
  if (result != FILTERS_OK) show("an unexpected refusal", result, FILTERS_OK);
}

// An entry stores copies, so the caller can delete its own objects at once.
static filtersErr_t addMatch(FiltersEntry* rule, void* match) {
  const filtersErr_t result = filtersEntrySetMatch(rule, match);
  deleteMatch(match);
  return result;
}

static filtersErr_t addAction(FiltersEntry* rule, void* action) {
  const filtersErr_t result = filtersEntrySetAction(rule, action);
  deleteAction(action);
  return result;
}

// A group also stores copies of its entries.
static filtersErr_t addRule(FiltersGroup* group, FiltersEntry* rule) {
  const filtersErr_t result = filtersGroupInsertEntry(group, rule);
  deleteFiltersEntry(rule);
  return result;
}

static struct in_addr ipv4(const char* text) {
  struct in_addr address = {0};
  inet_pton(AF_INET, text, &address);
  return address;
}

// BGP from the peers of one prefix goes to queue 6 of the CPU.
static FiltersEntry* bgpFromPeers(void) {
  const struct in_addr peers = ipv4("192.0.2.0"), mask = ipv4("255.255.255.0");
  FiltersEntry* rule = newFiltersEntry(10);
  filtersEntrySetPriority(rule, 100);
  require(addMatch(rule, newMatchSrcIPv4Mask(&peers, &mask)));
  require(addMatch(rule, newMatchIpProtocol(IPPROTO_TCP)));
  require(addMatch(rule, newMatchDstL4PortMask(179, 0xffff)));
  require(addAction(rule, newActionPermit()));
  require(addAction(rule, newActionMapToCpuCosQueue(6)));
  return rule;
}

// Drops packets that arrive with TTL 1, which this router could not forward.
static FiltersEntry* expiring(void) {
  FiltersEntry* rule = newFiltersEntry(50);
  require(addMatch(rule, newMatchTTL(1)));
  require(addAction(rule, newActionDeny()));
  return rule;
}

// To read a match of a rule, make an object of the same kind and let the rule fill it.
static void showDestinationPort(FiltersEntry* rule) {
  void* port = newMatchDstL4Port(0);
  require(filtersEntryGetMatch(rule, port));
  show("destination port of the BGP rule", matchGetL4Port(port), 179);
  deleteMatch(port);
}

int main(void) {
  puts("A group for the control plane");
  FiltersGroup* group = newFiltersGroup(1);
  filtersGroupSetStage(group,
                       FILTERS_GROUP_STAGE_INGRESS);  // does not report a refusal: read it back
  show("stage", filtersGroupGetStage(group), FILTERS_GROUP_STAGE_INGRESS);
  require(filtersGroupSetType(group, FILTERS_GROUP_TYPE_3));
  show("type", filtersGroupGetType(group), FILTERS_GROUP_TYPE_3);
  require(addRule(group, expiring()));
  require(addRule(group, bgpFromPeers()));

  puts("A rule that its type does not admit");
  FiltersEntry* foreign = newFiltersEntry(99);
  require(addMatch(foreign, newMatchVrfId(5)));
  show("inserting a match on a VRF", addRule(group, foreign), FILTERS_ERR_MATCH_NOT_ALLOWED);

  puts("Its entries");
  entriesStruct held;
  filtersGroupGetEntries(group, &held);
  show("count", held.count, 2);
  for (int32_t i = 0; i < held.count; ++i) {
    show("id", (long)held.ids[i], i == 0 ? 10 : 50);
    show("priority", (long)filtersEntryGetPriority(held.entries[i]), i == 0 ? 100 : 0);
  }
  if (held.count > 0) showDestinationPort(held.entries[0]);

  deleteFiltersEntriesStruct(&held);
  deleteFiltersGroup(group);
  return surprises == 0 ? 0 : 1;
}
