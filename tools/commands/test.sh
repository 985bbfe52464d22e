# shellcheck shell=bash
# test [--compiler clang] [REGEX]
#                all tests, or those whose names match; of what Clang makes of the library instead of GCC
preset=release
if [ "${1:-}" = --compiler ]; then
    [ "${2:-}" = clang ] || fail 'usage: ./dev test [--compiler clang] [REGEX]'
    preset=release-clang
    shift 2
fi
build native
build sanitize
build "$preset"
export TARN_SHARED_PROCESSOR=yes
TARN_ALL_PROCESSORS=yes start_wine "$preset"
# All builds' tests in one run, which ends in one summary.
mkdir -p build/test
printf 'subdirs("%s")\n' ../native ../sanitize "../$preset" > build/test/CTestTestfile.cmake
# Many of them wait for most of their time.
ctest --test-dir build/test --output-on-failure --no-tests=error -LE '^installers$' \
    -j $((3 * $(nproc))) --resource-spec-file "$PWD/tests/desktops.json" ${1:+-R "$1"}
