#!/usr/bin/env python3
"""The examples in the docstrings of public headers compile, as C99 and as C++17, with all warnings as errors.

    examples_test.py CC CXX HEADER...
"""
import re
import subprocess
import sys
import tempfile
from pathlib import Path

WARNINGS = ["-Wall", "-Wextra", "-Wno-missing-field-initializers", "-Wpedantic", "-Werror", "-Wno-unused-function", "-fsyntax-only"]


def examples(header):
    """The text of each @code block, without the stars of the comment."""
    for block in re.findall(r"@code\{\.c\}\n(.*?)\n \* @endcode", header.read_text(), re.S):
        yield "\n".join(re.sub(r"^ \* ?", "", line) for line in block.split("\n"))


def main():
    cc, cxx, *headers = sys.argv[1:]
    headers = [Path(header) for header in headers]
    includes = sorted({f"-I{header.parent}" for header in headers})
    count = failures = 0
    with tempfile.TemporaryDirectory() as work:
        for header in headers:
            for example in examples(header):
                count += 1
                text = f'#include "{header.name}"\n\n#include <stdio.h>\n\n{example}\n'
                for compiler, name, standard in ((cc, "example.c", "-std=c99"), (cxx, "example.cpp", "-std=c++17")):
                    file = Path(work) / name
                    file.write_text(text)
                    if subprocess.run([compiler, standard, *WARNINGS, *includes, file]).returncode != 0:
                        print(f"{header.name}: an example does not compile as {standard}", file=sys.stderr)
                        failures += 1
    print(f"{count} examples, {failures} failures")
    sys.exit(failures > 0 or count == 0)


main()
