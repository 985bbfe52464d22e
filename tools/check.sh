#!/bin/bash
# Formatting and static analysis of what is tracked; runs every step and fails if any of them found
# something. Needs the release build configured, for its compiler and compile commands.
set -u -o pipefail
cd "$(dirname "$0")/.." || exit
build=build/release
failed=()

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

sources() { git ls-files -z -- "$@"; }
library_sources() {
    sources 'frame/*.cpp' 'framework/*.cpp' 'runtime/*.cpp' 'install/*.cpp' 'ui/*.cpp' 'validate/*.cpp'
}

# Each file alone, two at a time: the output of one is not mixed with another's.
each() { xargs -0 -r -n1 -P2 "$@"; }

shell_syntax() {
    local script ok=0
    while IFS= read -r -d '' script; do
        head -n1 "$script" | grep -qE '^#!.*\b(ba)?sh\b|^# shellcheck shell=' || continue
        bash -n "$script" && shellcheck --severity=warning --external-sources "$script" || ok=1
    done < <(sources)
    return $ok
}

formatting() { sources '*.c' '*.cpp' '*.h' | xargs -0 -r clang-format --dry-run -Werror; }

# Clang in the cross compiler's place: its target, its C++ library, its Windows headers.
tidy() {
    local compiler dir args=(--target=x86_64-w64-mingw32 -nostdinc -Wno-unknown-warning-option)
    compiler=$(sed -n 's/^CMAKE_CXX_COMPILER:[^=]*=//p' $build/CMakeCache.txt)
    while read -r dir; do
        args+=("-isystem$dir")
    done < <("$compiler" -E -x c++ -v /dev/null 2>&1 |
        sed -n '/^#include <\.\.\.>/,/^End of search/s/^ //p' | grep '/c++')
    args+=("-isystem$(clang -print-resource-dir)/include" -isystem/usr/x86_64-w64-mingw32/include)
    library_sources | grep -zv 'Native\.cpp$' |
        each clang-tidy --quiet -p $build "${args[@]/#/--extra-arg=}" \
            2> >(grep -vE '^[0-9]+ warnings? (and [0-9]+ errors? )?generated' >&2)
}

# Without the system's headers: cppcheck knows the Windows types by itself. missingReturn: it does not
# know which functions do not return, and the compilers warn of the same.
cpp_check() {
    library_sources |
        xargs -0 cppcheck --quiet --std=c++17 --platform=win64 --library=windows \
            --enable=warning,performance,portability --inline-suppr --error-exitcode=1 \
            --suppress=missingIncludeSystem --suppress=missingReturn \
            -D_WIN32 -D__GNUC__=12 -D__cplusplus=201703L \
            -I. -Iinclude -Iframework
}

step 'Shell scripts' shell_syntax
step 'clang-format' formatting
step 'cppcheck' cpp_check
step 'clang-tidy' tidy

if [ ${#failed[@]} -gt 0 ]; then
    printf 'check: not clean: %s\n' "${failed[*]}" >&2
    exit 1
fi
