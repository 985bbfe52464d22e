# shellcheck shell=bash
# test [REGEX]   all tests, or those whose names match
build native
build sanitize
build release
start_wine
# All builds' tests in one run, which ends in one summary.
mkdir -p build/test
printf 'subdirs("%s")\n' ../native ../sanitize ../release > build/test/CTestTestfile.cmake
# Many of them wait for most of their time.
ctest --test-dir build/test --output-on-failure --no-tests=error -LE '^installers$' \
    -j $((3 * $(nproc))) --resource-spec-file "$PWD/tests/desktops.json" ${1:+-R "$1"}
