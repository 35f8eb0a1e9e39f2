#!/usr/bin/env bash
# A database that compares strings as the server does, and the sqlite3 shell that opens it, with the extension and
# without.
#
# extension_test.sh COMMAND EXTENSION
set -euo pipefail

command=$1
extension=${2%.so*}

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"

cat >shop.sql <<'EOF'
CREATE DATABASE Shop COLLATE Latin1_General_CI_AS
GO
CREATE TABLE dbo.Articles (
    Code varchar(20) COLLATE SQL_Latin1_General_CP1_CI_AS NOT NULL PRIMARY KEY,
    Name nvarchar(20) NULL CONSTRAINT UQ_Name UNIQUE,
    Kind char(3) NULL,
    Token nvarchar(10) COLLATE Latin1_General_BIN2 NULL)
GO
CREATE TABLE dbo.Lines (
    Id int NOT NULL PRIMARY KEY,
    Code varchar(20) COLLATE SQL_Latin1_General_CP1_CI_AS NOT NULL REFERENCES dbo.Articles (Code) ON DELETE CASCADE)
EOF
cat >rows.sql <<'EOF'
INSERT dbo.Articles (Code, Name, Kind, Token) VALUES ('c5 ', N'Straße', 'ab', N'x')
INSERT dbo.Articles (Code, Name, Kind, Token) VALUES ('C5', N'other', 'ab', N'x')
INSERT dbo.Articles (Code, Name, Kind, Token) VALUES ('c6', N'STRASSE ', 'ab', N'x')
INSERT dbo.Articles (Code, Name, Kind, Token) VALUES ('ß', N'one', 'ab', N'x')
INSERT dbo.Articles (Code, Name, Kind, Token) VALUES ('ss', N'two', 'ab', N'x')
INSERT dbo.Lines (Id, Code) VALUES (1, 'C5')
EOF

# expect WHAT EXPECTED FOUND
expect()
{
    if [[ $3 != "$2" ]]; then
        printf '%s: %s\nexpected: %s\n' "$1" "$3" "$2" >&2
        exit 1
    fi
}
# shell SQL...: what the shell says of the database, with the extension
shell()
{
    sqlite3 shop.db ".load $extension" "PRAGMA foreign_keys=ON" "PRAGMA recursive_triggers=ON" "$@" 2>&1 || true
}

"$command" import shop.sql -o shop.json --quiet
"$command" create --collations server shop.json shop.db

# The loader: the second and third row are the first one's doubles.
status=0
"$command" load shop.json shop.db rows.sql >/dev/null 2>load.log || status=$?
expect "exit code of the load" 1 "$status"
expect "refused rows" 2 "$(grep -c "duplicate-key: UNIQUE constraint failed" load.log)"
expect "rows" "c5 |ß|ss" "$(shell "SELECT group_concat(Code, '|') FROM (SELECT Code FROM Articles ORDER BY rowid)")"

# The shell.
refused="UNIQUE constraint failed: Articles.Code"
found=$(shell "INSERT INTO Articles (Code) VALUES ('C5')")
[[ $found == *"$refused"* ]] || expect "a double" "$refused" "$found"
expect "another key" "" "$(shell "INSERT INTO Articles (Code, Name, Token) VALUES ('C7', 'x', 'a'), ('C8', 'y', 'A')")"
expect "padded strings" 1 "$(shell "SELECT count(*) FROM Articles WHERE Name = 'strasse   '")"
expect "binary strings" 1 "$(shell "SELECT count(*) FROM Articles WHERE Token = 'A '")"
expect "the database" ok "$(shell "PRAGMA foreign_key_check" "PRAGMA integrity_check")"
expect "a cascade" 0 "$(shell "DELETE FROM Articles WHERE Code = 'C5'" "SELECT count(*) FROM Lines")"
found=$(sqlite3 shop.db "SELECT 1 FROM Articles WHERE Code = 'c6'" 2>&1 || true)
[[ $found == *"no such collation sequence"* ]] || expect "without the extension" "no such collation sequence" "$found"

# The script gives the same definitions.
"$command" sql --collations server shop.json >script.sql
sqlite3 -bail scripted.db ".load $extension" ".read script.sql"
definitions="SELECT sql FROM sqlite_schema WHERE tbl_name NOT LIKE 'tov%' ORDER BY type, name"
expect "the script" "$(sqlite3 shop.db "$definitions")" "$(sqlite3 scripted.db "$definitions")"
