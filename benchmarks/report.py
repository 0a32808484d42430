#!/usr/bin/env python3
"""Compares figures with their limits, and prints both.

    report.py [--gate|--heap|--renew] [figures.txt] [times.json] [beside.txt] [beside.json]

Figures are lines of a name and a value, read from standard input unless a file is named; times.json
is the output of Google Benchmark. The files `beside` have the same figures for the stand-ins, which
are shown but not compared. The script fails if a row exceeds its limit; with --heap it looks only at
the rows of the heap. With --gate it also fails if a figure that is the same in every run differs from
held.txt by more than 4 %, up or down. --renew writes the new figures to held.txt, so that an
improvement is kept.
"""
import json
import os
import sys

HELD = os.path.join(os.path.dirname(os.path.abspath(__file__)), "held.txt")
TOLERANCE = 0.04

SIZES = (1, 10, 100, 1000, 10000)
LIBRARY = ("make", "serialize", "rebuild", "destroy", "rebuild_destroy", "copy", "insert",
           "insert_shuffled", "compare", "set_type", "print", "print_string", "change", "decode",
           "rebuild_losses", "decode_losses")
FLOORS = ("write", "write_arena", "write_again", "parse", "parse_destroy", "parse_arena",
          "parse_again", "debug_string")
SECOND_SIZES = (100, 1000)
SECOND_LIBRARY = ("explain_accepted", "explain_refused", "text_write", "text_read", "json_write",
                  "json_read", "diff", "plan", "analyse", "trace", "decide", "search")


def limits(row, operation, what, small, large):
    """A row for each number of rules: instructions a rule, with a limit of its own for one rule."""
    return [(row, f"{what}, instructions a rule, N = {size:,}", f"{operation}.{size}",
             small if size == 1 else large, ",.0f") for size in SIZES]


def ratios(row, operation, floor, what, limits):
    """A row for each number of rules: instructions of an operation by those of a floor."""
    return [(row, f"{what}, N = {size:,}", f"{operation}.{size} / {floor}.{size}", limit, ".3f")
            for size, limit in limits]


# Each row has its number, its description, a figure or the ratio of two figures, its limit and its
# format. A limit may depend on the width of a pointer. A row without a limit is only printed.
# Figures named time.* are ratios of times. Figures named by an operation and a number of rules are
# instructions for each rule. A KB is 1,024 bytes.
ROWS = [
    *ratios("1", "serialize", "write", "serialize / written on the heap",
            ((1, 0.20), (10, 0.15), (100, 0.15), (1000, 0.15), (10000, 0.15))),
    *ratios("1", "serialize", "write_arena", "... / written on an arena", ((1000, None),)),
    *ratios("1", "serialize", "write_again", "... / written by a message used again",
            ((1000, None),)),
    *ratios("2", "rebuild", "parse", "rebuild / parsed on the heap, neither destroyed",
            ((1, None), (10, None), (100, None), (1000, None), (10000, None))),
    *ratios("2", "rebuild_destroy", "parse_destroy", "rebuild / parsed on the heap, both destroyed",
            ((1, 0.70), (10, 0.70), (100, 0.70), (1000, 0.55), (10000, 0.55))),
    *ratios("2", "rebuild_destroy", "parse_arena", "... / parsed on an arena", ((1000, None),)),
    *ratios("2", "rebuild_destroy", "parse_again", "... / parsed by a message used again",
            ((1000, None),)),
    *limits("3", "serialize", "serialize", 2100, 1800),
    *limits("3", "rebuild", "rebuild", 6300, 6300),
    *limits("3", "rebuild_destroy", "rebuild and destroy", 8400, 8400),
    *limits("3", "decode", "strict decode", 13500, 13500),
    ("3", "copy a group, instructions a rule", "copy.1000", 2400, ",.0f"),
    ("3", "insertEntry, instructions", "insert.1000", 2900, ",.0f"),
    ("3", "operator==, instructions a rule", "compare.1000", 750, ",.0f"),
    ("3", "print, instructions a rule", "print.1000", 23000, ",.0f"),
    ("3", "print / DebugString of the message", "print.1000 / debug_string.1000", 0.30, ".2f"),
    ("3", "... into a string, as that is", "print_string.1000 / debug_string.1000", None, ".2f"),
    ("4", "instructions: send one changed rule / send all 10,000 rules", "change.10000 / all.10000", 0.001, ".5f"),
    ("4", "a changed rule on the wire, bytes", "change.wire", 200, ".0f"),
    ("5", "operator==, allocations a rule", "compare.allocations", 0, ".0f"),
    ("5", "insertEntry, allocations a rule", "insert.allocations", 16.1, ".1f"),
    ("5", "copy a group, allocations a rule", "copy.allocations", 16.1, ".1f"),
    ("5", "rebuild, allocations a rule", "rebuild.allocations", 16.1, ".1f"),
    ("5", "serialize, allocations a rule", "serialize.allocations", 1.1, ".1f"),
    ("5", "print, allocations a rule", "print.allocations", 0, ".0f"),
    ("6", "heap held a rule, bytes", "held", {64: 650, 32: 390}, ".0f"),
    ("6", "rebuild, peak / held after it", "rebuild.peak", 1.05, ".2f"),
    ("6", "serialize, extra peak / bytes written", "serialize.peak", 1.10, ".2f"),
    ("7", "serialize, instructions a rule of 100,000 / of 10,000",
     "serialize.100000 / serialize.10000", 1.05, ".2f"),
    ("7", "rebuild, the same", "rebuild.100000 / rebuild.10000", 1.05, ".2f"),
    ("8", "code and data of the library, -O2, KB", "size.O2", 320, ".0f"),
    ("8", "code and data of the library, -Os, KB", "size.Os", 258, ".0f"),
    ("9", "relocations", "relocations", 1000, ",.0f"),
    ("9", "instructions to load it, millions", "load.instructions", 0.90, ".2f"),
    ("10", "strict decode / rebuild, instructions, 10,000 rules", "decode.10000 / rebuild.10000", 10,
     ".2f"),
    ("10", "the same of rules that each lose a field", "decode_losses.10000 / rebuild_losses.10000",
     10, ".2f"),
    ("10", "strict decode with losses, instructions per rule: 10,000 rules / 1,000 rules",
     "decode_losses.10000 / decode_losses.1000", 1.1, ".2f"),
    *(("11", f"time: {what}, {size:,} rules", f"time.{pair}.{size}", limit, ".2f")
      for what, pair, limit in (
          ("serialize / written on the heap", "serialize.write", 0.40),
          ("... / written on an arena", "serialize.write_arena", None),
          ("... / written by a message used again", "serialize.write_again", None),
          ("rebuild / parsed on the heap, neither destroyed", "rebuild.parse", None),
          ("rebuild / parsed on the heap, both destroyed", "rebuild_destroy.parse_destroy", 0.85),
          ("... / parsed on an arena", "rebuild_destroy.parse_arena", None),
          ("... / parsed by a message used again", "rebuild_destroy.parse_again", None),
          ("print / DebugString of the message", "print.debug_string", 0.35))
      for size in (1000, 10000)),
]
HEAP = {"5", "6"}


def read_figures(lines, times):
    figures = {}
    for line in lines:
        name, value = line.split()
        figures[name] = float(value)
    for size in SIZES:
        if f"rebuild.{size}" in figures:
            whole = size * (figures[f"serialize.{size}"] + figures[f"rebuild.{size}"])
            figures[f"all.{size}"] = whole
    if times:
        for run in json.load(open(times))["benchmarks"]:
            pair, size = run["name"].split("/")[:2]
            figures[f"time.{pair}.{size}"] = run["floor_ratio"]
    return figures


def value_of(figures, name):
    """The figure, or the ratio of two; None when one of them is missing."""
    values = [figures.get(part) for part in name.split(" / ")]
    if None in values:
        return None
    return values[0] / values[1] if len(values) == 2 else values[0]


def print_rows(figures, beside, wanted):
    """The table of the rows; how many were judged, and how many are short."""
    print(f"| # | figure | must be | measured | | {'stand-ins |' if beside else ''}")
    print(f"| --- | --- | --- | --- | --- | {'--- |' if beside else ''}")
    judged = short = 0
    for row, what, name, limit, form in ROWS:
        if not wanted(row):
            continue
        value = value_of(figures, name)
        if value is None:
            sys.exit(f"report: there is no figure {name}")
        if isinstance(limit, dict):
            limit = limit[int(figures["bits"])]
        good = limit is None or value <= limit
        judged += limit is not None
        short += not good
        bound = "" if limit is None else f"<= {limit:,}"
        verdict = "" if limit is None else "pass" if good else "short"
        line = f"| {row} | {what} | {bound} | {value:{form}} | {verdict} |"
        if beside:
            other = value_of(beside, name)
            line += " |" if other is None else f" {other:{form}} |"
        print(line)
    print(f"{judged} judged, {short} short")
    return judged, short


def print_instructions(figures, what, operations, sizes):
    print(f"\nInstructions a rule, by the number of rules{what}:\n")
    print("| operation | " + " | ".join(f"{size:,}" for size in sizes) + " |")
    print("| --- " * (1 + len(sizes)) + "|")
    for operation in operations:
        each = (f"{figures[f'{operation}.{size}']:,.0f}" for size in sizes)
        print(f"| {operation} | " + " | ".join(each) + " |")


def is_held(name):
    """Whether a figure is the same in every run, and the library's own."""
    return name.split(".")[0] not in FLOORS and not name.startswith(("time.", "all.", "bits"))


def off(figures):
    """Says what differs from what is held, and returns how much of it there is."""
    held = read_figures((line for line in open(HELD) if not line.startswith("#")), None)
    count = 0
    for name in sorted({*filter(is_held, held), *filter(is_held, figures)}):
        value, must = figures.get(name), held.get(name)
        if value is not None and must is not None and abs(value - must) <= TOLERANCE * must:
            continue
        count += 1
        if value is None or must is None:
            print(f"held: {name} is {value}, not {must}")
        else:
            word = "worse" if value > must else "better: renew it"
            percent = f" ({100 * (value / must - 1):+.1f} %)" if must else ""
            print(f"held: {name} is {value:g}, not {must:g}{percent}, {word}")
    return count


def renew(figures):
    with open(HELD, "w") as file:
        file.write("# The figures of scripts/bench --gate, measured by scripts/bench --renew on Debian 12 "
                   "for x86-64:\n# g++ 12.2, protocol buffers 3.21.12. Names that end in a number "
                   "of rules are\n# instructions for each rule; those of `change` are for one rule.\n")
        for name in sorted(filter(is_held, figures)):
            file.write(f"{name} {figures[name]:.6g}\n")


def main():
    options = [name for name in sys.argv[1:] if name.startswith("--")]
    files = [name for name in sys.argv[1:] if not name.startswith("--")] + [None] * 4
    lines = open(files[0]) if files[0] else sys.stdin
    figures = read_figures(lines, files[1])
    beside = read_figures(open(files[2]), files[3]) if files[2] else {}
    if "--renew" in options:
        renew(figures)
        return
    heap, gate = "--heap" in options, "--gate" in options
    timed = {row[0] for row in ROWS if row[2].startswith("time.")}
    judged, short = print_rows(
        figures, beside, lambda row: row in HEAP if heap else files[1] or row not in timed)
    if not heap:
        print_instructions(figures, " (a change: in all)", LIBRARY + FLOORS, SIZES)
        print_instructions(figures, ", in the second library", SECOND_LIBRARY, SECOND_SIZES)
    moved = off(figures) if gate else 0
    if gate:
        print(f"{moved} figures differ from benchmarks/held.txt")
    sys.exit(1 if judged == 0 or short or moved else 0)


main()
