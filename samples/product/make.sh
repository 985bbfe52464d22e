#!/bin/bash
# make.sh OUT [BYTES] - makes the sample product, the "Lakeside Workbench":
#   OUT/tree          the files as they are to be installed
#   OUT/product.nsh   their list for the installer
# The same content on every run; the large file, of 5 MB or BYTES, is made here rather than kept in the
# repository. What the program was linked from is in OUT/lakeside.map.
set -eu

here=$(cd "$(dirname "$0")" && pwd)
out=$1
tree=$out/tree
cc=${MINGW_CC:-x86_64-w64-mingw32-gcc}

rm -rf "$tree"
mkdir -p "$tree"
cp -r "$here/files/." "$tree"

# A repeatable stream of SIZE bytes, as a survey has them: rows of the same figures, each with its number. By a
# linear congruential generator from SEED.
bytes() {
    perl -e 'my ($size, $x) = @ARGV;
             my $row = "";
             while (length $row < 4092) {
                 $x = ($x * 1664525 + 1013904223) & 0xffffffff;
                 $row .= pack("N", $x);
             }
             for (my $number = 0; $size > 0; $size -= 4096) {
                 print substr(pack("N", $number++) . $row, 0, $size);
             }' "$1" "$2"
}

mkdir -p "$tree/bin" "$tree/embedch/dl"
"$cc" -Os -D__USE_MINGW_ANSI_STDIO=0 -c -o "$out/lakeside.o" "$here/lakeside.c"
"$cc" -s -Wl,--no-insert-timestamp,-Map="$out/lakeside.map" -o "$tree/bin/lakeside.exe" "$out/lakeside.o"
bytes "${2:-5242880}" 1 > "$tree/bin/survey.dat"
bytes 40961 2 > "$tree/embedch/dl/shapes.dl"
: > "$tree/bin/empty.mrk" # an empty file must arrive too

# The list, as macros that call a macro of the script's for each folder and each file. Folders come
# before what is in them, so that they can be created in this order and removed in the other.
{
    echo '; Made by make.sh: the folders and files of the sample product.'
    echo '!macro ForEachFolder ACTION'
    # shellcheck disable=SC2016 # the dollar is the script's
    (cd "$tree" && find . -mindepth 1 -type d | LC_ALL=C sort) |
        sed -e 's:^\./::' -e 's:/:\\:g' -e 's:.*:  !insertmacro ${ACTION} "&":'
    echo '!macroend'
    echo '!macro ForEachFolderBackwards ACTION'
    # shellcheck disable=SC2016 # the dollar is the script's
    (cd "$tree" && find . -mindepth 1 -type d | LC_ALL=C sort -r) |
        sed -e 's:^\./::' -e 's:/:\\:g' -e 's:.*:  !insertmacro ${ACTION} "&":'
    echo '!macroend'
    echo '!macro ForEachFile ACTION'
    # shellcheck disable=SC2016 # the dollar is the script's
    (cd "$tree" && find . -type f | LC_ALL=C sort) |
        sed -e 's:^\./::' -e 's:/:\\:g' \
            -e 's:^\(.*\\\)\([^\\]*\)$:  !insertmacro ${ACTION} "\1" "\2":' \
            -e 's:^[^ ].*$:  !insertmacro ${ACTION} "" "&":'
    echo '!macroend'
} > "$out/product.nsh"
