#!/bin/bash
# Packs a build, checks the packages with Debian's tools, unpacks all of them into an empty root and
# builds the examples against it. If the build has the second library, this test includes its
# packages.
#   debian_packages_test.sh <build folder>
set -euo pipefail
command -v dpkg-shlibdeps file pkg-config || { echo "debian_packages: skipped" && exit 77; }
build=$1
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
fail() { echo "debian_packages: $1" && exit 1; }

# CPack gives folders the modes that the umask allows.
(umask 022 && cd "$build" && cpack -G DEB -B "$work/packages")
runtime=$(echo "$work"/packages/libfilter-common1_*.deb)
development=$(echo "$work"/packages/libfilter-common-dev_*.deb)
inspect=() # the two packages of the second library
if grep -q '^FILTER_COMMON_BUILD_INSPECT:BOOL=ON' "$build/CMakeCache.txt"; then
  inspect=("$work"/packages/libfilter-inspect1_*.deb "$work"/packages/libfilter-inspect-dev_*.deb)
fi
tool=() # the package of the program
if grep -q '^FILTER_COMMON_BUILD_TOOLS:BOOL=ON' "$build/CMakeCache.txt"; then
  tool=("$work"/packages/filter-inspect_*.deb)
fi
python=() # the package for Python
if grep -q '^FILTER_COMMON_BUILD_PYTHON:BOOL=ON' "$build/CMakeCache.txt"; then
  python=("$work"/packages/python3-filter-inspect_*.deb)
fi

if grep -q '^FILTER_COMMON_BUILD_DOCS:BOOL=ON' "$build/CMakeCache.txt"; then
  dpkg-deb -c "$work"/packages/libfilter-common-doc_*.deb | grep '/html/index.html$'
fi

# field <package> <field> <pattern for the whole value>
field() { dpkg-deb -f "$1" "$2" | grep -Ex -- "$3" || fail "expected $2 $3 of $1"; }
field "$runtime" Section libs
field "$runtime" Depends '(.*, )?libprotobuf[0-9]+ .*'
field "$runtime" Depends '(.*, )?libstdc\+\+6 .*'
field "$development" Section libdevel
field "$development" Depends "libfilter-common1 \(= $(dpkg-deb -f "$runtime" Version)\)"
field "$development" Recommends 'libprotobuf-dev \(>= [0-9.]+\), libprotobuf-dev \(<< [0-9.]+~\)'
contact=$(sed -n 's/^FILTER_COMMON_CONTACT:[A-Z]*=//p' "$build/CMakeCache.txt")
same="\\(= $(dpkg-deb -f "$runtime" Version)\\)"
if [[ ${#inspect[@]} -gt 0 ]]; then
  field "${inspect[0]}" Section libs
  field "${inspect[0]}" Depends "(.*, )?libfilter-common1 $same(, .*)?"
  field "${inspect[0]}" Depends '(.*, )?libprotobuf[0-9]+ .*'
  field "${inspect[1]}" Section libdevel
  field "${inspect[1]}" Depends "libfilter-inspect1 $same, libfilter-common-dev $same"
  dpkg-deb -I "${inspect[0]}" shlibs | grep "^libfilter_inspect 1 libfilter-inspect1 "
fi
if [[ ${#tool[@]} -gt 0 ]]; then
  field "${tool[0]}" Section utils
  field "${tool[0]}" Depends "(.*, )?libfilter-inspect1 $same(, .*)?"
  field "${tool[0]}" Depends '(.*, )?libpcap0\.8 .*'
  field "${tool[0]}" Depends '(.*, )?libstdc\+\+6 .*'
fi
if [[ ${#python[@]} -gt 0 ]]; then
  field "${python[0]}" Section python
  field "${python[0]}" Depends "(.*, )?libfilter-inspect1 $same(, .*)?"
  field "${python[0]}" Depends '(.*, )?python3 \(<< 3\.[0-9]+~\)(, .*)?'
fi
for package in "$runtime" "$development" "${inspect[@]}" "${tool[@]}" "${python[@]}"; do
  [[ $(dpkg-deb -f "$package" Maintainer) == "$contact" ]] || fail "another contact"
  field "$package" Multi-Arch "$([[ "$package" == "${tool-}" ]] && echo foreign || echo same)"
  field "$package" Architecture "$(dpkg --print-architecture)"
  if dpkg-deb -c "$package" | grep '^d' | grep -v '^drwxr-xr-x'; then fail "closed folders"; fi
  documents=$(dpkg-deb -c "$package" | grep -cE '/(copyright|changelog(\.Debian)?\.gz)$')
  [[ $documents -eq 3 ]] || fail "$documents of 3 documents"
done
dpkg-deb -I "$runtime" shlibs | grep "^libfilter_common 1 libfilter-common1 "

# Lintian's complaints about the contact are suppressed, because the packager sets the contact. So
# is the complaint that the changelog closes no bug report.
if command -v lintian; then
  lintian --allow-root --fail-on error,warning --suppress-tags \
    bogus-mail-host,bogus-mail-host-in-debian-changelog,root-in-contact,initial-upload-closes-no-bugs \
    "$work"/packages/*.deb
else
  echo "debian_packages: lintian is not installed, so it did not look at the packages"
fi

# Only the runtime packages contain the libraries, with their sonames and versions. No file is in
# two packages.
root="$work/root of another machine"
# unpack <runtime package> <development package> <library>
unpack() {
  rm -rf "$work/runtime" "$work/development"
  dpkg-deb -x "$1" "$work/runtime"
  dpkg-deb -x "$2" "$work/development"
  libraries=$(cd "$work/runtime/usr/lib"/* && echo *)
  [[ " $libraries " == *" $3.so.1 $3.so.1."* ]] || fail "$libraries"
  [[ " $libraries " != *".so "* && ! -e "$work/runtime/usr/include" ]] || fail "development files"
  for kind in runtime development; do
    both=$(cd "$work/$kind" && find . ! -type d -exec test -e "$root/{}" \; -print)
    [[ -z $both ]] || fail "in two packages: $both"
    cp -a "$work/$kind/." "$root"
  done
}
mkdir "$root"
unpack "$runtime" "$development" libfilter_common
if [[ ${#inspect[@]} -gt 0 ]]; then
  # If a program asks for the second library, the error says that this library is missing.
  cat >"$work/CMakeLists.txt" <<END
cmake_minimum_required(VERSION 3.16)
project(asks LANGUAGES C CXX)
find_package(filter_common 1 REQUIRED COMPONENTS inspect)
END
  if cmake -S "$work" -B "$work/asks" -DCMAKE_PREFIX_PATH="$root/usr" 2>"$work/refusal"; then
    fail "a library that is not installed was found"
  fi
  grep "inspect is not installed" "$work/refusal"
  unpack "${inspect[@]}" libfilter_inspect
fi
if [[ ${#python[@]} -gt 0 ]]; then
  dpkg-deb -x "${python[0]}" "$root"
  libraries=$(echo "$root"/usr/lib/*/libfilter_inspect.so.1)
  LD_LIBRARY_PATH=${libraries%/*} PYTHONPATH=$root/usr/lib/python3/dist-packages /usr/bin/python3 -B \
    -c 'import filter_inspect.testing as t; assert t.Group(7).id == 7'
fi

"$(dirname "$0")/consumer_test.sh" "$root/usr"
