"""The structures that Python fills are laid out as the C headers say. TOV_HEADERS lists the folders of these."""
import ctypes
import os
import subprocess

import pytest

from tov_schema import _library, _schema

STRUCTURES = {
    "tov_host_list": _library.HostList,
    "tov_host_options": _library.HostOptions,
    "tov_host_file": _library.HostFile,
    "tov_host_row_part": _library.RowPart,
    "tov_client_create_options": _library.CreateOptions,
    "tov_client_load_options": _library.LoadOptions,
    "tov_client_unload_options": _library.UnloadOptions,
    "tov_client_violation_kind": _library.ViolationKind,
    "tov_client_violation": _library.Violation,
    "tov_client_check_options": _library.CheckOptions,
    "tov_client_compare_options": _library.CompareOptions,
    "tov_client_migrate_options": _library.MigrateOptions,
    "tov_client_report_options": _library.ReportOptions,
}
NUMBERS = {
    **{f"TOV_HOST_SOURCE_{word.upper()}": number for word, number in _schema._KINDS.items()},
    **{f"TOV_CLIENT_RULES_{word.upper()}": number for word, number in _schema._RULES.items()},
    **{f"TOV_CLIENT_INDEXES_{word.upper()}": number for word, number in _schema._INDEXES.items()},
    **{f"TOV_CLIENT_COLLATIONS_{word.upper()}": number for word, number in _schema._COLLATIONS.items()},
    "KT_ERR_SQLITE(0) >> 32": _library._SQLITE_DOMAIN,
    "KT_ERR_UNEXPECTED_VALUE": _library._UNEXPECTED_VALUE,
}


@pytest.fixture(scope="module")
def layouts(tmp_path_factory):
    """What a C program says: NAME SIZE, STRUCTURE.MEMBER OFFSET, and NUMBER VALUE."""
    folder = tmp_path_factory.mktemp("layout")
    headers = ("tov_check", "tov_client", "tov_host", "tov_migrate", "tov_report", "tov_row_parts")
    lines = [*(f'#include "{name}.h"' for name in headers), "#include <stdio.h>", "int main(void) {"]
    for name, structure in STRUCTURES.items():
        lines.append(f'printf("{name}\\t%zu\\n", sizeof({name}));')
        lines += [f'printf("{name}.{member}\\t%zu\\n", offsetof({name}, {member}));' for member, *_ in structure._fields_]
    lines += [f'printf("%s\\t%llu\\n", "{name}", (unsigned long long)({name}));' for name in NUMBERS]
    (folder / "layout.c").write_text("\n".join(lines + ["return 0;", "}"]))
    includes = [f"-I{header_folder}" for header_folder in os.environ["TOV_HEADERS"].split(":")]
    subprocess.run(["cc", *includes, "layout.c", "-o", "layout"], cwd=folder, check=True)
    printed = subprocess.run([folder / "layout"], capture_output=True, text=True, check=True).stdout
    return dict(line.split("\t") for line in printed.splitlines())


@pytest.mark.parametrize("name", STRUCTURES)
def test_a_structure(layouts, name):
    structure = STRUCTURES[name]
    assert int(layouts[name]) == ctypes.sizeof(structure), "a member may be missing"
    for member, *_ in structure._fields_:
        assert int(layouts[f"{name}.{member}"]) == getattr(structure, member).offset, member


@pytest.mark.parametrize("name", NUMBERS)
def test_a_number(layouts, name):
    assert int(layouts[name]) == NUMBERS[name]
