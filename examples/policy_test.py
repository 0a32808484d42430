"""Tests the rules of an edge router: copy this file, and put your rules and promises beside it.

    python3 -m pytest policy_test.py
"""

from pathlib import Path

import filter_inspect as fi
import pytest
from filter_inspect.testing import assert_policy, assert_same_treatment

RULES = Path(__file__).parent / "rules"
ORDER = "highest-priority"


def read(name: str) -> fi.Group:
    return fi.Group.from_text((RULES / name).read_text(encoding="utf-8"))


def test_the_rules_keep_their_promises() -> None:
    assert_policy(read("edge.txt"), RULES / "policy.txt")


def test_every_rule_takes_effect() -> None:
    report = fi.analyse(read("edge.txt"), ORDER)
    assert not report, f"\n{report}"


def test_a_candidate_lets_no_telnet_through() -> None:
    with pytest.raises(AssertionError, match="policy.txt:5: fails: entry 5 permits"):
        assert_policy(read("edge-candidate.txt"), RULES / "policy.txt")


def test_a_candidate_changes_nothing_for_others() -> None:
    old, new = read("edge.txt"), read("edge-candidate.txt")
    assert_same_treatment(old, new, ORDER, packets="src_ipv4=198.51.100.0/24 ip_protocol=tcp")
