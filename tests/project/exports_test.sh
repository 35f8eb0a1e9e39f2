#!/usr/bin/env bash
# Holds three lists of names against each other: what the public headers declare, what cmake/exports.txt lists, and
# what the shared library exports. Looks at its soname too.
#
# exports_test.sh EXPORTS_TXT SHARED_LIBRARY SONAME [--beside OTHER_EXPORTS_TXT] [-I DIR]... HEADER...
# With --beside the headers also declare names of another library, which are in its list.
set -euo pipefail
export LC_ALL=C

exports=$1
library=$2
soname=$3
shift 3

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

includes=()
: >"$work/others"
while [[ $1 == -* ]]; do
    case $1 in
        --beside) grep -v '^#' "$2" | sort -u >"$work/others" ;;
        -I) includes+=(-I "$2") ;;
    esac
    shift 2
done

# Without comments and with the macros expanded, each declaration starts with the attribute that exports it; its name
# is the first word before a parenthesis or a bracket.
for header in "$@"; do
    if [[ $header == *.hpp ]]; then # inline only
        continue
    fi
    includes+=(-I "$(dirname "$header")")
    printf '#include "%s"\n' "$(basename "$header")"
done >"$work/all.c"
cc -E -P "${includes[@]}" "$work/all.c" | tr '\n' ' ' |
    grep -oE '__attribute__\(\(visibility\("default"\)\)\)[^;]*;' |
    sed -E 's/__attribute__\(\(visibility\("default"\)\)\)//; s/^[^([]*[^A-Za-z0-9_]([A-Za-z0-9_]+) *[[(].*/\1/' |
    sort -u | comm -23 - "$work/others" >"$work/declared"

grep -v '^#' "$exports" | grep . >"$work/listed"
sort -u "$work/listed" >"$work/listed_in_order"

# The version of the names is an absolute symbol itself, of type A.
nm -D --defined-only "$library" | awk '$2 != "A" { sub(/@.*/, "", $3); print $3 }' | sort -u >"$work/exported"

status=0
if ! diff -u --label "$exports" --label "in order, each name once" "$work/listed" "$work/listed_in_order"; then
    status=1
fi
if ! diff -u --label "declared in the headers" --label "listed in exports.txt" "$work/declared" \
    "$work/listed_in_order"; then
    status=1
fi
if ! diff -u --label "listed in exports.txt" --label "exported by the library" "$work/listed_in_order" \
    "$work/exported"; then
    status=1
fi
if ! readelf -d "$library" | grep -q "soname: \[$soname\]"; then
    echo "the soname is not $soname" >&2
    status=1
fi
echo "$(wc -l <"$work/exported") names exported, $(wc -l <"$work/declared") declared"
exit $status
