# shellcheck shell=bash
# Sourced, after samples/lib.sh: a file in use (see hold.c).
#
#   make_tool hold  builds the program; first
#   hold FILE       another program has this file (a Windows path) open from now on
#   release         no longer
# shellcheck source=tests/samples/tool.sh
. "$(dirname "${BASH_SOURCE[0]}")/tool.sh"

: "${out:?}"
held_mark=$out/held

hold() {
    local limit=$((SECONDS + 60))
    rm -f "$held_mark"
    wine "$out/hold.exe" "$1" "$(windows "$out")\\held" &> "$out/hold.log" &
    holder=$!
    until [ -e "$held_mark" ]; do
        kill -0 $holder 2> /dev/null && [ $SECONDS -lt $limit ] || die "cannot hold $1"
        sleep 0.05
    done
}

release() {
    rm -f "$held_mark"
    wait "$holder"
}
