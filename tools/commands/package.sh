# shellcheck shell=bash
# package        the kit for installer authors: build/release/tarn-<version>-win64.zip; signed if the
#                environment names a certificate (see cmake/sign.cmake); and the self-test for Windows
#                with the kit's library: build/release/tarn-<version>-selftest-win64.zip
[ -z "${TARN_SIGN_PFX:-}${TARN_SIGN_CERT:-}${TARN_SIGN_KEY:-}" ] || need osslsigncode
build release tarn_kit tarn_selftest
rm -f build/release/tarn-*-win64.zip*
say 'Packing'
cpack --config build/release/CPackConfig.cmake &> build/package.log ||
    { cat build/package.log >&2; fail 'cannot make the kit'; }
cmake -P build/release/pack-selftest.cmake &> build/package.log ||
    { cat build/package.log >&2; fail 'cannot make the self-test'; }
ls -1 build/release/tarn-*-win64.zip
