#!/bin/bash
# Builds somebody else's project against an installed tree, once with find_package and once with
# pkg-config, and runs both programs:
#   consumer_test.sh <folder of the project> <prefix of the installed tree>
# The environment names the tools, as tests/packaging.cmake sets it.
set -euo pipefail
command -v pkg-config >/dev/null || { echo "consumer: skipped, needs pkg-config"; exit 77; }
project=$1
prefix=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

options=(-DCMAKE_PREFIX_PATH="$prefix")
[[ -z "${FIND_ROOT_PATH:-}" ]] || options+=(-DCMAKE_FIND_ROOT_PATH="$prefix;$FIND_ROOT_PATH")
cmake -S "$project" -B "$work/build" "${options[@]}"
grep "^filter_common_DIR:PATH=$prefix/" "$work/build/CMakeCache.txt"
cmake --build "$work/build"
ctest --test-dir "$work/build" --no-tests=error --output-on-failure

PKG_CONFIG_PATH=$(dirname "$(find "$prefix" -name filter_common.pc)")
export PKG_CONFIG_PATH
read -ra flags <<<"$(pkg-config --cflags --libs filter_common)"
read -ra rpaths <<<"$(pkg-config --libs-only-L filter_common | sed 's/-L/-Wl,-rpath,/g')"
if [[ -e "$project/consumer.c" ]]; then
  compile=("$CC" -std=c11 "$project/consumer.c")
else
  compile=("$CXX" -std=c++17 "$project/consumer.cpp")
fi
(set -x; "${compile[@]}" "${flags[@]}" "${rpaths[@]}" -o "$work/consumer")
# shellcheck disable=SC2086  # an emulator comes with its arguments
${EMULATOR:-} "$work/consumer"
