# shellcheck shell=bash
# Sourced, after samples/lib.sh: a program that tells what is on the screen (see probe.c).

: "${out:?}"

make_probe() {
    local source
    source=$(dirname "${BASH_SOURCE[0]}")/probe.c
    [ "$out/probe.exe" -nt "$source" ] || x86_64-w64-mingw32-gcc -Wall -Wextra -Werror -O1 -s \
        -o "$out/probe.exe" "$source" || die "the probe cannot be built"
}

probe() { wine "$out/probe.exe" 2> /dev/null | tr -d '\r'; }
