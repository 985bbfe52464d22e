# shellcheck shell=bash
# coverage       which lines and branches of the library the tests run
log=build/coverage/tests.log
build coverage
find build/coverage -name '*.gcda' -delete
start_wine coverage
say 'Running the tests'
# Not run: tests of the files that are shipped; this library is another build. Those of leaks fail here,
# because the runtime that counts leaves a handle behind each time the library goes: whether tests pass
# is for "test" to say.
ctest --preset coverage -E '^(binary|docs|installers|package|samples|size)\.|Leak|^faults\.Table$' &> "$log" ||
    sed -n '/^The following tests FAILED/,$p' "$log"
tools/coverage.py "$(command -v x86_64-w64-mingw32-gcov-win32 x86_64-w64-mingw32-gcov | head -n 1)" \
    build/coverage .
