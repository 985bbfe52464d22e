#!/bin/bash
# run.sh BUILD_DIR          installs the sample product unattended, under Wine, with the tarn.dll of
#                           that build; reports what came of it; exit code 0 when everything is right
# run.sh BUILD_DIR --show   opens the sample's wizard on this display instead
set -u
build=$(cd "$1" && pwd) || exit 2
# shellcheck source=samples/lib.sh
. "$(dirname "$0")/lib.sh"

folder='C:\Program Files\Lakeside Workbench'
shot=$build/screenshots/wait-window.png

show() {
    [ -n "${DISPLAY:-}" ] || die "--show needs a display (DISPLAY is not set)"
    export WINEPREFIX=$out/wine-show WINEDEBUG=-all
    unset TMPDIR # see tools/wine-env.sh
    export WINEDLLOVERRIDES='mscoree,mshtml=;winemenubuilder.exe=d'
    # Windows always has this key for the user; a new Wine prefix does not.
    wine reg add "$run_once" /f &> "$out/show.log"
    exec wine "$setup" 2> "$out/show.log"
}

refused() { # ADDRESS POSITION MESSAGE
    local said rc message position local_part=${1%%@*} counted='counted from 0, as up to the @'
    [ "$2" -le ${#local_part} ] || counted='counted from 1, as behind the @'
    said=$(wine "$setup" /S "/EMAIL=$1" "/D=$folder" 2> /dev/null | tr -d '\r'; exit "${PIPESTATUS[0]}")
    rc=$?
    message=$(sed -n 's/^ *message: *//p' <<< "$said")
    position=$(sed -n 's/^ *position: *//p' <<< "$said")
    check "$1" "\"$message\" at position $position ($counted); exit code $rc: refused" \
        equal "$rc $message $position" "3 $3 $2"
}

# Waits until the installer has placed everything behind its wait window, and takes the picture.
photograph() {
    local limit=$((SECONDS + 60)) window desktop geometry
    until window=$(xdotool search --onlyvisible --name '^Please wait$' 2> /dev/null) &&
        grep -q '^queued' "$out/install.log"; do
        kill -0 "$installer" 2> /dev/null && [ $SECONDS -lt $limit ] || return 1
        sleep 0.05
    done
    desktop=$(xdotool search --name 'Wine desktop$' 2> /dev/null | head -n 1)
    import -window "${desktop:-root}" "$shot" || return 1
    # It is in the picture if it is still there afterwards; and it is more than one plain colour.
    geometry=$(xwininfo -id "${window%%$'\n'*}" | awk '
        /Absolute upper-left X/ { x = $4 }  /Absolute upper-left Y/ { y = $4 }
        /^ *Width:/ { w = $2 }              /^ *Height:/ { h = $2 }
        END { print w "x" h "+" x "+" y }')
    on_screen '^Please wait$' || return 1
    [ "$(convert "$shot" -crop "$geometry" -unique-colors -format %w info:)" -gt 4 ]
}

install() {
    local installer rc
    wine "$setup" /PASSIVE /EMAIL=" user.name@example.com " "/LICENCE=$(windows "$licence")" \
        /PAUSE=2000 "/D=$folder" > "$out/install.log" 2> "$out/install-errors.log" &
    installer=$!
    check 'shown while the installer works' "picture: ${shot#"$PWD/"}" photograph
    wait "$installer"
    rc=$?
    check 'the installer ended well' "exit code $rc: installed" equal $rc 0
}

if [ "${2:-}" = --show ]; then
    need_tools makensis perl wine
    make_installer
    show
fi
need_tools makensis perl wine Xvfb import convert xdotool xwininfo
make_installer
start_wine
clean_slate "$folder"

bytes() { numfmt --grouping "$1"; }
echo "The installer: $(bytes "$(stat -c %s "$setup")") bytes. In it, compressed together: the product, $(find "$tree" -type f | wc -l) files of" \
    "$(bytes "$(find "$tree" -type f -printf '%s\n' | awk '{ sum += $1 } END { print sum }')") bytes, and tarn.dll, $(bytes "$(stat -c %s "$build/bin/tarn.dll")") bytes."
echo
echo "Addresses that must stop the installation, with the library's message and the position of the fault:"
refused 'us er@example.com' 2 'invalid character in email.'
refused 'user@exa mple.com' 9 'invalid character in email.'
refused 'user@localhost' 5 'Invalid Domain name.'
check 'nothing was installed' '' absent "$(unix "$folder")"
echo
echo 'Wait window:'
install
echo
echo "Files in $folder, each compared byte for byte with the product, and its size:"
report_files "$folder"
echo
echo 'embedch\config\chrc, the lines that name the folder, and its size:'
report_chrc "$folder"
echo
echo "The command for the next log-on, in $run_once:"
report_run_once "$folder"
echo
echo 'Afterwards:'
report_program
left=$(temporary_files)
check 'nothing is left in the temporary folder' "$left" empty "$left"
echo
if [ "$wrong" != 0 ]; then
    echo "$wrong WRONG. The installer's own words are in $out/install.log."
    exit 1
fi
echo 'Everything is right.'
