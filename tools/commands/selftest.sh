# shellcheck shell=bash
# selftest [PART]...
#                packs the self-test for Windows and runs it as people get it, in a new Wine by a user
#                without rights: all programs, or those whose names have one of the parts
build release tarn_kit tarn_selftest
say 'Packing'
cpack --config build/release/CPackConfig.cmake -B build/release/package-test &> build/package.log ||
    { cat build/package.log >&2; fail 'cannot make the kit'; }
say 'Running'
bash tests/selftest/zip.sh "$PWD" "$PWD/build/release" "${@:-all}"
