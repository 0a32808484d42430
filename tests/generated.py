"""Compares a file with the output of the program that makes it, or makes the file anew.

    generated.py [--renew] whole|part FILE COMMAND...

The output of the command is the whole file, or the part of it between the lines "begin generated"
and "end generated".
"""

import difflib
import subprocess
import sys


def merged(old, made):
    """The lines of the file, with those that the command made between the marks."""
    begin = [at for at, line in enumerate(old) if "begin generated" in line]
    end = [at for at, line in enumerate(old) if "end generated" in line]
    if len(begin) != 1 or len(end) != 1:
        sys.exit("The file must have one line with \"begin generated\" and one with \"end generated\".")
    return old[: begin[0] + 1] + made + old[end[0] :]


def main():
    renew = sys.argv[1] == "--renew"
    extent, name, *command = sys.argv[1 + renew :]
    made = subprocess.run(command, stdout=subprocess.PIPE, check=True, encoding="utf-8").stdout
    with open(name, encoding="utf-8") as file:
        old = file.read().splitlines(keepends=True)
    new = made.splitlines(keepends=True)
    if extent == "part":
        new = merged(old, new)
    if new == old:
        return 0
    if renew:
        with open(name, "w", encoding="utf-8") as file:
            file.writelines(new)
        return 0
    sys.stdout.writelines(difflib.unified_diff(old, new, name, "what is made of the rows"))
    print("The target `renew` of the build writes the file anew.")
    return 1


if __name__ == "__main__":
    sys.exit(main())
