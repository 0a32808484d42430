// Calls every function of the inspection library from C11. inspect_c_test.cpp runs these calls, and
// makes the allocations in each call fail.

#include <filter_common/filter_actions_c.h>
#include <filter_common/filter_matches_c.h>
#include <filter_inspect/filter_inspect_c.h>
#include <stdio.h>
#include <string.h>

void callEveryFunctionOfInspect(void);
void expectInC(bool good, int line, const char* what);  // in inspect_c_test.cpp

#define EXPECT(condition) expectInC((condition), __LINE__, #condition)

// The first finding of a report, as "code result subject offender". Deletes the report.
static const char* first(FiltersReport* report) {
  static char text[100];
  filtersFinding_t f;
  const int32_t there = filtersReportGet(report, 0, &f);
  strcpy(text, report == NULL ? "null" : "empty");
  if (there) {
    snprintf(text, sizeof text, "%s %d %d %u", f.code, (int)f.result, (int)f.subject,
             (unsigned)f.offender);
    EXPECT(f.severity == FILTERS_SEVERITY_ERROR && f.message[0] != '\0');
  }
  EXPECT(there == (filtersReportCount(report) != 0) && filtersReportLeftOut(report) == 0);
  EXPECT(filtersReportLeftOutOf(report, FILTERS_SEVERITY_ERROR) == 0);
  EXPECT(filtersReportWorst(report) == (there ? FILTERS_SEVERITY_ERROR : FILTERS_SEVERITY_NOTE));
  EXPECT(!filtersReportGet(report, 0, NULL));
  EXPECT(!filtersReportGet(report, filtersReportCount(report), &f));
  deleteFiltersReport(report);
  return text;
}
#define FIRST(report, expected) EXPECT(strcmp(first(report), expected) == 0)

static void explain(FiltersGroup* group, FiltersEntry* entry) {
  FIRST(filtersExplainInsert(group, entry), "match-not-admitted -6 2 27");
  FIRST(filtersExplainInsertInto(FILTERS_GROUP_STAGE_INGRESS, FILTERS_GROUP_TYPE_8, entry),
        "empty");
  FIRST(filtersExplainInsertInto(70, FILTERS_GROUP_TYPE_8, entry), "null");
  FIRST(filtersExplainStage(group, FILTERS_GROUP_STAGE_EGRESS), "type-not-admitted -7 0 3");
  FIRST(filtersExplainStage(group, 70), "null");
  FIRST(filtersExplainType(group, FILTERS_GROUP_TYPE_NONE), "empty");
  FIRST(filtersExplainType(group, 70), "null");
  FIRST(filtersExplainMatch(entry, FILTERS_MATCH_TTL), "empty");
  FIRST(filtersExplainMatch(entry, FILTERS_MATCH_FORWARDING_TYPE), "empty");
  FIRST(filtersExplainMatch(entry, 70), "null");
  FIRST(filtersExplainMatch(entry, 256 + FILTERS_MATCH_TTL), "null");
  FIRST(filtersExplainStage(group, 256), "null");
  FIRST(filtersExplainType(group, 256), "null");
  FIRST(filtersExplainInsert(NULL, entry), "null");
  FIRST(filtersExplainInsert(group, NULL), "null");
  FIRST(filtersExplainInsertInto(FILTERS_GROUP_STAGE_NONE, FILTERS_GROUP_TYPE_NONE, NULL), "null");
  FIRST(filtersExplainStage(NULL, FILTERS_GROUP_STAGE_NONE), "null");
  FIRST(filtersExplainType(NULL, FILTERS_GROUP_TYPE_NONE), "null");
  FIRST(filtersExplainMatch(NULL, FILTERS_MATCH_TTL), "null");

  FiltersReport* report = filtersExplainInsert(group, entry);
  filtersFinding_t f;
  if (!filtersReportGet(report, 0, &f)) return;  // reported above
  EXPECT(f.has_entry && f.entry == 70000 && f.has_group && f.group == 500 && !f.has_bytes);
  filtersMatch_t matches[64];
  EXPECT(filtersAdmittedMatches(FILTERS_GROUP_TYPE_3, matches, 64) == f.admitted_count);
  EXPECT(memcmp(matches, f.admitted, f.admitted_count * sizeof *matches) == 0);
  deleteFiltersReport(report);
}

static void admit(void) {
  filtersGroupType_t types[] = {70, 70, 70};
  filtersAction_t action = 70;
  const size_t all = filtersAdmittedTypes(FILTERS_GROUP_STAGE_LOOKUP, NULL, 3);
  EXPECT(all == 3 && filtersAdmittedTypes(FILTERS_GROUP_STAGE_LOOKUP, types, 2) == all);
  EXPECT(types[0] == FILTERS_GROUP_TYPE_NONE && types[1] == FILTERS_GROUP_TYPE_4);
  EXPECT(types[2] == 70);
  EXPECT(filtersAdmittedActions(FILTERS_GROUP_STAGE_NONE, &action, 1) > 1);
  EXPECT(filtersAdmittedActions(FILTERS_GROUP_STAGE_NONE, NULL, 1) > 1);
  EXPECT(action == FILTERS_ACTION_PERMIT);
  EXPECT(filtersAdmittedActions(70, &action, 1) == 0 && filtersAdmittedTypes(70, types, 1) == 0);
  EXPECT(filtersAdmittedMatches(70, NULL, 0) == 0);
  EXPECT(filtersAdmittedMatches(FILTERS_GROUP_TYPE_3, NULL, 64) > 1);
  EXPECT(filtersAdmittedMatches(256 + FILTERS_GROUP_TYPE_3, NULL, 0) == 0);
  EXPECT(filtersAdmittedActions(256, NULL, 0) == 0 && filtersAdmittedTypes(256, NULL, 0) == 0);
}

// Tests a function that fills a buffer with text. For every size, the function writes as much of
// the text as fits, then a zero, and no byte beyond the buffer. For a null object the text is
// empty.
#define FILLS(Fill, Object)                                                                 \
  static void fills##Fill(const Object* object, const char* first) {                        \
    char whole[5000], out[5000];                                                            \
    const size_t length = Fill(object, whole, sizeof whole);                                \
    EXPECT(length == strlen(whole) && strncmp(whole, first, strlen(first)) == 0);           \
    EXPECT(Fill(object, NULL, 0) == length && Fill(object, NULL, 10) == length);            \
    for (size_t size = 1; size <= length + 1; size += size < length - 1 ? 7 : 1) {          \
      memset(out, '#', sizeof out);                                                         \
      EXPECT(Fill(object, out, size) == length && strlen(out) == size - 1);                 \
      EXPECT(memcmp(out, whole, size - 1) == 0 && out[size] == '#');                        \
    }                                                                                       \
    EXPECT(Fill(NULL, out, sizeof out) == 0 && out[0] == '\0' && Fill(NULL, NULL, 9) == 0); \
  }
FILLS(filtersGroupPrint, FiltersGroup)
FILLS(filtersEntryPrint, FiltersEntry)
FILLS(filtersReportToText, FiltersReport)
FILLS(filtersReportToJson, FiltersReport)

static void decodeGroup(FiltersGroup* group, FiltersGroup* another) {
  unsigned char bytes[500];
  FiltersGroup* read = another;
  const size_t size = filtersGroupToBytes(group, bytes, sizeof bytes);
  EXPECT(size > 0 && filtersGroupToBytes(NULL, bytes, sizeof bytes) == 0);
  EXPECT(filtersGroupToBytes(group, NULL, sizeof bytes) == size);
  FIRST(filtersDecodeGroup(bytes, size, &read), "empty");
  EXPECT(filtersGroupsEqual(read, group) && !filtersGroupsEqual(read, another));
  EXPECT(!filtersGroupsEqual(NULL, group) && !filtersGroupsEqual(group, NULL));
  EXPECT(!filtersGroupsEqual(NULL, NULL));
  deleteFiltersGroup(read);
  FIRST(filtersDecodeGroup(bytes, size, NULL), "empty");
  FIRST(filtersDecodeGroup(NULL, size, &read), "null");
  EXPECT(read == NULL);
}

static void decodeEntry(FiltersEntry* entry, FiltersEntry* another) {
  static const unsigned char wide[] = {0x22, 0x06, 0x08, 0x02, 0x18, 0xe4, 0x80, 0x04};
  unsigned char bytes[500], untouched = 70;
  FiltersEntry* read = another;
  const size_t size = filtersEntryToBytes(entry, bytes, sizeof bytes - sizeof wide);
  EXPECT(size > 0 && filtersEntryToBytes(NULL, NULL, 0) == 0);
  EXPECT(filtersEntryToBytes(entry, &untouched, size - 1) == size && untouched == 70);
  EXPECT(filtersEntryToBytes(entry, NULL, size) == size);
  FIRST(filtersDecodeEntry(bytes, size, &read), "empty");
  EXPECT(filtersEntriesEqual(read, entry) && !filtersEntriesEqual(read, another));
  EXPECT(!filtersEntriesEqual(NULL, entry) && !filtersEntriesEqual(entry, NULL));
  deleteFiltersEntry(read);
  FIRST(filtersDecodeEntry(NULL, size, &read), "null");
  EXPECT(read == NULL);

  // An empty string is valid input too.
  FiltersReport* report = filtersDecodeEntry(NULL, 0, &read);
  EXPECT(read != NULL && filtersReportCount(report) > 0);
  deleteFiltersReport(report);
  if (read != NULL) deleteFiltersEntry(read);

  memcpy(bytes + size, wide, sizeof wide);
  report = filtersDecodeEntry(bytes, size + sizeof wide, NULL);
  filtersFinding_t cut;
  const int32_t there = filtersReportGet(report, 0, &cut);
  EXPECT(there);
  if (!there) return;
  EXPECT(strcmp(cut.code, "value-cut") == 0 && cut.severity == FILTERS_SEVERITY_WARNING);
  EXPECT(cut.result == FILTERS_OK && cut.has_bytes && cut.offset >= size && cut.length > 0);
  EXPECT(cut.offset + cut.length <= size + sizeof wide && strstr(cut.path, "vlan_id_") != NULL);
  EXPECT(strcmp(cut.before, "65636") == 0 && strcmp(cut.after, "100") == 0);
  EXPECT(cut.witness[0] == '\0' && cut.others_count == 0);
  fillsfiltersReportToText(report, "warning: ");
  fillsfiltersReportToJson(report, "{\n");
  deleteFiltersReport(report);
}

FILLS(filtersGroupToText, FiltersGroup)
FILLS(filtersGroupToJson, FiltersGroup)
FILLS(filtersGroupToCompactJson, FiltersGroup)
FILLS(filtersEntryToText, FiltersEntry)

static void writeAndRead(FiltersGroup* group) {
  static const char two[] =
      "filter-groups 1\ngroup 1 priority=0 stage=none type=none\n"
      "group 2 priority=0 stage=none type=none\n";
  char text[5000];
  FiltersGroup* read = group;
  size_t size = filtersGroupToText(group, text, sizeof text);
  FIRST(filtersGroupFromText(text, size, &read), "empty");
  EXPECT(filtersGroupsEqual(read, group));
  deleteFiltersGroup(read);
  FIRST(filtersGroupFromText(two, sizeof two - 1, &read), "text-syntax 0 0 0");
  EXPECT(read == NULL);
  FIRST(filtersGroupFromText(NULL, 1, &read), "null");

  size = filtersGroupToJson(group, text, sizeof text);
  FIRST(filtersGroupFromJson(text, size, &read), "empty");
  EXPECT(filtersGroupsEqual(read, group));
  deleteFiltersGroup(read);
  FIRST(filtersGroupFromJson(text, size - 3, &read), "text-syntax 0 0 0");
  EXPECT(read == NULL);
}

static FiltersGroup* copyOf(const FiltersGroup* group) {
  unsigned char bytes[500];
  FiltersGroup* copy = NULL;
  deleteFiltersReport(filtersDecodeGroup(bytes, filtersGroupToBytes(group, bytes, 500), &copy));
  return copy;
}

// Numbers that belong to no enumerator. Some of them would belong to one if they were cut to eight
// bits.
static const int32_t noOrders[] = {-1, 2, 9, 77, 256, 257, INT32_MIN, INT32_MAX};
static const int32_t noKinds[] = {-1, 5, 77, 255, 256, 257, INT32_MIN, INT32_MAX};

static void plan(FiltersGroup* from, FiltersGroup* to) {
  filtersStep_t steps[3];
  char line[200];
  size_t count = 70;
  FiltersReport* report = filtersDiff(from, to);
  EXPECT(filtersReportCount(report) == 2);
  deleteFiltersReport(report);
  FIRST(filtersDiff(from, NULL), "null");

  FIRST(filtersPlan(from, to, FILTERS_PLAN_ADD_FIRST, NULL, 3, &count), "empty");
  EXPECT(count == 2);
  FIRST(filtersPlan(from, to, FILTERS_PLAN_REMOVE_FIRST, steps, 3, NULL), "empty");
  EXPECT(steps[0].kind == FILTERS_STEP_SET_PRIORITY && steps[0].value == 7);
  EXPECT(steps[1].kind == FILTERS_STEP_REMOVE && steps[1].entry == 70000);
  EXPECT(filtersStepToText(&steps[1], to, line, sizeof line) == strlen("remove entry 70000"));
  EXPECT(strcmp(line, "remove entry 70000") == 0);
  EXPECT(filtersStepToText(&steps[1], to, NULL, 9) == strlen(line));
  EXPECT(filtersStepToText(NULL, to, NULL, 0) == 0 && filtersStepToText(steps, NULL, NULL, 0) == 0);
  FIRST(filtersPlan(NULL, to, FILTERS_PLAN_ADD_FIRST, NULL, 0, &count), "null");
  EXPECT(count == 0);

  for (size_t i = 0; i < sizeof noOrders / sizeof *noOrders; ++i) {
    FIRST(filtersPlan(from, to, noOrders[i], steps, 3, &count), "null");
    EXPECT(count == 0);
  }
  for (size_t i = 0; i < sizeof noKinds / sizeof *noKinds; ++i) {
    const filtersStep_t odd = {noKinds[i], 70000, 0};
    EXPECT(filtersApply(&odd, 1, to, from) == FILTERS_ERR_INVALID_ARGUMENT);
    EXPECT(filtersStepToText(&odd, to, line, sizeof line) == 0 && line[0] == '\0');
  }

  EXPECT(filtersApply(steps, 2, to, NULL) == FILTERS_ERR_INVALID_ARGUMENT);
  EXPECT(filtersApply(NULL, 2, to, from) == FILTERS_ERR_INVALID_ARGUMENT);
  EXPECT(filtersApply(steps, 2, to, from) == FILTERS_OK && filtersGroupsEqual(from, to));
  EXPECT(filtersApply(steps, 2, to, from) == FILTERS_ERR_NOT_FOUND);
}

// The entry that takes the packet, or a negative number for another result: -2 if no entry takes
// it.
static long traced(const FiltersGroup* group, const char* packet, int32_t order, const char* text) {
  char whole[500], cut[10];
  filtersOutcome_t outcome = FILTERS_OUTCOME_UNDECIDED;
  filtersEntryId_t entry = 70;
  const size_t length = filtersTrace(group, packet, order, &outcome, &entry, whole, sizeof whole);
  EXPECT(length == strlen(whole) && strstr(whole, text) != NULL);
  EXPECT(filtersTrace(group, packet, order, NULL, NULL, cut, sizeof cut) == length);
  EXPECT(strncmp(cut, whole, sizeof cut - 1) == 0 && strlen(cut) < sizeof cut);
  EXPECT(filtersTrace(group, packet, order, NULL, NULL, NULL, 9) == length);
  EXPECT((entry == 70) == (outcome != FILTERS_OUTCOME_HIT));
  return outcome == FILTERS_OUTCOME_HIT ? (long)entry : -2 - (long)outcome;
}

// Entry 10 permits packets with TTL 3, and entry 20 never takes effect.
static void policies(const FiltersGroup* group) {
  const char text[] =
      "filter-policy 1\ngroup 5 order=highest-priority\n"
      "always permit if ttl=3\n"
      "never permit if ip_protocol=6 # but 10 does\n"
      "accept entry-unreachable entry 20\n";
  filtersFinding_t f;
  char json[8000];
  FiltersReport* report = filtersCheckPolicy(group, text, strlen(text));
  EXPECT(filtersReportCount(report) == 2);
  EXPECT(filtersReportGet(report, 0, &f) && strcmp(f.code, "policy-holds") == 0);
  EXPECT(filtersReportGet(report, 1, &f) && strcmp(f.code, "policy-fails") == 0);
  EXPECT(f.has_entry && f.entry == 10 && strcmp(f.path, "4:1") == 0);
  EXPECT(strcmp(f.before, "permit") == 0);
  EXPECT(filtersReportToJson(report, json, sizeof json) < sizeof json);
  EXPECT(strstr(json, "\"command\": \"expect\"") != NULL);
  EXPECT(strstr(json, "\"order\": \"highest-priority\"") != NULL);
  deleteFiltersReport(report);

  FiltersReport* before = filtersAnalyse(group, FILTERS_ORDER_HIGHEST_PRIORITY);
  size_t accepted = 0;
  report = filtersAnalyseAccepting(group, text, strlen(text), &accepted);
  EXPECT(accepted == 1 && filtersReportCount(report) + 1 == filtersReportCount(before));
  EXPECT(filtersReportToJson(report, json, sizeof json) < sizeof json);
  EXPECT(strstr(json, "\"command\": \"analyse\"") != NULL);
  deleteFiltersReport(report);
  deleteFiltersReport(before);
  deleteFiltersReport(filtersAnalyseAccepting(group, text, strlen(text), NULL));

  accepted = 7;
  FIRST(filtersCheckPolicy(group, NULL, 0), "text-syntax 0 0 0");
  FIRST(filtersAnalyseAccepting(group, "x", 1, &accepted), "text-syntax 0 0 0");
  EXPECT(accepted == 0);
  FIRST(filtersCheckPolicy(group, text, 15), "empty");
  FIRST(filtersCheckPolicy(NULL, text, 15), "null");
  FIRST(filtersCheckPolicy(group, NULL, 1), "null");
  FIRST(filtersAnalyseAccepting(NULL, text, 15, NULL), "null");
}

// With an order by priority, entry 10 takes all packets of entry 20 first.
static void analyse(void) {
  const char text[] =
      "filter-groups 1\ngroup 5 priority=1 stage=ingress type=3\n"
      "entry 10 priority=2 if ttl=3 then permit\n"
      "entry 20 priority=1 if ttl=3 ip_protocol=6 then deny\n"
      "entry 30 priority=0 if dst_l4_port=179/0x0 then deny\n";
  static const struct {
    int32_t order;
    const char* code;
    const char* json;
  } expected[] = {
      {FILTERS_ORDER_UNSPECIFIED, "entries-overlap", "\"order\": \"unspecified\""},
      {FILTERS_ORDER_HIGHEST_PRIORITY, "entry-unreachable", "\"order\": \"highest-priority\""},
      {FILTERS_ORDER_LOWEST_PRIORITY, NULL, "\"order\": \"lowest-priority\""},
      {FILTERS_ORDER_ASCENDING_ID, "entry-unreachable", "\"order\": \"ascending-id\""},
      {FILTERS_ORDER_LOWEST_PRIORITY_DESCENDING_ID, NULL,
       "\"order\": \"lowest-priority,descending-id\""},
  };
  FiltersGroup *group = NULL, *shorter = NULL;
  filtersFinding_t f;
  char json[8000];
  FIRST(filtersGroupFromText(text, strlen(text), &group), "empty");
  FIRST(filtersGroupFromText(text, (size_t)(strstr(text, "entry 30") - text), &shorter), "empty");
  for (size_t i = 0; i < sizeof expected / sizeof *expected; ++i) {
    FiltersReport* report = filtersAnalyse(group, expected[i].order);
    EXPECT(filtersReportToJson(report, json, sizeof json) < sizeof json);
    EXPECT(strstr(json, expected[i].json) != NULL && strstr(json, "\"A5: ") != NULL);
    EXPECT(filtersReportGet(report, 0, &f) && strcmp(f.code, "value-unusual") == 0);
    const int32_t more = filtersReportGet(report, 1, &f);
    EXPECT(more == (expected[i].code != NULL));
    EXPECT(!more || (strcmp(f.code, expected[i].code) == 0 && f.entry == 20));
    EXPECT(!more || traced(group, f.witness, expected[i].order, "") != 20);
    deleteFiltersReport(report);

    report = filtersCompareTreatment(group, shorter, expected[i].order);
    EXPECT(filtersReportGet(report, 0, &f) && strcmp(f.code, "treatment-differs") == 0);
    EXPECT(f.has_entry && f.entry == 30);
    deleteFiltersReport(report);
    FIRST(filtersCompareTreatment(group, group, expected[i].order), "empty");
  }
  policies(group);
  FiltersReport* unusual = filtersUnusualValues(group);
  EXPECT(filtersReportCount(unusual) == 1 && filtersReportGet(unusual, 0, &f) && f.entry == 30);
  deleteFiltersReport(unusual);
  FIRST(filtersUnusualValues(shorter), "empty");
  FIRST(filtersUnusualValues(NULL), "null");
  FIRST(filtersAnalyse(group, -1), "null");
  FIRST(filtersAnalyse(group, 8), "null");
  FIRST(filtersAnalyse(group, 256), "null");
  FIRST(filtersCompareTreatment(group, shorter, 257), "null");
  FIRST(filtersAnalyse(NULL, 0), "null");
  FIRST(filtersCompareTreatment(group, shorter, 8), "null");
  FIRST(filtersCompareTreatment(group, NULL, 0), "null");
  FIRST(filtersCompareTreatment(NULL, group, 0), "null");

  EXPECT(traced(group, "ttl=3", FILTERS_ORDER_HIGHEST_PRIORITY, "hit: entry 10 (permit)\n") == 10);
  EXPECT(traced(group, "ttl=3", FILTERS_ORDER_UNSPECIFIED, "  20 undecided: ip_protocol") == -4);
  EXPECT(traced(group, "ttl=4 dst_l4_port=none", FILTERS_ORDER_ASCENDING_ID, "miss\n") == -2);
  EXPECT(traced(group, "ttl=4 ttl=5", FILTERS_ORDER_ASCENDING_ID, "[text-repeated]") == -5);
  EXPECT(traced(group, "ttl=3", 8, "") == -5 && traced(NULL, "ttl=3", 0, "") == -5);
  EXPECT(traced(group, NULL, 0, "") == -5);
  deleteFiltersGroup(shorter);
  deleteFiltersGroup(group);
}

// Entry 10 takes all packets of the set. Entry 20 follows, and devices may read its match in two
// ways.
static void ask(void) {
  const char text[] =
      "filter-groups 1\ngroup 5 priority=1 stage=ingress type=3\n"
      "entry 10 priority=2 if ttl=3 then permit\n"
      "entry 20 priority=1 if dst_l4_port=179/0x0 then deny\n";
  const int32_t order = FILTERS_ORDER_HIGHEST_PRIORITY;
  FiltersGroup* group = NULL;
  filtersFinding_t f;
  char set[100];
  bool valid = false;
  FIRST(filtersGroupFromText(text, strlen(text), &group), "empty");
  FiltersReport* report = filtersSearch(group, "ttl=3 src_ipv4=10.0.0.0/8", order, NULL);
  EXPECT(filtersReportCount(report) == 1 && filtersReportGet(report, 0, &f));
  EXPECT(strcmp(f.code, "packets-go") == 0 && f.entry == 10 && strcmp(f.after, "hit") == 0);
  EXPECT(traced(group, f.witness, order, "") == 10);
  deleteFiltersReport(report);
  report = filtersSearch(group, "ttl=4-5 dst_l4_port=80", order, "deny");
  EXPECT(filtersReportCount(report) == 1 && filtersReportGet(report, 0, &f));
  EXPECT(strcmp(f.code, "packets-may-go") == 0 && f.entry == 20);
  EXPECT(strstr(f.message, "its mask of 0 may mean that value alone") != NULL);
  deleteFiltersReport(report);
  report = filtersTouching(group, "", order, NULL);
  EXPECT(filtersReportCount(report) == 2 && filtersReportGet(report, 1, &f));
  EXPECT(strcmp(f.code, "packets-match") == 0 && f.entry == 20);
  deleteFiltersReport(report);
  FIRST(filtersTouching(group, "", order, "set_pcp"), "empty");
  report = filtersRemains(group, 20, "dst_l4_port=179 ttl={1,3}", order);
  EXPECT(filtersReportCount(report) == 2 && filtersReportGet(report, 1, &f));
  EXPECT(strcmp(f.code, "packets-left") == 0 && f.entry == 20);
  EXPECT(strstr(f.message, "dst_l4_port=179 ttl=1") != NULL);
  deleteFiltersReport(report);

  FIRST(filtersSearch(group, "ttl=3-1", order, NULL), "text-value 0 0 0");
  FIRST(filtersTouching(group, "ttl=1", order, "premit"), "text-value 0 0 0");
  FIRST(filtersRemains(group, 20, "ttl", order), "text-syntax 0 0 0");
  FIRST(filtersSearch(group, NULL, order, NULL), "null");
  FIRST(filtersSearch(group, "", 8, NULL), "null");
  FIRST(filtersTouching(NULL, "", order, NULL), "null");
  FIRST(filtersRemains(NULL, 20, "", order), "null");
  FIRST(filtersRemains(group, 21, "", order), "null");
  deleteFiltersGroup(group);

  EXPECT(filtersPacketSetToText("ttl={2,1} src_ipv4=10.1.1.1/8", &valid, set, sizeof set) == 27);
  EXPECT(valid && strcmp(set, "src_ipv4=10.0.0.0/8 ttl=1-2") == 0);
  EXPECT(filtersPacketSetToText("ttl={}", &valid, set, sizeof set) != 0 && !valid);
  EXPECT(filtersPacketSetToText(NULL, NULL, set, sizeof set) == 0 && *set == 0);
}

// Tests the name of a value, and the value of a name. For an unknown value or name, the result is
// empty.
#define NAMED(Family, Enum, value, name)                                \
  do {                                                                  \
    Enum code = 70;                                                     \
    EXPECT(filters##Family##Name(70) == NULL);                          \
    EXPECT(filters##Family##Name((value) + 256) == NULL);               \
    EXPECT(strcmp(filters##Family##Name(value), name) == 0);            \
    EXPECT(!filters##Family##FromName("no such", &code) && code == 70); \
    EXPECT(!filters##Family##FromName(NULL, &code) && code == 70);      \
    EXPECT(!filters##Family##FromName(name, NULL));                     \
    EXPECT(filters##Family##FromName(name, &code) && code == value);    \
  } while (0)

static void name(void) {
  NAMED(Err, filtersErr_t, FILTERS_ERR_NOT_FOUND, "not_found");
  NAMED(Stage, filtersGroupStage_t, FILTERS_GROUP_STAGE_EGRESS, "egress");
  NAMED(Type, filtersGroupType_t, FILTERS_GROUP_TYPE_11, "11");
  NAMED(Match, filtersMatch_t, FILTERS_MATCH_VRF_ID, "vrf_id");
  NAMED(Action, filtersAction_t, FILTERS_ACTION_PERMIT, "permit");
  NAMED(CounterType, counter_type_t, FILTERS_COUNTER_TYPE_PACKETS, "packets");
  EXPECT(strlen(filtersErrDescribe(FILTERS_OK)) > 0 && strlen(filtersErrDescribe(70)) > 0);
  EXPECT(strcmp(filtersErrDescribe(FILTERS_OK), filtersErrDescribe(70)) != 0);
}

static size_t packetOfBytes(const unsigned char* frame, char* out, size_t size) {
  return filtersPacketOf(frame, 20, 28, FILTERS_LINK_RAW, NULL, out, size);
}
FILLS(packetOfBytes, unsigned char)

static bool isCount(filtersFrameCount_t count, uint64_t frames, uint64_t first, int64_t time) {
  return count.frames == frames && count.first == first && count.first_time == time;
}

// Counts a frame with an IPv4 header of UDP. The ports of the frame are not captured.
static void countHits(void) {
  static const unsigned char frame[20] = {0x45, 0, 0, 28, 0, 0, 0, 0, 9, 17};
  const char text[] =
      "filter-groups 1\ngroup 5 priority=1 stage=ingress type=3\n"
      "entry 10 priority=2 if dst_l4_port=53/0xffff then permit\n"
      "entry 20 priority=1 if destination_cpu then deny\n";
  FiltersGroup* group = NULL;
  FIRST(filtersGroupFromText(text, strlen(text), &group), "empty");
  const int32_t order = FILTERS_ORDER_HIGHEST_PRIORITY;
  filtersFrameFault_t fault = FILTERS_FRAME_FAULT_NONE;
  char out[300];
  fillspacketOfBytes(frame, "src_ipv4=0.0.0.0 ");
  filtersPacketOf(frame, 20, 28, FILTERS_LINK_RAW, &fault, out, sizeof out);
  EXPECT(fault == FILTERS_FRAME_FAULT_CUT && strstr(out, " ip_protocol=17 ") != NULL);
  EXPECT(filtersPacketOf(frame, 20, 28, 5, &fault, out, sizeof out) == 0);
  EXPECT(filtersPacketOf(frame, 20, 28, -1, &fault, out, sizeof out) == 0 && out[0] == '\0');
  EXPECT(filtersPacketOf(NULL, 0, 0, FILTERS_LINK_RAW, &fault, out, sizeof out) == 0);
  EXPECT(fault == FILTERS_FRAME_FAULT_ENDS_EARLY);

  EXPECT(newFiltersHits(NULL, order, NULL) == NULL && newFiltersHits(group, 8, NULL) == NULL);
  EXPECT(newFiltersHits(group, order, "ttl=x") == NULL);
  FiltersHits* hits = newFiltersHits(group, order, NULL);
  deleteFiltersHits(hits);
  hits = newFiltersHits(group, order, "destination_cpu=true");
  EXPECT(filtersHitsCount(hits, frame, 20, 28, FILTERS_LINK_RAW, -7));
  EXPECT(filtersHitsCount(hits, NULL, 0, 0, FILTERS_LINK_ETHERNET, 5));
  EXPECT(!filtersHitsCount(hits, NULL, 1, 1, FILTERS_LINK_RAW, 0));
  EXPECT(!filtersHitsCount(hits, frame, 20, 28, 5, 0));
  EXPECT(!filtersHitsCount(NULL, frame, 20, 28, FILTERS_LINK_RAW, 0));
  filtersEntryHits_t entries[2] = {{0}};
  EXPECT(filtersHitsOfEntries(hits, entries, 1) == 2 && entries[1].entry == 0);
  EXPECT(filtersHitsOfEntries(hits, NULL, 9) == 2 && filtersHitsOfEntries(NULL, entries, 2) == 0);
  EXPECT(filtersHitsOfEntries(hits, entries, 2) == 2 && entries[0].entry == 10);
  EXPECT(isCount(entries[0].possible, 2, 1, -7) && isCount(entries[1].sure, 0, 0, 0));
  filtersAllHits_t all;
  EXPECT(filtersHitsOfAll(hits, &all) && all.frames == 2 && isCount(all.undecided, 2, 1, -7));
  EXPECT(isCount(all.decided, 0, 0, 0) && isCount(all.none_sure, 0, 0, 0));
  EXPECT(isCount(all.none_possible, 0, 0, 0));
  EXPECT(!filtersHitsOfAll(NULL, &all) && !filtersHitsOfAll(hits, NULL));
  filtersFrameCount_t count;
  EXPECT(filtersHitsOfFault(hits, FILTERS_FRAME_FAULT_ENDS_EARLY, &count));
  EXPECT(isCount(count, 1, 2, 5) && !filtersHitsOfFault(hits, 8, &count));
  EXPECT(!filtersHitsOfFault(hits, -1, &count) && !filtersHitsOfFault(NULL, 0, &count));
  deleteFiltersHits(hits);
  deleteFiltersHits(NULL);
  deleteFiltersGroup(group);
}

void callEveryFunctionOfInspect(void) {
  FiltersGroup *group = newFiltersGroup(500), *anotherGroup = newFiltersGroup(501);
  FiltersEntry *entry = newFiltersEntry(70000), *anotherEntry = newFiltersEntry(70000);
  void* vrf = newMatchVrfId(300);
  filtersGroupSetStage(group, FILTERS_GROUP_STAGE_INGRESS);
  EXPECT(filtersGroupSetType(group, FILTERS_GROUP_TYPE_3) == FILTERS_OK);
  EXPECT(filtersGroupInsertEntry(group, anotherEntry) == FILTERS_OK);
  EXPECT(filtersEntrySetMatch(entry, vrf) == FILTERS_OK);

  explain(group, entry);
  admit();
  decodeGroup(group, anotherGroup);
  decodeEntry(entry, anotherEntry);
  fillsfiltersGroupPrint(group, "=FiltersGroup=");
  fillsfiltersEntryPrint(entry, "  =FiltersEntry=");
  name();
  writeAndRead(group);
  fillsfiltersGroupToText(group, "filter-groups 1\n");
  fillsfiltersGroupToJson(group, "{\n");
  fillsfiltersGroupToCompactJson(group, "{\"format\":\"filter-groups\",");
  fillsfiltersEntryToText(entry, "entry 70000 ");
  deleteFiltersGroup(anotherGroup);
  anotherGroup = copyOf(group);
  EXPECT(filtersGroupRemoveEntry(anotherGroup, 70000) == FILTERS_OK);
  filtersGroupSetPriority(anotherGroup, 7);
  plan(group, anotherGroup);
  analyse();
  ask();
  countHits();

  deleteMatch(vrf);
  deleteFiltersEntry(anotherEntry);
  deleteFiltersEntry(entry);
  deleteFiltersGroup(anotherGroup);
  deleteFiltersGroup(group);
}
