"""Compares the headers for C programs with the catalogues and with the table of assertions.

    procedural_headers_test.py SOURCES

For each class a header must have a function that makes it and, if the class holds a value, one that
reads it, or name it as a gap. Each function that stops at a null handle must have a row in
procedural_test.cpp.
"""

import re
import sys

SOURCES = sys.argv[1]


def read(name):
    with open(f"{SOURCES}/{name}", encoding="ascii") as file:
        return file.read()


faults = []
assertions = set(re.findall(r'CALL\("[^"]*", (\w+),', read("tests/procedural_test.cpp")))
flags = set(re.findall(r"_FORM\((\w+), flag\(\)", read("src/inspect/forms/forms.def")))
for kind in ("matches", "actions"):
    header = read(f"include/filter_common/filter_{kind}_c.h")
    bases = dict(re.findall(r"class FILTERS_API (\w+) : public (\w+)", read(f"include/filter_common/filter_{kind}.h")))
    gaps, unread = header.split("\n// Gaps")[1].split("\n\n")[0].split("No getter reads")
    made = re.findall(r"\bnew(\w+)\(", header)
    getters = " ".join(re.findall(r"\w+Get\w*\(\w+", header)).lower()
    for code, name in re.findall(r"^FILTERS_\w+\((\w+), (\w+),", read(f"include/filter_common/filter_{kind}.def"), re.M):
        is_gap = name in re.findall(r"\w+", gaps)
        if is_gap == any(name in (maker, "Action" + maker) for maker in made):
            faults.append(f"filter_{kind}_c.h makes {name}" + (
                ", and names it as a gap" if is_gap else " by no function, and does not name it as a gap"))
        names = [re.sub("^(Match|Action)", "", each).lower() for each in (name, bases[name])]
        is_read = any(each and each in getters for each in names)
        if not (is_gap or code in flags or is_read or name in re.findall(r"\w+", unread)):
            faults.append(f"filter_{kind}_c.h neither reads {name} nor names it as a gap of getters")
    for part in header.split("// --- ")[1:]:
        if "undefined" not in part.split("\n")[0]:
            for function in re.findall(r"(\w+)\((?:void|\w+)\* [am]\)", part):
                if function not in assertions:
                    faults.append(f"{function}() has no row in kAssertions")
print(*faults, sep="\n", end="")
sys.exit(1 if faults else 0)
