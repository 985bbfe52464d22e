#!/bin/bash
# zip.sh SOURCE_DIR BUILD_DIR [PROGRAM...] - the self-test's zip, as people get it: unpacked into a folder with
# a space, brackets and another letter than ASCII has, far from the build, and run in a new Wine by a user
# without rights. Then with the library missing, and with one that is broken on purpose.
#
# Without names of programs, those are run that take little time; "all" runs all of them and prints the
# report.
# shellcheck source=tests/package/lib.sh
. "$(dirname "$0")/../package/lib.sh"
shift 2
[ $# -gt 0 ] || set -- binary. frame.HostSettings frame.TarnApp hosts.Boxes install.FileCopy install.RunOnce validate.
need_tools cmake unzip xmllint wine Xvfb
nobody=65534
name=${kit_name%-win64}-selftest-win64

if [ "$(id -u)" = 0 ] && ! command -v setpriv > /dev/null; then
    echo 'SKIPPED: running as root, and no setpriv to become somebody else'
    exit 77
fi

# Half of the test's time, and the same zip as long as nothing of this changes.
packed=$build/selftest/packed
of=$(cd "$source_dir" && find "$zips/$kit_name.zip" "$build/selftest/parts" "$build/pack-selftest.cmake" \
    cmake/*pack* cmake/source-date.cmake selftest LICENSE THIRD-PARTY.md -type f -exec sha256sum {} + | LC_ALL=C sort
    cmake --version)
pack() {
    rm -rf "$packed" && mkdir "$packed" &&
        cmake -D "KIT=$zips/$kit_name.zip" -D "FOLDER=$packed" -P "$build/pack-selftest.cmake" &&
        printf '%s\n' "$of" > "$packed/of"
}
[ "$(cat "$packed/of" 2> /dev/null)" = "$of" ] || check 'the zip is made of the kit' pack
cp "$packed/$name".zip* .
check 'its checksum is right' sha256sum --check --quiet "$name.zip.sha256"
check 'it unpacks' unzip -q "$name.zip" -d "$scratch/Prüfung"
place=$scratch/Prüfung/$name
check 'its library is that of the kit' cmp "$place/tests/tarn.dll" \
    <(unzip -p "$zips/$kit_name.zip" "$kit_name/bin/tarn.dll")
check 'it holds the test programs of the build, and nothing else' same \
    "$(cd "$place" && find . -type f | LC_ALL=C sort)" \
    "$({ printf './%s\n' GoogleTest-licence.txt LICENSE README.txt THIRD-PARTY.md selftest.exe tests/jobs.dll tests/tarn.dll
        sed -n 's|^\(tests/.*\.exe\)$|./\1|p' "$build/selftest/parts.txt"; } | LC_ALL=C sort)"
programs=$(find "$place/tests" -name '*.exe' | wc -l)
check 'there are many' test "$programs" -ge 30

# Everything that belongs to the user: a home, temporary files, a Wine.
user=$scratch/user
mkdir -p "$user"/{tmp,tools,wine}
kept_wine=$build/wine-nobody tools=$source_dir/tools
# shellcheck source=tests/support/kept_wine.sh
. "$source_dir/tests/support/kept_wine.sh"
take_kept_wine "$user/wine"
cp "$source_dir"/tools/wine-*.sh "$user/tools"
cat > "$user/wine.sh" << 'END'
# wine.sh PROGRAM [ARGUMENT]... - in the folder that PLACE names.
set -u
HOME=$(dirname "$0")
TARN_WINE_DIR=$HOME/wine
. "$HOME/tools/wine-env.sh"
if [ "$1" = stop ]; then
    wine_stop
    exit
fi
wine_start || exit
[ "$1" != start ] || exit 0
cd "$PLACE" || exit
exec wine "$@" < /dev/null
END
as_user() {
    local become=()
    if [ "$(id -u)" = 0 ]; then
        chown -R $nobody:$nobody "$scratch"
        become=(setpriv "--reuid=$nobody" "--regid=$nobody" --clear-groups)
    fi
    "${become[@]}" env -i PATH="$PATH" HOME="$user" USER=nobody TMPDIR="$user/tmp" PLACE="$place" \
        TARN_SHARED_PROCESSOR="${TARN_SHARED_PROCESSOR:-}" \
        bash "$user/wine.sh" "$@" > "$scratch/out.raw" 2> "$scratch/err"
    local code=$?
    tr -d '\r' < "$scratch/out.raw" > "$scratch/out"
    return $code
}
trap 'as_user stop; rm -rf "$scratch"' EXIT

ends() { # CODE PROGRAM...
    local expected=$1 code=0
    shift
    as_user "$@" || code=$?
    [ "$code" = "$expected" ] || { echo "exit code $code, expected $expected"; cat out err; return 1; }
}
# What the user has: settings, and files anywhere but in Wine's own folders.
belongings() {
    as_user regedit /E 'C:\settings.reg' HKEY_CURRENT_USER
    # But for what Wine itself notes, until it ends, of the screen.
    iconv -f UTF-16 -t UTF-8 "$user/wine/prefix/drive_c/settings.reg" |
        awk -v RS='\r\n\r\n' '!/Wine\\Temporary System Parameters/'
    (cd "$scratch" && find user/tmp user/wine/prefix/drive_c/users "Prüfung" -mindepth 1 | LC_ALL=C sort)
}

check 'Wine starts' ends 0 start
keep_wine "$user/wine"
check 'it says how it is called' ends 0 selftest.exe --help
check 'in so many words' holds out '--touch-user'
check 'it refuses what it does not know' ends 2 selftest.exe --unknown
belongings > before
[ "$1" = all ] && set --
check 'everything passes' ends 0 selftest.exe "$@"
cp out progress
check 'it shows its progress' grep -qE '^\[ ?2/[0-9]+\] .*  [0-9]+ passed' progress
belongings > after
check 'it leaves nothing behind but its reports' same "$(diff before after | grep '^[<>]')" \
    "> Prüfung/$name/report.txt
> Prüfung/$name/report.xml"

# The reports
report() { tr -d '\r' < "$place/report.txt"; }
# As the programs themselves say, one Suite.Test each, of those that were wanted.
listed() {
    as_user cmd /c 'for %p in (tests\*.exe) do @echo = %p&& @%p --gtest_list_tests'
    awk -v parts="$*" '
        BEGIN { n = split(parts, part, " ") }
        /^= / { wanted = n == 0; for (i = 1; i <= n; i++) if (index($2, part[i])) wanted = 1 }
        /^[^ =].*\./ { suite = $1 }
        /^  / && wanted && suite $1 !~ /DISABLED_/ { print suite $1 }' out | sort
}
report > report
[ $# -gt 0 ] || sed '/^Each test/,$d' report # all of them
for fact in 'system          Wine ' 'code pages      ANSI 1252' 'DPI             96 (100 %)' \
    "user's settings left alone" 'Please send report.txt'; do
    check "the report says: $fact" grep -qF "$fact" report
done
check 'the report has each test once' same \
    "$(sed -n 's/^    \(passed\|skipped\)  *\(.*\) ([0-9]* ms)$/\2/p' report | sort)" "$(listed "$@")"
check 'it names the library' holds report \
    "$(stat -c %s "$place/tests/tarn.dll") bytes, SHA-256 $(sha256sum < "$place/tests/tarn.dll" | cut -d' ' -f1)"
check 'the XML is well-formed' xmllint --noout "$place/report.xml"
cases() { xmllint --xpath "count(//testcase$1)" "$place/report.xml"; }
check 'the XML has as many tests' same "$(cases '')" "$(grep -cE '^    (passed|skipped) ' report)"
check 'none of which went wrong' same "$(cases '[failure or error]')" 0
check 'and all of which passed or were skipped for a reason' same \
    "$(cases "[skipped[string-length(@message) > 10]]")" "$(grep -c '^    skipped ' report)"
no_folder() { ! grep -nF -e "$(basename "$scratch")" -e 'users' "$place/$1"; }
check 'the reports name no folder of this machine' no_folder report.txt
check 'nor does the XML' no_folder report.xml

# A library that is not there, and one that is not what it should be
mv "$place/tests/tarn.dll" .
check 'without the library it says what is missing' ends 1 selftest.exe
check 'in so many words' holds out 'there is no tests\tarn.dll beside this program'
perl -pe 's/invalid character in email\./invalid charakter in email./' tarn.dll > "$place/tests/tarn.dll"
check 'a library with one wrong letter is noticed' ends 1 selftest.exe validate. frame.TarnApp
report > report
check 'the report names the tests that fail' grep -q \
    '^  validate\.VerifyEmailTest VerifyEmail\.[A-Za-z]*: FAILED$' report
check 'with their reasons' holds report 'invalid charakter in email.'
check 'and no others' same "$(sed -n 's/^  \([a-z]*\.[A-Za-z]*\) .*: FAILED$/\1/p' report | sort -u)" \
    validate.VerifyEmailTest
check 'what does not hang on it passes' holds report 'passed   TarnApp.'
check 'so says the XML' test "$(cases '[failure]')" -ge 1
echo "not a library" > "$place/tests/tarn.dll"
check 'a library that does not load is noticed' ends 1 selftest.exe install.FileCopy
check 'in every test that needs it' same "$(grep -c '^    passed ' "$place/report.txt")" 0
sed -n '/passed/p' progress
finish
