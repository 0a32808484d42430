"""Assertions about rules, for test suites. A failure shows what filter-inspect would print.

>>> import filter_inspect as fi
>>> old = fi.Group(1, stage="ingress", type=3, entries=[fi.Entry(10, match="ttl=1", then="permit")])
>>> new = fi.Group.from_text(str(old).replace("permit", "deny"))
>>> assert_same_treatment(old, old, "ascending-id")
>>> assert_same_treatment(old, new, "ascending-id")
Traceback (most recent call last):
    ...
AssertionError: the groups treat packets differently (order: ascending-id)
warning: entry 10: permit became deny: packets like this one are now dropped [treatment-differs]
  packet: ttl=1
  permit becomes deny
  rule: entry 10 priority=0 if ttl=1 then deny
"""

from __future__ import annotations

import os
from typing import Iterable, List, Optional, Union

from . import (
    Code,
    Finding,
    Group,
    Order,
    Policy,
    Severity,
    check_policy,
    explain_changes,
)

_VERDICTS = {Code.POLICY_FAILS: "fails", Code.POLICY_OPEN: "not decided"}


def _rules(finding: Finding, *groups: Group) -> List[str]:
    """The lines of the rules that a finding names, each from the first group that has it."""
    ids = ([] if finding.entry is None else [finding.entry]) + finding.others
    lines = []
    for id in ids:
        entries = [group.entries[id] for group in groups if id in group.entries]
        lines += [f"  rule: {entry}" for entry in entries[:1]]
    return lines


def assert_policy(
    groups: Union[Group, Iterable[Group]], policy: Union[str, "os.PathLike[str]"]
) -> None:
    """Fails unless the groups surely keep each promise of the file `policy`.

    Each group of which the file says something must be there.
    """
    given = [groups] if isinstance(groups, Group) else list(groups)
    for group in given:
        if not isinstance(group, Group):
            raise TypeError(f"groups are objects of the class Group, and not {type(group).__name__}")
    name = os.fspath(policy)
    with open(name, encoding="utf-8") as file:
        promises = Policy(file.read())
    lines = [
        f"{name}: there is no group {id}"
        for id in promises.groups
        if id not in [group.id for group in given]
    ]
    for group in given:
        for finding in check_policy(group, promises):
            if finding.code not in _VERDICTS:
                continue
            line = finding.path.split(":")[0]
            lines.append(
                f"{name}:{line}: {_VERDICTS[finding.code]}: {finding.message} [{finding.code.value}]"
            )
            lines += _rules(finding, group)
    if lines:
        raise AssertionError("the rules do not keep their promises\n" + "\n".join(lines))


def assert_same_treatment(
    old: Group, new: Group, order: Union[str, Order], *, packets: Optional[str] = None
) -> None:
    """Fails unless both groups surely treat every packet alike, or every packet of a set."""
    lines: List[str] = []
    for finding in explain_changes(old, new, order, packets=packets):
        if finding.severity is not Severity.NOTE or finding.code is Code.NOT_DECIDED:
            lines += [str(finding), *_rules(finding, new, old)]
    if lines:
        name = order.value if isinstance(order, Order) else order
        raise AssertionError(
            f"the groups treat packets differently (order: {name})\n" + "\n".join(lines)
        )
