# shellcheck shell=bash
# elsewhere SUITE [COMMAND]...
#                makes a bare Debian of that suite (bookworm, trixie, sid) in a folder, and runs each
#                command of ./dev there, from a clean clone and with nothing prepared: run and test,
#                unless others are named, such as 'test REGEX'; removes the folder
. tools/debian-root.sh
suite=${1:-}
[[ $suite =~ ^[a-z]+$ ]] || fail 'usage: ./dev elsewhere SUITE [COMMAND]...'
shift
[ $# -gt 0 ] || set -- run test
folder=$PWD/build/elsewhere
bare=$folder/$suite.bare
root=$folder/$suite
packages=$folder/$suite.packages # what was downloaded; stays for the next time
mkdir -p "$packages"
exec 9> "$folder/$suite.lock"
flock --nonblock 9 || fail "$suite is at work already"

working='' # the process group of what is at work
clean_up() {
    local one
    # Killed: what debian_root_alone began ends with it, and heeds nothing else.
    [ -z "$working" ] || as_root kill -KILL -- "-$working" 2> /dev/null || true
    for one in "$root" "$bare"; do
        debian_root_end "$one"
        debian_root_remove "$one"
    done
}
trap clean_up EXIT
trap 'exit 130' INT TERM HUP

# In the background: a signal is not kept waiting until the command ends. In a group of its own, to be
# ended as a whole.
attended() {
    local rc=0
    set -m
    "$@" 9>&- &
    working=$!
    set +m
    wait "$working" || rc=$?
    working=''
    return $rc
}

minutes() { printf '%d:%02d' $(($1 / 60)) $(($1 % 60)); }

git diff --quiet HEAD || say 'What is not committed is not in it'
say "Making a bare Debian $suite"
start=$SECONDS
attended debian_root_bare "$bare" "$suite" "$packages"
report=$(printf '%-24s %6s' "bare $suite" "$(minutes $((SECONDS - start)))")
failed=0
for command; do
    say "$suite: ./dev $command"
    log=$folder/$suite-${command%% *}.log
    debian_root_remove "$root"
    as_root cp -a --reflink=auto "$bare" "$root"
    clone=$(mktemp -d "$folder/clone.XXXXXX")
    git -c advice.detachedHead=false clone --quiet --no-hardlinks "$PWD" "$clone/checkout"
    as_root chown -R 0:0 "$clone/checkout"
    as_root mv "$clone/checkout" "$root/root/"
    rmdir "$clone"
    start=$SECONDS
    rc=0
    # Its words are those of ./dev: to be split.
    # shellcheck disable=SC2086
    attended debian_root_alone bash tools/in-root.sh "$root" "$packages" ./dev $command \
        > >(tee "$log") 2>&1 || rc=$?
    result='right'
    if [ $rc != 0 ]; then
        result="WRONG, exit code $rc"
        failed=$((failed + 1))
    fi
    tests=$(sed -n 's/^\([0-9]*% tests passed.*\)/\1/p' "$log" | tail -n 1)
    report+=$(printf '\n%-24s %6s  %s' "./dev $command" "$(minutes $((SECONDS - start)))" \
        "$result${tests:+: $tests}")
done
say "$(. "$root/etc/os-release" && echo "$PRETTY_NAME"), $(nproc) processors"
as_root chroot "$root" dpkg-query -W -f '${db:Status-Status} ${binary:Package} ${Version}\n' \
    g++-mingw-w64-x86-64-win32 binutils-mingw-w64-x86-64 mingw-w64-common clang cmake wine nsis \
    2> /dev/null | sed -n 's/^installed /  /p' || true
printf '%s\n' "$report"
[ $failed = 0 ] || fail "$failed of $# went wrong; what they said is in build/elsewhere/$suite-*.log"
