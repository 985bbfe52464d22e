#!/bin/bash
# run.sh BUILD_DIR          installs the sample product unattended, under Wine, with the tarn.dll of
#                           that build; reports what came of it; exit code 0 when everything is right
# run.sh BUILD_DIR --show   opens the sample's wizard on this display instead
#
# TARN_WINE_DIR, if set, is where the Wine prefix and its display live (see cmake/wine-env.sh).
set -u

here=$(cd "$(dirname "$0")" && pwd)
build=$(cd "$1" && pwd) || exit 2
out=$build/samples
setup=$out/lakeside-setup.exe
shot=$build/screenshots/wait-window.png
folder='C:\Program Files\Lakeside Workbench'
run_once='HKCU\Software\Microsoft\Windows\CurrentVersion\RunOnce'

die() {
    echo "run.sh: $*" >&2
    exit 2
}

make_installer() {
    [ -f "$build/bin/tarn.dll" ] || die "there is no $build/bin/tarn.dll"
    mkdir -p "$out" "$build/screenshots"
    "$here/product/make.sh" "$out/product" || die "the sample product cannot be made"
    makensis -V2 -DPRODUCT_DIR="$out/product" -DOUT_FILE="$setup" -DTARN_DLL="$build/bin/tarn.dll" \
        "$here/wizard/wizard.nsi" || die "the sample installer cannot be made"
}

show() {
    [ -n "${DISPLAY:-}" ] || die "--show needs a display (DISPLAY is not set)"
    export WINEPREFIX=$out/wine-show WINEDEBUG=-all
    export WINEDLLOVERRIDES='mscoree,mshtml=;winemenubuilder.exe=d'
    exec wine "$setup" 2> "$out/show.log"
}

#---------------------------------------------------------------------------------------------------
# The report

wrong=0

# check NAME DETAIL COMMAND... : one line of the report; wrong when the command fails.
check() {
    local name=$1 detail=$2
    shift 2
    if "$@"; then
        printf '  ok     %-42s %s\n' "$name" "$detail"
    else
        printf '  WRONG  %-42s %s\n' "$name" "$detail"
        wrong=$((wrong + 1))
    fi
}

equal() { [ "$1" = "$2" ]; }

# unix PATH: where Wine keeps a file of drive C.
unix() {
    local path=${1#C:}
    echo "$WINEPREFIX/drive_c${path//\\//}"
}

registry_value() { # KEY NAME
    wine reg query "$1" /v "$2" 2> /dev/null | tr -d '\r' | sed -n "s/^ *$2 *REG_SZ *//p"
}

clean_slate() {
    rm -rf "$(unix "$folder")"
    wine reg delete "$run_once" /v LakesideWelcome /f &> /dev/null
}

refused() { # ADDRESS POSITION MESSAGE
    local said rc
    said=$(wine "$setup" /S "/EMAIL=$1" "/D=$folder" 2> /dev/null)
    rc=$?
    said=$(tr -d '\r' <<< "$said")
    check "$1" "exit code $rc; $(sed -n 's/^ *message: *//p; s/^ *position: */position /p' \
        <<< "$said" | paste -sd';' | sed 's/;/; /')" \
        eval '[ $rc = 3 ] &&
              grep -qxF "  message:  '"${3//\"/\\\"}"'" <<< "$said" &&
              grep -qxF "  position: '"$2"'" <<< "$said" &&
              [ ! -e "$(unix "$folder")" ]'
}

# Waits until the installer has placed everything behind its wait window, and takes the picture.
photograph() {
    local limit=$((SECONDS + 60)) window desktop
    until window=$(xdotool search --onlyvisible --name '^Please wait$' 2> /dev/null) &&
        grep -q '^queued' "$out/install.log"; do
        kill -0 "$installer" 2> /dev/null && [ $SECONDS -lt $limit ] || return 1
        sleep 0.05
    done
    desktop=$(xdotool search --name 'Wine desktop$' 2> /dev/null | head -n 1)
    import -window "${desktop:-root}" "$shot" || return 1
    # It is in the picture if it is still there afterwards; and it is more than one plain colour.
    xdotool search --onlyvisible --name '^Please wait$' > /dev/null 2>&1 || return 1
    geometry=$(xwininfo -id "${window%%$'\n'*}" | awk '
        /Absolute upper-left X/ { x = $4 }  /Absolute upper-left Y/ { y = $4 }
        /^ *Width:/ { w = $2 }              /^ *Height:/ { h = $2 }
        END { print w "x" h "+" x "+" y }')
    [ "$(convert "$shot" -crop "$geometry" -unique-colors -format %w info:)" -gt 4 ]
}

install() {
    mkdir -p "$out/input"
    printf 'Lakeside Workbench licence 4711\r\n' > "$out/input/my licence.lic"
    geometry=
    wine "$setup" /PASSIVE /EMAIL=" user.name@example.com " \
        "/LICENCE=$(winepath -w "$out/input/my licence.lic" 2> /dev/null)" \
        /PAUSE=2000 "/D=$folder" > "$out/install.log" 2> "$out/install-errors.log" &
    installer=$!
    check 'shown while the installer works' "" photograph
    [ -z "$geometry" ] || printf '         %-42s %s\n' "$geometry" "$shot"
    wait "$installer"
    rc=$?
    check 'gone afterwards' '' eval '! xdotool search --onlyvisible --name "^Please wait$" &> /dev/null'
    check 'the installer ended well' "exit code $rc" equal $rc 0
}

report_files() {
    local root file name extra
    root=$(unix "$folder")
    while IFS= read -r file; do
        name=${file//\//\\}
        check "$name" "$(stat -c %s "$root/$file" 2> /dev/null || echo missing) bytes" \
            cmp -s "$out/product/tree/$file" "$root/$file"
    done < <(cd "$out/product/tree" && find . -type f -printf '%P\n' | LC_ALL=C sort)
    check 'licence\my licence.lic' 'the file given with /LICENCE=' \
        cmp -s "$out/input/my licence.lic" "$root/licence/my licence.lic"
    check 'registration.ini' 'the address, trimmed' \
        grep -q $'^Email=user.name@example.com\r*$' "$root/registration.ini"
    extra=$({
        (cd "$root" && find . -type f -printf '%P\n')
        (cd "$out/product/tree" && find . -type f -printf '%P\n')
        printf '%s\n' 'licence/my licence.lic' registration.ini embedch/config/chrc uninstall.exe
    } | LC_ALL=C sort | uniq -u | paste -sd' ')
    check 'nothing else' "$extra" equal "$extra" ''
}

# The five lines that hold the folder; what they must be is worked out here from the folder alone.
report_chrc() {
    local chrc escaped=${folder//\\/\\\\} number name path
    chrc=$(unix "$folder\\embedch\\config\\chrc")
    while read -r number name path; do
        local expected="$name = stradd($name, \"$escaped\\\\embedch\\\\$path;\");"
        check "line $number" "$expected" equal "$(sed -n "${number}p" "$chrc" 2> /dev/null)" "$expected"
    done << 'LINES'
27 _fpath lib\\libc
28 _fpath lib\\libch
29 _fpath lib\\libopt
34 _ipath include
40 _lpath dl
LINES
    check '59 lines, 1421 bytes and five folders' "$(wc -lc < "$chrc" | xargs) (lines, bytes)" \
        equal "$(wc -lc < "$chrc" | xargs)" "59 $((1421 + 5 * ${#escaped}))"
}

report_registry() {
    local command="\"$folder\\bin\\lakeside.exe\" --first-run" found
    found=$(registry_value "$run_once" LakesideWelcome)
    check LakesideWelcome "$found" equal "$found" "$command"
}

report_program() {
    local said
    said=$(wine "$folder\\bin\\lakeside.exe" --first-run 2> /dev/null | tr -d '\r')
    check 'the queued command works' "$(sed -n 2p <<< "$said")" \
        eval '! grep -q MISSING <<< "$said" && grep -qx "Welcome to Lakeside Workbench." <<< "$said"'
    check 'no tarn.dll is left behind in the temporary folder' '' \
        eval '[ -z "$(find "$WINEPREFIX/drive_c/users" -path "*Temp*" -name tarn.dll)" ]'
}

make_installer
[ "${2:-}" != --show ] || show

: "${TARN_WINE_DIR:=$out/wine}"
. "$here/../cmake/wine-env.sh"
trap wine_stop EXIT
wine_start || die "Wine cannot be started"

clean_slate
echo "Lakeside Workbench: $(du -k "$setup" | cut -f1) KB installer with tarn.dll ($(stat -c %s "$build/bin/tarn.dll") bytes)"
echo
echo 'Addresses that must stop the installation (message and position are the library'"'"'s):'
refused 'us er@example.com' 2 'invalid character in email.'
refused 'user@exa mple.com' 9 'invalid character in email.'
refused 'user@localhost' 5 'Invalid Domain name.'
echo
echo 'Wait window:'
install
echo
echo "Files in $folder, each compared byte for byte with the product:"
report_files
echo
echo 'embedch\config\chrc:'
report_chrc
echo
echo "$run_once:"
report_registry
echo
echo 'Afterwards:'
report_program
echo
if [ $wrong = 0 ]; then
    echo 'Everything is right.'
else
    echo "$wrong WRONG. The installer's own words are in $out/install.log."
    exit 1
fi
