"""Tests what many calls, threads, signals and short-lived objects do to the package."""

import array
import gc
import os
import pathlib
import random
import signal
import struct
import subprocess
import sys
import threading
import time

import filter_inspect as fi
import pytest

RULES = pathlib.Path(__file__).parents[2] / "examples/rules"
EDGE = fi.Group.from_text((RULES / "edge.txt").read_text(encoding="utf-8"))
ORDER = "highest-priority"


MANY = array.array("Q", bytes(8 << 23))  # the offsets or lengths of millions of empty frames


def hard_group(rules=6000):
    """A group whose analysis takes much longer than the tests wait."""
    return fi.Group(1, stage="ingress", type=3, entries=[
        fi.Entry(i, priority=i * 7919 % 65536, then="permit" if i % 3 else "deny",
                 match={"src_ipv4": f"10.{i % 7}.{i % 251}.0/255.{i % 256}.{i * 31 % 256}.0",
                        "dst_l4_port": f"{i % 4096}/0x{i * 37 % 65536:x}",
                        "src_l4_port": f"{i % 512}/0x{i * 91 % 65536:x}"})
        for i in range(rules)])


def hardest_group(rules=430):
    """A group whose last rule takes half a minute: whether others take all its packets is a hard question."""
    draw = random.Random(rules)

    def one():
        bits = draw.sample(range(96), 3)
        mask, value = (sum(draw.choice(of) << bit for bit in bits) for of in ([1], [0, 1]))

        def address(number):
            return (number & 2**48 - 1).to_bytes(6, "big").hex(":")

        return {name: f"{address(value >> at)}/{address(mask >> at)}"
                for name, at in (("src_mac", 0), ("dst_mac", 48)) if mask >> at & 2**48 - 1}

    return fi.Group(1, stage="ingress", type=1, entries=[
        *(fi.Entry(i, priority=2, match=one(), then="deny") for i in range(1, rules)),
        fi.Entry(rules, priority=1, then="permit")])


def resident():
    with open("/proc/self/statm", encoding="ascii") as file:
        return int(file.read().split()[1]) * os.sysconf("SC_PAGE_SIZE")


def every_call():
    group = fi.Group.from_bytes(bytes(EDGE))
    group.insert(group.entries[10])
    report = fi.explain_insert(group, fi.Entry(1, match="vrf_id=1"))
    str(report[0]), report[:], report.worst
    try:
        group.insert(fi.Entry(1, match="vrf_id=1"))
    except fi.Refused as refused:
        assert refused.report
    fi.hits(group, [bytes(60)], ORDER).entries


def test_nothing_leaks():
    calls = 100_000 // 12  # each round makes a dozen calls
    for _ in range(500):
        every_call()
    gc.collect()
    before = resident()
    for _ in range(calls):
        every_call()
    gc.collect()
    assert resident() - before < 4 << 20


def test_python_may_exit_during_a_question():
    program = """
import threading, time, hardening_test as test
for question in (lambda: test.fi.analyse(test.hardest_group(), test.ORDER, max_steps=10**15),
                 lambda: test.fi.hits(test.EDGE, bytes(60), test.ORDER, offsets=test.MANY, lengths=test.MANY)):
    threading.Thread(target=question, daemon=True).start()
time.sleep(0.3)
"""
    folder = pathlib.Path(__file__).parent
    assert subprocess.run([sys.executable, "-c", program], cwd=folder, timeout=60).returncode == 0


def test_what_is_handed_out_outlives_its_owner():
    def made():
        group = fi.Group.from_bytes(bytes(EDGE))
        report = fi.analyse(group, ORDER, overlaps=True)
        answer = fi.trace(group, "ttl=1", ORDER)
        hits = fi.hits(group, [bytes(60)], ORDER)
        entries = group.entries
        return [entries, iter(entries), entries[10], entries.items(), *report[:], answer.entries[0],
                hits.entries[0], hits.decided, fi.plan(fi.Group(1), group)]

    kept = made()
    gc.collect()
    for _ in range(100):
        made()
    assert kept[0][10] == EDGE.entries[10] == kept[2] and list(kept[1]) == [10, 11, 20, 1000]
    assert all(repr(one) for one in kept)


def test_entries_are_those_of_their_group_now():
    group = fi.Group.from_bytes(bytes(EDGE))
    entries = group.entries
    for id in entries:
        group.remove(id)
    assert len(entries) == 0 and 10 not in entries and "10" not in entries and entries == {}
    assert entries.get(2**32) is entries.get("10") is entries.get(10) is None
    with pytest.raises(KeyError) as caught:
        entries[10]
    assert caught.value.args == (10,)


def test_a_question_keeps_the_group_that_it_was_asked_about():
    group, removed = hard_group(300), []

    def progress(done, all):
        for id in list(group.entries)[:5]:
            group.remove(id)
            removed.append(id)

    expected = str(fi.analyse(hard_group(300), ORDER))
    assert str(fi.analyse(group, ORDER, progress=progress)) == expected
    assert removed and len(group.entries) == 300 - len(removed)


def test_threads_read_and_change_a_group():
    group, stop, faults = fi.Group.from_bytes(bytes(EDGE)), time.monotonic() + 1, []

    def work(step):
        try:
            while time.monotonic() < stop:
                step()
        except BaseException as fault:  # a thread hides what it raises
            faults.append(fault)

    steps = [lambda: fi.analyse(group, ORDER), lambda: [*group.entries.items()],
             lambda: group.insert(fi.Entry(5, then="deny")), lambda: fi.diff(group, EDGE)]
    threads = [threading.Thread(target=work, args=(step,)) for step in steps]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert not faults


@pytest.mark.parametrize("question", [
    lambda group: fi.analyse(group, ORDER, overlaps=True),
    lambda group: fi.analyse(hardest_group(), ORDER, redundant=False, max_steps=10**15),
    lambda group: fi.compare_treatment(group, EDGE, ORDER),
    lambda group: fi.hits(group, iter(lambda: bytes(60), None), ORDER),
    lambda group: fi.hits(group, bytes(60), ORDER, offsets=MANY, lengths=MANY),
], ids=["analyse", "one rule", "compare", "frames", "buffer"])
def test_control_c_ends_long_work(question):
    group, sent = hard_group(), []

    def interrupt():
        time.sleep(0.2)
        sent.append(time.monotonic())
        os.kill(os.getpid(), signal.SIGINT)

    thread = threading.Thread(target=interrupt)
    with pytest.raises(KeyboardInterrupt):
        thread.start()
        question(group)
        while True:  # the work was done before the signal came
            assert not sent, "the work ended too early"
    assert time.monotonic() - sent[0] < 1
    thread.join()


@pytest.mark.parametrize("buffered", [False, True])
def test_other_threads_run_while_frames_are_counted(buffered):
    turns, ended = [], threading.Event()

    def work():
        while not ended.wait(0.001):
            turns.append(None)

    thread = threading.Thread(target=work)
    thread.start()
    if buffered:
        offsets = MANY[:1 << 21]
        before = len(turns)
        fi.hits(EDGE, bytearray(60), ORDER, offsets=offsets, lengths=offsets)
    else:
        frames = [bytes(60)] * (1 << 20)
        before = len(turns)
        fi.hits(EDGE, frames, ORDER)
    during = len(turns) - before
    ended.set()
    thread.join()
    assert during > 3


def test_progress_is_told_and_may_refuse():
    seen = []
    fi.analyse(hard_group(300), ORDER, progress=lambda done, all: seen.append((done, all)))
    assert seen and all(done <= all for done, all in seen)

    def stop(done, all):
        raise LookupError("enough")

    with pytest.raises(LookupError, match="enough"):
        fi.analyse(EDGE, ORDER, progress=stop)
    with pytest.raises(TypeError):
        fi.analyse(EDGE, ORDER, progress=5)


def frames_of(capture):
    """The captured bytes and the lengths of the frames of a capture, by hand."""
    data, at, frames = capture, 24, []
    while at < len(data):
        captured, length = struct.unpack_from("<II", data, at + 8)
        frames.append((at + 16, captured, length))
        at += 16 + captured
    return frames


def test_frames_of_scapy_are_those_of_the_capture():
    scapy = pytest.importorskip("scapy.utils")
    capture = (RULES / "traffic.pcap").read_bytes()
    offsets, lengths, wire = (array.array("Q", column) for column in zip(*frames_of(capture)))
    whole = [i for i, length in enumerate(lengths) if length == wire[i]]
    packets = scapy.rdpcap(str(RULES / "traffic.pcap"))
    assert len(packets) == len(offsets) == 8

    def counts(hits):
        return [(one.entry, one.sure.frames, one.possible.frames) for one in hits.entries]

    buffered = fi.hits(EDGE, capture, ORDER, offsets=array.array("I", offsets), lengths=lengths,
                       wire_lengths=wire)
    assert counts(buffered) == [(10, 1, 1), (11, 1, 1), (20, 1, 0), (1000, 4, 1)]
    assert [fault.value for fault in buffered.faults] == ["cut"]
    each = fi.hits(EDGE, [packets[i] for i in whole], ORDER)
    writable = fi.hits(EDGE, bytearray(capture), ORDER, offsets=[offsets[i] for i in whole],
                       lengths=[lengths[i] for i in whole])
    assert counts(each) == counts(writable) and each.frames == len(whole) == 7
