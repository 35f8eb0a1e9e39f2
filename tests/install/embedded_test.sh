#!/usr/bin/env bash
# Builds a project that takes the library in with add_subdirectory and compiles with warnings that our own code does
# not avoid: they must not stop its build, and tests and command must not be built for it.
#
# embedded_test.sh SOURCE_DIR WORK_DIR CC CXX
set -euo pipefail

source_dir=$1
work=$2
export CC=$3
export CXX=$4
here=$(cd "$(dirname "$0")" && pwd)

cmake -S "$here/embedded" -B "$work" -G Ninja -DCMAKE_BUILD_TYPE=Debug -DCMAKE_CXX_FLAGS_DEBUG=-O0 \
    -DTOV_SCHEMA_SOURCE_DIR="$source_dir" >"$work.log"
cmake --build "$work" >>"$work.log" 2>&1 || { cat "$work.log" && exit 1; }
if [[ -z $(find "$work" -name consumer -type f) || -n $(find "$work" -name '*_tests' -o -name tov-schema -type f) ]]; then
    echo "the embedding project got no consumer, or more than it asked for" >&2
    exit 1
fi
printed=$("$work/consumer")
[[ $printed == '"Id" integer primary key' ]]
echo "embedded: $work/consumer works"
