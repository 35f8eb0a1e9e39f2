#!/usr/bin/env python3
"""Writes a row of a table that a script measures row by row, between two marks of its name.

    write_row.py PAGE NAME KEY CELL...

The row takes the place of the one with the same key, its first cell, or is added; rows are in the order of their keys.
The table is between "<!-- written by NAME -->" and "<!-- end of NAME -->", its two lines of heading stay.
"""
import os
import sys


def main(page, name, *cells):
    begin, end = f"<!-- written by {name} -->\n\n", f"\n<!-- end of {name} -->\n"
    with open(page, encoding="utf-8") as file:
        content = file.read()
    if content.count(begin) != 1 or content.count(end) != 1 or content.index(begin) > content.index(end):
        sys.exit(f"{page}: the marks of {name} are missing")
    start = content.index(begin) + len(begin)
    lines = content[start:content.index(end)].splitlines()
    rows = {line.split("|")[1].strip(): line for line in lines[2:]}
    rows[cells[0]] = "| " + " | ".join(cells) + " |"
    table = "\n".join(lines[:2] + [rows[key] for key in sorted(rows, key=lambda key: key.strip("`"))]) + "\n"
    with open(page + ".new", "w", encoding="utf-8") as file:
        file.write(content[:start] + table + content[content.index(end):])
    os.replace(page + ".new", page)


main(*sys.argv[1:])
