#!/bin/bash
# The same sources in another folder, built by someone with other habits, make the same zip.
# shellcheck source=tests/package/lib.sh
. "$(dirname "$0")/lib.sh"
need_tools cmake cpack ninja unzip
SOURCE_DATE_EPOCH=1700000000

check 'the zip of this build' cpack --config "$build/CPackConfig.cmake" -B "$scratch/first"

# Sources only: a copy of what git knows or would take, or of all but build/.
copy="$scratch/a folder of another length/tarn"
mkdir -p "$copy"
sources() {
    git ls-files -z --cached --others --exclude-standard 2> /dev/null ||
        find . -path ./build -prune -o -path ./.git -prune -o -type f -print0
}
(cd "$source_dir" && sources | while IFS= read -r -d '' file; do
    [ ! -f "$file" ] || printf '%s\0' "$file" # not deleted
done | tar -c --null -T -) | tar -x -C "$copy"

export TZ=Pacific/Auckland LC_ALL=C
umask 077
second=$copy/build/release
again() {
    cd "$copy" && cmake --preset release -DTARN_TESTS=OFF &&
        cmake --build --preset release --target tarn_kit -j2 &&
        cpack --config "$second/CPackConfig.cmake" -B "$scratch/second"
}
check 'the zip of the copy' again

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
