#!/bin/bash
# The example programs as a pair: what is sent whole is accepted, what is damaged is not.
# examples_test.sh <folder> [emulator and its arguments]
set -euo pipefail
cd "$1"
send_group=("${@:2}" ./send_group)
receive_group=("${@:2}" ./receive_group)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

"${send_group[@]}" >"$work/bytes"
"${send_group[@]}" --print >"$work/expected"
"${receive_group[@]}" "$work/expected" <"$work/bytes" >"$work/printed"
cmp "$work/printed" "$work/expected"

refuses() {
  if "${receive_group[@]}" "$work/expected" <"$work/damaged" >"$work/out" 2>"$work/err"; then
    echo "receive_group accepted $1"
    exit 1
  fi
  grep -q '^receive_group: ' "$work/err"
}
head -c -1 "$work/bytes" >"$work/damaged" && refuses "a cut-off group"
head -c 2 "$work/bytes" >"$work/damaged" && refuses "a cut-off length"
: >"$work/damaged" && refuses "no group at all"
# The stage of the first group becomes EGRESS, which drops its rules: field 3 is tag 0x18.
sed 's/\x18\x02/\x18\x03/' "$work/bytes" >"$work/damaged" && refuses "a group that lost rules"
cat "$work/bytes" "$work/bytes" >"$work/damaged" && refuses "another print than expected"

"${send_group[@]}" --refusals >"$work/refusals"
for code in -3 -4 -5 -6 -7 -8 -9 -10 exception:; do
  grep -q -- "^  $code " "$work/refusals" || { echo "no refusal $code is shown"; exit 1; }
done
# Left out where the message runtime's headers are missing.
if [[ -e change_message ]]; then
  "${send_group[@]}" | "${@:2}" ./change_message | "${receive_group[@]}" >"$work/changed"
  awk '/^    Priority:/ { $0 = "    Priority: " $2 + 1000 } 1' "$work/expected" |
    cmp - "$work/changed"
fi
echo "examples: passed"
