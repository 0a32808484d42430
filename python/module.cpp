// The module filter_inspect._core: libfilter_inspect for Python.

#include "binding.h"

PYBIND11_MODULE(_core, module) {
  module.doc() = "libfilter_inspect for Python; import filter_inspect instead.";
  FilterInspectPython::addReports(&module);
  FilterInspectPython::addGroups(&module);
  FilterInspectPython::addQuestions(&module);
  FilterInspectPython::addTraffic(&module);
}
