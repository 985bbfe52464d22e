#!/bin/bash
# quoting_test.sh SOURCE_DIR BUILD_DIR - the lines of docs/tarntool.md that show how NSIS and cmd quote, run as they
# stand there. Those for Inno Setup and Windows Installer are run by the tests of their installers.
set -u
source=$(cd "$1" && pwd) || exit 2
build=$(cd "$2" && pwd) || exit 2
work=$build/quoting
failures=0
# shellcheck source=tests/docs/quoting.sh
. "$source/tests/docs/quoting.sh"

export TARN_WINE_DIR=${TARN_WINE_DIR:-$build/wine}
# shellcheck source=tools/wine-env.sh
. "$source/tools/wine-env.sh"
rm -rf "$work"
mkdir -p "$work"
cd "$work" || exit 2
wine_start || exit 1
printf 'one' > 'a b.txt'

# Through a file: Wine's own background processes keep the descriptors of the program that happened to start
# them, and ctest reads its pipe to the end.
run() {
    local code=0
    timeout 60 wine "$@" < /dev/null &> run.log || code=$?
    cat run.log
    return $code
}

# arrived WHAT CODE FOLDER: the exit code is 0, and the file is in the folder on drive C, alone.
arrived() {
    local folder=$WINEPREFIX/drive_c/$3
    if [ "$2" = 0 ] && cmp -s 'a b.txt' "$folder/a b.txt" && [ "$(find "$folder" -type f | wc -l)" = 1 ]; then
        echo "ok      $1"
    else
        echo "FAILED  $1: exit code $2, $(find "$folder" 2>&1 | paste -sd' ')"
        failures=$((failures + 1))
    fi
}

empty_folder() {
    rm -rf "$WINEPREFIX/drive_c/${1%%/*}"
    mkdir -p "$WINEPREFIX/drive_c/$1"
}

line=$(quoting_example NSIS) || { echo 'the page has no line for NSIS'; exit 1; }
cat > quoting.nsi << END
Target amd64-unicode
Unicode true
Name "Quoting"
OutFile "quoting.exe"
SilentInstall silent
RequestExecutionLevel user
Section
  InitPluginsDir
  File "/oname=\$PLUGINSDIR\\tarntool.exe" "$build/bin/tarntool.exe"
  File "/oname=\$PLUGINSDIR\\a b.txt" "a b.txt"
  StrCpy \$INSTDIR "C:\\Quoting (x86)\\Target"
  $line
  Pop \$0
  SetErrorLevel \$0
SectionEnd
END
empty_folder 'Quoting (x86)/Target'
makensis -V2 -WX quoting.nsi && run quoting.exe
arrived 'NSIS' $? 'Quoting (x86)/Target'

line=$(quoting_example cmd) || { echo 'the page has no line for cmd'; exit 1; }
cp "$build/bin/tarntool.exe" .
printf '@%s\r\n@exit %%ERRORLEVEL%%\r\n' "$line" > quoting.bat
empty_folder Target
run cmd /c quoting.bat
arrived 'cmd' $? Target
# Not with the same line: Wine's "start" takes it apart by itself, and "C:\Target\" for a quotation mark in a name.
printf '@start /wait "" tarntool check\r\n@exit %%ERRORLEVEL%%\r\n' > waiting.bat
run cmd /c waiting.bat
code=$?
if [ $code = 100 ]; then
    echo 'ok      cmd waits with start /wait'
else
    echo "FAILED  start /wait: exit code $code"
    failures=$((failures + 1))
fi
[ $failures = 0 ]
