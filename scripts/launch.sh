#!/bin/bash
# Runs the programs of a build tree for ctest.
#   scripts/launch.sh run native|sanitized|wine|emulated BUILD-FOLDER PROGRAM ARGUMENT...
#   scripts/launch.sh start BUILD-FOLDER    starts a display, which the programs of that folder use until
#   scripts/launch.sh stop BUILD-FOLDER     ends it; its number and process are in BUILD-FOLDER/display
set -uo pipefail
here=$(dirname "${BASH_SOURCE[0]}")
# shellcheck source=scripts/wine.sh
source "$here/wine.sh"
# shellcheck source=scripts/target.sh
source "$here/target.sh"
export LC_ALL=C.UTF-8

case $1 in
run)
    kind=$2 folder=$3
    shift 3
    unset DISPLAY
    if [[ -e $folder/display ]]; then
        read -r DISPLAY _ <"$folder/display"
        export DISPLAY
    fi
    if [[ $kind == wine ]]; then
        vorlund_wine_env "$here/../build/wine-test"
        vorlund_wine_prefix >"$folder/wine.log" 2>&1 || exit
    fi
    target_launcher "$kind" "$folder"
    exec "${launcher[@]}" "$@"
    ;;
start)
    "$0" stop "$2"
    # Without a display the tests of windows fail and the others run.
    command -v Xvfb >/dev/null || { echo "there is no Xvfb (Debian: xvfb)"; exit 0; }
    vorlund_display_start "$2/xvfb.log" || exit
    echo "$DISPLAY $VORLUND_XVFB_PID" >"$2/display"
    ;;
stop)
    [[ -e $2/display ]] || exit 0
    read -r _ pid <"$2/display"
    rm "$2/display"
    # The number may belong to another process by now.
    [[ $(cat "/proc/$pid/comm" 2>/dev/null) != Xvfb ]] || kill "$pid"
    ;;
*) exit 2 ;;
esac
