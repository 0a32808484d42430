// The module filter_inspect._core: libfilter_inspect for Python.

#include "binding.h"

namespace {

// Makes pybind11's base of all classes refuse to make an object of a class that holds no C++ value.
// Without this, pybind11 throws through Python's own code, which ends the process.
void guardBaseClass() {
  namespace detail = pybind11::detail;
  auto* base = reinterpret_cast<PyTypeObject*>(detail::get_internals().instance_base);
  static const newfunc make = base->tp_new;
  base->tp_new = [](PyTypeObject* type, PyObject* args, PyObject* keywords) {
    if (!detail::all_type_info(type).empty()) return make(type, args, keywords);
    PyErr_Format(PyExc_TypeError, "cannot create '%s' objects", type->tp_name);
    return static_cast<PyObject*>(nullptr);
  };
}

}  // namespace

PYBIND11_MODULE(_core, module) {
  module.doc() = "libfilter_inspect for Python; import filter_inspect instead.";
  // An object of a wrong type within a list or a mapping raises a TypeError, as a wrong argument
  // does.
  pybind11::register_local_exception_translator([](std::exception_ptr fault) {
    try {
      if (fault) std::rethrow_exception(fault);
    } catch (const pybind11::cast_error& error) {
      PyErr_SetString(PyExc_TypeError, error.what());
    }
  });
  guardBaseClass();
  module.attr("__version__") = FILTER_INSPECT_VERSION;
  // The classes and functions belong to the package from which programs import them.
  const pybind11::object name = module.attr("__name__");
  module.attr("__name__") = "filter_inspect";
  FilterInspectPython::addReports(&module);
  FilterInspectPython::addGroups(&module);
  FilterInspectPython::addQuestions(&module);
  FilterInspectPython::addTraffic(&module);
  module.attr("__name__") = name;
}
