#!/usr/bin/python3
"""Python's protocol-buffer library and this library understand each other.

    interop_test.py [EMULATOR...] PEER GENERATED

PEER is the program built of peer.cpp, GENERATED the folder with the Python classes of the schemas.
Python reads a sample of every match and action class and writes it back; then both sides read
10,000 groups, most of them damaged on purpose, and must agree on every field. What a reader owes
to such a group (what is cut, what is left out) is written down here a second time.
"""

import random
import re
import struct
import subprocess
import sys

*PEER, GENERATED = sys.argv[1:]
sys.path.insert(0, GENERATED)

from google.protobuf.internal import api_implementation
from google.protobuf.message import DecodeError

import filter_actions_pb2
import filter_groups_pb2
import filter_matches_pb2

MatchPB = filter_matches_pb2.MatchPB
ActionPB = filter_actions_pb2.ActionPB
GroupPB = filter_groups_pb2.FiltersGroupPB
GROUPS = 10000


def peer(mode, frames=()):
    data = b"".join(struct.pack(">I", len(frame)) + frame for frame in frames)
    result = subprocess.run([*PEER, mode], input=data, stdout=subprocess.PIPE, check=True).stdout
    answers = []
    while result:
        (size,) = struct.unpack(">I", result[:4])
        answers.append(result[4:4 + size])
        assert len(answers[-1]) == size, "the peer's last frame is cut short"
        result = result[4 + size:]
    return answers


# --- Every class ---------------------------------------------------------------------------------

MAC = bytes.fromhex("001b210aff42")
MAC_MASK = bytes.fromhex("ffffff000000")
IPV4 = bytes([192, 0, 2, 1])
IPV4_MASK = bytes([255, 255, 240, 0])
IPV6 = bytes.fromhex("20010db812340000000000000000abcd")
IPV6_MASK = bytes.fromhex("ffffffffffff") + bytes(10)
ETH3, LAG1, VPWS7 = 0x01000003, 0x02000001, 0x03000007
IFINDEX_OF_LIMID = 0x400003E8  # what the stand-in adds

MATCHES = [
    (0, {}),
    (1, {"ports_": [ETH3, LAG1]}),
    (2, {"vlan_id_": [10, 4095]}),
    (3, {"tpid_": 0x8100}),
    (4, {"mac_": MAC, "mac_mask_": MAC_MASK}),
    (5, {"l4port_param1_": 80, "l4port_param2_": 0xFF00}),
    (6, {"l4port_param1_": 80, "l4port_param2_": 0xFF00}),
    (7, {"mac_": MAC, "mac_mask_": MAC_MASK}),
    (8, {"l2_src_": 2}),
    (9, {"ipv4_": IPV4, "ipv4_mask_": IPV4_MASK}),
    (10, {"ipv4_": IPV4, "ipv4_mask_": IPV4_MASK}),
    (11, {"vlan_id_": [10, 4095]}),
    (12, {"pcp_": [3, 7]}),
    (13, {"pcp_": [3, 7]}),
    (14, {"ipv6_": IPV6, "ipv6_mask_": b"\xff" * 16}),
    (15, {"ipv6_": IPV6, "ipv6_mask_": IPV6_MASK}),
    (16, {"vlan_tagging_": 1}),
    (17, {"ipprotocol_": 6}),
    (18, {"packet_resolution_": 8}),
    (19, {"mpls_terminated_": True}),
    (20, {"tos_": 185}),
    (21, {"limid_": ETH3}),
    (22, {"ports_": [ETH3, LAG1]}),
    (23, {"ingress_stp_state_": 4}),
    (24, {"vlan_info_svc_vlan_type_": 1, "vlan_info_proto_cpu_vlan_type_": 0xFFFFFFFF}),
    (25, {"limid_": ETH3}),
    (26, {"ttl_": 64}),
    (27, {"vrf_id_": 300}),
    (28, {"drop_flag_": True}),
    (29, {"hit_flag_": True}),
    (30, {}),
    (31, {"fwd_type_": 2}),
    (32, {}),
    (33, {"injected_flag_": True}),
    (34, {"l4port_param1_": 100, "l4port_param2_": 200}),
    (20, {"tos_": 46 << 2}),  # MatchDSCP
]
ACTIONS = [
    (0, {}),
    (1, {}),
    (2, {}),
    (3, {"ports_": [ETH3, LAG1]}),
    (4, {"cp2cpu_cancel_type_": 1}),
    (5, {"pcp_": 7}),
    (6, {"pcp_and_queue_": 7}),
    (7, {"pcp_": 7}),
    (8, {"dscp_": 46}),
    (9, {"cosq_": 5}),
    (10, {"cosq_": 5}),
    (11, {"ports_": [ETH3]}),
    (12, {"mac_": MAC}),
    (13, {}),
    (14, {"mac_": MAC}),
    (15, {"l3_dest_id_": 100000}),
    (16, {}),
    (17, {}),
    (18, {"vpn_id": VPWS7 + IFINDEX_OF_LIMID, "mpls_access_port": ETH3 + IFINDEX_OF_LIMID}),
    (19, {}),
]


def test_every_class():
    expected = [MatchPB(type_=code, **fields) for code, fields in MATCHES]
    expected += [ActionPB(type_=code, **fields) for code, fields in ACTIONS]
    written = peer("samples")
    assert len(written) == len(expected), f"{len(written)} classes instead of {len(expected)}"
    for sample, message in zip(written, expected):
        read = type(message).FromString(sample)
        assert read == message, f"written:\n{read}\ninstead of:\n{message}"
    peer("check", [message.SerializeToString() for message in expected])
    return len(expected)


# --- What a reader makes of a group --------------------------------------------------------------

# How each field of a class is read: the name, and the bits that a number keeps or the bytes that an
# address has. Absent fields are read as zero and always written.
MATCH_FIELDS = {code: {} for code in range(35)}
MATCH_FIELDS.update({
    3: {"tpid_": 16}, 4: {"mac_": "6", "mac_mask_": "6"}, 7: {"mac_": "6", "mac_mask_": "6"},
    8: {"l2_src_": 32}, 9: {"ipv4_": "4", "ipv4_mask_": "4"}, 10: {"ipv4_": "4", "ipv4_mask_": "4"},
    14: {"ipv6_": "16", "ipv6_mask_": "16"}, 15: {"ipv6_": "16", "ipv6_mask_": "16"},
    16: {"vlan_tagging_": 32}, 17: {"ipprotocol_": 8}, 18: {"packet_resolution_": 32},
    19: {"mpls_terminated_": 1}, 20: {"tos_": 8}, 21: {"limid_": 32},
    23: {"ingress_stp_state_": 32},
    24: {"vlan_info_svc_vlan_type_": 32, "vlan_info_proto_cpu_vlan_type_": 32}, 25: {"limid_": 32},
    26: {"ttl_": 8}, 27: {"vrf_id_": 16}, 28: {"drop_flag_": 1}, 29: {"hit_flag_": 1},
    31: {"fwd_type_": 32}, 33: {"injected_flag_": 1},
})
for l4 in 5, 6, 34:
    MATCH_FIELDS[l4] = {"l4port_param1_": 16, "l4port_param2_": 16}
ACTION_FIELDS = {code: {} for code in range(20)}
ACTION_FIELDS.update({
    4: {"cp2cpu_cancel_type_": 32}, 5: {"pcp_": 8}, 6: {"pcp_and_queue_": 8}, 7: {"pcp_": 8},
    8: {"dscp_": 8}, 9: {"cosq_": 8}, 10: {"cosq_": 8}, 12: {"mac_": "6"}, 14: {"mac_": "6"},
    15: {"l3_dest_id_": 32},
})
# Lists that are kept as they are, and lists that become ascending sets of so many bits.
MATCH_LISTS = {1: ["ports_", "excluded_port_types_"], 22: ["ports_"]}
MATCH_SETS = {2: ("vlan_id_", 16), 11: ("vlan_id_", 16), 12: ("pcp_", 8), 13: ("pcp_", 8)}
ACTION_LISTS = {3: ["ports_"], 11: ["ports_"]}

EXCLUDES = {9: {14, 15}, 10: {14, 15}, 14: {9, 10}, 15: {9, 10}, 5: {34}, 34: {5}}
TYPE_MATCHES = {
    0: set(), 1: {0, 1, 2, 3, 4, 7, 8, 18, 19, 23, 28, 30}, 2: {0, 1, 2, 3, 7, 9, 11, 21},
    3: {0, 1, 2, 3, 5, 6, 9, 10, 17, 26, 29, 31, 32},
    4: {0, 1, 2, 3, 5, 9, 10, 11, 12, 13, 17, 20}, 5: {0, 1, 2, 3, 4, 11, 12, 13, 22},
    6: {0, 1, 2, 3, 4, 7, 11, 12, 13, 16}, 7: {0, 1, 3, 4, 5, 8, 17, 24, 25, 31}, 8: {0, 15, 27},
    9: {0, 1, 2, 11, 12, 13, 20}, 10: {0, 1, 3, 9, 10}, 11: {0, 3, 4, 17, 24, 33, 34},
}
STAGE_ACTIONS = {
    0: set(range(20)) - {10}, 1: {0, 1, 6, 7, 17, 18}, 2: set(range(20)) - {6, 7, 17, 18},
    3: {0, 1},
}
NO_STAGE = 2
STAGE_POLICER = {0: NO_STAGE, 1: NO_STAGE, 2: 0, 3: 1}


class Refused(Exception):
    """The MPLS port action, which takes the whole group with it."""


def take_fields(message, result, fields):
    for name, width in fields.items():
        value = getattr(message, name)
        if isinstance(width, str):
            value = value[:int(width)].ljust(int(width), b"\0")
        elif width < 32 and width > 1:
            value %= 1 << width
        setattr(result, name, value)


def take(message, fields, lists):
    code = message.type_
    result = type(message)(type_=code)
    take_fields(message, result, fields[code])
    for name in lists.get(code, ()):
        getattr(result, name).extend(getattr(message, name))
    return result


def take_match(message):
    result = take(message, MATCH_FIELDS, MATCH_LISTS)
    if message.type_ in MATCH_SETS:
        name, bits = MATCH_SETS[message.type_]
        getattr(result, name).extend(sorted({v % (1 << bits) for v in getattr(message, name)}))
    return result


def take_action(message):
    result = take(message, ACTION_FIELDS, ACTION_LISTS)
    if message.type_ == 18:
        take_mpls(message, result)
    return result


def take_mpls(message, result):
    if not (message.HasField("vpn_id") and message.HasField("mpls_access_port")):
        raise Refused
    vpn = (message.vpn_id - IFINDEX_OF_LIMID) % (1 << 32)
    port = (message.mpls_access_port - IFINDEX_OF_LIMID) % (1 << 32)
    if not (vpn >> 24 == 3 or vpn >> 16 == 0x0405) or port >> 24 not in (1, 2):
        raise Refused
    result.vpn_id = message.vpn_id
    result.mpls_access_port = message.mpls_access_port


def take_entry(message, policers):
    """What is held of an entry, and the stage of its policer."""
    default = next(iter(policers))
    result = filter_groups_pb2.FiltersGroupPB().entries_.add()
    result.id_ = message.id_
    result.priority_ = message.priority_
    result.policer_ = message.policer_ if message.policer_ in policers else default
    if message.HasField("policer_parent_"):
        parent = message.policer_parent_
        result.policer_parent_ = parent if parent in policers else default
    counters, matches, actions = {}, {}, {}
    for counter in message.counters_:
        counters[counter.id % 65536] = counter.type
    for match in message.matches_:
        if match.type_ < 35 and not EXCLUDES.get(match.type_, set()) & set(matches):
            matches[match.type_] = take_match(match)
    for action in message.actions_:
        if action.type_ < 20:
            actions[action.type_] = take_action(action)
    for key in sorted(counters):
        result.counters_.add(id=key, type=counters[key])
    result.matches_.extend(matches[code] for code in sorted(matches))
    result.actions_.extend(actions[code] for code in sorted(actions))
    return result, policers[result.policer_]


def is_admitted(group, entry, policer_stage):
    if group.type_ not in TYPE_MATCHES or group.stage_ not in STAGE_ACTIONS:
        return False
    return ({match.type_ for match in entry.matches_} <= TYPE_MATCHES[group.type_]
            and {action.type_ for action in entry.actions_} <= STAGE_ACTIONS[group.stage_]
            and policer_stage in (NO_STAGE, STAGE_POLICER[group.stage_]))


def take_group(message, policers):
    result = GroupPB(id_=message.id_ % 65536, priority_=message.priority_ % 65536,
                     stage_=message.stage_, type_=message.type_)
    entries = {}
    for entry_message in message.entries_:
        entry, policer_stage = take_entry(entry_message, policers)
        if is_admitted(result, entry, policer_stage):
            entries[entry.id_] = entry
    result.entries_.extend(entries[key] for key in sorted(entries))
    return result


# --- Groups, sound and damaged -------------------------------------------------------------------

NUMBERS = [0, 1, 2, 7, 34, 35, 127, 128, 255, 256, 300, 4095, 65535, 65536, 65537, 2**31, 2**32 - 1]


def scramble(rng, message):
    """Sets some of a match's or an action's fields, needed or not, to anything."""
    for field in rng.sample(message.DESCRIPTOR.fields, rng.randint(0, 4)):
        if field.name == "type_":
            continue
        if field.cpp_type == field.CPPTYPE_STRING:
            value = rng.randbytes(rng.choice([0, 1, 3, 4, 5, 6, 7, 15, 16, 17]))
        elif field.cpp_type == field.CPPTYPE_BOOL:
            value = rng.random() < 0.5
        else:
            value = rng.choice(NUMBERS)
        if field.label == field.LABEL_REPEATED:
            getattr(message, field.name).append(value)
        else:
            setattr(message, field.name, value)


def make_group(rng, policers):
    stage = rng.choice([0, 0, 1, 2, 2, 3, 4, 2**32 - 1])
    kind = rng.randint(0, 12)
    group = GroupPB(id_=rng.choice(NUMBERS), priority_=rng.choice(NUMBERS), stage_=stage,
                    type_=kind)
    match_codes = sorted(TYPE_MATCHES.get(kind, ())) or [0]
    action_codes = sorted(STAGE_ACTIONS.get(stage, ())) or [0]
    for _ in range(rng.randint(0, 4)):
        entry = group.entries_.add(id_=rng.randint(0, 3), priority_=rng.choice(NUMBERS))
        entry.policer_ = rng.choice(list(policers) + [list(policers)[0]] * 6)
        if rng.random() < 0.2:
            entry.policer_parent_ = rng.choice(list(policers))
        for _ in range(rng.randint(0, 2)):
            entry.counters_.add(id=rng.choice([1, 2, 65535, 65537, -1]), type=rng.randint(-1, 9))
        for _ in range(rng.randint(0, 4)):
            anything = rng.random() < 0.1
            code, fields = rng.choice(MATCHES)
            if not anything and code not in match_codes:
                code = rng.choice(match_codes)
                fields = MATCHES[code][1]
            match = entry.matches_.add(type_=rng.randint(0, 40) if anything else code, **fields)
            if rng.random() < 0.5:
                scramble(rng, match)
        for _ in range(rng.randint(0, 3)):
            anything = rng.random() < 0.1
            code = rng.randint(0, 22) if anything else rng.choice(action_codes)
            fields = ACTIONS[code][1] if code < 20 else {}
            action = entry.actions_.add(type_=code, **fields)
            if rng.random() < 0.5:
                scramble(rng, action)
    return group


def damage(rng, data):
    """Another length or a few other bits; or none of both."""
    data = bytearray(data)
    if rng.random() < 0.3 and data:
        del data[rng.randrange(len(data)):]
    while rng.random() < 0.5 and data:
        data[rng.randrange(len(data))] ^= 1 << rng.randrange(8)
    return bytes(data)


def parse(data):
    """The message, or None when the bytes are not whole."""
    message = GroupPB()
    try:
        message.MergeFromString(data)
    except DecodeError:
        return None
    message.DiscardUnknownFields()
    return message


# Python knows a field by the shortest form of its tag and takes longer forms, which only damage
# makes, for unknown fields; the other runtime knows the field, and refuses a tag of six bytes.
LONGER_THAN_NEEDED = re.compile(rb"[\x80-\xff]\0|[\x80-\xff]{5}")


def read_alike(data, message, whole, fields):
    """Whether both sides read these bytes and find the same fields, or both do not."""
    alike = whole == (message is not None)
    if alike and whole:
        alike = message.SerializePartialToString() == fields
    assert alike or LONGER_THAN_NEEDED.search(data), f"fields differ in {data.hex()}"
    return alike


def test_groups():
    stages = dict(zip(peer("policers"), [NO_STAGE, 0, 1, NO_STAGE]))
    assert len(stages) == 4
    policers = dict(stages)
    policers[b""] = policers[b"\x08"] = NO_STAGE  # read as a default policer
    rng = random.Random(1)
    inputs = [make_group(rng, policers).SerializePartialToString() for _ in range(GROUPS)]
    inputs = [damage(rng, data) if i % 2 else data for i, data in enumerate(inputs)]
    answers = peer("groups", inputs)
    assert len(answers) == 2 * GROUPS
    counts = dict.fromkeys(
        ["tags of another form", "read whole", "compared as built", "refused", "entries kept"], 0)
    for data, read, built in zip(inputs, answers[0::2], answers[1::2]):
        message = parse(data)
        if not read_alike(data, message, read[0] == 1, read[1:]):
            counts["tags of another form"] += 1
            continue
        if message is None:
            continue
        counts["read whole"] += 1
        names = {e.policer_ for e in message.entries_} | {
            e.policer_parent_ for e in message.entries_ if e.HasField("policer_parent_")}
        if not names <= set(policers):
            continue  # only the policer library knows what damaged policers are read as
        counts["compared as built"] += 1
        try:
            expected = take_group(message, stages)
        except Refused:
            assert built == b"", f"not refused: {data.hex()}"
            counts["refused"] += 1
            continue
        assert built != b"", f"refused: {data.hex()}"
        actual = GroupPB.FromString(built)
        assert actual == expected, f"{data.hex()}\nbuilt:\n{actual}\ninstead of:\n{expected}"
        counts["entries kept"] += len(expected.entries_)
    return counts


assert api_implementation.Type() == "python", "set PROTOCOL_BUFFERS_PYTHON_IMPLEMENTATION=python"
print(f"{test_every_class()} classes, both ways")
counts = test_groups()
print(f"{GROUPS} groups: {counts}")
# A test that compares nothing is none.
assert counts["compared as built"] > GROUPS // 2 and counts["entries kept"] > GROUPS // 4, counts
assert 0 < counts["refused"] < GROUPS // 4, counts
assert counts["tags of another form"] < GROUPS // 1000, counts
