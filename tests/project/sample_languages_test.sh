#!/usr/bin/env bash
# The samples in other languages make the database that the command makes, and say what is wrong with a file.
#
# sample_languages_test.sh node SOURCE LIBRARIES COMMAND NODE
# sample_languages_test.sh csharp SOURCE LIBRARIES COMMAND MCS MONO
set -euo pipefail

language=$1
source=$2
export TOV_SCHEMA_LIBRARIES=$3 LD_LIBRARY_PATH=$3
command=$4
shift 4

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

case $language in
    node) sample=("$1" "$source/examples/node/sample.js") ;;
    csharp)
        "$1" -warnaserror+ -out:"$work/sample.exe" "$source/examples/csharp/Sample.cs"
        sample=("$2" "$work/sample.exe")
        ;;
    *) exit 2 ;;
esac

"${sample[@]}" "$source/examples/shop.dacpac" "$work/sample.db" >"$work/printed"
"$command" import "$source/examples/shop.dacpac" -o "$work/schema.json" --quiet
"$command" create "$work/schema.json" "$work/command.db" 2>"$work/log" || { cat "$work/log" >&2 && exit 1; }

for database in sample command; do
    sqlite3 "$work/$database.db" .schema >"$work/$database.sql"
done
cmp "$work/sample.sql" "$work/command.sql"
# Names of tables in the order of the schema; the record is not of it.
sort "$work/printed" >"$work/found"
sqlite3 "$work/command.db" \
    "SELECT name FROM sqlite_schema WHERE type = 'table' AND name NOT GLOB 'tov_*'" | sort >"$work/expected"
(($(wc -l <"$work/expected") == 12))
diff -u "$work/expected" "$work/found"

echo "not a package" >"$work/wrong"
if "${sample[@]}" "$work/wrong" "$work/none.db" >"$work/printed" 2>"$work/error"; then
    echo "a file that is not a source is taken" >&2
    exit 1
fi
[[ -s $work/error && ! -s $work/printed && ! -e $work/none.db ]]
