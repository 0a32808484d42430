// The module filter_inspect._core: libfilter_inspect for Python.

#include "binding.h"

PYBIND11_MODULE(_core, module) {
  module.doc() = "libfilter_inspect for Python; import filter_inspect instead.";
  // An object of a wrong type within a list or a mapping is as wrong as an argument.
  pybind11::register_local_exception_translator([](std::exception_ptr fault) {
    try {
      if (fault) std::rethrow_exception(fault);
    } catch (const pybind11::cast_error& error) {
      PyErr_SetString(PyExc_TypeError, error.what());
    }
  });
  // The classes and functions belong to the package from which programs import them.
  const pybind11::object name = module.attr("__name__");
  module.attr("__name__") = "filter_inspect";
  FilterInspectPython::addReports(&module);
  FilterInspectPython::addGroups(&module);
  FilterInspectPython::addQuestions(&module);
  FilterInspectPython::addTraffic(&module);
  module.attr("__name__") = name;
}
