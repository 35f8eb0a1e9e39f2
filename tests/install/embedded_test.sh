#!/usr/bin/env bash
# Builds a project that takes the library in with add_subdirectory and compiles with warnings that our own code does
# not avoid: they must not stop its build, and tests and command must not be built for it. A project that fetches an
# archive of the library gets the same targets; they are made of the same sources, so only the plan of its build is
# looked at.
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

tar -czf "$work/tov_schema.tar.gz" --exclude=./build --exclude=./.git --exclude=node_modules -C "$source_dir" .
rm -rf "$work/fetched"
cmake -S "$here/fetched" -B "$work/fetched" -G Ninja -DTOV_SCHEMA_ARCHIVE="$work/tov_schema.tar.gz" >"$work.log" 2>&1 ||
    { cat "$work.log" && exit 1; }
ninja -C "$work/fetched" -t commands consumer >"$work.log"
grep -q 'libtov_schema\.a' "$work.log"
if grep -Eq '_tests|tov-schema' "$work.log"; then
    echo "the fetching project builds more than it asked for" >&2
    exit 1
fi
echo "fetched: consumer would be built of the archive"
