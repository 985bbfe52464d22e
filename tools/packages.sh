# shellcheck shell=bash
# Sourced by dev: installs what tools/packages.txt says that a command needs.

# need_for COMMAND
need_for() {
    local list words
    list=$(needs_of "$1")
    mapfile -t words <<< "$list"
    need "${words[@]}"
}

# needs_of NAME - what the line of that name says, and what its groups say.
needs_of() {
    awk -v name="$1" '
        /^\[/ { exit }
        /^ / { line[last] = line[last] " " $0 }
        /^[@a-z]/ { last = $1; $1 = ""; line[last] = $0 }
        function show(name, word, i, n) {
            if (!(name in line)) {
                print "tools/packages.txt: no line " name > "/dev/stderr"
                exit 1
            }
            n = split(line[name], word)
            for (i = 1; i <= n; i++)
                if (word[i] ~ /^@/) show(word[i]); else print word[i]
        }
        END { show(name) }' tools/packages.txt | sort -u
}

# commands - the names of all commands, in order.
commands() { sed -n '/^\[/q; s/^\([a-z]*\) .*/\1/p' tools/packages.txt; }

# need WORD... - words of tools/packages.txt.
need() {
    local word packages=() locales=()
    for word; do
        case $word in
        *.UTF-8) locales+=("$word") ;;
        *) packages+=("$word") ;;
        esac
    done
    if command -v apt-get > /dev/null && command -v dpkg-query > /dev/null; then
        need_packages "${packages[@]}"
    else
        need_programs "${packages[@]}"
    fi
    need_locales "${locales[@]}"
}

# As the user who may install, whoever that is.
as_root() {
    if [ "$(id -u)" = 0 ]; then
        "$@"
    else
        command -v sudo > /dev/null || fail "not root, and no sudo, for: $*"
        sudo "$@"
    fi
}

need_packages() {
    local word have missing=()
    # One question for all: dpkg-query reads the list of everything anew each time.
    have=$(dpkg-query -W -f '${db:Status-Status} ${Package}\n' | sed -n 's/^installed //p')
    for word; do
        grep -qxF -- "${word//|/$'\n'}" <<< "$have" || missing+=("$word")
    done
    [ ${#missing[@]} -gt 0 ] || return 0
    say "Installing ${missing[*]}"
    # Mirrors fail now and then.
    install_packages "${missing[@]}" || { sleep 5; install_packages "${missing[@]}"; } ||
        fail "cannot install: ${missing[*]}"
}

# known PACKAGE|OTHER... - the first that can be installed here; the first, when none can.
known() {
    local package
    for package in ${1//|/ }; do
        [ -z "$(apt-cache show --no-all-versions "$package" 2> /dev/null)" ] || break
        package=
    done
    echo "${package:-${1%%|*}}"
}

install_packages() {
    local log=build/packages.log word packages=()
    mkdir -p build
    if ! {
        as_root apt-get -q update && {
            for word; do packages+=("$(known "$word")"); done
            as_root env DEBIAN_FRONTEND=noninteractive \
                apt-get -q -y --no-install-recommends -o Dpkg::Use-Pty=0 install "${packages[@]}"
        }
    } < /dev/null &> "$log"; then
        tail -n 5 "$log" >&2
        return 1
    fi
}

# Not Debian: looks for the programs themselves.
need_programs() {
    local word package program missing=()
    for word; do
        for package in ${word//|/ }; do
            program=$(awk -v package="$package" \
                '/^\[/ { on = 1 } on && $1 == package { print $2 }' tools/packages.txt)
            : "${program:=$package}"
            [ "$program" = - ] || [ -e "$program" ] || command -v "$program" > /dev/null || continue
            continue 2
        done
        missing+=("$program")
    done
    [ ${#missing[@]} -gt 0 ] || return 0
    fail "missing: ${missing[*]}
On Debian this comes from the packages: $*"
}

need_locales() {
    local name have
    have=$(locale -a 2> /dev/null) || true
    for name; do
        grep -qixF "${name/UTF-8/utf8}" <<< "$have" && continue
        say "Making the locale $name"
        as_root localedef -i "${name%.*}" -f "${name#*.}" "$name" || fail "no locale $name"
    done
}
