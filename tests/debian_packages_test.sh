#!/bin/bash
# Packs a build, looks at the packages as Debian's tools show them, unpacks both into an empty root
# and builds the examples against that.
#   debian_packages_test.sh <build folder>
set -euo pipefail
for tool in dpkg-shlibdeps file pkg-config; do
  command -v "$tool" >/dev/null || { echo "debian_packages: skipped, needs $tool"; exit 77; }
done
build=$1
here=$(dirname "$0")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# CPack gives folders the modes that the umask leaves.
(umask 022 && cd "$build" && cpack -G DEB -B "$work/packages")
runtime=$(echo "$work"/packages/libfilter-common1_*.deb)
development=$(echo "$work"/packages/libfilter-common-dev_*.deb)
version=$(dpkg-deb -f "$runtime" Version)

# expect_field <package> <field> <pattern for all of it>
expect_field() {
  local value
  value=$(dpkg-deb -f "$1" "$2")
  echo "$(basename "$1"): $2: $value"
  grep -Eqx -- "$3" <<<"$value" || { echo "debian_packages: expected $2: $3"; exit 1; }
}
expect_field "$runtime" Package libfilter-common1
expect_field "$runtime" Section libs
expect_field "$runtime" Depends '(.*, )?libprotobuf[0-9]+ .*'
expect_field "$runtime" Depends '(.*, )?libstdc\+\+6 .*'
expect_field "$development" Package libfilter-common-dev
expect_field "$development" Section libdevel
expect_field "$development" Depends "libfilter-common1 \(= $version\)"
expect_field "$development" Recommends 'libprotobuf-dev \(>= [0-9.]+\), libprotobuf-dev \(<< [0-9.]+~\)'
contact=$(sed -n 's/^FILTER_COMMON_CONTACT:[A-Z]*=//p' "$build/CMakeCache.txt")
for package in "$runtime" "$development"; do
  [[ "$(dpkg-deb -f "$package" Maintainer)" == "$contact" ]]
  expect_field "$package" Multi-Arch same
  expect_field "$package" Architecture "$(dpkg --print-architecture)"
done
dpkg-deb -I "$runtime" shlibs | grep "^libfilter_common 1 libfilter-common1 "

# Both can be installed: no file is in both, and folders are open to all.
files() { dpkg-deb -c "$1" | awk '!/^d/ { print $6 }'; }
both=$(comm -12 <(files "$runtime" | sort) <(files "$development" | sort))
[[ -z "$both" ]] || { echo "debian_packages: in both packages: $both"; exit 1; }
for package in "$runtime" "$development"; do
  if dpkg-deb -c "$package" | grep '^d' | grep -v '^drwxr-xr-x'; then
    echo "debian_packages: these folders are closed"
    exit 1
  fi
done

# The runtime package alone has the libraries, by their sonames and versions.
root="$work/root of another machine"
dpkg-deb -x "$runtime" "$root"
libraries=$(cd "$root/usr/lib"/* && echo *)
echo "$(basename "$runtime"): $libraries"
[[ " $libraries " == *" libfilter_common.so.1 libfilter_common.so.1."* ]]
[[ " $libraries " != *".so "* && ! -e "$root/usr/include" ]]
dpkg-deb -x "$development" "$root"

"$here/consumer_test.sh" "$root/usr"
