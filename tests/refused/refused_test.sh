#!/bin/bash
# Checks that wrong code does not compile, and that the compiler gives the expected reason.
#   refused_test.sh TREE SCRATCH COMPILER [ARGUMENT...]
set -euo pipefail
tree=$1 scratch=$2
shift 2
here=$(dirname "$0")
compile() { LC_ALL=C "${compiler[@]}" -std=c++17 -Werror=switch "$@" 2>&1; }

# expect TEXT FILE [ARGUMENT...]: checks that the file does not compile, and that the compiler's
# message has TEXT.
expect() {
  local text=$1 says
  if says=$(compile "${@:2}"); then
    echo "compiles, and should say: $text"
    exit 1
  fi
  grep -qE "$text" <<<"$says" || { printf '%s\ndoes not say: %s\n' "$says" "$text" && exit 1; }
}

# without FILE CHANGE: copies the tree and removes a part of FILE with the sed command CHANGE.
without() {
  rm -rf "$scratch"
  mkdir "$scratch"
  cp -r "$tree/include" "$tree/src" "$scratch"
  sed -i -E "$2" "$scratch/$1"
  ! cmp -s "$tree/$1" "$scratch/$1" || { echo "nothing to take out of $1: $2" && exit 1; }
}

compiler=("$1" -I"$scratch/include" "${@:2}")
headers=include/filter_common
rows=("$here/visits.cpp" -I"$scratch/src" -fsyntax-only)
# lacks CLASS LINES WHAT: checks that CLASS does not compile without the lines that match LINES.
# WHAT is the word for these lines in the compiler's message.
lacks() {
  local header=$headers/filter_matches.h
  [[ $1 == Match* ]] || header=$headers/filter_actions.h
  without $header "/class FILTERS_API $1 /,/^}/{/ $2/d}"
  expect "the class needs $3 of its own" "${rows[@]}"
}
for class in MatchTTL ActionSetPcp; do
  for way in To From; do lacks $class "convert$way" conversions; done
  lacks $class operator== "an operator=="
done
lacks MatchAll operator== "an operator=="
# If a class has data of its own, it must have a comparison of its own, because the comparison of
# its base would ignore these data.
without $headers/filter_matches.h '/class FILTERS_API MatchSrcPort /,/^}/s/^}/int more = 0;\n}/'
expect "the class needs an operator== of its own" "${rows[@]}"
without $headers/filter_matches.def '/FILTERS_MATCH_TTL/d'
expect "FILTERS_MATCH_TTL.* not handled in switch" "${rows[@]}"
without $headers/filter_actions.def '/FILTERS_ACTION_DENY/d'
expect "FILTERS_ACTION_DENY.* not handled in switch" "${rows[@]}"
without src/filter_groups_validation.cpp '/case FILTERS_GROUP_TYPE_9:/,/;/d'
expect "FILTERS_GROUP_TYPE_9.* not handled in switch" \
  "$scratch/src/filter_groups_validation.cpp" -fsyntax-only
# The row of a class declares its printer. The linker reports a printer that is not defined.
without src/filter_matches_print.cpp '/const MatchTTL& match\) \{/,/^}/d'
expect "undefined.*operator<<\(std::ostream&, FiltersCommon::MatchTTL const&\)" \
  "$scratch/src/filter_matches_print.cpp" -shared -fPIC -Wl,-z,defs -o "$scratch/printers.so"

for getter in getMatch getAction; do
  expect "$getter\(\) fills its argument, which therefore is not const" "$here/const_output.cpp" \
    -fsyntax-only
done

while read -r class helper; do
  expect "$class::$helper.* is private|'$helper' is a private member of '.*$class'" \
    "$here/inner_helpers.cpp" -fsyntax-only
done <<<$'MatchPorts print\nMatchVlanId print'

# The compiler warns if the result of a call that may be refused is ignored, and about nothing else.
# If these warnings are turned off, it does not warn at all.
compile -fsyntax-only "$here/nodiscard.cpp" |
  sed -n 's/.*cpp:\([0-9]*\):.* ignoring return.*/\1/p' | sort -nu |
  diff <(grep -n '// warns$' "$here/nodiscard.cpp" | cut -d: -f1) -
compile -fsyntax-only -Werror -DFILTERS_NO_NODISCARD "$here/nodiscard.cpp"
