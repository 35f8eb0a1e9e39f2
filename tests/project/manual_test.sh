#!/usr/bin/env bash
# Every command has a manual page, none of the pages makes the formatter complain, and their example compiles.
#
# manual_test.sh COMMAND FOLDER SOURCE CC HEADER_FOLDER...
set -euo pipefail
export LC_ALL=C.UTF-8

command=$1
folder=$2
source=$3
cc=$4
shift 4

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
status=0

{
    echo tov-schema
    "$command" __complete "" | cut -f 1 | sed '/^help$/d; s/^/tov-schema-/'
} | sort >"$work/expected"
(cd "$folder/man1" && printf '%s\n' *.1 | sed 's/\.1$//' | sort) >"$work/found"
if ! diff -u "$work/expected" "$work/found"; then
    echo "the pages are not those of the commands" >&2
    status=1
fi
(($(wc -l <"$work/expected") > 10)) || { echo "the command names no commands" >&2 && status=1; }

for page in "$folder"/man1/*.1 "$folder"/*.[37]; do
    name=$(basename "${page%.*}")
    MANWIDTH=80 man --warnings -l "$page" >"$work/text" 2>"$work/warnings"
    if [[ -s $work/warnings ]]; then
        echo "$page:" >&2
        cat "$work/warnings" >&2
        status=1
    fi
    if ! grep -A 1 '^NAME$' "$work/text" | grep -Eq "^ *$name +- +[a-zA-Z]"; then
        echo "$page: no line of its name and purpose" >&2
        status=1
    fi
done

includes=()
for header_folder in "$@"; do
    includes+=(-I "$header_folder")
done
{
    echo '#include "tov_client.h"'
    echo '#include "tov_host.h"'
    echo '#include "tov_parse_defin.h"'
    echo '#include <stdio.h>'
    echo 'void example(const char *bytes, size_t size);'
    echo 'void example(const char *bytes, size_t size) {'
    # shellcheck disable=SC2016 # the page's own
    sed -n '/^```c$/,/^```$/{/^```/d;p}' "$source/man/tov_schema.md"
    echo '}'
} >"$work/example.c"
grep -q KT_context__alloc "$work/example.c"
"$cc" -std=c99 -Wall -Wextra -Werror -fsyntax-only "${includes[@]}" "$work/example.c" || status=1
exit $status
