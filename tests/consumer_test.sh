#!/bin/bash
# Builds the installed examples as a user would, and runs them. Builds them with find_package, with
# and without the development files of the message runtime, and then with pkg-config.
#   consumer_test.sh <prefix of the installed tree>
# tests/packaging.cmake sets environment variables with the names of the tools.
set -euo pipefail
command -v pkg-config >/dev/null || { echo "consumer: skipped, needs pkg-config" && exit 77; }
prefix=$1
here=$(dirname "$0")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
examples=$(dirname "$(find "$prefix" -path '*/examples/CMakeLists.txt')")
read -ra emulator <<<"${EMULATOR:-}"

# build <folder> <further options>...
build() {
  cmake -S "$examples" -B "$work/$1" -DCMAKE_PREFIX_PATH="$prefix" "${@:2}" \
    ${FIND_ROOT_PATH:+"-DCMAKE_FIND_ROOT_PATH=$prefix;$FIND_ROOT_PATH"}
  grep "^filter_common_DIR:PATH=$prefix/" "$work/$1/CMakeCache.txt"
  cmake --build "$work/$1"
  "$here/examples_test.sh" "$work/$1" "${emulator[@]}"
  "${emulator[@]}" "$work/$1/procedural"
  if [[ -e $prefix/include/filter_inspect ]]; then
    "${emulator[@]}" "$work/$1/inspect_c"
    "${emulator[@]}" "$work/$1/inspect_cpp"
  fi
}
build all
build plain -DCMAKE_DISABLE_FIND_PACKAGE_Protobuf=ON
[[ -e $work/all/change_message && ! -e $work/plain/change_message ]]

PKG_CONFIG_PATH=$(dirname "$(find "$prefix" -name filter_common.pc)")
export PKG_CONFIG_PATH
# compile <package> <source> <compiler and its options>...
compile() {
  # pkg-config escapes blanks in paths, so a shell must read its output.
  eval "flags=($(pkg-config --cflags --libs "$1"))"
  eval "folders=($(pkg-config --libs-only-L filter_common))"
  # shellcheck disable=SC2086,SC2154  # options with their arguments; eval sets the arrays
  "${@:3}" -o "$work/a.out" "$examples/$2" "${flags[@]}" "${folders[@]/#-L/-Wl,-rpath,}" $LDFLAGS
}
PKG_CONFIG_LIBDIR=$work compile filter_common procedural.c "$CC" -std=c11
"${emulator[@]}" "$work/a.out"
if [[ -e $prefix/include/filter_inspect ]]; then
  PKG_CONFIG_LIBDIR=$work compile filter_inspect inspect.c "$CC" -std=c11
  "${emulator[@]}" "$work/a.out"
fi
compile filter_common_messages change_message.cpp "$CXX" -std=c++17
mv "$work/a.out" "$work/all/change_message"
"$here/examples_test.sh" "$work/all" "${emulator[@]}"

# Only message headers may include headers of the message runtime. No header may include headers of
# the libraries that the second library uses internally.
find "$prefix/include" -path '*/filter_*/*.h' ! -name "*.pb.h" -printf "#include <%P>\n" \
  >"$work/all.cpp"
"$CXX" -std=c++17 -E -I"$prefix/include" "$work/all.cpp" -o "$work/all.ii"
if grep -E 'google/protobuf|nlohmann' "$work/all.ii"; then
  echo "consumer: a header includes another library's"
  exit 1
fi
