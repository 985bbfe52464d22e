# shellcheck shell=bash
# package        the kit for installer authors: build/release/tarn-<version>-win64.zip; signed if the
#                environment names a certificate (see cmake/sign.cmake)
[ -z "${TARN_SIGN_PFX:-}${TARN_SIGN_CERT:-}${TARN_SIGN_KEY:-}" ] || need osslsigncode
build release tarn_kit
rm -f build/release/tarn-*-win64.zip*
say 'Packing'
cpack --config build/release/CPackConfig.cmake &> build/package.log ||
    { cat build/package.log >&2; fail 'cannot make the kit'; }
ls -1 build/release/tarn-*-win64.zip
