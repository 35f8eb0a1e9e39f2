#!/usr/bin/env python3
"""Joins the lines that no test covers with their reasons; prints both and fails where one lacks the other.

    uncovered.py COVERAGE.json REASONS

COVERAGE.json is gcovr's. REASONS has a line "file | text of the line | reason" for each. A reason holds for the lines
behind it too, up to the next one that is covered. Lines are known by their text, since their numbers change.
"""
import json
import sys


def read_reasons(path):
    reasons = []
    for line in open(path, encoding="utf-8"):
        if line.strip() and not line.startswith("#"):
            file, rest = line.split(" | ", 1)
            text, reason = rest.rsplit(" | ", 1)  # C++ has bars of its own
            reasons.append((file.strip(), text.strip(), reason.strip()))
    return reasons


def main(coverage_path, reasons_path):
    unused = read_reasons(reasons_path)
    is_complete = True
    with open(coverage_path, encoding="utf-8") as coverage:
        files = json.load(coverage)["files"]
    for file in sorted(files, key=lambda file: file["file"]):
        name = file["file"]
        source = open(name, encoding="utf-8").read().split("\n")
        reason = None
        for line in file["lines"]:
            if line["gcovr/noncode"] or line["gcovr/excluded"]:
                continue
            if line["count"]:
                reason = None
                continue
            text = source[line["line_number"] - 1].strip()
            entry = next((entry for entry in unused if entry[:2] == (name, text)), None)
            if entry:
                unused.remove(entry)
                reason = entry[2]
            is_complete = is_complete and reason is not None
            print(f"{name}:{line['line_number']}: {text}\n    {reason or 'NO REASON GIVEN'}")
    for name, text, reason in unused:
        print(f"{name}: {text}\n    COVERED OR NOT THERE, but has a reason: {reason}")
    return 0 if is_complete and not unused else 1


sys.exit(main(*sys.argv[1:]))
