# shellcheck shell=bash
# Sourced first by every script of this folder: --help prints the comment at the head of the script,
# and usage() does for arguments that make no sense.
header() { sed -n '2,/^[^#]/s/^# \{0,1\}//p' "$0"; }
usage() {
  header >&2
  exit 2
}
case "${1:-}" in
  -h | --help)
    header
    exit 0
    ;;
esac
