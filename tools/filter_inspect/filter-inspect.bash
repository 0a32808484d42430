# Completion of filter-inspect for bash, through the package bash-completion.

_filter_inspect() {
  local cur prev words cword split
  _init_completion -s || return

  # begin generated
  local commands="show check convert diff plan analyse expect trace search hits capabilities names"
  local fields="ingress_port ingress_port_type external_vlan_id tpid dst_mac dst_l4_port src_l4_port src_mac l2_src_entry_type src_ipv4 dst_ipv4 internal_vlan_id pcp internal_pcp src_ipv6 dst_ipv6 vlan_tagging ip_protocol packet_res mpls_term tos virtual_port egress_ports ingress_stp_state svc_vlan_type proto_cpu_vlan_type src_port ttl vrf_id drop my_station_hit cpu_port forwarding_type destination_cpu cpu_injected_packets dscp"
  local -A options=(
    [any]="--help --version --json --quiet --verbose --color= --framing= --from= --max-bytes= --max-findings= --max-groups="
    [show]="--as= --compact --order= --width= --group= --entry="
    [check]="--stage= --type="
    [convert]="--to= --compact --output="
    [diff]="--order= --packets= --capture= --assume= --group= --entry="
    [plan]="--remove-first"
    [analyse]="--order= --group= --entry= --overlaps --no-redundant --max-steps= --svg= --policy="
    [expect]="--group= --max-steps= --junit="
    [trace]="--order= --group= --entry= --packet= --packets="
    [search]="--order= --packets= --then= --touching --group= --entry= --max-steps="
    [hits]="--order= --capture= --assume= --group= --entry= --width= --svg="
    [capabilities]="--stage= --type="
  )
  local -A values=(
    [--color]="auto always never"
    [--framing]="auto none be32 varint"
    [--from]="auto bytes text json"
    [--max-bytes]="N"
    [--max-findings]="N"
    [--max-groups]="N"
    [--as]="table text json dump"
    [--order]="unspecified highest-priority lowest-priority ascending-id highest-priority,ascending-id highest-priority,descending-id lowest-priority,ascending-id lowest-priority,descending-id"
    [--width]="N"
    [--group]="ID"
    [--entry]="ID"
    [--stage]="none lookup ingress egress"
    [--type]="none 1 2 3 4 5 6 7 8 9 10 11"
    [--to]="text json bytes"
    [-o]="OUT"
    [--output]="OUT"
    [--packets]="PACKET"
    [--capture]="FILE"
    [--assume]="PACKET"
    [--max-steps]="N"
    [--svg]="OUT"
    [--policy]="FILE"
    [--junit]="OUT"
    [--packet]="PACKET"
    [trace--packets]="FILE"
    [--then]="ACTIONS"
  )
  # end generated

  local word command=
  for word in "${words[@]:1:cword-1}"; do
    [[ " $commands " == *" $word "* ]] && command=$word && break
  done
  local value=${values[$command${prev:-any}]-${values[${prev:-any}]-}}
  case $value in
    "") ;;
    FILE | OUT) _filedir && return ;;
    N | ID | ACTIONS) return ;;
    PACKET)
      local part=${cur##*[ \'\"]}  # the field behind the last blank
      mapfile -t COMPREPLY < <(compgen -P "${cur%"$part"}" -S = -W "$fields" -- "$part")
      compopt -o nospace && return
      ;;
    *) COMPREPLY=($(compgen -W "$value" -- "$cur")) && return ;;
  esac
  $split && return

  if [[ $cur == -* ]]; then
    COMPREPLY=($(compgen -W "${options[any]} ${command:+${options[$command]-}}" -- "$cur"))
    [[ ${COMPREPLY-} == *= ]] && compopt -o nospace
  elif [[ -z $command ]]; then
    COMPREPLY=($(compgen -W "$commands" -- "$cur"))
  elif [[ $command == names ]]; then
    COMPREPLY=($(compgen -W "$(filter-inspect names 2>/dev/null | sed -n 's/ (.*//p')" -- "$cur"))
  else
    _filedir
  fi
} && complete -F _filter_inspect filter-inspect
