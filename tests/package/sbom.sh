#!/bin/bash
# sbom.cdx.json, held against the files of the kit: hashes, the packages' versions, and the objects by the
# symbols that the binaries have, which is another way than the link map that it was made from.
# shellcheck source=tests/package/lib.sh
. "$(dirname "$0")/lib.sh"
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

# The schema comes from a package of its makers.
schemas=$build/cyclonedx
package=@cyclonedx/cyclonedx-library@10.3.0
integrity=sha512-RIT28sp1U0PCHaaeF3yNRwk6Jig/XJ8UsYAVOMYaHQ+0VVOvsjcp0PTWQFLUqJFF8XMud+Kdq6G+wtDAh+QJFA==
if [ ! -f "$schemas/package/res/schema/bom-1.6.SNAPSHOT.schema.json" ]; then
    mkdir -p "$schemas"
    (cd "$schemas" && npm pack --silent "$package" && tar -xzf cyclonedx-*.tgz) > schema.log 2>&1
fi
if ! python3 -c 'import jsonschema' 2> /dev/null; then
    echo 'skipped: the schema (there is no jsonschema for Python; Debian has it as python3-jsonschema)'
elif [ ! -f "$schemas/package/res/schema/bom-1.6.SNAPSHOT.schema.json" ]; then
    echo "skipped: the schema (npm does not get $package: $(tail -n 1 schema.log))"
else
    check 'the schemas are the ones that were looked at' same "$integrity" \
        "sha512-$(openssl dgst -sha512 -binary "$schemas"/cyclonedx-*.tgz | openssl base64 -A)"
    check 'it is valid' look schema "$sbom" "$schemas/package/res/schema"
    sed 's/"library"/"libary"/' "$sbom" > wrong.json
    check 'a word that the schema does not have is noticed' \
        refuses look schema wrong.json "$schemas/package/res/schema"
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
