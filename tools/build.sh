# shellcheck shell=bash
# Sourced by dev: what several of its commands do.

# build PRESET [TARGET]...
build() {
    local preset=$1
    shift
    configure "$preset"
    say "Building $preset"
    cmake --build --preset "$preset" ${1:+--target "$@"}
}

configure() {
    local log=build/configure-$1.log
    mkdir -p build
    cmake --preset "$1" &> "$log" || { cat "$log" >&2; fail "cannot configure $1"; }
}

# start_wine [PRESET] - Wine for the rest of this run; ends with it.
start_wine() {
    TARN_WINE_DIR=$PWD/build/${1:-release}/wine
    # shellcheck source=tools/wine-env.sh
    . tools/wine-env.sh
    trap stop_wine EXIT
    trap 'exit 130' INT TERM HUP
    say 'Starting Wine'
    wine_start
}

# With those beside it that tests had to themselves. At once: each waits for its end most of the time.
stop_wine() {
    local dir main=$TARN_WINE_DIR stopping=()
    for dir in "$main" "$main"-[0-9]*; do
        [ ! -d "$dir" ] || { (TARN_WINE_DIR=$dir && . tools/wine-env.sh && wine_stop) & stopping+=($!); }
    done
    wait "${stopping[@]}"
}

# run_windows PROGRAM [ARGUMENT]... - in the Wine that was started.
run_windows() { bash tools/wine-run.sh "$TARN_WINE_DIR" "$@"; }

windows_path() { printf 'Z:%s\n' "${1//\//\\}"; }
