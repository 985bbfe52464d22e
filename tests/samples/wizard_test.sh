#!/bin/bash
# wizard_test.sh BUILD_DIR - drives the sample's wizard with keystrokes, page by page, a wrong address
# first; checks what was installed; drives the uninstaller and checks that nothing is left. A picture
# of each page is kept in BUILD_DIR/screenshots.
set -u
build=$(cd "$1" && pwd) || exit 2
# shellcheck source=samples/lib.sh
. "$(dirname "$0")/../../samples/lib.sh"
# shellcheck source=tests/samples/screen.sh
. "$(dirname "$0")/screen.sh"

folder='C:\Tools (64-bit)\Lakeside Workbench'

start_wizard() {
    wine "$setup" "$@" > "$out/wizard.log" 2>&1 &
    until_shown 'Welcome to Lakeside Workbench Setup'
    activate 'Lakeside Workbench Setup'
    page 'Welcome to Lakeside Workbench Setup'
}

# Until the wizard's line of progress has come to the last step.
until_written() {
    local limit=$((SECONDS + 30))
    until look && grep -q $'\tCreated uninstaller' <<< "$screen"; do
        [ $SECONDS -lt $limit ] || return 1
    done
}

install() {
    start_wizard /PAUSE=1500
    picture 1-welcome
    keys Return

    page 'E-mail Address'
    picture 2-email
    keys Return
    check 'an empty address is refused' '' until_shown 'Please enter your e-mail address.'
    # A fault in the local part is reported 0-based, one in the domain 1-based.
    refused 'us er@example.com' 'There are no blanks in an e-mail address.' 2-3
    refused 'user@exa mple.com' 'There are no blanks in an e-mail address.' 8-9
    refused 'user.na&me@example.com' 'The character & cannot be used in an e-mail address.' 7-8
    picture 3-email-refused
    refused 'user@localhost' \
        'What follows the "@" is not complete: it has a dot in it, as in "example.com".' 4-5
    refused '@example.com' 'Something is missing before the "@".' 0-1
    refused 'user@example..com' 'Something is missing before this dot.' 13-14
    refused 'user@exa@mple.com' 'There is only one "@" in an e-mail address.' 8-9
    refused 'username.com' 'An e-mail address has an "@" in it.' 12-12
    refused '  user@  ' 'Something is missing at the end of the address.' 5-5 'user@'
    refused "user@mail.$(printf 'a%.0s' {1..65}).com" \
        'The part that begins here is too long: it can have 64 characters.' 10-11
    picture 4-email-long
    keys End x
    check 'the message goes when the address is changed' '' until_gone \
        'The part that begins here is too long: it can have 64 characters.'
    write ' user.name@example.com '
    keys Return

    page 'Licence File'
    local no_such_file='There is no such file. Choose another one, or leave the field empty.'
    write 'C:\no such file.lic'
    keys Return
    check 'a licence file that does not exist is refused' '' until_shown "$no_such_file"
    picture 5-licence-missing
    write ''
    check 'the message goes when the path is changed' '' until_gone "$no_such_file"
    keys alt+r
    page 'Choose the licence file'
    check 'the filter is shown' '' shows 'Licence files (*.lic)'
    # The 32-bit installer cannot reach into the dialog of another process.
    [ "${TARN_WIZARD:-}" = x86 ] ||
        check 'the box "Open as read-only" is not' '' until_gone 'Open as &read-only'
    picture 6-licence-browse
    keys Escape
    check 'cancel leaves the field as it was' '' until_gone 'Choose the licence file'
    check '  the field is empty' "$(focus_text)" empty "$(focus_text)"
    page 'Licence File'
    keys alt+r
    page 'Choose the licence file'
    xdotool type --delay 20 "${licence##*/}"
    keys Return
    check 'the chosen file is in the field' "$offered" until_shown "$offered"
    until_gone 'Choose the licence file'
    page 'Licence File'
    picture 7-licence-chosen
    keys alt+n

    page 'Choose Install Location'
    write "$folder"
    check 'the folder is in the field' "$folder" until_shown "$folder"
    picture 8-folder
    keys Return

    wait_window 'Lakeside Workbench is being installed on your computer.' 'Lakeside Workbench Setup'
    until_written
    picture 9-wait

    page 'Completing Lakeside Workbench Setup'
    check 'the wait window is closed' '' fails shows 'Please wait'
    picture 10-finish
    keys Return
    wait %1
    check 'the wizard ended well' '' equal $? 0
}

uninstall() {
    wine "$folder\\uninstall.exe" /PAUSE=1500 &> "$out/uninstall.log"
    until_shown 'Uninstall Lakeside Workbench'
    activate 'Lakeside Workbench Uninstall'
    page 'Uninstall Lakeside Workbench'
    picture 11-uninstall
    keys Return
    wait_window 'Lakeside Workbench is being removed from your computer.' 'Lakeside Workbench Uninstall'
    page 'Completing Lakeside Workbench Uninstall'
    check 'the wait window is closed' '' fails shows 'Please wait'
    picture 12-uninstalled
    keys Return
    check 'the uninstaller is gone' '' until_gone 'Completing Lakeside Workbench Uninstall'
}

report_removed() {
    local left
    check 'the folder' '' until_absent "$(unix "$folder")"
    check 'the queued command' '' empty "$(registry_value "$run_once" $run_once_value)"
    check 'the entry in the list of programs' '' fails registry_key "$uninstall_key"
    left=$(temporary_files)
    check 'temporary files' "$left" empty "$left"
}

# Someone who changes their mind on the second page.
cancel() {
    local left
    start_wizard
    keys Return
    page 'E-mail Address'
    keys Escape
    page 'Are you sure you want to quit Lakeside Workbench Setup?'
    keys Return
    wait %1
    check 'the wizard was cancelled' '' equal $? 1
    left=$(temporary_files)
    check 'no temporary files are left' "$left" empty "$left"
}

need_tools makensis perl wine Xvfb import xdotool
make_installer
make_tool probe
start_wine
clean_slate "$folder"
offer_licence
rm -f "$pictures"-[0-9]*.png

echo 'The wizard:'
install
echo
echo 'Installed:'
left=$(temporary_files)
check 'temporary files' "$left" empty "$left"
report_files "$folder"
report_chrc "$folder"
report_run_once "$folder"
report_program
echo
echo 'The uninstaller:'
uninstall
echo
echo 'Removed:'
report_removed
echo
echo 'Cancelled:'
cancel
echo
[ $wrong = 0 ] || { echo "$wrong WRONG"; exit 1; }
echo 'Everything is right.'
