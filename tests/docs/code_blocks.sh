#!/bin/bash
# code_blocks.sh SOURCE_DIR BUILD_DIR - every code block of README.md, CONTRIBUTING.md, CHANGELOG.md and
# docs/ and internals/ does what the page says. By the word behind the opening fence:
#
#   c        Compiled as C89 and as C++98. With a main function: linked and run. With functions but no
#            main: linked as a DLL that exports them. Without an #include: declarations, which must
#            agree with tarn.h for the compiler.
#   cpp      Compiled as C++17, linked and run.
#   nsis     Compiled, warnings are errors, and run. A whole script (one with OutFile) as it stands;
#            parts of a script and steps of a section inside a small script around them.
#   output   What the block before it writes, to the letter; for the steps of a section, what the
#            registers hold afterwards.
#   sh       Each line is one command. "./dev X": X must be one of dev's commands, which is not run
#            from here. Anything else is run, in a copy of the source folder.
#   text     Pictures and listings; not code.
#
# A further word is the name that the block is saved under, for the sh blocks of the same page. One with a slash
# is a file of the source tree, and the block must stand in it, to the letter: what can only be compiled or run
# where ./dev installers brings the tools is shown as its tests run it. A test must name the file's folder, or the
# file itself must say that it was not run.
# Any other kind of block, an unmarked one and an indented one are errors.
#
# Programs find what the pages assume: C:\Package with two files, and an empty C:\Target.
set -u

source=$(cd "$1" && pwd) || exit 2
build=$(cd "$2" && pwd) || exit 2
work=$build/docs
failures=0
label=''

cc=x86_64-w64-mingw32-gcc
cxx=x86_64-w64-mingw32-g++
warnings='-Wall -Wextra -Wpedantic -Werror'
seconds=60

fail() {
    printf 'FAILED  %s: %s\n' "$label" "$1"
    [ $# = 1 ] || sed 's/^/        /' "$2" | head -n 40
    failures=$((failures + 1))
    return 1
}

pass() { printf 'ok      %s%s\n' "$label" "${1:+: $1}"; }

#---------------------------------------------------------------------------------------------------
# Where things are

# The source folder, without what it has built.
make_tree() {
    local entry
    rm -rf "$1"
    mkdir -p "$1/build"
    for entry in "$source"/*; do
        [ "${entry##*/}" = build ] || ln -s "$entry" "$1/"
    done
    ln -s "$build" "$1/build/release"
}

# The drive as the pages assume it.
make_drive() {
    rm -rf "$WINEPREFIX/drive_c/Package" "$WINEPREFIX/drive_c/Target"
    mkdir -p "$WINEPREFIX/drive_c/Package" "$WINEPREFIX/drive_c/Target"
    printf 'Read me first.\r\n' > "$WINEPREFIX/drive_c/Package/readme.txt"
    printf 'A licence.\r\n' > "$WINEPREFIX/drive_c/Package/my licence.lic"
}

# extract PAGE... - writes each block to blocks/NNN, and to blocks/index a line for each:
# number, page, line, kind, name.
extract() {
    awk -v blocks="$work/blocks" '
        function fault(text) { printf "FAILED  %s:%d: %s\n", page, FNR, text; bad = 1 }
        FNR == 1 { if (inside) fault("a block is not closed"); inside = 0; blank = 1
                   page = FILENAME; sub(/^.*\/docs\//, "docs/", page); sub(/^.*\/internals\//, "internals/", page)
                   if (page !~ /^(docs|internals)\//) sub(/^.*\//, "", page) }
        /^```/ && !inside {
            inside = 1; kind = $0; sub(/^```+ */, "", kind); name = "-"
            if (split(kind, words, " ") > 1) name = words[2]
            kind = words[1]
            if (kind == "") { fault("a block does not say what it holds"); kind = "?" }
            file = sprintf("%03d", ++count)
            printf "%s\t%s\t%d\t%s\t%s\n", file, page, FNR, kind, name > (blocks "/index")
            file = blocks "/" file
            printf "" > file
            next
        }
        /^```/ { inside = 0; close(file); blank = 0; next }
        inside { print > file; next }
        /^ +```/ || /^~~~/ { fault("a block of this form is not looked at: start it with ``` at the margin") }
        /^(    |\t)/ && blank { fault("an indented block is not looked at: put it between fences") }
        { blank = ($0 ~ /^[ \t]*$/) }
        END { if (inside) fault("a block is not closed"); exit bad }' "$@"
}

#---------------------------------------------------------------------------------------------------
# Running

# run FOLDER PROGRAM - output without carriage returns in FOLDER/out.
run() {
    (cd "$1" && timeout -k 5 $seconds wine "./$2" > raw.out 2> raw.err < /dev/null)
    local rc=$?
    tr -d '\r' < "$1/raw.out" > "$1/out"
    [ $rc = 0 ] || { fail "$2 ends with exit code $rc$([ $rc != 124 ] || echo ' (out of time)')" "$1/out"; }
}

# Somebody has to pick the file that the pages speak of.
with_user() {
    local block=$1 rc user
    shift
    if ! grep -q 'DoFileOpenDialog' "$block"; then
        "$@"
        return
    fi
    timeout -k 5 $seconds wine "$work/pick_file.exe" 'Choose the licence file' \
        'C:\Package\my licence.lic' &> "$work/pick_file.log" &
    user=$!
    "$@"
    rc=$?
    wait $user || fail 'no Open dialog was seen' "$work/pick_file.log"
    return $rc
}

# expect FILE - compares with the output block that follows, if there is one.
expect() {
    [ -z "$expected" ] || diff -u "$expected" "$1" > "$work/diff" ||
        fail 'the output is not what the page says' "$work/diff"
}

# What the block says that it does has been done.
effects() {
    local block=$1 drive=$WINEPREFIX/drive_c
    if grep -q 'FileCopy.*readme\.txt' "$block"; then
        cmp -s "$drive/Package/readme.txt" "$drive/Target/docs/readme.txt" ||
            fail 'C:\Target\docs\readme.txt is not a copy of C:\Package\readme.txt'
    fi
    if grep -q 'W[A-Za-z_]*[Cc]h_*[Cc]onfig_*File.*C:.*Target' "$block"; then
        [ "$(grep -c '' "$drive/Target/embedch/config/chrc" 2> /dev/null)" = 59 ] ||
            fail 'C:\Target\embedch\config\chrc has not been written'
    fi
    if grep -q 'PutInRunOnce.*WorkbenchWelcome' "$block"; then
        wine reg query 'HKCU\Software\Microsoft\Windows\CurrentVersion\RunOnce' /v WorkbenchWelcome \
            2> /dev/null | grep -qF '"C:\Target\workbench.exe" --first-run' ||
            fail 'the command is not in the registry'
        wine reg delete 'HKCU\Software\Microsoft\Windows\CurrentVersion\RunOnce' /v WorkbenchWelcome \
            /f &> /dev/null
    fi
}

#---------------------------------------------------------------------------------------------------
# The kinds

# compile LOG COMMAND...
compile() {
    local log=$1
    shift
    "$@" &> "$log" || fail "$(printf '%s ' "${1##*/}" "$2")..." "$log"
}

block_c() {
    local block=$1 dir=$2 functions function
    if ! grep -q '#include' "$block"; then
        { echo '#include <tarn.h>'; cat "$block"; } > "$dir/block.c"
    else
        cp "$block" "$dir/block.c"
    fi
    # shellcheck disable=SC2086
    compile "$dir/c89.log" $cc -std=c89 $warnings -I"$source/include" -c "$dir/block.c" \
        -o "$dir/block.o" || return
    # shellcheck disable=SC2086
    compile "$dir/cxx98.log" $cxx -x c++ -std=c++98 $warnings -I"$source/include" \
        -c "$dir/block.c" -o "$dir/block-cxx.o" || return
    if grep -q '\bmain *(' "$block"; then
        compile "$dir/link.log" $cc "$dir/block.o" -L"$build/lib" -ltarn -o "$dir/block.exe" &&
            with_user "$block" run "$dir" block.exe && expect "$dir/out" && effects "$block" &&
            pass 'runs'
    elif grep -q '#include' "$block"; then
        compile "$dir/link.log" $cc -shared "$dir/block.o" -L"$build/lib" -ltarn -lmsi \
            -o "$dir/block.dll" || return
        functions=$(sed -n 's/^UINT __stdcall \([A-Za-z_]*\)(.*/\1/p' "$block")
        [ -n "$functions" ] || { fail 'neither a main function nor a custom action'; return; }
        for function in $functions; do
            perl "$source/tests/support/portable_executable.pl" exports "$dir/block.dll" |
                grep -qxF "$function" ||
                fail "$function is not exported" || return
            echo "$function" >> "$work/dll-exports"
        done
        pass 'makes a DLL'
    else
        pass 'agrees with tarn.h'
    fi
}

block_cpp() {
    local block=$1 dir=$2
    cp "$block" "$dir/block.cpp"
    # shellcheck disable=SC2086
    compile "$dir/cxx17.log" $cxx -std=c++17 $warnings -I"$source/include" -c "$dir/block.cpp" \
        -o "$dir/block.o" &&
        compile "$dir/link.log" $cxx -static "$dir/block.o" \
            -L"$build/lib" -Wl,-Bdynamic -ltarn -Wl,-Bstatic -o "$dir/block.exe" &&
        with_user "$block" run "$dir" block.exe && expect "$dir/out" && effects "$block" &&
        pass 'runs'
}

block_nsis() {
    local block=$1 dir=$2 program=block.exe
    if grep -q '^OutFile' "$block"; then
        make_tree "$dir/tree"
        dir=$dir/tree
        cp "$block" "$dir/block.nsi"
        program=$(sed -n 's/^OutFile "\(.*\)"$/\1/p' "$block")
        compile "$dir/makensis.log" makensis -V2 -WX "$dir/block.nsi" || return
    else
        local script=steps
        ! grep -q '^\(Function\|Section\)' "$block" || script=parts
        compile "$dir/makensis.log" makensis -V2 -WX "-DBLOCK=$block" "-DOUT_FILE=$dir/block.exe" \
            "-DTARN_NSH=$source/nsis/tarn.nsh" "-DTARN_DLL=$build/bin/tarn.dll" \
            "$source/tests/docs/$script.nsi" || return
    fi
    with_user "$block" run "$dir" "$program" || return
    if [ "${script:-}" = steps ]; then
        [ -s "$dir/registers" ] || { fail 'the section did not end'; return; }
        # As many registers as the page shows.
        tr -d '\r' < "$dir/registers" | head -n "$(grep -c '' "${expected:-/dev/null}")" > "$dir/out"
    fi
    expect "$dir/out" && effects "$block" && pass 'runs'
}

block_sh() {
    local line word page_dir=$work/pages/${page//\//_}
    while IFS= read -r line; do
        [ -n "$line" ] || continue
        word=${line%% *}
        case $word in
        ./dev)
            word=${line#./dev}
            word=${word# }
            word=${word%% *}
            [ -f "$source/tools/commands/$word.sh" ] ||
                { [ "$word" = help ] && continue; fail "there is no $line"; return; }
            ;;
        x86_64-w64-mingw32-* | makensis)
            [ -d "$page_dir" ] || make_tree "$page_dir"
            (cd "$page_dir" && bash -eu -c "$line") &> "$work/sh.log" ||
                { fail "$line" "$work/sh.log"; return; }
            ;;
        *)
            fail "not a command that is run from here: $line"
            return
            ;;
        esac
    done < "$1"
    pass
}

# block_excerpt BLOCK FILE
block_excerpt() {
    local file=$source/$2
    [ -f "$file" ] || { fail "there is no $2"; return; }
    perl -0777 -e 'open my $b, "<", $ARGV[0]; open my $f, "<", $ARGV[1];
                   exit(index("\n" . <$f>, "\n" . <$b>) < 0)' "$1" "$file" ||
        { fail "it does not stand in $2 like this"; return; }
    if head -n 5 "$file" | grep -qiE 'not been run|nor run'; then
        pass "stands in $2, which says that it was not run"
    else
        # shellcheck disable=SC2016 # the dollar is that of the scripts
        grep -rqF "\$samples/$(cut -d/ -f2 <<< "$2")" "$source/tests/installers" "$source/samples/lib.sh" ||
            { fail "no test builds $2"; return; }
        pass "stands in $2"
    fi
}

#---------------------------------------------------------------------------------------------------

for tool in $cc $cxx makensis wine; do
    command -v "$tool" > /dev/null || { echo "code_blocks.sh: $tool is missing" >&2; exit 2; }
done
[ -f "$build/bin/tarn.dll" ] || { echo "code_blocks.sh: there is no $build/bin/tarn.dll" >&2; exit 2; }

scratch=$work
# shellcheck source=tests/support/compiler_cache.sh
. "$source/tests/support/compiler_cache.sh"
export TARN_WINE_DIR=$work/wine
# shellcheck source=tools/wine-env.sh
. "$source/tools/wine-env.sh"
rm -rf "$work/blocks" "$work/pages" "$work/dll-exports" "$work/run"
mkdir -p "$work/blocks" "$work/pages" "$work/run"
: > "$work/dll-exports"

extract "$source"/README.md "$source"/CONTRIBUTING.md "$source"/CHANGELOG.md "$source"/docs/*.md "$source"/internals/*.md ||
    failures=$((failures + 1))
mapfile -t index < "$work/blocks/index"
[ ${#index[@]} -gt 0 ] || { echo 'code_blocks.sh: no blocks found' >&2; exit 1; }

trap wine_stop EXIT
trap 'exit 130' INT TERM HUP
wine_start || exit 1
$cc -std=c89 -Wall -Wextra -Werror -c "$source/tests/docs/pick_file.c" -o "$work/pick_file.o" &&
    $cc "$work/pick_file.o" -o "$work/pick_file.exe" -luser32 || exit 1

# The named blocks, where the shell finds them; and output blocks stand where they say something.
previous=
while IFS=$'\t' read -r number page _ kind name; do
    if [ "$name" != - ] && [[ $name != */* ]]; then
        [ -d "$work/pages/${page//\//_}" ] || make_tree "$work/pages/${page//\//_}"
        cp "$work/blocks/$number" "$work/pages/${page//\//_}/$name"
    fi
    if [ "$kind" = output ]; then
        case $previous in
        c | cpp | nsis) ;;
        *) label="$page" && fail "an output block follows '${previous:-nothing}'" ;;
        esac
    fi
    previous=$kind
done < "$work/blocks/index"

# kinds KIND... - the blocks of these kinds, in the order of the pages.
kinds() {
    local i number line kind dir name
    for i in "${!index[@]}"; do
        IFS=$'\t' read -r number page line kind name <<< "${index[i]}"
        [[ " $* " == *" $kind "* ]] && [[ $name != */* ]] || continue
        label="$page:$line ($kind)"
        expected=
        if [[ "${index[i + 1]:-}" == *$'\toutput\t'* ]]; then
            expected=$work/blocks/${index[i + 1]%%$'\t'*}
        fi
        dir=$work/run/$number
        mkdir -p "$dir"
        cp "$build/bin/tarn.dll" "$dir"
        make_drive
        "block_$kind" "$work/blocks/$number" "$dir"
    done
}
kinds c cpp nsis
kinds sh

while IFS=$'\t' read -r number page line kind name; do
    label="$page:$line ($kind)"
    if [[ $name == */* ]]; then
        block_excerpt "$work/blocks/$number" "$name"
        continue
    fi
    case $kind in
    c | cpp | nsis | sh | output | text) ;;
    *) label="$page:$line" && fail "nothing says what to do with a block of kind '$kind'" ;;
    esac
done < "$work/blocks/index"

printf '%d blocks, %d failures\n' ${#index[@]} $failures
[ $failures = 0 ]
