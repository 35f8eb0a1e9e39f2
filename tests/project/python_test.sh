#!/usr/bin/env bash
# Runs the tests of the Python package against the libraries of a build, then installs the package with pip, as a user
# does but for the building of the libraries, and uses what was installed.
#
# python_test.sh PYTHON SOURCE BUILD
set -euo pipefail

python=$1
source=$(realpath "$2")
build=$(realpath "$3")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

cp -r "$source/bindings/python" "$work/package"
cd "$work"

headers=$(printf '%s:' "$build"/include/*)
env PYTHONDONTWRITEBYTECODE=1 PYTHONPATH=package TOV_SCHEMA_LIBRARY="$build/src/libtov_schema_tools.so" \
    TOV_SQLITE_LIBRARY="$build/src/sqlite/libtov_sqlite.so" \
    TOV_HEADERS="${headers%:}" TOV_EXAMPLES="$build/examples" \
    "$python" -m pytest --quiet -p no:cacheprovider package/tests

TOV_SCHEMA_LIBRARY_DIR=$build/src "$python" -m pip install --quiet --no-build-isolation --no-deps --no-index \
    --disable-pip-version-check --root-user-action=ignore --target installed ./package
env -u TOV_SCHEMA_LIBRARY PYTHONPATH=installed "$python" - "$build/examples/shop.bacpac" shop.db <<'END'
import sys
import tov_schema
schema, findings, loaded = tov_schema.convert(*sys.argv[1:])
assert tov_schema.__file__.endswith("installed/tov_schema/__init__.py"), tov_schema.__file__
assert loaded.loaded > 500 and loaded.rejected == 0, loaded
equal, = tov_schema.connect(sys.argv[2], collations="server").execute(
    "SELECT 'Straße' = 'STRASSE ' COLLATE Latin1_General_CI_AS").fetchone()
assert equal == 1
print(f"installed: {len(schema.tables())} tables, {loaded.loaded} rows")
END

# The README's example, in a folder that has the package that it names.
cp "$build/examples/shop.bacpac" Shop.bacpac
rm -f shop.db
# shellcheck disable=SC2016 # fences of Markdown
sed -n '/^<!-- bindings\/python -->$/,/^```$/{/^```/d;/^<!--/d;p}' "$source/README.md" >readme.py
PYTHONPATH=installed "$python" readme.py >printed
grep -Eqx '[0-9]+\.[0-9]{4}' printed || { cat printed >&2 && exit 1; }

version=$(sed -n 's/^ *VERSION \([0-9.]*\).*/\1/p' "$source/CMakeLists.txt" | head -n 1)
grep -qx "version = \"$version\"" "$source/bindings/python/pyproject.toml"
grep -qx "__version__ = \"$version\"" "$source/bindings/python/tov_schema/__init__.py"
