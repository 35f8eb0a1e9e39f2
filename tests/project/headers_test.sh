#!/usr/bin/env bash
# Compiles each public header alone, twice in a row, in every language that it may be used from, with all warnings as
# errors, with each compiler that is here: headers_test.sh HEADER...
set -euo pipefail

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

includes=()
for header in "$@"; do
    includes+=(-I "$(dirname "$header")")
done
warnings=(-Wall -Wextra -Wpedantic -Werror -Wshadow -Wconversion -Wsign-conversion -Wundef -Wvla -Wcast-qual -Wformat=2)
c_warnings=(-Wstrict-prototypes -Wmissing-prototypes -Wold-style-definition)
cxx_warnings=(-Wold-style-cast -Wextra-semi -Wzero-as-null-pointer-constant)

# compile COMPILER OPTION...: the source is what stands in $work/$source.
compile()
{
    "$@" "${warnings[@]}" "${includes[@]}" -fsyntax-only "$work/$source" && return
    echo "not alone: $header with $*" >&2
    failures=$((failures + 1))
}

failures=0
compilers=0
for pair in gcc:g++ clang:clang++; do
    cc=${pair%:*}
    cxx=${pair#*:}
    if ! command -v "$cc" >/dev/null || ! command -v "$cxx" >/dev/null; then
        continue
    fi
    compilers=$((compilers + 1))
    for header in "$@"; do
        name=$(basename "$header")
        printf '#include "%s"\n#include "%s"\nextern int more;\n' "$name" "$name" | tee "$work/alone.c" >"$work/alone.cpp"
        source=alone.cpp
        compile "$cxx" -std=c++20 "${cxx_warnings[@]}"
        if [[ $name == *.hpp ]]; then # C++20 only
            continue
        fi
        compile "$cxx" -std=c++17 "${cxx_warnings[@]}"
        source=alone.c
        compile "$cc" -std=c99 "${c_warnings[@]}"
    done
done
if ((compilers == 0)); then
    echo "neither gcc nor clang is here" >&2
    exit 1
fi
echo "$# headers, $compilers compilers, $failures failures"
((failures == 0))
