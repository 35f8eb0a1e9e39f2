#!/usr/bin/env bash
# Writes the manual pages of the command and of each of its commands, from what they say of themselves.
#
# make_commands.sh COMMAND FOLDER
set -euo pipefail
export LC_ALL=C SOURCE_DATE_EPOCH=${SOURCE_DATE_EPOCH:-0}

command=$1
folder=$2
mkdir -p "$folder"
rm -f "$folder"/*.1 # of commands that are no more
extra=$(mktemp)
trap 'rm -f "$extra"' EXIT

# page NAME SUMMARY HELP PAGE...: a page with the text of the help that these words ask for; the pages are references.
page()
{
    local name=$1 help=$3
    printf '[name]\n%s \\- %s\n\n[see also]\n' "$name" "$2" >"$extra"
    shift 3
    printf '.BR %s ,\n' "${@:1:$#-1}" | sed 's/(/ (/' >>"$extra"
    printf '.BR %s\n' "${@: -1}" | sed 's/(/ (/' >>"$extra"
    help2man --no-info --section=1 --source="tov_schema" --manual="tov_schema" --include="$extra" --help-option="$help" \
        "$command" | my_tidy "${name^^}" >"$folder/$name.1"
}

# Gives a page its title and a heading for the arguments, and keeps the lines of an indented block apart.
my_tidy()
{
    awk -v title="$1" '
        /^\.TH / { sub(/TOV-SCHEMA[-A-Z]*/, title) }
        /^\.SS "Arguments:"$/ { $0 = ".SH ARGUMENTS" }
        in_block && /^\./ { print ".fi"; in_block = 0 }
        { print }
        /^\.IP$/ { print ".nf"; in_block = 1 }'
}

pages=()
while IFS=$'\t' read -r name summary; do
    [[ $name == help ]] && continue
    page "tov-schema-$name" "${summary,}" "$name --help" 'tov-schema(1)' 'tov_schema_document(7)' 'tov_schema_values(7)'
    pages+=("tov-schema-$name(1)")
done < <("$command" __complete "")
page tov-schema "SQL Server tables in SQLite databases" --help "${pages[@]}" 'tov_schema_document(7)' \
    'tov_schema_values(7)'
