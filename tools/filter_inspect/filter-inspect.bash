# Completion of filter-inspect for bash, through the package bash-completion.

_filter_inspect() {
  local cur prev words cword split
  _init_completion -s || return

  local commands="show check convert diff plan analyse trace capabilities names"
  local common="--json --color= --framing= --from= --help"
  common+=" --max-bytes= --max-findings= --max-groups="
  local stages="none lookup ingress egress" types="none 1 2 3 4 5 6 7 8 9 10 11"

  local orders="unspecified highest-priority lowest-priority ascending-id
    highest-priority,ascending-id highest-priority,descending-id
    lowest-priority,ascending-id lowest-priority,descending-id"

  case $prev in
    --color) COMPREPLY=($(compgen -W "auto always never" -- "$cur")) && return ;;
    --framing) COMPREPLY=($(compgen -W "auto none be32 varint" -- "$cur")) && return ;;
    --from) COMPREPLY=($(compgen -W "auto bytes text json" -- "$cur")) && return ;;
    --as) COMPREPLY=($(compgen -W "text json dump" -- "$cur")) && return ;;
    --to) COMPREPLY=($(compgen -W "text json bytes" -- "$cur")) && return ;;
    --stage) COMPREPLY=($(compgen -W "$stages" -- "$cur")) && return ;;
    --type) COMPREPLY=($(compgen -W "$types" -- "$cur")) && return ;;
    --order) COMPREPLY=($(compgen -W "$orders" -- "$cur")) && return ;;
    --max-bytes | --max-findings | --max-groups | --max-steps) return ;;
    --packet) return ;;
    -o | --output | --packets | --svg) _filedir && return ;;
  esac
  $split && return

  local word command=
  for word in "${words[@]:1:cword-1}"; do
    [[ " $commands " == *" $word "* ]] && command=$word && break
  done
  local options=$common
  case $command in
    "") options+=" --version" ;;
    show) options+=" --as=" ;;
    check | capabilities) options+=" --stage= --type=" ;;
    convert) options+=" --to= --output=" ;;
    analyse) options+=" --order= --overlaps --no-redundant --max-steps= --svg=" ;;
    diff) options+=" --order=" ;;
    trace) options+=" --order= --packet= --packets=" ;;
    plan) options+=" --remove-first" ;;
  esac
  if [[ $cur == -* ]]; then
    COMPREPLY=($(compgen -W "$options" -- "$cur"))
    [[ ${COMPREPLY-} == *= ]] && compopt -o nospace
  elif [[ -z $command ]]; then
    COMPREPLY=($(compgen -W "$commands" -- "$cur"))
  elif [[ $command == names ]]; then
    COMPREPLY=($(compgen -W "$(filter-inspect names 2>/dev/null | sed -n 's/ (.*//p')" -- "$cur"))
  else
    _filedir
  fi
} && complete -F _filter_inspect filter-inspect
