# shellcheck shell=bash
# Sourced by tests that compile the same again and again; before: build, the build folder, and scratch, where
# the test works. What a compiler made of a source it need not make again: ccache, in the build's own folder,
# tells by the source, its headers, the options and the compiler itself. Without ccache, it is made each time.

: "${build:?}" "${scratch:?}"
export CCACHE_DIR=$build/compiler-cache CCACHE_BASEDIR=$scratch
unset CCACHE_DISABLE CCACHE_NOHASHDIR CCACHE_SLOPPINESS CCACHE_MAXSIZE

# By the compilers' names, before them in the PATH. Not the system's links: they lack the compilers for Windows
# when these are installed together with ccache.
if _ccache=$(command -v ccache); then
    mkdir -p "$CCACHE_DIR/names"
    for _compiler in clang x86_64-w64-mingw32-{gcc,g++}; do
        [ -L "$CCACHE_DIR/names/$_compiler" ] || ln -s "$_ccache" "$CCACHE_DIR/names/$_compiler" 2> /dev/null || true
    done
    PATH=$CCACHE_DIR/names:$PATH
fi
