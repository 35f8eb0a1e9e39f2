#!/usr/bin/env python3
"""Writes a manual page from a page of documentation in Markdown.

make_topics.py LOWDOWN PAGE.md NAME SECTION SUMMARY OUTPUT

Tables are too wide for a terminal, so each row becomes an entry: its first cell, and below it the others with the
heading of their column. The page's own title makes room for NAME.
"""
import re
import subprocess
import sys


def cells(line):
    return [cell.strip().replace("\\|", "|") for cell in re.split(r"(?<!\\)\|", line.strip().strip("|"))]


def without_tables(lines):
    headings = []
    for number, line in enumerate(lines):
        if not line.startswith("|"):
            headings = []
            yield line
        elif re.fullmatch(r"[|:\- ]+", line):
            continue
        elif not headings:
            headings = cells(line)
        else:
            first, *others = cells(line)
            said = [f"{heading}: {cell.removesuffix('.')}" if heading else cell.removesuffix(".")
                    for heading, cell in zip(headings[1:], others) if cell]
            yield f"{first}\n: " + "; ".join(said) + "\n"


def main():
    lowdown, page, name, section, summary, output = sys.argv[1:]
    with open(page, encoding="utf-8") as file:
        lines = file.read().splitlines()
    body = [line for line in without_tables(lines) if not line.startswith("# ")]
    text = f"# NAME\n\n`{name}` - {summary}\n\n# DESCRIPTION\n" + "\n".join(body).replace("\n## ", "\n# ") + "\n"
    text = re.sub(r"\[([^]]*)\]\((?!http)[^)]*\)", r"\1", text)
    metadata = {"title": name, "section": section, "source": "tov_schema", "volume": "tov_schema"}
    options = [word for key, value in metadata.items() for word in ("-M", f"{key}={value}")]
    page = subprocess.run([lowdown, "-s", "-Tman", "--parse-no-super", *options], input=text, capture_output=True, text=True, check=True)
    with open(output, "w", encoding="utf-8") as file:
        file.write(page.stdout)


main()
