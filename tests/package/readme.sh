#!/bin/bash
# The kit's README and its pages, held against the unpacked kit alone: every block of README is compiled or
# run as it stands there, in the kit's folder, and no link leads out of the kit. By the word behind the
# fence:
#
#   c, nsis, inno, cmake NAME        saved under that name
#   wix, sql FILE                    stands like this in that file of the kit
#   cmd                              commands of Windows, run by what stands in for them here
#   sh                               commands of another system, run as they are
#   output                           what the last command before it wrote
#   text                             not run
# shellcheck source=tests/package/lib.sh
. "$(dirname "$0")/lib.sh"
need_tools unzip cmake ninja makensis gdb x86_64-w64-mingw32-gcc
unpack_kit
# shellcheck source=tests/support/compiler_cache.sh
. "$source_dir/tests/support/compiler_cache.sh"
cd "$kit" || exit 1

# ---- The commands of Windows

# One line, with slashes for backslashes and without the quotation marks.
command_of_windows() {
    local words=() word
    mapfile -t words < <(xargs -n1 printf '%s\n' <<< "${1//\\//}")
    case ${words[0]} in
    gcc) x86_64-w64-mingw32-gcc -Wall -Wextra -Wpedantic -Werror "${words[@]:1}" ;;
    makensis) makensis -V2 -WX "${words[@]:1}" ;;
    gdb) gdb -nx "${words[@]:1}" ;;
    cmake)
        case " ${words[*]} " in
        *' -S '*)
            cmake -G Ninja -DCMAKE_SYSTEM_NAME=Windows -DCMAKE_C_COMPILER=x86_64-w64-mingw32-gcc \
                "${words[@]:1}"
            ;;
        *) cmake "${words[@]:1}" ;;
        esac
        ;;
    cl) # Not here: what it is given must be.
        for word in "${words[@]:1}"; do
            case $word in
            /I | /link) ;;
            /out:*) [ -d "$(dirname "${word#/out:}")" ] || return ;;
            *) [ -e "$word" ] || { echo "there is no $word"; return 1; } ;;
            esac
        done
        ;;
    iscc) named_by_inno "${words[1]}" ;;
    mkdir) mkdir "${words[@]:1}" ;;
    bin/*) run 0 "${words[0]}.exe" "${words[@]:1}" && cat out ;;
    *)
        echo "nothing here stands in for ${words[0]}"
        return 1
        ;;
    esac
}

# What the compiler of Inno Setup, which is a 32-bit program, would look for; ./dev installers runs it.
named_by_inno() {
    local file
    while IFS= read -r file; do
        [ -e "${file//\\//}" ] || { echo "there is no $file"; return 1; }
    done < <(sed -n -e 's/^Source: "\([^"]*\)".*/\1/p' -e 's/^#include "\(.*\)"$/\1/p' "$1"; echo "$1")
}

stands_in() { [[ "$(cat "$2")" == *"$(cat "$1")"* ]] || { echo "not in $2"; return 1; }; }

# ---- The blocks

mkdir "$scratch/blocks"
awk -v to="$scratch/blocks" '
    /^```/ && !inside { inside = 1; kind = $0; sub(/^```/, "", kind); n++
                        file = sprintf("%s/%03d", to, n); print n "\t" FNR "\t" kind > (to "/index"); next }
    /^```/ { inside = 0; close(file); next }
    inside { print > file }' README.md
said=$scratch/said
ran=0
while IFS=$'\t' read -r number line kind; do
    block=$(printf '%s/blocks/%03d' "$scratch" "$number")
    name=${kind#* }
    case $kind in
    'wix '* | 'sql '*) check "line $line: $name" stands_in "$block" "$name" ;;
    'c '* | 'nsis '* | 'inno '* | 'cmake '*) check "line $line: $name" cp "$block" "$name" ;;
    cmd | sh)
        while IFS= read -r command; do
            if [ "$kind" = cmd ]; then
                check "line $line: $command" command_of_windows "$command"
            else
                check "line $line: $command" bash -eu -c "$command"
            fi
            tr -d '\r' < "$scratch/check.log" > "$said"
            ran=$((ran + 1))
        done < "$block"
        ;;
    output) check "line $line: it says so" diff "$block" "$said" ;;
    text) ;;
    *) check "line $line: a known kind of block" same "$kind" 'one that readme.sh names' ;;
    esac
done < "$scratch/blocks/index"
check 'there were commands' test "$ran" -ge 9

# ---- What they made

check 'gdb finds the source by itself' \
    holds <(gdb -nx -batch -ex 'info line VerifyEmail' bin/tarn.dll 2>&1) 'validate/VerifyEmail.cpp'
x86_64-w64-mingw32-nm bin/tarn.dll.debug > "$scratch/symbols"
addr2line() {
    x86_64-w64-mingw32-addr2line -f -C -e bin/tarn.dll.debug \
        "$(sed -n "s/ T $1\$//p" "$scratch/symbols")" > line.txt &&
        holds line.txt "$1" && holds line.txt "$2"
}
check 'an address of a crash is found, as README says' addr2line FileCopy install/FileCopy.cpp
check 'another one, too' addr2line CloseWaitDlg ui/WaitDlgExports.cpp
check 'the file was copied' cmp LICENSE target/LICENSE
check 'the program that CMake made runs' run 0 build/hello.exe
check 'and says the same' holds out 'us er@example.com: invalid character in email. (at 2)'
nsis_out=$(drive_c)/tarn-readme
rm -rf "$nsis_out"
check 'the installer installs' run 0 ./workbench-setup.exe /S '/D=C:\tarn-readme'
check 'its file is there' cmp include/tarn.h "$nsis_out/docs/tarn.h"
rm -rf "$nsis_out"

# ---- The pages

prose() { awk '/^```/ { inside = !inside; next } !inside' "$1"; }
anchors() {
    prose "$1" | sed -n 's/^##* //p' | tr '[:upper:]' '[:lower:]' | sed 's/[^a-z0-9 _-]//g; s/ /-/g'
}
leads_somewhere() { # PAGE LINK
    local file=${2%%#*}
    if [ -n "$file" ]; then file=$(dirname "$1")/$file; else file=$1; fi
    file=$(realpath -m "$file")
    [[ $file == "$kit"/* ]] || { echo "$file is not in the kit"; return 1; }
    [ -e "$file" ] || { echo "there is no $file"; return 1; }
    [[ $2 != *'#'* ]] || anchors "$file" | grep -qxF -- "${2#*#}" || { echo "no such heading"; return 1; }
}
links=0
while IFS= read -r page; do
    while IFS= read -r link; do
        [[ $link != https://* ]] || continue
        links=$((links + 1))
        check "$page: the link to $link" leads_somewhere "$page" "$link"
    done < <(prose "$page" | grep -oE '\]\([^) ]+\)' | sed 's/^](//; s/)$//')
done < <(find . -name '*.md' -printf '%P\n')
check 'the pages have links' test "$links" -ge 20
check 'no page sends its reader to folders that only the sources have' \
    refuses grep -nE '\]\((\.\./)?(internals|tests|tools|build)/' README.md SECURITY.md CHANGELOG.md docs/*.md

# A file that README names is there.
# shellcheck disable=SC2016 # Markdown's back quotes
while IFS= read -r path; do
    check "README names $path" test -e "${path//\\//}"
done < <(prose README.md | grep -oE '`(bin|docs|include|lib|nsis|samples)\\[^` ]*`' | tr -d '`' | sort -u)
check 'README names the version' same "$(sed -n '1s/[^0-9]*\([0-9.]*\), the kit$/tarn-\1-win64/p' README.md)" \
    "$kit_name"
finish
