#!/usr/bin/env bash
# What is built is hardened: hardening_test.sh FILE..., programs and shared libraries; hardening_test.sh --standalone
# FILE..., programs that need no shared library.
set -euo pipefail

failures=0
standalone=no
if [[ ${1:-} == --standalone ]]; then
    standalone=yes
    shift
fi

# require FILE WHAT TEXT PATTERN: fails unless a line of the text matches.
require()
{
    grep -Eq -- "$4" <<<"$3" || { echo "$1: $2" >&2 && failures=$((failures + 1)); }
}

for file in "$@"; do
    name=$(basename "$file")
    headers=$(readelf -hlW "$file")
    dynamic=$(readelf -dW "$file")
    imports=$(readelf -W --dyn-syms "$file" | awk '$7 == "UND" { print $8 }')
    require "$name" "is not position-independent" "$headers" '^ *Type: +DYN'
    require "$name" "has no part that becomes read-only" "$headers" '^ *GNU_RELRO '
    require "$name" "has a stack that can be executed" "$headers" '^ *GNU_STACK .* RW +0x'
    if [[ $standalone == yes ]]; then
        ! grep -Eq '\(NEEDED\)|INTERP' <<<"$dynamic$headers" || { echo "$name: needs a shared library" >&2 && exit 1; }
        continue # nothing is bound when it runs, and names of guards are not left in it
    fi
    require "$name" "binds its symbols late" "$dynamic" '\(FLAGS\).*BIND_NOW|\(FLAGS_1\).*NOW'
    require "$name" "has no guard in stack frames" "$imports" '^__stack_chk_fail'
    [[ $name == libtov_sqlite.* ]] && continue # calls none that has a checked form, with a buffer whose size is known
    require "$name" "calls no checked form of a function" "$imports" '^__(mem|str|v?s|f|p|r)[a-z_]*_chk(@|$)'
done
(($# > 0)) && exit $((failures > 0))
