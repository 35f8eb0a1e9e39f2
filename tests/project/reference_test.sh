#!/usr/bin/env bash
# The API reference is made without a warning and has every exported name.
#
# reference_test.sh DOXYGEN FOLDER EXPORTS...; the folder has a Doxyfile, and the reference goes into it.
set -euo pipefail

doxygen=$1
folder=$2
shift 2

rm -rf "$folder/html"
"$doxygen" "$folder/Doxyfile"
cat "$folder"/html/*_8h.html >"$folder/pages"
missing=0
while read -r name; do
    shown=${name/#tov_sqlite3/sqlite3} # the header gives these three names a prefix for the linker
    grep -Eq ">$shown<|[ *]$name \(" "$folder/pages" || { echo "not in the reference: $name" >&2 && missing=1; }
done < <(cat "$@" | grep -v '^#')
rm "$folder/pages"
exit $missing
