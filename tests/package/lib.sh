# shellcheck shell=bash
# Sourced by the tests of the kit, which are called with the source folder and the build folder.
# Every check is one line of output; the test fails at its end if any of them failed.
set -u -o pipefail
source_dir=$1
build=$2
zips=$build/package-test                        # where the test "package.zip" leaves the zip
kit_name=tarn-$(sed -n 's/^project(tarn VERSION \([0-9.]*\).*/\1/p' "$source_dir/CMakeLists.txt")-win64
# cpack takes an empty one as none; Clang 19 does not.
[ -n "${SOURCE_DATE_EPOCH:-}" ] || unset SOURCE_DATE_EPOCH
unset CMAKE_C_COMPILER_LAUNCHER CMAKE_CXX_COMPILER_LAUNCHER
failures=0

# Elsewhere, so that nothing is found by accident; and with a space and brackets, as in the path of the
# programs on Windows, so that nothing is misquoted.
scratch=$(mktemp -d "${TMPDIR:-/tmp}/Tarn Files (x86).XXXXXX")
trap 'rm -rf "$scratch"' EXIT
cd "$scratch" || exit 1

need_tools() {
    local tool
    for tool; do
        command -v "$tool" > /dev/null || { echo "missing: $tool (./dev test installs it)"; exit 1; }
    done
}

# check WHAT COMMAND... - passes if the command succeeds; shows its output if not.
check() {
    local what=$1
    shift
    if "$@" > "$scratch/check.log" 2>&1; then
        echo "ok    $what"
    else
        echo "FAIL  $what"
        sed 's/^/      | /' "$scratch/check.log" | tail -n 40
        failures=$((failures + 1))
    fi
}

# refuses COMMAND... - the opposite, for check.
refuses() { ! "$@"; }

same() { [ "$1" = "$2" ] || { printf 'is:        %s\nshould be: %s\n' "$1" "$2"; return 1; }; }

# holds FILE TEXT - as a whole or a part of a line.
holds() { grep -qF -- "$2" "$1" || { echo "no \"$2\" in:"; cat "$1"; return 1; }; }

finish() {
    if [ "$failures" != 0 ]; then
        echo "$failures checks failed"
        exit 1
    fi
    exit 0
}

unpack_kit() {
    unzip -q "$zips/$kit_name.zip" || { echo "cannot unpack the kit"; exit 1; }
    # shellcheck disable=SC2034 # used by the tests
    kit=$scratch/$kit_name
}

windows_path() { printf 'Z:%s' "${1//\//\\}"; }

# Where Wine keeps the drive C of the programs that run starts.
drive_c() {
    (
        TARN_WINE_DIR=$build/wine
        # shellcheck source=tools/wine-env.sh
        . "$source_dir/tools/wine-env.sh"
        echo "$WINEPREFIX/drive_c"
    )
}

# run EXIT_CODE PROGRAM [ARGUMENT]... - for check; runs it under Wine and leaves the output in the files
# out and err, without carriage returns.
run() {
    local expected=$1 code=0
    shift
    (
        TARN_WINE_DIR=$build/wine
        # shellcheck source=tools/wine-env.sh
        . "$source_dir/tools/wine-env.sh"
        wine_start && exec timeout 60 wine "$@"
    ) > out.raw 2> err.raw < /dev/null || code=$?
    tr -d '\r' < out.raw > out
    tr -d '\r' < err.raw > err
    [ "$code" = "$expected" ] || { echo "exit code $code, expected $expected"; cat out err; return 1; }
}
