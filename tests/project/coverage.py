#!/usr/bin/env python3
"""What scripts/coverage does with gcovr's figures.

    coverage.py doors COUNTED COVERAGE        leaves out the branch of KT_TRY's look at an error from before the call
    coverage.py reasons COVERAGE REASONS      joins the lines that no test covers with their reasons; prints both, and
                                              fails on a reason without a line, and on a line of runtime or module
                                              without a reason
    coverage.py table MODULE CALLERS          the figures as a table, of gcovr's summaries

COVERAGE is gcovr's JSON. REASONS has a line "file | text of the line | reason" for each. A reason holds for the lines
after it too, up to the next one that is covered. Lines are known by their text, since their numbers change.
"""
import json
import sys

STRICT = ("src/runtime/", "src/core/")  # where every line has its reason


def load(path):
    with open(path, encoding="utf-8") as file:
        return json.load(file)


def read_source(name):
    with open(name, encoding="utf-8") as file:
        return file.read().split("\n")


def leave_out_doors(counted_path, coverage_path):
    """The look is the first condition of the macro, so its way out is the first branch of the line."""
    coverage = load(counted_path)
    for file in coverage["files"]:
        source = read_source(file["file"])
        for line in file["lines"]:
            if source[line["line_number"] - 1].lstrip().startswith("KT_TRY(") and len(line["branches"]) >= 4:
                del line["branches"][0]
    with open(coverage_path, "w", encoding="utf-8") as file:
        json.dump(coverage, file)
    return 0


def read_reasons(path):
    reasons = []
    for line in open(path, encoding="utf-8"):
        if line.strip() and not line.startswith("#"):
            file, rest = line.split(" | ", 1)
            text, reason = rest.rsplit(" | ", 1)  # C++ has bars of its own
            reasons.append((file.strip(), text.strip(), reason.strip()))
    return reasons


def join_reasons(coverage_path, reasons_path):
    unused = read_reasons(reasons_path)
    is_complete = True
    for file in sorted(load(coverage_path)["files"], key=lambda file: file["file"]):
        name = file["file"]
        source = read_source(name)
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
            is_complete = is_complete and (reason is not None or not name.startswith(STRICT))
            print(f"{name}:{line['line_number']}: {text}\n    {reason or 'NO REASON GIVEN'}")
    for name, text, reason in unused:
        print(f"{name}: {text}\n    COVERED OR NOT THERE, but has a reason: {reason}")
    return 0 if is_complete and not unused else 1


def print_table(module_path, callers_path):
    parts = [load(module_path), load(callers_path)]
    print("| | Runtime and module | Host, client and command |\n|---|---|---|")
    for kind, label in (("line", "Lines"), ("branch", "Branches"), ("function", "Functions")):
        cells = []
        for part in parts:
            covered, total = part[f"{kind}_covered"], part[f"{kind}_total"]
            cells.append(f"{covered * 1000 // total / 10} % ({covered:,} of {total:,})")
        print(f"| {label} | {cells[0]} | {cells[1]} |")
    return 0


COMMANDS = {"doors": leave_out_doors, "reasons": join_reasons, "table": print_table}
sys.exit(COMMANDS[sys.argv[1]](*sys.argv[2:]))
