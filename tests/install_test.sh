#!/bin/bash
# Installs a build into an empty prefix, then moves it to the folder that other tests use.
#   install_test.sh <build folder> <prefix>
set -euo pipefail
build=$1
prefix=$2
rm -rf "$prefix" "$prefix-first"
cmake --install "$build" --prefix "$prefix-first"
mv "$prefix-first" "$prefix"

# Users rely on the paths of these files.
(cd "$prefix" && ls share/doc/filter_common/{README.md,docs/design.md} \
  share/filter_common/proto/filter_{matches,actions,counter,entries,groups}.proto \
  include/filter_common/filter_{types,serialized,matches,actions,counter,entries,groups}.h \
  include/filter_common/filter_{matches,actions}.def \
  include/filter_common/filter_{matches,actions,entries,groups}_c.h \
  include/filter_common/filter_{matches,actions,counter,entries,groups}.pb.h)
if grep -q '^FILTER_COMMON_BUILD_INSPECT:BOOL=ON' "$build/CMakeCache.txt"; then
  (cd "$prefix" && ls include/filter_inspect/findings.def \
    include/filter_inspect/filter_{analysis,decode,diff,explain,head,inspect_c,names,report,text}.h)
fi
if grep -q '^FILTER_COMMON_BUILD_TOOLS:BOOL=ON' "$build/CMakeCache.txt"; then
  (cd "$prefix" && ls bin/filter-inspect share/man/man1/filter-inspect.1 \
    share/man/man5/filter-groups.5 share/doc/filter-inspect/examples/edge.txt \
    share/bash-completion/completions/filter-inspect \
    share/zsh/vendor-completions/_filter-inspect \
    share/fish/vendor_completions.d/filter-inspect.fish)
fi
if grep -q '^FILTER_COMMON_BUILD_PYTHON:BOOL=ON' "$build/CMakeCache.txt"; then
  PYTHONPATH=$prefix/lib/python3/dist-packages /usr/bin/python3 -B \
    -c 'import filter_inspect.testing as t; assert t.Group(7).id == 7'
fi

# No installed file may contain the path of the folder in which it was built or first installed.
# This check ignores the library's debug information, which names system headers.
# reproducible_test.sh checks the debug information.
if grep -rI -e "$prefix-first" -e "$build" "$prefix"; then
  echo "install: a text file names a folder of the build"
  exit 1
fi
while read -r library; do
  "$READELF" --dynamic "$library" | grep -E 'RUNPATH.*\[\$ORIGIN\]'
done < <(find "$prefix" -name 'libfilter_*.so')
