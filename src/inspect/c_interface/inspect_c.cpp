#include <filter_inspect/filter_inspect_c.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <locale>
#include <memory>
#include <ostream>
#include <streambuf>
#include <string>
#include <utility>

#include <filter_inspect/filter_analysis.h>
#include <filter_inspect/filter_decode.h>
#include <filter_inspect/filter_diff.h>
#include <filter_inspect/filter_explain.h>
#include <filter_inspect/filter_names.h>
#include <filter_inspect/filter_policy.h>
#include <filter_inspect/filter_questions.h>
#include <filter_inspect/filter_text.h>
#include <filter_inspect/filter_traffic.h>

namespace FiltersInspect {

struct FiltersReport {
  Report report;
  std::optional<Order> order;            // of an analysis
  std::string_view command = "analyse";  // the question that the analysis answers
};

struct FiltersHits {
  HitCounter counter;
};

namespace {

// Returns the result of `work`, or an empty result if memory runs out.
template <class Work>
auto guarded(Work work) noexcept -> decltype(work()) {
  try {
    return work();
  } catch (...) {
    return {};
  }
}

// --- Reports ---

constexpr bool sameNumbers(Severity cpp, filtersSeverity_t c) { return static_cast<int>(cpp) == c; }
constexpr bool sameNumbers(Subject cpp, filtersSubject_t c) { return static_cast<int>(cpp) == c; }
static_assert(sameNumbers(Severity::kNote, FILTERS_SEVERITY_NOTE) &&
              sameNumbers(Severity::kWarning, FILTERS_SEVERITY_WARNING) &&
              sameNumbers(Severity::kError, FILTERS_SEVERITY_ERROR));
static_assert(sameNumbers(Subject::kGroup, FILTERS_SUBJECT_GROUP) &&
              sameNumbers(Subject::kEntry, FILTERS_SUBJECT_ENTRY) &&
              sameNumbers(Subject::kMatch, FILTERS_SUBJECT_MATCH) &&
              sameNumbers(Subject::kAction, FILTERS_SUBJECT_ACTION) &&
              sameNumbers(Subject::kPolicer, FILTERS_SUBJECT_POLICER) &&
              sameNumbers(Subject::kParent, FILTERS_SUBJECT_PARENT) &&
              sameNumbers(Subject::kCounter, FILTERS_SUBJECT_COUNTER));

filtersFinding_t inC(const Finding& finding) {
  filtersFinding_t c = {};
  c.code = nameOf(finding.code).data();
  c.severity = static_cast<filtersSeverity_t>(finding.severity);
  c.result = finding.result;
  c.subject = static_cast<filtersSubject_t>(finding.subject);
  c.has_group = finding.group.has_value();
  c.group = finding.group.value_or(0);
  c.has_entry = finding.entry.has_value();
  c.entry = finding.entry.value_or(0);
  c.offender = finding.offender;
  c.admitted = finding.admitted.data();
  c.admitted_count = finding.admitted.size();
  c.others = finding.others.data();
  c.others_count = finding.others.size();
  c.path = finding.path.c_str();
  c.has_bytes = finding.bytes.has_value();
  const ByteRange bytes = finding.bytes.value_or(ByteRange());
  c.offset = bytes.offset;
  c.length = bytes.length;
  c.before = finding.before.c_str();
  c.after = finding.after.c_str();
  c.witness = finding.witness.c_str();
  c.message = finding.message.c_str();
  return c;
}

FiltersReport* handleOf(Report&& report) {
  auto handle = std::make_unique<FiltersReport>();
  handle->report = std::move(report);
  return handle.release();
}

template <class Enum>
bool exists(Enum value) {
  return !nameOf(value).empty();
}

// Returns the report of `explain` about the objects, or null if one of the objects is null.
template <class Explain, class... Objects>
FiltersReport* explained(Explain explain, const Objects*... objects) {
  if (!(objects && ...)) return nullptr;
  return guarded([&] { return handleOf(explain(*objects...)); });
}

template <class Object, class Decode>
FiltersReport* decoded(const void* bytes, std::size_t size, Object** object, Decode decode) {
  if (object != nullptr) *object = nullptr;
  if (bytes == nullptr && size != 0) return nullptr;
  return guarded([&] {
    auto [read, report] = decode(std::string_view(static_cast<const char*>(bytes), size));
    std::unique_ptr<Object> made;
    if (object != nullptr && read) made = std::make_unique<Object>(std::move(*read));
    FiltersReport* handle = handleOf(std::move(report));
    if (made) *object = made.release();
    return handle;
  });
}

// Reads a text that holds one group.
FiltersReport* readFrom(const char* text, std::size_t size, FiltersGroup** group,
                        ParsedGroups (*read)(std::string_view)) {
  return decoded(text, size, group, [read](std::string_view in) {
    ParsedGroups parsed = read(in);
    std::optional<FiltersGroup> one;
    if (parsed.groups.size() == 1) one = std::move(parsed.groups.front());
    if (parsed.groups.size() != 1 && parsed.report.empty()) {
      Finding& finding = parsed.report.findings.emplace_back();
      finding.code = Code::kTextSyntax;
      finding.severity = severityOf(finding.code);
      finding.path = "1:1";
      finding.message =
          "there must be one group, and there are " + std::to_string(parsed.groups.size());
    }
    return std::pair(std::move(one), std::move(parsed.report));
  });
}

// --- Plans ---

constexpr bool sameNumbers(Step::Kind cpp, filtersStepKind_t c) {
  return static_cast<int>(cpp) == c;
}
constexpr bool sameNumbers(PlanOrder cpp, filtersPlanOrder_t c) {
  return static_cast<int>(cpp) == c;
}
static_assert(sameNumbers(PlanOrder::kAddFirst, FILTERS_PLAN_ADD_FIRST) &&
              sameNumbers(PlanOrder::kRemoveFirst, FILTERS_PLAN_REMOVE_FIRST));
static_assert(sameNumbers(Step::Kind::kRemove, FILTERS_STEP_REMOVE) &&
              sameNumbers(Step::Kind::kInsert, FILTERS_STEP_INSERT) &&
              sameNumbers(Step::Kind::kSetPriority, FILTERS_STEP_SET_PRIORITY) &&
              sameNumbers(Step::Kind::kSetStage, FILTERS_STEP_SET_STAGE) &&
              sameNumbers(Step::Kind::kSetType, FILTERS_STEP_SET_TYPE));

filtersStep_t inC(const Step& step) {
  return {static_cast<filtersStepKind_t>(step.kind), step.entry, step.value};
}
// An unknown kind stays unknown, and apply() refuses it.
Step fromC(const filtersStep_t& step) {
  const auto kind = std::min(static_cast<std::uint32_t>(step.kind), std::uint32_t{UINT8_MAX});
  return {static_cast<Step::Kind>(kind), step.entry, step.value};
}

// --- Buffers ---

// Keeps the first bytes that are written and counts all of them, without allocating.
class Window : public std::streambuf {
 public:
  Window(char* out, std::size_t size) : out_(out), size_(size) {}
  std::size_t length() const { return length_; }
 protected:
  std::streamsize xsputn(const char* text, std::streamsize count) override {
    const auto more = static_cast<std::size_t>(count);
    if (length_ < size_) std::memcpy(out_ + length_, text, std::min(more, size_ - length_));
    length_ += more;
    return count;
  }
  int_type overflow(int_type c) override {
    const char text = traits_type::to_char_type(c);
    if (!traits_type::eq_int_type(c, traits_type::eof())) xsputn(&text, 1);
    return traits_type::not_eof(c);
  }
 private:
  char* out_;
  std::size_t size_;
  std::size_t length_ = 0;
};

// Fills the buffer with the output of `write` about the object. No locale changes it.
template <class Object, class Write>
std::size_t filled(const Object* object, char* out, std::size_t size, Write write) {
  if (out == nullptr) size = 0;
  const std::size_t length = guarded([&]() -> std::size_t {
    if (object == nullptr) return 0;
    Window window(out, size);
    std::ostream os(&window);
    os.imbue(std::locale::classic());
    os.exceptions(std::ios::badbit);  // without it, streams swallow exceptions and go on
    write(os, *object);
    return window.length();
  });
  if (size > 0) out[std::min(length, size - 1)] = '\0';
  return length;
}

// --- Analysis ---

constexpr bool sameNumbers(Order cpp, filtersOrder_t c) { return static_cast<int>(cpp) == c; }
constexpr bool sameNumbers(Hit cpp, filtersOutcome_t c) { return static_cast<int>(cpp) == c; }
static_assert(
    sameNumbers(Order::kUnspecified, FILTERS_ORDER_UNSPECIFIED) &&
    sameNumbers(Order::kHighestPriority, FILTERS_ORDER_HIGHEST_PRIORITY) &&
    sameNumbers(Order::kLowestPriority, FILTERS_ORDER_LOWEST_PRIORITY) &&
    sameNumbers(Order::kAscendingId, FILTERS_ORDER_ASCENDING_ID) &&
    sameNumbers(Order::kHighestPriorityAscendingId, FILTERS_ORDER_HIGHEST_PRIORITY_ASCENDING_ID) &&
    sameNumbers(Order::kHighestPriorityDescendingId,
                FILTERS_ORDER_HIGHEST_PRIORITY_DESCENDING_ID) &&
    sameNumbers(Order::kLowestPriorityAscendingId, FILTERS_ORDER_LOWEST_PRIORITY_ASCENDING_ID) &&
    sameNumbers(Order::kLowestPriorityDescendingId, FILTERS_ORDER_LOWEST_PRIORITY_DESCENDING_ID));
static_assert(sameNumbers(Hit::kMiss, FILTERS_OUTCOME_MISS) &&
              sameNumbers(Hit::kHit, FILTERS_OUTCOME_HIT) &&
              sameNumbers(Hit::kUndecided, FILTERS_OUTCOME_UNDECIDED));

std::optional<Order> orderOf(std::int32_t number) {
  if (number < FILTERS_ORDER_UNSPECIFIED || number > FILTERS_ORDER_LOWEST_PRIORITY_DESCENDING_ID)
    return {};
  return static_cast<Order>(number);
}

// Like explained(), for functions whose options have an order.
template <class Analyse, class... Objects>
FiltersReport* analysed(std::int32_t number, Analyse analyse, const Objects*... objects) {
  AnalysisOptions options;
  const std::optional<Order> order = orderOf(number);
  if (!order) return nullptr;
  options.order = *order;
  FiltersReport* handle =
      explained([&](const auto&... all) { return analyse(all..., options); }, objects...);
  if (handle != nullptr) handle->order = order;
  return handle;
}

// A question about a packet set.
struct Question {
  const AnalysisOptions& options;
  PacketSet packets;
  std::optional<ActionTest> actions;
  const ActionTest* then() const { return actions ? &*actions : nullptr; }
};

// Like analysed(), for questions about packet sets.
template <class Ask>
FiltersReport* asked(const FiltersGroup* g, const char* packets, std::int32_t order,
                     const char* then, Ask ask) {
  if (packets == nullptr) return nullptr;
  return analysed(
      order,
      [&](const auto& group, const auto& how) {
        Report faults;
        const auto set = PacketSet::parse(packets, &faults);
        std::optional<ActionTest> actions;
        if (then != nullptr) actions = ActionTest::parse(then, &faults);
        return faults.empty() ? ask(group, Question{how, *set, actions}) : faults;
      },
      g);
}

// Like explained(), for functions that use the part of a policy about a group.
template <class Use>
FiltersReport* withPolicy(const FiltersGroup* group, const char* text, std::size_t size, Use use) {
  if (text == nullptr && size != 0) return nullptr;
  return guarded([&]() -> FiltersReport* {
    if (group == nullptr) return nullptr;
    Report report;
    const auto policy = Policy::parse(std::string_view(text, size), &report);
    const PolicyGroup* its = policy ? policy->find(group->getId()) : nullptr;
    if (policy) report = use(*policy, its == nullptr ? Order::kUnspecified : its->order);
    FiltersReport* handle = handleOf(std::move(report));
    if (its != nullptr) handle->order = its->order;
    return handle;
  });
}

constexpr auto kPrint = [](std::ostream& os, const auto& object) { os << object; };

template <class Object>
std::size_t bytesOf(const Object* object, void* out, std::size_t size) {
  if (object == nullptr) return 0;
  return guarded([&] {
    std::string bytes;
    object->serialize(&bytes);
    if (out != nullptr && bytes.size() <= size) std::memcpy(out, bytes.data(), bytes.size());
    return bytes.size();
  });
}

template <class Key, class Code>
std::size_t admitted(const std::map<Key, const std::set<Code>>& table, Key key, Code* out,
                     std::size_t count) {
  const auto row = table.find(key);
  if (row == table.end()) return 0;
  std::size_t i = 0;
  for (Code code : row->second) {
    if (out != nullptr && i < count) out[i] = code;
    ++i;
  }
  return i;
}

template <class Object>
bool equal(const Object* a, const Object* b) {
  return a != nullptr && b != nullptr && guarded([&] { return *a == *b; });
}

// --- Traffic ---

constexpr bool sameNumbers(Link cpp, filtersLink_t c) { return static_cast<int>(cpp) == c; }
constexpr bool sameNumbers(FrameFault cpp, filtersFrameFault_t c) {
  return static_cast<int>(cpp) == c;
}
static_assert(sameNumbers(Link::kEthernet, FILTERS_LINK_ETHERNET) &&
              sameNumbers(Link::kRaw, FILTERS_LINK_RAW) &&
              sameNumbers(Link::kLinuxCooked, FILTERS_LINK_LINUX_COOKED) &&
              sameNumbers(Link::kLinuxCooked2, FILTERS_LINK_LINUX_COOKED2) &&
              sameNumbers(Link::kLoopback, FILTERS_LINK_LOOPBACK));
static_assert(sameNumbers(FrameFault::kNone, FILTERS_FRAME_FAULT_NONE) &&
              sameNumbers(FrameFault::kCut, FILTERS_FRAME_FAULT_CUT) &&
              sameNumbers(FrameFault::kEndsEarly, FILTERS_FRAME_FAULT_ENDS_EARLY) &&
              sameNumbers(FrameFault::kWrongLength, FILTERS_FRAME_FAULT_WRONG_LENGTH) &&
              sameNumbers(FrameFault::kWrongVersion, FILTERS_FRAME_FAULT_WRONG_VERSION) &&
              sameNumbers(FrameFault::kUnknownLink, FILTERS_FRAME_FAULT_UNKNOWN_LINK) &&
              sameNumbers(FrameFault::kEncapsulated, FILTERS_FRAME_FAULT_ENCAPSULATED) &&
              sameNumbers(FrameFault::kLaterFragment, FILTERS_FRAME_FAULT_LATER_FRAGMENT));

bool isFrame(const void* frame, std::size_t captured, std::int32_t link) {
  return (frame != nullptr || captured == 0) && link >= FILTERS_LINK_ETHERNET &&
         link <= FILTERS_LINK_LOOPBACK;
}

filtersFrameCount_t inC(const FrameCount& count) {
  return {count.frames, count.first, count.first_time};
}

// --- Names ---

const char* orNull(std::string_view name) { return name.empty() ? nullptr : name.data(); }

template <class Enum>
bool found(const char* name, Enum* out) {
  if (name == nullptr || out == nullptr) return false;
  const auto code = guarded([&] { return fromName<Enum>(name); });
  if (code) *out = *code;
  return code.has_value();
}

}  // namespace

extern "C" {

std::size_t filtersReportCount(const FiltersReport* r) {
  return r == nullptr ? 0 : r->report.findings.size();
}

std::int32_t filtersReportGet(const FiltersReport* r, std::size_t index, filtersFinding_t* out) {
  if (index >= filtersReportCount(r) || out == nullptr) return 0;
  *out = inC(r->report.findings[index]);
  return 1;
}

std::size_t filtersReportLeftOut(const FiltersReport* r) {
  return r == nullptr ? 0 : r->report.left_out;
}

std::size_t filtersReportLeftOutOf(const FiltersReport* r, filtersSeverity_t severity) {
  if (r == nullptr) return 0;
  const SeverityCounts& counts = r->report.left_out_by_severity;
  const auto index = static_cast<std::size_t>(severity);
  return index < counts.size() ? counts[index] : 0;
}

filtersSeverity_t filtersReportWorst(const FiltersReport* r) {
  return r == nullptr ? FILTERS_SEVERITY_NOTE : static_cast<filtersSeverity_t>(r->report.worst());
}

std::size_t filtersReportToText(const FiltersReport* r, char* out, std::size_t size) {
  return filled(r, out, size, [](std::ostream& os, const auto& handle) { os << handle.report; });
}

std::size_t filtersReportToJson(const FiltersReport* r, char* out, std::size_t size) {
  return filled(r, out, size, [](std::ostream& os, const auto& handle) {
    const Report& report = handle.report;
    os << (handle.order ? toJson(report, *handle.order, handle.command) : toJson(report));
  });
}

void deleteFiltersReport(FiltersReport* r) { delete r; }

FiltersReport* filtersExplainInsert(const FiltersGroup* g, const FiltersEntry* e) {
  return explained([](const auto& group, const auto& entry) { return explainInsert(group, entry); },
                   g, e);
}

FiltersReport* filtersExplainInsertInto(filtersGroupStage_t s, filtersGroupType_t t,
                                        const FiltersEntry* e) {
  if (!exists(s) || !exists(t)) return nullptr;
  return explained([&](const auto& entry) { return explainInsert(s, t, entry); }, e);
}

FiltersReport* filtersExplainStage(const FiltersGroup* g, filtersGroupStage_t s) {
  if (!exists(s)) return nullptr;
  return explained([&](const auto& group) { return explainStage(group, s); }, g);
}

FiltersReport* filtersExplainType(const FiltersGroup* g, filtersGroupType_t t) {
  if (!exists(t)) return nullptr;
  return explained([&](const auto& group) { return explainType(group, t); }, g);
}

FiltersReport* filtersExplainMatch(const FiltersEntry* e, filtersMatch_t m) {
  if (!exists(m)) return nullptr;
  return explained([&](const auto& entry) { return explainMatch(entry, m); }, e);
}

std::size_t filtersAdmittedMatches(filtersGroupType_t t, filtersMatch_t* out, std::size_t count) {
  return admitted(FiltersGroup::TypeDescription_, t, out, count);
}

std::size_t filtersAdmittedActions(filtersGroupStage_t s, filtersAction_t* out, std::size_t count) {
  return admitted(FiltersGroup::StageActionsDescription_, s, out, count);
}

std::size_t filtersAdmittedTypes(filtersGroupStage_t s, filtersGroupType_t* out,
                                 std::size_t count) {
  return admitted(FiltersGroup::StageTypesDescription_, s, out, count);
}

std::size_t filtersGroupToBytes(const FiltersGroup* g, void* out, std::size_t size) {
  return bytesOf(g, out, size);
}

std::size_t filtersEntryToBytes(const FiltersEntry* e, void* out, std::size_t size) {
  return bytesOf(e, out, size);
}

FiltersReport* filtersDecodeGroup(const void* bytes, std::size_t size, FiltersGroup** group) {
  return decoded(bytes, size, group, [](std::string_view in) { return decodeGroup(in); });
}

FiltersReport* filtersDecodeEntry(const void* bytes, std::size_t size, FiltersEntry** entry) {
  return decoded(bytes, size, entry, [](std::string_view in) { return decodeEntry(in); });
}

bool filtersGroupsEqual(const FiltersGroup* a, const FiltersGroup* b) { return equal(a, b); }
bool filtersEntriesEqual(const FiltersEntry* a, const FiltersEntry* b) { return equal(a, b); }

std::size_t filtersGroupPrint(const FiltersGroup* g, char* out, std::size_t size) {
  return filled(g, out, size, kPrint);
}

std::size_t filtersEntryPrint(const FiltersEntry* e, char* out, std::size_t size) {
  return filled(e, out, size, kPrint);
}

std::size_t filtersGroupToText(const FiltersGroup* g, char* out, std::size_t size) {
  return filled(g, out, size, [](auto& os, const auto& group) { os << toText(group); });
}

std::size_t filtersGroupToJson(const FiltersGroup* g, char* out, std::size_t size) {
  return filled(g, out, size, [](auto& os, const auto& group) { os << toJson(group); });
}

std::size_t filtersGroupToCompactJson(const FiltersGroup* g, char* out, std::size_t size) {
  return filled(g, out, size,
                [](auto& os, const auto& group) { os << toJson(group, JsonLayout::kCompact); });
}

std::size_t filtersEntryToText(const FiltersEntry* e, char* out, std::size_t size) {
  return filled(e, out, size, [](auto& os, const auto& entry) { os << toText(entry); });
}

FiltersReport* filtersGroupFromText(const char* text, std::size_t size, FiltersGroup** group) {
  return readFrom(text, size, group, groupsFromText);
}

FiltersReport* filtersGroupFromJson(const char* json, std::size_t size, FiltersGroup** group) {
  return readFrom(json, size, group, groupsFromJson);
}

FiltersReport* filtersDiff(const FiltersGroup* a, const FiltersGroup* b) {
  return explained([](const auto& from, const auto& to) { return diff(from, to); }, a, b);
}

FiltersReport* filtersPlan(const FiltersGroup* from, const FiltersGroup* to, std::int32_t order,
                           filtersStep_t* out, std::size_t count, std::size_t* steps) {
  std::size_t all = 0;
  const bool isOrder = order == FILTERS_PLAN_ADD_FIRST || order == FILTERS_PLAN_REMOVE_FIRST;
  FiltersReport* report = explained(
      [&](const auto& old, const auto& wanted) {
        Plan made = plan(old, wanted, static_cast<PlanOrder>(order));
        for (std::size_t i = 0; out != nullptr && i < std::min(count, made.steps.size()); ++i) {
          out[i] = inC(made.steps[i]);
        }
        all = made.steps.size();
        return std::move(made.report);
      },
      isOrder ? from : nullptr, to);
  if (steps != nullptr) *steps = report == nullptr ? 0 : all;
  return report;
}

filtersErr_t filtersApply(const filtersStep_t* steps, std::size_t count, const FiltersGroup* to,
                          FiltersGroup* g) {
  if (to == nullptr || g == nullptr || (steps == nullptr && count != 0)) {
    return FiltersCommon::FILTERS_ERR_INVALID_ARGUMENT;
  }
  try {
    std::vector<Step> all;
    for (std::size_t i = 0; i < count; ++i) all.push_back(fromC(steps[i]));
    return apply(all, *to, g);
  } catch (...) {
    return FiltersCommon::FILTERS_ERR_INVALID;
  }
}

std::size_t filtersStepToText(const filtersStep_t* step, const FiltersGroup* to, char* out,
                              std::size_t size) {
  return filled(to == nullptr ? nullptr : step, out, size,
                [&](auto& os, const auto& one) { os << toText(fromC(one), *to); });
}

FiltersReport* filtersAnalyse(const FiltersGroup* g, std::int32_t order) {
  return analysed(
      order, [](const auto& group, const auto& how) { return analyse(group, how); }, g);
}

FiltersReport* filtersCompareTreatment(const FiltersGroup* a, const FiltersGroup* b,
                                       std::int32_t order) {
  return analysed(
      order,
      [](const auto& one, const auto& other, const auto& how) {
        return compareTreatment(one, other, how);
      },
      a, b);
}

FiltersReport* filtersUnusualValues(const FiltersGroup* g) {
  return explained([](const auto& group) { return unusualValues(group); }, g);
}

FiltersReport* filtersCheckPolicy(const FiltersGroup* g, const char* policy, std::size_t size) {
  FiltersReport* handle =
      withPolicy(g, policy, size, [g](const Policy& its, Order) { return checkPolicy(*g, its); });
  if (handle != nullptr) handle->command = "expect";
  return handle;
}

FiltersReport* filtersAnalyseAccepting(const FiltersGroup* g, const char* policy, std::size_t size,
                                       std::size_t* accepted) {
  std::size_t count = 0;
  FiltersReport* handle = withPolicy(g, policy, size, [&](const Policy& its, Order order) {
    AnalysisOptions options;
    options.order = order;
    Report report = analyse(*g, options);
    count = acceptFindings(its, g->getId(), &report);
    return report;
  });
  if (accepted != nullptr) *accepted = handle == nullptr ? 0 : count;
  return handle;
}

std::size_t filtersTrace(const FiltersGroup* g, const char* packet, std::int32_t order,
                         filtersOutcome_t* outcome, filtersEntryId_t* entry, char* out,
                         std::size_t size) {
  filtersOutcome_t reached = FILTERS_OUTCOME_NONE;
  const std::optional<Order> known = orderOf(order);
  std::optional<filtersEntryId_t> taker;
  const std::size_t length = filled(
      packet == nullptr || !known ? nullptr : g, out, size, [&](auto& os, const auto& group) {
        Report faults;
        const std::optional<Packet> parsed = Packet::parse(packet, &faults);
        if (!parsed) {
          os << faults;
          return;
        }
        const Trace traced = trace(group, *parsed, *known);
        os << traced;
        taker = traced.entry;
        reached = static_cast<filtersOutcome_t>(traced.outcome);
      });
  if (outcome != nullptr) *outcome = reached;
  if (entry != nullptr && taker) *entry = *taker;
  return length;
}

FiltersReport* filtersSearch(const FiltersGroup* g, const char* packets, std::int32_t order,
                             const char* then) {
  return asked(g, packets, order, then, [](const auto& group, const Question& question) {
    return searchReport(group, search(group, question.packets, question.options.order,
                                      question.options, question.then()));
  });
}

FiltersReport* filtersTouching(const FiltersGroup* g, const char* packets, std::int32_t order,
                               const char* then) {
  return asked(g, packets, order, then, [](const auto& group, const Question& question) {
    return touchingReport(group, touching(group, question.packets, question.options.order,
                                          question.options, question.then()));
  });
}

FiltersReport* filtersRemains(const FiltersGroup* g, filtersEntryId_t entry, const char* packets,
                              std::int32_t order) {
  const bool has = g != nullptr && g->getEntriesRef().count(entry) != 0;
  return asked(has ? g : nullptr, packets, order, nullptr,
               [entry](const auto& group, const Question& question) {
                 const auto left = remains(group, entry, question.packets, question.options.order,
                                           question.options);
                 return left ? remainsReport(group, entry, *left) : Report();
               });
}

std::size_t filtersPacketSetToText(const char* packets, bool* valid, char* out, std::size_t size) {
  bool is_valid = false;
  const std::size_t length = filled(packets, out, size, [&](auto& os, const char&) {
    Report faults;
    const std::optional<PacketSet> set = PacketSet::parse(packets, &faults);
    if (set) {
      os << set->toText();
    } else {
      os << faults;
    }
    is_valid = set.has_value();
  });
  if (valid != nullptr) *valid = is_valid;
  return length;
}

std::size_t filtersPacketOf(const void* frame, std::size_t captured, std::size_t length,
                            std::int32_t link, filtersFrameFault_t* fault, char* out,
                            std::size_t size) {
  const Link known = static_cast<Link>(link);
  return filled(isFrame(frame, captured, link) ? &known : nullptr, out, size,
                [&](std::ostream& os, Link its) {
                  FrameFault why = FrameFault::kNone;
                  os << packetOf(frame, captured, length, its, &why).toText();
                  if (fault != nullptr) *fault = static_cast<filtersFrameFault_t>(why);
                });
}

FiltersHits* newFiltersHits(const FiltersGroup* g, std::int32_t order, const char* assumed) {
  const std::optional<Order> known = orderOf(order);
  if (g == nullptr || !known) return nullptr;
  return guarded([&]() -> FiltersHits* {
    std::optional<Packet> packet = Packet::parse(assumed == nullptr ? "" : assumed, nullptr);
    if (!packet) return nullptr;
    return new FiltersHits{HitCounter(*g, *known, std::move(*packet))};
  });
}

bool filtersHitsCount(FiltersHits* h, const void* frame, std::size_t captured, std::size_t length,
                      std::int32_t link, std::int64_t time) {
  if (h == nullptr || !isFrame(frame, captured, link)) return false;
  return guarded([&] {
    h->counter.count(frame, captured, length, static_cast<Link>(link), time);
    return true;
  });
}

std::size_t filtersHitsOfEntries(const FiltersHits* h, filtersEntryHits_t* out, std::size_t count) {
  if (h == nullptr) return 0;
  const std::vector<EntryHits>& all = h->counter.hits().entries;
  for (std::size_t i = 0; out != nullptr && i < std::min(count, all.size()); ++i) {
    out[i] = {all[i].entry, inC(all[i].hits.sure), inC(all[i].hits.possible)};
  }
  return all.size();
}

bool filtersHitsOfAll(const FiltersHits* h, filtersAllHits_t* out) {
  if (h == nullptr || out == nullptr) return false;
  const Hits& hits = h->counter.hits();
  *out = {hits.frames, inC(hits.decided), inC(hits.undecided), inC(hits.none.sure),
          inC(hits.none.possible)};
  return true;
}

bool filtersHitsOfFault(const FiltersHits* h, std::int32_t fault, filtersFrameCount_t* out) {
  if (h == nullptr || out == nullptr) return false;
  const FrameCounts& faults = h->counter.hits().faults;
  if (fault < 0 || static_cast<std::size_t>(fault) >= faults.size()) return false;
  *out = inC(faults[static_cast<std::size_t>(fault)]);
  return true;
}

void deleteFiltersHits(FiltersHits* h) { delete h; }

const char* filtersErrName(filtersErr_t v) { return orNull(nameOf(v)); }
const char* filtersStageName(filtersGroupStage_t v) { return orNull(nameOf(v)); }
const char* filtersTypeName(filtersGroupType_t v) { return orNull(nameOf(v)); }
const char* filtersMatchName(filtersMatch_t v) { return orNull(nameOf(v)); }
const char* filtersActionName(filtersAction_t v) { return orNull(nameOf(v)); }
const char* filtersCounterTypeName(counter_type_t v) { return orNull(nameOf(v)); }

bool filtersErrFromName(const char* name, filtersErr_t* out) { return found(name, out); }
bool filtersStageFromName(const char* name, filtersGroupStage_t* out) { return found(name, out); }
bool filtersTypeFromName(const char* name, filtersGroupType_t* out) { return found(name, out); }
bool filtersMatchFromName(const char* name, filtersMatch_t* out) { return found(name, out); }
bool filtersActionFromName(const char* name, filtersAction_t* out) { return found(name, out); }
bool filtersCounterTypeFromName(const char* name, counter_type_t* out) { return found(name, out); }

const char* filtersErrDescribe(filtersErr_t v) { return describe(v).data(); }

}  // extern "C"
}  // namespace FiltersInspect
