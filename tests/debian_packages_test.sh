#!/bin/bash
# Packs a build, looks at the packages as Debian's tools show them, unpacks both into an empty root
# and builds the examples against that.
#   debian_packages_test.sh <build folder>
set -euo pipefail
command -v dpkg-shlibdeps file pkg-config || { echo "debian_packages: skipped" && exit 77; }
build=$1
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
fail() { echo "debian_packages: $1" && exit 1; }

# CPack gives folders the modes that the umask leaves.
(umask 022 && cd "$build" && cpack -G DEB -B "$work/packages")
runtime=$(echo "$work"/packages/libfilter-common1_*.deb)
development=$(echo "$work"/packages/libfilter-common-dev_*.deb)

# field <package> <field> <pattern for all of it>
field() { dpkg-deb -f "$1" "$2" | grep -Ex -- "$3" || fail "expected $2 $3 of $1"; }
field "$runtime" Section libs
field "$runtime" Depends '(.*, )?libprotobuf[0-9]+ .*'
field "$runtime" Depends '(.*, )?libstdc\+\+6 .*'
field "$development" Section libdevel
field "$development" Depends "libfilter-common1 \(= $(dpkg-deb -f "$runtime" Version)\)"
field "$development" Recommends 'libprotobuf-dev \(>= [0-9.]+\), libprotobuf-dev \(<< [0-9.]+~\)'
contact=$(sed -n 's/^FILTER_COMMON_CONTACT:[A-Z]*=//p' "$build/CMakeCache.txt")
for package in "$runtime" "$development"; do
  [[ $(dpkg-deb -f "$package" Maintainer) == "$contact" ]] || fail "another contact"
  field "$package" Multi-Arch same
  field "$package" Architecture "$(dpkg --print-architecture)"
  if dpkg-deb -c "$package" | grep '^d' | grep -v '^drwxr-xr-x'; then fail "closed folders"; fi
done
dpkg-deb -I "$runtime" shlibs | grep "^libfilter_common 1 libfilter-common1 "

# The runtime package alone has the libraries, by their sonames and versions; no file is in both.
root="$work/root of another machine"
dpkg-deb -x "$runtime" "$root"
libraries=$(cd "$root/usr/lib"/* && echo *)
[[ " $libraries " == *" libfilter_common.so.1 libfilter_common.so.1."* ]] || fail "$libraries"
[[ " $libraries " != *".so "* && ! -e "$root/usr/include" ]] || fail "development files"
dpkg-deb -x "$development" "$work/development"
both=$(cd "$work/development" && find . ! -type d -exec test -e "$root/{}" \; -print)
[[ -z $both ]] || fail "in both packages: $both"
dpkg-deb -x "$development" "$root"

"$(dirname "$0")/consumer_test.sh" "$root/usr"
