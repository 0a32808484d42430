#!/bin/bash
# Checks that the library exports only its own names, in C++ and in C.
#   exports_test.sh <library>
# The environment variable NM names the tool.
set -euo pipefail
names=$("$NM" --dynamic --defined-only "$1" | sed 's/.* //; s/@.*//' | sort)
grep -q '^_ZN14FiltersInspect' <<<"$names"
grep -q '^filters' <<<"$names"
own='^(_ZNK?14FiltersInspect|filters[A-Z][A-Za-z]+$|(new|delete)Filters(Hits|Report)$|FILTER_INSPECT_1$)'
if grep -vE "$own" <<<"$names" || grep -E '8nlohmann|6google' <<<"$names"; then
  echo "exports: these are not the library's to export"
  exit 1
fi
