#!/bin/bash
# Builds a copy of the sources in another folder; what comes out must be the same bytes.
#   reproducible_test.sh <folder of the sources> <folder for the copy> <library>...
# The environment names the tools and the kind of build, as tests/packaging.cmake sets it. The copy
# has the times of the sources, so that the next run builds only what changed.
set -euo pipefail
source_dir=$1
work=$2

rm -rf "$work/elsewhere"
mkdir -p "$work/elsewhere"
tar -C "$source_dir" --exclude=./build --exclude="./${work#"$source_dir"/}" --exclude=./.git --format=posix -c . |
  tar -C "$work/elsewhere" -x
cmake -S "$work/elsewhere" -B "$work/a folder of its own" -DBUILD_TESTING=OFF \
  -DCMAKE_BUILD_TYPE="$CMAKE_BUILD_TYPE" -DCMAKE_C_FLAGS="$CFLAGS" -DCMAKE_CXX_FLAGS="$CXXFLAGS"
cmake --build "$work/a folder of its own" --target filter_common
for library in "${@:3}"; do
  again=$(find "$work/a folder of its own" -type f -name "$(basename "$(readlink -f "$library")")")
  cmp "$library" "$again"
  echo "reproducible: $(basename "$library"): $(sha256sum <"$again")"
done
