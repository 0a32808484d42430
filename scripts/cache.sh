# Scripts that build a message runtime source this file. Each runtime is built once and stays in the
# user's cache. The name of its folder depends on its sources and on the script that built it.

say() { echo "$(basename "$0"): $*" >&2; }

# made_once NAME [FILE...]: prints the cache folder of a result. The name of the folder depends on
# NAME, the calling script and the contents of the files. If the folder is missing, the calling
# script's function `make_it` fills $work/made first. It may use $work freely, and $made is the
# final name of the folder.
made_once() {
  local cache=${XDG_CACHE_HOME:-$HOME/.cache}/filter_common
  made=$cache/$1-$(cat "$0" scripts/cache.sh "${@:2}" | sha256sum | cut -c1-8)
  if [[ -e $made ]]; then
    say "using $made"
  else
    mkdir -p "$cache"
    work=$(mktemp -d "$cache/building.XXXXXX")
    trap clean_up EXIT
    say "building in $cache"
    make_it >"$work/log" 2>&1
    # The folder is moved in one step, so that it is always complete. If another run has made the
    # folder meanwhile, that folder is used.
    mv -T "$work/made" "$made" 2>>"$work/log" || [[ -e $made ]]
    say "built $made in $SECONDS s"
  fi
  echo "$made"
}

# The output is shown only on failure.
clean_up() {
  local status=$?
  if [[ $status -ne 0 ]]; then
    cat "$work/log" >&2
    say "failed"
  fi
  rm -rf "$work"
}
