"""Compares what packetOf() tells of random frames with what tshark tells of them, field by field.

    frames_test.py <frame_texts> [emulator and its arguments]...

scapy makes the frames: tags, options, extension headers, fragments, all links. Every field must be
the same. A frame that is cut must not tell another value than the whole frame, and must tell every
field that tshark tells. Both programs must be installed; the test is skipped
otherwise.
"""

import collections
import os
import random
import re
import shutil
import struct
import subprocess
import sys
import tempfile

SKIPPED = 77
FRAMES = 10000 if len(sys.argv) == 2 else 1000  # under an emulator
try:
    import logging
    logging.getLogger("scapy").setLevel(logging.ERROR)
    from scapy import all as scapy
except ImportError:
    scapy = None
if scapy is None or shutil.which("tshark") is None:
    print("skipped: python3-scapy and tshark must be installed: scripts/setup ci")
    sys.exit(SKIPPED)

# The link types: their names in scapy, and their numbers in capture files.
ETHERNET, RAW, COOKED, COOKED2, LOOPBACK = range(5)
FILE_LINKS = {ETHERNET: 1, RAW: 101, COOKED: 113, COOKED2: 276, LOOPBACK: 0}
PORTS = {6: "tcp", 17: "udp", 33: "dccp", 132: "sctp", 136: "udp"}
# For each extension header, the field of tshark that has the number of the next header.
NEXT = {0: "ipv6.hopopts.nxt", 43: "ipv6.routing.nxt", 44: "ipv6.fraghdr.nxt", 51: "ah.next_header",
        60: "ipv6.dstopts.nxt", 135: "mip6.proto", 139: "hip.proto", 140: "shim6.nxt"}
FIELDS = ["frame.protocols", "eth.dst", "eth.src", "eth.type", "sll.etype", "vlan.id", "vlan.priority",
          "vlan.etype", "ieee8021ad.svid", "ieee8021ad.id", "ieee8021ad.priority", "ip.src", "ip.dst", "ip.proto", "ip.dsfield",
          "ip.ttl", "ip.frag_offset", "ipv6.src", "ipv6.dst", "ipv6.nxt", "ipv6.tclass", "ipv6.hlim",
          "ipv6.fraghdr.offset", *NEXT.values(),
          *(f"{name}.{end}port" for name in ("tcp", "udp", "dccp", "sctp") for end in ("src", "dst"))]
SEPARATORS = ["-E", "separator=/t", "-E", "occurrence=a", "-E", "aggregator=|"]
OPTIONS = ["ip.defragment:FALSE", "ipv6.defragment:FALSE", "ip.decode_tos_as_diffserv:TRUE",
           "tcp.desegment_tcp_streams:FALSE", "ip.check_checksum:FALSE"]
IP = ["src_ipv4", "dst_ipv4", "src_ipv6", "dst_ipv6", "ip_protocol", "tos", "ttl"]
L4 = ["src_l4_port", "dst_l4_port"]
TAG = ["tpid", "external_vlan_id", "pcp"]

rng = random.Random(23)


# --- Random frames ---------------------------------------------------------------------------------


def number(bits):
    return rng.getrandbits(bits)


def transport(protocol):
    ports = {"sport": number(16), "dport": number(16)}
    if protocol == 6:
        return scapy.TCP(**ports, options=[("MSS", 1460)] * number(1), flags=number(6))
    if protocol == 17:
        return scapy.UDP(**ports)
    if protocol == 132:
        return scapy.SCTP(**ports)
    if protocol == 33:  # a header of 16 bytes, with a long sequence number
        return scapy.Raw(struct.pack(">HHBBHBBHI", *ports.values(), 4, 0, 0, 1, 0, 0, number(32)))
    if protocol == 136:
        return scapy.Raw(struct.pack(">HHHH", *ports.values(), 8, 0))
    if protocol == 1:
        return scapy.ICMP() / scapy.IP(src="10.9.8.7", proto=17) / scapy.UDP(sport=7, dport=9)
    if protocol == 58:
        return scapy.ICMPv6DestUnreach(cksum=0) / scapy.IPv6(src="2001:db8::99") / scapy.TCP(sport=7, dport=9)
    if protocol == 4:
        return scapy.IP(src="10.9.8.7", ttl=3) / scapy.TCP(sport=7, dport=9)
    if protocol == 41:
        return scapy.IPv6(src="2001:db8::98", hlim=3) / scapy.UDP(sport=7, dport=9)
    return scapy.Raw(rng.randbytes(8))


PROTOCOLS = [6, 6, 17, 17, 132, 33, 136, 1, 58, 4, 41, 47, 89, 112, 50]


def ipv4():
    protocol = rng.choice(PROTOCOLS)
    packet = scapy.IP(src=".".join(map(str, rng.randbytes(4))),
                      dst=".".join(map(str, rng.randbytes(4))), ttl=number(8), tos=number(8), proto=protocol)
    if rng.random() < 0.3:
        packet.options = [scapy.IPOption_RR(routers=["0.0.0.0"] * rng.randrange(1, 9)), scapy.IPOption_NOP()]
    if rng.random() < 0.2:
        packet.flags = rng.choice(["MF", "DF", 0])
        packet.frag = rng.choice([0, 1, 100, 8191 - 200])
    return packet / transport(protocol) / scapy.Raw(rng.randbytes(rng.randrange(40)))


def ipv6():
    protocol = rng.choice([*PROTOCOLS, 59])
    headers = []
    for _ in range(rng.choice([0, 0, 1, 1, 2, 3, 5])):
        kind = rng.choice([0, 43, 44, 51, 60, 60, 135, 139, 140])
        # Each extension header has its number, and its bytes without the first byte, which is the
        # number of the next header.
        if kind == 44:
            offset = rng.choice([0, 0, 0, 1, 100])
            headers.append((44, struct.pack(">BHI", 0, offset << 3 | number(1), number(32))))
            continue
        units = rng.randrange(3)
        if kind == 140:  # a control message of shim6
            headers.append((kind, bytes([1, 0x40]) + bytes(13)))
        elif kind in (135, 139):  # tshark reads nothing behind these two, and their standards put nothing there
            headers.append((kind, bytes(7) if kind == 135 else bytes([4, 1, 0x11, 0, 0, 0, 0]) + rng.randbytes(32)))
            protocol = 59
            break
        elif kind == 51:
            headers.append((51, bytes([2 + 2 * units, 0, 0]) + rng.randbytes(12 + 8 * units)))
        elif kind == 43:
            headers.append((43, bytes([2 * units, rng.choice([0, 253]), 0]) + bytes(4 + 16 * units)))
        else:
            pad = 8 * units + 4
            headers.append((kind, bytes([units, 1, pad]) + bytes(pad)))
    numbers = [kind for kind, _ in headers] + [protocol]
    chain = b"".join(bytes([after]) + body for (_, body), after in zip(headers, numbers[1:]))
    payload = chain + bytes(transport(protocol)) + rng.randbytes(rng.randrange(40))
    address = lambda: ":".join(f"{number(16):x}" for _ in range(8))
    return scapy.IPv6(src=address(), dst=address(), hlim=number(8), tc=number(8), nh=numbers[0]) / scapy.Raw(payload)


def other():
    return rng.choice([scapy.ARP(psrc="10.1.1.1"), scapy.ARP(op=2, pdst="10.1.1.2")])


def frame():
    """A link, a frame and the protocol in it."""
    kind = rng.choice([4, 4, 6, 6, 6, 0])
    inner = {4: ipv4, 6: ipv6, 0: other}[kind]()
    type_ = {4: 0x800, 6: 0x86dd, 0: 0x806}[kind]
    link = rng.choice([ETHERNET] * 5 + [RAW, COOKED, COOKED2, LOOPBACK])
    if kind == 0 and link in (RAW, LOOPBACK):
        link = ETHERNET
    if link == RAW:
        return link, bytes(inner)
    if link == LOOPBACK:
        family = 2 if kind == 4 else rng.choice([24, 28, 30])
        return link, struct.pack(rng.choice("<>") + "I", family) + bytes(inner)
    if link == COOKED2:
        return link, bytes(scapy.CookedLinuxV2(proto=type_) / inner)
    tags = [rng.choice([0x8100, 0x88A8, 0x9100]) for _ in range(rng.choice([0, 0, 1, 1, 2, 3]))]
    types = [*tags, type_]
    made = inner
    for after in reversed(types[1:]):
        made = scapy.Dot1Q(vlan=rng.choice([0, 1, number(12), 4095]), prio=number(3), id=number(1), type=after) / made
    if link == COOKED:
        return link, bytes(scapy.CookedLinux(proto=types[0]) / made)
    mac = lambda: ":".join(f"{byte:02x}" for byte in rng.randbytes(6))
    if rng.random() < 0.1 and not tags:
        made = scapy.LLC() / scapy.SNAP(OUI=rng.choice([0, 0, 0x0000F8]), code=type_) / made
        if rng.random() < 0.3:
            made = scapy.LLC(dsap=0x42, ssap=0x42, ctrl=3) / scapy.STP()
        return link, bytes(scapy.Dot3(dst=mac(), src=mac()) / made) + bytes(rng.choice([0, 18]))
    # Padding behind the packet is not read as a header.
    return link, bytes(scapy.Ether(dst=mac(), src=mac(), type=types[0]) / made) + bytes(rng.choice([0, 0, 22]))


# --- The answers of tshark -------------------------------------------------------------------------


def dissect(link, frames, folder):
    """A dictionary of lists for each frame."""
    path = os.path.join(folder, f"{link}.pcap")
    with open(path, "wb") as file:
        file.write(struct.pack("<IHHiIII", 0xA1B2C3D4, 2, 4, 0, 0, 262144, FILE_LINKS[link]))
        for captured, whole in frames:
            file.write(struct.pack("<IIII", 1, 0, captured, len(whole)) + whole[:captured])
    command = ["tshark", "-n", "-r", path, "-T", "fields", *SEPARATORS]
    for option in OPTIONS:
        command += ["-o", option]
    for field in FIELDS:
        command += ["-e", field]
    made = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, check=True, timeout=300)
    lines = made.stdout.decode().split("\n")[:-1]
    assert len(lines) == len(frames), (len(lines), len(frames))
    for line in lines:
        yield {field: value.split("|") if value else [] for field, value in zip(FIELDS, line.split("\t"))}


def expected(link, told):
    """The fields of a whole frame as filter-inspect writes them; those that are not told are missing."""
    packet = {}
    first = lambda field: told[field][0] if told[field] else "none"
    if link == ETHERNET:
        packet.update(dst_mac=first("eth.dst"), src_mac=first("eth.src"), vlan_tagging="untagged")
        packet.update({field: "none" for field in TAG})
    outer = int(first("eth.type" if link == ETHERNET else "sll.etype").replace("none", "0"), 0)
    if outer in (0x8100, 0x88A8, 0x9100):
        its = "ieee8021ad" if outer == 0x88A8 else "vlan"
        id_ = "svid" if told["ieee8021ad.svid"] and outer == 0x88A8 else "id"  # before another 0x88a8
        packet.update(vlan_tagging="tagged", tpid=f"0x{outer:04x}", external_vlan_id=first(f"{its}.{id_}"),
                      pcp=first(f"{its}.priority"))
    protocols = first("frame.protocols").split(":")
    outermost = next((name for name in protocols if name in ("ip", "ipv6")), None)
    packet.update({field: "none" for field in IP + L4})
    if outermost is None:
        return packet
    is_later = False
    if outermost == "ip" and told["ip.proto"]:
        packet.update(src_ipv4=first("ip.src"), dst_ipv4=first("ip.dst"), tos=str(int(first("ip.dsfield"), 0)),
                      ttl=first("ip.ttl"))
        protocol = int(first("ip.proto"))
        is_later = first("ip.frag_offset") != "0"
    elif told["ipv6.nxt"]:
        packet.update(src_ipv6=first("ipv6.src"), dst_ipv6=first("ipv6.dst"), tos=str(int(first("ipv6.tclass"), 0)),
                      ttl=first("ipv6.hlim"))
        left = {field: list(told[field]) for field in [*NEXT.values(), "ipv6.fraghdr.offset"]}
        protocol = int(first("ipv6.nxt"))
        while protocol in NEXT and not is_later:
            if not left[NEXT[protocol]]:  # the frame is cut here
                return {field: value for field, value in packet.items() if value != "none"}
            if protocol == 44:
                is_later = int(left["ipv6.fraghdr.offset"].pop(0)) != 0
            protocol = int(left[NEXT[protocol]].pop(0))
    else:  # the frame is cut before the protocol
        return {field: value for field, value in packet.items() if value != "none"}
    packet["ip_protocol"] = str(protocol)
    if is_later and outermost == "ipv6" and protocol in NEXT:
        del packet["ip_protocol"]  # only the first fragment has it
    if not is_later and protocol in PORTS:
        for end in ("src", "dst"):
            packet[f"{end}_l4_port"] = first(f"{PORTS[protocol]}.{end}port")
    return packet


# --- The comparison --------------------------------------------------------------------------------

frames = collections.defaultdict(list)
for _ in range(FRAMES):
    its_link, whole = frame()
    frames[its_link].append(whole)
failures = 0
counted = collections.Counter()


def complain(*what):
    global failures
    failures += 1
    if failures <= 10:
        print(*what, sep="\n  ")


with tempfile.TemporaryDirectory() as folder:
    for its_link, all_whole in frames.items():
        cuts = [(len(whole), whole) for whole in all_whole]
        # A third of the frames is compared again, cut at a random position.
        cuts += [(rng.randrange(len(whole)), whole) for whole in all_whole[::3]]
        sent = b"".join(struct.pack(">BII", its_link, captured, len(whole)) + whole[:captured]
                        for captured, whole in cuts)
        texts = subprocess.run(sys.argv[1:], input=sent, stdout=subprocess.PIPE, check=True, timeout=300)
        ours = [line.split("\t") for line in texts.stdout.decode().split("\n")[:-1]]
        assert len(ours) == len(cuts)
        theirs = list(dissect(its_link, cuts, folder))
        expectations = {whole: expected(its_link, told)
                        for (captured, whole), told in zip(cuts, theirs) if captured == len(whole)}
        for (captured, whole), (fault, text), told in zip(cuts, ours, theirs):
            packet = dict(word.split("=") for word in text.split())
            counted[fault] += 1
            counted.update(packet.keys())
            right = expectations[whole]
            if captured == len(whole):
                isRight = packet == right
            else:
                visible = {field for field, value in expected(its_link, told).items()
                           if value != "none" and right.get(field) == value}
                visible.discard("vlan_tagging")  # expected() takes each frame for a whole one
                if any(told[field] for field in NEXT.values()):
                    visible.discard("ip_protocol")  # the length of an extension header may lie behind the cut
                isRight = packet.items() <= right.items() and visible <= packet.keys()
            if not isRight:
                complain(f"link {its_link}, {captured} of {len(whole)} bytes, {fault}: {whole.hex()}",
                         f"here:   {sorted(packet.items() - right.items())}",
                         f"tshark: {sorted(right.items() - packet.items())}")

for field in IP + L4 + TAG + ["dst_mac", "src_mac", "vlan_tagging", "none", "cut", "later-fragment"]:
    if counted[field] < 20:
        complain(f"hardly any frame has {field}")
print(f"{FRAMES} frames and {FRAMES // 3} that are cut: {failures} differ")
sys.exit(failures != 0)
