#!/bin/bash
# wine-run.sh WINE_DIR PROGRAM [ARGUMENT]... - runs a Windows program in the Wine of a build; see
# wine-env.sh. The exit code is the program's.
set -eu
TARN_WINE_DIR=$1
shift
# shellcheck source=cmake/wine-env.sh
. "$(dirname "$0")/wine-env.sh"
wine_start
exec wine "$@"
