"""Prints a page or a header of the book as Doxygen wants it:

    book_filter.py FILE

The comments of headers get a third stroke. Headings of pages get a name, and links to them this
name. A link stays on one line.
"""

import os
import re
import sys


def anchor(page, heading):
    """The name of a heading, which is unique in the book."""
    words = re.sub(r"[^\w -]", "", heading.lower()).replace(" ", "-")
    return f"{os.path.basename(page)[:-3].lower()}-{words}"


def header(text):
    text = re.sub(r"^ *// ---.*\n", "", text, flags=re.M)
    text = re.sub(r"^( *)// ?", r"\1/// ", text, flags=re.M)
    return re.sub(r"([;,{}] *)// ", r"\1///< ", text)


def page(name, text):
    def link(match):
        words, target, heading = match.groups()
        words = " ".join(words.split())
        if heading:
            target = "@ref " + anchor(target or name, heading[1:])
        return f"[{words}]({target})"

    parts = re.split(r"(^```.*?^```|^    .*?$)", text, flags=re.S | re.M)
    for i in range(0, len(parts), 2):
        part = re.sub(r"\[([^][]+)\]\(([\w./-]*)(#[\w-]+)?\)", link, parts[i])
        # Doxygen takes two colons for the name of a class, and leaves them out of addresses.
        part = re.sub(r"`([^`\n]*[0-9a-f])::([0-9a-f/][^`\n]*|)`", r"<tt>\1:</tt><tt>:\2</tt>", part)
        parts[i] = re.sub(r"^(##+ (.+))$", lambda m: f"{m[1]} {{#{anchor(name, m[2])}}}", part, flags=re.M)
    return "".join(parts)


with open(sys.argv[1], encoding="utf-8") as file:
    content = file.read()
sys.stdout.write(header(content) if sys.argv[1].endswith(".h") else page(sys.argv[1], content))
