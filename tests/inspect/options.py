"""Prints the options of filter-inspect, which it reads from the program's --help.

    options.py manual|bash|zsh|fish FILTER-INSPECT...

tests/generated.py uses the output for the list of options in the manual page and for the tables of
the completions.
"""

import os
import re
import subprocess
import sys

form, *tool = sys.argv[1:]


def help_of(*command):
    return subprocess.run([*tool, *command, "--help"], stdout=subprocess.PIPE, check=True,
                          env={**os.environ, "COLUMNS": "100000"}, encoding="ascii").stdout


def section(text, title):
    """The lines of a part of the help: what stands there, what it takes, and what it is."""
    lines = re.search(rf"^{title}:\n((?:  .*\n)+)", text, re.MULTILINE)
    joined = re.sub(r"\n {10,}", "   ", lines[1]) if lines else ""
    return re.findall(r"^  (\S+)(?: (\S+))? +(\S.*)$", joined, re.MULTILINE)


overview = help_of()
summaries = {name: about for name, _, about in section(overview, "Subcommands")}
commands = list(summaries)
# The end of the help for trace lists the fields of a packet.
fields = re.search(r"Fields of a packet: ([^.]*)\.", help_of("trace"))[1].replace(",", "").split()
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
    print(f'  local fields="{" ".join(fields)}"')
    print("  local -A options=(")
    values = {}
    for command, declared in options.items():
        words = [names.split(",")[-1] + ("=" if value else "") for names, value, _ in declared]
        if words:
            print(f"    [{command or 'any'}]=\"{' '.join(words)}\"")
        for names, value, _ in declared:
            value = "PACKET" if value == "SET" else value
            for name in names.split(",") if value else []:
                if values.setdefault(name, value) != value:
                    values[command + name] = value  # it has another meaning there
    print("  )\n  local -A values=(")
    for name, value in values.items():
        print(f"    [{name}]=\"{value.replace('|', ' ')}\"")
    print("  )")


def in_quotes(text):
    return "'" + text.replace("'", "'\\''") + "'"


def print_zsh():
    def values(value):
        if value in ("FILE", "OUT"):
            return "file:_files"
        if value in ("PACKET", "SET"):
            return "packet:_filter_inspect_packet"
        return f"value:({value.replace('|', ' ')})" if "|" in value else f"{value}:"

    print(f"  local -a fields=({' '.join(fields)})\n  local -a commands=(")
    for name, about in summaries.items():
        print(f"    {in_quotes(name + ':' + about)}")
    print("  )")
    for command, declared in options.items():
        print(f"  local -a of_{command or 'any'}=(")
        for names, value, about in declared:
            told = re.sub(r"([][:\\])", r"\\\1", about)
            for name in names.split(","):
                sign = "=" if value and name.startswith("--") else ""
                again = "*" if value == "ID" else ""
                takes = ":" + values(value) if value else ""
                print(f"    {in_quotes(f'{again}{name}{sign}[{told}]{takes}')}")
        print("  )")


def print_fish():
    print(f"set -l commands {' '.join(commands)}")
    for name, about in summaries.items():
        print(f'complete -c filter-inspect -n "not __fish_seen_subcommand_from $commands"'
              f" -f -a {name} -d {in_fish(about)}")
    for command, declared in options.items():
        when = f" -n '__fish_seen_subcommand_from {command}'" if command else ""
        for names, value, about in declared:
            words = [f"{'-l' if name.startswith('--') else '-s'} {name.lstrip('-')}"
                     for name in names.split(",")]
            takes = ""
            if value in ("FILE", "OUT"):
                takes = " -r -F"
            elif value in ("PACKET", "SET"):
                takes = f" -x -a '{' '.join(field + '=' for field in fields)}'"
            elif value:
                takes = " -x" + (f" -a '{value.replace('|', ' ')}'" if "|" in value else "")
            print(f"complete -c filter-inspect{when} {' '.join(words)}{takes} -d {in_fish(about)}")


def in_fish(text):
    return "'" + text.replace("\\", "\\\\").replace("'", "\\'") + "'"


{"manual": print_manual, "bash": print_bash, "zsh": print_zsh, "fish": print_fish}[form]()
