"""Prints the options of filter-inspect, which it reads from the program's --help.

    options.py manual|bash FILTER-INSPECT...

tests/generated.py uses the output for the list of options in the manual page and for the tables of
the completion.
"""

import re
import subprocess
import sys

form, *tool = sys.argv[1:]


def help_of(*command):
    return subprocess.run([*tool, *command, "--help"], stdout=subprocess.PIPE, check=True,
                          encoding="ascii").stdout


def section(text, title):
    """The lines of a part of the help: what stands there, what it takes, and what it is."""
    lines = re.search(rf"^{title}:\n((?:  .*\n)+)", text, re.MULTILINE)
    joined = re.sub(r"\n {10,}", "   ", lines[1]) if lines else ""
    return re.findall(r"^  (\S+)(?: (\S+))? +(\S.*)$", joined, re.MULTILINE)


overview = help_of()
commands = [name for name, _, _ in section(overview, "Subcommands")]
options = {"": section(overview, "Options")}
for command in commands:
    own = section(help_of(command), "Options")
    options[command] = [option for option in own if option not in options[""]]


def in_roff(text):
    return text.replace("\\", "\\e").replace("-", "\\-").replace("'", "\\(aq")


def spelled(name, value):
    """As in --color=auto | always, -o OUT or --json: what is typed as it stands is bold."""
    text = f"\\fB{in_roff(name)}\\fR"
    if value:
        text += "=" if name.startswith("--") else " "
        text += in_roff(value).replace("|", " | ") if "|" in value else f"\\fI{value}\\fR"
    return text


def print_manual():
    for command, declared in options.items():
        if declared:
            print(f".SS {command or 'Every command'}")
        for names, value, about in declared:
            print(".TP\n" + ", ".join(spelled(name, value) for name in names.split(",")))
            print(in_roff(about) + ".")


def print_bash():
    print(f'  local commands="{" ".join(commands)}"')
    print("  local -A options=(")
    values = {}
    for command, declared in options.items():
        words = [names.split(",")[-1] + ("=" if value else "") for names, value, _ in declared]
        if words:
            print(f"    [{command or 'any'}]=\"{' '.join(words)}\"")
        for names, value, _ in declared:
            for name in names.split(",") if value else []:
                assert values.setdefault(name, value) == value, f"{name} has two meanings"
    print("  )\n  local -A values=(")
    for name, value in values.items():
        print(f"    [{name}]=\"{value.replace('|', ' ')}\"")
    print("  )")


{"manual": print_manual, "bash": print_bash}[form]()
