#!/usr/bin/env python3
"""gcov for gcovr, without the branches of code that only an exception leads to: takes gcov's arguments.

The compiler writes conditions of its own there: whether a temporary was made already, and is to be destroyed. gcov knows
these blocks, but shows it for those alone that never ran. So it is asked about the notes first, as if nothing had run.
"""
import os
import re
import shutil
import subprocess
import sys
import tempfile

BLOCK = re.compile(r"^ *[^ :]+: *\d+-block ")
EXCEPTIONAL = re.compile(r"^ *\$\$\$\$\$: *\d+-block ")
CREATED = re.compile(r"^Creating '(.*)'$", re.M)
OF_THE_SYSTEM = re.compile(r"^ *-: *0:Source:/usr/")


def run_gcov(arguments):
    return subprocess.run(["gcov", *arguments], capture_output=True, text=True, check=True).stdout


def read_lines(path):
    with open(path, encoding="utf-8", errors="surrogateescape") as file:
        first = file.readline()
        return [] if OF_THE_SYSTEM.match(first) else [first, *file]


def find_exceptional(lines):
    """Of each branch in turn, whether only an exception leads to it."""
    found = []
    is_exceptional = False
    for line in lines:
        if BLOCK.match(line):
            is_exceptional = EXCEPTIONAL.match(line) is not None
        elif line.startswith("branch"):
            found.append(is_exceptional)
    return found


def leave_out(path, exceptional):
    lines = read_lines(path)
    if sum(line.startswith("branch") for line in lines) != len(exceptional):
        exceptional = [False] * len(lines)  # other branches than without counts: all of them stay
    of_branches = iter(exceptional)
    kept = [line for line in lines if not (line.startswith("branch") and next(of_branches)) and not BLOCK.match(line)]
    if kept:
        with open(path, "w", encoding="utf-8", errors="surrogateescape") as file:
            file.writelines(kept)


def main(arguments):
    counts = arguments[0] if arguments else ""
    if not counts.endswith(".gcda"):
        os.execvp("gcov", ["gcov", *arguments])
    options = ["--all-blocks", *arguments[1:]]
    place = options.index("--object-directory") + 1
    with tempfile.TemporaryDirectory() as folder:
        notes = shutil.copy(counts.removesuffix("gcda") + "gcno", folder)
        written = run_gcov([*options[:place], folder, *options[place + 1 :], notes])
        exceptional = {name: find_exceptional(read_lines(name)) for name in CREATED.findall(written)}
    written = run_gcov([*options, counts])
    for name in CREATED.findall(written):
        leave_out(name, exceptional[name])
    sys.stdout.write(written)


main(sys.argv[1:])
