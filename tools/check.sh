#!/bin/bash
# Formatting and static analysis of what is tracked; runs every step and fails if any of them found
# something.
#
# check.sh [--all]        looks at what has changed since it was last found clean, with what that is
#                         included by; at everything with --all, and in continuous integration (CI=true)
# check.sh TOOL FILE      one tool, one file
set -u -o pipefail
cd "$(dirname "$0")/.." || exit
work=build/check
failed=()

sources() { git ls-files -- "$@"; }
# Of what is handed out: the library, tarntool and the self-test.
shipped_sources() {
    sources 'frame/*.cpp' 'framework/*.cpp' 'runtime/*.cpp' 'install/*.cpp' 'ui/*.cpp' 'validate/*.cpp' \
        'tarntool/*.cpp' 'selftest/*.cpp'
}
scripts() {
    sources | while IFS= read -r file; do
        [ ! -f "$file" ] || ! head -n1 "$file" | tr -d '\0' |
            grep -qE '^#!.*\b(ba)?sh\b|^# shellcheck shell=' || echo "$file"
    done
}

#---------------------------------------------------------------------------------------------------
# The tools, each for one file

# Full names: .clang-tidy tells the library's headers from others by them.
library=(-std=c++17 -D_WIN32_WINNT=0x0601 -DWINVER=0x0601 "-I$PWD" "-I$PWD/include" "-I$PWD/framework"
    '-DTARN_VERSION="0"' '-DTARN_SELFTEST_VERSION="0"' '-DTARN_SELFTEST_SEND_TO=""')

# Clang in the cross compiler's place: its target, its C++ library, its Windows headers. Of those as
# little as the library can do with: the checks look at every declaration, and most of their time went
# into the processor's intrinsics and COM.
windows_headers() {
    local compiler
    compiler=$(command -v x86_64-w64-mingw32-g++-win32 x86_64-w64-mingw32-g++ | head -n 1)
    printf '%s\n' --target=x86_64-w64-mingw32 -nostdinc \
        -DWIN32_LEAN_AND_MEAN -D__X86INTRIN_H -D__IMMINTRIN_H
    "$compiler" -E -x c++ -v /dev/null 2>&1 |
        sed -n '/^#include <\.\.\.>/,/^End of search/s/^ //p' | grep '/c++' | sed 's/^/-isystem/'
    printf -- '-isystem%s\n' "$(clang -print-resource-dir)/include" /usr/x86_64-w64-mingw32/include
}

tool_clang-tidy() {
    local windows
    mapfile -t windows < $work/windows-headers
    clang++ "${windows[@]}" "${library[@]}" -MM -MT "$work/clang-tidy/$1" -MF "$work/clang-tidy/$1.d" \
        "$PWD/$1" &&
        clang-tidy --quiet "$PWD/$1" -- "${windows[@]}" "${library[@]}" 2>&1 |
        sed -E '/^[0-9]+ (warning|error)s?.* generated\.$/d'
}

# Without the system's headers: cppcheck knows the Windows types by itself. missingReturn: it does not
# know which functions do not return, and the compilers warn of the same.
tool_cppcheck() {
    cppcheck --quiet --std=c++17 --platform=win64 --library=windows \
        --enable=warning,performance,portability --inline-suppr --error-exitcode=1 \
        --suppress=missingIncludeSystem --suppress=missingReturn \
        -D_WIN32 -D__GNUC__=12 -D__cplusplus=201703L -I. -Iinclude -Iframework "$1"
}

tool_clang-format() { clang-format --dry-run -Werror "$1"; }

tool_shellcheck() { bash -n "$1" && shellcheck --severity=warning --external-sources "$1"; }

#---------------------------------------------------------------------------------------------------
# Ninja runs them: two at a time, and only for what has changed

# edges TOOL FILE... - for each file of the standard input; FILE: what they all depend on.
edges() {
    local tool=$1 file
    shift
    printf 'rule %s\n  command = tools/check.sh %s $in && touch $out\n' "$tool" "$tool"
    [ "$tool" != clang-tidy ] || printf '  depfile = $out.d\n'
    while IFS= read -r file; do
        printf 'build %s/%s/%s: %s %s | tools/check.sh %s/versions %s\n' \
            "$work" "$tool" "$file" "$tool" "$file" "$work" "$*"
    done
}

# keep FILE - writes the standard input to it, unless it says that already.
keep() {
    cat > "$1.new"
    cmp -s "$1.new" "$1" && rm "$1.new" || mv "$1.new" "$1"
}

each_file() {
    local headers libraries
    mapfile -t headers < <(sources '*.h')
    mapfile -t libraries < <(scripts | xargs grep -lE '^# shellcheck shell=')
    mkdir -p $work
    windows_headers | keep $work/windows-headers
    {
        clang-tidy --version; clang-format --version; cppcheck --version; shellcheck --version
        cat $work/windows-headers
    } | keep $work/versions
    {
        echo "builddir = $work"
        scripts | edges shellcheck "${libraries[@]}"
        sources '*.c' '*.cpp' '*.h' | edges clang-format .clang-format
        shipped_sources | edges cppcheck "${headers[@]}"
        shipped_sources | grep -v 'Native\.cpp$' | edges clang-tidy .clang-tidy selftest/.clang-tidy
    } > $work/build.ninja
    ninja --quiet -k 0 -f $work/build.ninja
}

step() {
    local name=$1 start=$SECONDS
    shift
    printf '== %s\n' "$name"
    if "$@"; then
        printf '   clean (%d s)\n' $((SECONDS - start))
    else
        printf '   NOT clean (%d s)\n' $((SECONDS - start))
        failed+=("$name")
    fi
}

case ${1:-} in
clang-tidy | cppcheck | clang-format | shellcheck)
    "tool_$1" "$2"
    exit
    ;;
--all) rm -rf $work ;;
*) [ -z "${CI:-}" ] || rm -rf $work ;;
esac

reached() {
    cmake --preset release > /dev/null &&
        cmake --build --preset release --target tarn_reach > /dev/null &&
        tools/unreached.py build/release
}

step 'Each file: clang-tidy, cppcheck, clang-format, shellcheck' each_file
step 'Includes against the picture of the rooms' tools/rooms.py
step 'Functions that nothing reaches' reached

if [ ${#failed[@]} -gt 0 ]; then
    printf 'check: not clean: %s\n' "${failed[*]}" >&2
    exit 1
fi
