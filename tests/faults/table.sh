#!/bin/bash
# table.sh SOURCE_DIR DLL - internals/faults.md names every function that the DLL imports, and no
# other; every test that it names is there, and lets fail what its row is about.
set -u
page=$1/internals/faults.md
failures=0
fail() {
    printf 'FAILED  %s\n' "$*"
    failures=$((failures + 1))
}

# But for what Clang calls where GCC writes the copying out, and nobody can let fail.
imports=$(perl "$1/tests/support/portable_executable.pl" imports "$2" | grep -vxE 'memcpy|memset' | sort -u)
[ "$(grep -c . <<< "$imports")" -gt 50 ] || fail "cannot read the imports of $2"

# In the first column of a table, or in a list; what is loaded at run time is found in the sources.
named=$(awk -F'|' '
    /^## / { list = /cannot fail|run-time code/; text = 0 }
    list && NF == 1 && /^`/ { n = split($0, words, " "); for (i = 1; i <= n; i++) print words[i] }
    /^\| `/ { split($2, words, " "); print words[1] }' "$page" | tr -d '`' | sort)
run_time=$(grep -rhoE 'GetProcAddress\([^"]*"[^"]+"' "$1"/{frame,framework,install,ui,validate} |
    sed 's/.*"\(.*\)"/\1/' | sort -u)
[ -n "$run_time" ] || fail 'no function is loaded at run time any more'

while read -r name; do
    grep -qx -- "$name" <<< "$named" || fail "internals/faults.md does not say what happens when $name fails"
done <<< "$imports
$run_time"
while read -r name; do
    grep -qx -- "$name" <<< "$imports
$run_time" || fail "internals/faults.md names $name, which the library does not call"
done <<< "$named"
twice=$(uniq -d <<< "$named")
[ -z "$twice" ] || fail "internals/faults.md has two rows for $twice"

# Functions that no test lets fail, with the reason.
declare -A without=(
    [FreeLibraryAndExitThread]='it does not return: whatever stood in for it would have to do its work'
)
for name in "${!without[@]}"; do
    printf 'not let fail: %s, since %s\n' "$name" "${without[$name]}"
done

# A test's file and what it includes of tests/support.
sources_of() {
    local include
    echo "$2"
    while read -r include; do
        ls "$1/$include.h" "$1/$include.cpp" 2> /dev/null
    done < <(sed -n 's|^#include "\(tests/support/[A-Za-z0-9]*\)\.h"|\1|p' "$2")
}

# Every row of a table has a test; program: Suite.Test.
rows=$(grep -E '^\| (`|–)' "$page")
while IFS= read -r row; do
    [[ $row =~ \`([a-z]+)\.([A-Za-z]+):\ ([A-Za-z]+)\.([A-Za-z0-9]+)\`\ \|$ ]] ||
        { fail "no test in: $row"; continue; }
    file=$1/tests/${BASH_REMATCH[1]}/${BASH_REMATCH[2]}Test.cpp
    if [ ! -e "$file" ]; then
        fail "no file $file"
    elif ! tr -d '\n' < "$file" |
        grep -qE "TEST(_F|_P)?\(${BASH_REMATCH[3]}, *${BASH_REMATCH[4]}\)"; then
        fail "no test ${BASH_REMATCH[3]}.${BASH_REMATCH[4]} in $file"
    else
        mapfile -t sources < <(sources_of "$1" "$file")
        # As a text of the program: the name of the import that it replaces.
        while read -r name; do
            grep -qx -- "$name" <<< "$named" || continue
            if grep -qF "\"$name\"" "${sources[@]}"; then
                [ -z "${without[$name]:-}" ] || fail "$name is let fail in $file after all"
            elif [ -z "${without[$name]:-}" ]; then
                fail "$name does not occur in $file"
            fi
        done < <(cut -d'|' -f2 <<< "$row" | tr '`' '\n')
    fi
done <<< "$rows"

printf '%d functions, %d rows\n' "$(grep -c . <<< "$named")" "$(grep -c . <<< "$rows")"
[ $failures = 0 ]
