// Reports and findings, the enumerations, and the exception that carries a report.

#include <filter_inspect/filter_names.h>

#include <cctype>

#include "binding.h"

namespace FilterInspectPython {
namespace {

constexpr char kPackage[] = "filter_inspect";

// "highest-priority,ascending-id" becomes HIGHEST_PRIORITY_ASCENDING_ID.
std::string memberName(std::string_view name) {
  std::string text;
  for (const char c : name) {
    const auto byte = static_cast<unsigned char>(c);
    text += std::isalnum(byte) != 0 ? static_cast<char>(std::toupper(byte)) : '_';
  }
  return text;
}

py::object newEnumeration(const char* name, const char* text, const py::list& members,
                          const py::object& base) {
  const py::object make = py::module_::import("enum").attr("Enum");
  py::object made = make(name, members, py::arg("module") = kPackage, py::arg("type") = base);
  made.attr("__doc__") = text;
  // Releases of Python differ in what a member is in a text. Here it is its value.
  const bool isNumber = base.is(py::type::of(py::int_(0)));
  made.attr("__str__") = base.attr(isNumber ? "__repr__" : "__str__");
  made.attr("__format__") = base.attr("__format__");
  return made;
}

// Makes a Python enumeration whose members are the names of some values. Each member is also a str.
template <class Values, class NameOf>
void addNames(py::module_* module, const char* name, const char* text, const Values& values,
              NameOf nameOf) {
  py::list members;
  for (const auto& value : values) {
    const std::string_view its = nameOf(value);
    members.append(py::make_tuple(memberName(its), std::string(its)));
  }
  const py::object base = py::module_::import("builtins").attr("str");
  module->attr(name) = newEnumeration(name, text, members, base);
}

constexpr Code kAllCodes[] = {
#define FINDING(code, name, severity) Code::code,
#include <filter_inspect/findings.def>
};
constexpr Severity kAllSeverities[] = {Severity::kNote, Severity::kWarning, Severity::kError};
constexpr Subject kAllSubjects[] = {Subject::kGroup,  Subject::kEntry,   Subject::kMatch,
                                    Subject::kAction, Subject::kPolicer, Subject::kParent,
                                    Subject::kCounter};
constexpr Hit kAllHits[] = {Hit::kMiss, Hit::kHit, Hit::kUndecided};

// Lets severities compare by how much they matter, and not as texts.
void addOrder(const py::object& severities) {
  py::dict ranks;
  for (const py::handle one : severities) ranks[one] = ranks.size();
  const py::module_ operators = py::module_::import("operator");
  for (const char* name : {"__lt__", "__le__", "__gt__", "__ge__"}) {
    const py::object compare = operators.attr(name);
    severities.attr(name) = py::cpp_function(
        [ranks, compare](const py::object& a, const py::object& b) {
          if (!ranks.contains(b)) throw py::type_error("a severity compares with severities only");
          return compare(ranks[a], ranks[b]);
        },
        py::is_method(severities));
  }
}

void addEnumerations(py::module_* module) {
  const auto name = [](auto value) { return nameOf(value); };
  const auto second = [](const auto& pair) { return pair.second; };
  addNames(module, "Code", "What a finding is about.", kAllCodes, name);
  addNames(module, "Severity", "How much a finding matters.", kAllSeverities, name);
  addOrder(module->attr("Severity"));
  addNames(module, "Subject", "The part of a group or an entry that a finding is about.",
           kAllSubjects, name);
  addNames(module, "Order", "The order in which a device tries the entries of a group.", kAllOrders,
           name);
  addNames(module, "Hit", "Whether an entry takes a packet.", kAllHits, name);
  addNames(module, "Link", "The kind of link that frames come from.", kAllLinks, name);
  addNames(module, "FrameFault", "Why a frame does not tell all fields.", kAllFrameFaults, name);
  addNames(module, "Result", "The result code that a device's library returns.",
           namesOf<filtersErr_t>(), second);
  addNames(module, "Stage", "The pipeline stage of a group.", namesOf<filtersGroupStage_t>(),
           second);
  py::list types;
  for (const auto& [type, its] : namesOf<filtersGroupType_t>()) {
    const bool isNumber = std::isdigit(static_cast<unsigned char>(its.front())) != 0;
    types.append(py::make_tuple((isNumber ? "TYPE_" : "") + memberName(its),
                                static_cast<std::uint32_t>(type)));
  }
  module->attr("Type") = newEnumeration("Type", "The type of a group.", types,
                                        py::module_::import("builtins").attr("int"));
}

std::string toJsonOf(const Report& report, const Text<kCommand>& command, const Text<kFile>& file,
                     std::optional<Named<Order>> order) {
  return order ? toJson(report, *order, command.its, file.its)
               : toJson(report, command.its, file.its);
}

// Calls `visit(name, member, text)` for each field of a finding that the functions of this module
// set.
template <class Visit>
void eachField(Visit visit) {
  visit("code", &Finding::code, "What was found.");
  visit("severity", &Finding::severity, "How much it matters.");
  visit("result", &Finding::result, "What the device's library returns; OK if it is silent.");
  visit("subject", &Finding::subject, "The part that it is about.");
  visit("group", &Finding::group, "The id of the group, or None.");
  visit("group_number", &Finding::group_number, "The number of the group in its file, from 1.");
  visit("entry", &Finding::entry, "The id of the entry, or None.");
  visit("offender", &Finding::offender,
        "The code of the match or action, the id of the counter, or the refused stage or type.");
  visit("admitted", &Finding::admitted, "The codes that would have been admitted.");
  visit("others", &Finding::others, "Ids of other entries, or codes of other matches or actions.");
  visit("path", &Finding::path,
        "The path of a field in bytes, or line and column in a text: '12:7'.");
  visit("bytes", &Finding::bytes, "The offset and length of the bytes, or None.");
  visit("before", &Finding::before, "The received or old value, or what this entry does.");
  visit("after", &Finding::after, "The value that is kept, or what another entry does.");
  visit("witness", &Finding::witness, "A packet that shows it; trace() takes this text.");
  visit("message", &Finding::message, "One sentence.");
  visit("step", &Finding::step, "The kind of a plan's step.");
  visit("value", &Finding::value, "What a plan's step inserts or sets.");
  visit("treatment", &Finding::treatment, "What is done with a packet.");
  visit("lacking", &Finding::lacking, "The unknown fields on which the answer depends.");
  visit("word", &Finding::word, "The wrong word of a text.");
}

// Converts the values of fields to Python objects, and back. Enumerators become members of Python's
// enumerations.
template <class Enum>
constexpr const char* kEnumeration = nullptr;
template <>
inline constexpr const char* kEnumeration<Code> = "Code";
template <>
inline constexpr const char* kEnumeration<Severity> = "Severity";
template <>
inline constexpr const char* kEnumeration<Subject> = "Subject";
template <>
inline constexpr const char* kEnumeration<filtersErr_t> = "Result";

const auto& allOf(Code) { return kAllCodes; }
const auto& allOf(Severity) { return kAllSeverities; }
const auto& allOf(Subject) { return kAllSubjects; }
std::vector<filtersErr_t> allOf(filtersErr_t) {
  std::vector<filtersErr_t> all;
  for (const auto& [one, its] : namesOf<filtersErr_t>()) all.push_back(one);
  return all;
}

template <class Value>
py::object toPython(const Value& value) {
  if constexpr (std::is_enum_v<Value>) {
    return member(kEnumeration<Value>, nameOf(value));
  } else {
    return py::cast(value);
  }
}
py::object toPython(const std::optional<ByteRange>& bytes) {
  if (!bytes) return py::none();
  return py::make_tuple(bytes->offset, bytes->length);
}

template <class Value>
void fromPython(const py::handle& object, const char* name, Value* value) {
  if constexpr (std::is_enum_v<Value>) {
    const std::string its = textOf(object, name);
    for (const Value one : allOf(*value)) {
      if (nameOf(one) == its) {
        *value = one;
        return;
      }
    }
    throw py::value_error("there is no " + std::string(name) + " '" + its + "'");
  } else {
    *value = argument<Value>(object, name, "a value of another type");
  }
}
void fromPython(const py::handle& object, const char* name, std::optional<ByteRange>* bytes) {
  const auto pair = argument<std::optional<std::pair<std::size_t, std::size_t>>>(
      object, name, "an offset and a length");
  if (pair) *bytes = ByteRange{pair->first, pair->second};
}

// Adds the fields of a finding as attributes. A pickle of a finding holds all of them.
void addFields(py::class_<Finding>* made) {
  eachField([made](const char* name, auto field, const char* text) {
    made->def_property_readonly(
        name, [field](const Finding& one) { return toPython(one.*field); }, text);
  });
  made->def("_state", [](const Finding& one) {
    py::list values;
    eachField([&](const char*, auto field, const char*) { values.append(toPython(one.*field)); });
    return values;
  });
  made->def_static("_from_state", [](const py::list& values) {
    Finding one{};
    std::size_t next = 0;
    eachField([&](const char* name, auto field, const char*) {
      if (next == values.size())
        throw py::value_error("the finding lacks its " + std::string(name));
      fromPython(values[next++], name, &(one.*field));
    });
    return one;
  });
}

// What pickles hold of a report: its findings, and for each severity the number of findings that
// were left out.
py::tuple stateOf(const Report& report) {
  return py::make_tuple(report.findings, report.left_out_by_severity);
}
Report reportFrom(const std::vector<Finding>& findings, const SeverityCounts& left_out) {
  Report report{findings};
  for (const Severity severity : kAllSeverities) {
    report.leaveOut(severity, left_out[static_cast<std::size_t>(severity)]);
  }
  return report;
}

py::object findingsAt(const Report& report, const py::object& which) {
  const std::size_t size = report.findings.size();
  if (PySlice_Check(which.ptr()) == 0) {
    if (PyIndex_Check(which.ptr()) == 0) {
      throw py::type_error(std::string("an index is a whole number or a slice, and not ") +
                           Py_TYPE(which.ptr())->tp_name);
    }
    Py_ssize_t index = PyNumber_AsSsize_t(which.ptr(), PyExc_IndexError);
    if (index == -1 && PyErr_Occurred() != nullptr) throw py::error_already_set();
    if (index < 0) index += static_cast<Py_ssize_t>(size);
    if (index < 0 || static_cast<std::size_t>(index) >= size) {
      throw py::index_error("the report has fewer findings");
    }
    return py::cast(report.findings[static_cast<std::size_t>(index)]);
  }
  std::size_t start = 0, stop = 0, step = 0, length = 0;
  if (!py::reinterpret_borrow<py::slice>(which).compute(size, &start, &stop, &step, &length)) {
    throw py::error_already_set();
  }
  py::list chosen;
  for (; length-- != 0; start += step) chosen.append(report.findings[start]);
  return std::move(chosen);
}

// Two findings, or two reports, are equal if their JSON documents are equal.
template <class Value, class DocumentOf>
void addComparison(py::class_<Value>* made, DocumentOf documentOf) {
  made->def(
      "__eq__", [=](const Value& a, const Value& b) { return documentOf(a) == documentOf(b); },
      py::is_operator());
  made->def("__hash__", [=](const Value& one) { return py::hash(py::str(documentOf(one))); });
}

[[noreturn]] void raiseRefused(py::object sentence, Report&& report) {
  const py::object type = py::module_::import("filter_inspect._errors").attr("Refused");
  const py::object error = type(std::move(report), std::move(sentence));
  PyErr_SetObject(type.ptr(), error.ptr());
  throw py::error_already_set();
}

}  // namespace

void refuse(Report&& report) { raiseRefused(py::none(), std::move(report)); }

void refuse(const std::string& sentence, Report&& report) {
  raiseRefused(py::str(sentence), std::move(report));
}

void refuse(filtersErr_t result, Report&& report) {
  if (!report.empty()) refuse(std::move(report));
  refuse(std::string(describe(result)), std::move(report));
}

std::string textOf(const py::handle& object, const char* name, const char* kind) {
  if (!PyUnicode_Check(object.ptr())) {
    throw py::type_error(std::string(name) + " is " + kind + ", and not " +
                         Py_TYPE(object.ptr())->tp_name);
  }
  Py_ssize_t size = 0;
  const char* text = PyUnicode_AsUTF8AndSize(object.ptr(), &size);
  if (text == nullptr) throw py::error_already_set();
  return {text, static_cast<std::size_t>(size)};
}

py::object member(const char* enumeration, std::string_view name) {
  return py::module_::import("filter_inspect._core").attr(enumeration)(std::string(name));
}

Order named(const py::object& object, Order*) {
  const std::string name = textOf(object, "order", "a text or an Order");
  if (const auto found = orderFromName(name)) return *found;
  std::vector<std::string_view> names;
  for (const Order one : kAllOrders) names.push_back(nameOf(one));
  throw py::value_error("there is no order '" + name + "'" +
                        suggestion(name, names, "filter_inspect.Order"));
}

void Watch::tell(std::size_t done, std::size_t all) {
  constexpr std::chrono::milliseconds kPause(50), kTurn(10);
  const auto now = std::chrono::steady_clock::now();
  if (now >= turn_ && PyGILState_Check() != 0) {
    const Unlocked others;
    turn_ = std::chrono::steady_clock::now() + kTurn;
  }
  if (now < next_) return;
  next_ = now + kPause;
  const Locked locked;
  if (PyErr_CheckSignals() != 0) throw py::error_already_set();
  if (progress_) (*progress_)(done, all);
}

py::tuple reduced(const py::object& self) {
  const py::type type = py::type::of(self);
  constexpr std::pair<const char*, const char*> kWays[] = {{"to_bytes", "from_bytes"},
                                                           {"_state", "_from_state"}};
  for (const auto& [to, from] : kWays) {
    if (!py::hasattr(type, from)) continue;
    const py::object make =
        py::module_::import("operator").attr("methodcaller")(from, self.attr(to)());
    return py::make_tuple(make, py::make_tuple(type));
  }
  throw py::type_error("cannot pickle '" + type.attr("__name__").cast<std::string>() + "' object");
}

void refuseKey(const py::object& key) {
  PyErr_SetObject(PyExc_KeyError, py::make_tuple(key).ptr());
  throw py::error_already_set();
}

BytesView::BytesView(const py::object& object) {
  if (PyObject_GetBuffer(object.ptr(), &view_, PyBUF_SIMPLE) != 0) throw py::error_already_set();
}

void addReports(py::module_* module) {
  addEnumerations(module);

  auto single = addClass<Finding>(module, "Finding", R"(One thing that a report says.

>>> import filter_inspect as fi
>>> report = fi.explain_insert(fi.Group(1, stage="ingress", type=3), fi.Entry(30, match="vrf_id=1"))
>>> finding = report[0]
>>> finding.code is fi.Code.MATCH_NOT_ADMITTED, finding.entry, finding.severity.value
(True, 30, 'error')
)");
  addCopies(&single);
  addComparison(&single, [](const Finding& one) { return toJson(Report{{one}}); });
  addFields(&single);
  single.def("__str__", [](const Finding& one) { return linesOf(Report{{one}}); })
      .def("__repr__",
           [](const Finding& one) { return "<Finding " + linesOf(Report{{one}}) + '>'; });

  auto sequence = addClass<Report>(module, "Report",
                                   R"(A sequence of findings; str() gives the lines of the tool.

>>> import filter_inspect as fi
>>> group = fi.Group(1, stage="ingress", type=3)
>>> print(fi.explain_insert(group, fi.Entry(30, match="vrf_id=1")))
error: entry 30: match vrf_id: a group of type 3 does not admit it; types that do: 8 [match-not-admitted]
>>> len(fi.explain_insert(group, fi.Entry(30, match="ttl=1")))
0
)");
  addCopies(&sequence);
  addComparison(&sequence, [](const Report& one) { return toJson(one); });
  addMixins(&sequence, "Sequence", {"index", "count", "__iter__", "__reversed__", "__contains__"});
  sequence.def("_state", &stateOf);
  sequence.def_static("_from_state",
                      [](const std::pair<std::vector<Finding>, SeverityCounts>& state) {
                        return reportFrom(state.first, state.second);
                      });
  sequence.def("__len__", [](const Report& report) { return report.findings.size(); })
      .def("__bool__", [](const Report& report) { return !report.empty(); })
      .def("__getitem__", &findingsAt)
      .def("__str__", &linesOf<Report>)
      .def("__repr__",
           [](const Report& report) {
             SeverityCounts counts = report.left_out_by_severity;
             for (const Finding& one : report.findings) {
               ++counts[static_cast<std::size_t>(one.severity)];
             }
             return "<Report " + (report.empty() ? "without findings" : countsText(counts)) + '>';
           })
      .def_readonly("left_out", &Report::left_out, "How many findings there are beyond the limit.")
      .def_property_readonly(
          "worst", [](const Report& report) { return member("Severity", nameOf(report.worst())); },
          "The highest severity of all findings; a note if there is none.")
      .def("to_json", &toJsonOf, py::arg("command") = "check", py::arg("file") = "", py::kw_only(),
           py::arg("order") = py::none(),
           R"(The document of the report, as the tool prints it with --json.

>>> import filter_inspect as fi, json
>>> json.loads(fi.diff(fi.Group(1), fi.Group(1)).to_json("diff"))["command"]
'diff'
)");
}

}  // namespace FilterInspectPython
