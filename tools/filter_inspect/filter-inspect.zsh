#compdef filter-inspect
# Completion of filter-inspect for zsh.

# Completes the last word of a packet that is being typed.
_filter_inspect_packet() {
  compset -q  # the blanks between fields are inside quotes
  compadd -S = -a fields
}

_filter_inspect() {
  # begin generated
  local -a fields=(ingress_port ingress_port_type external_vlan_id tpid dst_mac dst_l4_port src_l4_port src_mac l2_src_entry_type src_ipv4 dst_ipv4 internal_vlan_id pcp internal_pcp src_ipv6 dst_ipv6 vlan_tagging ip_protocol packet_res mpls_term tos virtual_port egress_ports ingress_stp_state svc_vlan_type proto_cpu_vlan_type src_port ttl vrf_id drop my_station_hit cpu_port forwarding_type destination_cpu cpu_injected_packets dscp)
  local -a commands=(
    'show:Print what a device would hold; losses go to standard error'
    'check:Report what the bytes lose when they are read, and unusual values'
    'convert:Write the groups in another form, unless something would be lost'
    'diff:Compare two files, entry by entry'
    'plan:Print the steps that turn the groups of one file into those of another'
    'analyse:Report entries that never take effect, are redundant, tie or overlap'
    'expect:Say which promises of a policy the rules keep'
    'trace:Print which entry takes a packet, or each packet of a file'
    'search:Print which entries take the packets of a set, with an example of each'
    'hits:Count the packets of captured traffic that each entry takes'
    'capabilities:Print what stages and types admit, or where the entries of a file fit'
    'names:Print codes and their names'
  )
  local -a of_any=(
    '-h[Show help for filter-inspect or for one command]'
    '--help[Show help for filter-inspect or for one command]'
    '--version[Print the releases of the program and its libraries]'
    '--json[Print JSON documents, also for errors]'
    '-q[Print no results, only trouble; the exit status says the rest]'
    '--quiet[Print no results, only trouble; the exit status says the rest]'
    '-v[Say also how each file was read, how many findings there are, and the time]'
    '--verbose[Say also how each file was read, how many findings there are, and the time]'
    '--color=[Colour the lines]:value:(auto always never)'
    '--framing=[The length before each group'\''s bytes, or none]:value:(auto none be32 varint)'
    '--from=[The form of the files]:value:(auto bytes text json)'
    '--max-bytes=[Read no file larger than this (default 67108864)]:N:'
    '--max-findings=[Keep at most N findings of a file (default 1000)]:N:'
    '--max-groups=[Read at most N groups of a file (default 1000000)]:N:'
  )
  local -a of_show=(
    '--as=[The form\: a table by default, or JSON with --json; dump is the library'\''s own print]:value:(table text json dump)'
    '--compact[Write JSON on one line without blanks]'
    '--order=[The order of the table'\''s rows; without it, by id]:value:(unspecified highest-priority lowest-priority ascending-id highest-priority,ascending-id highest-priority,descending-id lowest-priority,ascending-id lowest-priority,descending-id)'
    '--width=[The letters in a line of the table, 0 for any number; without it, as wide as the terminal]:N:'
    '*--group=[Only groups with this id; may be given several times]:ID:'
    '*--entry=[Only entries with this id; may be given several times]:ID:'
  )
  local -a of_check=(
    '--stage=[Use this stage instead of each group'\''s own]:value:(none lookup ingress egress)'
    '--type=[Use this type instead of each group'\''s own]:value:(none 1 2 3 4 5 6 7 8 9 10 11)'
  )
  local -a of_convert=(
    '--to=[The form to write]:value:(text json bytes)'
    '--compact[Write JSON on one line without blanks]'
    '-o[The file to write; - is standard output]:file:_files'
    '--output=[The file to write; - is standard output]:file:_files'
  )
  local -a of_diff=(
    '--order=[The rule that the device tries first if two take a packet]:value:(unspecified highest-priority lowest-priority ascending-id highest-priority,ascending-id highest-priority,descending-id lowest-priority,ascending-id lowest-priority,descending-id)'
    '--packets=[Only what changes for these packets, as in '\''ip_protocol=tcp dst_l4_port=22'\'', and whether anything else changes; needs --order]:packet:_filter_inspect_packet'
    '--capture=[Captured traffic as pcap or pcapng\: a path, or - for standard input]:file:_files'
    '--assume=[What no frame shows of its packet\: '\''vrf_id=0 destination_cpu=true ...'\'']:packet:_filter_inspect_packet'
    '*--group=[Only groups with this id; may be given several times]:ID:'
    '*--entry=[Only what is said about entries with this id; the others still take packets]:ID:'
  )
  local -a of_plan=(
    '--remove-first[Remove entries first\: never more entries than the larger group; without it, insert first, so that no packet is without its rule]'
  )
  local -a of_analyse=(
    '--order=[The rule that the device tries first if two take a packet]:value:(unspecified highest-priority lowest-priority ascending-id highest-priority,ascending-id highest-priority,descending-id lowest-priority,ascending-id lowest-priority,descending-id)'
    '*--group=[Only groups with this id; may be given several times]:ID:'
    '*--entry=[Only findings about entries with this id; the others still take packets]:ID:'
    '--overlaps[Also report every pair that shares packets and treats them differently]'
    '--no-redundant[Skip the search for redundant entries, which takes most of the time]'
    '--max-steps=[Leave an entry undecided after N steps (default 100000)]:N:'
    '--svg=[Also draw the groups and the findings into a file]:file:_files'
    '--policy=[Count the findings that this policy accepts apart; its order counts]:file:_files'
  )
  local -a of_expect=(
    '*--group=[Only promises about groups with this id; may be given several times]:ID:'
    '--max-steps=[Leave a promise undecided after N steps for an entry (default 100000)]:N:'
    '--junit=[Also write the verdicts as XML for build servers]:file:_files'
  )
  local -a of_trace=(
    '--order=[The rule that the device tries first if two take a packet]:value:(unspecified highest-priority lowest-priority ascending-id highest-priority,ascending-id highest-priority,descending-id lowest-priority,ascending-id lowest-priority,descending-id)'
    '*--group=[Only groups with this id; may be given several times]:ID:'
    '*--entry=[Only the lines of entries with this id; the others still take packets]:ID:'
    '--packet=[One packet\: '\''src_ipv4=192.0.2.7 ttl=none ...'\'']:packet:_filter_inspect_packet'
    '--packets=[A file with a packet on each line, or -]:file:_files'
  )
  local -a of_search=(
    '--order=[The rule that the device tries first if two take a packet]:value:(unspecified highest-priority lowest-priority ascending-id highest-priority,ascending-id highest-priority,descending-id lowest-priority,ascending-id lowest-priority,descending-id)'
    '--packets=[The packets\: '\''src_ipv4=10.0.0.0/8 ttl=1-9 pcp={1,3} ...'\''; without it, all]:packet:_filter_inspect_packet'
    '--then=[Only entries with these actions\: permit, or '\''permit set_pcp=5'\'']:ACTIONS:'
    '--touching[The entries that match one of the packets, whatever comes before them]'
    '*--group=[Only groups with this id; may be given several times]:ID:'
    '*--entry=[What is left of the entry with this id behind those before it; may be given several times]:ID:'
    '--max-steps=[Leave an entry undecided after N steps (default 100000)]:N:'
  )
  local -a of_hits=(
    '--order=[The rule that the device tries first if two take a packet]:value:(unspecified highest-priority lowest-priority ascending-id highest-priority,ascending-id highest-priority,descending-id lowest-priority,ascending-id lowest-priority,descending-id)'
    '--capture=[Captured traffic as pcap or pcapng\: a path, or - for standard input]:file:_files'
    '--assume=[What no frame shows of its packet\: '\''vrf_id=0 destination_cpu=true ...'\'']:packet:_filter_inspect_packet'
    '*--group=[Only groups with this id; may be given several times]:ID:'
    '*--entry=[Only the rows of entries with this id; the others still take packets]:ID:'
    '--width=[The letters in a line of the table, 0 for any number; without it, as wide as the terminal]:N:'
    '--svg=[Also draw the groups and their hits into a file]:file:_files'
  )
  local -a of_capabilities=(
    '--stage=[Use this stage instead of each group'\''s own]:value:(none lookup ingress egress)'
    '--type=[Use this type instead of each group'\''s own]:value:(none 1 2 3 4 5 6 7 8 9 10 11)'
  )
  local -a of_names=(
  )
  # end generated

  local word command= state
  for word in ${words[2,CURRENT-1]}; do
    (( ${commands[(I)$word:*]} )) && command=$word && break
  done
  if [[ -z $command ]]; then
    _arguments $of_any '1: :->command'
    [[ $state == command ]] && _describe command commands
  elif [[ $command == names ]]; then
    local -a names=(${(f)"$(filter-inspect names 2>/dev/null | sed -n 's/ (.*//p')"})
    _arguments $of_any '1:command:' "*:enumeration:($names)"
  else
    local own=of_$command
    _arguments $of_any ${(P)own} '1:command:' '*:file:_files'
  fi
}

_filter_inspect "$@"
