#!/usr/bin/env python3
"""The hooks for pre-commit do what docs/ci.md says: run as its configuration has them, they pass in the examples, and
fail once a script has lost something more.

    hooks_test.py COMMAND SOURCE_DIR
"""
import re
import shlex
import shutil
import subprocess
import sys
import tempfile
from pathlib import Path

import yaml

COMMAND = Path(sys.argv[1]).resolve()
SOURCE = Path(sys.argv[2])
EXPECTED = {"tov-schema-import": "column-computed: dbo.Extra.Twice", "tov-schema-diff": "+ dbo.Extra"}


def configured():
    """The hooks of docs/ci.md with their arguments."""
    block = re.search(r"<!-- pre-commit in examples -->\n```yaml\n(.*?)```", (SOURCE / "docs/ci.md").read_text(), re.S)
    (repo,) = yaml.safe_load(block[1])["repos"]
    return {hook["id"]: hook["args"] for hook in repo["hooks"]}


def run(words, folder):
    assert words[0] == "tov-schema", words
    done = subprocess.run([COMMAND, *words[1:]], cwd=folder, stdin=subprocess.DEVNULL, capture_output=True, text=True)
    return done.returncode, done.stdout + done.stderr


def main():
    hooks = {hook["id"]: hook for hook in yaml.safe_load((SOURCE / ".pre-commit-hooks.yaml").read_text())}
    arguments = configured()
    assert sorted(hooks) == sorted(arguments) == sorted(EXPECTED), "docs/ci.md shows all hooks"
    with tempfile.TemporaryDirectory() as work:
        folder = Path(shutil.copytree(SOURCE / "examples", Path(work) / "examples"))
        code, said = run(["tov-schema", "import", "shop/", "-o", "schema.json", "--findings", "findings.json"], folder)
        assert code == 0, said
        lines = {name: shlex.split(hook["entry"]) + arguments[name] for name, hook in hooks.items()}
        for name, words in lines.items():
            hook = hooks[name]
            assert hook["name"] and hook["language"] == "system" and hook["pass_filenames"] is False, hook
            for file in ("shop/dbo/Stock.sql", "tov-schema.toml", "shop.dacpac"):
                assert re.search(hook["files"], file), f"{name} does not run when {file} changes"
            assert not re.search(hook["files"], "README.md"), name
            code, said = run(words, folder)
            assert code == 0, f"{name} fails: {said}"
        (folder / "shop/extra.sql").write_text("CREATE TABLE dbo.Extra (Id int PRIMARY KEY, Twice AS (Id * 2))")
        for name, words in lines.items():
            code, said = run(words, folder)
            assert code == 1 and EXPECTED[name] in said, f"{name}: {code} {said}"


main()
