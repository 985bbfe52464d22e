# shellcheck shell=bash
# Sourced, after samples/lib.sh: what a user sees on the screen, and keystrokes. Tests that drive a wizard need
# a display that nothing else uses.
# shellcheck source=tests/samples/probe.sh
. "$(dirname "${BASH_SOURCE[0]}")/probe.sh"

: "${build:?}" "${wrong:?}" "${licence:?}"

screen=
pictures=$build/screenshots/wizard${TARN_WIZARD:+-$TARN_WIZARD}
# shellcheck disable=SC2034 # for the test
offered= # the licence file that the Open dialog shows

look() { screen=$(probe); }

# shows TEXT: some window or control on the screen has exactly this text (and perhaps an empty line below it).
shows() { grep -q $'\t'"$(quote "$1") *\$" <<< "$screen"; }
# shellcheck disable=SC2001 # a bracket expression that no substitution of the shell has
quote() { sed 's/[][\.*^$]/\\&/g' <<< "$1"; }

show_all() {
    local text
    for text; do shows "$text" || return; done
}

# until_shown TEXT..., until_gone TEXT: looks until the texts are there, on one screen, or it is no longer there.
until_shown() {
    local limit=$((SECONDS + 30))
    until look && show_all "$@"; do
        [ $SECONDS -lt $limit ] || return 1
        sleep 0.1 # a look takes as much of the processor as what it waits for
    done
}
until_gone() {
    local limit=$((SECONDS + 30))
    while look && shows "$1"; do
        [ $SECONDS -lt $limit ] || return 1
        sleep 0.1
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

# picture NAME: keeps what is on the screen.
picture() {
    import -window "$(xdotool search --name 'Wine desktop$' 2> /dev/null | head -n 1)" \
        "$pictures-$1.png"
}

keys() { xdotool key --delay 20 "$@"; }
# Wine needs a moment between keys that change the shift state.
write() { xdotool key ctrl+a Delete type --delay 20 "$1"; }

# The edit control that has the focus: its text, and its selection.
focus_text() { sed -n 's/^control\t[^\t]*Edit\t[^\t]*\t[^\t]*\tfocus\t[^\t]*\t//p' <<< "$screen"; }
focus_selection() { sed -n 's/^control\t[^\t]*Edit\t[^\t]*\t[^\t]*\tfocus\t\([^\t]*\)\t.*/\1/p' <<< "$screen"; }
# left, top, right and bottom of a window (some captions of NSIS end in a blank)
rectangle() { sed -n "s/^window\t[^\t]*\t\([^\t]*\)\t[^\t]*\t$(quote "$1") *\$/\1/p" <<< "$screen"; }

# A click elsewhere and one on the caption, which is drawn as active only then.
activate() {
    local left top
    read -r left top _ < <(rectangle "$1")
    xdotool mousemove 5 700 click 1 mousemove $((left + 60)) $((top + 10)) click 1
}

# refused ADDRESS SENTENCE SELECTION [TRIMMED]: Next does not leave the page, which says why and selects the
# fault.
refused() {
    write "$1"
    keys Return
    check "\"$1\" is refused" "$2" until_shown "$2"
    check '  the fault is selected' "$(focus_selection)" equal "$(focus_selection)" "$3"
    check '  the field holds the trimmed address' "$(focus_text)" equal "$(focus_text)" "${4:-$1}"
}

# Puts the licence file where the Open dialog begins. Wine has linked that folder to the caller's own
# home, which is none of the test's.
offer_licence() {
    local documents
    documents=$(find "$WINEPREFIX/drive_c/users" -maxdepth 2 -name Documents ! -path '*/Public/*')
    [ ! -L "$documents" ] || rm "$documents"
    mkdir -p "$documents" && cp "$licence" "$documents/" || die "there is no folder for documents"
    # shellcheck disable=SC2034
    offered=$(windows "$documents/${licence##*/}")
}

# wait_window TEXT WINDOW: the wait window is there, over the middle of that window, which says the text.
wait_window() {
    local outer wait_rectangle
    check 'the wait window says how long, and the page behind it what is being done' '' \
        until_shown 'Please wait' 'This takes less than a minute.' "$1"
    check '"please wait" is said once' '' equal "$(grep -ic $'\t[^\t]*please wait' <<< "$screen")" 1
    # Centred: the same middle as the wizard, with the halves cut off toward zero.
    outer=$(rectangle "$2")
    wait_rectangle=$(rectangle 'Please wait')
    # shellcheck disable=SC2086
    check 'the wait window is over the middle of the wizard' "$wait_rectangle in $outer" \
        centred $outer $wait_rectangle
    check 'and lies above it' '' equal "Please wait" \
        "$(sed -n "s/^window\t.*\t\(Please wait\|$(quote "$2")\) *\$/\1/p" <<< "$screen" | head -n 1)"
}

centred() { # left top right bottom of the outer, then of the inner
    [ $# = 8 ] && [ $((($1 + $3) / 2 - ($7 - $5) / 2)) = "$5" ] &&
        [ $((($2 + $4) / 2 - ($8 - $6) / 2)) = "$6" ]
}
