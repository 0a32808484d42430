#!/bin/bash
# Builds both libraries with the libraries of platform/plain, and builds a program that uses all
# four.
#   device_platform_test.sh <folder of the library's sources> <folder to build in>
# tests/packaging.cmake sets environment variables with the names of the tools. The next run builds only
# what changed.
set -euo pipefail
here=$(dirname "$0")
work=$2

# To save time, the build has no debug information and no optimisation, and joins the sources.
build() {
  cmake -S "$2" -B "$work/$1" --log-level=WARNING -DCMAKE_BUILD_TYPE=None \
    -DCMAKE_UNITY_BUILD=ON -DCMAKE_C_FLAGS="$CFLAGS" -DCMAKE_CXX_FLAGS="$CXXFLAGS" \
    -DCMAKE_PREFIX_PATH="$work/device" -DCMAKE_INSTALL_PREFIX="$work/device" "${@:3}" \
    ${FIND_ROOT_PATH:+"-DCMAKE_FIND_ROOT_PATH=$work/device;$FIND_ROOT_PATH"}
  cmake --build "$work/$1"
}
build platform "$1/platform/plain"
rm -rf "$work/device"
cmake --install "$work/platform"
build library "$1" -DFILTER_COMMON_PLATFORM=device -DFILTER_COMMON_BUILD_INSPECT=ON \
  -DFILTER_COMMON_BUILD_PYTHON=OFF
cmake --install "$work/library"
build round_trip "$here"

# shellcheck disable=SC2086  # an emulator comes with its arguments
${EMULATOR:-} "$work/round_trip/round_trip"
${EMULATOR:-} "$work/round_trip/counts" | "$1/benchmarks/report.py" --heap
if find "$work/device" -name '*standin*' | grep .; then
  echo "device_platform: the stand-ins are installed for a device"
  exit 1
fi
