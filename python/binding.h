#ifndef FILTER_INSPECT_PYTHON_BINDING_H_
#define FILTER_INSPECT_PYTHON_BINDING_H_

// What the files of the Python module share. The module only converts values; every answer comes
// from the library.
//
// Python may call from many threads, and questions release the interpreter's lock. So a group that
// a question reads must not change meanwhile. A group in Python is a shared pointer to a group of
// the library. While a second pointer shares that group, the group never changes: a change is made
// on a copy.

#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

#include <cxxabi.h>
#include <unistd.h>

#include <chrono>
#include <initializer_list>
#include <limits>
#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>

#include <filter_common/filter_groups.h>
#include <filter_inspect/filter_analysis.h>
#include <filter_inspect/filter_report.h>
#include <filter_inspect/filter_traffic.h>

namespace FilterInspectPython {

namespace py = pybind11;
using namespace FiltersCommon;
using namespace FiltersInspect;

using Snapshot = std::shared_ptr<const FiltersGroup>;

// The argument `kName`, which is a text.
template <const char* kName>
struct Text {
  std::string its;
  operator const std::string&() const { return its; }
};
// Returns the text of the argument `name`, which is `kind`.
std::string textOf(const py::handle& object, const char* name, const char* kind = "a text");
// The argument `kName`, which is a whole number.
template <class T, const char* kName>
struct Whole {
  T its;
  operator T() const { return its; }
};
inline constexpr char kId[] = "id", kPriority[] = "priority", kGroup[] = "group",
                      kEntry[] = "entry", kStage[] = "stage", kType[] = "type",
                      kMaxFindings[] = "max_findings", kMaxBytes[] = "max_bytes",
                      kMaxSteps[] = "max_steps", kOffset[] = "an offset or a length",
                      kText[] = "text", kJson[] = "json", kPackets[] = "packets",
                      kPacket[] = "packet", kThen[] = "then", kAssumed[] = "assumed",
                      kCommand[] = "command", kFile[] = "file";
using MaxFindings = Whole<std::size_t, kMaxFindings>;
using MaxBytes = Whole<std::size_t, kMaxBytes>;
using MaxSteps = Whole<std::uint64_t, kMaxSteps>;

// An argument that is a value with a name, such as an order. Python passes a member of an
// enumeration or its name. For a stage or type it may also pass the number.
template <class Value>
struct Named {
  Value its;
  operator Value() const { return its; }
};
Order named(const py::object& object, Order*);
Link named(const py::object& object, Link*);
filtersGroupStage_t named(const py::object& object, filtersGroupStage_t*);
filtersGroupType_t named(const py::object& object, filtersGroupType_t*);

inline bool isAnything(PyObject*) { return true; }
// Matches, actions, counters or a policer in one of the forms that Entry() takes.
class Words : public py::object {
 public:
  PYBIND11_OBJECT_DEFAULT(Words, py::object, isAnything)
};

// The caller's progress function, or None. Long work calls it with the number of finished parts.
using Progress = std::optional<py::function>;

class Group {
 public:
  explicit Group(FiltersGroup&& group) : group_(std::make_shared<FiltersGroup>(std::move(group))) {}

  const FiltersGroup& operator*() const { return *group_; }
  const FiltersGroup* operator->() const { return group_.get(); }
  // The group as it is now, for work without the interpreter's lock.
  Snapshot snapshot() const { return group_; }
  // The group to change, which no other pointer shares.
  FiltersGroup& own() {
    if (group_.use_count() != 1) group_ = std::make_shared<FiltersGroup>(*group_);
    return *group_;
  }
 private:
  std::shared_ptr<FiltersGroup> group_;
};

// What pickle needs to make an object again.
py::tuple reduced(const py::object& self);

// Adds a class whose objects always have a value. The class gets its own slot for new objects.
// Python then refuses __new__() of the base class and the oldest forms of pickles, which would make
// an object without a value. A pickle of an object holds its bytes or its state, if the class can
// make an object from them.
template <class Value>
py::class_<Value> addClass(py::module_* module, const char* name, const char* text) {
  py::class_<Value> made(*module, name, py::is_final(), text);
  auto* type = reinterpret_cast<PyTypeObject*>(made.ptr());
  type->tp_new = [](PyTypeObject* its, PyObject* args, PyObject* keywords) {
    return its->tp_base->tp_new(its, args, keywords);
  };
  // Python assigns the __class__ of an object only if both classes have the same function here.
  type->tp_free = [](void* object) { PyObject_Free(object); };
  made.def("__reduce__", &reduced);
  return made;
}
// Raises filter_inspect.Refused, which carries the report.
[[noreturn]] void refuse(Report&& report);
// Raises filter_inspect.Refused with this sentence in place of the report's lines.
[[noreturn]] void refuse(const std::string& sentence, Report&& report);
// Raises filter_inspect.Refused. If the report is empty, the text is what the result code means.
[[noreturn]] void refuse(filtersErr_t result, Report&& report);

// Takes the interpreter's lock by `take`. If Python exits meanwhile, it ends this thread, and the
// thread would unwind C++ code that cannot be unwound. So the thread waits for ever instead.
template <class Take>
auto takeLock(Take take) {
  try {
    return take();
  } catch (const abi::__forced_unwind&) {
    for (;;) ::pause();
  }
}
// Releases the lock, and takes it again at the end.
class Unlocked {
 public:
  Unlocked() : state_(PyEval_SaveThread()) {}
  ~Unlocked() {
    takeLock([this] { PyEval_RestoreThread(state_); });
  }
  Unlocked(const Unlocked&) = delete;
  Unlocked& operator=(const Unlocked&) = delete;
 private:
  PyThreadState* const state_;
};
// Takes the lock if this thread does not have it.
class Locked {
 public:
  Locked() : state_(takeLock([] { return PyGILState_Ensure(); })) {}
  ~Locked() { PyGILState_Release(state_); }
  Locked(const Locked&) = delete;
  Locked& operator=(const Locked&) = delete;
 private:
  const PyGILState_STATE state_;
};

// Releases the interpreter's lock while it runs the work, which can take long.
template <class Work>
auto unlocked(Work work) {
  const Unlocked released;
  return work();
}

// Lets signals such as Ctrl-C end long work, and calls the caller's progress function at once and
// then some times a second. Meanwhile other Python threads can run.
class Watch {
 public:
  explicit Watch(Progress progress) : progress_(std::move(progress)) {}
  // May be called with and without the interpreter's lock.
  void tell(std::size_t done, std::size_t all);
 private:
  const Progress progress_;
  std::chrono::steady_clock::time_point next_;
  // The next time at which the work releases the lock for other threads, if it holds the lock. A
  // waiting thread asks for the lock only after five milliseconds without a release, so releases at
  // shorter intervals would starve it.
  std::chrono::steady_clock::time_point turn_;
};

// Asks a question with the options `how`, and watches its progress.
template <class Question>
auto ask(AnalysisOptions how, const Progress& progress, Question question) {
  Watch watch(progress);
  how.progress = [&watch](std::size_t done, std::size_t all) { watch.tell(done, all); };
  watch.tell(0, 1);
  return unlocked([&] { return question(how); });
}

// Gives a class the methods that an abstract class of collections.abc derives from the methods that
// the class already has.
template <class Value>
void addMixins(py::class_<Value>* made, const char* abstract,
               std::initializer_list<const char*> methods) {
  const py::object base = py::module_::import("collections.abc").attr(abstract);
  for (const char* method : methods) made->attr(method) = base.attr(method);
  base.attr("register")(*made);
}

// A copy of an object that never changes is the object itself.
template <class Value>
void addCopies(py::class_<Value>* made) {
  made->def("__copy__", [](const py::object& self) { return self; });
  made->def(
      "__deepcopy__", [](const py::object& self, const py::dict&) { return self; },
      py::arg("memo"));
}

// Raises a KeyError with the key.
[[noreturn]] void refuseKey(const py::object& key);

// What C++ prints, without the last line end.
template <class Printed>
std::string linesOf(const Printed& object) {
  std::ostringstream os;
  os << object;
  std::string lines = os.str();
  if (!lines.empty()) lines.pop_back();
  return lines;
}

// Converts the library's values to members of Python's enumerations, and back. A member's value is
// its name in the library. A value without a name becomes its number.
py::object member(const char* enumeration, std::string_view name);

// The bytes of an object, which stay valid as long as this view exists.
class BytesView {
 public:
  explicit BytesView(const py::object& object);
  ~BytesView() { PyBuffer_Release(&view_); }
  BytesView(const BytesView&) = delete;
  BytesView& operator=(const BytesView&) = delete;

  // False if other code may change the bytes while this view exists.
  bool isReadOnly() const { return view_.readonly != 0; }
  std::string_view bytes() const {
    return {static_cast<const char*>(view_.buf), static_cast<std::size_t>(view_.len)};
  }
 private:
  Py_buffer view_;
};

// Converts a Python object to the argument `name`. For an object of a wrong type, the TypeError
// says that the argument is `kind`.
template <class T>
T argument(const py::handle& object, const char* name, const char* kind) {
  py::detail::make_caster<T> its;
  if (its.load(object, true)) return py::detail::cast_op<T>(its);
  throw py::type_error(std::string(name) + " is " + kind + ", and not " +
                       Py_TYPE(object.ptr())->tp_name);
}

void addReports(py::module_* module);
void addGroups(py::module_* module);
void addQuestions(py::module_* module);
void addTraffic(py::module_* module);

}  // namespace FilterInspectPython

// An argument of a wrong type raises a TypeError, and an impossible value raises a ValueError.
namespace pybind11::detail {

template <const char* kName>
struct type_caster<FilterInspectPython::Text<kName>> {
  PYBIND11_TYPE_CASTER(FilterInspectPython::Text<kName>, const_name("str"));
  bool load(handle source, bool) {
    value.its = FilterInspectPython::textOf(source, kName);
    return true;
  }
};

template <>
struct handle_type_name<FilterInspectPython::Words> {
  static constexpr auto name = const_name("Union[None, str, Mapping, Iterable]");
};

template <class T, const char* kName>
struct type_caster<FilterInspectPython::Whole<T, kName>> {
  using Number = FilterInspectPython::Whole<T, kName>;
  PYBIND11_TYPE_CASTER(Number, const_name("int"));
  bool load(handle source, bool) {
    if (!PyIndex_Check(source.ptr())) {
      throw type_error(std::string(kName) + " is a whole number, and not " +
                       Py_TYPE(source.ptr())->tp_name);
    }
    const auto index = reinterpret_steal<object>(PyNumber_Index(source.ptr()));
    if (!index) throw error_already_set();
    make_caster<T> number;
    if (!number.load(index, true)) {
      using Limits = std::numeric_limits<T>;
      throw value_error(std::string(kName) + " is a number from " + std::to_string(Limits::min()) +
                        " to " + std::to_string(Limits::max()) + ", and not " +
                        str(index).cast<std::string>());
    }
    value.its = cast_op<T>(number);
    return true;
  }
};

template <class Value>
constexpr auto kNamedType = const_name("");
template <>
inline constexpr auto kNamedType<FiltersInspect::Order> = const_name("Union[str, Order]");
template <>
inline constexpr auto kNamedType<FiltersInspect::Link> = const_name("Union[str, Link]");
template <>
inline constexpr auto kNamedType<FiltersCommon::filtersGroupStage_t> =
    const_name("Union[str, int, Stage]");
template <>
inline constexpr auto kNamedType<FiltersCommon::filtersGroupType_t> =
    const_name("Union[str, int, Type]");

template <class Value>
struct type_caster<FilterInspectPython::Named<Value>> {
  PYBIND11_TYPE_CASTER(FilterInspectPython::Named<Value>, kNamedType<Value>);
  bool load(handle source, bool) {
    value.its = FilterInspectPython::named(reinterpret_borrow<object>(source),
                                           static_cast<Value*>(nullptr));
    return true;
  }
};

}  // namespace pybind11::detail

#endif  // FILTER_INSPECT_PYTHON_BINDING_H_
