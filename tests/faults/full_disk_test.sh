#!/bin/bash
# full_disk_test.sh WINE_DIR PROGRAM - copies a file to a disk that has no room for it.
set -eu -o pipefail
TARN_WINE_DIR=$1
program=$2
# shellcheck source=tools/wine-env.sh
. "$(dirname "$0")/../../tools/wine-env.sh"

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
wine_start
# A test that was skipped would pass, too.
TARN_FULL_DISK=Z:${disk//\//\\} wine "$program" --gtest_filter='InstallFault.OfAFullDisk*' |
    tr -d '\r' | { tee /dev/stderr | grep '^\[  PASSED  \] 1 test' > /dev/null; }
