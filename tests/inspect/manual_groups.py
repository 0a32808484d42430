"""Prints the manual page filter-groups(5), which is made of the pages of docs/.

    manual_groups.py SOURCES

The form comes from text-format.md, the meaning of each word from vocabulary.md, and the findings
from findings.md. A table becomes a list, since it would be wider than a terminal.
"""

import re
import sys

SOURCES = sys.argv[1]


def page(name):
    with open(f"{SOURCES}/docs/{name}.md", encoding="ascii") as file:
        return re.sub(r"<!--.*?-->\n", "", file.read())


def section(text, title):
    return re.search(rf"^##+ {title}\n\n(.*?)(?=^##? |\Z)", text, re.M | re.S)[1]


def roff(text):
    """Words in backticks are bold, and links are their words alone."""
    text = re.sub(r"\[([^\]]+)\]\([^)]*\)", r"\1", " ".join(text.split()))
    text = text.replace("\\", "\\e").replace("-", "\\-").replace("'", "\\(aq").replace("`` ` ``", "`")
    text = re.sub(r"`([^`]*)`|\*\*([^*]*)\*\*", r"\\fB\1\2\\fR", text)
    return "\\&" + text if text.startswith(".") else text


def rows_of(table):
    return [[cell.strip() for cell in line.strip("|").split(" | ")] for line in table.splitlines()[2:]]


def print_item(word, *about):
    print(".TP\n" + roff(word) + "\n" + roff(" ".join(about)))


def print_text(text):
    """Paragraphs, lists, tables, examples and headings."""
    for part in re.split(r"\n\n+", text.strip("\n")):
        if part.startswith("    "):
            print(".IP\n.EX\n" + re.sub(r"(?m)^    ", "", part).replace("\\", "\\e").replace("-", "\\-") + "\n.EE")
        elif part.startswith("- "):
            for item in re.split(r"\n?^- ", part, flags=re.M)[1:]:
                print(".IP \\(bu 2\n" + roff(item))
        elif part.startswith("#"):
            print(".SS " + roff(part.lstrip("# ")))
        elif part.startswith("|"):
            for row in rows_of(part):
                print_item(*row)
        elif not part.startswith(("```", "These tables")):
            print(".PP\n" + roff(part))


def print_words(title, rows):
    print(".SH " + title.upper())
    for row in rows:
        print_item(*row)


form, words, findings = page("text-format"), page("vocabulary"), page("findings")
tables = re.findall(r"(?:^\|.*\n)+", section(form, "Values"), re.M)
values = {row[0]: row[2] for table in tables[:2] for row in rows_of(table)}
known = [rows_of(table) for table in re.findall(r"(?:^\|.*\n)+", words, re.M)]


def of(kind, row):
    name, meaning, example, admitted = row
    value = values[name]
    return [example, meaning, *([] if value == "no value" else [f"The value: {value}."]), f"{kind} that admit it: {admitted}."]


print('.\\" Made by tests/inspect/manual_groups.py from docs/; the target `renew` of the build writes it.')
print(".TH FILTER\\-GROUPS 5 2026\\-11\\-22 filter_common\n.SH NAME")
print("filter\\-groups \\- rules of packet filters as text\n.SH DESCRIPTION")
print_text(form[form.index("\n\n") : form.index("\n## Values")])
print_text(re.sub(r"(?m)^\|.*\n", "", section(form, "Values")))
print_words("Matches", [of("Types", row) for row in known[0]])
print_words("Actions", [of("Stages", row) for row in known[1]])
print_words("Packet fields", [[name, f"Tested by {matches}. Packets that have it: {packets}."]
                              for name, matches, packets in rows_of(tables[2])])
print(".SH PACKETS AND SETS OF PACKETS")
print_text(section(form, "Packets and sets of packets"))
print_words("Stages", [[name, meaning, f"Types: {types}."] for name, meaning, types in known[2]])
print_words("Types", [[name, f"Its rules may test {tests}."] for name, tests in known[3]])
print(".SH OTHER WORDS")
for title in ("Counters", "Policers", "Other words"):
    print_text(section(words, title))
print(".SH FINDINGS")
for name, text in re.findall(r"^### ([a-z-]+)\n\n(.*?)(?=\n\n)", findings, re.M | re.S):
    print(".TP\n\\fB" + roff(name) + "\\fR\n" + roff(text))
print(".SH SEE ALSO\n.BR filter\\-inspect (1)")
