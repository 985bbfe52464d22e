#!/bin/bash
# full_disk_test.sh WINE_DIR PROGRAM - copies a file to a disk that has no room for it.
set -eu -o pipefail
wine_dir=$1
program=$2
tools=$(cd "$(dirname "$0")/../../tools" && pwd)

disk=$(mktemp -d)
cleanup() {
    ! mountpoint -q "$disk" || umount "$disk"
    rmdir "$disk"
}
trap cleanup EXIT
if ! mount -t tmpfs -o size=1m tmpfs "$disk"; then
    echo 'SKIPPED: this user may not mount a small disk'
    exit 77
fi
# A test that was skipped would pass, too.
TARN_FULL_DISK=Z:${disk//\//\\} \
    bash "$tools/wine-run.sh" "$wine_dir" "$program" --gtest_filter='InstallFault.OfAFullDisk*' |
    tr -d '\r' | { tee /dev/stderr | grep '^\[  PASSED  \] 1 test' > /dev/null; }
