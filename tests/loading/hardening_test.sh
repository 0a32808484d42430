#!/bin/bash
# Reads back from a built library how it was compiled and linked.
#   hardening_test.sh <library> <its soname> [nodelete] [protected] [fortified] [cf-protection]
# The environment names READELF and OBJDUMP.
set -euo pipefail
library=$1
failed=0

# expect <what> <pattern> <text>: a line matches; expect_no: none does.
expect() {
  if ! grep -Eq -- "$2" <<<"$3"; then
    echo "hardening: $1: nothing matches '$2'"
    failed=1
  fi
}
expect_no() {
  if grep -E -- "$2" <<<"$3"; then
    echo "hardening: $1"
    failed=1
  fi
}

dynamic=$("$READELF" --wide --dynamic "$library")
segments=$("$READELF" --wide --program-headers "$library")
imports=$("$READELF" --wide --dyn-syms "$library" | grep ' UND ')

expect "soname" "SONAME.*\[${2//./\\.}\]" "$dynamic"
expect "resolved when loaded" '\(FLAGS\).*BIND_NOW' "$dynamic"
expect "resolved when loaded" 'FLAGS_1.*NOW' "$dynamic"
expect "read-only after relocation" 'GNU_RELRO' "$segments"
expect "stack is not executable" 'GNU_STACK +0x0+ .* RW ' "$segments"
expect_no "a segment can be written and executed" 'RWE' "$segments"
expect_no "code is relocated" 'TEXTREL' "$dynamic"

for option in "${@:3}"; do
  case "$option" in
    nodelete) expect "stays loaded" 'FLAGS_1.*NODELETE' "$dynamic" ;;
    protected) expect "stack protector" '__stack_chk_fail' "$imports" ;;
    fortified) expect "checked C functions" '__[a-z]+_chk' "${imports//__stack_chk_fail/}" ;;
    cf-protection)
      # A property of the whole library needs start-up files that have it too; functions tell.
      expect "marked jump targets" 'endbr' "$("$OBJDUMP" --disassemble "$library" | head -20000)"
      ;;
    *)
      echo "hardening: unknown option $option"
      exit 2
      ;;
  esac
done
exit "$failed"
