"""Prints the tables of docs/vocabulary.md.

    vocabulary.py SOURCES

The meaning of a match or action is the first sentence above its class, that of a stage or counter
stands above its enumerator, and docs/capabilities.md says where each is admitted.
"""

import re
import sys

SOURCES = sys.argv[1]


def read(name):
    with open(f"{SOURCES}/{name}", encoding="utf-8") as file:
        return file.read()


def comment_above(text, line):
    """The comment above the only line that begins so."""
    comment = re.search(r"((?:^ *// .*\n)+) *" + line + r"\b", text, re.M)
    return " ".join(re.sub(r"^ *// ?", "", comment[1], flags=re.M).split())


def first_sentence(text):
    return re.match(r".*?[.](?= |$)", text)[0]


def word(code):
    """The name of a code in text and JSON."""
    return re.sub(r"^FILTERS_(MATCH|ACTION|GROUP_STAGE|GROUP_TYPE)_", "", code).lower()


def tables(text):
    """The tables of a page, each a list of rows of cells without marks."""
    for table in re.findall(r"(?:^\|.*\n)+", text, re.M):
        rows = [[cell.strip(" `") for cell in line.strip("|\n").split("|")] for line in table.splitlines()]
        yield [rows[0], *rows[2:]]


def admitted_by(row, head):
    return ", ".join(name.lower() for name, cell in zip(head, row) if cell == "x") or "not admitted"


matches, actions, types, *_ = tables(read("docs/capabilities.md"))
values = [table for table in tables(read("docs/text-format.md")) if table[0][0] in ("match", "action")]
examples = {row[0]: row[1] for table in values for row in table}

for kind, table, what, where in (("matches", matches, "match", "types"), ("actions", actions, "action", "stages")):
    print(f"\n| {what} | meaning | example | {where} that admit it |\n| --- | --- | --- | --- |")
    header = read(f"include/filter_common/filter_{kind}.h")
    for row in table[1:]:
        meaning = first_sentence(comment_above(header, f"class FILTERS_API {row[1]}"))
        name = word(row[0])
        print(f"| `{name}` | {meaning} | `{examples[name]}` | {admitted_by(row, table[0])} |")

print("\n| stage | meaning | types that it admits |\n| --- | --- | --- |")
for column, name in enumerate(types[0][1:], 1):
    meaning = comment_above(read("include/filter_common/filter_types.h"), f"FILTERS_GROUP_STAGE_{name}")
    admitted = ", ".join(word(row[0]) for row in types[1:] if row[column] == "x")
    print(f"| `{name.lower()}` | {meaning} | {admitted} |")

print("\n| type | its rules may test |\n| --- | --- |")
for column, name in enumerate(matches[0][2:], 2):
    codes = [f"`{word(row[0])}`" for row in matches[1:] if row[column] == "x"]
    print(f"| `{name.lower()}` | {', '.join(codes) or 'nothing'} |")
print()
