#!/bin/bash
# Checks in a built library how it was compiled and linked.
#   hardening_test.sh <library> <its soname> [nodelete] [protected] [cf-protection]
# The environment variables READELF and OBJDUMP name the tools.
set -euo pipefail
elf=$("$READELF" --wide --dynamic --program-headers --dyn-syms "$1")
failed=0

# expect <what> <pattern> [text]: checks that a line of the text matches the pattern.
expect() {
  grep -Eq -- "$2" <<<"${3:-$elf}" && return
  echo "hardening: $1: nothing matches '$2'"
  failed=1
}
expect "soname" "SONAME.*\[${2//./\\.}\]"
expect "resolved when loaded" '\(FLAGS\).*BIND_NOW'
expect "resolved when loaded" 'FLAGS_1.*NOW'
expect "read-only after relocation" 'GNU_RELRO'
expect "stack is not executable" 'GNU_STACK +0x0+ .* RW '
if grep -E ' RWE |TEXTREL' <<<"$elf"; then
  echo "hardening: a segment can be written and executed, or code is relocated"
  failed=1
fi
for option in "${@:3}"; do
  case "$option" in
    nodelete) expect "stays loaded" 'FLAGS_1.*NODELETE' ;;
    protected) expect "stack protector" ' UND __stack_chk_fail' ;;
    # If the system's start-up files lack this property, the whole library lacks it. So the test
    # checks the functions instead.
    cf-protection) expect "marked jumps" 'endbr' "$("$OBJDUMP" --disassemble "$1" | head -20000)" ;;
    *) echo "hardening: unknown option $option" && exit 2 ;;
  esac
done
exit "$failed"
