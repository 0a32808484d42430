#ifndef FILTER_INSPECT_FILTER_INSPECT_C_H_
#define FILTER_INSPECT_FILTER_INSPECT_C_H_

// The inspection library for procedural code, in C11 and C++: why something would be refused, what
// bytes lose, what two groups differ in, what rules do to each other and to packets, text and JSON,
// names, and what the procedural side of filter_common lacks (bytes, comparison and print).
// Functions forward to the classes and functions of the other headers, whose descriptions hold;
// here stands what is special to this side.
//
// Handles. A FiltersReport* is the caller's until deleteFiltersReport(); the texts and arrays of
// its findings live as long. Groups and entries that come out of bytes are the caller's as if made
// by newFiltersGroup() and newFiltersEntry(). Objects passed in are read, and stay as they are.
// Failures. No function stops the process or throws, whatever it is given. A null object, a stage,
// type or match that does not exist, and memory that runs out give a null report, 0 or false. An
// empty report is something else: it says that there is nothing to say.
// Texts and arrays. Functions that fill a caller's buffer do so as snprintf() does: they write what
// fits, a text always with its zero, and return how long the whole is, the zero not counted. A null
// buffer counts as one of size 0, by which the length is asked for. No locale changes a text.
// Threads. Any number may read one report, group or entry at a time; deleting it, or changing it,
// needs it alone.
//
// This interface is only added to within one major version, and a finding keeps its layout.

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
struct FiltersReport;
extern "C" {
#else
typedef struct FiltersReport FiltersReport;
#endif

// --- Reports -------------------------------------------------------------------------------------

// Error: refused, or unreadable. Warning: something is lost. Note: worth knowing.
typedef enum filtersSeverity_t {
  FILTERS_SEVERITY_NOTE = 0,
  FILTERS_SEVERITY_WARNING = 1,
  FILTERS_SEVERITY_ERROR = 2,
} filtersSeverity_t;

// What a finding is about.
typedef enum filtersSubject_t {
  FILTERS_SUBJECT_GROUP = 0,
  FILTERS_SUBJECT_ENTRY = 1,
  FILTERS_SUBJECT_MATCH = 2,
  FILTERS_SUBJECT_ACTION = 3,
  FILTERS_SUBJECT_POLICER = 4,
  FILTERS_SUBJECT_PARENT = 5,
  FILTERS_SUBJECT_COUNTER = 6,
} filtersSubject_t;

// Finding of filter_report.h. No text is null; what a finding does not say is "", 0 or false.
typedef struct filtersFinding_t {
  const char* code;  // "match-not-admitted": one of findings.def, and stable
  filtersSeverity_t severity;
  filtersErr_t result;  // what the library returns for it; FILTERS_OK where it returns nothing
  filtersSubject_t subject;
  bool has_group;
  filtersGroupId_t group;
  bool has_entry;
  filtersEntryId_t entry;
  uint32_t offender;         // code of the match or action, id of the counter, what is refused
  const uint32_t* admitted;  // the codes that would have been admitted instead, ascending
  size_t admitted_count;
  const uint32_t* others;  // ids of other entries, codes of other matches or actions
  size_t others_count;
  const char* path;  // "entries_[3].matches_[1].vlan_id_[2]", of bytes alone
  bool has_bytes;
  size_t offset;  // of the bytes, counted from the first that were read
  size_t length;
  const char* before;  // values as text: what came, what is kept
  const char* after;
  const char* witness;  // a packet that shows it
  const char* message;  // one English sentence, which may be reworded
} filtersFinding_t;

FILTERS_API size_t filtersReportCount(const FiltersReport* r);
// Fills *out and returns 1, or returns 0 beyond the last and leaves *out as it is.
FILTERS_API int32_t filtersReportGet(const FiltersReport* r, size_t index, filtersFinding_t* out);
// How many findings there were beyond the limit of those that a report keeps.
FILTERS_API size_t filtersReportLeftOut(const FiltersReport* r);
// How many of them have one severity: the most severe are kept.
FILTERS_API size_t filtersReportLeftOutOf(const FiltersReport* r, filtersSeverity_t severity);
// The highest severity of all, kept or left out; that of notes when there are none.
FILTERS_API filtersSeverity_t filtersReportWorst(const FiltersReport* r);
// One line a finding; the form of docs/schema/filter-report-1.schema.json.
FILTERS_API size_t filtersReportToText(const FiltersReport* r, char* out, size_t size);
FILTERS_API size_t filtersReportToJson(const FiltersReport* r, char* out, size_t size);
FILTERS_API void deleteFiltersReport(FiltersReport* r);  // null: nothing to do

// --- Refusals ------------------------------------------------------------------------------------

// Of filtersGroupInsertEntry(), also into a group of this stage and type; filtersGroupSetStage(),
// filtersGroupSetType(); and filtersEntrySetMatch() of one more match of this code. A report is
// empty exactly when that would succeed, and its first finding has the very result: of
// filtersGroupSetStage(), which returns none, that of the class's setStage(). Of a group that was
// read from bytes the stage and type may be any.
FILTERS_API FiltersReport* filtersExplainInsert(const FiltersGroup* g, const FiltersEntry* e);
FILTERS_API FiltersReport* filtersExplainInsertInto(filtersGroupStage_t s, filtersGroupType_t t,
                                                    const FiltersEntry* e);
FILTERS_API FiltersReport* filtersExplainStage(const FiltersGroup* g, filtersGroupStage_t s);
FILTERS_API FiltersReport* filtersExplainType(const FiltersGroup* g, filtersGroupType_t t);
// The classes' setMatch(): codes that filtersEntrySetMatch() does not take are explained as every
// other.
FILTERS_API FiltersReport* filtersExplainMatch(const FiltersEntry* e, filtersMatch_t m);

// What a group of this type, or stage, admits: ascending, at most count codes; returned is how many
// there are. None of an unknown one.
FILTERS_API size_t filtersAdmittedMatches(filtersGroupType_t t, filtersMatch_t* out, size_t count);
FILTERS_API size_t filtersAdmittedActions(filtersGroupStage_t s, filtersAction_t* out,
                                          size_t count);
FILTERS_API size_t filtersAdmittedTypes(filtersGroupStage_t s, filtersGroupType_t* out,
                                        size_t count);

// --- Bytes, comparison, print --------------------------------------------------------------------

// What serialize() of the classes gives: the same bytes on every machine. Unlike a text they are
// written only when all fit; returned is how many there are, never 0 of an object, or 0 when there
// is none or it cannot be written.
FILTERS_API size_t filtersGroupToBytes(const FiltersGroup* g, void* out, size_t size);
FILTERS_API size_t filtersEntryToBytes(const FiltersEntry* e, void* out, size_t size);

// Reads bytes as the classes' constructors do, and says what those drop silently (decodeGroup() and
// decodeEntry(), with their limits). The object goes to *group or *entry, to be deleted by the
// caller, or null when there is none: the report then says why, or is null itself. Whoever wants
// the report alone passes a null pointer to the object. No bytes may be null, and are read.
FILTERS_API FiltersReport* filtersDecodeGroup(const void* bytes, size_t size, FiltersGroup** group);
FILTERS_API FiltersReport* filtersDecodeEntry(const void* bytes, size_t size, FiltersEntry** entry);

// operator== of the classes: a null object equals none.
FILTERS_API bool filtersGroupsEqual(const FiltersGroup* a, const FiltersGroup* b);
FILTERS_API bool filtersEntriesEqual(const FiltersEntry* a, const FiltersEntry* b);

// operator<< of the classes: docs/print-layout.md.
FILTERS_API size_t filtersGroupPrint(const FiltersGroup* g, char* out, size_t size);
FILTERS_API size_t filtersEntryPrint(const FiltersEntry* e, char* out, size_t size);

// --- Text and JSON -------------------------------------------------------------------------------

// toText() and toJson() of filter_text.h, of one group; the line of one entry.
FILTERS_API size_t filtersGroupToText(const FiltersGroup* g, char* out, size_t size);
FILTERS_API size_t filtersGroupToJson(const FiltersGroup* g, char* out, size_t size);
FILTERS_API size_t filtersEntryToText(const FiltersEntry* e, char* out, size_t size);

// The way back, for text that holds one group: it goes to *group as in filtersDecodeGroup() when
// the report is empty. Text of several groups is refused.
FILTERS_API FiltersReport* filtersGroupFromText(const char* text, size_t size,
                                                FiltersGroup** group);
FILTERS_API FiltersReport* filtersGroupFromJson(const char* json, size_t size,
                                                FiltersGroup** group);

// --- Diff and plan -------------------------------------------------------------------------------

// diff() of filter_diff.h: empty exactly when the groups are equal.
FILTERS_API FiltersReport* filtersDiff(const FiltersGroup* a, const FiltersGroup* b);

// One call on a group: filtersGroupRemoveEntry(), filtersGroupInsertEntry() of the target's entry
// of this id, or a setter with its new value.
typedef enum filtersStepKind_t {
  FILTERS_STEP_REMOVE = 0,
  FILTERS_STEP_INSERT = 1,
  FILTERS_STEP_SET_PRIORITY = 2,
  FILTERS_STEP_SET_STAGE = 3,
  FILTERS_STEP_SET_TYPE = 4,
} filtersStepKind_t;
typedef struct filtersStep_t {
  int32_t kind;  // one of filtersStepKind_t: any other number is refused
  filtersEntryId_t entry;
  int32_t value;
} filtersStep_t;

typedef enum filtersPlanOrder_t {
  FILTERS_PLAN_ADD_FIRST = 0,     // no packet is without a rule meanwhile
  FILTERS_PLAN_REMOVE_FIRST = 1,  // never more entries than the larger of the two
} filtersPlanOrder_t;

// The fewest steps from one group to the other: at most count of them are written, and *steps is
// how many there are. The report is empty when there is a plan, and says why there is none; it is
// null where the order is none of filtersPlanOrder_t.
FILTERS_API FiltersReport* filtersPlan(const FiltersGroup* from, const FiltersGroup* to,
                                       int32_t order, filtersStep_t* out, size_t count,
                                       size_t* steps);
// Takes the steps; stops at the first refusal and returns it. FILTERS_ERR_INVALID_ARGUMENT also for
// a kind of step that there is not, and for a null object. Without memory a step may be left
// undone: FILTERS_ERR_INVALID.
FILTERS_NODISCARD FILTERS_API filtersErr_t filtersApply(const filtersStep_t* steps, size_t count,
                                                        const FiltersGroup* to, FiltersGroup* g);
// "set-stage ingress", "remove entry 7", "insert entry 10 ..."
FILTERS_API size_t filtersStepToText(const filtersStep_t* step, const FiltersGroup* to, char* out,
                                     size_t size);

// --- Analysis ------------------------------------------------------------------------------------

// Order of filter_analysis.h, which also says what reports rest on. Any other number gives a null
// report, and no trace. Where these reports become JSON, they say their order and assumptions.
typedef enum filtersOrder_t {
  FILTERS_ORDER_UNSPECIFIED = 0,  // only what holds in every order
  FILTERS_ORDER_HIGHEST_PRIORITY = 1,
  FILTERS_ORDER_LOWEST_PRIORITY = 2,
  FILTERS_ORDER_ASCENDING_ID = 3,
  // By priority, and where that is equal by id.
  FILTERS_ORDER_HIGHEST_PRIORITY_ASCENDING_ID = 4,
  FILTERS_ORDER_HIGHEST_PRIORITY_DESCENDING_ID = 5,
  FILTERS_ORDER_LOWEST_PRIORITY_ASCENDING_ID = 6,
  FILTERS_ORDER_LOWEST_PRIORITY_DESCENDING_ID = 7,
} filtersOrder_t;

// analyse() and compareTreatment() with the options that they have by themselves; unusualValues().
FILTERS_API FiltersReport* filtersAnalyse(const FiltersGroup* g, int32_t order);
FILTERS_API FiltersReport* filtersCompareTreatment(const FiltersGroup* a, const FiltersGroup* b,
                                                   int32_t order);
FILTERS_API FiltersReport* filtersUnusualValues(const FiltersGroup* g);

typedef enum filtersOutcome_t {
  FILTERS_OUTCOME_MISS = 0,       // no entry takes the packet
  FILTERS_OUTCOME_HIT = 1,        // one does
  FILTERS_OUTCOME_UNDECIDED = 2,  // it depends on what is not told, on a reading, or on a tie
  FILTERS_OUTCOME_NONE = 3,       // there is no trace
} filtersOutcome_t;

// trace() of a packet as text, "src_ipv4=192.0.2.7 ip_protocol=6": the outcome, then a line for
// each entry. *outcome and *entry may be null; *entry is the one that takes the packet, and stays
// as it is where it is not known that one does. Where the packet cannot be read, the outcome is
// FILTERS_OUTCOME_NONE and the text says why; it is empty where an object is null, or there is no
// memory.
FILTERS_API size_t filtersTrace(const FiltersGroup* g, const char* packet, int32_t order,
                                filtersOutcome_t* outcome, filtersEntryId_t* entry, char* out,
                                size_t size);

// --- Names ---------------------------------------------------------------------------------------

// Null for a value without a name. They live as long as the library is loaded.
FILTERS_API const char* filtersErrName(filtersErr_t v);
FILTERS_API const char* filtersStageName(filtersGroupStage_t v);
FILTERS_API const char* filtersTypeName(filtersGroupType_t v);
FILTERS_API const char* filtersMatchName(filtersMatch_t v);
FILTERS_API const char* filtersActionName(filtersAction_t v);
FILTERS_API const char* filtersCounterTypeName(counter_type_t v);

// The way back: false for a name that is none, and *out stays as it is.
FILTERS_API bool filtersErrFromName(const char* name, filtersErr_t* out);
FILTERS_API bool filtersStageFromName(const char* name, filtersGroupStage_t* out);
FILTERS_API bool filtersTypeFromName(const char* name, filtersGroupType_t* out);
FILTERS_API bool filtersMatchFromName(const char* name, filtersMatch_t* out);
FILTERS_API bool filtersActionFromName(const char* name, filtersAction_t* out);
FILTERS_API bool filtersCounterTypeFromName(const char* name, counter_type_t* out);

// One sentence: what a result means and what to look at. Never null.
FILTERS_API const char* filtersErrDescribe(filtersErr_t v);

#ifdef __cplusplus
}  // extern "C"
}  // namespace FiltersInspect
#endif

#endif  // FILTER_INSPECT_FILTER_INSPECT_C_H_
