#!/usr/bin/env python3
"""Writes the part of a page that a script measures, between two marks of its name.

    write_section.py PAGE NAME TEXT

TEXT is a file; it takes the place of what stands between "<!-- written by NAME -->" and "<!-- end of NAME -->".
"""
import os
import sys


def main(page, name, text_path):
    begin, end = f"<!-- written by {name} -->\n", f"<!-- end of {name} -->\n"
    with open(page, encoding="utf-8") as file:
        content = file.read()
    if content.count(begin) != 1 or content.count(end) != 1 or content.index(begin) > content.index(end):
        sys.exit(f"{page}: the marks of {name} are missing")
    with open(text_path, encoding="utf-8") as file:
        text = file.read()
    with open(page + ".new", "w", encoding="utf-8") as file:
        file.write(content[:content.index(begin)] + begin + "\n" + text.strip("\n") + "\n\n" + content[content.index(end):])
    os.replace(page + ".new", page)


main(*sys.argv[1:])
