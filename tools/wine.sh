#!/usr/bin/env bash
# Runs a Windows program: tools/wine.sh PROGRAM [ARGUMENT...], or ends what is left of such runs:
# tools/wine.sh --stop. All that Wine keeps lies in build/wine; no display is needed.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)

export WINEPREFIX=$root/build/wine
export LC_ALL=C.UTF-8 # what the words of the command line are
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

quietly() { "$@" </dev/null >/dev/null 2>&1 9>&-; }

# All processes share a server and some services. Of several runs at once, one starts them, and the
# others wait for it. The program itself must not: they would keep its output open, and end with it
# while the next program starts. They end by themselves a minute after the last program.
mkdir -p "$root/build"
exec 9>"$root/build/wine.lock"
flock 9
if [ ! -e "$WINEPREFIX/.ready" ]; then
    rm -rf "$WINEPREFIX" # of a run that was interrupted
    quietly "$WINELOADER" wineboot --init
    quietly "$WINELOADER" reg add 'HKCU\Software\Wine\Drivers' /v Graphics /d null /f
    quietly "$WINESERVER" -k || true # writes the registry
    quietly "$WINESERVER" -w || true
    touch "$WINEPREFIX/.ready"
fi
if quietly "$WINESERVER" -p60; then # fails where one is there already
    quietly "$WINELOADER" cmd /c exit
fi
exec 9>&-

# The first program that has a window starts the process of the desktop, which then keeps that
# program's output open for as long as anybody has a window: whoever reads the output to its end
# would wait for other programs. So one that says nothing starts it, and holds it for a minute.
desktop=$root/build/wine.desktop
rundll="C:\\windows\\system32\\rundll32.exe" # by its name it would get a starter that dies instead
if flock -n "$desktop" true; then
    quietly "$WINELOADER" "$rundll" user32.dll,GetDesktopWindow
    (flock -n 8 && quietly timeout 60 "$WINELOADER" "$rundll" kernel32.dll,Sleep) \
        </dev/null >/dev/null 2>&1 8>"$desktop" &
fi

exec "$WINELOADER" "$@"
