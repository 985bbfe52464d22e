#!/bin/bash
# The kit's header compiles under strict warnings, in every language version, with both compilers.
# shellcheck source=tests/package/lib.sh
. "$(dirname "$0")/lib.sh"
need_tools unzip clang x86_64-w64-mingw32-gcc x86_64-w64-mingw32-g++
unpack_kit
# shellcheck source=tests/support/compiler_cache.sh
. "$source_dir/tests/support/compiler_cache.sh"
clang=(clang --target=x86_64-w64-mingw32 -isystem /usr/x86_64-w64-mingw32/include)

# The header comes first, so that it is seen to stand alone, and twice.
cat > client.c << 'EOF'
#include <tarn.h>
#include <tarn.h>

int use(HWND, char *, int *);

int use(HWND window, char *text, int *position)
{
    return DoWaitDlgModless(window, text, text) + CloseWaitDlg() +
           DoFileOpenDialog(text, text, text, text, text) + FileCopy(text, text) +
           PutInRunOnce(text, text) + VerifyEmail(text, position, text) + Write_ch_config_File(text);
}
EOF
cp client.c client.cpp

strict=(-Werror -Wall -Wextra -Wpedantic -pedantic-errors -Wconversion -Wsign-conversion -Wshadow
    -Wundef -Wcast-qual -Wcast-align -Wredundant-decls -Wmissing-declarations -Wdouble-promotion)
strict_c=(-Wstrict-prototypes -Wmissing-prototypes -Wold-style-definition)
strict_cpp=(-Wold-style-cast -Wnon-virtual-dtor -Woverloaded-virtual)

# -I, not -isystem: warnings about a system header would not be shown.
compile() {
    local compiler=$1 standard=$2 include=${3:-$kit/include} source=client.c options=("${@:4}")
    case $standard in
    c++*) source=client.cpp options+=("${strict[@]}" "${strict_cpp[@]}") ;;
    *) options+=("${strict[@]}" "${strict_c[@]}") ;;
    esac
    case $compiler in
    gcc)
        case $standard in
        c++*) x86_64-w64-mingw32-g++ "-std=$standard" "${options[@]}" "-I$include" -c $source -o gcc.o ;;
        *) x86_64-w64-mingw32-gcc "-std=$standard" "${options[@]}" "-I$include" -c $source -o gcc.o ;;
        esac
        ;;
    clang) "${clang[@]}" "-std=$standard" "${options[@]}" "-I$include" -c $source -o clang.o ;;
    esac
}

for compiler in gcc clang; do
    for standard in c90 c99 c11 c++98 c++17; do
        check "$compiler, $standard" compile $compiler $standard
    done
    # From the last one, C++: the names are those of C.
    check "$compiler: functions have C linkage in C++" \
        same "$(x86_64-w64-mingw32-nm $compiler.o | sed -n 's/.* U //p' | LC_ALL=C sort)" \
        "$(sed -n 's/^int \([A-Za-z_]*\)(.*/\1/p' "$kit/include/tarn.h" | LC_ALL=C sort)"
done
# Everything that Clang knows, except which features of C++ old compilers lack.
check 'clang, every warning, C' "${clang[@]}" -std=c90 -Weverything -Werror \
    "-I$kit/include" -c client.c -o all.o
check 'clang, every warning, C++' "${clang[@]}" -std=c++17 -Weverything -Werror \
    -Wno-c++98-compat -Wno-c++98-compat-pedantic "-I$kit/include" -c client.cpp -o all.o

# What the header says in comments about sizes is what its macros say.
cat > sizes.c << 'EOF'
#include <tarn.h>
typedef char message_size[TARN_EMAIL_MESSAGE_SIZE == 72 + 1 ? 1 : -1];
typedef char path_size[TARN_OPEN_PATH_SIZE == MAX_PATH ? 1 : -1];
typedef char no_position[TARN_NO_ERROR_POSITION == -1 ? 1 : -1];
EOF
check 'the sizes are as documented' x86_64-w64-mingw32-gcc "-I$kit/include" -c sizes.c -o sizes.o

# These must not compile, for the reason named: the checks above would notice such a header.
mkdir wrong
fails_with() {
    local text=$1
    shift
    if CCACHE_DISABLE=1 "$@" 2> fails.log; then # what fails is not kept
        echo 'it compiles'
        return 1
    fi
    holds fails.log "$text"
}
wrong() {
    local what=$1 compiler=$2 standard=$3 line=$4 reason=$5
    sed "/^#define TARN_H_INCLUDED/a $line" "$kit/include/tarn.h" > wrong/tarn.h
    # At the first fault, before all that the system's headers hold.
    check "noticed: $what ($compiler, $standard)" \
        fails_with "$reason" compile "$compiler" "$standard" wrong -Wfatal-errors
}
for compiler in gcc clang; do
    wrong 'a comment of C++' $compiler c90 '// comment' comment
    wrong 'a declaration without a prototype' $compiler c11 'int f();' strict-prototypes
    wrong 'a cast of C' $compiler c++17 'static const char* const text = (const char*)0;' old-style-cast
    wrong 'a word of C++ 11' $compiler c++98 'static const void* const none = nullptr;' nullptr
done
finish
