#!/bin/bash
# no_display_test.sh SOURCE_DIR BUILD_DIR - "wait" where no window can be made: Wine without a display.
set -u
source=$1
tool=$2/bin/tarntool.exe
work=$2/no-display
mkdir -p "$work"
export TARN_WINE_DIR=$work/wine
# shellcheck source=tools/wine-env.sh
. "$source/tools/wine-env.sh"
trap wine_stop EXIT
wine_start || exit 1
# The desktop, too, must be one without a display.
wine_stop
unset DISPLAY
timeout 120 wine "$tool" wait --id one > "$work/out" 2> "$work/err"
code=$?
said=$(tr -d '\r' < "$work/err" | grep '^tarntool: ') # Wine may have a word of its own before
timeout 60 wine "$tool" "done" --id one &> /dev/null
ended=$?
if [ $code = 107 ] && [ "${said#tarntool: the wait window cannot be shown: }" != "$said" ] && [ $ended = 105 ]; then
    echo "ok: $said"
else
    echo "FAILED: wait $code, done $ended: $said"
    exit 1
fi
