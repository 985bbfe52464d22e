#!/bin/bash
# kit_test.sh BUILD_DIR SOURCE_DIR - the samples build from the kit alone, in a folder with a blank and brackets,
# as their first lines say. Before: TARN_ISCC, and the clients' compilers.
set -u -o pipefail
build=$(cd "$1" && pwd) || exit 2
source_dir=$2
export TARN_WIZARD=kit
# shellcheck source=samples/lib.sh
. "$source_dir/samples/lib.sh"

kit="$out/deeper/tarn kit (1) [x]" # not where ..\..\bin is the build's

quietly() { "$@" &> "$out/log" || { cat "$out/log"; return 1; }; }
in_folder() { (cd "$1" && shift && "$@"); }

need_tools wine makensis wixl msibuild go cmake
rm -rf "$out/deeper"
mkdir -p "$out"
quietly cmake --install "$build" --prefix "$kit" || die 'the kit cannot be made'
start_wine
: "${TARN_ISCC:?}"

check '32-bit NSIS' '' quietly makensis -V2 -WX -DX86 "$kit/samples/wizard/wizard.nsi"
check '  is there' '' test -s "$kit/samples/wizard/lakeside-setup.exe"
check 'Inno Setup' '' quietly in_folder "$kit/samples/inno" wine "$TARN_ISCC" /Q lakeside.iss
check '  is there' '' test -s "$kit/samples/inno/lakeside-setup.exe"
check 'Windows Installer' '' quietly in_folder "$kit/samples/msi" ./make.sh
check '  is there' '' test -s "$kit/samples/msi/lakeside.msi"
check 'Go' '' quietly in_folder "$kit/samples/go" env GOOS=windows GOARCH=amd64 GOCACHE="$out/cache" go build
check '  is there' '' test -s "$kit/samples/go/setup.exe"
check 'Rust' '' quietly in_folder "$kit/samples/rust" "$(PATH=/usr/bin:$PATH command -v rustc)" --edition 2021 \
    --target x86_64-pc-windows-gnu -L ../../lib setup.rs
check '  is there' '' test -s "$kit/samples/rust/setup.exe"

# The blocks of its README.
block() { awk -v from='```'"$1" '$0 == from { on = 1; next } /^```/ { on = 0 } on' "$kit/README.md" > "$kit/${1#* }"; }
block 'nsis setup.nsi'
check "README's script for 32-bit NSIS" '' quietly in_folder "$kit" makensis -V2 -WX setup.nsi
block 'inno setup.iss'
check "README's script for Inno Setup" '' quietly in_folder "$kit" wine "$TARN_ISCC" /Q setup.iss

# What was made of the kit installs.
folder='C:\From the kit'
run() { timeout 120 wine "$@" &> "$out/log"; }
check '32-bit NSIS installs' '' run "$kit/samples/wizard/lakeside-setup.exe" /S /EMAIL=user@example.com \
    "/D=$folder"
report_chrc "$folder"
check '  and goes' '' run "$folder\\uninstall.exe" /S
clean_slate "$folder"
check 'Inno Setup installs' '' run "$kit/samples/inno/lakeside-setup.exe" /VERYSILENT /SUPPRESSMSGBOXES \
    /EMAIL=user@example.com "/DIR=$folder"
report_chrc "$folder"
check '  and goes' '' run "$folder\\unins000.exe" /VERYSILENT
clean_slate "$folder"
# Without a blank: Wine would put quotes around it, which NSIS itself does not take.
plain='C:\From-the-kit'
check "README's script for 32-bit NSIS installs" '' run "$kit/workbench-setup.exe" /S "/D=$plain"
check '  its file' '' cmp -s "$kit/include/tarn.h" "$(unix "$plain\\docs\\tarn.h")"
rm -rf "$(unix "$plain")"
check "README's script for Inno Setup installs" '' run "$kit/workbench-inno-setup.exe" /VERYSILENT \
    /SUPPRESSMSGBOXES "/DIR=$folder"
check '  its file' '' cmp -s "$kit/include/tarn.h" "$(unix "$folder\\docs\\tarn.h")"
check '  its command for the next log-on' '' \
    equal "$(registry_value "$run_once" WorkbenchWelcome)" "\"$folder\\workbench.exe\" --first-run"
wine reg delete "$run_once" /v WorkbenchWelcome /f &> /dev/null
echo
[ $wrong = 0 ] || { echo "$wrong WRONG"; exit 1; }
echo 'Everything is right.'
