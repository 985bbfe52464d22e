#!/bin/bash
# Builds every sample from the unpacked kit alone, and runs them.
# shellcheck source=tests/package/lib.sh
. "$(dirname "$0")/lib.sh"
need_tools unzip cmake ninja makensis clang pkg-config x86_64-w64-mingw32-gcc x86_64-w64-mingw32-g++
nsis_plugins=/usr/share/nsis/Plugins
unpack_kit
# shellcheck source=tests/support/compiler_cache.sh
. "$source_dir/tests/support/compiler_cache.sh"

cross=(-G Ninja -DCMAKE_BUILD_TYPE=Release -DCMAKE_SYSTEM_NAME=Windows
    -DCMAKE_C_COMPILER=x86_64-w64-mingw32-gcc -DCMAKE_CXX_COMPILER=x86_64-w64-mingw32-g++)
strict='-Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror'
check 'the C sample configures' cmake -S "$kit/samples/c" -B c "${cross[@]}" "-DCMAKE_C_FLAGS=$strict"
check 'the C sample builds' cmake --build c
check 'the C++ sample configures' \
    cmake -S "$kit/samples/cpp" -B cpp "${cross[@]}" "-DCMAKE_CXX_FLAGS=$strict"
check 'the C++ sample builds' cmake --build cpp

# The way of most projects that build for Windows elsewhere: a toolchain file that keeps everything but
# programs below the compiler's own root.
cat > toolchain.cmake << 'EOF'
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_C_COMPILER x86_64-w64-mingw32-gcc)
set(CMAKE_CXX_COMPILER x86_64-w64-mingw32-g++)
set(CMAKE_FIND_ROOT_PATH /usr/x86_64-w64-mingw32)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
EOF
toolchain=(-G Ninja -DCMAKE_BUILD_TYPE=Release "-DCMAKE_TOOLCHAIN_FILE=$scratch/toolchain.cmake")
for sample in c cpp; do
    check "with a toolchain file: samples/$sample configures" \
        cmake -S "$kit/samples/$sample" -B "toolchain-$sample" "${toolchain[@]}"
    check "with a toolchain file: samples/$sample builds" cmake --build "toolchain-$sample"
done
mkdir client
cat > client/CMakeLists.txt << 'EOF'
cmake_minimum_required(VERSION 3.21)
project(client LANGUAGES C)
find_package(Tarn 1.0 REQUIRED)
add_executable(client client.c)
target_link_libraries(client PRIVATE Tarn::tarn)
EOF
printf '#include <tarn.h>\nint main(void) { return CloseWaitDlg(); }\n' > client/client.c
check 'with a toolchain file: another project finds the kit by Tarn_DIR' \
    cmake -S client -B client/build "${toolchain[@]}" "-DTarn_DIR=$kit/lib/cmake/Tarn"
check 'with a toolchain file: it is linked' cmake --build client/build
check 'with a toolchain file: without the kit it is refused' \
    refuses cmake -S client -B client/none "${toolchain[@]}"

# pkg-config puts a backslash before a space, but not before brackets: its output is no text for a shell.
with_pkg_config() {
    PKG_CONFIG_LIBDIR=$kit/lib/pkgconfig pkg-config --cflags --libs tarn |
        xargs x86_64-w64-mingw32-gcc client/client.c -o client/client.exe
}
check 'pkg-config: a program is compiled and linked' with_pkg_config
x86_64-w64-mingw32-objdump -p client/client.exe > client/imports.txt
check 'pkg-config: it needs the library' holds client/imports.txt 'DLL Name: tarn.dll'
check 'pkg-config: the version is that of the kit' same \
    "tarn-$(PKG_CONFIG_LIBDIR=$kit/lib/pkgconfig pkg-config --modversion tarn)-win64" "$kit_name"

check 'the NSIS sample builds' makensis -V2 -WX "$kit/samples/nsis/minimal.nsi"
check 'the wizard builds' makensis -V2 -WX "$kit/samples/wizard/wizard.nsi"

# The kit is put away: what was built has all it needs.
put_away="$scratch/put away"
mv "$kit" "$put_away"
mv "$put_away/samples/nsis/minimal-setup.exe" "$put_away/samples/wizard/lakeside-setup.exe" .
minimal=$scratch/minimal-setup.exe

echo 'first' > 'one file.txt'
echo 'second' > two.txt
here=$(windows_path "$scratch")

# chrc is there and names the folder that it was written for, in the way of a text in C.
installed_config() {
    holds "$1/embedch/config/chrc" "_ipath = stradd(_ipath, \"${2//\\/\\\\}\\\\embedch\\\\include;\");"
}

# ---- C, linked with the import library
setup=c/setup.exe
check 'C: installs' run 0 $setup ' joe@example.org ' "$here\\c out" 'one file.txt' two.txt
check 'C: says what it copied' same "$(cat out)" "copied one file.txt
copied two.txt
wrote $here\\c out\\embedch\\config\\chrc"
check 'C: the first file is there' cmp 'one file.txt' 'c out/one file.txt'
check 'C: the second file is there' cmp two.txt 'c out/two.txt'
check 'C: the interpreter is set up' installed_config 'c out' "$here\\c out"
check 'C: refuses an address' run 2 $setup 'a,b@example.org' "$here\\none" two.txt
check 'C: shows the fault before the @' same "$(cat err)" 'setup: invalid character in email.
  a,b@example.org
   ^'
check 'C: refuses a domain' run 2 $setup 'joe@exam!ple.org' "$here\\none" two.txt
check 'C: shows the fault behind the @' same "$(cat err)" 'setup: invalid character in email.
  joe@exam!ple.org
          ^'
check 'C: refuses an empty address' run 2 $setup ' ' "$here\\none" two.txt
check 'C: shows no place then' same "$(cat err)" 'setup: The address is empty.
  '
check 'C: installs nothing then' refuses test -e none
check 'C: a file that is missing' run 3 $setup joe@example.org "$here\\c out" missing.txt
check 'C: names it' holds err "cannot copy missing.txt to $here\\c out\\"
check 'C: no arguments' run 1 $setup
check 'C: shows how to call it' holds err 'usage: setup ADDRESS FOLDER FILE...'

mkdir bare
cp c/setup.exe bare
export WINEDEBUG=err+module # the message that Windows shows in a box
check 'C: without the library it does not start' run 53 bare/setup.exe joe@example.org none two.txt
check 'C: the system names the library' holds err 'Library tarn.dll'
cp $nsis_plugins/x86-unicode/System.dll bare/tarn.dll
check 'C: with a 32-bit library it does not start' run 53 bare/setup.exe joe@example.org none two.txt
check 'C: the system names it, too' holds err 'library tarn.dll'
export WINEDEBUG=-all

# ---- C++, loading the library
tool=cpp/loader.exe
check 'C++: accepts an address' run 0 $tool check '  joe@example.org '
check 'C++: shows it trimmed' same "$(cat out)" 'accepted: joe@example.org'
check 'C++: refuses an address' run 2 $tool check joe@example
check 'C++: shows message and position' same "$(cat out)" 'refused: joe@example
  message:  Invalid Domain name.
  position: 4'
mkdir -p 'cpp out/embedch/config'
check 'C++: copies' run 0 $tool copy "$here\\cpp out" 'one file.txt' two.txt
check 'C++: the first file is there' cmp 'one file.txt' 'cpp out/one file.txt'
check 'C++: the second file is there' cmp two.txt 'cpp out/two.txt'
check 'C++: a folder that is missing' run 2 $tool copy "$here\\none" two.txt
check 'C++: names it' holds err "cannot copy two.txt to $here\\none\\"
check 'C++: sets up the interpreter' run 0 $tool config "$here\\cpp out"
check 'C++: with this folder' installed_config 'cpp out' "$here\\cpp out"
run_once='HKCU\Software\Microsoft\Windows\CurrentVersion\RunOnce'
check 'C++: queues a command' run 0 $tool runonce TarnKitTest 'notepad.exe "a b"'
check 'C++: the registry holds it' run 0 reg query "$run_once" /v TarnKitTest
check 'C++: as it was given' holds out 'notepad.exe "a b"'
run 0 reg delete "$run_once" /v TarnKitTest /f > /dev/null
check 'C++: shows the wait window' run 0 $tool wait 200 'One moment'
check 'C++: no arguments' run 1 $tool
check 'C++: shows how to call it' holds err 'usage: loader'

# Not usable: no crash, the file, and why.
unusable() {
    local file=$1 reason=$2
    run 3 $tool --library "$file" check joe@example.org || return
    holds err "$(windows_path "$(realpath -m "$file")")" && holds err "$reason"
}
check 'C++: a library that is missing' unusable none/tarn.dll 'there is no such file (Windows error 126)'
check 'C++: a folder' unusable none 'there is no such file'
check 'C++: a text' unusable two.txt 'not a library for 64-bit Windows on x86-64'
check 'C++: a 32-bit library' \
    unusable $nsis_plugins/x86-unicode/System.dll 'not a library for 64-bit Windows on x86-64'
check 'C++: another 64-bit library' \
    unusable $nsis_plugins/amd64-unicode/System.dll 'has no function VerifyEmail'
rm cpp/tarn.dll
check 'C++: without the library beside it' run 3 $tool check joe@example.org
check 'C++: names the file' holds err "$here\\cpp\\tarn.dll: there is no such file"

# ---- NSIS, in a folder without a space: Wine would put quotes around it, which NSIS does not take
nsis_out=$(drive_c)/tarn-kit-test
rm -rf "$nsis_out"
check 'NSIS: installs' run 0 "$minimal" /S /EMAIL=joe@example.org '/D=C:\tarn-kit-test'
check 'NSIS: the file is there' cmp "$put_away/samples/nsis/minimal.nsi" "$nsis_out/minimal.nsi"
check 'NSIS: the interpreter is set up' installed_config "$nsis_out" 'C:\tarn-kit-test'
check 'NSIS: the uninstaller runs' run 0 'C:\tarn-kit-test\uninstall.exe' /S
gone() {
    local i
    for ((i = 0; i < 100; i++)); do # it goes on in a copy of itself
        [ -e "$1" ] || return 0
        sleep 0.1
    done
    find "$1"
    return 1
}
check 'NSIS: nothing is left of it' gone "$nsis_out"
check 'NSIS: refuses an address' run 3 "$minimal" /S /EMAIL=joe@example '/D=C:\tarn-kit-test'
check 'NSIS: installs nothing then' refuses test -e "$nsis_out"
mkdir -p "$nsis_out/embedch/config/chrc"
check 'NSIS: files that cannot be written' run 4 "$minimal" /S /EMAIL=joe@example.org '/D=C:\tarn-kit-test'
rm -rf "$nsis_out"

# ---- The wizard, with nobody there; tests/samples drives it with a user
tree=$put_away/samples/product/tree
check 'wizard: installs' run 0 ./lakeside-setup.exe /S /EMAIL=joe@example.org '/D=C:\tarn-kit-test'
check 'wizard: every file is there' same \
    "$(cd "$tree" && find . -type f -exec cmp {} "$nsis_out/{}" \; 2>&1; find . -type f | wc -l)" \
    "$(find "$tree" -type f | wc -l)"
check 'wizard: its program runs' run 0 'C:\tarn-kit-test\bin\lakeside.exe' --first-run
check 'wizard: and finds its parts' holds out 'Welcome to Lakeside Workbench.'
check 'wizard: the uninstaller runs' run 0 'C:\tarn-kit-test\uninstall.exe' /S
check 'wizard: nothing is left of it' gone "$nsis_out"

# ---- Hosts that the library is not for
no_host() {
    local target=$1 source=$2
    if clang "--target=$target" -isystem /usr/x86_64-w64-mingw32/include "-I$put_away/include" \
        -fsyntax-only "$put_away/samples/$source" 2> host.log; then
        echo 'it compiles'
        return 1
    fi
    holds host.log 'tarn.dll is a library for 64-bit Windows on x86-64: build this program for x64'
}
check 'C: a 32-bit host is refused when it is compiled' no_host i686-w64-mingw32 c/setup.c
check 'C: so is one for ARM' no_host aarch64-w64-mingw32 c/setup.c
check 'C++: a 32-bit host is refused when it is compiled' no_host i686-w64-mingw32 cpp/loader.cpp
sed 's/^Target amd64-unicode/Target x86-unicode/' "$put_away/samples/nsis/minimal.nsi" \
    > "$put_away/samples/nsis/x86.nsi"
no_nsis_host() {
    makensis -V2 "$put_away/samples/nsis/x86.nsi" > host.log 2>&1 && return 1
    holds host.log 'tarn.dll is a 64-bit library'
}
check 'NSIS: a 32-bit installer is refused when it is made' no_nsis_host
no_linux() {
    cmake -S "$put_away/samples/c" -B linux -G Ninja > host.log 2>&1 && return 1
    holds host.log 'tarn.dll is for Windows x86-64'
}
check 'CMake: a build for another system is refused' no_linux
finish
