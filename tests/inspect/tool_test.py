"""Runs filter-inspect: a table of command lines with their exit codes and output.

    tool_test.py <folder of the sources> <send_group> <filter-inspect> [emulator and its arguments]...

The program runs in an empty folder with the files that prepare() makes. An expected text in the
table is a regular expression that must match the whole output; with DOTALL, ".*" matches any lines.
"""

import ipaddress
import json
import os
import pty
import random
import re
import resource
import select
import shlex
import signal
import struct
import subprocess
import sys
import tempfile
import time
from xml.etree import ElementTree

import jsonschema

sources, sender, tool, *emulator = sys.argv[1:]
run_env = {key: value for key, value in os.environ.items() if key != "NO_COLOR"}
failures = []


def run(*arguments, **options):
    return subprocess.run([*emulator, *arguments], env=run_env, timeout=120, **options)


def inspect(*arguments, stdin=b"", stdout=subprocess.PIPE):
    return run(tool, *arguments, input=stdin, stdout=stdout, stderr=subprocess.PIPE)


def write(name, content):
    with open(name, "wb") as file:
        file.write(content)


def frames(content):
    while content:
        (length,) = struct.unpack(">I", content[:4])
        yield content[4 : 4 + length]
        content = content[4 + length :]


def varint(number):
    return bytes([number & 127 | 128]) + varint(number >> 7) if number > 127 else bytes([number])


def prepare():
    sent = run(sender, stdout=subprocess.PIPE).stdout
    first, second = frames(sent)
    write("g.bin", sent)
    write("one.bin", first)
    write("varint.bin", b"".join(varint(len(each)) + each for each in (first, second)))
    write("cut.bin", sent[:-3])
    write("cut_first.bin", sent[:60])
    write("cut_length.bin", sent + b"\0\0")
    write("cut_group.bin", first[:-1])
    # The match of entry 1000 gets an unknown code, so the entry would take every packet.
    write("lost.bin", first.replace(b"\x22\x02\x08\x20", b"\x22\x02\x08\x63"))
    # The group's type becomes 1, which admits none of its matches.
    write("refused.bin", first.replace(b"\x18\x02\x20\x03", b"\x18\x02\x20\x01"))
    write("notes.bin", b"\x08\x81\x00" + first[2:])  # an id that is longer than it needs to be
    write("many.bin", b"\0" * 40)  # ten empty frames
    # Building the first group throws, because an action lacks its interfaces. The second group has
    # no fault.
    thrown = bytes.fromhex("0809 1000 1802 2003 2a0a 08011000 1a00 2a020812")
    write("thrown.bin", b"".join(struct.pack(">I", len(each)) + each for each in (thrown, first)))
    write("framed.bin", struct.pack(">I", len(first)) + first)
    write("brace.bin", b" {\x08\x05")  # type 123; the first bytes look like JSON
    write("zeros.bin", b"\0\0\0\0\x22")
    write("empty", b"")
    write("large.bin", b"")
    os.truncate("large.bin", (64 << 20) + 1)
    os.mkdir("folder")
    for name, form in (("g.txt", "text"), ("g.json", "json")):
        assert inspect("convert", "g.bin", "--to", form, "-o", name).returncode == 0
    with open("g.txt", "rb") as file:
        text = file.read()
    head, one, two = re.split(b"(?m)^(?=group)", text)
    one_group = head + one
    write("one.txt", one_group)
    with open("g.json", "rb") as file:
        as_json = file.read()
    write("compact.json", json.dumps(json.loads(as_json), separators=(",", ":")).encode() + b"\n")
    write("marked.txt", b"\xef\xbb\xbf" + text.replace(b"\n", b"\r\n"))
    write("late_head.txt", b"\n# first\r\n\t" + text)
    write("misspelt.txt", text.replace(b"filter-groups", b"filter-group"))
    # This file is a length of 123 and then 123 bytes. The length is the same byte as `{`, with
    # which JSON begins.
    write("printable.bin", b" !")
    write("braces.bin", varint(123) + b"\x08\x05" + 121 * b"\0")
    write("latin.txt", b"# caf\xe9\n" + text)
    write("zero.txt", text.replace(b"ttl=255", b"ttl=\x00"))
    write("zero.json", as_json.replace(b'"priority"', b'"priority\0"', 1))
    write("elsewhere.txt", one_group.replace(b"type=3", b"type=1"))
    write("elsewhere.json", as_json.replace(b'"type": 3', b'"type": 1', 1))
    write("blanks.json", b"\n  " + as_json)
    write("marked.json", b"\xef\xbb\xbf" + as_json)
    write("wide.json", as_json.replace(b'"priority": 100', b'"priority": 1' + 30 * b"0", 1))
    write("swapped.txt", head + two + one)
    changed = re.sub(b"entry 1000 .*\n", b"", text).replace(b"ttl=255", b"ttl=254")
    write("changed.txt", re.sub(b"entry 40 priority=", b"entry 40 priority=1", changed, count=1))
    write("moved.txt", text.replace(b"group 1 priority=10", b"group 1 priority=11"))
    write("renamed.txt", text.replace(b"ttl=255", b"ttl=254").replace(b"group 2", b"group 3"))
    write("none.txt", head)
    write("bad.txt", text.replace(b"ttl=255", b"tttl=255"))
    write("bad.json", b'{\n  "format": "filter-groups",\n  "version": 1,\n  "groups": [}\n')
    write("faulty.txt", head + b"rule\n" * 1003)
    # Entry 10 takes all packets of entry 20 first. Entry 30 has a port with several readings, and
    # ties with entry 40.
    write("rules.txt", b"""filter-groups 1
group 7 priority=10 stage=ingress type=3
entry 10 priority=100 if src_ipv4=192.0.2.0/24 then permit
entry 20 priority=90 if ip_protocol=6 src_ipv4=192.0.2.128/25 then deny
entry 30 priority=60 if dst_l4_port=179/0x0 then permit
entry 40 priority=60 if ttl=1 then deny
""")
    with open("rules.txt", "rb") as file:
        rules = file.read()
    write("twice.txt", rules + rules[rules.index(b"group 7") :].replace(b"group 7", b"group 8"))
    write("same.txt", rules + rules[rules.index(b"group 7") :])
    write("fewer.txt", re.sub(b"entry 30 .*\n", b"", rules))
    policed = rules.replace(b"permit\n", b"permit police {id=5 stage=ingress flow cir=1000 red=drop}\n", 1)
    policed = policed.replace(b"ip_protocol=6", b"ttl=6").replace(b"25 then deny", b"25 then permit copy_to_cpu")
    write("words.txt", policed)
    write("rated.txt", policed.replace(b"cir=1000 red=drop", b"cir=64 red=pcp:1"))
    # The values of these policers lack the number of their action, because an action that drops
    # writes no number.
    for number in (b"8", b"9"):
        policer = b"permit parent 0a0608001000180%b120e080410001800200028003000380018007805\n"
        write(f"hidden{number.decode()}.txt", rules.replace(b"permit\n", policer % number, 1))
    write("turned.txt", rules.replace(b"priority=90", b"priority=110"))
    # Group 1 has only notes, group 2 has a warning.
    write("late.txt", b"""filter-groups 1
group 1 priority=10 stage=ingress type=3
entry 1 priority=9 if ttl=1 then deny
entry 2 priority=9 if ttl=2 then deny
entry 3 priority=0 then deny
group 2 priority=10 stage=ingress type=3
  entry 4 priority=5 if ttl=1 then permit
entry 5 priority=5 if ip_protocol=6 then deny
""")
    inspect("convert", "late.txt", "--to=bytes", "-o", "late.bin")
    write("lines.txt", rules.replace(b"\n", b"\r\n"))
    write("bare.txt", rules.replace(b"\n", b"\r"))
    write("policy.txt", b"""filter-policy 1
group 7 order=highest-priority
always permit if src_ipv4=192.0.2.0/24
never deny if ttl=1 src_ipv4=none dst_l4_port=179 # "<caf\xc3\xa9>\xff\x01&
  never taken if ttl=2-9 dst_l4_port=none
accept value-unusual entry 30
accept entry-unreachable entry 20
accept entries-tie entry 30
""")
    write("kept.policy", b"filter-policy 1\ngroup 7 order=ascending-id\nalways permit if src_ipv4=192.0.2.0/24\n")
    write("stale.policy", b"filter-policy 1\ngroup 7 order=ascending-id\naccept entries-tie entry 10\n"
          b"group 8 order=lowest-priority\naccept not-decided entry 1\n")
    write("bad.policy", b"filter-policy 1\ngroup 7 order=ascending\nalways permt if ttl=300\n")
    write("packets.txt", b"""# one of each
src_ipv4=192.0.2.7
\r
ttl=1 dst_l4_port=179 src_ipv4=none
\tttl=2 dst_l4_port=none src_ipv4=none""")
    write("many_vlans.txt", b"""filter-groups 1
group 1 priority=1 stage=lookup type=4
entry 1 priority=1 if external_vlan_id={1001,1002,1003,1004,1005,1006,1007,1008,1009,1010} then deny
entry 2 priority=1 if dst_l4_port=7/0xffff then deny
entry 3 priority=1 if dst_l4_port=7/0xfff0 then deny
""")
    # Lists that would take minutes to draw if all their lines were broken again for each width that
    # is tried.
    write("long_lists.txt", b"""filter-groups 1
group 1 priority=1 stage=ingress type=3
entry 1 priority=1 if ingress_ports=[%s] then redirect=[%s] deny count %s
group 2 priority=1 stage=ingress type=11
entry 2 priority=1 if dst_l4_port_range=10000-20000 then deny
""" % (b",".join(b"%d" % port for port in range(0x1000000, 0x1000000 + 50000)),
       b",".join(b"%d" % port for port in range(50000)),
       b" ".join(b"%d=packets" % counter for counter in range(60000))))
    write("wrong.txt", b"ttl=1 foo=3 ttl=999\nttl=1\nttl\n")
    write("future.txt", b"filter-groups 2\n")
    write("future.json", b'{"format": "filter-groups", "version": 2, "groups": []}')


def frame(ttl=64, source=1, port=None, tag=None):
    """An Ethernet frame with UDP over IPv4, or an ICMP packet without a port."""
    ports = struct.pack(">HHHH", 4000, port or 0, 8, 0)
    head = struct.pack(">BBHIBBHBBBBI", 0x45, 0, 28, 0, ttl, 1 if port is None else 17, 0, 192, 0, 2, source, 1)
    tags = b"" if tag is None else struct.pack(">HH", 0x8100, tag)
    return bytes(11) + b"\1" + tags + b"\x08\0" + head + ports


def pcap(frames, order="<", nano=False, link=1, cut=1000):
    """A second lies between two frames; the first is at 1700000000.000005."""
    file = struct.pack(order + "IHHiIII", 0xA1B23C4D if nano else 0xA1B2C3D4, 2, 4, 0, 0, 65535, link)
    for at, one in enumerate(frames):
        part = one[:cut]
        file += struct.pack(order + "IIII", 1700000000 + at, 5000 if nano else 5, len(part), len(one)) + part
    return file


def pcapng(frames, order="<", links=(1,)):
    """The newer form; the frames are of the interfaces in turn."""
    def block(kind, body):
        body += bytes(-len(body) % 4)
        return struct.pack(order + "II", kind, len(body) + 12) + body + struct.pack(order + "I", len(body) + 12)
    file = block(0x0A0D0D0A, struct.pack(order + "IHHq", 0x1A2B3C4D, 1, 0, -1))
    file += b"".join(block(1, struct.pack(order + "HHI", link, 0, 65535)) for link in links)
    for at, one in enumerate(frames):
        time = (1700000000 + at) * 1000000 + 5
        file += block(6, struct.pack(order + "IIIII", at % len(links), time >> 32, time & 0xFFFFFFFF, len(one), len(one)) + one)
    return file


def source(path):
    with open(f"{sources}/{path}", encoding="ascii") as file:
        return file.read()


def names():
    """What the headers declare, by the rule of filter_names.h."""
    prefixes = {"filtersErr_t": "FILTERS_(ERR_)?", "cp2cpuCancelParam_t": "", "port_type_t": "FILTERS_PORT_TYPE_"}
    text = ""
    header = source("include/filter_common/filter_types.h")
    for enum, body in re.findall(r"^FILTERS_ENUM\((\w+), \w+\)\{\n(.*?)^\}", header, re.DOTALL | re.MULTILINE):
        codes = re.findall(r"(\w+) = (-?\d+)", re.sub("//.*", "", body))
        shared = os.path.commonprefix([name for name, code in codes]).rpartition("_")[0] + "_"
        prefix = prefixes.get(enum, shared)
        text += rf"\w+ \({enum}\)\n"
        for name, code in codes:
            text += f"{code:>4}  {re.sub('^' + prefix, '', name).lower()}\n"
    text += r"policer_stages \(policer::Stage\)\n   0  ingress\n   1  egress\n   2  none\n"
    fields = re.findall(r"^\| `(\w+)` \|", source("docs/text-format.md").split("| field of a packet")[1], re.M)
    return text + r"fields \(Packet\)\n" + "".join(f"      {field}\n" for field in [*fields, "dscp"])


def capabilities():
    """What docs/capabilities.md says, table by table."""
    sections = source("docs/capabilities.md").split("\n## ")[1:]
    tables = [[re.split(r"[` ]*\|[` ]*", line)[1:-1] for line in part.split("\n") if line[:1] == "|"]
              for part in sections]
    matches, actions, types, policers = [[head] + rows for head, rule, *rows in tables]
    stages = types[0][1:]
    of_policers = [["", *stages]]
    for policer in ("Ingress", "Egress", "None"):
        held = ["x" if f"`{policer}`" in f"`{row[1]}`" else "" for row in policers[1:]]
        of_policers.append([policer, *held])
    text = ""
    for table, names in ((matches, 2), (types, 1), (actions, 2), (of_policers, 1)):
        text += r"[^\n]*:\n(type|stage) +" + " +".join(name.lower() for name in table[0][names:]) + r"\n"
        for row in table[1:]:
            name = re.sub("^FILTERS_(GROUP_TYPE|[A-Z]+)_", "", row[0]).lower()
            marks = " +".join("x" if mark == "x" else r"\." for mark in row[names:])
            text += rf"{name} +{marks}(  [^\n]*(\n {{30,}}[^\n]*)?)?\n"
        text += r"\n?"
    return r"(?=([^\n]{,80}\n)*\Z)" + text


NONE = ""
ENOENT = "No such file or directory\n"
MISSING = "".join(
    rf"empty: group 1: warning: group 0: {name}_ [^\n]* \[required-missing\]\n"
    for name in ("id", "priority", "stage", "type")
)
WHOLE = "g.bin: 2 groups, 12 entries, nothing to say\n"
G_TXT, COMPACT = object(), object()  # stand for the texts of g.txt and compact.json

# Each row has the arguments, the exit code, the results (standard output) and the errors (standard
# error). The results may be the name of a file in tests/golden/.
TABLE = [
    # --- What is shown
    ("show g.bin --width=80", 0, "show_80.txt", NONE),
    ("show g.bin --width=200", 0, "show_200.txt", NONE),
    ("show g.bin --order=lowest-priority,descending-id --width=0", 0,
     "[^\n]*\n.*\n1000 .*\n50 .*\n40 .*\n10 [^\n]*\n\n.*\n20 [^\n]*\n10 .*\n1 [^\n]*\n", NONE),
    ("show many_vlans.txt --width=60", 0,
     ".*\nentry +prio +ext_vlan_id +port +then\n"
     "1 +1 +{1001,1002,1003,1004 \\+6} +deny\n2 +1 +7 +deny\n3 +1 +7/0xfff0 +deny\n", NONE),
    ("show many_vlans.txt --width=0", 0, ".*1009,1010} .*", NONE),
    ("show many_vlans.txt --width=20", 0, ".*\n1 +1\n +ext_vlan_id\n.*\n +then deny\n.*", NONE),
    ("show long_lists.txt --width=80", 0,
     r".*\[eth-0,eth-1,eth-2,eth-3 \+49996\].* redirect=\[0x00000000 \+49999\].* 0=packets .* \+599\d\d\n.*",
     NONE),
    ("show long_lists.txt --width=28", 0, ".* 10000- +deny\n +20000\n", NONE),
    ("show long_lists.txt --width=0", 0, ".*,eth-49999.*,0x0000c34f.* 59999=packets\n.*", NONE),
    ("show none.txt", 0, "none.txt: no groups\n", NONE),
    ("show empty", 0, "empty: group 1: id 0, [^\n]*\n[^\n]*\nno entries\n", MISSING),
    ("show brace.bin --width=0", 0, ".* type 123 \\(unknown\\)\nno entries\n", "(brace.bin: [^\n]*\n){2}"),
    ("show rules.txt", 0, "rules.txt:2:1: group 7, priority 10, stage ingress \\(.*", NONE),
    ("show g.bin --as=text", 0, G_TXT, NONE),
    ("show - --as=text <g.bin", 0, G_TXT, NONE),
    ("show varint.bin --framing=varint --as=text", 0, G_TXT, NONE),
    ("--framing varint show varint.bin --as=text", 0, G_TXT, NONE),
    ("show g.txt --as=text", 0, G_TXT, NONE),
    ("show g.json --as=text", 0, G_TXT, NONE),
    ("show --from=json - --as=text <g.json", 0, G_TXT, NONE),
    ("show blanks.json --as=text", 0, G_TXT, NONE),
    ("show marked.txt --as=text", 0, G_TXT, NONE),
    ("show late_head.txt --as=text", 0, G_TXT, NONE),
    ("show latin.txt --as=text", 0, G_TXT, NONE),
    ("show marked.json --as=text", 0, G_TXT, NONE),
    ("show none.txt --as=text", 0, "filter-groups 1\n", NONE),
    ("show one.bin --as=text", 0, "filter-groups 1\ngroup 1 .*entry 1000 [^\n]*\n", NONE),
    ("show one.bin g.bin --as=text", 0,
     "filter-groups 1\n# one.bin: group 1\ngroup 1 .*# g.bin: group 1\n.*"
     "# g.bin: group 2\n.*", NONE),
    ("show g.bin --as=dump", 0, "=FiltersGroup=\n  ID: 1\n.*=FiltersGroup=\n  ID: 2\n.*", NONE),
    ("show lost.bin --as=text", 0, ".*entry 1000 priority=0 then deny .*",
     r"lost.bin: group 1: warning: entry 1000: match 99: .* \[match-unknown\]\n"),
    ("show empty --as=text", 0, "filter-groups 1\ngroup 0 priority=0 stage=none type=none\n", MISSING),
    ("show notes.bin --as=text", 0, "filter-groups 1\ngroup 1 .*", NONE),
    ("show brace.bin --as=text", 0, "filter-groups 1\ngroup 5 [^\n]* type=123\n", "(brace.bin: group 1: [^\n]*\n){2}"),
    ("show braces.bin --as=text --framing=varint", 2, "filter-groups 1\ngroup 5 [^\n]*\n", "(braces.bin: group 1: [^\n]*\n)*"),
    ("show printable.bin", 2, NONE, "printable.bin:1:2: error: the first line must be `filter-groups 1` .*"),
    ("show printable.bin --as=text --from=bytes", 0, ".*type=33\n", "(printable.bin: group 1: [^\n]*\n){3}"),
    ("show zero.txt", 2, NONE, "zero.txt:7:\\d+: error: no zero byte .*"),
    ("show zero.json", 2, NONE, "zero.json:7:\\d+: error: no zero byte .*"),
    ("show misspelt.txt", 2, NONE,
     "misspelt.txt:1:1: error: the first line must be `filter-groups 1` [^\n]*\n"
     "misspelt.txt: refused; nothing was read\n"),
    ("show thrown.bin --as=text", 2, "filter-groups 1\ngroup 1 .*entry 1000 [^\n]*\n",
     r"thrown.bin: group 1: error: entry 1: action mpls_port_set: it has no vpn_id .*"),
    ("show empty --framing=be32 --as=text", 0, "filter-groups 1\ngroup 0 [^\n]*\n", MISSING),
    ("show nosuch.bin g.bin --as=text", 2, G_TXT, "filter-inspect: nosuch.bin: " + ENOENT),
    # --- Only some groups and entries
    ("show g.bin --group=2 --entry=3 --entry=10", 0,
     "g.bin: group 2: id 2, [^\n]*\n.*\n3 [^\n]*\n10 [^\n]*\n[^\n]*\n", NONE),
    ("show g.bin --entry=1000 --as=text", 0,
     "filter-groups 1\ngroup 1 [^\n]*\nentry 1000 [^\n]*\n", NONE),
    ("show g.bin --entry=1000 --width=0", 0, "([^\n]*\n){3}1000 [^\n]*\n", NONE),
    ("show g.bin --group=3", 2, NONE, "filter-inspect: there is no group 3; there are: 1, 2\n"),
    ("show rules.txt --entry=5", 2, NONE, ".* no entry 5; there are: 10, 20, 30, 40\n"),
    ("show g.bin --entry=5", 2, NONE,
     ".* no entry 5; there are: 1, 2, 3, 10, 11, 20, 30, 40 and 2 more\n"),
    ("show cut.bin --framing=be32 --group=1", 2, "cut.bin: group 1: [^#]*",
     r"cut.bin: group 2: error: .*\[bytes-broken\]\n"),
    ("analyse rules.txt --order=highest-priority --entry=40 --max-findings=1", 1,
     r"[^\n]*entry 30: entry 40 .*\[entries-tie\]\n(  .*\n)+rules.txt: .*, 1 warning \(.*", NONE),
    ("analyse late.txt --order=highest-priority --group=1", 0,
     "(late.txt:[34]:1: note: .*\n(  .*\n)+){2}late.txt: 1 group, 3 entries, 2 notes .*", NONE),
    ("analyse g.bin --group=3", 2, ".*", "filter-inspect: there is no group 3; .*"),
    ("diff g.bin changed.txt --entry=1000", 1, "---[^\n]*\n[^\n]*\n-entry 1000 [^\n]*\n", NONE),
    ("diff g.bin changed.txt --entry=10 --entry=20", 0, NONE, NONE),
    ("diff g.bin changed.txt --entry=9", 2, NONE, "filter-inspect: there is no entry 9; .*"),
    ("diff g.bin renamed.txt --group=3", 1, "--- g.bin: no such group\n.*", NONE),
    ("diff rules.txt turned.txt --order=highest-priority --entry=30", 0,
     "rules.txt, turned.txt: no packet is treated differently .*", NONE),
    ("trace rules.txt --order=highest-priority --packet=src_ipv4=192.0.2.200 --entry=20", 0,
     "rules.txt:3:1: hit: entry 10 \\(permit\\)\n  20 undecided: ip_protocol is not told\n", NONE),
    ("trace twice.txt --group=8 --entry=20 --order=highest-priority"
     " --packet=src_ipv4=192.0.2.200,ip_protocol=6", 2, NONE, ".*\\[text-value\\]\n"),
    ("trace twice.txt --order=ascending-id --packet=ttl=1 --group=9", 2, NONE,
     "filter-inspect: there is no group 9; there are: 7, 8\n"),
    ("show g.bin --entry=x", 2, NONE, "filter-inspect: --entry: 'x' is no number [^\n]*\n"),
    # --- More and less output
    ("check lost.bin -q", 1, NONE, NONE),
    ("-q show lost.bin", 0, NONE, NONE),
    ("--quiet diff g.bin nosuch.bin", 2, NONE, "filter-inspect: nosuch.bin: " + ENOENT),
    ("check g.bin -v", 0, WHOLE,
     "filter-inspect: g.bin: \\d+ bytes, read as bytes with the framing be32: 2 groups\n"
     "filter-inspect: \\d+.\\d{3} s\n"),
    ("-q names --help", 0, "Print codes and their names\n.*", NONE),
    ("check rules.txt -v", 1, ".*", "[^\n]* read as text: 1 group\n[^\n]*: 1 finding, .* s\n"),
    # --- What is checked
    ("check g.bin", 0, WHOLE, NONE),
    ("check g.txt g.json", 0, "g.txt: 2 groups.*\ng.json: 2 groups.*", NONE),
    ("check notes.bin", 0,
     r"notes.bin: group 1: note: .*\[encoding-differs\]\nnotes.bin: .*1 note\n", NONE),
    ("check lost.bin", 1, r"lost.bin: group 1: warning: .*\[match-unknown\]\n.*", NONE),
    ("check refused.bin", 1, r".*\[entry-refused\]\n.*\[match-not-admitted\]\n.*", NONE),
    ("check empty", 1, MISSING + "empty: 1 group, 0 entries, 4 warnings\n", NONE),
    ("check g.bin lost.bin", 1, WHOLE + "lost.bin: group 1: warning: .*", NONE),
    ("check g.bin --stage=ingress --type=3", 1,
     r"g.bin: group 2: (?!.*field-repeated).*\[match-not-admitted\].*", NONE),
    ("check one.bin --stage=ingress --type=3", 0,
     "one.bin: 1 group, 7 entries, nothing to say\n", NONE),
    ("check thrown.bin --type=3 --max-findings=0", 1, "thrown.bin: [^\n]*left out: 1 error.*", NONE),
    ("check thrown.bin --type=3", 1,
     r"thrown.bin: group 1: error: [^\n]*\[rebuild-throws\]\n.*thrown.bin: 2 groups, 7 entries, .*", NONE),
    ("check one.txt --type=3", 0, "one.txt: 1 group, 7 entries, nothing to say\n", NONE),
    ("check one.bin --stage lookup --type 3", 1,
     r"one.bin: group 1: error: group 1: the stage lookup .*\[type-not-admitted\]\n.*", NONE),
    ("check refused.bin --type=3", 0, "refused.bin: 1 group, 7 entries, nothing to say\n", NONE),
    ("check elsewhere.txt", 2, NONE,
     r"(elsewhere.txt:\d:1: error: [^\n]*\n)*elsewhere.txt: refused; nothing was read\n"),
    ("check elsewhere.txt --type=3", 0, "elsewhere.txt: 1 group, 7 entries, nothing to say\n", NONE),
    ("check elsewhere.json --type=3", 1, "elsewhere.json:.*: 2 groups, .*", NONE),
    ("check elsewhere.txt --stage=egress", 1,
     r"elsewhere.txt:2:1: error: [^\n]*\[type-not-admitted\]\nelsewhere.txt:3:1: .*"
     r"elsewhere.txt: 1 group, 0 entries, .*", NONE),
    ("check bad.txt --type=3", 2, NONE, r"bad.txt:7:\d+: .*bad.txt: refused; nothing was read\n"),
    # --- What is converted
    ("convert g.txt --to=text", 0, G_TXT, NONE),
    ("convert g.json --to=text -o -", 0, G_TXT, NONE),
    ("convert g.txt --to=json --compact", 0, COMPACT, NONE),
    ("show - --as=text <compact.json", 0, G_TXT, NONE),
    ("--json show g.txt --compact", 0, COMPACT, NONE),
    ("show g.txt --compact", 2, NONE,
     "filter-inspect: --compact: only JSON is written without blanks\\n"),
    ("convert lost.bin --to=text -o kept.txt", 1, NONE,
     r"lost.bin: group 1: warning: .*\nfilter-inspect: lost.bin: not converted[^\n]*\n"),
    ("convert g.txt --to=bytes --framing=none", 2,
     NONE, "filter-inspect: g.txt: bytes of several groups need --framing=be32 or varint\n"),
    ("convert none.txt --to=bytes", 2, NONE,
     "filter-inspect: none.txt: there is no group, and an empty file would be read as a group of zeros\n"),
    ("convert g.bin --to=text -o folder/no/file", 2,
     NONE, "filter-inspect: folder/no/file: " + ENOENT),
    ("convert g.bin --to=text -o ''", 2, NONE, "filter-inspect: '': " + ENOENT),
    ("convert g.bin --to=text -o folder", 2, NONE, "filter-inspect: folder: Is a directory\n"),
    ("convert g.bin --to=text -o /dev/full", 2, NONE, "filter-inspect: /dev/full: No space left.*"),
    ("convert g.bin", 2, NONE, "filter-inspect: --to is required; filter-inspect help convert describes it\n"),
    # --- What is compared
    ("diff g.bin g.json", 0, NONE, NONE),
    ("diff g.bin swapped.txt", 0, NONE, NONE),
    ("diff g.bin changed.txt", 1,
     r"--- g.bin: group 1\n\+\+\+ changed.txt:2:1\n~entry 40 priority=\[-(\d+)-\]\{\+1\1\+\} if "
     r"(?!.*\[-if)[^\n]*ttl=\[-255-\]\{\+254\+\} [^\n]*\n-entry 1000 [^\n]*\n", NONE),
    ("diff rules.txt words.txt", 1,
     r"---.*\n~entry 10 priority=100 if src_ipv4=192.0.2.0/24 then permit"
     r" \{\+police \{id=5 stage=ingress flow cir=1000 red=drop\}\+\}\n"
     r"~entry 20 priority=90 if src_ipv4=192.0.2.128/25 \[-ip_protocol=6-\]\{\+ttl=6\+\} then"
     r" \[-deny-\]\{\+permit copy_to_cpu\+\}\n", NONE),
    ("diff words.txt rated.txt", 1,
     r"---.*\n~entry 10 .* flow cir=\[-1000-\]\{\+64\+\} red=\[-drop-\]\{\+pcp:1\+\}\}\n", NONE),
    ("diff hidden8.txt hidden9.txt", 1,
     r"---.*\n~entry 10 .* parent \[-0a060800100018081\w+-\]\{\+0a060800100018091\w+\+\} .*\n", NONE),
    ("diff g.bin moved.txt", 1,
     r".*\n~group 1 priority=\[-10-\]\{\+11\+\} [^\n]*\n", NONE),
    ("diff g.bin one.bin", 1,
     "--- g.bin: group 2\n\\+\\+\\+ one.bin: no such group\n-group 2 [^\n]*\n"
     "(-entry [^\n]*\n){5}", NONE),
    ("diff none.txt one.bin", 1,
     "--- none.txt: no such group\n[^\n]*\n\\+group 1 [^\n]*\n(\\+entry [^\n]*\n){7}", NONE),
    ("diff empty one.bin", 1, r"--- empty: group 1\n.*\n~group \[-0-\]\{\+1\+\} [^\n]*\n(\+entry [^\n]*\n){7}", MISSING),
    ("diff rules.txt lines.txt", 0, NONE, NONE),
    ("diff rules.txt bare.txt", 2, NONE,
     "bare.txt:1:15: error: a carriage return [^\n]*\nbare.txt: refused; nothing was read\n"),
    ("diff g.bin", 2, NONE, "filter-inspect: one more FILE is needed\n"),
    ("diff g.bin g.bin g.bin", 2, NONE, "filter-inspect: FILE is given too often\n"),
    ("diff - - <g.bin", 2, NONE, "filter-inspect: -: standard input is read once\n"),
    ("plan g.bin g.txt", 0, NONE, NONE),
    ("plan g.bin changed.txt", 0,
     "# g.bin: group 1 to changed.txt:2:1\ninsert entry 40 .*ttl=254.*\nremove entry 1000\n",
     NONE),
    ("plan g.bin changed.txt --remove-first", 0,
     "[^\n]*\nremove entry 1000\ninsert entry 40 .*\n", NONE),
    ("plan one.bin one.txt", 0, NONE, NONE),
    ("plan g.bin renamed.txt", 1, NONE,
     r"g.bin: group 2: error: group 2: no step takes a whole group away \[no-plan\]\n"
     r"renamed.txt:10:1: error: group 3: no step makes a new group \[no-plan\]\n"),
    ("plan rules.txt turned.txt", 0, "(insert|remove) entry 20.*", NONE),
    # --- Analysis of rules
    ("analyse rules.txt --order=highest-priority", 1,
     r"rules.txt:5:1: warning: entry 30: match dst_l4_port: .*\[value-unusual\]\n"
     r"rules.txt:4:1: warning: entry 20: .*entry 10 .*\[entry-unreachable\]\n"
     r"  packet: [^\n]*src_ipv4=192.0.2.129 [^\n]*\n  deny becomes permit\n"
     r"rules.txt:5:1: warning: entry 30: entry 40 .*\[entries-tie\]\n"
     r"  packet: [^\n]*ttl=1[^\n]*\n  entry 30: permit; entry 40: deny\n"
     r"rules.txt: 1 group, 4 entries, 3 warnings \(order: highest-priority; "
     r"assumptions A1-A5: filter-inspect\(1\)\)\n", NONE),
    ("analyse rules.txt", 1,
     r".*\[value-unusual\]\n[^\n]*entry 20: [^\n]*\[entries-overlap\]\n(  .*\n)?"
     r"rules.txt: .*, 1 warning, 1 note \(order: unspecified; .*", NONE),
    ("analyse rules.txt --overlaps --max-findings=1", 1,
     r"[^\n]*\[value-unusual\]\n[^\n]*; left out: 4 notes; --max-findings=N shows more \(.*", NONE),
    ("analyse late.txt --order=highest-priority --max-findings=2", 1,
     r"late.txt:7:3: warning: entry 4: [^\n]*\[entries-tie\]\n(  [^\n]*\n)+"
     r"late.txt:3:1: note: entry 1: [^\n]*\n(  [^\n]*\n)+late.txt: 2 groups, 5 entries, "
     r"1 warning, 1 note; left out: 1 note; --max-findings=N shows more \(.*", NONE),
    ("analyse late.txt --order=highest-priority --no-redundant", 1,
     r"late.txt:7:3: warning: [^\n]*\n(  [^\n]*\n)+[^\n]* 1 warning \(order: .*", NONE),
    ("analyse one.txt one.txt --max-steps=0 --order=ascending-id", 0,
     "(one.txt:\\d+:1: note: [^\n]*\n)*one.txt: [^\n]*\n(.*)\n", NONE),
    ("analyse g.bin g.json --order=ascending-id", 0,
     "(g.(bin|json): 2 groups, 12 entries, nothing to say \\(order: [^\n]*\n){2}", NONE),
    ("analyse lost.bin nosuch.bin --order=lowest-priority", 2, ".*lost.bin: 1 group, 7 entries.*",
     r"lost.bin: group 1: warning: .*\[match-unknown\]\nfilter-inspect: nosuch.bin: " + ENOENT),
    ("analyse cut.bin --framing=be32", 2, ".*cut.bin: 2 groups, 7 entries.*",
     r"cut.bin: group 2: error: .*\[bytes-broken\]\n"),
    ("analyse g.bin --order=priority", 2, NONE, ".*'priority'; did you mean highest-priority, lowest-priority, .*\n"),
    ("expect policy.txt rules.txt", 1,
     "policy.txt:3: holds: always permit if src_ipv4=192.0.2.0/24 \\[policy-holds\\]\n"
     "policy.txt:4: not decided: entry 40 denies [^\n]*, unless entry 30 permits it: nothing says which of "
     "entries 30 and 40 comes first \\[policy-open\\]\n"
     "policy.txt:5: fails: entry 10 permits [^\n]* ttl=[2-9] \\[policy-fails\\]\n"
     "policy.txt: 3 promises: 1 holds, 1 fails, 1 is not decided \\(assumptions A1-A5: [^\n]*\n", NONE),
    ("expect kept.policy twice.txt", 0,
     ".*kept.policy: 1 promise: 1 holds; no promise about group 8 \\(.*\n", NONE),
    ("expect kept.policy twice.txt --group=7", 0, ".*kept.policy: 1 promise: 1 holds \\(.*\n", NONE),
    ("expect kept.policy twice.txt --group=8", 0,
     "kept.policy: 0 promises; no promise about group 8 \\(.*\n", NONE),
    ("expect kept.policy same.txt", 0,
     "kept.policy:3: holds: same.txt:2:1: always [^\n]*\nkept.policy:3: holds: same.txt:7:1: [^\n]*\n"
     "kept.policy: 2 promises: 2 hold .*", NONE),
    ("expect -q policy.txt rules.txt", 1, NONE, NONE),
    ("expect - rules.txt <kept.policy", 0, "-:3: holds: .*", NONE),
    ("expect kept.policy - <rules.txt", 0, "kept.policy:3: holds: .*", NONE),
    ("expect - - <rules.txt", 2, NONE, "filter-inspect: -: standard input is read once\n"),
    ("expect kept.policy g.bin", 2, NONE, "kept.policy:2:1: error: g.bin has no group 7 \\[usage\\]\n"),
    ("expect kept.policy rules.txt --group=9", 2, NONE, ".*there is no group 9; there are: 7\n"),
    ("expect bad.policy rules.txt", 2, NONE,
     "bad.policy:2:15: error: there is no order 'ascending'; did you mean ascending-id\\? .*\n"
     "bad.policy:3:8: error: .*did you mean permit.*\nbad.policy:3:17: error: .*"
     "bad.policy: refused; nothing was read\n"),
    ("expect bad.policy rules.txt --max-findings=1", 2, NONE,
     "bad.policy:2:15: [^\n]*\nbad.policy: left out: 2 errors; [^\n]*\nbad.policy: refused; [^\n]*\n"),
    ("expect large.bin rules.txt --max-bytes=9", 2, NONE, ".*large.bin: there are more than 9 bytes.*"),
    ("expect nosuch.txt rules.txt", 2, NONE, "filter-inspect: nosuch.txt: " + ENOENT),
    ("expect kept.policy nosuch.txt", 2, NONE, "filter-inspect: nosuch.txt: " + ENOENT),
    ("expect kept.policy", 2, NONE, ".*FILE.*"),
    ("expect kept.policy rules.txt --junit=-", 2, NONE, ".*standard output takes the verdicts.*"),
    ("expect kept.policy rules.txt --junit=nosuch/policy.xml", 2, "kept.policy:3: holds: .*",
     "filter-inspect: nosuch/policy.xml: " + ENOENT),
    ("expect policy.txt rules.txt --max-steps=0", 1, ".* not decided: whether it holds takes too many steps.*", NONE),
    ("analyse --policy=policy.txt rules.txt", 0,
     "rules.txt: 1 group, 4 entries, nothing else to say; 3 accepted \\(order: highest-priority; .*\n", NONE),
    ("analyse --policy=kept.policy rules.txt", 1, ".*\\(order: ascending-id; .*", NONE),
    ("analyse --policy=policy.txt --order=ascending-id rules.txt", 2, NONE,
     "policy.txt:2:1: error: group 7 has the order highest-priority, and not ascending-id \\[usage\\]\n"),
    ("analyse --policy=stale.policy twice.txt", 2, NONE,
     "stale.policy:4:1: error: group 8 has the order lowest-priority, and not ascending-id: choose [^\n]*\n"),
    ("analyse --policy=stale.policy twice.txt --group=7", 1,
     ".*note: entry 10: line 3 of the policy accepts entries-tie, which is not found.*", NONE),
    ("analyse --policy=policy.txt g.bin --order=highest-priority", 1, ".*",
     "policy.txt:2:1: note: there is no group 7 \\[accept-stale\\]\n"),
    ("analyse --policy=bad.policy rules.txt", 2, NONE, ".*bad.policy: refused; nothing was read\n"),
    ("trace rules.txt --order=highest-priority --packet=src_ipv4=192.0.2.7", 0,
     "rules.txt:3:1: hit: entry 10 \\(permit\\)\n  10 hit\n  20 miss: src_ipv4\n  30 undecided: .*", NONE),
    ("trace rules.txt --order=ascending-id --packet=ip_protocol=6", 1,
     "rules.txt:2:1: undecided: no entry takes it, unless 10, 30 or 40 does\n"
     "  10 undecided: src_ipv4 is not told \\(permit\\)\n(  \\d+ undecided: .*){3}",
     NONE),
    ("trace rules.txt --order=highest-priority --packet=ip_protocol=tcp", 1, ".*undecided: .*", NONE),
    ("trace rules.txt --order=highest-priority --packets=packets.txt", 1,
     "packets.txt:2: rules.txt:3:1: hit: entry 10 \\(permit\\)\n"
     "packets.txt:4: rules.txt:2:1: undecided: 30 or 40 takes it; nothing [^\n]*\n"
     "packets.txt:5: rules.txt:2:1: miss\n", NONE),
    ("trace g.bin --order=highest-priority --packets=- <packets.txt", 1,
     "-:2: g.bin: group 1: [^\n]*\n-:2: g.bin: group 2: [^\n]*\n-:4: .*-:5: .*", NONE),
    ("trace rules.txt --order=ascending-id --packets=- <wrong.txt", 2,
     "-:2: rules.txt:\\d:1: [^\n]*\n",
     r"-:1:7: error: 'foo': there is no such field; filter-inspect names fields lists them [^\n]*\n"
     r"-:1:13: error: 'ttl=999': ttl is a number from 0 to 255 .*"),
    ("trace none.txt --order=ascending-id --packets=wrong.txt --max-findings=0", 2, NONE,
     "wrong.txt:1:7: [^\n]*\nwrong.txt: left out: 2 errors; --max-findings=N shows more\n"),
    ("trace none.txt --order=ascending-id --packets=packets.txt --max-bytes=38", 0, NONE, NONE),
    ("trace rules.txt --order=highest-priority --packet=ttl=2 --color=always", 1,
     "\33\\[33mrules.txt:2:1: undecided: [^\n]*\33\\[0m\n.*", NONE),
    ("trace cut.bin --framing=be32 --order=ascending-id --packet=ttl=1", 2, "cut.bin: group 1: .*",
     r"cut.bin: group 2: error: .*\[bytes-broken\]\n"),
    ("trace none.txt --order=ascending-id --packets=packets.txt --max-bytes=20", 2, NONE,
     "filter-inspect: packets.txt: a line is longer .*"),
    ("trace rules.txt --order=ascending-id --packet=\33[31m", 2, NONE,
     r"--packet:1:1: error: '\?\[31m': .*"),
    ("trace rules.txt --order=ascending-id --packet=ttl", 2, NONE,
     r"--packet:1:1: error: .*\[text-syntax\]\n"),
    ("trace rules.txt --order=ascending-id --packets=folder", 2, NONE,
     "filter-inspect: folder: Is a directory\n"),
    ("hits - --order=ascending-id --capture=-", 2, NONE, ".* standard input is read once\n"),
    ("hits rules.txt --order=ascending-id", 2, NONE, "filter-inspect: --capture is required; .*"),
    ("hits rules.txt --order=ascending-id --capture=c --svg=-", 2, NONE, ".*takes the table.*"),
    ("hits rules.txt --order=ascending-id --capture=c --assume=ttl=x", 2, NONE, "--assume:1:1: error: .*"),
    ("hits rules.txt --order=ascending-id --capture=c --entry=77", 2, NONE, ".* 77\\b.*"),
    ("diff rules.txt - --order=ascending-id --capture=-", 2, NONE, ".* standard input is read once\n"),
    ("diff rules.txt fewer.txt --capture=c", 2, NONE, ".*--capture: an order is needed: --order\n"),
    ("diff rules.txt fewer.txt --order=ascending-id --assume=ttl=1", 2, NONE, ".*frames of --capture\n"),
    ("trace - --order=ascending-id --packets=-", 2, NONE, ".* standard input is read once\n"),
    ("trace rules.txt --packet=ttl=1", 2, NONE, "filter-inspect: --order is required; filter-inspect help trace describes it\n"),
    ("trace rules.txt --order=ascending-id", 2, NONE, "filter-inspect: give either --packet or .*"),
    ("trace rules.txt --order=ascending-id --packet=ttl=1 --packets=packets.txt", 2, NONE,
     "filter-inspect: give either --packet or .*"),
    ("search rules.txt --order=highest-priority --packets=src_ipv4=192.0.2.0/24 --then=permit", 1,
     "rules.txt:2:1: 1 entry with permit takes all of these packets\n"
     "  entry 10: permit  [^\n]*src_ipv4=192.0.2.1 [^\n]*\n", NONE),
    ("search rules.txt --order=highest-priority --packets=src_ipv4=192.0.2.0/25", 1,
     "rules.txt:2:1: 1 entry takes all of these packets\n  entry 10: permit  [^\n]*\n", NONE),
    ("search rules.txt --order=highest-priority --packets=src_ipv4=192.0.2.0/24 --then=deny", 0,
     "rules.txt:2:1: no entry with deny takes any of these packets\n", NONE),
    ("search rules.txt --order=highest-priority --packets='src_ipv4=10.0.0.0/8 dst_l4_port=80-90'", 2,
     "rules.txt:2:1: 2 entries may take some of these packets\n"
     "  entry 30: permit, perhaps  dst_l4_port=8[^\n]*\n"
     "    dst_l4_port: its mask of 0 may mean that value alone\n"
     "  entry 40: deny, perhaps +[^\n]*ttl=1\n"
     "    entry 30: dst_l4_port: [^\n]*\n"
     "  no entry, perhaps +[^\n]*\n    entry 30: [^\n]*\n", NONE),
    ("search rules.txt --order=highest-priority --packets='dst_l4_port=80 ttl=1' --then=permit", 1,
     ".*", NONE),
    ("search rules.txt --order=highest-priority --packets='dst_l4_port=80 src_ipv4=none' --then=permit",
     2, "rules.txt:2:1: 1 entry with permit may take some of these packets\n.*", NONE),
    ("search twice.txt --order=highest-priority --touching --group=8 --packets=src_ipv4=192.0.2.128/25", 1,
     "twice.txt:7:1: 4 entries match some of these packets\n(  entry [^\n]*\n)*", NONE),
    ("search rules.txt --order=highest-priority --entry=20 --entry=10 --packets=ttl=1", 1,
     "rules.txt:4:1: entry 20 \\(deny\\): nothing is left of it\n"
     "rules.txt:3:1: entry 10 \\(permit\\): packets are left for it\n"
     "  src_ipv4=192.0.2.0/24 ttl=1\n", NONE),
    ("search rules.txt --order=highest-priority --packets=src_ipv4=192.0.2.128/25 --then=deny"
     " --max-steps=0", 2, "rules.txt:2:1: no entry with deny takes any of these packets; what else "
     "there is takes too many steps to say\n", NONE),
    ("search - --order=ascending-id --packets=ttl=1 -q <rules.txt", 1, NONE, NONE),
    ("search rules.txt --order=ascending-id --packets=ttl={1,300}", 2, NONE,
     r"--packets:1:8: error: '300': ttl is a number from 0 to 255 .*"),
    ("search rules.txt --order=ascending-id --then=premit", 2, NONE,
     r"--then:1:1: error: there is no action 'premit'; did you mean permit\? .*"),
    ("search rules.txt --order=ascending-id --entry=10 --touching", 2, NONE,
     "filter-inspect: --entry stands without .*"),
    ("search rules.txt --order=ascending-id --entry=11", 2, NONE, ".*there is no entry 11; .*"),
    ("diff rules.txt turned.txt --order=highest-priority", 1,
     "---.*~entry 20 [^\n]*\nrules.txt:4:1: warning: entry 20: priority=90 became priority=110: [^\n]*"
     "\\[treatment-differs\\]\n  packet: [^\n]*src_ipv4=192.0.2.129[^\n]*\n  permit becomes deny\n"
     "rules.txt, turned.txt: 1 change treats packets differently"
     "[^\n]*\\(order: highest-priority; .*",
     NONE),
    ("diff rules.txt fewer.txt --order=highest-priority", 1,
     ".*\nrules.txt, fewer.txt: 1 change treats packets differently, 1 not decided .*",
     NONE),
    ("diff rules.txt turned.txt --order=highest-priority --packets=ip_protocol=6", 1,
     ".*warning: entry 20: .*turned.txt:2:1: note: group 7: nothing else changes.*", NONE),
    ("diff rules.txt turned.txt --order=highest-priority --packets=src_ipv4=10.0.0.0/8", 1,
     ".*note: entry 20: [^\n]*: none of these packets is treated differently .*"
     "turned.txt:2:1: warning: group 7: other packets are treated differently too.*", NONE),
    ("diff rules.txt turned.txt --packets=ttl=1", 2, NONE, ".*--packets: an order is needed: --order\n"),
    ("diff rules.txt turned.txt --order=highest-priority --packets=ttl= --max-findings=0", 2, NONE,
     ".*--packets:1:1: error: 'ttl=': .*"),
    ("diff rules.txt turned.txt --order=highest-priority --max-findings=0", 1,
     ".*: 1 change treats packets differently; 1 finding left out [^\n]*\n", NONE),
    ("diff rules.txt turned.txt --order=ascending-id", 1,
     ".*rules.txt, turned.txt: no packet is treated differently \\(order: ascending-id; .*", NONE),
    ("check rules.txt", 1, r".*entry 30: .*\[value-unusual\]\nrules.txt: .*, 1 warning\n", NONE),
    # --- Capabilities and names
    ("capabilities --stage lookup --type 3", 0,
     "lookup does not admit type 3; it admits types none, 4, 6[^\n]*\n", NONE),
    ("capabilities --stage=1 --type=3", 0, "lookup does not admit type 3; [^\n]*\n", NONE),
    ("capabilities empty", 0, NONE, r"(empty: group 1: warning: [^\n]*\[required-missing\]\n){4}"),
    ("capabilities --type=6", 0,
     "type 6 admits the matches all, .*vlan_tagging.*\n.*none, lookup\n", NONE),
    ("capabilities --stage=egress", 0,
     "stage egress admits the types none, 5.*\n.*policer stages egress, none\n", NONE),
    ("capabilities", 0, capabilities(), NONE),
    ("capabilities --stage=ingress --type=3", 0,
     "(stage ingress admits [^\n]*\n(  [^\n]*\n)*){3}type 3 admits [^\n]*\n(  [^\n]*\n)+"
     "type 3 lives in [^\n]*\n", NONE),
    ("capabilities one.bin", 0,
     "(one.bin: group 1: entry \\d+: fits ingress/3[^\n]*\n){6}one.bin: group 1: entry 1000: fits none/3 [^\n]*\n",
     NONE),
    ("capabilities refused.bin --stage=ingress", 0,
     "(refused.bin: group 1: entry \\d+: fits ingress/3[^\n]*\n){7}", NONE),
    ("capabilities elsewhere.txt", 0, "(elsewhere.txt:\\d:1: entry \\d+: fits [^\n]*\n){7}", NONE),
    ("capabilities elsewhere.json --type=3", 1, "elsewhere.json:.*fits ingress/3.*", NONE),
    ("capabilities lost.bin", 0, "(lost.bin: group 1: entry [^\n]*\n){7}",
     r"lost.bin: group 1: warning: [^\n]*\[match-unknown\]\n"),
    ("capabilities g.txt --type=3", 1, ".*g.txt:15:1: entry 20: none of the stages and types asked about "
     "admits it\n.*", NONE),
    ("names stages types", 2, NONE, "filter-inspect: one argument too many: types\n"),
    ("names stages", 0, "   0  none\n   1  lookup\n   2  ingress\n   3  egress\n", NONE),
    ("names filtersErr_t", 0, ".*  -4  invalid\n.*", NONE),
    ("names", 0, names(), NONE),
    # --- Files that cannot be read
    ("show nosuch.bin", 2, NONE, "filter-inspect: nosuch.bin: " + ENOENT),
    ("check nosuch.bin g.bin", 2, WHOLE, "filter-inspect: nosuch.bin: " + ENOENT),
    ("convert nosuch.bin --to=text", 2, NONE, "filter-inspect: nosuch.bin: " + ENOENT),
    ("diff nosuch.bin g.bin", 2, NONE, "filter-inspect: nosuch.bin: " + ENOENT),
    ("plan g.bin nosuch.bin", 2, NONE, "filter-inspect: nosuch.bin: " + ENOENT),
    ("analyse nosuch.bin", 2, NONE, "filter-inspect: nosuch.bin: " + ENOENT),
    ("trace nosuch.bin --order=ascending-id --packet=ttl=1", 2, NONE,
     "filter-inspect: nosuch.bin: " + ENOENT),
    ("capabilities nosuch.bin", 2, NONE, "filter-inspect: nosuch.bin: " + ENOENT),
    ("show \x7f.bin", 2, NONE, "filter-inspect: \\?.bin: " + ENOENT),
    ("plan bad.txt g.bin", 2, NONE, r"bad.txt:7:\d+: error: there is no match 'tttl'; did you mean ttl\? \[.*"),
    ("analyse bad.json", 2, NONE, r"bad.json:4:\d+: error: this is no JSON: a value or `\]` comes here .*"),
    ("trace bad.txt --order=ascending-id --packet=ttl=1", 2, NONE, r"bad.txt:7:\d+: .*"),
    ("capabilities bad.txt", 2, NONE, r"bad.txt:7:\d+: .*"),
    ("check folder", 2, NONE, "filter-inspect: folder: Is a directory\n"),
    ("check ''", 2, NONE, "filter-inspect: '': " + ENOENT),
    ("show bad.txt", 2, NONE, r"bad.txt:7:\d+: error: [^\n]* \[text-[^\n]*\n[^\n]*\n"),
    ("check bad.json", 2, NONE, r"bad.json:4:\d+: error: [^\n]* \[text-syntax\]\n[^\n]*\n"),
    ("convert bad.txt --to=bytes -o bad.bin", 2, NONE, r"bad.txt:7:\d+: .*"),
    ("check wide.json", 2, NONE, r"wide.json:\d+:\d+: error: [^\n]* \[text-value\]\n[^\n]*\n"),
    ("check future.txt", 2, NONE, r"future.txt:1:\d+: .*\[text-version\]\n.*"),
    ("check future.json", 2, NONE, r"future.json:1:\d+: .*\[text-version\]\n.*"),
    ("show --from=text g.bin", 2, NONE, r"g.bin:1:1: .*"),
    # --- Frames that are not whole
    ("check cut.bin", 1,
     r"cut.bin: group 1: error: .*\[bytes-broken\]\n.*", ".*--framing=be32 reads it so\n"),
    ("check cut_first.bin", 1, "cut_first.bin: group 1: error: [^\n]*\n[^\n]*\n",
     "[^\n]*--framing=be32 reads it so\n"),
    ("check cut.bin --framing=be32", 1,
     r"cut.bin: group 2: error: [^\n]* \[bytes-broken\]\ncut.bin: 2 groups, 7 entries, "
     r"1 error\n", NONE),
    ("check cut_length.bin --framing=be32", 1,
     r"cut_length.bin: group 3: error: .*2 bytes.*", NONE),
    ("show cut.bin --framing=be32 --as=text", 2, "filter-groups 1\ngroup 1 .*entry 1000 [^\n]*\n",
     r"cut.bin: group 2: error: [^\n]* \[bytes-broken\]\n"),
    ("capabilities cut.bin --framing=be32", 2, "(cut.bin: group 1: [^\n]*\n){7}", r"cut.bin: group 2: error: .*"),
    ("convert cut.bin --framing=be32 --to=text", 2, NONE, r"cut.bin: group 2: error: .*"),
    ("diff g.bin cut.bin --framing=be32", 2, NONE, r"cut.bin: group 2: error: .*"),
    ("plan cut.bin g.bin --framing=be32", 2, NONE, r"cut.bin: group 2: error: its length is [^\n]*\n"),
    ("check zeros.bin", 1, r".*\[bytes-broken\].*", NONE),
    ("check cut_group.bin", 1, r".*\[bytes-broken\].*", NONE),
    ("show cut_group.bin --as=text --max-findings=0", 2,
     "filter-groups 1\ngroup 1 .*", r".*\[bytes-broken\].*"),
    ("show cut_group.bin --as=text", 2, "filter-groups 1\ngroup 1 .*", r".*\[bytes-broken\].*"),
    ("check g.bin --framing=none", 1, r"g.bin: group 1: error: .*\[bytes-broken\]\n.*", NONE),
    ("check varint.bin --framing=be32", 1,
     r"varint.bin: group 1: error: .*\[bytes-broken\]\n.*", NONE),
    # --- Limits
    ("check large.bin", 2,
     NONE, "filter-inspect: large.bin: [^\n]*67108864[^\n]*--max-bytes=N[^\n]*\n"),
    ("check many.bin --max-bytes=40 --max-findings=40", 1, "(many.bin: group \\d+: [^\n]*\n){40}.*", NONE),
    ("check many.bin --max-bytes=39", 2, NONE, "filter-inspect: many.bin: there are more than 39 .*"),
    ("check g.txt --max-groups=1", 2, "g.txt: 1 group, 7 entries, nothing to say\n",
     "filter-inspect: g.txt: there are more than 1 group, and only those are read; --max-.*"),
    ("check rules.txt --max-findings=0", 1, "rules.txt: 1 group, 4 entries; left out: 1 warning; .*", NONE),
    ("check twice.txt --max-findings=1", 1,
     "twice.txt:5:1: [^\n]*\ntwice.txt: 2 groups, 8 entries, 1 warning; left out: 1 warning; .*", NONE),
    ("check refused.bin --stage=egress --type=1 --max-findings=2", 1,
     "(refused.bin: group 1: [^\n]*\n){2}refused.bin: 1 group, 0 entries, 2 errors; left out: 28 "
     "errors, 7 warnings; .*", NONE),
    ("check refused.bin --stage=egress --type=1 --max-findings=33", 1,
     "(refused.bin: group 1: [^\n]*\n){33}[^\n]* 30 errors, 3 warnings; left out: 4 warnings; .*",
     NONE),
    ("check cut_group.bin --stage=egress --type=1", 1,
     r"cut_group.bin: group 1: error: group 1: the stage egress [^\n]*\n.*"
     r"cut_group.bin: group 1: error: entry 1000: counter 1: [^\n]* \[bytes-broken\]\n.*", NONE),
    ("analyse twice.txt --order=highest-priority --max-findings=4", 1,
     "(twice.txt:[3-5]:1: .*){3}twice.txt:10:1: [^\n]*\ntwice.txt: 2 groups, 8 entries, 4 warnings; "
     "left out: 2 warnings; [^\n]*\n", NONE),
    ("check g.bin --max-bytes=1000", 2, NONE, "filter-inspect: g.bin: .*--max-bytes=N.*"),
    ("check many.bin --max-groups=9 --max-findings=2", 2,
     r"(many.bin: group 1: warning: [^\n]*\n){2}many.bin: 9 groups, 0 entries, 2 warnings; "
     r"left out: 34 warnings; --max-findings=N shows more\n",
     r"filter-inspect: many.bin: [^\n]*--max-groups=N[^\n]*\n"),
    ("show many.bin --as=text --max-findings=0", 0, "filter-groups 1\n(group 0 [^\n]*\n){10}",
     "many.bin: left out: 40 warnings; --max-findings=N shows more\n"),
    ("convert lost.bin --to=text --max-findings=0", 1, NONE, ".*not converted.*"),
    ("check faulty.txt --max-findings=0", 2,
     NONE, "faulty.txt:2:1: [^\n]*\nfaulty.txt: left out: 1002 errors; [^\n]*\n"
     "faulty.txt: refused; nothing was read\n"),
    ("check faulty.txt --max-findings=2000", 2, NONE, r"(faulty.txt:\d+:1: [^\n]*\n){1003}[^\n]*\n"),
    ("diff g.bin bad.json --max-findings=0", 2, NONE, r"bad.json:4:\d+: [^\n]*\n[^\n]*\n"),
    ("check lost.bin --max-findings=0", 1,
     ".*left out: 1 warning; --max-findings=N shows more\n", NONE),
    # --- Command lines
    ("", 2, NONE, "filter-inspect: a command is missing; [^\n]*\n"),
    ("shwo g.bin", 2, NONE, "filter-inspect: there is no command shwo; did you mean show\\?\n"),
    ("show --jsn g.bin", 2,
     NONE, "filter-inspect: there is no option --jsn; did you mean --json\\?\n"),
    ("--colour=never show g.bin", 2, NONE, ".* no option --colour; did you mean --color\\?\n"),
    ("plan --remove-frist a b", 2, NONE, ".* did you mean --remove-first\\?\n"),
    ("show --as=jsn g.bin", 2, NONE, "filter-inspect: --as: .*'jsn'; did you mean json\\?\n"),
    ("check --stage=ingres g.bin", 2, NONE, ".*did you mean ingress\\?\n"),
    ("capabilities --type=99", 2, NONE, ".*'99'; it can be none, 1, .* 10 or 11\n"),
    ("check --stage=INGRESS g.bin", 2, NONE, ".*'INGRESS'; did you mean ingress\\?\n"),
    ("chekc g.bin", 2, NONE, ".*did you mean check\\?\n"),
    ("list g.bin", 2, NONE, ".*no command list; it can be show, check, .*\n"),
    ("names matchs", 2, NONE, ".*did you mean matches\\?\n"),
    ("show", 2, NONE, "filter-inspect: FILE is required\n"),
    ("show -x g.bin", 2, NONE, "filter-inspect: there is no option -x; filter-inspect show --help lists them\n"),
    ("show --jsn=1 g.bin", 2, NONE, ".* no option --jsn; did you mean --json\\?\n"),
    ("check --max-groups=9x g.bin", 2, NONE, ".*--max-groups: '9x' is no number that it can have\n"),
    ("analyse g.bin --svg", 2, NONE, "filter-inspect: --svg: a value is missing\n"),
    ("check --max-groups=x g.bin", 2, NONE, "filter-inspect: --max-groups: 'x' [^\n]{,40}\n"),
    ("check --max-bytes=99999999999999999999 g.bin", 2, NONE, ".*--max-bytes: '9{20}' .*"),
    ("check --max-findings=-1 g.bin", 2, NONE, "filter-inspect: --max-findings: [^\n]*\n"),
    ("check -- g.bin", 0, WHOLE, NONE),
    ("--help", 0,
     r".*--max-findings N  [^-]* \(default 1000\)\n.*show.*check.*convert.*diff.*plan.*analyse.*trace.*"
     r"capabilities.*names.*\nExit status 0: [^\n]{,63}\nExit status 1: [^\n]{,63}\nExit status 2: [^\n]{,63}\n.*", NONE),
    ("check --help", 0, ".*--stage.*", NONE),
    ("help", 0, ".*Subcommands:.*", NONE),
    ("help trace", 0, ".*Fields of a packet: ingress_port, .*\\bdscp\\.\n", NONE),
    ("help chekc", 2, NONE, "filter-inspect: there is no command chekc; did you mean check\\?\n"),
    ("help show extra", 2, NONE, "filter-inspect: one argument too many: extra\n"),
    ("--version", 0, r"filter-inspect (\d+\.\d+\.\d+)\nlibfilter_inspect \1\nlibfilter_common \1\n"
     r"protocol buffers: built with \d+\.\d+\.\d+, runs with lib\S+\n(libpcap .*\n)?", NONE),
    # --- Colours
    ("diff g.bin changed.txt --color=always", 1,
     ".*\n~entry 40 .* if .*ttl=\33\\[31m\\[-255-]\33\\[0m\33\\[32m{\\+254\\+}\33\\[0m .*\n"
     "\33\\[31m-entry 1000 .*", NONE),
    ("check lost.bin --color=always", 1, r"lost.bin: group 1: \x1b\[33mwarning\x1b\[0m: .*", NONE),
    ("check notes.bin --color=always", 0, r"notes.bin: group 1: \x1b\[36mnote\x1b\[0m: .*", NONE),
    ("check refused.bin --color=always", 1, r".*\nrefused.bin: group 1: \x1b\[31merror\x1b\[0m: .*", NONE),
    ("show cut.bin --framing=be32 --color=always", 2, ".*", r"cut.bin: group 2: \x1b\[31merror\x1b\[0m: .*"),
    ("show bad.txt --color=always", 2, NONE,
     r"bad.txt:7:\d+: \x1b\[31merror\x1b\[0m: [^\n]*\n  .*tttl=255[^\n]*\n +\^~~~\nbad.txt: .*"),
    ("show elsewhere.txt --color=always", 2, NONE,
     r".* match ip_protocol: [^\n]*\n  entry [^\n]* ip_protocol=[^\n]*\n +\^~{10}\n.*"),
    ("show wide.json --color=always", 2, NONE, r"wide[^\n]*\n +\"priority\": 10*,\n +\^~{30}\n.*"),
    ("trace g.bin --order=ascending-id --packets=- --color=always <wrong.txt", 2, ".*",
     r"[^\n]* no such field[^\n]*\n  ttl=1 foo=3 ttl=999\n        \^~~\n.*"),
]

# Rows for --json. Each row has the arguments, the exit code, whether standard output and standard
# error have a document, and words that the documents must contain.
DOCUMENTS = [
    ("check lost.bin g.bin", 1, True, False, {"match-unknown", '"groups": 2'}),
    ("check g.bin nosuch.bin", 2, True, True, {"file-unreadable"}),
    ("check cut.bin --framing=be32", 1, True, False, {"bytes-broken"}),
    ("check bad.txt", 2, False, True, {"text-syntax"}),
    ("check refused.bin", 1, True, False,
     {"entry-refused", "match-not-admitted", '"group": 1', '"offender": "dst_l4_port"'}),
    ("show nosuch.bin", 2, False, True, {"file-unreadable"}),
    ("show bad.txt", 2, False, True, {'"group_number": 1', '"path": "7:'}),
    ("analyse nosuch.bin", 2, False, True, {"file-unreadable"}),
    ("capabilities nosuch.bin", 2, False, True, {"file-unreadable"}),
    ("show many.bin --max-findings=0", 0, True, True, {'"left_out": 40'}),
    ("check bad.txt faulty.txt --max-findings=1", 2, False, True,
     {'"path": "7:', '"left_out": 1002', '"word": "tttl"'}),
    ("diff g.bin changed.txt", 1, True, False, {"entry-changed", "entry-removed"}),
    ("diff g.bin one.bin", 1, True, False,
     {"head-changed", "entry-removed", '"the group is gone"', '"before": "group 2 '}),
    ("diff one.bin g.bin", 1, True, False, {'"the group is new"', '"after": "group 2 '}),
    ("diff g.bin g.txt", 0, True, False, set()),
    ("plan g.bin changed.txt", 0, True, False, {"plan-step", '"step": "insert"', '"value": "entry 40 priority'}),
    ("plan g.bin renamed.txt", 1, True, False, {"no-plan"}),
    ("analyse rules.txt g.bin --order=ascending-id", 1, True, False,
     {"value-unusual", "entry-unreachable"}),
    ("trace rules.txt --order=ascending-id --packet=ttl=1", 1, True, False,
     {"trace-undecided", "traced-entry", '"after": "hit"'}),
    ("trace rules.txt --order=highest-priority --packets=packets.txt", 1, True, False,
     {"trace-undecided", "traced", '"path": "packets.txt:2"', '"treatment": "permit"'}),
    ("trace rules.txt --order=highest-priority --packet=src_ipv4=192.0.2.200 --entry=20", 0, True,
     False, {'"lacking": [\n            "ip_protocol"\n'}),
    ("trace rules.txt --order=highest-priority --packets=packets.txt --max-findings=1 --entry=20", 1,
     True, False, {'"path": "packets.txt:5"', "traced-entry"}),
    ("search rules.txt --order=highest-priority --packets=dst_l4_port=80-90", 1, True, False,
     {"packets-go", "packets-may-go", '"after": "undecided"', '"treatment": "deny"'}),
    ("search rules.txt --order=highest-priority --touching", 1, True, False, {"packets-match"}),
    ("search rules.txt --order=highest-priority --entry=40 --packets=src_ipv4=none", 1, True, False,
     {"packets-left", '"value": "dst_l4_port=none '}),
    ("trace rules.txt --order=highest-priority --packets=wrong.txt", 2, True, True,
     {"text-value"}),
    ("diff rules.txt turned.txt --order=highest-priority", 1, True, False,
     {"treatment-differs", "entry-changed"}),
    ("analyse late.txt --order=highest-priority --max-findings=1", 1, True, False,
     {"entries-tie"}),
    ("analyse --policy=policy.txt rules.txt", 0, True, False, {'"accepted": 3'}),
    ("expect policy.txt rules.txt", 1, True, False,
     {"policy-fails", "policy-holds", "policy-open", '"path": "policy.txt:4"', '"order": "highest-priority"',
      '"word": "never taken if ttl=2-9 dst_l4_port=none"', '"before": "permit"'}),
    ("expect bad.policy rules.txt", 2, False, True, {"text-value", '"word": "permt"'}),
    ("expect kept.policy g.bin", 2, False, True, {"usage", "has no group 7"}),
    ("analyse g.bin --svg", 2, False, True, {"usage", '"command": "analyse"'}),
    ("analyse rules.txt nosuch.bin", 2, True, True, {"entries-overlap", "file-unreadable"}),
    ("capabilities --type=6", 0, True, False,
     {"admits", '"after": "none, lookup"', '"admitted": [\n            "all"'}),
    ("capabilities --stage=lookup --type=3", 0, True, False, {"admits", '"4",\n            "6"'}),
    ("capabilities --stage=egress", 0, True, False,
     {'"admitted": [\n            "egress",\n            "none"\n'}),
    ("capabilities g.bin --type=3", 1, True, False,
     {"placement", "no-placement", '"group": 2', '"after": "none/3 '}),
    ("show g.bin", 0, True, False, set()),
    ("show lost.bin", 0, True, True, {"match-unknown"}),
    ("convert lost.bin --to=text", 1, False, True, {"match-unknown"}),
    ("convert g.bin --to=text -o folder", 2, False, True, {"output-failed"}),
    ("check large.bin", 2, False, True, {"limit-exceeded"}),
    ("names", 0, True, False, set()),
    ("shwo", 2, False, True, {"usage"}),
    ("show --as=jsn", 2, False, True, {"usage", '"command": "show"'}),
]


def expect(what, condition, *shown):
    if not condition:
        failures.append(what)
        print("FAILED:", what, *shown, sep="\n  ")


def split(line):
    """The arguments of a row and what stands behind a <."""
    line, _, source = line.partition(" <")
    stdin = b""
    if source:
        with open(source, "rb") as file:
            stdin = file.read()
    return shlex.split(line), stdin


def try_table():
    texts = {}
    for what, name in ((G_TXT, "g.txt"), (COMPACT, "compact.json")):
        with open(name, encoding="ascii") as file:
            texts[what] = re.escape(file.read())
    for line, code, results, trouble in TABLE:
        arguments, stdin = split(line)
        done = inspect(*arguments, stdin=stdin)
        out, err = done.stdout.decode(), done.stderr.decode()
        pattern = texts.get(results, results)
        if results.__class__ is str and re.fullmatch(r"\w+\.txt", results):
            pattern = re.escape(source("tests/golden/" + results))
        good = re.fullmatch(pattern, out, re.DOTALL) and re.fullmatch(trouble, err, re.DOTALL)
        expect(line, done.returncode == code and good, done.returncode, out[:2000], err[:2000])
    for name in os.listdir("."):
        expect(f"no {name} is left", name not in ("kept.txt", "bad.bin") and ".txt." not in name)


def try_documents():
    validators = {}
    for name in ("groups", "report", "names"):
        with open(f"{sources}/docs/schema/filter-{name}-1.schema.json", encoding="utf-8") as file:
            validators[f"filter-{name}"] = jsonschema.Draft202012Validator(json.load(file))
    for line, code, has_results, has_trouble, words in DOCUMENTS:
        arguments, stdin = split(line)
        done = inspect("--json", *arguments, stdin=stdin)
        for text, is_there in ((done.stdout, has_results), (done.stderr, has_trouble)):
            expect(line, bool(text) == is_there, text[:1000])
            if not text:
                continue
            is_lines = text is done.stdout and line.startswith("trace") and "--packets" in line
            for document in map(json.loads, text.splitlines() if is_lines else [text]):
                faults = list(validators[document["format"]].iter_errors(document))
                expect(line, not faults, *faults)
                is_analysis = text is done.stdout and re.search("--order|analyse|expect", line) is not None
                expect(line, ("order" in document) == is_analysis)
                expect(line, ("assumptions" in document) == (is_analysis and not is_lines))
                for part in document.get("inputs", []):
                    levels = part["left_out_by_level"].values()
                    expect(line, sum(levels) == part["left_out"], part)
        lacking = {word for word in words if word not in (done.stdout + done.stderr).decode()}
        expect(f"{line} --json", done.returncode == code and not lacking, done.returncode, lacking)


def try_places():
    """Documents say where findings are. In text that is a line and a column."""
    for name, places in (("late.txt", ["7:3", "3:1", "4:1"]), ("late.bin", [None, None, None])):
        done = inspect("--json", "analyse", name, "--order=highest-priority")
        findings = json.loads(done.stdout)["inputs"][0]["findings"]
        told = sorted((each["entry"], each["group_number"], each.get("path")) for each in findings)
        expected = sorted(zip((4, 1, 2), (2, 1, 1), places))
        expect(f"places in {name}", told == expected, told)


def try_forms():
    """Converts every form into every other and back. The framing of bytes stays."""
    for name, framing in (("g.bin", "auto"), ("one.bin", "auto"), ("varint.bin", "varint")):
        with open(name, "rb") as file:
            original = file.read()
        for form in ("text", "json", "bytes"):
            there = inspect("convert", name, "--to", form, "--framing", framing)
            back = inspect("convert", "-", "--to=bytes", "--framing", framing, stdin=there.stdout)
            expect(f"{name} by way of {form}", back.stdout == original, there.stderr, back.stderr)
    sizes = "".join(f"group 1 priority={priority} stage=none type=none\nentry 1 priority=1 then"
                    f" redirect=[{','.join(ports * ['1'])}]\n"
                    for ports in range(20, 60) for priority in (1, 128))
    write("sizes.txt", b"filter-groups 1\n" + sizes.encode())
    framed = inspect("convert", "sizes.txt", "--to=bytes", "--framing=varint").stdout
    done = inspect("diff", "-", "sizes.txt", "--framing=varint", stdin=framed)
    expect("lengths of one and of two bytes", done.returncode == 0 and framed, done.stderr)
    with open("framed.bin", "rb") as file:
        done = inspect("convert", "framed.bin", "--to=bytes")
        expect("a length stays", done.stdout == file.read(), done.stderr)


def try_output():
    """A file is replaced at once and keeps its mode, and a link stays. A pipe that is not read any
    more and a disk without room are trouble."""
    write("old.txt", b"old")
    os.chmod("old.txt", 0o640)
    os.symlink("old.txt", "link.txt")
    done = inspect("convert", "g.bin", "--to=text", "-o", "link.txt")
    with open("old.txt", "rb") as new, open("g.txt", "rb") as expected:
        expect("a file is replaced", done.returncode == 0 and new.read() == expected.read())
    expect("its mode stays", os.stat("old.txt").st_mode & 0o777 == 0o640)
    expect("a link stays", os.path.islink("link.txt"))
    done = run(tool, "convert", "g.bin", "--to=text", "-o", "limited.txt", stderr=subprocess.PIPE,
               preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (1000, 1000)))
    inspect("convert", "g.bin", "--to=text", "-o", "new.txt")
    mask = os.umask(0)
    os.umask(mask)
    expect("a new file's mode", os.stat("new.txt").st_mode & 0o777 == 0o666 & ~mask)
    left = [name for name in os.listdir(".") if name.startswith("limited")]
    expect("a limit of files", done.returncode == 2 and b"too large" in done.stderr and not left)
    for line in ("show g.bin", "check g.bin", "names", "--help", "--json check g.bin"):
        command = line.split()
        with open("/dev/full", "wb") as full:
            done = inspect(*command, stdout=full)
        expect(f"{command} >/dev/full", done.returncode == 2 and b"No space left" in done.stderr and
               done.stderr.count(b"No space left") == 1, done.stderr)
        reader, writer = os.pipe()
        os.close(reader)
        done = inspect(*command, stdout=writer)
        os.close(writer)
        expect(f"{command} | true", done.returncode == -signal.SIGPIPE and not done.stderr)
    with subprocess.Popen(["yes", "ttl=1"], stdout=subprocess.PIPE) as endless:
        with open("/dev/full", "wb") as full:
            done = run(tool, "trace", "g.bin", "--order=ascending-id", "--packets=-",
                       stdin=endless.stdout, stdout=full, stderr=subprocess.PIPE)
        endless.kill()
    expect("packets that nobody reads of", done.returncode == 2 and b"No space left" in done.stderr)


def try_interrupt():
    """A program that is interrupted while it writes leaves nothing beside its file."""
    rules = "".join(f"entry {rule} priority=1 if ttl=1 then permit\n" for rule in range(20000))
    head = "filter-groups 1\ngroup 1 priority=1 stage=ingress type=3\n"
    write("wide.txt", (head + rules).encode())
    os.mkdir("written")
    done = subprocess.Popen([*emulator, tool, "convert", "wide.txt", "--to=json", "-o",
                             "written/wide.json"], env=run_env)
    while not os.listdir("written") and done.poll() is None:
        pass
    done.send_signal(signal.SIGINT)
    done.wait(60)
    expect("nothing stays", set(os.listdir("written")) <= {"wide.json"}, os.listdir("written"))


def try_picture():
    """A picture has a row for each entry, coloured by what was found. It is valid XML, whatever
    the file is called."""
    name = "a&<\">\u00e9.txt"
    os.symlink("rules.txt", name)
    arguments = ("--order=highest-priority", "--overlaps", "--svg", "rules.svg")
    done = inspect("analyse", name, "g.bin", *arguments)
    svg = "{http://www.w3.org/2000/svg}"
    root = ElementTree.parse("rules.svg").getroot()
    marks = [rect.get("class") for rect in root.iter(svg + "rect")][1:]
    texts = [text.text for text in root.iter(svg + "text")]
    expect("a picture", done.returncode == 1 and len(marks) == 16, done.stderr, marks)
    expect("its marks", marks[:4] == ["noted", "unreachable", "tie", "tie"], marks)
    words = {"src_ipv4", "192.0.2.128/25", "a&<\">\u00e9.txt:2:1 (id 7)", "never takes effect: 10"}
    expect("its words", words <= set(texts), texts)
    inspect("analyse", "rules.txt", "--max-findings=1", "--svg=left.svg")
    *texts, foot = [text.text for text in ElementTree.parse("left.svg").iter(svg + "text")]
    expect("what it leaves out", "rows by id" in foot and "left out: 1 note;" in foot, foot)
    expect("an unusual value", "unusual value" in texts, texts)
    inspect("analyse", "late.txt", "--order=highest-priority", "--max-steps=0", "--svg=open.svg")
    root = ElementTree.parse("open.svg").getroot()
    expect("what is not decided", "not decided" in {text.text for text in root.iter(svg + "text")} and
           "noted" in {rect.get("class") for rect in root.iter(svg + "rect")})
    # One group has more rows than a picture shows, and another has exactly as many. In the first
    # group, entry 3 takes the packets of entry 40.
    rows = [f"entry {row} priority={100 - row} if src_ipv4=192.0.2.{3 if row == 40 else row} "
            "then permit\n"
            for row in range(61)]
    groups = [f"group {number} priority=1 stage=ingress type=3\n" for number in (1, 2)]
    text = ["filter-groups 1\n", groups[0], *rows, groups[1], *rows[:60]]
    write("long.txt", "".join(text).encode())
    inspect("analyse", "long.txt", "--order=highest-priority", "--svg=long.svg")
    root = ElementTree.parse("long.svg").getroot()
    texts = [text.text for text in root.iter(svg + "text")]
    gaps = [text.split()[1] for text in texts if text.startswith("...")]
    expect("what it leaves out in between", gaps == ["3", "36", "20"], gaps)
    expect("its heads", texts.count("entry") == 1 + 2 and len([*root.iter(svg + "g")]) == 2 + 60)
    os.symlink("g.bin", "tutorial.bin")
    inspect("analyse", "tutorial.bin", "--order=lowest-priority", "--svg=tutorial.svg")
    with open("tutorial.svg", "rb") as new, open(f"{sources}/docs/analysis.svg", "rb") as shown:
        expect("the one in docs/analysis.md", new.read() == shown.read())
    inspect("analyse", "nosuch.bin", "--svg=left.svg")
    foot = [*ElementTree.parse("left.svg").iter(svg + "text")][-1].text
    expect("no picture of nothing", "left out: 1 note;" in foot, foot)
    for place, trouble in (("folder", b"Is a directory"), ("-", b"takes the report"),
                           ("", b"No such file")):
        done = inspect("analyse", "g.bin", "--svg", place)
        expect(f"no picture to {place}", done.returncode == 2 and trouble in done.stderr,
               done.stderr)


def try_junit():
    """Build servers read the XML, whatever bytes a comment or the name of a file has."""
    odd = "odd\udcff\x02<\u00e9>&\"'.policy"
    os.link("policy.txt", odd)
    done = inspect("expect", odd, "rules.txt", "--junit=policy.xml")
    expect("odd names", done.returncode == 1, done.stderr)
    suites = ElementTree.parse("policy.xml").getroot()
    counts = {"tests": "3", "failures": "2", "errors": "0", "skipped": "0"}
    expect("suites", suites.tag == "testsuites" and suites.attrib == {"name": "odd??<\u00e9>&\"'.policy", **counts},
           suites.attrib)
    (suite,) = suites
    expect("suite", suite.attrib == {"name": "rules.txt:2:1", **counts}, suite.attrib)
    names = [case.get("name") for case in suite]
    expect("cases", names == [
        "line 3: always permit if src_ipv4=192.0.2.0/24",
        "line 4: never deny if ttl=1 src_ipv4=none dst_l4_port=179  # \"<caf\u00e9>??&",
        "line 5: never taken if ttl=2-9 dst_l4_port=none"], names)
    failures = [[failure.get("type") for failure in case] for case in suite]
    expect("failures", failures == [[], ["policy-open"], ["policy-fails"]], failures)
    said = suite[2][0].get("message")
    expect("messages", said.startswith("fails: entry 10 permits ") and said == suite[2][0].text, said)


def on_terminal(*arguments, **environment):
    master, terminal = pty.openpty()
    environment = {**run_env, "TERM": "xterm", **environment}
    environment = {key: value for key, value in environment.items() if value is not None}
    done = subprocess.Popen([*emulator, tool, *arguments], env=environment, stdout=terminal,
                            stderr=terminal)
    done.wait(60)
    os.close(terminal)
    output = os.read(master, 1 << 16)
    os.close(master)
    return output


def try_terminal():
    command = ("check", "lost.bin")
    expect("colours on a terminal", b"\33[33mwarning" in on_terminal(*command))
    expect("NO_COLOR", b"\33" not in on_terminal(*command, NO_COLOR="1"))
    expect("an empty NO_COLOR", b"\33[33mwarning" in on_terminal(*command, NO_COLOR=""))
    for term in ("dumb", None):
        expect(f"the terminal {term}", b"\33" not in on_terminal(*command, TERM=term))
    expect("--color=never", b"\33" not in on_terminal(*command, "--color=never"))


    shown = on_terminal("convert", "g.bin", "--to=bytes", "-o", "-")
    expect("no bytes on a terminal", shown.endswith(b"use -o FILE or a pipe\r\n"), shown)
    shown = on_terminal("show", "g.bin", COLUMNS="200")  # a terminal of no known width
    expect("the width in COLUMNS", b"prio  port" in shown and b"policer    " in shown, shown)


def seen_on_terminal(pattern, *arguments):
    """Returns whether the pattern appears on a terminal at standard error while the program works."""
    master, terminal = pty.openpty()
    done = subprocess.Popen([*emulator, tool, *arguments], env=run_env, stdin=subprocess.PIPE,
                            stdout=subprocess.DEVNULL, stderr=terminal)
    os.close(terminal)
    output = b""
    until = time.monotonic() + 60
    while not re.search(pattern, output) and time.monotonic() < until and done.poll() is None:
        if select.select([master], [], [], 1)[0]:
            output += os.read(master, 1 << 16)
    done.kill()
    done.wait()
    os.close(master)
    return re.search(pattern, output) is not None


def address(bits):
    return str(ipaddress.IPv4Address(bits & 0xFFFFFFFF))


def try_progress():
    """A terminal shows work that takes more than a second: waiting for a file or for packets, and
    analysing rules whose masks have three bits chosen at random."""
    chance = random.Random(1)
    text = "filter-groups 1\ngroup 1 priority=1 stage=ingress type=3\n"
    for rule in range(1000):
        mask = sum(1 << bit for bit in chance.sample(range(64), 3))
        value = chance.getrandbits(64) & mask
        text += (f"entry {rule} priority={-rule & 0xFFFFFFFF} if"
                 f" src_ipv4={address(value >> 32)}/{address(mask >> 32)}"
                 f" dst_ipv4={address(value)}/{address(mask)} then deny\n")
    write("hard.txt", text.encode())
    waits = seen_on_terminal(rb"reading - \.\.\.", "show", "-")
    expect("it waits for a file", waits)
    reads = seen_on_terminal(rb"reading - \.\.\.", "trace", "g.bin", "--order=ascending-id",
                             "--packets=-")
    expect("it waits for packets", reads)
    works = seen_on_terminal(rb"analysing hard\.txt:2:1 \.\.\. \d+ %", "analyse", "hard.txt",
                             "--order=highest-priority", "--max-steps=500000")
    expect("it analyses", works)


def findings_of(done, file):
    """The findings about a file in a document, each in a line; the document fits its schema."""
    document = json.loads(done.stdout)
    schema = json.loads(source("docs/schema/filter-report-1.schema.json"))
    faults = list(jsonschema.Draft202012Validator(schema).iter_errors(document))
    expect(f"the document about {file}", not faults, *faults)
    def text(seen):
        return " ".join(str(seen[key]) for key in ("frames", "first", "time") if key in seen)
    return [f"{each['code']} {each.get('entry', '')}: {text(each.get('sure', {}))}, {text(each.get('possible', {}))}"
            for part in document["inputs"] if part["file"] == file for each in part["findings"]]


def try_captures():
    """Captures in every form that libpcap reads, or one sentence without libpcap."""
    hits = ("hits", "rules.txt", "--order=highest-priority")
    write("c.pcap", pcap([frame(), frame(ttl=1, source=9), frame(ttl=1, source=9, port=179)]))
    if b"libpcap" not in inspect("--version").stdout:
        done = inspect(*hits, "--capture=c.pcap")
        expect("without libpcap", done.returncode == 2 and b"built without libpcap" in done.stderr, done.stderr)
        return
    # Entry 10 takes packets from 192.0.2.0/24, which include those from 192.0.2.1. Entries 30 and
    # 40 tie.
    frames = [frame(), frame(source=200, port=80, tag=5), frame(ttl=1, port=179)]
    frames[2] = frames[2].replace(b"\xc0\0\2\1", b"\xcb\0\x71\1")
    first, last = "2023-11-14T22:13:20.000005Z", "2023-11-14T22:13:22.000005Z"
    expected = [f"frames-counted : 2 1 {first}, 1 3 {last}", f"entry-hit 10: 2 1 {first}, 0",
                "entry-not-hit 20: 0, 0", f"entry-hit 30: 0, 1 3 {last}", f"entry-hit 40: 0, 1 3 {last}"]
    forms = [pcap(frames, order, nano) for order in "<>" for nano in (False, True)]
    for capture in [*forms, *(pcapng(frames, order) for order in "<>"), pcapng(frames, links=(1, 1))]:
        for name in ("c.pcap", "-"):
            write("c.pcap", capture)
            done = inspect("--json", *hits, f"--capture={name}", stdin=capture)
            found = findings_of(done, "rules.txt")
            expect(f"hits of {capture[:8]} as {name}", found == expected and done.returncode == 1, found)
    text = inspect(*hits, "--capture=c.pcap", "--width=0").stdout.decode()
    expect("the table of hits", re.search(r"\n10 +100 +2 +0 +frame 1, 2023-11-14T22:13:20.000005Z +192.*"
                                          r"no frame hits entry 20\n.*c.pcap: note: 3 frames ", text, re.DOTALL), text)
    for link, head in ((101, b""), (12, b""), (228, b""), (0, b"\2\0\0\0"), (108, b"\0\0\0\2"),
                       (113, bytes(14) + b"\x08\0"), (276, b"\x08\0" + bytes(18))):
        write("c.pcap", pcap([head + frame()[14:]], link=link))
        done = inspect("--json", *hits, "--capture=c.pcap")
        expect(f"the link {link}", findings_of(done, "rules.txt")[1] == expected[1].replace("2 1", "1 1"), done.stdout)
    # The report has the frames that could be counted. The report also says which frames were cut,
    # and where libpcap refused the file.
    for capture, code, trouble, about in (
            (pcap(frames, cut=20), 1, "", ["frames-counted : 3, ", f"frames-not-read : 3 1 {first}, "]),
            (pcap(frames)[:-1], 2, "c.pcap: frame 3: truncated .*", ["frames-counted : 2, "]),
            (pcapng(frames, links=(1, 101)), 2, "c.pcap: frame 1: .*", ["frames-counted : 0, "]),
            (pcap([]), 0, "", ["frames-counted : 0, "]),
            (pcap(frames, link=105), 2, "c.pcap: frames of the link type IEEE802_11 are not .*", None),
            (b"", 2, "c.pcap: truncated .*", None), (b"no capture at all" * 9, 2, "c.pcap: unknown .*", None)):
        write("c.pcap", capture)
        done = inspect(*hits, "--capture=c.pcap")
        good = re.fullmatch(trouble and f"filter-inspect: {trouble}\n", done.stderr.decode())
        expect(f"trouble {trouble}", done.returncode == code and good, done.returncode, done.stderr)
        if about:
            found = findings_of(inspect("--json", *hits, "--capture=c.pcap"), "c.pcap")
            expect(f"told about {trouble}", found == about, found)
    done = inspect(*hits, "--capture=nosuch.pcap")
    expect("no capture", done.stderr == b"filter-inspect: nosuch.pcap: No such file or directory\n", done.stderr)
    write("c.pcap", pcap(frames))
    done = inspect("--json", *hits, "--capture=c.pcap", "--assume=dst_l4_port=80 external_vlan_id=7", "--entry=30")
    expect("the frame wins", findings_of(done, "rules.txt") == [expected[0], expected[3]], done.stdout)
    done = inspect("--json", "hits", "twice.txt", "--order=highest-priority", "--capture=c.pcap")
    expect("each group counts", findings_of(done, "twice.txt") == 2 * expected, done.stdout)
    done = inspect("--json", "hits", "fewer.txt", "--order=highest-priority", "--capture=c.pcap")
    expect("every frame is decided", done.returncode == 0, done.stdout)
    # fewer.txt has only entry 40. In rules.txt, entry 30 may take the third frame, and permits it.
    both = ("diff", "rules.txt", "fewer.txt", "--order=highest-priority", "--capture=c.pcap")
    found = findings_of(inspect("--json", *both), "rules.txt")[-2:]
    expect("a diff of traffic", found == [f"traffic-open 30: 0, 1 3 {last}", f"frames-counted : 0, 1 3 {last}"], found)
    text = inspect(*both).stdout.decode()
    expect("a diff of traffic", "entry 30: 1 frame perhaps go to entry 40 instead: permit becomes deny; the first"
           f" is frame 3, {last} [traffic-open]\n" in text and "1 frame perhaps of 3 treated" in text, text)
    inspect(*hits, "--capture=c.pcap", "--svg=hits.svg")
    marks = [rect.get("class") for rect in ElementTree.parse("hits.svg").iter("{http://www.w3.org/2000/svg}rect")]
    expect("the bars", marks[1:] == ["plain", "sure", "plain", "plain", "perhaps", "plain", "perhaps"], marks)
    waits = seen_on_terminal(rb"reading - \.\.\.", *hits, "--capture=-")
    expect("it waits for frames", waits)


def try_manual():
    """Every command has its section in the manual page, and the schema knows its name. The test
    manual_options compares the options with the help."""
    commands = re.findall(r"^  ([a-z]+) ", inspect("--help").stdout.decode().split("Subcommands:")[1],
                          re.MULTILINE)
    described = re.findall(r'^\.B[IR] "([a-z]+) "', source("tools/filter_inspect/filter-inspect.1"),
                           re.MULTILINE)
    expect("commands are described", described == commands, described)
    schema = json.loads(source("docs/schema/filter-report-1.schema.json"))
    known = schema["properties"]["command"]["enum"]
    expect("commands in reports", set(known) == {*commands, "usage"}, known)
    help_text = re.sub(r"\|\n +", "|", inspect("diff", "--help").stdout.decode())
    orders = re.search(r"--order (\S+)", help_text)[1].split("|")
    known = schema["properties"]["order"]["enum"]
    expect("orders in reports", known == orders, known)


def try_completion():
    """Tests the completion without the package whose functions it calls."""
    script = ("_init_completion() { words=(\"${given[@]}\"); cword=$((${#words[@]} - 1)); split=false\n"
              "cur=${words[cword]}; prev=${words[cword - 1]}; }\n"
              "_filedir() { COMPREPLY=(FILES); }; compopt() { COMPREPLY+=(nospace); }\n"
              f". {sources}/tools/filter_inspect/filter-inspect.bash\n"
              "given=(filter-inspect \"$@\"); _filter_inspect; printf '%s\\n' \"${COMPREPLY[@]}\"")
    for line, expected in (("an", "analyse"), ("show x", "FILES"), ("show --as ", "table\ntext\njson\ndump"),
                           ("analyse --over", "--overlaps"), ("convert -o ", "FILES"),
                           ("--framing v", "varint"), ("diff --ord", "--order=\nnospace"),
                           ("check --max-bytes ", ""), ("--vers", "--version"),
                           ("show --entry ", ""), ("trace --packet src_i", "src_ipv4=\nsrc_ipv6=\nnospace"),
                           ("trace --packet 'ttl=1 src_m", "'ttl=1 src_mac=\nnospace")):
        done = subprocess.run(["bash", "-c", script, "bash", *line.split(" ", 2)], stdout=subprocess.PIPE)
        expect(f"completion of {line}", done.stdout.decode().strip() == expected, done.stdout)


def try_names():
    """Every name and number of the kept list is still printed, in the same order."""
    printed = iter(inspect("names").stdout.decode().splitlines())
    gone = [line for line in source("tests/golden/names.txt").splitlines() if line not in printed]
    expect("names and their numbers stay", not gone, gone)


def try_start():
    """Measures several starts and takes the shortest, because other programs may keep the machine
    busy. Emulators and sanitizers would take longer, so they are left out."""
    if emulator or "ASAN_OPTIONS" in os.environ:
        return
    times = []
    for _ in range(10):
        begin = time.monotonic()
        inspect("names", "stages")
        times.append(time.monotonic() - begin)
    expect("starts within 50 ms", min(times) < 0.05, times)


def main():
    with tempfile.TemporaryDirectory() as folder:
        os.chdir(folder)
        prepare()
        try_table()
        try_names()
        try_documents()
        try_places()
        try_forms()
        try_output()
        try_interrupt()
        try_picture()
        try_junit()
        try_terminal()
        try_progress()
        try_captures()
        try_manual()
        try_completion()
        try_start()
        os.chdir("/")
    print(f"{len(TABLE) + len(DOCUMENTS)} command lines, {len(failures)} failures")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
