#!/usr/bin/env python3
"""Shows that no layer can include what is private to another one: it does not compile.

    layers_test.py SOURCE_DIR BUILD_DIR

Compiles planted files with the flags that compile_commands.json has for each layer's own sources. Each violation must
fail because the header is not found, and each legal counterpart must compile. In the sources themselves no include
may start with "../" or "/", the two ways around the include path.
"""
import json
import re
import shlex
import subprocess
import sys
import tempfile
from pathlib import Path

# A layer's folder, and the layers below it, whose public headers it may use.
LAYERS = {
    "runtime": ("src/runtime", []),
    "module": ("src/core/common", ["runtime"]),
    "host": ("src/host", ["module", "runtime"]),
    "client": ("src/client", ["module", "runtime"]),
    "sqlite": ("src/sqlite", ["runtime"]),
    "cli": ("src/cli", ["host", "client", "sqlite", "module", "runtime"]),
}
PUBLIC_PATTERNS = ("*.h", "*_*.hpp")


def sources_of(file):
    """The sources that a command compiles: its file or, where a folder is compiled as one, those that its file includes."""
    if not re.fullmatch(r"unity_.*_cxx\.cxx", file.name):
        return [file]
    included = re.findall(r'^#include "(.+)"$', file.read_text(encoding="utf-8"), re.MULTILINE)
    return [Path(source) for source in included]


def is_in(file, folder):
    return any(folder.resolve() in source.resolve().parents for source in sources_of(file))


class Layer:
    def __init__(self, name, source_dir, commands):
        folder, self.below = LAYERS[name]
        self.name = name
        self.folder = source_dir / folder
        headers = sorted(self.folder.rglob("*.h")) + sorted(self.folder.rglob("*.hpp"))
        public = {header for pattern in PUBLIC_PATTERNS for header in self.folder.glob(pattern)}
        self.public = sorted(public) if name != "cli" else []
        self.private = [header for header in headers if header not in self.public]
        # Every set of flags that one of its sources is compiled with, and the folder to compile in.
        self.flags = {
            (command["directory"], *without_files(shlex.split(command["command"])))
            for command in commands
            if is_in(Path(command["file"]), self.folder)
        }


def without_files(words):
    """A compiler's command line without its input and output."""
    kept = []
    words = iter(words)
    for word in words:
        if word in ("-o", "-c", "-MF", "-MT"):
            next(words)
        elif word != "-MD":
            kept.append(word)
    return kept


def spellings(header, layer, source_dir):
    """The ways to name a header that an include path could make work."""
    return {
        header.name,
        header.relative_to(layer.folder).as_posix(),
        header.relative_to(source_dir / "src").as_posix(),
        header.relative_to(source_dir).as_posix(),
    }


def compile_text(layer, text):
    """What each set of the layer's flags makes of a file with this text: None, or what the compiler said."""
    with tempfile.TemporaryDirectory() as work:
        planted = Path(work) / "planted.cpp"
        planted.write_text(text, encoding="utf-8")
        for directory, *words in layer.flags:
            done = subprocess.run(
                [*words, "-fsyntax-only", planted], cwd=directory, capture_output=True, text=True, check=False
            )
            yield None if done.returncode == 0 else done.stderr


class Report:
    def __init__(self):
        self.planted = 0
        self.failures = []

    def expect_compiles(self, layer, text, what):
        for said in compile_text(layer, text):
            self.planted += 1
            if said is not None:
                self.failures.append(f"{what} does not compile:\n{said}")

    def expect_not_found(self, layer, header):
        for said in compile_text(layer, f'#include "{header}"\n'):
            self.planted += 1
            if said is None:
                self.failures.append(f'{layer.name} can include "{header}"')
            elif not re.search(r"No such file|file not found", said):
                self.failures.append(f'"{header}" fails in {layer.name} for another reason:\n{said}')


def check_pair(report, user, owner, source_dir):
    """No header of owner is in reach of user, except the public ones of a layer below."""
    is_below = owner.name in user.below
    hidden = owner.private + ([] if is_below else owner.public)
    names = set().union(*(spellings(header, owner, source_dir) for header in hidden)) if hidden else set()
    own_names = {header.relative_to(user.folder).as_posix() for header in user.private + user.public}
    names = sorted(names - own_names)
    if not names:
        return
    report.expect_not_found(user, names[0])
    probes = "".join(f'#if __has_include("{name}")\n#error "{name} is in reach"\n#endif\n' for name in names)
    report.expect_compiles(user, probes, f"{user.name}, looking for headers of {owner.name},")


def check_legal(report, user, layers, source_dir):
    """What a layer may use compiles: its own headers from the root of its folder, the public ones below by name."""
    own = [header.relative_to(user.folder).as_posix() for header in user.public + user.private]
    below = [header.name for name in user.below for header in layers[name].public]
    report.expect_compiles(
        user, "".join(f'#include "{name}"\n' for name in below + own), f"{user.name}, using what it may use,"
    )


def check_sources(report, source_dir):
    around = re.compile(r'^\s*#\s*include\s*["<](\.\./|/|.*/\.\./)')
    for file in sorted((source_dir / "src").rglob("*.[ch]*")):
        for number, line in enumerate(file.read_text(encoding="utf-8").splitlines(), 1):
            if around.match(line):
                report.failures.append(f"{file.relative_to(source_dir)}:{number} goes around the include path: {line}")


def main(source_dir, build_dir):
    commands = json.loads((build_dir / "compile_commands.json").read_text(encoding="utf-8"))
    layers = {name: Layer(name, source_dir, commands) for name in LAYERS}
    layers = {name: layer for name, layer in layers.items() if layer.flags}  # the command may be left out
    if len(layers) < 4:
        sys.exit("compile_commands.json lacks the sources of a layer")
    report = Report()
    for user in layers.values():
        check_legal(report, user, layers, source_dir)
        for owner in layers.values():
            if owner is not user:
                check_pair(report, user, owner, source_dir)
    check_sources(report, source_dir)
    print(f"{len(layers)} layers, {report.planted} planted files, {len(report.failures)} failures")
    for failure in report.failures:
        print(failure, file=sys.stderr)
    return 1 if report.failures else 0


if __name__ == "__main__":
    sys.exit(main(Path(sys.argv[1]).resolve(), Path(sys.argv[2]).resolve()))
