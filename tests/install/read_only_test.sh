#!/bin/bash
# read_only_test.sh WINE_DIR [PROGRAM]... - runs what the programs test of read-only files, of a folder
# that may not be written to and of a file that may not be read, as a user whom these bind. They do not
# bind root, for whom a prefix of another user's is made. Without a program it only starts Wine.
set -eu -o pipefail
here=$(cd "$(dirname "$0")" && pwd)
tools=$here/../../tools
nobody=65534

if [ "$(id -u)" = 0 ]; then
    if ! command -v setpriv > /dev/null; then
        echo '== SKIPPED: running as root, and no setpriv to become somebody else'
        exit 77
    fi
    kept_wine=$1-nobody
    shift
    # shellcheck source=tests/support/kept_wine.sh
    . "$here/../support/kept_wine.sh"
    # That user need not be able to look into the build.
    work=$(mktemp -d)
    trap 'rm -rf "$work"' EXIT
    mkdir -p "$work/tests/install" "$work"/{tools,bin,tmp,wine}
    dll=${TARN_DLL#?:}
    cp "${dll//\\//}" "$@" "$work/bin"
    cp "$tools/wine-env.sh" "$tools/wine-run.sh" "$work/tools"
    cp "$0" "$work/tests/install"
    take_kept_wine "$work/wine"
    chown -R "$nobody:$nobody" "$work"
    programs=()
    for program; do
        programs+=("$work/bin/$(basename "$program")")
    done
    cd "$work"
    as_nobody() {
        setpriv --reuid="$nobody" --regid="$nobody" --clear-groups \
            env -u XDG_RUNTIME_DIR -u DISPLAY HOME="$work" USER=nobody TMPDIR="$work/tmp" \
            TARN_DLL="Z:${work//\//\\}\\bin\\tarn.dll" TARN_STOP_WINE=1 \
            bash "$work/tests/install/$(basename "$0")" "$work/wine" "$@"
    }
    as_nobody
    keep_wine "$work/wine"
    as_nobody "${programs[@]}"
    exit
fi

TARN_WINE_DIR=$1
shift
# shellcheck source=tools/wine-env.sh
. "$tools/wine-env.sh"
if [ $# = 0 ]; then
    wine_start
    exit
fi
output=$(mktemp)
denied=$(mktemp -d)
cleanup() {
    [ -z "${TARN_STOP_WINE:-}" ] || wine_stop
    chmod -R u+w "$denied"
    rm -rf "$output" "$denied"
}
trap cleanup EXIT
mkdir -p "$denied/folder/embedch/config"
echo text > "$denied/file.txt"
chmod -R a-w "$denied/folder"
chmod 000 "$denied/file.txt"
export TARN_DENIED_FOLDER=Z:${denied//\//\\}\\folder TARN_DENIED_FILE=Z:${denied//\//\\}\\file.txt
for program; do
    rc=0
    bash "$tools/wine-run.sh" "$TARN_WINE_DIR" "$program" --gtest_filter='*ReadOnly*:*MayNot*' \
        > "$output" 2>&1 || rc=$?
    cat "$output"
    [ "$rc" = 0 ]
    # A test that was skipped would pass, too.
    grep -q '^\[  PASSED  \] [1-9]' "$output"
    ! grep -q '^\[  SKIPPED \]' "$output" || exit 1
done
