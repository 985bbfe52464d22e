#!/bin/bash
# sbom.cdx.json, held against the files of the kit: hashes, the packages' versions, and the objects by the
# symbols that the binaries have, which is another way than the link map that it was made from.
# shellcheck source=tests/package/lib.sh
. "$(dirname "$0")/lib.sh"
PATH=/usr/bin:$PATH # before a Python of the user's own, which may lack what the system's packages bring
need_tools unzip python3 x86_64-w64-mingw32-nm
unpack_kit
sbom=$kit/sbom.cdx.json
look() { python3 "$source_dir/tests/package/sbom.py" "$@"; }

check 'it is about this version' look version "$sbom" "$kit_name"
check 'every file of code is there, with its hash and size' look files "$sbom" "$kit"
check 'what it refers to is there' look references "$sbom"
if command -v dpkg-query > /dev/null; then
    check 'packages and versions are those of this system' look packages "$sbom"
fi
nm=x86_64-w64-mingw32-nm
gcc_nm=$(command -v x86_64-w64-mingw32-gcc-nm-win32 x86_64-w64-mingw32-gcc-nm | head -n 1)
while IFS= read -r file; do
    check "$file holds what is listed, and nothing else of those libraries" \
        look objects "$sbom" "$file" "$kit/$file.debug" $nm "$gcc_nm" "$build"
done < <(cd "$kit" && find bin -name '*.dll' -o -name '*.exe' | LC_ALL=C sort)
while IFS= read -r file; do
    check "THIRD-PARTY.md has the libraries of $file" look table "$sbom" "$file" "$kit/THIRD-PARTY.md"
done < <(cd "$kit" && find . -name '*.dll' -printf '%P\n' -o -name '*.exe' -printf '%P\n' | LC_ALL=C sort)

schema=$source_dir/tests/package/cyclonedx/bom-1.6.schema.json
if python3 -c 'import jsonschema' 2> /dev/null || command -v dpkg-query > /dev/null; then
    check 'it is valid' look schema "$sbom" "$schema"
    sed 's/"library"/"libary"/' "$sbom" > wrong.json
    check 'a word that the schema does not have is noticed' refuses look schema wrong.json "$schema"
    sed 's/"expression": "ZPL-2.1"/"license": {"id": "ZPL-2.1.x"}/' "$sbom" > wrong.json
    check 'an identifier that no licence has is noticed' refuses look schema wrong.json "$schema"
else
    echo 'skipped: the schema (there is no jsonschema for Python)'
fi

# All of this does notice.
printf 'x' >> "$kit/bin/tarn.dll"
check 'a changed library is noticed' refuses look files "$sbom" "$kit"
sed 's/ eh_catch\.o/ eh_alloc.o/' "$sbom" > wrong.json
check 'an object that is not in the library is noticed' \
    refuses look objects wrong.json bin/tarn.dll "$kit/bin/tarn.dll.debug" $nm "$gcc_nm" "$build"
sed 's/ eh_throw\.o//' "$sbom" > wrong.json
check 'an object that is missing from the list is noticed' \
    refuses look objects wrong.json bin/tarn.dll "$kit/bin/tarn.dll.debug" $nm "$gcc_nm" "$build"
sed '/^| `libstdc/d' "$kit/THIRD-PARTY.md" > wrong.md
check 'a library that THIRD-PARTY.md lacks is noticed' \
    refuses look table "$sbom" bin/tarn.dll wrong.md
finish
