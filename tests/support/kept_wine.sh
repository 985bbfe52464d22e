# shellcheck shell=bash
# Sourced by tests that run programs as another user, each in a new Wine of that user's. To make one takes
# seconds, so it is kept as it was made, and the next ones are copies.
#
# Before: kept_wine, the folder where it is kept, which need not exist; tools, the folder of wine-env.sh
#
#   take_kept_wine DIR   before wine_start: DIR becomes a copy, if there is one; wine_start makes it anew where
#                        that does not fit
#   keep_wine DIR        after wine_start, before any program changes something

: "${kept_wine:?}" "${tools:?}"

take_kept_wine() { _with_kept_wine wine_copy_prefix "$kept_wine" "$1"; }

keep_wine() { _with_kept_wine _keep_wine "$1"; }

_keep_wine() {
    ! cmp -s "$1/stamp" "$kept_wine/stamp" || return 0
    rm -rf "$kept_wine" "$kept_wine.new"
    mkdir "$kept_wine.new"
    wine_copy_prefix "$1" "$kept_wine.new"
    mv "$kept_wine.new" "$kept_wine"
}

# Tests run at the same time. In a shell of its own, which Wine's environment is for.
_with_kept_wine() {
    (
        TARN_WINE_DIR=$kept_wine
        # shellcheck source=tools/wine-env.sh
        . "$tools/wine-env.sh"
        flock 8
        "$@"
    ) 8> "$kept_wine.lock"
}
