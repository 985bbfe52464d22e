#!/bin/bash
# unattended_test.sh BUILD_DIR - the sample installer with nobody at the keyboard: what it refuses, what
# it does when files cannot be written, and what its uninstaller leaves.
set -u
build=$(cd "$1" && pwd) || exit 2
# shellcheck source=samples/lib.sh
. "$(dirname "$0")/../../samples/lib.sh"
# shellcheck source=tests/samples/hold.sh
. "$(dirname "$0")/hold.sh"

folder='C:\Lakeside unattended'
x86_dll=/usr/share/nsis/Plugins/x86-unicode/System.dll
said=
code=

# run PROGRAM ARGUMENT... : sets code and said.
run() {
    said=$(timeout 120 wine "$@" 2> /dev/null | tr -d '\r'; exit "${PIPESTATUS[0]}")
    code=$?
}

# ended CODE TEXT: the run ended with the code, and said the text.
ended() {
    check "  exit code $1" "$code" equal "$code" "$1"
    check '  it says why' "$(tail -n 1 <<< "$said")" contains "$said" "$2"
}

uninstall() {
    run "$1\\uninstall.exe" /S
    local limit=$((SECONDS + 30))
    while [ -e "$(unix "$1\\uninstall.exe")" ] && [ $SECONDS -lt $limit ]; do
        sleep 0.05
    done
}

nothing_left() {
    local left limit=$((SECONDS + 30))
    # The uninstaller runs by itself, and removes the folder after its own file.
    while [ -e "$(unix "$1")" ] && [ $SECONDS -lt $limit ]; do
        sleep 0.05
    done
    check '  the folder is gone' '' absent "$(unix "$1")"
    check '  nothing is queued' '' empty "$(registry_value "$run_once" $run_once_value)"
    check '  no entry in the list of programs' '' fails registry_key "$uninstall_key"
    left=$(temporary_files)
    check '  no temporary files' "$left" empty "$left"
}

refusals() {
    echo 'No address:'
    run "$setup" /S "/D=$folder"
    ended 3 'No e-mail address'
    nothing_left "$folder"

    echo 'A licence file that does not exist:'
    run "$setup" /S /EMAIL=user@example.com '/LICENCE=C:\no such.lic' "/D=$folder"
    ended 3 'There is no licence file C:\no such.lic.'
    nothing_left "$folder"

    echo 'A folder instead of a licence file:'
    run "$setup" /S /EMAIL=user@example.com '/LICENCE=C:\windows' "/D=$folder"
    ended 3 'There is no licence file C:\windows.'
    nothing_left "$folder"

    echo 'The log:'
    run "$setup" /PASSIVE '/EMAIL=@' '/LOG=C:\lakeside.log' "/D=$folder"
    ended 3 '@  is in invalid location in email.'
    check '  holds the same words' '' equal "$(tr -d '\r' < "$(unix 'C:\lakeside.log')")" "$said"
    rm -f "$(unix 'C:\lakeside.log')"
}

# obstacle PATH OPTION SENTENCE: with a folder where that file belongs, what had been installed goes
# again; what the user had there stays.
obstacle() {
    echo "A folder in the place of $1 ($2):"
    mkdir -p "$(unix "$folder\\$1")"
    run "$setup" "$2" /EMAIL=user@example.com "/D=$folder"
    ended 4 "$3"
    check '  no file is left' '' empty "$(find "$(unix "$folder")" -type f)"
    rmdir "$(unix "$folder\\$1")"
    find "$(unix "$folder")" -depth -type d -empty -delete
    nothing_left "$folder"
}

obstacles() {
    local path
    for path in 'bin\survey.dat' 'examples\Two words\bays.csv' 'embedch\config\chrc'; do
        obstacle "$path" /S "The file $folder\\$path cannot be written."
    done
    obstacle 'bin\survey.dat' /PASSIVE "The file $folder\\bin\\survey.dat cannot be written."
    check 'no window is left' '' fails on_screen '^(Please wait|Lakeside)'
}

# A repair that cannot be finished: what the user has stays, and is in order after another one.
failed_repair() { # OPTION
    echo "A repair in which a file cannot be written ($1):"
    run "$setup" /S /EMAIL=user@example.com "/LICENCE=$(windows "$licence")" "/D=$folder"
    check '  exit code' "$code" equal "$code" 0
    rm "$(unix "$folder\\bin\\survey.dat")"
    mkdir "$(unix "$folder\\bin\\survey.dat")"
    (cd "$(unix "$folder")" && find . -type f | sort) > "$out/before.lst"
    run "$setup" "$1" /EMAIL=user@example.com "/D=$folder"
    ended 4 "The file $folder\\bin\\survey.dat cannot be written."
    check '  and what to do' '' contains "$said" \
        'The earlier installation may be incomplete; run Setup again.'
    check '  no file is removed' '' \
        equal "$(cd "$(unix "$folder")" && find . -type f | sort)" "$(cat "$out/before.lst")"
    check '  the welcome is still queued' '' \
        equal "$(registry_value "$run_once" $run_once_value)" "\"$folder\\bin\\lakeside.exe\" --first-run"
    check '  the entry in the list of programs' '' registry_key "$uninstall_key"
    rmdir "$(unix "$folder\\bin\\survey.dat")"
    run "$setup" /S /EMAIL=user@example.com "/D=$folder"
    check '  the next one ends well' "$code" equal "$code" 0
    check '  and brings the file back' '' cmp -s "$tree/bin/survey.dat" "$(unix "$folder")/bin/survey.dat"
    uninstall "$folder"
    nothing_left "$folder"
}

# The uninstaller starts a copy of itself, and may take longer to end than the copy to do its work.
uninstaller_still_there() {
    local limit=$((SECONDS + 30))
    echo 'Uninstalled while the uninstaller that made the copy is still there:'
    run "$setup" /S /EMAIL=user@example.com "/D=$folder"
    check '  exit code' "$code" equal "$code" 0
    hold "$folder\\uninstall.exe"
    timeout 120 wine "$folder\\uninstall.exe" /S &> /dev/null # not by a pipe, which the copy would keep open
    while registry_key "$uninstall_key" && [ $SECONDS -lt $limit ]; do
        sleep 0.05
    done
    check '  it does all the rest' '' \
        equal "$(cd "$(unix "$folder")" && find . | paste -sd' ')" '. ./uninstall.exe'
    release
    nothing_left "$folder"
}

installations() {
    echo 'Installed silently, twice, with a file of the user'"'"'s:'
    run "$setup" /S /EMAIL=" user.name@example.com " "/LICENCE=$(windows "$licence")" "/D=$folder\\"
    check '  exit code' "$code" equal "$code" 0
    echo 'mine' > "$(unix "$folder\\docs\\mine.txt")"
    run "$setup" /S /EMAIL=" user.name@example.com " "/LICENCE=$(windows "$licence")" "/D=$folder"
    check '  exit code' "$code" equal "$code" 0
    mv "$(unix "$folder\\docs\\mine.txt")" "$out"
    report_files "$folder"
    mv "$out/mine.txt" "$(unix "$folder\\docs")"
    report_chrc "$folder"
    report_run_once "$folder"

    echo 'Uninstalled silently:'
    uninstall "$folder"
    check '  the user'"'"'s file is all that is left' '' \
        equal "$(cd "$(unix "$folder")" && find . | paste -sd' ')" '. ./docs ./docs/mine.txt'
    rm -r "$(unix "$folder")"
    nothing_left "$folder"
}

# A repair with another licence; its path is one of the folder that the installer is started in.
another_licence() {
    echo 'Installed again with another licence file, of the current folder:'
    run "$setup" /S /EMAIL=user@example.com "/LICENCE=$(windows "$licence")" "/D=$folder"
    check '  exit code' "$code" equal "$code" 0
    echo 'another' > "$out/input/another.lic"
    cd "$out/input" || die "there is no $out/input"
    run "$setup" /S /EMAIL=user@example.com /LICENCE=another.lic "/D=$folder"
    cd "$OLDPWD" || die "there is no $OLDPWD"
    check '  exit code' "$code" equal "$code" 0
    check '  the folder holds this one' '' cmp -s "$out/input/another.lic" "$(unix "$folder")/licence/another.lic"
    check '  and no other' '' equal "$(ls "$(unix "$folder")/licence")" another.lic

    echo 'And with the one that is installed:'
    run "$setup" /S /EMAIL=user@example.com "/LICENCE=${folder,,}\\bin/..\\licence\\ANOTHER.lic" "/D=$folder"
    check '  exit code' "$code" equal "$code" 0
    check '  it is still there' '' cmp -s "$out/input/another.lic" "$(unix "$folder")/licence/another.lic"
    uninstall "$folder"
    nothing_left "$folder"
}

# line_40 FOLDER ENCODING: the folder stands in the start-up file, in that encoding.
line_40() {
    local expected
    expected=$(iconv -t "$2" <<< '_lpath = stradd(_lpath, "C:\\'"$1"'\\embedch\\dl;");' | od -An -tx1)
    check "  line 40 is in $2" '' \
        equal "$(LC_ALL=C sed -n 40p "$(unix "C:\\$1\\embedch\\config\\chrc")" | od -An -tx1)" "$expected"
}

# The interpreter reads the ANSI code page, 1252 here.
foreign_letters() {
    local name='Gerät Müller'
    echo "A folder with umlauts:"
    run "$setup" /S /EMAIL=user@example.com "/D=C:\\$name"
    check '  exit code' "$code" equal "$code" 0
    line_40 "$name" CP1252
    uninstall "C:\\$name"
    nothing_left "C:\\$name"

    name='Έργο'
    echo 'A folder that the code page has no letters for:'
    run "$setup" /S /EMAIL=user@example.com "/D=C:\\$name"
    ended 4 'cannot be written.'
    nothing_left "C:\\$name"
}

# Letters whose second byte looks like a backslash. (At the very end of the folder's name the library
# takes such a byte for a separator, so the name ends otherwise.)
japanese() {
    local name='表 ソ能木'
    echo 'A folder with Japanese letters, under code page 932:'
    if ! locale -a | grep -qix ja_JP.utf8; then
        echo '  skipped: there is no locale ja_JP.UTF-8'
        return
    fi
    LC_ALL=ja_JP.UTF-8 run "$setup" /S /EMAIL=user@example.com "/D=C:\\$name"
    check '  exit code' "$code" equal "$code" 0
    check '  the files are where they belong' '' \
        cmp -s "$tree/docs/Read me first.txt" "$(unix "C:\\$name")/docs/Read me first.txt"
    line_40 "$name" CP932
    LC_ALL=ja_JP.UTF-8 uninstall "C:\\$name"
    nothing_left "C:\\$name"
}

# Windows always has the key; without it the product is installed all the same.
no_run_once_key() {
    echo 'No RunOnce key:'
    registry delete "$run_once" /f &> /dev/null
    run "$setup" /S /EMAIL=user@example.com "/D=$folder"
    ended 0 'WARNING: the welcome at the next log-on could not be queued'
    check '  the key is not made' '' fails registry_key "$run_once"
    printf 'REGEDIT4\n\n[HKEY_CURRENT_USER\\%s]\n' "${run_once#HKCU\\}" > "$out/run-once.reg"
    wine regedit /S "$(windows "$out/run-once.reg")" &> /dev/null
    uninstall "$folder"
    nothing_left "$folder"
}

# A library that cannot be loaded: nobody is asked, and /PASSIVE shows no message box that waits for ever.
unusable_library() {
    local unusable=$out/unusable-setup.exe option sentence='The setup library cannot be used'
    local options=(-DTARN_DLL="$x86_dll")
    if [ "${TARN_WIZARD:-}" = x86 ]; then
        options=(-DX86 -DTARNTOOL="$licence")
        sentence='The setup program cannot be started'
    fi
    makensis -V2 -WX -DPRODUCT_DIR="$out/product" -DOUT_FILE="$unusable" "${options[@]}" \
        "$samples/wizard/wizard.nsi" || die "the installer without a usable library cannot be made"
    for option in /S /PASSIVE; do
        echo "A library that cannot be used ($option):"
        run "$unusable" $option /EMAIL=user@example.com "/D=$folder"
        ended 2 "$sentence"
        nothing_left "$folder"
    done
    rm -f "$unusable"
}

# Wine loads no tarn.dll from anywhere, as with a damaged one: the product can still be removed.
uninstaller_without_library() {
    echo 'Uninstalled without a library that can be loaded:'
    run "$setup" /S /EMAIL=user@example.com "/D=$folder"
    check '  exit code' "$code" equal "$code" 0
    WINEDLLOVERRIDES="$WINEDLLOVERRIDES;*tarn=d" run "$setup" /S /EMAIL=user@example.com "/D=$folder"
    ended 2 'The setup library cannot be loaded'
    WINEDLLOVERRIDES="$WINEDLLOVERRIDES;*tarn=d" uninstall "$folder"
    nothing_left "$folder"
}

need_tools makensis perl wine Xvfb xdotool
make_installer
make_tool hold
start_wine
clean_slate "$folder"
unusable_library
refusals
obstacles
failed_repair /S
failed_repair /PASSIVE
installations
uninstaller_still_there
another_licence
foreign_letters
japanese
no_run_once_key
[ "${TARN_WIZARD:-}" = x86 ] || uninstaller_without_library
echo
[ $wrong = 0 ] || { echo "$wrong WRONG"; exit 1; }
echo 'Everything is right.'
