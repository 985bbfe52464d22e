# shellcheck shell=bash
# build          the library: build/release/bin/tarn.dll
build release tarn tarn_core
