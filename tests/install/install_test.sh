#!/usr/bin/env bash
# Installs the library into a prefix of its own, as its users do, and builds and runs a C99 and a C++17 consumer
# against it, found by CMake and by pkg-config.
#
# install_test.sh FORM SOURCE_DIR WORK_DIR CC CXX [BUILD_DIR]
# FORM is static or shared. BUILD_DIR is a finished build of that form; without one the library is built first.
set -euo pipefail

form=$1
source_dir=$2
work=$3
export CC=$4
export CXX=$5
build=${6:-}
here=$(cd "$(dirname "$0")" && pwd)
prefix=$work/prefix

if [[ -z $build ]]; then
    build=$work/library
    shared=OFF
    if [[ $form == shared ]]; then
        shared=ON
    fi
    # Compiled as the released build is, of which ccache then has every object.
    cmake -S "$source_dir" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release -DTOV_SCHEMA_WERROR=ON \
        -DBUILD_SHARED_LIBS="$shared" -DTOV_SCHEMA_BUILD_TESTS=OFF -DTOV_SCHEMA_BUILD_COMMAND=OFF >"$work.log"
    cmake --build "$build" >>"$work.log" || { cat "$work.log" && exit 1; }
fi

rm -rf "$prefix" "$work/c" "$work/cxx" "$work/tools" "$work/extension"
for component in library development extension; do
    cmake --install "$build" --prefix "$prefix" --component $component >/dev/null
done

# Public headers only (of C++ just those for failure and ownership), and the library in one form only.
if private=$(find "$prefix" -name '*.hpp' ! -name kt_try.hpp ! -name kt_owned.hpp ! -name kt_sqlite_owned.hpp ! -name kt_folded.hpp -o -name '*_private*' | grep .); then
    echo "installed, but private: $private" >&2
    exit 1
fi
case $form in
    static) kept=a gone=so ;;
    shared) kept=so gone=a ;;
esac
for library in libtov_schema libtov_schema_tools; do
    test -f "$(find "$prefix"/lib* -name "$library.$kept")"
    test -z "$(find "$prefix" -name "$library.$gone")"
done

module_prints='"Id" integer primary key'
tools_print=$(printf 'CREATE TABLE "T" (\n    "Id" integer primary key NOT NULL,\n    CONSTRAINT "[Id] constraint violation: out of range: int" CHECK ("Id" BETWEEN -2147483648 AND 2147483647)\n);')

# check EXPECTED PROGRAM
check()
{
    local expected=$1 printed
    shift
    printed=$("$@")
    if [[ $printed != "$expected" ]]; then
        printf '%s prints: %s\nexpected: %s\n' "$1" "$printed" "$expected" >&2
        exit 1
    fi
    echo "$form: $1 works"
}

for language in c cxx; do
    cmake -S "$here/$language" -B "$work/$language" -G Ninja -DCMAKE_BUILD_TYPE=Release \
        -DCMAKE_PREFIX_PATH="$prefix" >/dev/null
    cmake --build "$work/$language" >/dev/null
    check "$module_prints" "$work/$language/consumer"
done

# The tools: from an export to the text of a database.
cmake -S "$here/tools" -B "$work/tools" -G Ninja -DCMAKE_BUILD_TYPE=Release -DCMAKE_PREFIX_PATH="$prefix" >/dev/null
cmake --build "$work/tools" >/dev/null
check "$tools_print" "$work/tools/consumer"

# The SQLite extension: linked, and loaded at run time.
cmake -S "$here/extension" -B "$work/extension" -G Ninja -DCMAKE_BUILD_TYPE=Release -DCMAKE_PREFIX_PATH="$prefix" >/dev/null
cmake --build "$work/extension" >/dev/null
check "equal: 1" "$work/extension/consumer"
extension=$(find "$prefix"/lib* -name libtov_sqlite.so)
check "É" sqlite3 :memory: ".load ${extension%.so}" "SELECT upper('é')"

# The libraries that stand in a directory of their own are found at run time as they are by a packaged program.
libdir=$(dirname "$(find "$prefix" -name 'libtov_schema.*' | head -n 1)")
export PKG_CONFIG_PATH=$libdir/pkgconfig
export LD_LIBRARY_PATH=$libdir
read -r -a flags <<<"$(pkg-config --cflags --libs tov_schema)"
"$CC" -std=c99 -Wall -Wextra -Werror "$here/c/main.c" "${flags[@]}" -o "$work/c/with_pkg_config"
check "$module_prints" "$work/c/with_pkg_config"
"$CXX" -std=c++17 -Wall -Wextra -Werror "$here/cxx/main.cpp" "${flags[@]}" -o "$work/cxx/with_pkg_config"
check "$module_prints" "$work/cxx/with_pkg_config"

read -r -a flags <<<"$(pkg-config --cflags --libs tov_schema_tools)"
"$CC" -std=c99 -Wall -Wextra -Werror "$here/tools/main.c" "${flags[@]}" -o "$work/tools/with_pkg_config"
check "$tools_print" "$work/tools/with_pkg_config"

read -r -a flags <<<"$(pkg-config --cflags --libs tov_sqlite)"
"$CC" -std=c99 -Wall -Wextra -Werror "$here/extension/main.c" "${flags[@]}" -o "$work/extension/with_pkg_config"
check "equal: 1" "$work/extension/with_pkg_config"

# The same, after the tree has moved.
mv "$prefix" "$prefix.moved"
trap 'rm -rf "$prefix.moved"' EXIT
export PKG_CONFIG_PATH=${PKG_CONFIG_PATH/$prefix/$prefix.moved}
export LD_LIBRARY_PATH=${LD_LIBRARY_PATH/$prefix/$prefix.moved}
read -r -a flags <<<"$(pkg-config --cflags --libs tov_schema)"
"$CC" -std=c99 "$here/c/main.c" "${flags[@]}" -o "$work/c/with_moved_tree"
check "$module_prints" "$work/c/with_moved_tree"
