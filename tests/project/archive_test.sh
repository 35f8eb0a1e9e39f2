#!/usr/bin/env bash
# Looks at the static library as a program that links it sees it: every C name that it defines has one of the library's
# prefixes, except in the sources that are there for plain names; these names are weak. Then it links and runs a
# program with functions of its own under all of these names.
#
# archive_test.sh LIBRARY CC CXX HEADER_FOLDER...
set -euo pipefail
export LC_ALL=C

library=$1
cc=$2
cxx=$3
shift 3

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# MEMBER KIND NAME of each global that is defined; names of C++ start with _Z.
nm -g --defined-only -A "$library" | sed -E 's/^[^:]*:([^:]*):[0-9a-f]+ (.) /\1 \2 /' |
    awk '$3 !~ /^(_Z|DW\.ref\.|_?[Kk][Tt]_|_?tov_)/' >"$work/plain"

status=0
if grep -v '^[^ ]*_plain_names\.cpp\.o [WV] ' "$work/plain"; then
    echo "these names have no prefix: they may be a program's own" >&2
    status=1
fi
if ! grep -q ' get_token$' "$work/plain"; then
    echo "the plain names are gone" >&2
    status=1
fi

folder=$(dirname "${BASH_SOURCE[0]}")
includes=()
for header_folder in "$@"; do
    includes+=(-I "$header_folder")
done
expect()
{
    local expected=$1
    shift
    "$cc" "${includes[@]}" "$@" -c "$folder/own_names.c" -o "$work/own_names.o"
    "$cxx" "$work/own_names.o" "$library" -lsqlite3 -o "$work/own_names"
    local said
    said=$("$work/own_names") || status=1
    if [[ $said != "$expected" ]]; then
        printf 'expected: %s\nsaid: %s\n' "$expected" "$said" >&2
        status=1
    fi
}
expect "5 1.5 (date('now'))"
expect $'5 1.5 (date(\'now\'))\n116' -DWITH_PLAIN_TABLE
exit $status
