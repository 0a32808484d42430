#!/bin/bash
# Tests the two example programs together: complete bytes are accepted, damaged bytes are not.
#   examples_test.sh <folder> [emulator and its arguments]
set -euo pipefail
cd "$1"
emulator=("${@:2}")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
run() { "${emulator[@]}" "./$1" "${@:2}"; }

run send_group >"$work/bytes"
run send_group --print >"$work/expected"
run receive_group "$work/expected" <"$work/bytes" | cmp - "$work/expected"

# refuses WHAT: checks that receive_group refuses the bytes on its input.
refuses() {
  if run receive_group "$work/expected" >"$work/out" 2>"$work/err"; then
    echo "receive_group accepted $1"
    exit 1
  fi
  grep -q '^receive_group: ' "$work/err"
}
head -c -1 "$work/bytes" | refuses "a cut-off group"
head -c 2 "$work/bytes" | refuses "a cut-off length"
refuses "no group at all" </dev/null
# Changes the stage of the first group to EGRESS, which does not admit its rules. The stage is field
# 3, with tag 0x18.
sed 's/\x18\x02/\x18\x03/' "$work/bytes" | refuses "a group that lost rules"
cat "$work/bytes" "$work/bytes" | refuses "another print than expected"

run send_group --refusals | sed -nE 's/^  (-[0-9]+|exception:) .*/\1/p' | sort -un | xargs |
  diff - <(echo "-10 -9 -8 -7 -6 -5 -4 -3 exception:")
# These two examples are not built if the headers of the message runtime are missing.
# The example itself compares the sender's group with the receiver's. Sending two rules of ten
# thousand takes a thousandth of the bytes.
[[ ! -e change_rule ]] || run change_rule |
  awk '{ bytes[NR] = $3 } END { exit !(bytes[2] > 0 && 1000 * bytes[2] < bytes[1]) }'
[[ ! -e change_message ]] || run change_message <"$work/bytes" | run receive_group |
  cmp - <(awk '/^    Priority:/ { $0 = "    Priority: " $2 + 1000 } 1' "$work/expected")
