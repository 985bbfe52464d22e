# shellcheck shell=bash
# build          the library and tarntool: build/release/bin/tarn.dll, tarntool.exe
build release tarn tarn_core tarntool
