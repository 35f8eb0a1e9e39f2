#!/usr/bin/env bash
# What the README shows is what happens: the embedding example stands there exactly as it is compiled, followed by
# what it prints, and the demonstration as it runs.
#
# readme_test.sh SOURCE_DIR example PROGRAM
# readme_test.sh SOURCE_DIR demo COMMAND
set -euo pipefail

source_dir=$1
what=$2
program=$3

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# block MARK LANGUAGE: the first block in that language after the mark <!-- MARK -->.
block()
{
    awk -v mark="<!-- $1 -->" -v fence="\`\`\`$2" '
        $0 == mark { marked = 1 }
        inside && $0 == "```" { exit }
        inside { print }
        marked && $0 == fence { inside = 1 }' "$source_dir/README.md"
}

case $what in
    example)
        block examples/embed.c c >"$work/embed.c"
        diff -u --label README.md --label examples/embed.c "$work/embed.c" "$source_dir/examples/embed.c"
        block examples/embed.c text >"$work/expected"
        "$program" >"$work/printed"
        ;;
    demo)
        block scripts/demo text >"$work/expected"
        TOV_SCHEMA=$program "$source_dir/scripts/demo" >"$work/printed"
        ;;
esac
diff -u --label README.md --label "printed by the $what" "$work/expected" "$work/printed"
test -s "$work/printed"
