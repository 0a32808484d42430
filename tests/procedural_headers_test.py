"""Compares the headers for C programs with the catalogues and with the table of assertions.

    procedural_headers_test.py SOURCES

For each class a header must have a function that makes it, or name it as a gap. Each function that
stops at a null handle must have a row in procedural_test.cpp.
"""

import re
import sys

SOURCES = sys.argv[1]


def read(name):
    with open(f"{SOURCES}/{name}", encoding="ascii") as file:
        return file.read()


faults = []
assertions = set(re.findall(r'CALL\("[^"]*", (\w+),', read("tests/procedural_test.cpp")))
for kind in ("matches", "actions"):
    header = read(f"include/filter_common/filter_{kind}_c.h")
    gaps = set(re.findall(r"\w+", header.split("\n// Gaps")[1].split("\n\n")[0]))
    made = set(re.findall(r"\bnew(\w+)\(", header))
    for name in re.findall(r"^FILTERS_\w+\(\w+, (\w+),", read(f"include/filter_common/filter_{kind}.def"), re.M):
        if name not in gaps and not made & {name, name.replace("Action", "")}:
            faults.append(f"filter_{kind}_c.h neither makes {name} nor names it as a gap")
    for part in header.split("// --- ")[1:]:
        if "undefined" not in part.split("\n")[0]:
            for function in re.findall(r"(\w+)\((?:void|\w+)\* [am]\)", part):
                if function not in assertions:
                    faults.append(f"{function}() has no row in kAssertions")
print(*faults, sep="\n", end="")
sys.exit(1 if faults else 0)
