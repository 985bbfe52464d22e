# shellcheck shell=bash
# run            makes a sample installer that uses the library, runs it, reports what came of it
build release tarn
# In a Wine of its own: with --show on this machine's display.
samples/run.sh build/release "$@"
