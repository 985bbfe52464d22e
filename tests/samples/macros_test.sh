#!/bin/bash
# macros_test.sh BUILD_DIR - every macro of tarn.nsh and of tarntool.nsh, in an installer and in its uninstaller.
# With TARN_WIZARD=x86 those of tarntool.nsh in a 32-bit installer, which needs a Wine for it.
set -u
build=$(cd "$1" && pwd) || exit 2
here=$(cd "$(dirname "$0")" && pwd)
# shellcheck source=samples/lib.sh
. "$here/../../samples/lib.sh"
# shellcheck source=tests/samples/probe.sh
. "$here/probe.sh"

x86_dll=/usr/share/nsis/Plugins/x86-unicode/System.dll
macros=$out/macros.exe

compile() { # FILE OPTION...
    local file=$1
    shift
    makensis -V2 -WX -DOUT_FILE="$file" "$@" "$here/macros.nsi"
}

# expected tarn|tarntool
expected() {
    sed -e "$([ "$1" = tarn ] || echo '/^missing:/d; /^32-bit:/d; s/ 1000 characters/ 500 characters/')" << 'EOF'
before Tarn_Init: error
before Tarn_Init: error -1 [] [user@example.com]
before Tarn_Init: error []
before Tarn_Init: error
before Tarn_Init: error
before Tarn_Init: error
missing: The setup library is missing: there is no file C:\no such (folder)\tarn.dll. A virus scanner may have removed it.
32-bit: The setup library cannot be used: C:\Macros\x86.dll is not a 64-bit Windows library.
second Tarn_Init: []
1 -1 [] [user.name@example.com]
0 2 [invalid character in email.] [us er@example.com]
0 9 [invalid character in email.] [user@exa mple.com]
0 -1 [] []
0 0 [invalid character in email.] ["quoted'@example.com]
1 -1 [] 1000 characters
copied: 1
under its own name
copied: 0
chrc: 1
chrc in use: 0
chrc, silently: 1
no folder: 0
queued: 1 "%SystemRoot%\it's.exe" `x` "a b"
wait window: visible 1, afterwards 0
after Tarn_Free: error
again: 1
kept: a0 a1 a2 a3 a4 a5 a6 a7 a8 a9 b9 bottom
EOF
}

# compared NAME LIBRARY SAID: what the macros printed, line by line.
compared() {
    local line said
    exec 3< <(expected "$2") 4<<< "$3"
    while read -r -u 3 line; do
        read -r -u 4 said
        check "$1" "$said" equal "$said" "$line"
    done
    check "$1" 'nothing else' fails read -r -u 4 said
}

# calls LIBRARY OPTION...
calls() {
    local library=$1 said
    shift
    compile "$macros" "$@" || die "macros.nsi cannot be compiled"
    said=$(timeout 120 wine "$macros" /S 2> /dev/null | tr -d '\r')
    compared "$library.nsh, installer" "$library" "$said"
    # With _?= it runs in its place, and not as a copy that nobody waits for.
    said=$(timeout 120 wine 'C:\Macros\uninstall.exe' /S '_?=C:\Macros' 2> /dev/null | tr -d '\r')
    compared "$library.nsh, uninstaller" "$library" "$said"
}

double_byte() { # LETTERS
    local said
    if ! locale -a | grep -qix ja_JP.utf8; then
        echo '  skipped: there is no locale ja_JP.UTF-8'
        return
    fi
    said=$(LC_ALL=ja_JP.UTF-8 timeout 120 wine "$macros" /S /DOUBLE_BYTE 2> /dev/null | tr -d '\r' | paste -sd'|')
    check 'code page 932' "$said" equal "$said" \
        "copied: 1|under its own name|0 -1 [Missing  @  ]|the same $1 letters"
}

# A library that the installer cannot use: a sentence, no crash.
unusable() { # NAME INSTALLER SENTENCE ITS_END
    local name=$1 code installer limit window=''
    local sentence=$3
    timeout 60 wine "$2" /S &> "$out/macros.log"
    code=$?
    check "$name, silent" "exit code $code" equal $code 2

    timeout 60 wine "$2" &> "$out/macros.log" &
    installer=$!
    limit=$((SECONDS + 60))
    until [ -n "$window" ] || [ $SECONDS -ge $limit ]; do
        window=$(probe | grep -o "$sentence.*")
    done
    # A box that has only just appeared may not have the focus yet.
    while kill -0 $installer 2> /dev/null && [ $SECONDS -lt $limit ]; do
        xdotool key Return
        sleep 0.2
    done
    wait $installer
    code=$?
    check "$name, with a user interface" "$window" \
        contains "$window" "$4"
    check "$name, with a user interface" "exit code $code" equal $code 2
}

unusable_dll() { # SCRIPT INSTALLER
    unusable "$1 with a 32-bit tarn.dll" "$2" 'The setup library cannot be used' 'is not a 64-bit Windows library.'
}

# The sample as it lies in the kit; what it makes goes into its own folder.
minimal() {
    local tree=$out/minimal
    rm -rf "$tree"
    mkdir -p "$tree/samples/nsis"
    ln -s "$samples/../nsis" "$tree/nsis"
    cp "$samples/nsis/minimal.nsi" "$tree/samples/nsis"
    makensis -V2 -WX -DTARN_DLL=$x86_dll "$tree/samples/nsis/minimal.nsi" ||
        die "minimal.nsi cannot be compiled"
    unusable_dll minimal.nsi "$tree/samples/nsis/minimal-setup.exe"
}

wrong_target() {
    local said
    said=$(compile "$out/x86.exe" -DX86 -DTARN_DLL="$build/bin/tarn.dll" 2>&1)
    check 'a 32-bit installer is not made' '' absent "$out/x86.exe"
    check 'and makensis says why' "$(grep -o 'tarn.dll is a 64-bit library.*' <<< "$said")" \
        contains "$said" "put 'Target amd64-unicode' at the top of the script"
}

need_tools makensis wine Xvfb xdotool
mkdir -p "$out"
make_tool probe
start_wine
clean_slate 'C:\Macros'
tool=(-DTARNTOOL="$build/bin/tarntool.exe")
broken=(-DINIT_ONLY -DTARNTOOL="$here/macros.nsi")
if [ "${TARN_WIZARD:-}" = x86 ]; then
    tool+=(-DX86)
    broken+=(-DX86)
else
    wrong_target
    calls tarn -DTARN_DLL="$build/bin/tarn.dll"
    double_byte 1000
    compile "$macros" -DINIT_ONLY -DTARN_DLL=$x86_dll || die "macros.nsi cannot be compiled"
    unusable_dll macros.nsi "$macros"
    minimal
fi
calls tarntool "${tool[@]}"
double_byte 500
compile "$macros" "${broken[@]}" || die "macros.nsi cannot be compiled"
unusable 'macros.nsi with a tarntool.exe that is none' "$macros" 'The setup program cannot be started' \
    'It needs 64-bit Windows, and a virus scanner that leaves it alone.'
left=$(temporary_files)
check 'no temporary files are left' "$left" empty "$left"
rm -rf "$(unix 'C:\Macros')"
echo
[ $wrong = 0 ] || { echo "$wrong WRONG"; exit 1; }
echo 'Everything is right.'
