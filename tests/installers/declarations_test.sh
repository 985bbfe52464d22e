#!/bin/bash
# declarations_test.sh BUILD_DIR - the declarations for a 64-bit Inno Setup compile with the compiler that there
# is, whose Setup is a 32-bit one: nothing of it is run. Before: TARN_ISCC.
set -u
build=$(cd "$1" && pwd) || exit 2
here=$(cd "$(dirname "$0")" && pwd)
export TARN_WIZARD=inno7
# shellcheck source=samples/lib.sh
. "$here/../../samples/lib.sh"

# compile DECLARATIONS: with a script that calls all of them.
compile() {
    cat > "$out/calls.iss" << SCRIPT
#define TarnDll "$(windows "$build/bin/tarn.dll")"
[Setup]
AppName=Calls
AppVersion=1
DefaultDirName={localappdata}\\Calls
OutputBaseFilename=calls
#include "$(windows "$1")"
[Code]
function InitializeSetup: Boolean;
var
  Address, Message, Path: String;
  Position: Integer;
begin
  Address := 'user@example.com';
  Result := TarnVerifyEmail(Address, Message, Position) and
    TarnDoFileOpenDialog('', 'Choose', 'All files (*.*)|*.*||', 'lic', Path) and
    (TarnFileCopy('C:\\a.txt', 'C:\\b\\') = 1) and (PutInRunOnce('a', 'b') = 1) and
    (Write_ch_config_File('C:\\b') = 1) and (DoWaitDlgModless(0, 'a', 'b') + CloseWaitDlg = 0);
end;
SCRIPT
    : "${TARN_ISCC:?}"
    rm -f "$out/calls.exe"
    wine "$TARN_ISCC" /Q "/O$(windows "$out")" "$(windows "$out/calls.iss")" &> "$out/iscc.log"
}

need_tools wine
mkdir -p "$out"
start_wine
check 'the declarations compile' "$(head -n 1 "$out/iscc.log" 2> /dev/null)" compile "$samples/inno7/tarn.iss"
check 'and make a Setup' '' test -s "$out/calls.exe"
# The compiler sees what is wrong.
sed 's/errorPosition: Integer; message/errorPosition: Integer; message, more/' "$samples/inno7/tarn.iss" \
    > "$out/wrong.iss"
check 'a wrong number of arguments does not' '' fails compile "$out/wrong.iss"
# Names, parameters and results are those of the header.
check 'seven functions are declared' '' equal "$(grep -c "^external '" "$samples/inno7/tarn.iss")" 7
echo
[ $wrong = 0 ] || { cat "$out/iscc.log"; echo "$wrong WRONG"; exit 1; }
echo 'Everything is right.'
