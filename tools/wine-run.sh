#!/bin/bash
# wine-run.sh WINE_DIR PROGRAM [ARGUMENT]... - runs a Windows program in the Wine of a build; see
# wine-env.sh. The exit code is the program's.
set -u
TARN_WINE_DIR=$1
shift
# shellcheck source=tools/wine-env.sh
. "${BASH_SOURCE[0]%/*}/wine-env.sh"
wine_start || exit

# Through a file: Wine's own background processes keep the descriptors of the program that happened to
# start them, and whoever reads a pipe to its end would wait for those, too.
out=$(mktemp "$TARN_WINE_DIR/output.XXXXXX") || exit
# A program that overflows its stack ends with exit code 0 under Wine. GoogleTest keeps this file for as
# long as its tests run: one that is left tells of a program that did not come to its end.
running=$out.running
trap 'rm -f "$out" "$running"' EXIT
export TEST_PREMATURE_EXIT_FILE=Z:${running//\//\\}
wine "$@" > "$out" 2>&1 < /dev/null &
program=$!
tail -c +1 -f -s 0.05 --pid="$program" "$out" &
wait "$program"
rc=$?
wait
# Nor did one whose files are gone: somebody has stopped this Wine.
if [ -e "$running" ] || [ ! -e "$out" ]; then
    echo "wine-run.sh: the tests did not come to their end (exit code $rc)"
    [ "$rc" != 0 ] || rc=1
fi
exit "$rc"
