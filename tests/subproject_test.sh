#!/bin/bash
# Configures a project that has the library in a subfolder. The library is installed only if the
# project asks for this, and does not change settings of the whole build. The second library is
# built only if the project asks for it. The library refuses to be built as a static library or in a
# project without C++.
#   subproject_test.sh <folder of the sources>
# tests/packaging.cmake sets environment variables with the names of the tools.
set -euo pipefail
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
unset CMAKE_BUILD_TYPE

cat >"$work/CMakeLists.txt" <<END
cmake_minimum_required(VERSION 3.25)
project(parent LANGUAGES CXX)
add_subdirectory("$1" filter_common)
get_target_property(ignored filter_common::messages TYPE)
if(TARGET filter_common::inspect)
  message(STATUS "the second library is there")
endif()
END
configure() {
  cmake -S "$work" -B "$work/build" ${FIND_ROOT_PATH:+"-DCMAKE_FIND_ROOT_PATH=$FIND_ROOT_PATH"} "$@"
}
configure >"$work/log"
if grep -E '^(BUILD_|CMAKE_BUILD_TYPE:[A-Z]*=.|CMAKE_C(XX)?_STANDARD|CPACK_|DART_)' \
  "$work/build/CMakeCache.txt"; then
  echo "subproject: the library settled this for its parent"
  exit 1
fi
if grep 'the second library is there' "$work/log"; then exit 1; fi
# The library is not built here, so installing any of its files would fail.
cmake --install "$work/build" --prefix "$work/installed"
[[ ! -e $work/installed ]]
configure -DFILTER_COMMON_BUILD_INSPECT=ON | grep 'the second library is there'
cmake --install "$work/build" --prefix "$work/installed"
[[ ! -e $work/installed ]]
if configure -DBUILD_SHARED_LIBS=OFF 2>"$work/refusal"; then exit 1; fi
grep BUILD_SHARED_LIBS=OFF "$work/refusal"
sed -i 's/LANGUAGES CXX/LANGUAGES C/' "$work/CMakeLists.txt"
rm -rf "$work/build"
if configure 2>"$work/refusal"; then exit 1; fi
grep 'LANGUAGES C CXX' "$work/refusal"
