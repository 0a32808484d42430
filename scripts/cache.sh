# Sourced by scripts that build a message runtime. What they make lies in the user's cache, named
# after what it was made from and with which recipe, and is made once.

say() { echo "$(basename "$0"): $*" >&2; }

# made_once NAME [FILE...]: prints the folder of the cache that stands for NAME, the calling script
# and the contents of the files. Where there is none, the script's function `make_it` comes first: it
# fills $work/made, may use $work as it likes and knows the folder to come as $made.
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
    # Whole or not at all: whoever finds the folder may use it. Another run may have been faster.
    mv -T "$work/made" "$made" 2>>"$work/log" || [[ -e $made ]]
    say "built $made in $SECONDS s"
  fi
  echo "$made"
}

# What the steps print is only of interest when one fails.
clean_up() {
  local status=$?
  if [[ $status -ne 0 ]]; then
    cat "$work/log" >&2
    say "failed"
  fi
  rm -rf "$work"
}
