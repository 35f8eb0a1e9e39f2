#!/usr/bin/env bash
# What the README shows is what happens: the embedding example is there exactly as it is compiled, followed by what it
# prints; the commands work; the demonstration prints what docs/tour.md holds and the README quotes.
#
# readme_test.sh SOURCE_DIR example PROGRAM
# readme_test.sh SOURCE_DIR demo COMMAND
# readme_test.sh SOURCE_DIR commands COMMAND BUILD_DIR
# readme_test.sh SOURCE_DIR tour COMMAND BUILD_DIR
# readme_test.sh SOURCE_DIR install COMMAND BUILD_DIR
# readme_test.sh SOURCE_DIR ci COMMAND
set -euo pipefail

source_dir=$1
what=$2
program=$3
build_dir=${4:-}

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# block FILE MARK LANGUAGE [N]: the first (or Nth) block in that language after the mark <!-- MARK -->.
block()
{
    awk -v mark="<!-- $2 -->" -v fence="\`\`\`$3" -v wanted="${4:-1}" '
        $0 == mark { marked = ++count == wanted }
        inside && $0 == "```" { exit }
        inside { print }
        marked && $0 == fence { inside = 1 }' "$source_dir/$1"
}

# same EXPECTED PRINTED: fails with the difference.
same()
{
    diff -u --label "in the documents" --label "printed by the $what" "$1" "$2"
    test -s "$2"
}

check_example()
{
    block docs/embedding.md examples/embed.c c >"$work/embed.c"
    diff -u --label docs/embedding.md --label examples/embed.c "$work/embed.c" "$source_dir/examples/embed.c"
    block docs/embedding.md examples/embed.c text >"$work/expected"
    "$program" >"$work/printed"
    same "$work/expected" "$work/printed"
}

check_demo()
{
    block docs/tour.md scripts/demo text >"$work/expected"
    TOV_SCHEMA=$program "$source_dir/scripts/demo" >"$work/printed"
    same "$work/expected" "$work/printed"
    block README.md "part of scripts/demo" text >"$work/quoted"
    test -s "$work/quoted"
    while read -r line; do
        grep -qxF -- "$line" "$work/printed" || { echo "not printed by the demo: $line" >&2 && exit 1; }
    done <"$work/quoted"
}

# A server's part is played by a script: it takes the query and gives the catalogue of the examples.
make_sqlcmd()
{
    cat >"$work/bin/sqlcmd" <<'STUB'
#!/usr/bin/env bash
while (($#)); do
    case $1 in
        -i) grep -q sqlserver-catalogue "$2" || exit 1 ;;
        -o) cp shop.json "$2" && written=yes ;;
    esac
    shift
done
[[ ${written:-} == yes ]]
STUB
    chmod +x "$work/bin/sqlcmd"
}

# in_examples COMMANDS: as a reader in examples/ would run them.
in_examples()
{
    PATH=$work/bin:$PATH bash -euo pipefail -c "${1//..\/build\/release/"$build_dir"}" \
        >"$work/printed" 2>"$work/log" || { cat "$work/log" >&2 && exit 1; }
}

enter_examples()
{
    mkdir "$work/bin"
    ln -s "$program" "$work/bin/tov-schema"
    cp -r "$source_dir/examples" "$work/examples"
    cd "$work/examples"
}

check_commands()
{
    enter_examples
    make_sqlcmd
    local n script created=0
    for ((n = 1; ; n++)); do
        script=$(block README.md "run in examples" sh $n)
        [[ -n $script ]] || break
        if [[ $script == *"tov-schema create"* ]]; then
            rm -f schema.json shop.db
            created=$((created + 1))
        fi
        in_examples "$script"
        [[ $(sqlite3 shop.db "PRAGMA integrity_check") == ok ]]
        sqlite3 shop.db "SELECT name FROM sqlite_schema WHERE type = 'table' ORDER BY name" >"$work/tables.$n"
        cmp "$work/tables.1" "$work/tables.$n"
    done
    ((created == 3))
    [[ $(grep -vc '^tov_' "$work/tables.1") -eq 12 ]]
    [[ $(sqlite3 shop.db "SELECT Name FROM Countries") == Germany ]]
    check_languages
}

# inserts NAME RUN...: a program of the README inserts a country of that name.
inserts()
{
    local name=$1
    shift
    "$@" || { echo "the README's program fails: $*" >&2 && exit 1; }
    [[ $(sqlite3 shop.db "SELECT count(*) FROM Countries WHERE Name = '$name'") == 1 ]]
}

# The programs of those languages that are here.
check_languages()
{
    block README.md "run with python" python >"$work/insert.py"
    inserts France python3 "$work/insert.py"

    block README.md "run with node" js >"$work/insert.js"
    grep -q DatabaseSync "$work/insert.js"
    if node -e "require('node:sqlite')" 2>/dev/null; then
        inserts Italy node "$work/insert.js"
    else
        echo "not run: the program for Node, which here is missing or has no SQLite"
    fi

    {
        echo "using Mono.Data.Sqlite; class Insert { static void Main() {"
        block README.md "run with mono" cs
        echo "}}"
    } >"$work/insert.cs"
    grep -q SqliteConnection "$work/insert.cs"
    echo "class Empty { static void Main() {} }" >"$work/empty.cs"
    local compile=(mcs -r:System.Data -r:Mono.Data.Sqlite)
    if "${compile[@]}" -out:"$work/empty.exe" "$work/empty.cs" >"$work/log" 2>&1; then
        "${compile[@]}" -out:"$work/insert.exe" "$work/insert.cs"
        inserts Spain mono "$work/insert.exe"
    else
        echo "not run: the program for C#, since Mono or its SQLite is missing"
    fi
}

# What docs/tour.md shows of converting a package; the seconds at the end of a line may differ.
check_tour()
{
    enter_examples
    local n
    for n in 1 2; do
        in_examples "$(block docs/tour.md "run in examples" sh $n)"
        block docs/tour.md printed text $n | sed -E 's/[0-9]+\.[0-9]{2}$/SECONDS/' >"$work/expected"
        sed -E -i 's/[0-9]+\.[0-9]{2}$/SECONDS/' "$work/printed"
        same "$work/expected" "$work/printed"
    done
}

# The command is where the README says, and is installed and packaged as it says; what needs root goes elsewhere.
check_install()
{
    block README.md build sh | grep -q "^build/release/${program#"$build_dir"/} --version$"
    local script
    script=$(sed -e "s#sudo cmake --install build/release#cmake --install build/release --prefix '$work/prefix'#" \
        -e "s#sudo apt install ./\(.*\)#dpkg-deb --extract \1 '$work/root'#" \
        -e "s#build/packages#PACKAGES#; s#build/release#'$build_dir'#; s#PACKAGES#'$work'/packages#" \
        <<<"$(block README.md install sh)")
    [[ $script != *sudo* ]]
    bash -euo pipefail -c "$script" >"$work/log" 2>&1 || { cat "$work/log" >&2 && exit 1; }
    "$work/prefix/bin/tov-schema" --version
    "$work/root/usr/bin/tov-schema" --version
}

# The steps of docs/ci.md pass as they are, and the first of them fails once a script has lost something more.
check_ci()
{
    mkdir "$work/bin"
    ln -s "$program" "$work/bin/tov-schema"
    cp -r "$source_dir/examples" "$work/examples"
    cd "$work/examples"
    local n script steps=0
    export PATH=$work/bin:$PATH
    bash -euo pipefail -c "$(block docs/ci.md "run first in examples" sh)" 2>/dev/null
    for ((n = 1; ; n++, steps++)); do
        script=$(block docs/ci.md "run at each change in examples" sh $n)
        [[ -n $script ]] || break
        bash -euo pipefail -c "$script" >"$work/log" 2>&1 || { cat "$work/log" >&2 && exit 1; }
    done
    ((steps == 3))
    echo "CREATE TABLE dbo.Extra (Id int NOT NULL PRIMARY KEY, Twice AS (Id * 2))" >shop/extra.sql
    script=$(block docs/ci.md "run at each change in examples" sh)
    if bash -euo pipefail -c "$script" >"$work/log" 2>&1; then
        echo "a new finding passes" >&2
        exit 1
    fi
    grep -q "column-computed: dbo.Extra.Twice" "$work/log"
}

case $what in
    example | demo | commands | tour | install | ci) "check_$what" ;;
    *) exit 2 ;;
esac
