"""Checks that the comment of each message field names every class that writes the field.

    schema_comments_test.py SOURCES

The rows of forms.def say which fields a class writes.
"""

import re
import sys

SOURCES = sys.argv[1]


def read(name):
    with open(f"{SOURCES}/{name}", encoding="ascii") as file:
        return file.read()


faults = []
forms = read("src/inspect/forms/forms.def")
for kind in ("matches", "actions"):
    catalogue = read(f"include/filter_common/filter_{kind}.def")
    classes = dict(re.findall(r"^FILTERS_\w+\((\w+), (\w+),", catalogue, re.M))
    # A paragraph of the schema is a comment and the fields below it.
    commented = {}
    for paragraph in read(f"protobuf/filter_{kind}.proto").split("\n\n"):
        for field in re.findall(r"^  (?:optional|required|repeated) \w+ (\w+) =", paragraph, re.M):
            commented[field] = re.findall(r"\w+", paragraph)
    for code, row in re.findall(r"_FORM\((\w+),(.*?)\)(?=\n\w*_FORM|\n#)", forms, re.S):
        for field in re.findall(r"(?:IN|MANY)\((\w+)\)", row) if code in classes else ():
            if classes[code] not in commented[field]:
                faults.append(f"{field} of filter_{kind}.proto: the comment does not name {classes[code]}")
print(*faults, sep="\n", end="")
sys.exit(1 if faults else 0)
