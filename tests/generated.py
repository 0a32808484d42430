"""Compares a file with the output of the program that makes it, or makes the file anew.

    generated.py [--renew] FILE COMMAND...

The output of the command is the whole file, or the part between the lines "begin generated" and
"end generated" if the file has them.
"""

import difflib
import subprocess
import sys


def merged(old, made):
    """The lines of the file with those that the command made."""
    begin = [at for at, line in enumerate(old) if "begin generated" in line]
    end = [at for at, line in enumerate(old) if "end generated" in line]
    return old[: begin[0] + 1] + made + old[end[0] :] if begin else made


def main():
    renew = sys.argv[1] == "--renew"
    name, *command = sys.argv[1 + renew :]
    made = subprocess.run(command, stdout=subprocess.PIPE, check=True, encoding="utf-8").stdout
    with open(name, encoding="utf-8") as file:
        old = file.read().splitlines(keepends=True)
    new = merged(old, made.splitlines(keepends=True))
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
