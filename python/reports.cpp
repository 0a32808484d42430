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

py::object newEnumeration(const char* name, const py::list& members, const py::object& base) {
  const py::object make = py::module_::import("enum").attr("Enum");
  return make(name, members, py::arg("module") = kPackage, py::arg("type") = base);
}

// Makes an enumeration of the names of some values; a member is a text too.
template <class Values, class NameOf>
void addNames(py::module_* module, const char* name, const Values& values, NameOf nameOf) {
  py::list members;
  for (const auto& value : values) {
    const std::string_view its = nameOf(value);
    members.append(py::make_tuple(memberName(its), std::string(its)));
  }
  const py::object text = py::module_::import("builtins").attr("str");
  module->attr(name) = newEnumeration(name, members, text);
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
void addEnumerations(py::module_* module) {
  const auto name = [](auto value) { return nameOf(value); };
  const auto second = [](const auto& pair) { return pair.second; };
  addNames(module, "Code", kAllCodes, name);
  addNames(module, "Severity", kAllSeverities, name);
  addNames(module, "Subject", kAllSubjects, name);
  addNames(module, "Order", kAllOrders, name);
  addNames(module, "Hit", kAllHits, name);
  addNames(module, "Link", kAllLinks, name);
  addNames(module, "FrameFault", kAllFrameFaults, name);
  addNames(module, "Result", namesOf<filtersErr_t>(), second);
  addNames(module, "Stage", namesOf<filtersGroupStage_t>(), second);
  py::list types;
  for (const auto& [type, its] : namesOf<filtersGroupType_t>()) {
    const bool isNumber = std::isdigit(static_cast<unsigned char>(its.front())) != 0;
    types.append(py::make_tuple((isNumber ? "TYPE_" : "") + memberName(its),
                                static_cast<std::uint32_t>(type)));
  }
  module->attr("Type") = newEnumeration("Type", types, py::module_::import("builtins").attr("int"));
}

std::string toJsonOf(const Report& report, const Text& command, const Text& file,
                     const py::object& order) {
  return order.is_none() ? toJson(report, command.its, file.its)
                         : toJson(report, orderOf(order), command.its, file.its);
}

const Finding& findingAt(const Report& report, py::ssize_t index) {
  const auto size = static_cast<py::ssize_t>(report.findings.size());
  if (index < 0) index += size;
  if (index < 0 || index >= size) throw py::index_error("the report has fewer findings");
  return report.findings[static_cast<std::size_t>(index)];
}

py::list findingsAt(const Report& report, const py::slice& slice) {
  std::size_t start = 0, stop = 0, step = 0, length = 0;
  if (!slice.compute(report.findings.size(), &start, &stop, &step, &length)) {
    throw py::error_already_set();
  }
  py::list chosen;
  for (; length-- != 0; start += step) chosen.append(report.findings[start]);
  return chosen;
}

// Findings and reports are equal if their documents are.
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

void refuse(filtersErr_t result, Report&& report) {
  raiseRefused(report.empty() ? py::object(py::str(std::string(describe(result)))) : py::none(),
               std::move(report));
}

py::object member(const char* enumeration, std::string_view name) {
  return py::module_::import("filter_inspect._core").attr(enumeration)(std::string(name));
}

Order orderOf(const py::object& order) {
  const std::string name = argument<Text>(order, "order", "a text or an Order");
  if (const auto found = orderFromName(name)) return *found;
  std::vector<std::string_view> names;
  for (const Order one : kAllOrders) names.push_back(nameOf(one));
  throw py::value_error("there is no order '" + name + "'" + suggestion(name, names));
}

void Watch::tell(std::size_t done, std::size_t all) {
  constexpr std::chrono::milliseconds kPause(50), kTurn(10);
  const auto now = std::chrono::steady_clock::now();
  if (now >= turn_ && PyGILState_Check() != 0) {
    const py::gil_scoped_release others;
    turn_ = std::chrono::steady_clock::now() + kTurn;
  }
  if (now < next_) return;
  next_ = now + kPause;
  const py::gil_scoped_acquire acquired;
  if (PyErr_CheckSignals() != 0) throw py::error_already_set();
  if (!progress_.is_none()) progress_(done, all);
}

py::tuple reduced(const py::object& self) {
  const py::type type = py::type::of(self);
  if (!py::hasattr(type, "from_bytes")) {
    throw py::type_error("cannot pickle '" + type.attr("__name__").cast<std::string>() +
                         "' object");
  }
  const py::object again =
      py::module_::import("operator").attr("methodcaller")("from_bytes", self.attr("to_bytes")());
  return py::make_tuple(again, py::make_tuple(type));
}

void refuseKey(const py::object& key) {
  PyErr_SetObject(PyExc_KeyError, key.ptr());
  throw py::error_already_set();
}

BytesView::BytesView(const py::object& object) {
  if (PyObject_GetBuffer(object.ptr(), &view_, PyBUF_SIMPLE) != 0) throw py::error_already_set();
}

void addReports(py::module_* module) {
  addEnumerations(module);

  addClass<SeenFrames>(module, "SeenFrames", "Frames of a capture, and the first of them.")
      .def_readonly("frames", &SeenFrames::frames)
      .def_readonly("first", &SeenFrames::first)
      .def_readonly("time", &SeenFrames::time);

  auto single = addClass<Finding>(module, "Finding", R"(One thing that a report says.

>>> import filter_inspect as fi
>>> report = fi.explain_insert(fi.Group(1, stage="ingress", type=3), fi.Entry(30, match="vrf_id=1"))
>>> finding = report[0]
>>> finding.code is fi.Code.MATCH_NOT_ADMITTED, finding.entry, finding.severity.value
(True, 30, 'error')
)");
  addCopies(&single);
  addComparison(&single, [](const Finding& one) { return toJson(Report{{one}}); });
  single
      .def_property_readonly("code",
                             [](const Finding& one) { return member("Code", nameOf(one.code)); })
      .def_property_readonly(
          "severity", [](const Finding& one) { return member("Severity", nameOf(one.severity)); })
      .def_property_readonly(
          "result", [](const Finding& one) { return member("Result", nameOf(one.result)); })
      .def_property_readonly(
          "subject", [](const Finding& one) { return member("Subject", nameOf(one.subject)); })
      .def_readonly("group", &Finding::group)
      .def_readonly("group_number", &Finding::group_number)
      .def_readonly("entry", &Finding::entry)
      .def_readonly("offender", &Finding::offender)
      .def_readonly("admitted", &Finding::admitted)
      .def_readonly("others", &Finding::others)
      .def_readonly("path", &Finding::path)
      .def_property_readonly("bytes",
                             [](const Finding& one) -> py::object {
                               if (!one.bytes) return py::none();
                               return py::make_tuple(one.bytes->offset, one.bytes->length);
                             })
      .def_readonly("before", &Finding::before)
      .def_readonly("after", &Finding::after)
      .def_readonly("witness", &Finding::witness)
      .def_readonly("message", &Finding::message)
      .def_readonly("step", &Finding::step)
      .def_readonly("value", &Finding::value)
      .def_readonly("treatment", &Finding::treatment)
      .def_readonly("lacking", &Finding::lacking)
      .def_readonly("sure", &Finding::sure)
      .def_readonly("possible", &Finding::possible)
      .def_readonly("word", &Finding::word)
      .def("__str__", [](const Finding& one) { return linesOf(Report{{one}}); })
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
  sequence.def("__len__", [](const Report& report) { return report.findings.size(); })
      .def("__bool__", [](const Report& report) { return !report.empty(); })
      .def("__getitem__", &findingAt, py::return_value_policy::copy)
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
