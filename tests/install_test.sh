#!/bin/bash
# Installs a build into a fresh prefix and moves it to where others use it.
#   install_test.sh <build folder> <prefix>
set -euo pipefail
build=$1
prefix=$2
first=$prefix-first
rm -rf "$prefix" "$first"
cmake --install "$build" --prefix "$first"
mv "$first" "$prefix"

# What users rely on to be where it is.
for file in include/filter_common/filter_{types,serialized,matches,actions,counter,entries,groups}.h \
  include/filter_common/filter_{matches,actions,entries,groups}_c.h \
  include/filter_common/filter_{matches,actions,counter,entries,groups}.pb.h \
  share/filter_common/proto/filter_{matches,actions,counter,entries,groups}.proto \
  share/doc/filter_common/{README.md,docs/design.md}; do
  [[ -f "$prefix/$file" ]] || { echo "install: $file is missing"; exit 1; }
done

# Nothing in it knows where it was built or first installed. The library's debug information is
# left out of this: it names system headers, and reproducible_test.sh looks at all of it.
if grep -rI -e "$first" -e "$build" "$prefix"; then
  echo "install: a text file names a folder of the build"
  exit 1
fi
library=$(find "$prefix" -name libfilter_common.so)
"$READELF" --dynamic "$library" | grep -E 'RUNPATH.*\[\$ORIGIN\]'
