#!/usr/bin/env bash
# Builds and runs the program of a project that takes the library in, with add_subdirectory or with FetchContent. It
# compiles with warnings that our own code does not avoid: they must not stop its build, and tests and command must not
# be built for it.
#
# embedded_test.sh SOURCE_DIR WORK_DIR CC CXX
set -euo pipefail

source_dir=$1
work=$2
export CC=$3
export CXX=$4
here=$(cd "$(dirname "$0")" && pwd)

mkdir -p "$work"

# check NAME ARGUMENT...: configures the project tests/install/NAME, builds it and runs its program.
check()
{
    local build=$work/$1 name=$1
    shift
    rm -rf "$build"
    { cmake -S "$here/$name" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Debug -DCMAKE_CXX_FLAGS_DEBUG=-O0 "$@" &&
        cmake --build "$build"; } >"$work.log" 2>&1 || { cat "$work.log" >&2 && exit 1; }
    if [[ -z $(find "$build" -name consumer -type f) || -n $(find "$build" -name '*_tests' -o -name tov-schema -type f) ]]; then
        echo "the $name project got no consumer, or more than it asked for" >&2
        exit 1
    fi
    [[ $("$build/consumer") == '"Id" integer primary key' ]]
    echo "$name: $build/consumer works"
}

check embedded -DTOV_SCHEMA_SOURCE_DIR="$source_dir"
tar -czf "$work/tov_schema.tar.gz" --exclude=./build --exclude=./.git --exclude=node_modules -C "$source_dir" .
check fetched -DTOV_SCHEMA_ARCHIVE="$work/tov_schema.tar.gz"
