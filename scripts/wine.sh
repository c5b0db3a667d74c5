# shellcheck shell=bash
# Wine without a desktop and without questions. Sourced by ./run and ./test.

# vorlund_wine_env PREFIX: the environment of every Wine process, with the prefix (made absolute) as given.
vorlund_wine_env() {
    WINEPREFIX=$(realpath -m "$1")
    export WINEPREFIX
    export WINEDEBUG=-all
    # No offer to download Mono or Gecko.
    export WINEDLLOVERRIDES="mscoree,mshtml="
    # Wine names files in the character set of the locale, so only UTF-8 reaches every name.
    [[ $(locale charmap) == UTF-8 ]] || export LC_ALL=C.UTF-8
}

# Creates the prefix unless it exists, so that the first program does not pay for it.
vorlund_wine_prefix() {
    [[ -e $WINEPREFIX/vorlund-set-up ]] && return 0
    mkdir -p "$WINEPREFIX"
    wine wineboot -i || return
    # A crash must end the process, not wait for somebody to press a button.
    wine reg add 'HKCU\Software\Wine\WineDbg' /v ShowCrashDialog /t REG_DWORD /d 0 /f || return
    # Our display has no window manager, and Wine would wait two seconds for its answer at every turn.
    wine reg add 'HKCU\Software\Wine\X11 Driver' /v Managed /t REG_SZ /d N /f || return
    touch "$WINEPREFIX/vorlund-set-up"
}

# vorlund_display_start LOG: an X server of our own on a free display number; sets DISPLAY and VORLUND_XVFB_PID.
vorlund_display_start() {
    local number fifo
    fifo=$(mktemp -u)
    mkfifo "$fifo"
    Xvfb -displayfd 3 -noreset -screen 0 1024x768x24 -nolisten tcp 3>"$fifo" >"$1" 2>&1 &
    VORLUND_XVFB_PID=$!
    # When the server dies early, its end of the pipe closes and the read ends.
    read -r -t 60 number <"$fifo"
    rm -f "$fifo"
    [[ -n $number ]] && export DISPLAY=:$number
}

# Ends what the two functions above started. Wine's server goes first, as its desktop holds the display.
vorlund_wine_stop() {
    if [[ -n ${WINEPREFIX-} && -d $WINEPREFIX ]] && command -v wineserver >/dev/null; then
        wineserver -k || true
    fi
    if [[ -n ${VORLUND_XVFB_PID-} ]]; then
        kill "$VORLUND_XVFB_PID" 2>/dev/null || true
        wait "$VORLUND_XVFB_PID" 2>/dev/null || true
        VORLUND_XVFB_PID=""
    fi
}
