#!/bin/bash
# The import library for Visual C++ and the CMake package, tried with what can stand in for Visual C++
# on any system: Clang in its mode and for its target, and its linker's twin from LLVM.
# shellcheck source=tests/package/lib.sh
. "$(dirname "$0")/lib.sh"
need_tools unzip cmake ninja clang lld-link llvm-readobj
unpack_kit
library=$kit/lib/tarn.lib

functions=$(sed -n 's/^int \([A-Za-z_]*\)(.*/\1/p' "$kit/include/tarn.h" | LC_ALL=C sort)
llvm-readobj "$library" > members.txt
check 'one member in the short form for each function' \
    same "$(grep -c '^Format: COFF-import-file' members.txt)" "$(wc -l <<< "$functions")"
check 'each by its name, as a function' same \
    "$(sed -n -e 's/^Symbol: \(__imp_\)\?//p' members.txt | LC_ALL=C sort | uniq -c | sed 's/^ *//')" \
    "$(sed 's/^/2 /' <<< "$functions")"
check 'each of them code' same "$(grep -c '^Type: code' members.txt)" "$(wc -l <<< "$functions")"

# A program without a C runtime, which is not there; the header needs one type of the system's.
mkdir client system
cat > system/windows.h << 'EOF'
typedef struct HWND__ *HWND;
EOF
cat > client/client.c << 'EOF'
#include <tarn.h>
void *volatile all[] = {(void *)CloseWaitDlg, (void *)DoFileOpenDialog, (void *)DoWaitDlgModless,
                        (void *)FileCopy, (void *)PutInRunOnce, (void *)Write_ch_config_File};
int entry(void)
{
    static char address[] = " joe@example.org", message[TARN_EMAIL_MESSAGE_SIZE];
    int i, position = 0;
    for (i = 0; i < 6; ++i)
        if (all[i] == 0)
            return 1;
    if (CloseWaitDlg() != 0 || VerifyEmail(address, &position, message) != 1)
        return 2;
    return address[0] == 'j' && position == TARN_NO_ERROR_POSITION ? 42 : 3;
}
EOF
cat > client/CMakeLists.txt << 'EOF'
cmake_minimum_required(VERSION 3.21)
project(client LANGUAGES C)
find_package(Tarn 1.0 REQUIRED)
add_executable(client client.c)
target_link_libraries(client PRIVATE Tarn::tarn)
add_custom_command(TARGET client POST_BUILD
  COMMAND ${CMAKE_COMMAND} -E copy $<TARGET_RUNTIME_DLLS:client> $<TARGET_FILE_DIR:client>
  COMMAND_EXPAND_LISTS VERBATIM)
EOF
ln -s "$(command -v clang)" clang-cl # the name makes the mode
cat > toolchain.cmake << EOF
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR AMD64)
set(CMAKE_C_COMPILER "$scratch/clang-cl")
set(CMAKE_LINKER lld-link)
set(CMAKE_MT true)
set(CMAKE_RC_COMPILER true)
set(CMAKE_TRY_COMPILE_TARGET_TYPE STATIC_LIBRARY)
set(CMAKE_MSVC_RUNTIME_LIBRARY "")
set(CMAKE_C_STANDARD_LIBRARIES "")
set(CMAKE_C_FLAGS_INIT "/GS- /Zl -imsvc \"$scratch/system\"")
set(CMAKE_EXE_LINKER_FLAGS_INIT "/nodefaultlib /entry:entry /subsystem:console /manifest:no")
EOF
configure() {
    cmake -S client -B "$1" -G Ninja -DCMAKE_BUILD_TYPE=Release \
        "-DCMAKE_TOOLCHAIN_FILE=$scratch/toolchain.cmake" "-DTarn_DIR=$kit/lib/cmake/Tarn"
}
check 'find_package in the mode of Visual C++' configure build
check 'the program is linked' cmake --build build --verbose
check 'with tarn.lib' grep -q 'lib/tarn\.lib' build/build.ninja
check 'and not with the library for MinGW' refuses grep -q 'libtarn\.dll\.a' build/build.ninja
check 'it runs, and the functions do what they should' run 42 build/client.exe

# The same tools do notice a library that lacks a function.

echo 'int Unknown(void); int entry(void) { return Unknown(); }' > client/client.c
links_unknown() {
    cmake --build build > link.log 2>&1 && return 1
    holds link.log 'undefined symbol: Unknown'
}
check 'a function that is not there is noticed' links_unknown

# A kit that has lost a file says so when CMake reads it.
configures_without() {
    mv "$kit/$1" "$kit/$1.away"
    configure "without-$(basename "$1")" > configure.log 2>&1
    local code=$?
    mv "$kit/$1.away" "$kit/$1"
    [ $code != 0 ] && holds configure.log "$1"
}
for file in lib/tarn.lib bin/tarn.dll include/tarn.h; do
    check "a kit without $file is refused" configures_without "$file"
done
finish
