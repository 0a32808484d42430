// Asks libfilter_inspect these questions from C: Why is a rule refused? Which groups would admit
// it? What is lost when the bytes of another sender are read? The program exits with 0 only if
// everything was as expected.

#include <filter_common/filter_matches_c.h>
#include <filter_inspect/filter_inspect_c.h>
#include <stdio.h>
#include <string.h>

// Prints the report as text. True if the first finding of the report is the expected one.
static int show(FiltersReport* report, const char* expected) {
  char text[1000];
  filtersFinding_t first;
  if (filtersReportToText(report, text, sizeof text) >= sizeof text) puts("  (cut off)");
  fputs(text, stdout);
  if (filtersReportGet(report, 0, &first) && strcmp(first.code, expected) == 0) return 1;
  fprintf(stderr, "inspect: %s was expected\n", expected);
  return 0;
}

static FiltersEntry* ruleOfVrf(uint16_t vrf) {
  FiltersEntry* rule = newFiltersEntry(30);
  void* match = newMatchVrfId(vrf);
  const filtersErr_t result = filtersEntrySetMatch(rule, match);
  if (result != FILTERS_OK) puts(filtersErrDescribe(result));
  deleteMatch(match);
  return rule;
}

// Prints why a rule is refused, and the types that would admit its match.
static int whyRefused(void) {
  FiltersEntry* rule = ruleOfVrf(5);
  FiltersReport* why =
      filtersExplainInsertInto(FILTERS_GROUP_STAGE_INGRESS, FILTERS_GROUP_TYPE_3, rule);
  const int good = show(why, "match-not-admitted");
  deleteFiltersReport(why);

  filtersGroupType_t types[12];
  const size_t count = filtersAdmittedTypes(FILTERS_GROUP_STAGE_INGRESS, types, 12);
  for (size_t i = 0; i < count && i < 12; ++i) {
    why = filtersExplainInsertInto(FILTERS_GROUP_STAGE_INGRESS, types[i], rule);
    if (why != NULL && filtersReportCount(why) == 0) {
      printf("  a group of type %s takes it\n", filtersTypeName(types[i]));
    }
    deleteFiltersReport(why);
  }
  deleteFiltersEntry(rule);
  return good;
}

// Reads bytes with a number that is too wide for its field: a rule has a match on VLAN 65636.
static int whatWasLost(void) {
  static const unsigned char match[] = {0x22, 0x06, 0x08, 0x02, 0x18, 0xe4, 0x80, 0x04};
  unsigned char bytes[200];
  FiltersEntry *sent = newFiltersEntry(40), *received = NULL;
  size_t size = filtersEntryToBytes(sent, bytes, sizeof bytes - sizeof match);
  memcpy(bytes + size, match, sizeof match);
  size += sizeof match;

  FiltersReport* lost = filtersDecodeEntry(bytes, size, &received);
  int good = show(lost, "value-cut");
  deleteFiltersReport(lost);

  char print[2000] = "";
  good = good && filtersEntryPrint(received, print, sizeof print) < sizeof print;
  puts(strstr(print, "VLAN IDs: [ 100 ]") ? "  what is left is VLAN 100" : print);
  good = good && !filtersEntriesEqual(sent, received);
  if (received != NULL) deleteFiltersEntry(received);
  deleteFiltersEntry(sent);
  return good;
}

int main(void) {
  puts("Why is it refused?");
  const int refusal = whyRefused();
  puts("What did these bytes lose?");
  const int loss = whatWasLost();
  return refusal && loss ? 0 : 1;
}
