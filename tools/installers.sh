#!/bin/bash
# installers.sh ROOT [REGEX] - runs the tests of the installers, or those whose names match, with the Wine of
# the system in the folder ROOT; as root, and where what it mounts and starts ends with it (debian_root_alone).
# Of ./dev installers.
set -eu -o pipefail
cd "$(dirname "$0")/.."
root=$1
folder=$PWD/build/installers

# shellcheck source=tools/debian-root.sh
. tools/debian-root.sh
debian_root_mount "$root" /tmp "$PWD"
# Programs of that system, for the tests, which run in this one.
mkdir -p "$folder/bin"
for program in wine wineserver winepath; do
    cat > "$folder/bin/$program" << END
#!/bin/sh
PATH=/usr/sbin:/usr/bin:/sbin:/bin exec chroot "$root" env -C "\$PWD" $program "\$@"
END
    chmod +x "$folder/bin/$program"
done
export PATH=$folder/bin:$PATH TARN_NODE=$folder
windows_folder=${folder//\//\\}
export TARN_ISCC=Z:$windows_folder\\node_modules\\innosetup\\bin\\ISCC.exe
rc=0
ctest --test-dir build/release --output-on-failure --no-tests=error -L '^installers$' \
    ${2:+-R "$2"} || rc=$?
# Its processes would end with this one, but not all of its files.
(
    TARN_WINE_DIR=$PWD/build/release/installers-wine
    # shellcheck source=tools/wine-env.sh
    . tools/wine-env.sh
    wine_stop
)
exit $rc
