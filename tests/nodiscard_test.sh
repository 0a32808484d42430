#!/bin/bash
# What the compiler says of nodiscard.cpp is what stands there; and nothing when told not to.
#   nodiscard_test.sh <compiler and its arguments>
set -euo pipefail
source=$(dirname "$0")/nodiscard.cpp

# The lines that are warned of.
warned() {
  LC_ALL=C "$@" -std=c++17 -fsyntax-only "$source" 2>&1 |
    sed -n 's/^[^ ]*nodiscard\.cpp:\([0-9]*\):.* warning: ignoring return value.*/\1/p' | sort -nu
}
diff <(grep -n '// warns$' "$source" | cut -d: -f1) <(warned "$@")
"$@" -std=c++17 -fsyntax-only -Werror -DFILTERS_NO_NODISCARD "$source"
