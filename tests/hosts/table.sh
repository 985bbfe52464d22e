#!/bin/bash
# table.sh SOURCE_DIR - every row of internals/hosts.md names a test, every test that it names is there, and
# it names every test of tests/hosts.
set -u
page=$1/internals/hosts.md
failures=0
fail() {
    printf 'FAILED  %s\n' "$*"
    failures=$((failures + 1))
}

rows=$(grep -E '^\| ' "$page" | grep -vE '^\| Host \|')
[ "$(grep -c . <<< "$rows")" -ge 20 ] || fail "cannot read the rows of $page"
while IFS= read -r row; do
    [[ $row =~ \`([a-z.]+)\.([A-Za-z]+):\ ([A-Za-z]+)\.([A-Za-z0-9]+)\`\ \|$ ]] ||
        { fail "no test in: $row"; continue; }
    file=$1/tests/${BASH_REMATCH[1]//.//}/${BASH_REMATCH[2]}Test.cpp
    if [ ! -e "$file" ]; then
        fail "no file $file"
    elif ! tr -d '\n' < "$file" | grep -qE "TEST(_F|_P)?\(${BASH_REMATCH[3]}, *${BASH_REMATCH[4]}\)"; then
        fail "no test ${BASH_REMATCH[3]}.${BASH_REMATCH[4]} in $file"
    fi
done <<< "$rows"

while read -r name; do
    grep -qF ": $name\`" "$page" || fail "internals/hosts.md does not name $name"
done < <(cat "$1"/tests/hosts/*Test.cpp | tr -d '\n' | grep -oE 'TEST(_F|_P)?\([A-Za-z]+, *[A-Za-z0-9_]+\)' |
    sed -E 's/.*\(([A-Za-z]+), *([A-Za-z0-9_]+)\)/\1.\2/' | grep -v DISABLED_)

printf '%d rows\n' "$(grep -c . <<< "$rows")"
[ $failures = 0 ]
