#!/bin/bash
# Builds a copy of the sources in another folder; what comes out must be the same bytes.
#   reproducible_test.sh <folder of the sources> <library>...
# The environment names the tools and the kind of build, as tests/packaging.cmake sets it.
set -euo pipefail
source_dir=$1
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

mkdir "$work/elsewhere"
tar -C "$source_dir" --exclude=./build --exclude=./.git -c . | tar -C "$work/elsewhere" -x
cmake -S "$work/elsewhere" -B "$work/a folder of its own" -DBUILD_TESTING=OFF
cmake --build "$work/a folder of its own" --target filter_common
for library in "${@:2}"; do
  again=$(find "$work/a folder of its own" -type f -name "$(basename "$(readlink -f "$library")")")
  cmp "$library" "$again"
  echo "reproducible: $(basename "$library"): $(sha256sum <"$again")"
done
