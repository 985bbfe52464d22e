#!/bin/bash
# full_disk_test.sh WINE_DIR PROGRAM - writes the start-up file where there is no room for all of it.
set -eu -o pipefail
TARN_WINE_DIR=$1
program=$2
tools=$(cd "$(dirname "$0")/../../tools" && pwd)
# shellcheck source=tools/wine-env.sh
. "$tools/wine-env.sh"

work=$(mktemp -d)
disk=$work/disk
cleanup() {
    ! mountpoint -q "$disk" || umount "$disk"
    rm -rf "$work"
}
trap cleanup EXIT

# write_in FOLDER COMMAND... - the command runs the test, which writes into the folder.
write_in() {
    local folder=$1 rc=0
    shift
    mkdir -p "$folder/embedch/config"
    export TARN_FULL_DISK=Z:${folder//\//\\}
    "$@" "$program" --gtest_filter=ChrcExport.ThrowsAFileExceptionOnAFullDisk \
        > "$work/output" 2>&1 || rc=$?
    cat "$work/output"
    [ "$rc" = 0 ]
    # A test that was skipped would pass, too.
    grep -q '^\[  PASSED  \] 1 test' "$work/output"
}
# Without the signal: a write behind the limit fails, as on a full disk.
# shellcheck disable=SC2317 # called by write_in
limited_to_2_kb() {
    (trap '' XFSZ && ulimit -f 2 && exec wine "$@" < /dev/null) | head -c 100000
}

# The first program of a server leaves processes behind that would inherit the limit.
bash "$tools/wine-run.sh" "$TARN_WINE_DIR" cmd /c exit
wine_start

echo '== A part of the file fits: the size of a file is limited'
write_in "$work/limited" limited_to_2_kb
[ "$(stat -c %s "$work/limited/embedch/config/chrc")" = 2048 ]

mkdir "$disk"
if ! mount -t tmpfs -o size=12k tmpfs "$disk"; then
    echo '== SKIPPED: a disk without room, since this user may not mount one'
    exit 0
fi
echo '== Nothing fits: the disk has no room at all'
head -c 12288 /dev/zero > "$disk/filler"
write_in "$disk/App" bash "$tools/wine-run.sh" "$TARN_WINE_DIR"
[ "$(stat -c %s "$disk/App/embedch/config/chrc")" = 0 ]
