# Finds Python and pybind11 for the package filter_inspect, and decides if the package is built. By
# default it is built if Python and pybind11 are found, this tree is the top project, and the
# compiler is g++. A cross compiler, sanitizers or coverage would give a module that this machine's
# Python cannot load. A build of this kind makes the package only if FILTER_COMMON_BUILD_PYTHON is
# turned on.
set(build_python OFF)
if(FILTER_COMMON_BUILD_INSPECT AND PROJECT_IS_TOP_LEVEL AND NOT CMAKE_CROSSCOMPILING
   AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU"
   AND NOT CMAKE_CXX_FLAGS MATCHES "-fsanitize|--coverage")
  set(build_python ON)
endif()
if(build_python OR FILTER_COMMON_BUILD_PYTHON)
  # Debian's packages for Python work only with the system's Python.
  if(NOT DEFINED Python_EXECUTABLE AND EXISTS /usr/bin/python3)
    set(Python_EXECUTABLE /usr/bin/python3)
  endif()
  find_package(Python 3.9 COMPONENTS Interpreter Development.Module QUIET)
  find_package(pybind11 2.10 CONFIG QUIET)
  if(NOT Python_FOUND OR NOT pybind11_FOUND)
    set(build_python OFF)
  endif()
endif()
cmake_dependent_option(FILTER_COMMON_BUILD_PYTHON "Build filter_inspect, the package for Python"
                       ${build_python} FILTER_COMMON_BUILD_INSPECT OFF)
if(FILTER_COMMON_BUILD_PYTHON AND NOT (Python_FOUND AND pybind11_FOUND))
  message(FATAL_ERROR "The package for Python needs the headers of Python 3.9 and of pybind11: run "
                      "scripts/setup, or build without it, with -DFILTER_COMMON_BUILD_PYTHON=OFF")
endif()
