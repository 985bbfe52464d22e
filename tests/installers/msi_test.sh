#!/bin/bash
# msi_test.sh BUILD_DIR - the sample product as a package for Windows Installer: installed with nobody at the
# keyboard, repaired, removed, refused, and taken back when an action fails.
set -u
build=$(cd "$1" && pwd) || exit 2
here=$(cd "$(dirname "$0")" && pwd)
export TARN_WIZARD=msi
# shellcheck source=samples/lib.sh
. "$here/../../samples/lib.sh"
# shellcheck source=tests/samples/hold.sh
. "$here/../samples/hold.sh"
# shellcheck source=tests/docs/quoting.sh
. "$here/../docs/quoting.sh"

folder='C:\Tools (64-bit) [x]\Lakeside Workbench'
package=$out/lakeside.msi
files=(bin/lakeside.exe bin/survey.dat 'docs/Read me first.txt' embedch/include/lakeside.h)
log=$out/msi.log
action_failed=91 # the lowest eight bits of Wine's 1627; Windows gives 1603
code=

# run OPTION... : sets code. With a message box it would not end.
run() {
    timeout 120 wine msiexec "$@" /qn /l*v "$(windows "$log")" &> "$out/run.log"
    code=$?
}

install() { run /i "$(windows "$package")" "INSTALLFOLDER=$folder" "$@"; }

# The columns of the package's table, as they are.
table() { msiinfo export "$package" "$1" | tr -d '\r' | tail -n +4; }
# In both views of the registry.
programs() {
    local view
    for view in 32 64; do
        wine reg query 'HKLM\Software\Microsoft\Windows\CurrentVersion\Uninstall' /s /reg:$view 2> /dev/null
    done
}

traps() {
    local name type source target
    echo 'The package:'
    while IFS=$'\t' read -r name type source target _; do
        check "$name is a program in the package" "$target" equal "$((type & 63)) $source" '2 TarnTool'
        # 1024: deferred. 2048: not as the user, who may not write to Program Files.
        [ $((type & 1024)) = 0 ] ||
            check "$name has the rights to write" "type $type" equal $((type & 2048)) 2048
        check "$name must succeed" "type $type" equal $((type & 192)) 0
    done < <(table CustomAction)
    check 'the program is that of the build' '' \
        cmp -s <(msiinfo extract "$package" Binary.TarnTool) "$build/bin/tarntool.exe"
}

# The source for later versions of WiX, which nothing here can build, runs the same program in the same way.
other_source() {
    local name target quoted
    echo 'The source for WiX 4:'
    check 'it is XML' '' python3 -c 'import sys, xml.dom.minidom; xml.dom.minidom.parse(sys.argv[1])' \
        "$samples/msi/lakeside-wix4.wxs"
    while IFS=$'\t' read -r name _ _ target _; do
        # shellcheck disable=SC2001 # in a substitution of the shell, an ampersand would be the text itself
        quoted=$(sed 's/"/\&quot;/g' <<< "$target")
        check "$name is the same" "$target" contains "$(tr -s ' \n' ' ' < "$samples/msi/lakeside-wix4.wxs")" \
            "<CustomAction Id=\"$name\" BinaryRef=\"TarnTool\" ExeCommand=\"$quoted\""
    done < <(table CustomAction)
}

installed() {
    local file
    for file in "${files[@]}"; do
        check "$file" "$(stat -c %s "$(unix "$folder")/$file" 2> /dev/null || echo missing) bytes" \
            cmp -s "$tree/$file" "$(unix "$folder")/$file"
    done
    check 'nothing else' '' equal "$(cd "$(unix "$folder")" && find . -type f | wc -l)" 5
    report_chrc "$folder"
    report_run_once "$folder"
    check 'an entry in the list of programs' '' contains "$(programs)" 'Lakeside Workbench'
}

nothing_left() {
    local left
    left=$(find "$(unix "$folder")" -printf '%P ' 2> /dev/null)
    check '  the folder is gone' "$left" absent "$(unix "$folder")"
    check '  nothing is queued' '' empty "$(registry_value "$run_once" $run_once_value)"
    left=$(temporary_files)
    check '  no temporary files' "$left" empty "$left"
}

# A package with one action more: the line of docs/tarntool.md.
quoting() {
    local example=$out/quoting.msi line temp
    line=$(quoting_example 'Windows Installer' | sed -n "s/^ExeCommand='\(.*\)'$/\1/p")
    check 'the page has a line' "$line" fails empty "$line"
    cp "$package" "$example"
    msibuild "$example" -q \
        "INSERT INTO CustomAction (Action, Type, Source, Target) VALUES ('Quoting', 3074, 'TarnTool', '$line')" \
        "INSERT INTO InstallExecuteSequence (Action, Condition, Sequence) VALUES ('Quoting', 'NOT REMOVE', 4050)" ||
        die 'the action cannot be added'
    temp=$(winepath -u "$(wine cmd /c 'echo %TEMP%' 2> /dev/null | tr -d '\r')")
    echo 'from the page' > "$temp/a b.txt"
    timeout 120 wine msiexec /i "$(windows "$example")" "INSTALLFOLDER=$folder" EMAIL=user.name@example.com \
        /qn /l*v "$(windows "$log")" &> "$out/run.log"
    code=$?
    check '  exit code' "$code" equal "$code" 0
    check '  the file is there' '' cmp -s "$temp/a b.txt" "$(unix "$folder")/a b.txt"
    rm -f "$temp/a b.txt" "$(unix "$folder")/a b.txt"
    run /x "$(windows "$example")"
    check '  removed: exit code' "$code" equal "$code" 0
}

# Wine makes the folder when it works out what the installation costs.
nothing_installed() {
    check '  it is not installed' "$code" fails equal "$code" 0
    find "$(unix "$folder")" -depth -type d -empty -delete 2> /dev/null
    nothing_left
}

need_tools perl wine wixl msibuild msiinfo
make_product
make_tool hold
"$samples/msi/make.sh" "$tree" "$build/bin/tarntool.exe" "$package" || die "the package cannot be made"
traps
other_source
# Wine keeps what a failed installation has registered: each run begins with a prefix that has seen none.
rm -rf "$out/wine/prefix" "$out/wine/stamp"
start_wine

echo 'A refused address:'
install 'EMAIL=us er@example.com'
check '  it fails' "exit code $code" equal $code $action_failed
check '  the log names the action' '' grep -qa CheckEmail "$log"
nothing_installed
echo 'No address:'
install
nothing_installed

echo 'Installed:'
install 'EMAIL=user.name@example.com'
check '  exit code' "$code" equal "$code" 0
installed

echo 'Repaired:'
rm "$(unix "$folder\\bin\\survey.dat")" "$(unix "$folder\\embedch\\config\\chrc")"
run /i "$(windows "$package")" REINSTALL=ALL REINSTALLMODE=omus
check '  exit code' "$code" equal "$code" 0
installed

echo 'Removed:'
run /x "$(windows "$package")"
check '  exit code' "$code" equal "$code" 0
nothing_left
check '  no entry in the list of programs' '' fails contains "$(programs)" 'Lakeside Workbench'

echo 'Installed while the start-up file, of something else, is in use:'
start_up_file=$(unix "$folder\\embedch\\config\\chrc")
mkdir -p "$(dirname "$start_up_file")"
echo other > "$start_up_file"
hold "$folder\\embedch\\config\\chrc"
install 'EMAIL=user.name@example.com'
check '  it fails' "exit code $code" equal $code $action_failed
check '  the log names the action' '' grep -qa WriteStartUpFile "$log"
release
check '  that file is all that is left' '' equal "$(cd "$(unix "$folder")" && find . -type f -exec cat {} +)" other
rm -f "$start_up_file"
nothing_installed
echo 'Installed again:'
install 'EMAIL=user.name@example.com'
check '  exit code' "$code" equal "$code" 0

echo 'Repaired while the start-up file is in use:'
hold "$folder\\embedch\\config\\chrc"
run /i "$(windows "$package")" REINSTALL=ALL REINSTALLMODE=omus
check '  it fails' "exit code $code" equal $code $action_failed
check '  the log names the action' '' grep -qa WriteStartUpFile "$log"
release
installed
run /x "$(windows "$package")"
check 'removed after that: exit code' "$code" equal "$code" 0
echo 'The line that docs/tarntool.md shows:'
quoting
nothing_left
echo
[ $wrong = 0 ] || { echo "$wrong WRONG"; exit 1; }
echo 'Everything is right.'
