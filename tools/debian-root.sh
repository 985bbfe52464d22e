# shellcheck shell=bash
# Sourced, after packages.sh: a Debian in a folder of its own, which leaves the machine's packages alone.
# It is made as root, by the package debootstrap.
#
#   debian_mirror                        the mirror that this machine's apt is set up with
#   debian_root_bare ROOT SUITE [CACHE]  a bare system of that suite; what was in ROOT is removed; what is
#                                        downloaded is kept in the folder CACHE
#   debian_root_make ROOT SUITE          the same, set up to be quick: without manuals and the like
#   debian_root_install ROOT PACKAGE...  installs packages in it, from the same mirror
#   debian_root_alone COMMAND...         runs the command, as root; what it mounts, and whatever it
#                                        starts, ends with it
#   debian_root_mount ROOT FOLDER...     for that command: brings the kernel's file systems into ROOT, and
#                                        folders of the machine's, under their own names
#   debian_root_end ROOT                 ends what still runs in it
#   debian_root_remove ROOT

debian_mirror() {
    local mirror
    mirror=$(apt-get indextargets --format '$(LABEL) $(REPO_URI)' 'Created-By: Packages' |
        sed -n 's/^Debian //p' | head -n 1)
    [ -n "$mirror" ] || { echo 'debian-root.sh: apt knows no mirror of Debian' >&2; return 1; }
    printf '%s\n' "$mirror"
}

# What the machine's apt knows of the way to the mirror holds for this one, too.
debian_root_bare() {
    local root=$1 suite=$2 mirror
    mirror=$(debian_mirror) || return
    debian_root_remove "$root" || return
    mkdir -p "$root" || return
    debian_root_alone debootstrap --variant=minbase ${3:+--cache-dir="$3"} "$suite" "$root" "$mirror" \
        > "$root.log" 2>&1 < /dev/null ||
        { tail -n 5 "$root.log" >&2; return 1; }
    apt-config dump | grep -E '^Acquire::(https?|Check-[A-Za-z-]*|Retries)(::| )' |
        as_root tee "$root/etc/apt/apt.conf.d/machine" > /dev/null
}

debian_root_make() {
    local root=$1
    debian_root_bare "$root" "$2" || return
    # It is thrown away: nothing has to survive a power cut, and nobody reads manuals in it.
    as_root tee "$root/etc/dpkg/dpkg.cfg.d/quick" > /dev/null << 'SETTINGS' || return
force-unsafe-io
path-exclude=/usr/share/doc/*
path-exclude=/usr/share/man/*
path-exclude=/usr/share/locale/*
SETTINGS
    as_root tee "$root/etc/apt/apt.conf.d/quick" > /dev/null << 'SETTINGS' || return
APT::Install-Recommends "false";
Acquire::Languages "none";
SETTINGS
}

# The index is read every time: an architecture may have been added.
debian_root_install() {
    local root=$1
    shift
    { as_root chroot "$root" apt-get -q update &&
        as_root chroot "$root" env DEBIAN_FRONTEND=noninteractive \
            apt-get -q -y -o Dpkg::Use-Pty=0 install "$@"; } >> "$root.log" 2>&1 < /dev/null ||
        { tail -n 5 "$root.log" >&2; return 1; }
}

debian_root_alone() {
    as_root unshare --mount --pid --fork --kill-child --mount-proc "$@"
}

debian_root_mount() {
    local root=$1 folder
    shift
    for folder in /proc /dev; do
        mount --rbind "$folder" "$root$folder" || return
    done
    for folder; do
        mkdir -p "$root$folder" && mount --bind "$folder" "$root$folder" || return
    done
}

debian_root_end() {
    # Until the last is gone: it might write once more.
    # shellcheck disable=SC2016 # for the other shell
    as_root bash -c '
        while pids=$(find /proc -maxdepth 2 -path "/proc/[0-9]*/root" -lname "$1" | cut -d / -f 3)
            [ -n "$pids" ]; do
            kill -KILL $pids
            sleep 0.1
        done' bash "$1" 2> /dev/null
}

debian_root_remove() {
    [ ! -e "$1" ] || as_root rm -rf --one-file-system "$1"
}
