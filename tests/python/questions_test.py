"""Tests the questions, and the assertions of filter_inspect.testing."""

import ast
import copy
import doctest
import os
import subprocess
from collections.abc import Mapping, Sequence
from enum import Enum
from pathlib import Path
from typing import Iterator, List, Set, Tuple

import filter_inspect as fi
import pytest
from filter_inspect import _core, _errors, testing

TREE = Path(__file__).parents[2]
RULES = TREE / "examples/rules"
ORDER = fi.Order.HIGHEST_PRIORITY


def read(name: str) -> fi.Group:
    return fi.Group.from_text((RULES / name).read_text(encoding="utf-8"))


OLD, NEW = read("edge.txt"), read("edge-candidate.txt")


def tool(*arguments: str) -> str:
    """What filter-inspect prints, without the names of the files and the summary."""
    program = os.environ.get("FILTER_INSPECT")
    if not program:
        pytest.skip("this build has no filter-inspect")
    printed = subprocess.run([program, *arguments], cwd=RULES, stdout=subprocess.PIPE, encoding="utf-8")
    return printed.stdout


def docstrings(owner: object, name: str) -> Iterator[Tuple[str, str]]:
    for its, value in vars(owner).items():
        text = getattr(value, "__doc__", None) or ""
        if ">>>" in text:
            yield f"{name}.{its}", text
        if isinstance(value, type) and value.__module__.startswith("filter_inspect") and name != its:
            yield from docstrings(value, its)


DOCSTRINGS = [*docstrings(_core, "filter_inspect"), *docstrings(_errors, "filter_inspect"),
              ("testing", testing.__doc__ or ""),
              ("python.md", (TREE / "docs/python.md").read_text(encoding="utf-8"))]


@pytest.mark.parametrize("name, text", DOCSTRINGS, ids=[name for name, _ in DOCSTRINGS])
def test_docstring(name: str, text: str, monkeypatch: pytest.MonkeyPatch) -> None:
    monkeypatch.chdir(RULES)
    test = doctest.DocTestParser().get_doctest(text, dict(vars(testing)), name, name, 0)
    failures, _ = doctest.DocTestRunner().run(test)
    assert failures == 0


def test_each_name_has_a_docstring() -> None:
    for name, value in vars(_core).items():
        if name.startswith("_"):
            continue
        text = value.__doc__ or ""
        assert ">>>" in text or (isinstance(value, type) and issubclass(value, Enum)), name
        if isinstance(value, type) and not issubclass(value, Enum):
            for its, attribute in vars(value).items():
                assert its.startswith("_") or len(attribute.__doc__) > 5, f"{name}.{its}"


def test_the_stubs_have_each_name() -> None:
    path = TREE / "python/filter_inspect/_core.pyi"

    def stubs(body: List[ast.stmt]) -> Set[str]:
        names = {one.name for one in body if isinstance(one, (ast.ClassDef, ast.FunctionDef))}
        names |= {ast.unparse(one.target) for one in body if isinstance(one, ast.AnnAssign)}
        return {name for name in names if not name.startswith("_")}

    body = ast.parse(path.read_text(encoding="utf-8")).body
    assert stubs(body) == {name for name in vars(_core) if not name.startswith("_")}
    for made in body:
        kind = vars(_core).get(made.name) if isinstance(made, ast.ClassDef) else None
        if isinstance(made, ast.ClassDef) and kind and not issubclass(kind, Enum):
            mixins = {name for abstract in (Mapping, Sequence) if issubclass(kind, abstract)
                      for name in vars(abstract)}
            names = {name for name in vars(kind) if not name.startswith("_")}
            assert names - mixins == stubs(made.body), made.name


def test_the_groups_of_the_tutorial() -> None:
    data = subprocess.run([os.environ["SEND_GROUP"]], stdout=subprocess.PIPE, check=True).stdout
    groups: List[fi.Group] = []
    while data:  # each group stands behind its length, 4 bytes in network order
        size = int.from_bytes(data[:4], "big")
        group, report = fi.decode(data[4 : 4 + size])
        assert group is not None and not report
        groups.append(group)
        data = data[4 + size :]
    assert len(groups) == 2
    testing.assert_policy(groups, TREE / "examples/tutorial-policy.txt")
    for group in groups:
        report = fi.analyse(group, ORDER)
        assert report.to_json("analyse", order=ORDER).startswith("{")
        for finding in report:
            if finding.witness and finding.entry in group.entries:
                assert fi.trace(group, finding.witness, ORDER).outcome is not fi.Hit.MISS


def test_lines_are_those_of_the_tool() -> None:
    printed = tool("diff", "edge.txt", "edge-candidate.txt", f"--order={ORDER.value}")
    for line in str(fi.explain_changes(OLD, NEW, ORDER)).splitlines():
        assert line.removeprefix("warning: ") in printed
    packet = "src_ipv4=10.0.0.1 ip_protocol=tcp dst_l4_port=179"
    printed = tool("trace", "edge.txt", f"--order={ORDER.value}", f"--packet={packet}")
    assert str(fi.trace(OLD, packet, ORDER)).splitlines()[0] in printed
    printed = tool("plan", "edge.txt", "edge-candidate.txt")
    assert all(step in printed for step in fi.plan(OLD, NEW).steps)


def test_a_plan_is_taken_whole_or_not_at_all() -> None:
    steps, group = fi.plan(OLD, NEW), fi.Group.from_bytes(bytes(OLD))
    fi.apply(steps, group)
    assert group == NEW and len(steps) == len(steps.steps) > 0 and steps.fewest
    other = fi.Group(1, stage="lookup", type=4)
    with pytest.raises(fi.Refused) as caught:
        fi.apply(steps, other)
    assert caught.value.report[0].entry == 20 and not other.entries


def test_broken_promises_are_shown_with_their_rules() -> None:
    testing.assert_policy(OLD, RULES / "policy.txt")
    with pytest.raises(AssertionError) as caught:
        testing.assert_policy([NEW], RULES / "policy.txt")
    lines = str(caught.value).splitlines()
    assert lines[1].endswith(
        "policy.txt:5: fails: entry 5 permits dst_l4_port=23 src_l4_port=49152 src_ipv4=10.0.0.1 "
        "dst_ipv4=198.51.100.1 ip_protocol=6 [policy-fails]")
    assert lines[2] == "  rule: entry 5 priority=500 if src_ipv4=10.0.0.0/8 then permit"
    assert len(lines) == 5
    with pytest.raises(AssertionError, match="there is no group 1"):
        testing.assert_policy([], RULES / "policy.txt")


def test_other_treatment_is_shown_with_its_packets() -> None:
    testing.assert_same_treatment(OLD, OLD, ORDER)
    testing.assert_same_treatment(OLD, NEW, ORDER, packets="src_ipv4=192.0.2.0/24 ip_protocol=tcp")
    with pytest.raises(AssertionError, match="entry 20: another policer(.|\n)*entry 5: new"):
        testing.assert_same_treatment(OLD, NEW, ORDER.value)


def test_a_report_is_a_sequence() -> None:
    report = fi.diff(OLD, NEW)
    assert [one.code for one in report] == [one.code for one in report[:]] == list(
        map(lambda one: one.code, reversed(report)))[::-1]
    with pytest.raises(IndexError):
        report[2**70]
    assert fi.Severity.NOTE < fi.Severity.WARNING < fi.Severity.ERROR >= max(fi.Severity)
    with pytest.raises(TypeError):
        fi.Severity.NOTE < "note?"
    assert report[-1].entry == 20 and report.worst is fi.Severity.NOTE and report.left_out == 0
    assert report == fi.diff(OLD, NEW) != fi.diff(NEW, OLD) and report[0] == report[:1][0] != report[1]
    assert report.index(report[1]) == 1 and report.count(report[-1]) == 1 and report[1] in report
    assert len({report, copy.copy(report), copy.deepcopy(report), fi.diff(OLD, NEW)}) == 1
    assert len(report[::2]) == (len(report) + 1) // 2
    limited = fi.analyse(fi.Group(1, entries=[fi.Entry(i, then="deny") for i in range(9)]),
                         "ascending-id", max_findings=3)
    assert len(limited) == 3 and limited.left_out == 6 and limited


def test_questions_about_sets() -> None:
    found = fi.search(NEW, "ip_protocol=tcp dst_l4_port=23", ORDER, then="permit")
    assert [one.entry for one in found] == [5]
    assert 1000 in [one.entry for one in fi.search(NEW, "ttl=1", ORDER, touching=True)]
    assert fi.search(NEW, "", ORDER, entry=10)[0].entry == 10
    assert [one.code for one in fi.compare_treatment(OLD, NEW, ORDER)][0] is fi.Code.TREATMENT_DIFFERS


