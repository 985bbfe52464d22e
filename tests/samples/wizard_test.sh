#!/bin/bash
# wizard_test.sh BUILD_DIR - drives the sample's wizard with keystrokes, page by page, a wrong address
# first; checks what was installed; drives the uninstaller and checks that nothing is left. A picture
# of each page is kept in BUILD_DIR/screenshots.
set -u
build=$(cd "$1" && pwd) || exit 2
# shellcheck source=samples/lib.sh
. "$(dirname "$0")/../../samples/lib.sh"
# shellcheck source=tests/samples/probe.sh
. "$(dirname "$0")/probe.sh"

folder='C:\Tools (64-bit)\Lakeside Workbench'
screen=
offered= # the licence file that the Open dialog shows

look() { screen=$(probe); }

# shows TEXT: some window or control on the screen has exactly this text.
shows() { grep -q $'\t'"$(quote "$1")\$" <<< "$screen"; }
# shellcheck disable=SC2001 # a bracket expression that no substitution of the shell has
quote() { sed 's/[][\.*^$]/\\&/g' <<< "$1"; }

# until_shown TEXT, until_gone TEXT: looks until the text is there, or no longer there.
until_shown() {
    local limit=$((SECONDS + 30))
    until look && shows "$1"; do
        [ $SECONDS -lt $limit ] || return 1
    done
}
until_gone() {
    local limit=$((SECONDS + 30))
    while look && shows "$1"; do
        [ $SECONDS -lt $limit ] || return 1
    done
}

# until_absent PATH
until_absent() {
    local limit=$((SECONDS + 30))
    while [ -e "$1" ]; do
        [ $SECONDS -lt $limit ] || return 1
        sleep 0.05
    done
}

# Until the wizard's line of progress has come to the last step.
until_written() {
    local limit=$((SECONDS + 30))
    until look && grep -q $'\tCreated uninstaller' <<< "$screen"; do
        [ $SECONDS -lt $limit ] || return 1
    done
}

# Until a control is ready for keystrokes, and nothing changes any more.
until_settled() {
    local limit=$((SECONDS + 30)) before=
    until [ "$screen" = "$before" ] && grep -q $'\tenabled\tfocus\t' <<< "$screen"; do
        [ $SECONDS -lt $limit ] || return 1
        before=$screen
        look
    done
}

# Over the corner of the foremost window: without a window manager, keys go where the pointer is.
point() {
    local left bottom
    read -r left _ _ bottom < <(sed -n 's/^window\t[^\t]*\t\([^\t]*\)\tforeground\t.*/\1/p' <<< "$screen")
    xdotool mousemove $((left + 8)) $((bottom - 8))
}

on_page() { until_shown "$1" && until_settled && shows "$1"; }

# page TEXT: waits for a page of the wizard; the rest of the test makes no sense without it.
page() {
    check "page \"$1\"" '' on_page "$1"
    if [ $wrong != 0 ] && ! shows "$1"; then
        picture failed
        echo "On the screen instead:"
        echo "$screen"
        kill %1 2> /dev/null
        exit 1
    fi
    point
}

picture() {
    import -window "$(xdotool search --name 'Wine desktop$' 2> /dev/null | head -n 1)" \
        "$build/screenshots/wizard-$1.png"
}

keys() { xdotool key --delay 20 "$@"; }
# Wine needs a moment between keys that change the shift state.
write() { xdotool key ctrl+a Delete type --delay 20 "$1"; }

# The edit control that has the focus: its text, and its selection.
focus_text() { sed -n 's/^control\tEdit\t[^\t]*\t[^\t]*\tfocus\t[^\t]*\t//p' <<< "$screen"; }
focus_selection() { sed -n 's/^control\tEdit\t[^\t]*\t[^\t]*\tfocus\t\([^\t]*\)\t.*/\1/p' <<< "$screen"; }
# left, top, right and bottom of a window (some captions of NSIS end in a blank)
rectangle() { sed -n "s/^window\t[^\t]*\t\([^\t]*\)\t[^\t]*\t$(quote "$1") *\$/\1/p" <<< "$screen"; }

# refused ADDRESS SENTENCE SELECTION [TRIMMED]: Next does not leave the page, which says why and selects the
# fault.
refused() {
    write "$1"
    keys Return
    check "\"$1\" is refused" "$2" until_shown "$2"
    check '  the fault is selected' "$(focus_selection)" equal "$(focus_selection)" "$3"
    check '  the field holds the trimmed address' "$(focus_text)" equal "$(focus_text)" "${4:-$1}"
}

# A click elsewhere and one on the caption, which is drawn as active only then.
activate() {
    local left top
    read -r left top _ < <(rectangle "$1")
    xdotool mousemove 5 700 click 1 mousemove $((left + 60)) $((top + 10)) click 1
}

start_wizard() {
    wine "$setup" "$@" > "$out/wizard.log" 2>&1 &
    until_shown 'Welcome to Lakeside Workbench Setup'
    activate 'Lakeside Workbench Setup'
    page 'Welcome to Lakeside Workbench Setup'
}

# Puts the licence file where the Open dialog begins. Wine has linked that folder to the caller's own
# home, which is none of the test's.
offer_licence() {
    local documents
    documents=$(find "$WINEPREFIX/drive_c/users" -maxdepth 2 -name Documents ! -path '*/Public/*')
    [ ! -L "$documents" ] || rm "$documents"
    mkdir -p "$documents" && cp "$licence" "$documents/" || die "there is no folder for documents"
    offered=$(windows "$documents/${licence##*/}")
}

# wait_window TEXT WINDOW: the wait window is there, over the middle of that window, which says the text.
wait_window() {
    local outer wait_rectangle
    check 'the wait window appears' '' until_shown 'Please wait'
    check 'the wait window says how long' '' shows 'This takes less than a minute.'
    check 'the page behind it says what is being done' '' shows "$1"
    check '"please wait" is said once' '' equal "$(grep -ic $'\t[^\t]*please wait' <<< "$screen")" 1
    # Centred: the same middle as the wizard, with the halves cut off toward zero.
    outer=$(rectangle "$2")
    wait_rectangle=$(rectangle 'Please wait')
    # shellcheck disable=SC2086
    check 'the wait window is over the middle of the wizard' "$wait_rectangle in $outer" \
        centred $outer $wait_rectangle
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
    check 'the box "Open as read-only" is not' '' until_gone 'Open as &read-only'
    picture 6-licence-browse
    keys Escape
    check 'cancel leaves the field as it was' '' until_gone 'Choose the licence file'
    check '  the field is empty' "$(focus_text)" empty "$(focus_text)"
    keys alt+r
    page 'Choose the licence file'
    xdotool type --delay 20 "${licence##*/}"
    keys Return
    check 'the chosen file is in the field' "$offered" until_shown "$offered"
    until_gone 'Choose the licence file'
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

centred() { # left top right bottom of the outer, then of the inner
    [ $# = 8 ] && [ $((($1 + $3) / 2 - ($7 - $5) / 2)) = "$5" ] &&
        [ $((($2 + $4) / 2 - ($8 - $6) / 2)) = "$6" ]
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
make_probe
start_wine
clean_slate "$folder"
offer_licence
rm -f "$build/screenshots"/wizard-*.png

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
