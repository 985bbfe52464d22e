#!/bin/bash
# agreement.sh SOURCE_DIR - README and docs say what the sources say:
#
#   - a page for each export, with the same sections, the declaration of tarn.h to the letter, its first
#     sentence, every parameter, and examples that call it, in C and by its macro of tarn.nsh;
#   - sizes: every "TARN_X (n)" has the value of tarn.h, and a page that has a buffer names its constant;
#   - the messages of the address check stand on its page as they stand in the source;
#   - the version is that of CMakeLists.txt wherever the kit is named, and CHANGELOG has it;
#   - the declarations for other languages name the seven functions, those for Inno Setup with as many
#     parameters and the same results;
#   - macros of tarn.nsh, commands of dev, files and folders that the text names are there;
#   - links lead to files, and to headings where they name one.
set -u
cd "$1" || exit 2
failures=0

fail() {
    printf 'FAILED  %s\n' "$*"
    failures=$((failures + 1))
}

# Text outside the fences of code blocks.
prose() { awk '/^```/ { inside = !inside; next } !inside' "$1"; }

# The lines of one line each, spaces single, marks of Markdown gone.
flat() { tr '\n' ' ' | tr -s ' ' | tr -d '`*'; }

# prototype NAME - from tarn.h, as it stands.
prototype() {
    awk -v name="$1" '$0 ~ "^int " name "\\(" { on = 1 } on { print } on && /;$/ { exit }' include/tarn.h
}

# comment NAME - the comment before the prototype, without its stars.
comment() {
    awk -v name="$1" '
        /^\/\*/ { text = "" }
        { line = $0; sub(/^ ?\/?\*+\/? ?/, "", line); if (line ~ /^[^#]/ || line == "") text = text line "\n" }
        $0 ~ "^int " name "\\(" { printf "%s", text; exit }' include/tarn.h
}

# macro_of NAME - the macro of tarn.nsh that calls the export.
macro_of() {
    local body
    body=$(awk -v name="$1" '
        /^!macro / { macro = $2 } /^!macroend/ { macro = "" }
        $1 == "!insertmacro" && $2 == "_Tarn_Call" && $3 == name { print macro; exit }' nsis/tarn.nsh)
    awk -v body="$body" '
        /^!macro / { macro = $2 } /^!macroend/ { macro = "" }
        body != "" && $1 == "${CallArtificialFunction}" && $2 == body { print macro }' nsis/tarn.nsh
}

# example PAGE KIND - the code block of that kind in the page's examples.
example() {
    sed -n '/^## Example/,$p' "$1" | sed -n "/^\`\`\`$2\$/,/^\`\`\`\$/p"
}

sections='Declaration
Parameters
Result
Buffers
Errors
Threads
Worth knowing
Example in C
Example in NSIS'

exports=$(sed -n 's/^ *\([A-Za-z_]*\)$/\1/p' frame/tarn.def | grep -vx EXPORTS)
[ "$(wc -w <<< "$exports")" = 7 ] || fail "frame/tarn.def: seven exports expected, found: $exports"

for name in $exports; do
    page=docs/$name.md
    [ -f "$page" ] || { fail "there is no $page"; continue; }
    declared=$(prototype "$name")
    [ -n "$declared" ] || { fail "include/tarn.h does not declare $name"; continue; }

    [ "$(head -n 1 "$page")" = "# $name" ] || fail "$page: the title is not the function's name"
    [ "$(sed -n 's/^## //p' "$page")" = "$sections" ] || fail "$page: the sections are not the usual ones"
    grep -qF "($page)" README.md || fail "README.md has no link to $page"

    first_block=$(awk '/^```/ { if (inside) exit; inside = 1; next } inside' "$page")
    [ "$first_block" = "$declared" ] || fail "$page: the declaration is not that of include/tarn.h"

    sentence=$(comment "$name" | flat | sed 's/^ *//; s/\([.:]\) .*/\1/')
    [ ${#sentence} -gt 20 ] || fail "include/tarn.h: no first sentence for $name"
    prose "$page" | flat | grep -qF -- "${sentence%[.:]}" ||
        fail "$page does not say what include/tarn.h begins with: $sentence"

    parameters=$(tr '\n' ' ' <<< "$declared" | sed 's/^[^(]*(//; s/).*//; s/\bvoid\b//' | tr ',' '\n' |
        sed 's/^.*[ *]\([A-Za-z]\+\) *$/\1/' | grep '[a-z]')
    # shellcheck disable=SC2016 # these are Markdown's back quotes
    documented=$(sed -n '/^## Parameters/,/^## Result/s/^| `\([A-Za-z]*\)` .*/\1/p' "$page")
    [ "$parameters" = "$documented" ] || fail "$page: the parameters are not those of include/tarn.h"

    example "$page" c | grep -qE "\b$name\(" || fail "$page: no example in C calls $name"
    macro=$(macro_of "$name")
    if [ -z "$macro" ]; then
        fail "nsis/tarn.nsh has no macro that calls $name"
    else
        example "$page" nsis | grep -qF "\${$macro}" || fail "$page: no example in NSIS calls \${$macro}"
    fi
done

# Declarations
# name, number of parameters and result for each function that tarn.h declares
header_functions() {
    sed -e '/^ *\/\*/,/\*\//d' include/tarn.h | tr '\n' ' ' |
        grep -o '[a-z]* [A-Za-z_]*([^)]*);' | sed 's/(void)/()/' |
        awk '{ name = $2; sub(/\(.*/, "", name); arguments = $0
               sub(/^[^(]*\(/, "", arguments); sub(/\);$/, "", arguments)
               n = arguments ~ /^ *$/ ? 0 : split(arguments, list, ",")
               print name, n, $1 }'
}

# The same of the external functions of a Pascal script.
inno_functions() {
    tr '\n' ' ' < "$1" | grep -o "function [^;]*\(([^)]*)\)\?[^;]*; *external '[^']*'" |
        awk -v quote="'" '{
            name = $0; sub(/^.*external ./, "", name); sub(/@.*/, "", name)
            n = 0
            if (match($0, /\([^)]*\)/)) {
                groups = split(substr($0, RSTART + 1, RLENGTH - 2), list, ";")
                for (i = 1; i <= groups; i++) n += gsub(/,/, ",", list[i]) + 1
            }
            print name, n, ($0 ~ /: Integer; *external/ ? "int" : "?")
        }'
}
while IFS= read -r line; do
    header_functions | grep -qxF "$line" ||
        fail "samples/inno7/tarn.iss: not in include/tarn.h like this (name, parameters, result): $line"
done < <(inno_functions samples/inno7/tarn.iss)
[ "$(inno_functions samples/inno7/tarn.iss | sort -u | grep -c '')" = 7 ] ||
    fail 'samples/inno7/tarn.iss does not declare the seven functions'
for file in samples/go/tarn.go samples/rust/tarn.rs samples/node/tarn.js samples/csharp/Tarn.cs samples/delphi/Tarn.pas; do
    for name in $exports; do
        grep -qw "$name" "$file" || fail "$file lacks $name"
    done
done

# Sizes
while read -r name value; do
    grep -rhoE "\`?$name\`? \([-0-9]+\)" README.md docs | grep -vF "($value)" &&
        fail "$name is $value in include/tarn.h"
done < <(sed -n 's/^#define \(TARN_[A-Z_]*\) (\{0,1\}\([-0-9]\{1,\}\))\{0,1\}$/\1 \2/p' include/tarn.h)
for pair in VerifyEmail:TARN_EMAIL_MESSAGE_SIZE DoFileOpenDialog:TARN_OPEN_PATH_SIZE; do
    sed -n '/^## Buffers/,/^## Errors/p' "docs/${pair%:*}.md" | grep -qE "\`${pair#*:}\` \([0-9]+\)" ||
        fail "docs/${pair%:*}.md: Buffers does not name ${pair#*:} and its value"
done
while read -r name; do
    grep -qw "$name" include/tarn.h || fail "include/tarn.h has no $name"
done < <(grep -rhoE '\bTARN_(EMAIL|NO|OPEN)[A-Z_]*' README.md docs nsis | sort -u)

# Messages
messages=$(grep -oE '"([^"\\]|\\")*"' validate/EmailSyntax.cpp | grep ' ' | sed 's/^"//; s/"$//; s/\\"/"/g')
[ "$(grep -c . <<< "$messages")" -ge 6 ] || fail 'validate/EmailSyntax.cpp: the messages are not found'
while IFS= read -r message; do
    grep -qF "| \`$message\` |" docs/VerifyEmail.md || fail "docs/VerifyEmail.md lacks the message '$message'"
done <<< "$messages"

# Version
version=$(sed -n 's/^project(tarn VERSION \([0-9.]*\).*/\1/p' CMakeLists.txt)
[ -n "$version" ] || fail 'CMakeLists.txt: no version'
grep -qxF "## $version" CHANGELOG.md || fail "CHANGELOG.md has no section $version"
grep -hoE 'tarn-[0-9][0-9.]*-(selftest-)?win64' README.md kit/README.md CONTRIBUTING.md docs/*.md internals/*.md | grep -vxE "tarn-$version-(selftest-)?win64" &&
    fail "the version is $version"

# Macros and commands
while read -r macro; do
    grep -hq "^!define $macro " nsis/*.nsh || fail "nsis has no \${$macro}"
done < <(grep -rhoE '\$\{Tarn_[A-Za-z]+\}' README.md kit/README.md CONTRIBUTING.md docs | tr -d "\${}" | sort -u)
while read -r command; do
    [ "$command" = help ] || [ -f "tools/commands/$command.sh" ] || fail "there is no ./dev $command"
done < <(grep -hoE '\./dev [a-z]+' README.md CONTRIBUTING.md CHANGELOG.md docs/*.md internals/*.md | cut -d' ' -f2 | sort -u)
for command in tools/commands/*.sh; do
    command=${command##*/}
    command=${command%.sh}
    grep -q "\`\./dev $command" CONTRIBUTING.md || fail "CONTRIBUTING.md does not name ./dev $command"
    bash dev help | grep -q "^  $command " || fail "./dev help does not name $command"
done

# Files and folders of the source tree, by their first part
top=$(git ls-files 2> /dev/null | sed -n 's/\/.*//p' | sort -u | grep -v '^\.' | paste -sd'|')
: "${top:=docs|include|frame|framework|runtime|internals|tools|install|ui|validate|nsis|tests|samples|cmake}"
while IFS=: read -r page path; do
    [ -e "$path" ] || fail "$page names $path, which is not there"
done < <(for page in README.md CONTRIBUTING.md CHANGELOG.md docs/*.md internals/*.md; do
    prose "$page" | grep -oE "\`($top)/[A-Za-z0-9_./-]*\`" | tr -d '`' | sort -u | sed "s|^|$page:|"
done)

# anchors PAGE - the headings as links name them.
anchors() {
    prose "$1" | sed -n 's/^##* //p' | tr '[:upper:]' '[:lower:]' | sed 's/[^a-z0-9 _-]//g; s/ /-/g'
}

# Links
for page in README.md CONTRIBUTING.md CHANGELOG.md SECURITY.md THIRD-PARTY.md kit/README.md docs/*.md \
    internals/*.md; do
    while read -r link; do
        case $link in
        https://*) continue ;;
        esac
        file=${link%%#*}
        file=${file:+$(dirname "$page")/$file}
        file=${file:-$page}
        if [ ! -e "$file" ]; then
            fail "$page: the link to $link leads nowhere"
        elif [[ $link == *'#'* ]] && ! anchors "$file" | grep -qxF "${link#*#}"; then
            fail "$page: $file has no heading ${link#*#}"
        fi
    done < <(prose "$page" | grep -oE '\]\([^) ]+\)' | sed 's/^](//; s/)$//')
done

# Every page can be found from README or from a page that README leads to.
for page in docs/*.md internals/*.md; do
    grep -qF "(${page})" README.md || grep -qF "(${page#*/})" "${page%/*}"/*.md || fail "no page leads to $page"
done

[ $failures = 0 ] && echo 'README, docs and sources agree.'
