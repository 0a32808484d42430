#!/bin/bash
# Builds a copy of the sources in another folder, which must give the same bytes. The copy is first
# built without libfilter_inspect, and then with it; the second build must not change the other
# libraries.
#   reproducible_test.sh <folder of the sources> <build folder> <library>...
# tests/packaging.cmake sets environment variables with the names of the tools. The copy is compiled with
# the settings of this build.
# The copied files keep their times, so that the next run builds only what changed.
set -euo pipefail
work=$2/tests/reproducible
copy=$work/elsewhere
build="$work/a folder of its own"

rm -rf "$copy"
mkdir -p "$copy"
tar -C "$1" --exclude=./build --exclude="./${work#"$1"/}" --exclude=./.git --format=posix -c . |
  tar -C "$copy" -x

# same <library>: builds the target of the library and compares the bytes.
same() {
  target=$(basename "$1")
  target=${target#lib}
  target=${target%%.so*}
  inspect=$([[ $target == filter_inspect ]] && echo ON || echo OFF)
  cmake -S "$copy" -B "$build" -DBUILD_TESTING=OFF "${settings[@]}" \
    -DFILTER_COMMON_BUILD_INSPECT="$inspect"
  cmake --build "$build" --target "$target"
  cmp "$1" "$(find "$build" -name "$(basename "$1")")"
}
names='BUILD_TYPE|UNITY_BUILD(_BATCH_SIZE)?|INTERPROCEDURAL_OPTIMIZATION|C(XX)?_FLAGS(_[A-Z]+)?'
mapfile -t settings < <(sed -nE "s/^(CMAKE_($names)):[A-Z]+=/-D\1=/p" "$2/CMakeCache.txt")
for library in "${@:3}"; do same "$library"; done
