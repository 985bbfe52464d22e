#!/bin/bash
# The same sources in another folder, built by someone with other habits, make the same zip.
#
# That second build is kept, and brought up to date like any other: what has changed is compiled again. It
# begins from nothing when a tool has changed, or what says how to build.
# shellcheck source=tests/package/lib.sh
. "$(dirname "$0")/lib.sh"
need_tools cmake cpack ninja unzip
export SOURCE_DATE_EPOCH=1700000000

check 'the zip of this build' cpack --config "$build/CPackConfig.cmake" -B "$scratch/first"

again="$build/built again (elsewhere)"
copy="$again/a folder of another length/tarn"
second=$copy/build/release
export TZ=Pacific/Auckland LC_ALL=C GIT_CEILING_DIRECTORIES=$build
umask 077
# At random addresses, too, which ./dev has turned off. Some containers let nobody change that.
random_addresses=(setarch "$(uname -m)")
"${random_addresses[@]}" true 2> /dev/null || random_addresses=()

# What git knows or would take, or all but build/: content, rights and name of each.
sources() {
    { git ls-files -z --cached --others --exclude-standard 2> /dev/null ||
        find . -path ./build -prune -o -path ./.git -prune -o -type f -print0; } |
        while IFS= read -r -d '' file; do
            [ ! -f "$file" ] || printf '%s\0' "$file" # not deleted
        done > "$scratch/names"
    paste -d ' ' <(xargs -0 sha256sum < "$scratch/names" | cut -c-64) <(xargs -0 stat -c '%a/%n' < "$scratch/names") | sort
}
names_of() { cut -d/ -f2- | tr '\n' '\0'; }

# Tools, settings, and the sources that say how to build.
recipe() {
    env | grep -E '^(CMAKE_|CC=|CXX=|[A-Z]*FLAGS=)' | sort
    cmake --version && x86_64-w64-mingw32-g++ --version && x86_64-w64-mingw32-ld --version || return
    dpkg-query -W 2> /dev/null
    grep -E '(/CMakeLists\.txt|/CMakePresets\.json|\.cmake|\.in)$' "$1"
}

# Only what differs is touched: its time tells the build of the change.
update_copy() {
    cd "$source_dir" && sources > "$scratch/sources" && recipe "$scratch/sources" > "$scratch/recipe" || return
    if ! cmp -s "$scratch/recipe" "$again/recipe"; then
        rm -rf "$again"
        mkdir -p "$copy"
        touch "$again/sources"
    fi
    rm -f "$again/recipe" # until all has been built
    comm -23 "$again/sources" "$scratch/sources" | names_of | env -C "$copy" xargs -0r rm -f --
    comm -13 "$again/sources" "$scratch/sources" | names_of | tar -c --null -T - | tar -xm -C "$copy" &&
        cp "$scratch/sources" "$again"
}
build_again() {
    cd "$copy" || return
    [ -f "$second/build.ninja" ] || cmake --preset release -DTARN_TESTS=OFF || return
    "${random_addresses[@]}" cmake --build --preset release --target tarn_kit -j2 &&
        cpack --config "$second/CPackConfig.cmake" -B "$scratch/second" &&
        mv "$scratch/recipe" "$again"
}
check 'the copy of the sources' update_copy
check 'the copy holds them and nothing else' same \
    "$(cd "$copy" && find . -path ./build -prune -o -type f -print | sed 's:^\./::' | sort)" \
    "$(names_of < "$scratch/sources" | tr '\0' '\n' | sort)"
check 'the zip of the copy' build_again

for file in bin/tarn.dll bin/tarn.dll.debug bin/tarntool.exe bin/tarntool.exe.debug lib/libtarn.dll.a lib/tarn.lib; do
    for zip in first second; do
        unzip -q -p "$scratch/$zip/$kit_name.zip" "$kit_name/$file" > "$scratch/$zip/file"
        check "$file is in the zip" test -s "$scratch/$zip/file"
    done
    check "$file is the same" cmp "$scratch/first/file" "$scratch/second/file"
done
check 'the zip is the same' cmp "$scratch/first/$kit_name.zip" "$scratch/second/$kit_name.zip"

# Noticed, if it were not: the date is the one thing that differs here.
SOURCE_DATE_EPOCH=1700000002 cpack --config "$second/CPackConfig.cmake" -B "$scratch/third" > /dev/null
check 'another date makes another zip' \
    refuses cmp -s "$scratch/second/$kit_name.zip" "$scratch/third/$kit_name.zip"
finish
