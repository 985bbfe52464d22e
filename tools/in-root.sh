#!/bin/bash
# in-root.sh ROOT PACKAGES COMMAND... - runs a command in the clone /root/checkout of a Debian in a folder, with
# nothing of this machine but its processors, its network and the packages that were downloaded before.
# Called by elsewhere, by way of debian_root_alone.
set -eu
# shellcheck source=tools/debian-root.sh
. "$(dirname "$0")/debian-root.sh"
root=$1
packages=$2
shift 2
debian_root_mount "$root"
mount --bind "$packages" "$root/var/cache/apt/archives"
cd "$root"
exec chroot "$root" env -i PATH=/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin HOME=/root \
    TERM=dumb ${http_proxy:+http_proxy="$http_proxy"} ${https_proxy:+https_proxy="$https_proxy"} \
    /bin/bash -c 'cd /root/checkout && "$@"' bash "$@" < /dev/null
