#!/bin/bash
# art_test.sh BUILD_DIR - the wizard's pictures are what the script beside them draws, and of the sizes that
# the wizard's pages have for them. Nearly: versions of ImageMagick smooth edges in their own ways.
set -u
build=$(cd "$1" && pwd) || exit 2
art=$(cd "$(dirname "$0")/../../samples/wizard/art" && pwd)
drawn=$build/samples/art
wrong=0

# check WHAT COMMAND...
check() {
    local what=$1
    shift
    "$@" > "$drawn/log" 2>&1 && { echo "  ok     $what"; return; }
    echo "  WRONG  $what"
    sed 's/^/         /' "$drawn/log"
    wrong=$((wrong + 1))
}

# alike FILE...: by the mean difference, of which 1 is that of black and white.
alike() {
    local difference
    difference=$(compare -metric RMSE "$1" "$2" null: 2>&1 | sed 's/.*(\(.*\)).*/\1/')
    echo "difference: $difference"
    awk -v difference="$difference" 'BEGIN { exit !(difference ~ /^[0-9.e-]+$/ && difference < 0.03) }'
}

sizes() { [ "$(identify -format '%wx%h ' "$1")" = "$2" ] || { identify "$1"; return 1; }; }

rm -rf "$drawn"
mkdir -p "$drawn"
check 'the script draws' "$art/make.sh" "$drawn"
check 'side.bmp has its size' sizes "$art/side.bmp" '164x314 '
check 'header.bmp has its size' sizes "$art/header.bmp" '150x57 '
check 'small.bmp has its size' sizes "$art/small.bmp" '55x58 '
for icon in setup remove; do
    check "$icon.ico has three sizes" sizes "$art/$icon.ico" '16x16 32x32 48x48 '
    check "$icon.ico is what was drawn" alike "$art/$icon.ico[2]" "$drawn/$icon.ico[2]"
done
for picture in side header small; do
    check "$picture.bmp is what was drawn" alike "$art/$picture.bmp" "$drawn/$picture.bmp"
done
! alike "$art/setup.ico[2]" "$art/remove.ico[2]" > /dev/null
check 'other pictures are not alike' test $? = 0
exit $((wrong != 0))
