#!/bin/bash
# inno_test.sh BUILD_DIR - the sample installer made with Inno Setup, with nobody at the keyboard and driven by
# keystrokes, and its uninstaller. Before: TARN_ISCC, the compiler, in a Wine that runs 32-bit programs.
set -u
build=$(cd "$1" && pwd) || exit 2
here=$(cd "$(dirname "$0")" && pwd)
export TARN_WIZARD=inno
# shellcheck source=samples/lib.sh
. "$here/../../samples/lib.sh"
# shellcheck source=tests/samples/screen.sh
. "$here/../samples/screen.sh"
# shellcheck source=tests/samples/hold.sh
. "$here/../samples/hold.sh"
# shellcheck source=tests/docs/quoting.sh
. "$here/../docs/quoting.sh"

uninstall_key='HKCU\Software\Microsoft\Windows\CurrentVersion\Uninstall\Lakeside_is1'
installers_own=(unins000.exe unins000.dat)
folder='C:\Tools (64-bit) [x]\Lakeside Workbench'
log=$out/setup.log
title='Setup - Lakeside Workbench'
code=

compile() {
    : "${TARN_ISCC:?}"
    wine "$TARN_ISCC" /Q "/DProductDir=$(windows "$out/product")" \
        "/DTarnTool=$(windows "$build/bin/tarntool.exe")" "/O$(windows "$out")" \
        "$(windows "$samples/inno/lakeside.iss")" &> "$out/iscc.log" ||
        { cat "$out/iscc.log"; die "lakeside.iss cannot be compiled"; }
}

# run OPTION... : a silent Setup; sets code.
run() {
    timeout 120 wine "$setup" /VERYSILENT /SUPPRESSMSGBOXES "/LOG=$(windows "$log")" "/DIR=$folder" "$@" \
        &> "$out/run.log"
    code=$?
}

# ended CODE TEXT: the run ended with the code, and the log holds the text.
ended() {
    check "  exit code $1" "$code" equal "$code" "$1"
    check '  the log says why' "$2" grep -qaF -- "$2" "$log"
}

uninstall() {
    timeout 120 wine "$folder\\unins000.exe" /VERYSILENT /SUPPRESSMSGBOXES &> "$out/uninstall.log"
    until_absent "$(unix "$folder\\unins000.exe")"
}

nothing_left() {
    local left limit
    check '  the folder is gone' '' absent "$(unix "$folder")"
    check '  nothing is queued' '' empty "$(registry_value "$run_once" $run_once_value)"
    check '  no entry in the list of programs' '' fails registry_key "$uninstall_key"
    # The uninstaller's copy of itself goes a moment later.
    limit=$((SECONDS + 30))
    while left=$(temporary_files) && [ -n "$left" ] && [ $SECONDS -lt $limit ]; do
        sleep 0.1
    done
    check '  no temporary files' "$left" empty "$left"
}

silently() {
    echo 'A refused address:'
    run '/EMAIL=us er@example.com'
    ended 1 'The e-mail address "us er@example.com" is refused: invalid character in email. (position 2)'
    nothing_left
    echo 'No address:'
    run
    ended 1 'The e-mail address "" is refused:  (position -1)'
    echo 'A licence file that does not exist:'
    run /EMAIL=user@example.com '/LICENCE=C:\no such.lic'
    ended 1 'There is no licence file C:\no such.lic'
    nothing_left

    echo 'Installed:'
    run "/EMAIL= user.name@example.com " "/LICENCE=$(windows "$licence")"
    check '  exit code' "$code" equal "$code" 0
    report_files "$folder"
    report_chrc "$folder"
    report_run_once "$folder"
    report_program

    echo 'The start-up file is in use:'
    hold "$folder\\embedch\\config\\chrc"
    run "/EMAIL=user.name@example.com"
    ended 10 'The start-up file cannot be written: '
    release
    echo 'The licence file is in use:'
    hold "$folder\\licence\\my licence.lic"
    run "/EMAIL=user.name@example.com" "/LICENCE=$(windows "$licence")"
    ended 10 'The licence file cannot be copied.'
    release
    echo 'And no longer:'
    run "/EMAIL=user.name@example.com" "/LICENCE=$(windows "$licence")"
    check '  exit code' "$code" equal "$code" 0
    report_files "$folder"

    echo 'Uninstalled, with a file of the user'"'"'s:'
    echo 'mine' > "$(unix "$folder\\docs\\mine.txt")"
    uninstall
    check '  it is all that is left' '' \
        equal "$(cd "$(unix "$folder")" && find . | paste -sd' ')" '. ./docs ./docs/mine.txt'
    rm -r "$(unix "$folder")"
    nothing_left
}

# The line of docs/tarntool.md, in a Setup around it.
quoting() {
    local line target='C:\Quoting [x]'
    line=$(quoting_example 'Inno Setup')
    check 'the page has a line' "$line" fails empty "$line"
    echo 'from the page' > "$out/a b.txt"
    cat > "$out/quoting.iss" << END
[Setup]
AppName=Quoting
AppVersion=1
DefaultDirName=$target
OutputBaseFilename=quoting-setup
PrivilegesRequired=lowest
Uninstallable=no
[Dirs]
Name: "{app}"
[Files]
Source: "$(windows "$build/bin/tarntool.exe")"; Flags: dontcopy
Source: "$(windows "$out/a b.txt")"; Flags: dontcopy
[Code]
procedure CurStepChanged(Step: TSetupStep);
var
  Tool, Source: String;
  Code: Integer;
begin
  if Step <> ssPostInstall then
    Exit;
  ExtractTemporaryFile('tarntool.exe');
  ExtractTemporaryFile('a b.txt');
  Tool := ExpandConstant('{tmp}\tarntool.exe');
  Source := ExpandConstant('{tmp}\a b.txt');
  $line;
  SaveStringToFile(ExpandConstant('{app}\code.txt'), IntToStr(Code), False);
end;
END
    wine "$TARN_ISCC" /Q "/O$(windows "$out")" "$(windows "$out/quoting.iss")" &> "$out/iscc.log" ||
        { cat "$out/iscc.log"; die 'the line of the page cannot be compiled'; }
    timeout 120 wine "$out/quoting-setup.exe" /VERYSILENT /SUPPRESSMSGBOXES &> "$out/run.log"
    check '  exit code' "$(cat "$(unix "$target")/code.txt")" equal "$(cat "$(unix "$target")/code.txt")" 0
    check '  the file is there' '' cmp -s "$out/a b.txt" "$(unix "$target")/a b.txt"
    rm -rf "$(unix "$target")"
}

wizard() {
    wine "$setup" /PAUSE=6000 &> "$out/wizard.log" &
    until_shown "$title"
    activate "$title"
    page 'Welcome to the Lakeside Workbench Setup Wizard'
    picture 0-welcome
    keys Return
    page 'E-mail Address'
    keys Return
    check 'an empty address is refused' '' until_shown 'Please enter your e-mail address.'
    refused 'us er@example.com' 'There are no blanks in an e-mail address.' 2-3
    picture 1-email
    # Not the end of an argument.
    refused 'a" --out "b@example.com' 'The character " cannot be used in an e-mail address.' 1-2
    refused 'user@exa mple.com' 'There are no blanks in an e-mail address.' 8-9
    refused 'username.com' 'An e-mail address has an "@" in it.' 12-12
    refused '  user@  ' 'Something is missing at the end of the address.' 5-5 'user@'
    keys End x
    check 'the message goes when the address is changed' '' until_gone 'Something is missing at the end of the address.'
    write ' user.name@example.com '
    keys Return

    page 'Licence File'
    write 'C:\no such file.lic'
    keys Return
    check 'a licence file that does not exist is refused' '' until_shown 'There is no such file. Choose another one, or leave the field empty.'
    write ''
    keys alt+r
    page 'Choose the licence file'
    check 'the filter is shown' '' shows 'Licence files (*.lic)'
    picture 2-browse
    keys Escape
    check 'cancel leaves the field as it was' '' until_gone 'Choose the licence file'
    page 'Licence File'
    keys alt+r
    page 'Choose the licence file'
    xdotool type --delay 20 "${licence##*/}"
    keys Return
    check 'the chosen file is in the field' "$offered" until_shown "$offered"
    page 'Licence File'
    keys alt+n

    page 'Choose Install Location'
    picture 3-folder
    write "$folder"
    check 'the folder is in the field' "$folder" until_shown "$folder"
    keys Return

    wait_window 'Lakeside Workbench is being installed on your computer.' "$title"
    # Wine paints the wizard over the wait window: it has the windows' order right, and the X server's wrong.
    picture 4-wait
    look
    check 'the wait window was there for its picture' '' shows 'This takes less than a minute.'
    page 'Completing the Lakeside Workbench Setup Wizard'
    check 'the wait window is closed' '' fails shows 'Please wait'
    picture 5-finish
    keys Return
    wait %1
    check 'the wizard ended well' '' equal $? 0
    report_files "$folder"
    report_chrc "$folder"
    report_run_once "$folder"
    uninstall
    nothing_left
}

need_tools perl wine Xvfb import xdotool
make_product
make_tool probe
make_tool hold
start_wine
clean_slate "$folder"
compile
silently
echo 'The line that docs/tarntool.md shows:'
quoting
echo 'The wizard:'
offer_licence
wizard
echo
[ $wrong = 0 ] || { echo "$wrong WRONG"; exit 1; }
echo 'Everything is right.'
