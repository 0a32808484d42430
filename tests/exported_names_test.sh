#!/bin/bash
# What C programs link against: exported_names_test.sh <nm> <library> <list of names>
set -euo pipefail
# Names of the compilers begin with an underscore, the message descriptors' with descriptor_table_.
"$1" -D --defined-only "$2" | awk '{ print $NF }' | grep -v -e '^_' -e '^descriptor_table_' |
  LC_ALL=C sort | diff --label listed --label exported -u "$3" -
