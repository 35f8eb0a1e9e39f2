#!/usr/bin/env python3
"""Asks bash, zsh and fish what they offer after some words; each has to say what the command says.

completions_test.py COMMAND FOLDER_OF_COMPLETIONS
"""
import os
import pty
import re
import select
import subprocess
import sys
import tempfile
import time

command, completions = map(os.path.abspath, sys.argv[1:])

# A command line, and what it may go on with: all of it, or a part of a longer list.
CASES = [
    ("tov-schema im", ["import"]),
    ("tov-schema help cat", ["catalogue-query"]),
    ("tov-schema load --format ", ["auto", "bcp", "csv", "insert", "json", "native"]),
    ("tov-schema load --forma", ["--format"]),
    ("tov-schema create schema.j", ["schema.json"]),
]
# What the shells themselves take apart, and the word that it ends with.
TYPED = [
    ("~/bin/tov-schema im", "import"),
    ("./my\\ folder/tov-schema im", "import"),
    ("'my folder'/tov-schema im", "import"),
    ("$HOME/bin/tov-schema im", "import"),
    ("tov-schema unload --format=c", "csv"),
]

BASH = """
source "$1/tov-schema.bash"
shift
COMP_WORDS=("$@") COMP_CWORD=$(($# - 1))
compopt() { mapfile -t COMPREPLY < <(compgen -f -- "${COMP_WORDS[COMP_CWORD]}"); }
_tov_schema
printf '%s\\n' "${COMPREPLY[@]}"
"""


def ask_bash(line):
    words = line.split(" ")
    answer = subprocess.run(["bash", "-c", BASH, "bash", completions, *words], capture_output=True, text=True,
                            check=True).stdout
    return sorted(word for word in answer.split("\n") if word)


def ask_fish(line):
    quoted = line.replace("\\", "\\\\").replace("'", "\\'")
    script = f"source {completions}/tov-schema.fish; complete -C '{quoted}'"
    answer = subprocess.run(["fish", "--no-config", "-c", script], capture_output=True, text=True, check=True).stdout
    return sorted(row.split("\t")[0] for row in answer.splitlines())


class Shell:
    """An interactive shell on a terminal, since completion works in the line editor only."""

    def __init__(self, words, preparation):
        self.name = words[0]
        self.pid, self.terminal = pty.fork()
        if self.pid == 0:
            os.execvp(words[0], words)
        self.type(f"{preparation}; PS1='PROMPT-> '; echo RE''ADY\n")
        self.read_until("READY.*PROMPT-> ")

    def type(self, text):
        os.write(self.terminal, text.encode())

    def read_until(self, pattern):
        seen, end = "", time.monotonic() + 120
        while not re.search(pattern, seen, re.DOTALL):
            if time.monotonic() > end:
                sys.exit(f"{self.name}: waited in vain for {pattern!r}; it shows {seen!r}")
            if select.select([self.terminal], [], [], 1)[0]:
                seen += re.sub(r"\x1b\[[0-9;?]*[A-Za-z]|\x1b[=>]|[\r\b\a]", "", os.read(self.terminal, 65536).decode())
        return seen

    def expect(self, line, words):
        """Several words are listed; a single one is put into the line."""
        self.type(line + "\t")
        pattern = "".join(f"(?=.*(?<![-a-z]){re.escape(word)}(?![-a-z]))" for word in words)
        self.read_until(re.escape(line.split(" ")[0]) + pattern)
        self.type("\x15")


def main():
    failed = False
    zsh = Shell(["zsh", "-f", "-i"],
                f"fpath=({completions} $fpath); autoload -Uz compinit; compinit -u -D; unsetopt list_beep; "
                "zstyle ':completion:*' list-prompt ''; LISTMAX=1000")
    bash = Shell(["bash", "--norc", "--noprofile", "-i"], f"source {completions}/tov-schema.bash")
    for line, words in CASES:
        for name, ask in (("bash", ask_bash), ("fish", ask_fish)):
            answer = ask(line)
            if answer != words:
                print(f"{name}: {line!r} goes on with {answer}, not {words}", file=sys.stderr)
                failed = True
        zsh.expect(line, words)
    for line, word in TYPED:
        zsh.expect(line, [word])
        bash.expect(line, [word])
        answer = [offered.split("=")[-1] for offered in ask_fish(line)]
        if answer != [word]:
            print(f"fish: {line!r} goes on with {answer}, not {word}", file=sys.stderr)
            failed = True
    return failed


os.environ.update(PATH=os.path.dirname(command) + ":" + os.environ["PATH"], TERM="dumb", COLUMNS="200", LINES="100",
                  LC_ALL="C.UTF-8")
with tempfile.TemporaryDirectory() as folder:
    os.environ["HOME"] = folder
    os.chdir(folder)
    open("schema.json", "w", encoding="utf-8").close()
    for place in ("bin", "my folder"):
        os.mkdir(place)
        os.symlink(command, f"{place}/tov-schema")
    sys.exit(main())
