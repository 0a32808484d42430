# shellcheck shell=bash
# Every script of this folder sources this file first. --help prints the comment at the beginning of
# the script. usage() prints this comment for wrong arguments.
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
