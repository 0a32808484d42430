#!/usr/bin/env python3
"""Draws how the cost of a rule grows with the size of its group.

    plot.py times.json picture.svg

Reads what Google Benchmark has written for times.cpp. Needs gnuplot (Debian: gnuplot-nox).
"""
import json
import subprocess
import sys

SHOWN = ["print", "rebuild", "insert_shuffled", "insert", "copy", "serialize", "compare"]


def main():
    times, picture = sys.argv[1:]
    costs = {}
    for run in json.load(open(times))["benchmarks"]:
        pair, rules = run["name"].split("/")[:2]
        name = pair.split(".")[0]  # the first floor of each operation counts
        costs.setdefault(name, {}).setdefault(int(rules), run["ns_a_rule"] / 1000)
    commands = [
        "set terminal svg size 720,420 font 'sans,13' background 'white'",
        f"set output '{picture}'",
        "set logscale x",
        "set format x '%.0f'",
        "set xlabel 'rules in the group'",
        "set ylabel 'microseconds a rule'",
        "set yrange [0:*]",
        "set grid ytics lc rgb '#dddddd'",
        "set key outside right",
        "plot " + ", ".join(f"'-' with linespoints lw 2 pt 7 ps 0.5 title '{name}' noenhanced"
                            for name in SHOWN),
    ]
    for name in SHOWN:
        commands += [f"{rules} {cost}" for rules, cost in costs[name].items()] + ["e"]
    subprocess.run(["gnuplot"], input="\n".join(commands) + "\n", text=True, check=True)


main()
