#!/bin/bash
# Makes the zip, which the other tests of the kit unpack, and looks at what is in it.
# shellcheck source=tests/package/lib.sh
. "$(dirname "$0")/lib.sh"
need_tools cpack unzip zipinfo gdb strings perl

rm -rf "$zips"
check 'cpack makes the zip' cpack --config "$build/CPackConfig.cmake" -B "$zips"
rm -rf "$zips/_CPack_Packages"
unpack_kit

check 'its checksum is right' env -C "$zips" sha256sum --check --quiet "$kit_name.zip.sha256"
check 'it holds one folder, named like the zip' \
    same "$(zipinfo -1 "$zips/$kit_name.zip" | cut -d/ -f1 | sort -u)" "$kit_name"

# The pages for users may grow by themselves, and the product that the sample installs is one file more or
# less; everything else is listed here.
check 'it holds exactly these files' same "$(cd "$kit" && find . -type f ! -path './docs/*' \
    ! -path './samples/product/tree/*' | LC_ALL=C sort)" "$(cat << 'EOF'
./CHANGELOG.md
./LICENSE
./README.md
./SECURITY.md
./THIRD-PARTY.md
./bin/tarn.dll
./bin/tarn.dll.debug
./bin/tarntool.exe
./bin/tarntool.exe.debug
./include/tarn.h
./lib/cmake/Tarn/TarnConfig.cmake
./lib/cmake/Tarn/TarnConfigVersion.cmake
./lib/cmake/Tarn/TarnTargets.cmake
./lib/libtarn.dll.a
./lib/pkgconfig/tarn.pc
./lib/tarn.lib
./nsis/tarn-fault.nsh
./nsis/tarn.nsh
./nsis/tarntool.nsh
./samples/c/CMakeLists.txt
./samples/c/setup.c
./samples/cpp/CMakeLists.txt
./samples/cpp/loader.cpp
./samples/csharp/Tarn.cs
./samples/delphi/Tarn.pas
./samples/go/go.mod
./samples/go/setup.go
./samples/go/tarn.go
./samples/inno/lakeside.iss
./samples/inno/tarntool.iss
./samples/inno7/tarn.iss
./samples/msi/actions.sql
./samples/msi/lakeside-wix4.wxs
./samples/msi/lakeside.wxs
./samples/msi/make.sh
./samples/node/package.json
./samples/node/setup.js
./samples/node/tarn.js
./samples/nsis/minimal.nsi
./samples/product/lakeside.c
./samples/product/product.nsh
./samples/rust/setup.rs
./samples/rust/tarn.rs
./samples/wizard/art/header.bmp
./samples/wizard/art/remove.ico
./samples/wizard/art/setup.ico
./samples/wizard/art/side.bmp
./samples/wizard/art/small.bmp
./samples/wizard/wizard.nsi
./sbom.cdx.json
EOF
)"
check 'it holds the pages for users' same "$(cd "$kit" && find docs -type f | LC_ALL=C sort)" \
    "$(cd "$source_dir" && find docs -type f | LC_ALL=C sort)"
check 'its README is its own, and leads to its own pages' \
    cmp "$kit/README.md" <(sed 's:](\.\./:](:g' "$source_dir/kit/README.md")

check 'cmake --install copies' cmake --install "$build" --prefix "$scratch/installed"
find installed -type d -empty -delete # the zip holds files only
check 'cmake --install and the zip are the same' diff -r "$kit" "$scratch/installed"

if [ -z "${SOURCE_DATE_EPOCH:-}" ] && commit_date=$(TZ=UTC git -C "$source_dir" log -1 --format=%cd \
    --date=format-local:%Y%m%d.%H%M 2> /dev/null); then
    check 'every file has the date of the commit' same \
        "$(zipinfo -T "$zips/$kit_name.zip" | awk '/^-/ { print substr($7, 1, 13) }' | sort -u)" \
        "$commit_date"
fi

# The library
headers_say() { perl "$source_dir/tests/support/portable_executable.pl" "$@"; }
check 'the library exports what the header declares' \
    same "$(headers_say exports "$kit/bin/tarn.dll" | LC_ALL=C sort)" \
    "$(sed -n 's/^int \([A-Za-z_]*\)(.*/\1/p' "$kit/include/tarn.h" | LC_ALL=C sort)"
check 'the library holds no symbols' same "$(headers_say symbols "$kit/bin/tarn.dll")" 0
check 'the file of the symbols does' refuses same "$(headers_say symbols "$kit/bin/tarn.dll.debug")" 0
no_path() {
    local path
    for path in "$source_dir" "$build" /build/ /home/ /root/ /tmp/ /usr/; do
        strings -a "$1" | grep -F "$path" && return 1
    done
    return 0
}
check 'the library holds no path of the machine that built it' no_path "$kit/bin/tarn.dll"
check 'nor does tarntool' no_path "$kit/bin/tarntool.exe"
no_own_path() { strings -a "$1" | grep -F -e "$source_dir" -e "$build" && return 1; return 0; }
check 'nor do the symbols' no_own_path "$kit/bin/tarn.dll.debug"
check 'of either' no_own_path "$kit/bin/tarntool.exe.debug"
check 'tarntool has a version, that of the kit' \
    holds <(strings -a -e l "$kit/bin/tarntool.exe") "$(sed 's/^tarn-\(.*\)-win64$/\1/' <<< "$kit_name")"
check 'nor does the CMake package' refuses grep -rF -e "$source_dir" -e "$build" "$kit/lib/cmake"

# The symbols
ask_gdb() { gdb -batch -nx -ex 'info line VerifyEmail' -ex 'ptype CString' "$1" > gdb.log 2>&1; }
ask_gdb "$kit/bin/tarn.dll"
check 'gdb finds the lines of a function' holds gdb.log 'validate/VerifyEmail.cpp'
check 'gdb finds the types' holds gdb.log 'CString {'
mkdir alone
cp "$kit/bin/tarn.dll" alone
ask_gdb alone/tarn.dll
check 'the symbols are in their own file only' refuses holds gdb.log 'VerifyEmail.cpp'
finish
