# shellcheck shell=bash
# Sourced by run.sh and by the tests of the samples: makes the sample installer, starts Wine, and
# compares what was installed with what must be there.
#
# Before: build, the build folder's absolute path; TARN_WIZARD, which installer it is:
#   (empty)  64-bit NSIS     x86   32-bit NSIS     inno  Inno Setup     msi   Windows Installer
# x86 and inno need a Wine that runs 32-bit programs.

: "${build:?}"
samples=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
out=$build/samples${TARN_WIZARD:+-$TARN_WIZARD}
wizard_options=(-DTARN_DLL="$build/bin/tarn.dll")
[ "${TARN_WIZARD:-}" != x86 ] || wizard_options=(-DX86 -DTARNTOOL="$build/bin/tarntool.exe")
setup=$out/lakeside-setup.exe
tree=$out/product/tree
licence=$out/input/my\ licence.lic
run_once='HKCU\Software\Microsoft\Windows\CurrentVersion\RunOnce'
run_once_value=LakesideWelcome
uninstall_key='HKCU\Software\Microsoft\Windows\CurrentVersion\Uninstall\Lakeside'
installers_own=(uninstall.exe) # files, beside those of the product

die() {
    echo "${0##*/}: $*" >&2
    exit 2
}

need_tools() {
    local tool
    for tool; do
        command -v "$tool" > /dev/null || die "$tool is missing"
    done
}

# made FILE OF COMMAND...: makes the file, unless it has been made, of just that.
made() {
    local file=$1 of=$2
    shift 2
    [ ! -e "$file" ] || [ "$(cat "$file.of" 2> /dev/null)" != "$of" ] || return 0
    rm -f "$file.of"
    "$@" && printf '%s\n' "$of" > "$file.of"
}

# contents PATH...: tells files and folders from others.
contents() { find -L "$@" -type f -print0 | LC_ALL=C sort -z | xargs -0 sha256sum | sha256sum; }

make_product() {
    mkdir -p "$out/input" "$build/screenshots"
    made "$out/product/product.nsh" \
        "$(contents "$samples/product"; "${MINGW_CC:-x86_64-w64-mingw32-gcc}" --version)" \
        "$samples/product/make.sh" "$out/product" || die "the sample product cannot be made"
    printf 'Lakeside Workbench licence 4711\r\n' > "$licence"
}

make_installer() {
    [ -f "$build/bin/tarn.dll" ] || die "there is no $build/bin/tarn.dll"
    make_product
    made "$setup" "$(contents "$out/product" "$samples/wizard" "$samples/../nsis" "$build"/bin/*.{dll,exe}
        makensis -VERSION; printf '%s\n' "${wizard_options[@]}")" \
        makensis -V2 -WX -DPRODUCT_DIR="$out/product" -DOUT_FILE="$setup" "${wizard_options[@]}" \
        "$samples/wizard/wizard.nsi" || die "the sample installer cannot be made"
}

# A prefix and a display of the samples' own, unless TARN_WINE_DIR names others: keystrokes and
# pictures need a display that nothing else uses.
start_wine() {
    [ -n "${TARN_WINE_DIR:-}" ] || trap wine_stop EXIT
    : "${TARN_WINE_DIR:=$out/wine}"
    # Texts in the fonts that Windows has for them, as far as Wine has its own of that name.
    TARN_WINE_FONTS='marlett.ttf tahoma.ttf tahomabd.ttf ms_sans_serif.ttf'
    # shellcheck source=tools/wine-env.sh
    . "$samples/../tools/wine-env.sh"
    wine_start || die "Wine cannot be started"
}

#---------------------------------------------------------------------------------------------------
# The report

wrong=0

# check NAME DETAIL COMMAND... : one line of the report; wrong when the command fails.
check() {
    local name=$1 detail=$2 verdict=ok
    shift 2
    if ! "$@"; then
        verdict=WRONG
        wrong=$((wrong + 1))
    fi
    printf '  %-6s %-42s %s\n' $verdict "$name" "$detail"
}

equal() { [ "$1" = "$2" ]; }
empty() { [ -z "$1" ]; }
absent() { [ ! -e "$1" ]; }
contains() { grep -qF -- "$2" <<< "$1"; }
fails() { ! "$@"; }

# unix PATH: where Wine keeps a file of drive C.
unix() {
    local path=${1#C:}
    echo "$WINEPREFIX/drive_c${path//\\//}"
}

# windows FILE: its name for a Windows program.
windows() { winepath -w "$1" 2> /dev/null; }

# By its path: a bare name is looked for by a program of Wine's own, which takes as long again.
registry() { wine "$WINEPREFIX/drive_c/windows/system32/reg.exe" "$@"; }

registry_value() { # KEY NAME
    registry query "$1" /v "$2" 2> /dev/null | tr -d '\r' | sed -n "s/^ *$2 *REG_SZ *//p"
}

on_screen() { xdotool search --onlyvisible --name "$1" &> /dev/null; }

registry_key() { registry query "$1" &> /dev/null; }

# What the installer and the library may have left in the temporary folder. The uninstaller's copy of itself
# is not among it: the system removes that at the next start.
temporary_files() {
    find "$WINEPREFIX/drive_c/users" -ipath '*/temp/*' ! -ipath '*/~nsu*' ! -ipath '*/iu-*.tmp*' \
        -printf '%f '
}

clean_slate() { # FOLDER
    rm -rf "$(unix "$1")"
    registry delete "$run_once" /v $run_once_value /f &> /dev/null
    registry delete "$uninstall_key" /f &> /dev/null
    find "$WINEPREFIX/drive_c/users" -ipath '*/temp/*' -delete
}

report_files() { # FOLDER
    local root file extra
    root=$(unix "$1")
    while IFS= read -r file; do
        check "${file//\//\\}" "$(stat -c %s "$root/$file" 2> /dev/null || echo missing) bytes" \
            cmp -s "$tree/$file" "$root/$file"
    done < <(cd "$tree" && find . -type f -printf '%P\n' | LC_ALL=C sort)
    check 'licence\my licence.lic' 'the licence file that was given' \
        cmp -s "$licence" "$root/licence/my licence.lic"
    check 'registration.ini' 'the address, trimmed' \
        grep -q $'^Email=user.name@example.com\r*$' "$root/registration.ini"
    extra=$({
        (cd "$root" && find . -type f -printf '%P\n')
        (cd "$tree" && find . -type f -printf '%P\n')
        printf '%s\n' 'licence/my licence.lic' registration.ini embedch/config/chrc "${installers_own[@]}"
    } | LC_ALL=C sort | uniq -u | paste -sd' ')
    check 'nothing else' "$extra" empty "$extra"
}

# The five lines that hold the folder; what they must be is worked out here from the folder alone.
report_chrc() { # FOLDER
    local chrc escaped=${1//\\/\\\\} number name path expected size
    chrc=$(unix "$1\\embedch\\config\\chrc")
    while read -r number name path; do
        expected="$name = stradd($name, \"$escaped\\\\embedch\\\\$path;\");"
        check "line $number" "$expected" equal "$(sed -n "${number}p" "$chrc" 2> /dev/null)" "$expected"
    done << 'LINES'
27 _fpath lib\\libc
28 _fpath lib\\libch
29 _fpath lib\\libopt
34 _ipath include
40 _lpath dl
LINES
    read -r number size < <(wc -lc < "$chrc")
    check 'all of it' "$number lines; $size bytes: the template's 1421, and five times ${#escaped} for the folder" \
        equal "$number $size" "59 $((1421 + 5 * ${#escaped}))"
}

report_run_once() { # FOLDER
    local found
    found=$(registry_value "$run_once" $run_once_value)
    check $run_once_value "$found" equal "$found" "\"$1\\bin\\lakeside.exe\" --first-run"
}

# Runs the very command that was queued.
report_program() {
    local said='' command
    command=$(registry_value "$run_once" $run_once_value)
    if [[ $command =~ ^\"([^\"]*)\"\ ([^ ]*)$ ]]; then
        said=$(wine "${BASH_REMATCH[1]}" "${BASH_REMATCH[2]}" 2> /dev/null | tr -d '\r')
    fi
    check 'the queued command says its welcome' "$(sed -n 1p <<< "$said")" \
        contains "$said" 'Welcome to Lakeside Workbench.'
    check 'the program finds its parts' "$(sed -n 2p <<< "$said")" \
        equal "$(grep -c '^  found ' <<< "$said") $(grep -c MISSING <<< "$said")" '3 0'
}
