#!/usr/bin/env bash
# Runs a Windows program: tools/wine.sh PROGRAM [ARGUMENT...], or ends what is left of such runs:
# tools/wine.sh --stop. All that Wine keeps lies in build/wine; no display is needed.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)

export WINEPREFIX=$root/build/wine
export WINEARCH=win64 WINEDEBUG=${WINEDEBUG:--all}
# No offer to install a browser engine or .NET, no entries in the desktop's menus.
export WINEDLLOVERRIDES='mscoree=;mshtml=;winemenubuilder.exe='
unset DISPLAY WAYLAND_DISPLAY

# The loaders proper: the scripts of that name ask for a 32-bit Wine, too.
folder=/usr/lib/wine
[ -x $folder/wine64 ] || folder=$(dirname "$(command -v wine64)")
export WINELOADER=$folder/wine64
server=$folder/wineserver64
[ -x "$server" ] || server=$folder/wineserver
export WINESERVER=$server

if [ "${1:-}" = --stop ]; then
    [ ! -d "$WINEPREFIX" ] || "$WINESERVER" -k || true # fails when there is nothing to end
    exit 0
fi

# Of several first runs at once, one makes the prefix and the others wait for it.
ready=$WINEPREFIX/.ready
if [ ! -e "$ready" ]; then
    mkdir -p "$root/build"
    exec 9>"$root/build/wine.lock"
    flock 9
    if [ ! -e "$ready" ]; then
        rm -rf "$WINEPREFIX" # of a run that was interrupted
        "$WINELOADER" wineboot --init >/dev/null 2>&1 9>&-
        "$WINELOADER" reg add 'HKCU\Software\Wine\Drivers' /v Graphics /d null /f >/dev/null 2>&1 9>&-
        "$WINESERVER" -k >/dev/null 2>&1 9>&- || true # writes the registry
        touch "$ready"
    fi
    exec 9>&-
fi
exec "$WINELOADER" "$@"
