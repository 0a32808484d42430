#!/usr/bin/env python3
"""Holds figures against what they must be, and prints both.

    report.py [--gate|--heap] [figures.txt] [times.json] [beside.txt] [beside.json]

Figures are lines of a name and a value, read from standard input unless a file is named; times.json
is what Google Benchmark writes. The files beside are the same for the stand-ins, shown but not
judged. With --gate only those figures count that are the same in every run, with --heap only those
of the heap; the script then fails when one is missing, or beyond what is held of it.
"""
import json
import sys

# Row, what it is, name of the figure, limit, format, and whether it is the same in every run.
# A limit may depend on the width of a pointer, and may stand beside what the gate holds as long as
# it is not reached. A KB is 1,024 bytes.
ROWS = [
    ("1", "serialize / floor, 1,000 rules", "serialize/1000", 0.40, ".2f", False),
    ("1", "serialize / floor, 10,000 rules", "serialize/10000", 0.40, ".2f", False),
    ("2", "rebuild / floor, 1,000 rules", "rebuild/1000", 0.85, ".2f", False),
    ("2", "rebuild / floor, 10,000 rules", "rebuild/10000", 0.70, ".2f", False),
    *(("3", f"serialize / floor, instructions, N = {rules:,}", f"serialize.{rules}", limit, ".3f",
       True) for rules, limit in ((1, (0.40, 0.66)), (10, 0.40), (100, 0.40), (1000, 0.37), (10000, 0.37))),
    *(("3", f"rebuild / floor, instructions, N = {rules:,}", f"rebuild.{rules}", limit, ".3f",
       True) for rules, limit in ((1, (0.95, 1.15)), (10, 0.95), (100, 0.95), (1000, 0.85), (10000, 0.85))),
    ("4", "insertEntry / parsing floor, 1,000 rules", "insert/1000", 0.45, ".2f", False),
    ("4", "copy a group / parsing floor, 1,000 rules", "copy/1000", 0.45, ".2f", False),
    ("5", "operator== / parsing floor, 1,000 rules", "compare/1000", 0.15, ".2f", False),
    ("5", "operator==, allocations a rule", "compare.allocations", 0, ".0f", True),
    ("6", "insertEntry, allocations a rule", "insert.allocations", 27, ".1f", True),
    ("6", "copy a group, allocations a rule", "copy.allocations", 27, ".1f", True),
    ("6", "rebuild, allocations a rule", "rebuild.allocations", 27.1, ".1f", True),
    ("7", "serialize, allocations a rule", "serialize.allocations", 1.1, ".1f", True),
    ("7", "print, allocations a rule", "print.allocations", 0, ".0f", True),
    ("8", "heap held a rule, bytes", "held", {64: 1568, 32: 880}, ".0f", True),
    ("9", "rebuild, peak / held after it", "rebuild.peak", 1.05, ".2f", True),
    ("10", "serialize, extra peak / bytes written", "serialize.peak", 1.15, ".2f", True),
    ("11", "print / floor, 1,000 rules", "print/1000", 1.45, ".2f", False),
    ("11", "print / floor, 10,000 rules", "print/10000", 1.0, ".2f", False),
    ("12", "serialize, instructions a rule of 100,000 / of 1,000", "serialize.growth", 1.1, ".2f",
     True),
    ("12", "rebuild, the same", "rebuild.growth", 1.1, ".2f", True),
    ("13", "stripped library, -O2, KB", "size.O2", (290, 315), ".0f", True),
    ("13", "stripped library, -Os, KB", "size.Os", (240, 260), ".0f", True),
    ("14", "relocations", "relocations", 1300, ".0f", True),
    ("14", "instructions to load it, millions", "load.instructions", 1.3, ".2f", True),
    ("15", "strict decode / rebuild, instructions, 10,000 rules", "decode.10000", 10, ".2f", True),
    ("15", "the same of rules that each lose a field", "decode_losses.10000", 10, ".2f", True),
    ("16", "strict decode with losses, instructions a rule of 10,000 / of 1,000",
     "decode_losses.growth", 1.1, ".2f", True),
]
HEAP = {"5", "6", "7", "8", "9", "10"}


def read_figures(lines, times):
    figures = {}
    for line in lines:
        name, value = line.split()
        figures[name] = float(value)
    for work, floor in (("serialize", "write"), ("rebuild", "read"), ("decode", "rebuild"),
                        ("decode_losses", "rebuild")):
        def taken(name, rules):
            return figures.get(f"instructions.{name}.{rules}")
        for rules in (1, 10, 100, 1000, 10000):
            if taken(work, rules):
                figures[f"{work}.{rules}"] = taken(work, rules) / taken(floor, rules)
        most = 100000 if taken(work, 100000) else 10000
        if taken(work, most):
            figures[f"{work}.growth"] = taken(work, most) / taken(work, 1000) * 1000 / most
    if times:
        for run in json.load(open(times))["benchmarks"]:
            figures["/".join(run["name"].split("/")[:2])] = run["floor_ratio"]
    return figures


def main():
    arguments = sys.argv[1:]
    heap = "--heap" in arguments
    gate = heap or "--gate" in arguments
    files = [name for name in arguments if not name.startswith("--")] + [None] * 4
    lines = open(files[0]) if files[0] else sys.stdin
    figures = read_figures(lines, files[1])
    beside = read_figures(open(files[2]), files[3]) if files[2] else {}
    bits = int(figures.get("bits", 64))

    print(f"| # | figure | must be | measured | | {'stand-ins |' if beside else ''}")
    print(f"| --- | --- | --- | --- | --- | {'--- |' if beside else ''}")
    short = broken = judged = 0
    for row, what, name, limit, form, steady in ROWS:
        if (gate and not steady) or (heap and row not in HEAP):
            continue
        if name not in figures:
            sys.exit(f"report: there is no figure {name}")
        if isinstance(limit, dict):
            limit = limit[bits]
        limit, held = limit if isinstance(limit, tuple) else (limit, limit)
        good = figures[name] <= limit
        judged += 1
        short += not good
        broken += figures[name] > held
        line = f"| {row} | {what} | <= {limit:,} | {figures[name]:{form}} | "
        line += "pass |" if good else "short |" if held == limit else f"short, held at {held} |"
        if beside:
            line += f" {beside[name]:{form}} |" if name in beside else " |"
        print(line)
    print(f"{judged} figures, {short} short")
    if gate and broken:
        print(f"{broken} beyond what the gate holds")
    sys.exit(1 if judged == 0 or (gate and broken) else 0)


main()
