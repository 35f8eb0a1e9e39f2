#!/usr/bin/env bash
# The embedding example stands in the README exactly as it is compiled, followed by what it prints:
# readme_test.sh SOURCE_DIR EXAMPLE_PROGRAM
set -euo pipefail

source_dir=$1
example=$2

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# block LANGUAGE: the README's first block in that language after the mark of the example.
block()
{
    awk -v fence="\`\`\`$1" '
        /<!-- examples\/embed.c -->/ { marked = 1 }
        inside && /^```$/ { exit }
        inside { print }
        marked && $0 == fence { inside = 1 }' "$source_dir/README.md"
}

block c >"$work/embed.c"
diff -u --label README.md --label examples/embed.c "$work/embed.c" "$source_dir/examples/embed.c"

block text >"$work/expected"
"$example" >"$work/printed"
diff -u --label README.md --label "printed by the example" "$work/expected" "$work/printed"
test -s "$work/printed"
