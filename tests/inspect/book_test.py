"""Runs the commands that README and docs show.

    book_test.py SOURCES SEND-GROUP FILTER-INSPECT...

Commands run in a folder with the files of examples/rules, what send_group sends, and some captures. A command behind `$ ` in
an example must print what stands below it; a line `...` stands for any lines. All other commands of
filter-inspect, and the examples of its help, need only find their files and know their options.
"""

import difflib
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

SOURCES = pathlib.Path(sys.argv[1])
PAGES = [SOURCES / "README.md", *sorted((SOURCES / "docs").glob("*.md"))]


def examples_of(text):
    """Each command of the examples of a page, and the lines that it prints."""
    for block in re.findall(r"(?:^    .*\n|^\n(?=    ))+", text, re.M):
        lines = [line[4:] for line in block.splitlines()]
        starts = [at for at, line in enumerate(lines) if line.startswith("$ ")]
        for start, end in zip(starts, [*starts[1:], len(lines)]):
            printed = lines[start + 1 : end]
            while printed and not printed[-1]:
                printed.pop()
            yield lines[start][2:], printed


def fits(printed, expected):
    pattern = "".join(r"(?:.*\n)*" if line == "..." else re.escape(line.rstrip()) + r" *\n" for line in expected)
    return re.fullmatch(pattern, printed) is not None


def run(command, folder):
    result = subprocess.run(["bash", "-c", command], cwd=folder, stdin=subprocess.DEVNULL,
                            stdout=subprocess.PIPE, stderr=subprocess.STDOUT, encoding="utf-8",
                            env={**os.environ, "PATH": f"{folder}/bin:{os.environ['PATH']}", "COLUMNS": "80"})
    return result.returncode, result.stdout


def main():
    ran, faults = 0, 0

    def is_left_out(command):
        return "--capture" in command and not reads_captures

    def expect_to_run(where, command):
        nonlocal ran, faults
        if is_left_out(command):
            return
        ran += 1
        status, printed = run(command, folder)
        if status > 1:
            faults += 1
            print(f"{where}: `{command}` exits with {status}: {printed}")

    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        tool = folder / "bin" / "filter-inspect"
        tool.parent.mkdir()
        tool.write_text("#!/bin/sh\nexec " + " ".join(f"'{word}'" for word in sys.argv[3:]) + ' "$@"\n')
        tool.chmod(0o755)
        reads_captures = "libpcap" in run("filter-inspect --version", folder)[1]
        for file in (SOURCES / "examples/rules").iterdir():
            shutil.copy(file, folder)
        shutil.copy(SOURCES / "examples/tutorial-policy.txt", folder)
        with open(folder / "tutorial.bin", "wb") as tutorial:
            subprocess.run([*sys.argv[3:-1], sys.argv[2]], stdout=tutorial, check=True)
        (folder / "packets.txt").write_text("ip_protocol=tcp dst_l4_port=179\nip_protocol=udp ttl=1\n")
        for capture, rules in (("capture", "edge"), ("old", "edge"), ("new", "edge-candidate")):
            run(f"filter-inspect convert {rules}.txt --to=bytes -o {capture}.bin", folder)
        for page in PAGES:
            text = page.read_text()
            for command, expected in examples_of(text):
                if is_left_out(command):
                    continue
                ran += 1
                _, printed = run(command, folder)
                if not fits(printed, expected):
                    faults += 1
                    print(f"{page.name}: $ {command}")
                    print(*difflib.unified_diff(expected, printed.splitlines(), "page", "printed", lineterm=""), sep="\n")
            for command in re.findall(r"`(filter-inspect [^`]*(?:\.bin|\.txt|--type)[^`]*)`", text):
                if re.search(r"\b[A-Z]{3,}\b", command):
                    continue  # stands for many commands
                expect_to_run(page.name, command)
        overview = run("filter-inspect --help", folder)[1].split("Subcommands:")[1]
        for command in re.findall(r"^  ([a-z]+) ", overview, re.M):
            examples = re.findall(r"^  (filter-inspect .*)", run(f"filter-inspect help {command}", folder)[1], re.M)
            if not examples:
                faults += 1
                print(f"the help of {command} has no example")
            for example in examples:
                expect_to_run("help", example)
    print(f"{ran} commands, {faults} faults")
    return 1 if faults or ran < 10 else 0


sys.exit(main())
