# shellcheck shell=bash
# Sourced, after samples/lib.sh: programs for Windows that help a test, each of one source beside this file.

: "${out:?}"
_tool_sources=$(dirname "${BASH_SOURCE[0]}")

# make_tool NAME: NAME.c becomes $out/NAME.exe.
make_tool() {
    local source=$_tool_sources/$1.c
    [ "$out/$1.exe" -nt "$source" ] || x86_64-w64-mingw32-gcc -Wall -Wextra -Werror -O1 -s \
        -o "$out/$1.exe" "$source" || die "$1.c cannot be built"
}
