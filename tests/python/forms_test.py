"""Tests the forms of groups and entries, and what is refused."""

import copy
import enum
import ipaddress
import json
import pathlib
import pickle
import re

import filter_inspect as fi
import pytest
from filter_inspect import testing
from hypothesis import given, settings, strategies

TREE = pathlib.Path(__file__).parents[2]


def examples_of(kind):
    """The examples of matches or actions that the reference of the text form has."""
    page = (TREE / "docs/text-format.md").read_text(encoding="utf-8")
    table = page.split(f"| {kind} | example |")[1].split("\n\n")[0]
    return re.findall(r"^\| `\w+` \| `(.*?)` \|", table, re.M)


MATCHES, ACTIONS = examples_of("match"), examples_of("action")
GROUPS = fi.groups_from_text((TREE / "tests/golden/groups.txt").read_text(encoding="utf-8"))


def survives(one):
    kind = type(one)
    assert one == kind.from_bytes(bytes(one)) == kind.from_text(str(one))
    assert one == kind.from_json(one.to_json()) == kind.from_json(one.to_json(compact=True))
    assert one == kind.from_dict(one.to_dict()) == kind.from_dict(json.loads(json.dumps(one.to_dict())))
    assert one == copy.copy(one) == copy.deepcopy(one)
    survives_pickles(one)
    if kind is fi.Entry:
        assert one == fi.Entry(one.id, priority=one.priority, match=one.match, then=one.then,
                               count=one.count, police=one.police, parent=one.parent)


def survives_pickles(one):
    for protocol in range(pickle.HIGHEST_PROTOCOL + 1):
        assert one == pickle.loads(pickle.dumps(one, protocol))


def test_there_is_an_example_of_each_code():
    assert (len(MATCHES), len(ACTIONS)) == (35, 20)


@pytest.mark.parametrize("keyword, text", [("match", one) for one in MATCHES] + [("then", one) for one in ACTIONS])
def test_each_match_and_action(keyword, text):
    entry = fi.Entry(7, **{keyword: text})
    survives(entry)
    name, _, value = text.partition("=")
    assert f" {text}" in str(entry)
    assert entry == fi.Entry(7, **{keyword: {name: value or None}}) == fi.Entry(7, **{keyword: [text]})
    assert list(entry.to_dict()[{"match": "matches", "then": "actions"}[keyword]]) == [name]


@pytest.mark.parametrize("group", GROUPS, ids=lambda group: f"group {group.id}")
def test_each_golden_group(group):
    survives(group)
    for id, entry in group.entries.items():
        assert entry.id == id
        survives(entry)


def test_all_golden_groups_at_once():
    assert fi.groups_to_json(GROUPS) == (TREE / "tests/golden/groups.json").read_text(encoding="utf-8")
    assert fi.groups_from_json(fi.groups_to_json(GROUPS)) == GROUPS
    assert (GROUPS[-1].stage, GROUPS[-1].type) == (99, 4294967295)


def test_values_of_python():
    assert fi.Entry(10, match=None, then=None, count=None) == fi.Entry(10)
    flags = {"mpls_term": True, "destination_cpu": True}
    assert fi.Entry(10, match=flags, then={"deny": True}) == fi.Entry(
        10, match=["mpls_term=true", "destination_cpu"], then=("deny",))
    stage = {"id": 1, "stage": fi.Stage.INGRESS, "flow": None, "cir": 1}
    assert fi.Entry(10, police=stage) == fi.Entry(10, police="id=1 stage=ingress flow cir=1")
    assert f"{fi.Order.ASCENDING_ID} {fi.Type.TYPE_3}" == "ascending-id 3" == str(fi.Order.ASCENDING_ID) + " 3"
    group = GROUPS[0]
    assert group == fi.Group(group.id, priority=group.priority, stage=group.stage, type=group.type,
                             entries=group.entries)
    assert set(fi.match_names()) == {one.partition("=")[0] for one in MATCHES}
    assert set(fi.action_names()) == {one.partition("=")[0] for one in ACTIONS}
    network = ipaddress.ip_network("192.0.2.0/24")
    assert fi.Entry(10, match={"src_ipv4": network}).match == {"src_ipv4": str(network)}
    assert str(fi.Entry(
        10, priority=100, then=["permit", {"set_pcp": 5}], count={1: "packets"},
        match={"src_ipv4": "192.0.2.0/24", "dst_l4_port": 179, "pcp": {7, 3}, "mpls_term": True,
               "ingress_ports": ["0x01000003"], "destination_cpu": None},
        police={"id": 10, "stage": "ingress", "flow": None, "cir": 64, "cbs": 8000, "red": "drop"},
        parent="id=11 stage=ingress flow cir=64")) == (
            "entry 10 priority=100 if ingress_ports=[0x01000003] dst_l4_port=179/0xffff "
            "src_ipv4=192.0.2.0/24 pcp={3,7} mpls_term=true destination_cpu then permit set_pcp=5 "
            "count 1=packets police {id=10 stage=ingress flow cir=64 cbs=8000 red=drop} "
            "parent {id=11 stage=ingress flow cir=64}  # ingress_ports eth-3")


@settings(max_examples=150, deadline=None)
@given(strategies.integers(0, 2**32 - 1), strategies.integers(0, 2**32 - 1),
       strategies.lists(strategies.sampled_from(MATCHES)),
       strategies.lists(strategies.sampled_from(ACTIONS)),
       strategies.dictionaries(strategies.integers(0, 65535), strategies.sampled_from(["packets", -1, 9])))
def test_what_is_admitted_survives(id, priority, match, then, count):
    try:
        entry = fi.Entry(id, priority=priority, match=match, then=then, count=count)
    except fi.Refused as refused:
        assert refused.report.worst is fi.Severity.ERROR
        return
    survives(entry)
    for stage in fi.Stage:
        for type in fi.Type:
            try:
                group = fi.Group(1, stage=stage, type=type, entries=[entry])
            except fi.Refused as refused:
                assert refused.report
                continue
            survives(group)


@settings(max_examples=300, deadline=None)
@given(strategies.binary(max_size=80), strategies.integers(0, 200), strategies.text(max_size=40))
def test_nothing_breaks_a_reader(noise, at, text):
    data = bytes(GROUPS[0])
    for made in (noise, data[:at] + noise + data[at:]):
        group, report = fi.decode(made)
        assert (group is not None) or report
        if not report:
            assert bytes(group) == made
    for read in (fi.Group.from_text, fi.Group.from_json, fi.Entry.from_text, fi.Entry.from_json):
        with pytest.raises(ValueError):
            read(text)


ENTRY = fi.Entry(30, match="vrf_id=1")
TYPE_3 = fi.Group(1, stage="ingress", type=3)


@pytest.mark.parametrize("call, code", [
    (lambda: TYPE_3.insert(ENTRY), "match-not-admitted"),
    (lambda: TYPE_3.insert(fi.Entry(1, then="set_inner_pcp=1")), "action-not-admitted"),
    (lambda: setattr(TYPE_3, "type", 99), "type-not-admitted"),
    (lambda: setattr(TYPE_3, "stage", "lookup"), "type-not-admitted"),
    (lambda: fi.Group(1, stage=9), "stage-unknown"),
    (lambda: fi.Group.from_bytes(b"\xff"), "bytes-broken"),
    (lambda: fi.Entry.from_bytes(b""), "required-missing"),
    (lambda: fi.Group.from_text("filter-groups 1\ngruop"), "text-syntax"),
    (lambda: fi.Group.from_json("{"), "text-syntax"),
    (lambda: fi.Group.from_dict({"id": 1}), "text-syntax"),
    (lambda: fi.Entry(10, match={"ttl": 300}), "text-value"),
    (lambda: fi.Entry(10, match=["ttl=1", "ttl=2"]), "text-repeated"),
    (lambda: fi.Entry(10, match={"src_ipv4": "::1"}), "text-value"),
    (lambda: fi.Entry(10, match="src_ipv4=10.0.0.1 src_ipv6=::1"), "match-refused"),
    (lambda: fi.Policy("filter-policy 1\nnever"), "text-syntax"),
    (lambda: fi.trace(TYPE_3, "ttl=x", "ascending-id"), "text-value"),
    (lambda: fi.search(TYPE_3, "tll=1", "ascending-id"), "text-value"),
    (lambda: fi.search(TYPE_3, "", "ascending-id", then="allow"), "text-value"),
    (lambda: fi.plan(fi.Group(1), fi.Group(2)), "no-plan"),
])
def test_refusals_carry_their_report(call, code):
    before = bytes(TYPE_3)
    with pytest.raises(fi.Refused) as caught:
        call()
    assert [one.code.value for one in caught.value.report][:1] == [code]
    assert str(caught.value).startswith(str(caught.value.report))
    assert bytes(TYPE_3) == before
    again = pickle.loads(pickle.dumps(caught.value))
    assert (str(again), again.report) == (str(caught.value), caught.value.report)
    survives_pickles(caught.value.report[0])


@pytest.mark.parametrize("call, error", [
    (lambda: TYPE_3.remove(10), KeyError),
    (lambda: TYPE_3.entries[10], KeyError),
    (lambda: TYPE_3.entries[-1], KeyError),
    (lambda: TYPE_3.entries["10"], KeyError),
    (lambda: TYPE_3.insert(None), TypeError),
    (lambda: fi.apply(fi.plan(TYPE_3, TYPE_3), None), TypeError),
    (lambda: fi.Group.stage.fset(None, "ingress"), TypeError),
    (lambda: fi.Group.priority.fset(None, 1), TypeError),
    (lambda: pickle.dumps(TYPE_3.entries, 0), TypeError),
    (lambda: object.__reduce__(TYPE_3), TypeError),
    (lambda: setattr(fi.Group(1), "__class__", fi.Entry), TypeError),
    (lambda: reversed(TYPE_3.entries), TypeError),
    (lambda: hash(TYPE_3.entries), TypeError),
    (lambda: fi.hits(TYPE_3, open(__file__, "rb"), "ascending-id"), TypeError),
    (lambda: testing.assert_policy(TYPE_3, 5), TypeError),
    (lambda: testing.assert_policy("edge.txt", "policy.txt"), TypeError),
    (lambda: fi.analyse(TYPE_3, "ascending-id", redundant=None), TypeError),
    (lambda: fi.Report._from_state(([], [0, 0])), TypeError),
    (lambda: fi.Finding._from_state([]), ValueError),
    (lambda: fi.Finding._from_state(["no-code"]), ValueError),
    (lambda: fi.Finding._from_state([5]), TypeError),
    (lambda: fi.Entry(2**32), ValueError),
    (lambda: fi.Entry(None), TypeError),
    (lambda: fi.Entry("10"), TypeError),
    (lambda: fi.Entry(10, priority=-1), ValueError),
    (lambda: fi.Entry(10, police=5), TypeError),
    (lambda: TYPE_3.entries.__reduce__(), TypeError),
    (lambda: fi.Group("1"), TypeError),
    (lambda: fi.Group(65536), ValueError),
    (lambda: fi.Group(1, stage="in"), ValueError),
    (lambda: fi.Group(1, type=None), TypeError),
    (lambda: fi.Group(1, entries=[1]), TypeError),
    (lambda: fi.Group(1, type=2**32), ValueError),
    (lambda: fi.Group(1, stage=-2**31 - 1), ValueError),
    (lambda: fi.Group.from_text("\ud800"), UnicodeError),
    (lambda: fi.hits(TYPE_3, b"bytes", "ascending-id", offsets=[-1]), ValueError),
    (lambda: fi.hits(TYPE_3, b"bytes", "ascending-id", offsets=b"bytes"), TypeError),
    (lambda: fi.Group.from_bytes("text"), TypeError),
    (lambda: fi.Group.from_text(""), ValueError),
    (lambda: fi.Group.from_text("filter-groups 1"), ValueError),
    (lambda: fi.Entry(10, match={"ttl": "1 then deny"}), ValueError),
    (lambda: fi.Entry(10, match={"ttl": "1#"}), ValueError),
    (lambda: fi.Entry(10, match=["ttl=1", "then", "deny"]), ValueError),
    (lambda: fi.analyse(TYPE_3, "ascending-id", max_steps=-1), ValueError),
    (lambda: TYPE_3.remove(-1), ValueError),
    (lambda: setattr(TYPE_3, "priority", -1), ValueError),
    (lambda: fi.Entry(10, police="id=1 stage=none flow} parent {id=2"), ValueError),
    (lambda: fi.Entry(10, match=5), TypeError),
    (lambda: fi.Entry.from_dict({"id": {1}}), TypeError),
    (lambda: fi.explain_insert(TYPE_3, ENTRY)[99], IndexError),
    (lambda: fi.analyse(TYPE_3, "up"), ValueError),
    (lambda: fi.analyse(TYPE_3, 5), TypeError),
    (lambda: fi.search(TYPE_3, "", "ascending-id", entry=5), KeyError),
    (lambda: fi.hits(TYPE_3, b"bytes", "ascending-id"), TypeError),
    (lambda: fi.hits(TYPE_3, [5], "ascending-id"), TypeError),
    (lambda: fi.hits(TYPE_3, b"bytes", "ascending-id", offsets=[9]), ValueError),
    (lambda: fi.hits(TYPE_3, b"bytes", "ascending-id", offsets=[3, 1]), ValueError),
    (lambda: fi.hits(TYPE_3, b"bytes", "ascending-id", offsets=[0], lengths=[1, 2]), ValueError),
])
def test_misuse_is_an_error_of_python(call, error):
    with pytest.raises(error):
        call()


@pytest.mark.parametrize("call, sentence", [
    (lambda: fi.Entry(10, match={"ttl": 300}), "entry 10 priority=0 if ttl=300"),
    (lambda: fi.Entry(10, match={"tll": 1}), "did you mean ttl?"),
    (lambda: fi.Entry(10, match=5), "match is a text, a mapping"),
    (lambda: setattr(TYPE_3, "priority", "7"), "priority is a whole number, and not str"),
    (lambda: fi.Group.from_text(b"text"), "text is a text, and not bytes"),
    (lambda: fi.Entry(10, match=b"ttl=1"), "match is a text, a mapping, or a list of them, and not bytes"),
    (lambda: fi.Group(1, entries=[7]), "an entry is an object of the class Entry, and not int"),
    (lambda: fi.hits(TYPE_3, [bytes(60)] * 10000, "ascending-id", links="raw"), "help(filter_inspect.hits)"),
    (lambda: fi.hits(TYPE_3, [bytes(60), (0, b"")], "ascending-id"), "frame 1 is bytes, and not tuple"),
    (lambda: fi.Group(1, priority=65536), "priority is a number from 0 to 65535, and not 65536"),
    (lambda: fi.Group(1, stage=None), "stage is a text or a number, and not NoneType"),
    (lambda: fi.analyse(TYPE_3, "up"), "filter_inspect.Order lists them"),
    (lambda: fi.apply(fi.plan(fi.Group(1), TYPE_3), fi.Group(1, stage="egress")),
     "the group refuses the step 'set-type 3'"),
])
def test_errors_say_what_and_why(call, sentence):
    with pytest.raises((TypeError, ValueError)) as caught:
        call()
    assert sentence in str(caught.value) and len(str(caught.value)) < 500


@pytest.mark.parametrize("kind", [one for one in vars(fi).values() if isinstance(one, type)
                                  and not issubclass(one, (enum.Enum, Exception))])
def test_no_object_is_without_a_value(kind):
    base = kind.__mro__[1]
    for make in (lambda: kind.__new__(kind), lambda: type("Derived", (kind,), {}), base,
                 type("Derived", (base,), {})):
        with pytest.raises(TypeError):
            make()
