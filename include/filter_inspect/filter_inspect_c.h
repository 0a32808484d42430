#ifndef FILTER_INSPECT_FILTER_INSPECT_C_H_
#define FILTER_INSPECT_FILTER_INSPECT_C_H_

// The inspection library for C11 and for procedural C++. The functions call those of the other
// headers and do what is described there. This header also adds functions that the C interface of
// filter_common does not have: for bytes, comparison and printing.
//
// Handles. The caller owns a FiltersReport* and frees it by deleteFiltersReport(); the texts and
// arrays of its findings live until then. The caller also owns groups and entries that are made
// from bytes, as if made by newFiltersGroup() and newFiltersEntry(). Objects passed in are not
// changed.
//
// Failures. No function stops the process or throws, for any arguments. A function returns a null
// report, 0 or false for a null object, for an unknown stage, type or match, and if memory runs
// out. A null report is not an empty report: an empty report means that nothing was found.
//
// Texts and arrays. Functions fill a caller's buffer as snprintf() does: they write as much as
// fits, end a text with a zero byte, and return the length of the whole text without the zero byte.
// A null buffer counts as a buffer of size 0. Pass a null buffer to get only the length. Texts do
// not depend on the locale.
//
// Threads. Any number of threads may read a report, group or entry at a time. A thread that changes
// or deletes an object must be the only one that uses it.
//
// Within one major version, functions are only added, and the layout of a finding stays.

#include <stddef.h>

#include <filter_common/filter_entries_c.h>
#include <filter_common/filter_groups_c.h>

#ifdef __cplusplus
namespace FiltersInspect {
using FiltersCommon::counter_type_t;
using FiltersCommon::filtersAction_t;
using FiltersCommon::FiltersEntry;
using FiltersCommon::filtersEntryId_t;
using FiltersCommon::filtersErr_t;
using FiltersCommon::FiltersGroup;
using FiltersCommon::filtersGroupId_t;
using FiltersCommon::filtersGroupStage_t;
using FiltersCommon::filtersGroupType_t;
using FiltersCommon::filtersMatch_t;
struct FiltersHits;
struct FiltersReport;
extern "C" {
#else
typedef struct FiltersHits FiltersHits;
typedef struct FiltersReport FiltersReport;
#endif

// --- Reports -------------------------------------------------------------------------------------

// An error means that something is refused or unreadable. A warning means that something is lost. A
// note is worth knowing.
typedef enum filtersSeverity_t {
  FILTERS_SEVERITY_NOTE = 0,
  FILTERS_SEVERITY_WARNING = 1,
  FILTERS_SEVERITY_ERROR = 2,
} filtersSeverity_t;

// The kinds of object that a finding can be about.
typedef enum filtersSubject_t {
  FILTERS_SUBJECT_GROUP = 0,
  FILTERS_SUBJECT_ENTRY = 1,
  FILTERS_SUBJECT_MATCH = 2,
  FILTERS_SUBJECT_ACTION = 3,
  FILTERS_SUBJECT_POLICER = 4,
  FILTERS_SUBJECT_PARENT = 5,
  FILTERS_SUBJECT_COUNTER = 6,
} filtersSubject_t;

// Like Finding of filter_report.h. No text is null; fields that a finding does not use are "", 0 or
// false.
typedef struct filtersFinding_t {
  const char* code;  // "match-not-admitted": one of findings.def, and stable
  filtersSeverity_t severity;
  filtersErr_t result;  // the code that the library returns; FILTERS_OK if none
  filtersSubject_t subject;
  bool has_group;
  filtersGroupId_t group;
  bool has_entry;
  filtersEntryId_t entry;
  uint32_t offender;         // code of the match or action, id of the counter
  const uint32_t* admitted;  // the codes that would have been admitted instead, ascending
  size_t admitted_count;
  const uint32_t* others;  // ids of other entries, codes of other matches or actions
  size_t others_count;
  const char* path;  // "entries_[3].matches_[1].vlan_id_[2]", for bytes only
  bool has_bytes;
  size_t offset;  // counted from the first byte that was read
  size_t length;
  const char* before;  // values as text: the received one, and the one that is kept
  const char* after;
  const char* witness;  // a packet that shows what the finding says
  const char* message;  // one English sentence, which may be reworded
} filtersFinding_t;

FILTERS_API size_t filtersReportCount(const FiltersReport* r);
// Fills *out and returns 1. If there is no finding with this index, returns 0 and leaves *out as it
// is.
FILTERS_API int32_t filtersReportGet(const FiltersReport* r, size_t index, filtersFinding_t* out);
// The number of findings beyond the limit of a report.
FILTERS_API size_t filtersReportLeftOut(const FiltersReport* r);
// The number of findings with this severity beyond the limit of a report, which keeps the most
// severe findings.
FILTERS_API size_t filtersReportLeftOutOf(const FiltersReport* r, filtersSeverity_t severity);
// The highest severity of all findings, kept or left out; the severity of a note if there is no
// finding.
FILTERS_API filtersSeverity_t filtersReportWorst(const FiltersReport* r);
// Text has a line for each finding; JSON follows docs/schema/filter-report-1.schema.json.
FILTERS_API size_t filtersReportToText(const FiltersReport* r, char* out, size_t size);
FILTERS_API size_t filtersReportToJson(const FiltersReport* r, char* out, size_t size);
FILTERS_API void deleteFiltersReport(FiltersReport* r);  // null: nothing to do

// --- Refusals ------------------------------------------------------------------------------------

// Would filtersGroupInsertEntry(), filtersGroupSetStage() or filtersGroupSetType() refuse this? The
// report is empty exactly when the call would succeed, and its first finding has the result that
// the call would return. filtersGroupSetStage() returns nothing, so its report has the result of
// setStage() of the class. A group that was read from bytes may have any stage and type.
FILTERS_API FiltersReport* filtersExplainInsert(const FiltersGroup* g, const FiltersEntry* e);
FILTERS_API FiltersReport* filtersExplainInsertInto(filtersGroupStage_t s, filtersGroupType_t t,
                                                    const FiltersEntry* e);
FILTERS_API FiltersReport* filtersExplainStage(const FiltersGroup* g, filtersGroupStage_t s);
FILTERS_API FiltersReport* filtersExplainType(const FiltersGroup* g, filtersGroupType_t t);
// Would setMatch() of the class refuse a match of this code? This is about the C++ class:
// filtersEntrySetMatch() itself refuses some further codes.
FILTERS_API FiltersReport* filtersExplainMatch(const FiltersEntry* e, filtersMatch_t m);

// The codes that a type or a stage admits, in ascending order. The functions write at most `count`
// codes, and return the number of all codes. An unknown type or stage admits no code.
FILTERS_API size_t filtersAdmittedMatches(filtersGroupType_t t, filtersMatch_t* out, size_t count);
FILTERS_API size_t filtersAdmittedActions(filtersGroupStage_t s, filtersAction_t* out,
                                          size_t count);
FILTERS_API size_t filtersAdmittedTypes(filtersGroupStage_t s, filtersGroupType_t* out,
                                        size_t count);

// --- Bytes, comparison, print --------------------------------------------------------------------

// Writes the bytes that serialize() of the class writes. They are the same on every machine. Unlike
// a text, bytes are written only if all of them fit. The number of bytes is returned; 0 means that
// the object is null or cannot be written.
FILTERS_API size_t filtersGroupToBytes(const FiltersGroup* g, void* out, size_t size);
FILTERS_API size_t filtersEntryToBytes(const FiltersEntry* e, void* out, size_t size);

// These functions call decodeGroup() and decodeEntry() with their default limits. They read bytes
// as the constructors of the classes do, and report what the constructors lose silently. *group or
// *entry gets the object, which the caller deletes, or null if it cannot be made. The report says
// why. If memory runs out, the report is null too. Pass a null `group` or `entry` for the report
// alone. `bytes` may be null if `size` is 0.
FILTERS_API FiltersReport* filtersDecodeGroup(const void* bytes, size_t size, FiltersGroup** group);
FILTERS_API FiltersReport* filtersDecodeEntry(const void* bytes, size_t size, FiltersEntry** entry);

// These functions call operator== of the classes. They return false for a null pointer.
FILTERS_API bool filtersGroupsEqual(const FiltersGroup* a, const FiltersGroup* b);
FILTERS_API bool filtersEntriesEqual(const FiltersEntry* a, const FiltersEntry* b);

// Writes what operator<< of the class prints; docs/print-layout.md describes it.
FILTERS_API size_t filtersGroupPrint(const FiltersGroup* g, char* out, size_t size);
FILTERS_API size_t filtersEntryPrint(const FiltersEntry* e, char* out, size_t size);

// --- Text and JSON -------------------------------------------------------------------------------

// These functions call toText() and toJson() of filter_text.h for one group, or toText() for one
// entry. Compact JSON is one line without blanks.
FILTERS_API size_t filtersGroupToText(const FiltersGroup* g, char* out, size_t size);
FILTERS_API size_t filtersGroupToJson(const FiltersGroup* g, char* out, size_t size);
FILTERS_API size_t filtersGroupToCompactJson(const FiltersGroup* g, char* out, size_t size);
FILTERS_API size_t filtersEntryToText(const FiltersEntry* e, char* out, size_t size);

// Reads text or JSON that holds one group. If the report is empty, *group gets the group, as in
// filtersDecodeGroup(). Several groups are refused.
FILTERS_API FiltersReport* filtersGroupFromText(const char* text, size_t size,
                                                FiltersGroup** group);
FILTERS_API FiltersReport* filtersGroupFromJson(const char* json, size_t size,
                                                FiltersGroup** group);

// --- Diff and plan -------------------------------------------------------------------------------

// Like diff() of filter_diff.h. The report is empty exactly when the groups are equal.
FILTERS_API FiltersReport* filtersDiff(const FiltersGroup* a, const FiltersGroup* b);

// One call on a group: filtersGroupRemoveEntry(), filtersGroupInsertEntry() with the target's entry
// of this id, or a setter with its new value.
typedef enum filtersStepKind_t {
  FILTERS_STEP_REMOVE = 0,
  FILTERS_STEP_INSERT = 1,
  FILTERS_STEP_SET_PRIORITY = 2,
  FILTERS_STEP_SET_STAGE = 3,
  FILTERS_STEP_SET_TYPE = 4,
} filtersStepKind_t;
typedef struct filtersStep_t {
  int32_t kind;  // one of filtersStepKind_t; any other number is refused
  filtersEntryId_t entry;
  int32_t value;
} filtersStep_t;

typedef enum filtersPlanOrder_t {
  FILTERS_PLAN_ADD_FIRST = 0,     // no packet is without a rule meanwhile
  FILTERS_PLAN_REMOVE_FIRST = 1,  // never more entries than the larger of the two
} filtersPlanOrder_t;

// The fewest steps from one group to the other. At most `count` steps are written, and *steps gets
// the number of all steps. The report is empty if there is a plan; otherwise it says why there is
// none. The report is null if the order is not a value of filtersPlanOrder_t.
FILTERS_API FiltersReport* filtersPlan(const FiltersGroup* from, const FiltersGroup* to,
                                       int32_t order, filtersStep_t* out, size_t count,
                                       size_t* steps);
// Takes the steps. Stops at the first refusal and returns its code. Returns
// FILTERS_ERR_INVALID_ARGUMENT for an unknown kind of step and for a null object. Returns
// FILTERS_ERR_INVALID if memory runs out; it is then not certain that the step was done.
FILTERS_NODISCARD FILTERS_API filtersErr_t filtersApply(const filtersStep_t* steps, size_t count,
                                                        const FiltersGroup* to, FiltersGroup* g);
// "set-stage ingress", "remove entry 7", "insert entry 10 ..."
FILTERS_API size_t filtersStepToText(const filtersStep_t* step, const FiltersGroup* to, char* out,
                                     size_t size);

// --- Analysis ------------------------------------------------------------------------------------

// The values of Order in filter_analysis.h. For any other number, functions return a null report or
// an empty trace. The JSON of these reports has the order and the assumptions.
typedef enum filtersOrder_t {
  FILTERS_ORDER_UNSPECIFIED = 0,  // only what holds in every order
  FILTERS_ORDER_HIGHEST_PRIORITY = 1,
  FILTERS_ORDER_LOWEST_PRIORITY = 2,
  FILTERS_ORDER_ASCENDING_ID = 3,
  // By priority, and by id if priorities are equal.
  FILTERS_ORDER_HIGHEST_PRIORITY_ASCENDING_ID = 4,
  FILTERS_ORDER_HIGHEST_PRIORITY_DESCENDING_ID = 5,
  FILTERS_ORDER_LOWEST_PRIORITY_ASCENDING_ID = 6,
  FILTERS_ORDER_LOWEST_PRIORITY_DESCENDING_ID = 7,
} filtersOrder_t;

// These functions call analyse(), compareTreatment() and unusualValues() with their default
// options.
FILTERS_API FiltersReport* filtersAnalyse(const FiltersGroup* g, int32_t order);
FILTERS_API FiltersReport* filtersCompareTreatment(const FiltersGroup* a, const FiltersGroup* b,
                                                   int32_t order);
FILTERS_API FiltersReport* filtersUnusualValues(const FiltersGroup* g);

// Calls checkPolicy() of filter_policy.h with its default options, for a policy as text. Each
// promise about the group gives one finding: "policy-holds", "policy-fails" or "policy-open". If
// the text cannot be read, the report has its faults instead, which are errors.
FILTERS_API FiltersReport* filtersCheckPolicy(const FiltersGroup* g, const char* policy,
                                              size_t size);
// Calls analyse() with its default options and with the order that the policy has for the group,
// and then acceptFindings(). *accepted, which may be null, gets the number of findings that are
// accepted. If the text cannot be read, the report has its faults instead.
FILTERS_API FiltersReport* filtersAnalyseAccepting(const FiltersGroup* g, const char* policy,
                                                   size_t size, size_t* accepted);

typedef enum filtersOutcome_t {
  FILTERS_OUTCOME_MISS = 0,       // no entry takes the packet
  FILTERS_OUTCOME_HIT = 1,        // an entry takes it
  FILTERS_OUTCOME_UNDECIDED = 2,  // it depends on an unknown field, a reading or a tie
  FILTERS_OUTCOME_NONE = 3,       // there is no trace
} filtersOutcome_t;

// Calls trace() for a packet as text, for example "src_ipv4=192.0.2.7 ip_protocol=6". Writes the
// outcome, and then a line for each entry. `outcome` and `entry` may be null. If it is certain
// which entry takes the packet, *entry gets the id of this entry; otherwise *entry does not change.
// If the packet cannot be read, the outcome is FILTERS_OUTCOME_NONE and the text says why. The text
// is empty if an object is null or memory runs out.
FILTERS_API size_t filtersTrace(const FiltersGroup* g, const char* packet, int32_t order,
                                filtersOutcome_t* outcome, filtersEntryId_t* entry, char* out,
                                size_t size);

// These functions call search(), touching() and remains() of filter_questions.h with their default
// options. searchReport(), touchingReport() and remainsReport() describe the findings. `packets` is
// a packet set as text, for example "src_ipv4=10.0.0.0/8 dst_l4_port=1024-65535". The empty text
// means every packet. `then` may be null, or a list of actions, for example "permit set_pcp=5":
// only entries with all of these actions are then reported. If a text cannot be read, the report
// has only its faults, which are errors. A group without the entry gives a null report.
FILTERS_API FiltersReport* filtersSearch(const FiltersGroup* g, const char* packets, int32_t order,
                                         const char* then);
FILTERS_API FiltersReport* filtersTouching(const FiltersGroup* g, const char* packets,
                                           int32_t order, const char* then);
FILTERS_API FiltersReport* filtersRemains(const FiltersGroup* g, filtersEntryId_t entry,
                                          const char* packets, int32_t order);
// Reads a packet set as text, and writes the text of PacketSet::toText() for it. If the packet set
// cannot be read, the text says why and `valid`, which may be null, gets false.
FILTERS_API size_t filtersPacketSetToText(const char* packets, bool* valid, char* out, size_t size);
// --- Traffic -------------------------------------------------------------------------------------

// The values of Link in filter_traffic.h. Functions refuse every other number.
typedef enum filtersLink_t {
  FILTERS_LINK_ETHERNET = 0,
  FILTERS_LINK_RAW = 1,
  FILTERS_LINK_LINUX_COOKED = 2,
  FILTERS_LINK_LINUX_COOKED2 = 3,
  FILTERS_LINK_LOOPBACK = 4,
} filtersLink_t;

// The values of FrameFault in filter_traffic.h, which explains them.
typedef enum filtersFrameFault_t {
  FILTERS_FRAME_FAULT_NONE = 0,
  FILTERS_FRAME_FAULT_CUT = 1,
  FILTERS_FRAME_FAULT_ENDS_EARLY = 2,
  FILTERS_FRAME_FAULT_WRONG_LENGTH = 3,
  FILTERS_FRAME_FAULT_WRONG_VERSION = 4,
  FILTERS_FRAME_FAULT_UNKNOWN_LINK = 5,
  FILTERS_FRAME_FAULT_ENCAPSULATED = 6,
  FILTERS_FRAME_FAULT_LATER_FRAGMENT = 7,
} filtersFrameFault_t;

// Like packetOf(): writes the packet fields that a frame shows, as text that filtersTrace() reads.
// The text may be empty. *fault, which may be null, gets the reason why fields are missing. In
// three cases the text is empty and *fault does not change: the link is unknown; `frame` is null
// although `captured` is not 0; memory runs out.
FILTERS_API size_t filtersPacketOf(const void* frame, size_t captured, size_t length, int32_t link,
                                   filtersFrameFault_t* fault, char* out, size_t size);

// Like HitCounter. `assumed` is a packet as text, or null. The handle is null if the group is null,
// the order is unknown, the packet cannot be read, or memory runs out. The caller frees it by
// deleteFiltersHits(). Only one thread at a time may use it.
FILTERS_API FiltersHits* newFiltersHits(const FiltersGroup* g, int32_t order, const char* assumed);
// Counts a frame. Returns false and counts nothing if `h` is null, or in the cases in which
// filtersPacketOf() does not change *fault. `time` can have any unit.
FILTERS_API bool filtersHitsCount(FiltersHits* h, const void* frame, size_t captured, size_t length,
                                  int32_t link, int64_t time);

// A count of frames with the same outcome, entry or fault. `first` and `first_time` are the number
// (counted from 1) and the time of the first such frame.
typedef struct filtersFrameCount_t {
  uint64_t frames;
  uint64_t first;
  int64_t first_time;
} filtersFrameCount_t;
typedef struct filtersEntryHits_t {
  filtersEntryId_t entry;
  filtersFrameCount_t sure;
  filtersFrameCount_t possible;
} filtersEntryHits_t;
typedef struct filtersAllHits_t {
  uint64_t frames;
  filtersFrameCount_t decided;
  filtersFrameCount_t undecided;
  filtersFrameCount_t none_sure;  // frames that no entry takes
  filtersFrameCount_t none_possible;
} filtersAllHits_t;
// Writes at most `count` rows, in the order of the rules, and returns the number of all rows.
FILTERS_API size_t filtersHitsOfEntries(const FiltersHits* h, filtersEntryHits_t* out,
                                        size_t count);
// These functions fill *out and return true. If an object is null or the fault is unknown, they
// return false and leave *out as it is.
FILTERS_API bool filtersHitsOfAll(const FiltersHits* h, filtersAllHits_t* out);
FILTERS_API bool filtersHitsOfFault(const FiltersHits* h, int32_t fault, filtersFrameCount_t* out);
FILTERS_API void deleteFiltersHits(FiltersHits* h);  // null: nothing to do

// --- Names ---------------------------------------------------------------------------------------

// The name of a value, or null if it has none. Names live as long as the library is loaded.
FILTERS_API const char* filtersErrName(filtersErr_t v);
FILTERS_API const char* filtersStageName(filtersGroupStage_t v);
FILTERS_API const char* filtersTypeName(filtersGroupType_t v);
FILTERS_API const char* filtersMatchName(filtersMatch_t v);
FILTERS_API const char* filtersActionName(filtersAction_t v);
FILTERS_API const char* filtersCounterTypeName(counter_type_t v);

// The value of a name. Returns false for an unknown name, and leaves *out unchanged.
FILTERS_API bool filtersErrFromName(const char* name, filtersErr_t* out);
FILTERS_API bool filtersStageFromName(const char* name, filtersGroupStage_t* out);
FILTERS_API bool filtersTypeFromName(const char* name, filtersGroupType_t* out);
FILTERS_API bool filtersMatchFromName(const char* name, filtersMatch_t* out);
FILTERS_API bool filtersActionFromName(const char* name, filtersAction_t* out);
FILTERS_API bool filtersCounterTypeFromName(const char* name, counter_type_t* out);

// A sentence that says what a result means and what to check. Never null.
FILTERS_API const char* filtersErrDescribe(filtersErr_t v);

#ifdef __cplusplus
}  // extern "C"
}  // namespace FiltersInspect
#endif

#endif  // FILTER_INSPECT_FILTER_INSPECT_C_H_
