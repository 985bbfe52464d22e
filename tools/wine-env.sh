# shellcheck shell=bash
# Sourced: Windows programs under Wine, in a prefix and on a display of the build's own.
#
# Before:  TARN_WINE_DIR, an absolute path: holds the prefix, the display's number and the logs.
#          TARN_WINE_FONTS, optional: files of the package fonts-wine that the prefix gets
#          CTEST_RESOURCE_GROUP_0_DESKTOPS, set by ctest for a test that has a desktop to itself: the
#          prefix is then one of a few beside TARN_WINE_DIR, which it names from now on.
#          TARN_SHARED_PROCESSOR, optional: when not empty, display, server and the caller with all that it
#          starts have one processor between them. Programs and Wine's server wait for each other all the
#          time, and to wake another processor takes longer than what is asked of it.
#          TARN_ALL_PROCESSORS, optional: when not empty, all but the caller; for threads that are to meet
#          each other
#          TARN_LOCALE, optional: decides the ANSI code page (en_US.UTF-8, the default, is 1252;
#          ja_JP.UTF-8 is 932).
# After:   Wine's environment is set, and
#   wine_start   makes the prefix and starts display and server where they are missing, and sets
#                DISPLAY; several processes may call it at once, any number of times
#   wine_stop    ends every Windows program of this prefix, and the display
#   wine_copy_prefix FROM TO   two folders like TARN_WINE_DIR; TO has no prefix yet, and has none afterwards
#                where FROM has none or lies on another disk

: "${TARN_WINE_DIR:?}"
_wine_main_dir=$TARN_WINE_DIR
_wine_env=${BASH_SOURCE[0]}
_wine_fonts=${TARN_WINE_FONTS:-marlett.ttf}
_wine_prefix_of="$EUID without a home, $_wine_fonts" # the stamp's first line
if [ -n "${CTEST_RESOURCE_GROUP_0_DESKTOPS:-}" ]; then
    # "id:2,slots:1"
    TARN_WINE_DIR=$TARN_WINE_DIR-${CTEST_RESOURCE_GROUP_0_DESKTOPS//[!0-9,]/}
    TARN_WINE_DIR=${TARN_WINE_DIR%,*}
    unset CTEST_RESOURCE_GROUP_0_DESKTOPS
fi
export WINEPREFIX=$TARN_WINE_DIR/prefix
export WINEARCH=win64 WINEDEBUG=${WINEDEBUG:--all}
export WINEDLLOVERRIDES='mscoree,mshtml=;winemenubuilder.exe=d'
export LC_ALL=${TARN_LOCALE:-en_US.UTF-8}
export HOME=${HOME:-$TARN_WINE_DIR}
unset WAYLAND_DISPLAY XAUTHORITY
# How letters are composed of several keys: thousands of lines, which each program with a window would read.
export XCOMPOSEFILE=/dev/null
# With it, whatever it says, Debian 13's Wine ends at once: "free(): invalid pointer".
unset TMPDIR

# Seconds that server and display outlive their last program. Starting them anew for each test takes
# longer than the test; without wine_stop they still go by themselves. A display that went while a test
# compiles or waits would be missed by its next program, so it stays for longer than any test may take.
_wine_server_linger=30
_wine_display_linger=1000

# Called before each program: what is there already must not take longer than the program.
wine_start() {
    [ -d "$TARN_WINE_DIR" ] || mkdir -p "$TARN_WINE_DIR" || return
    [ -n "${TARN_ALL_PROCESSORS:-}" ] || _wine_share_processor
    # Without the lock's descriptor: what stays running would hold the lock.
    (
        _wine_share_processor
        if ! { _wine_display_runs && [ -s "$TARN_WINE_DIR/display" ] && _wine_prefix_is_current; }; then
            flock 9
            { _wine_display && _wine_prefix; } 9>&- || exit
        fi
        # Fails when one is running, which is as good.
        _wine_server "-p$_wine_server_linger" < /dev/null &> "$TARN_WINE_DIR/server.log" 9>&- || true
    ) 9> "$TARN_WINE_DIR/lock" || return
    read -r DISPLAY < "$TARN_WINE_DIR/display"
    export DISPLAY=:$DISPLAY
}

wine_stop() {
    _wine_end_server
    if _wine_display_runs; then
        kill "$(cat "$TARN_WINE_DIR/display.pid")"
    fi
    rm -f "$TARN_WINE_DIR"/{display,display.pid,output.*}
}

# Not in the PATH everywhere: Debian's "sid" has it beside Wine's own files.
_wine_server() {
    local server
    for server in wineserver /usr/lib/x86_64-linux-gnu/wine/wineserver /usr/lib/wine/wineserver; do
        ! command -v "$server" > /dev/null || break
    done
    "$server" "$@"
}

# With the folder of its socket, which Debian's Wine leaves behind. Copies of a prefix have that in common.
_wine_end_server() {
    local sockets device inode
    [ -d "$WINEPREFIX" ] || return 0
    _wine_server -k 2> /dev/null || true
    sockets=$(cat "$WINEPREFIX/wineserver" 2> /dev/null) || return 0
    [[ $sockets == wine-?????? ]] || return 0
    read -r device inode < <(stat -c '%d %i' "$WINEPREFIX")
    rm -rf "/tmp/$sockets/$(printf 'server-%x-%x' "$device" "$inode")"
    rmdir "/tmp/$sockets" 2> /dev/null || true
}

# Of those that this process may use; what has been given one stays with it. Desktops that have a number are
# spread evenly.
_wine_share_processor() {
    local key list range i number=${TARN_WINE_DIR##*-} processors=()
    [ -n "${TARN_SHARED_PROCESSOR:-}" ] || return 0
    while read -r key list; do
        [ "$key" != Cpus_allowed_list: ] || break
    done < "/proc/$BASHPID/status"
    [[ $list == *[,-]* ]] || return 0
    [[ $number =~ ^[0-9]+$ ]] || read -r number _ < <(cksum <<< "$TARN_WINE_DIR")
    for range in ${list//,/ }; do
        for ((i = ${range%-*}; i <= ${range#*-}; i++)); do
            processors+=("$i")
        done
    done
    taskset -cp "${processors[number % ${#processors[@]}]}" "$BASHPID" > /dev/null
}

# The number of a display that is gone may belong to another process by now: ours carries the folder
# in its command line.
_wine_display_runs() {
    local pid word words=()
    {
        read -r pid < "$TARN_WINE_DIR/display.pid" && mapfile -t -d '' words < "/proc/$pid/cmdline"
    } 2> /dev/null || return
    for word in "${words[@]}"; do
        [ "$word" != "$TARN_WINE_DIR" ] || return 0
    done
    return 1
}

_wine_display() {
    local i
    if ! _wine_display_runs; then
        rm -f "$TARN_WINE_DIR/display"
        # -I: what follows is ignored, see above.
        setsid Xvfb -displayfd 3 -screen 0 1280x1024x24 -nolisten tcp \
            -terminate "$_wine_display_linger" -I "$TARN_WINE_DIR" \
            3> "$TARN_WINE_DIR/display" < /dev/null &> "$TARN_WINE_DIR/display.log" &
        echo $! > "$TARN_WINE_DIR/display.pid"
        disown
    fi
    for ((i = 0; i < 300; i++)); do
        [ ! -s "$TARN_WINE_DIR/display" ] || return 0
        sleep 0.1
    done
    echo "wine-env.sh: no display: $(tail -n 3 "$TARN_WINE_DIR/display.log")" >&2
    return 1
}

_wine_settings() {
    cat << 'EOF'
REGEDIT4

; Without a window manager, hiding a top-level window waits for one; in a virtual desktop it does not.
[HKEY_CURRENT_USER\Software\Wine\Explorer]
"Desktop"="Default"

[HKEY_CURRENT_USER\Software\Wine\Explorer\Desktops]
"Default"="1024x768"

[HKEY_CURRENT_USER\Software\Wine\WineDbg]
"ShowCrashDialog"=dword:00000000

; Windows always has this key.
[HKEY_CURRENT_USER\Software\Microsoft\Windows\CurrentVersion\RunOnce]
EOF
}

# The buttons in a caption are letters of Marlett. Debian's Wine does not look where the package
# fonts-wine puts its fonts; without the file they are drawn as "0", "1" and "r", and all else works.
_wine_font_files() {
    local font
    for font in $_wine_fonts; do
        [ ! -f "/usr/share/wine/fonts/$font" ] || printf '%s\0' "/usr/share/wine/fonts/$font"
    done
}

# Since it was found to be so, nothing has been installed and nothing been changed here.
_wine_prefix_is_current() {
    local stamp=$TARN_WINE_DIR/stamp whose='' wine
    wine=$(type -P wine) && { read -r whose < "$stamp"; } 2> /dev/null && [ "$whose" = "$_wine_prefix_of" ] &&
        [ "$stamp" -nt "$_wine_env" ] && [ "$stamp" -nt "${wine%/*}" ] && [ "$stamp" -nt /usr/share/wine/fonts ]
}

# Links to the system's files, which nobody changes, and the registry's as files of its own: in a second. To
# another disk there are no links.
wine_copy_prefix() {
    [ -f "$1/stamp" ] && cp -al "$1/prefix" "$2/prefix.new" 2> /dev/null && rm "$2/prefix.new"/*.reg &&
        cp -p "$1/prefix"/*.reg "$2/prefix.new/" && mv "$2/prefix.new" "$2/prefix" &&
        cp -p "$1/stamp" "$2/stamp" || rm -rf "$2/prefix.new"
}

# The stamp is written last: a prefix without it is half made, one with another was made otherwise.
_wine_prefix() {
    local stamp fonts=$WINEPREFIX/drive_c/windows/Fonts
    stamp=$(echo "$_wine_prefix_of"; wine --version; _wine_settings; _wine_font_files | xargs -0 -r cksum)
    if [ "$(cat "$TARN_WINE_DIR/stamp" 2> /dev/null)" != "$stamp" ]; then
        _wine_end_server
        rm -rf "$WINEPREFIX" "$TARN_WINE_DIR/stamp"
    fi
    if [ ! -d "$WINEPREFIX" ] && [ "$(cat "$_wine_main_dir/stamp" 2> /dev/null)" = "$stamp" ]; then
        wine_copy_prefix "$_wine_main_dir" "$TARN_WINE_DIR"
    fi
    if [ "$(cat "$TARN_WINE_DIR/stamp" 2> /dev/null)" != "$stamp" ]; then
        mkdir -p "$fonts"
        _wine_font_files | xargs -0 -r cp -t "$fonts" || return
        _wine_settings > "$TARN_WINE_DIR/settings.reg"
        # Without a home its folders of documents are its own, and no links to those of whoever made it.
        if ! { HOME=/nonexistent wine wineboot --init && wine regedit /S "$TARN_WINE_DIR/settings.reg" &&
            _wine_server -w; } < /dev/null &> "$TARN_WINE_DIR/prefix.log"; then
            echo "wine-env.sh: cannot make a Wine prefix: $(tail -n 3 "$TARN_WINE_DIR/prefix.log")" >&2
            return 1
        fi
        printf '%s\n' "$stamp" > "$TARN_WINE_DIR/stamp"
    fi
    touch "$TARN_WINE_DIR/stamp"
}
