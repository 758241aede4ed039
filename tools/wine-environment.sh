#!/bin/bash
# tools/wine-environment.sh COMMAND...: runs a command with a virtual display and a Wine prefix of its own.
#
# The prefix is a copy of a template prepared once (build/wine/template): Windows 10, dialogs that close at
# once without a window manager, no crash dialog, fonts that stand in for Windows' own, and user folders
# inside the prefix instead of links into the real home. The copy is removed afterwards, so nothing a test
# does reaches the user's own settings.
#   --user   first argument: the caller's own display, and a prefix that stays (build/wine/user)
set -euo pipefail
user=no
if [ "${1:-}" = --user ]; then
    user=yes
    shift
fi
root=$(cd "$(dirname "$0")/.." && pwd)
base="$root/build/wine"
mkdir -p "$base"
# The menu builder would put the shortcuts of installers into the real home.
export WINEARCH=win64 WINEDEBUG=-all WINEDLLOVERRIDES="mscoree,mshtml,winedbg.exe,winemenubuilder.exe=d"
# Drawing on the thread that asks for it: with Wine's own drawing thread, a window that opens while that thread
# presents a picture can stop both for good inside the X library (docs/reliability.md).
export WINE_D3D_CONFIG="csmt=0"

run=$(mktemp -d "$base/run.XXXXXX")
finish() {
    code=$?
    # Other programs may still run in the prefix that stays.
    [ "$user" = yes ] || WINEPREFIX="$run/prefix" wineserver -k 2>/dev/null || true
    kill $(jobs -p) 2>/dev/null || true
    rm -rf "$run"
    exit "$code"
}
trap finish EXIT
trap 'exit 130' INT TERM

if [ "$user" = no ]; then
    Xvfb -displayfd 3 -screen 0 "${SKYVAULT_SCREEN:-1600x1200}x24" -nolisten tcp 3>"$run/display" 2>/dev/null &
    for _ in $(seq 600); do [ -s "$run/display" ] && break; sleep 0.1; done
    DISPLAY=":$(cat "$run/display")"
    export DISPLAY
fi

prepare_template() {
    export WINEPREFIX="$base/template.new"
    rm -rf "$WINEPREFIX"
    wineboot -i >/dev/null 2>&1
    wine winecfg -v win10 >/dev/null 2>&1
    cat >"$run/setup.reg" <<'REG'
REGEDIT4

[HKEY_CURRENT_USER\Software\Wine\X11 Driver]
"Managed"="N"

[HKEY_CURRENT_USER\Software\Wine\WineDbg]
"ShowCrashDialog"=dword:00000000

[HKEY_CURRENT_USER\Software\Wine\Fonts\Replacements]
"Segoe UI"="Liberation Sans"
"Segoe UI Light"="Liberation Sans"
"Arial"="Liberation Sans"
"Consolas"="Liberation Mono"
REG
    wine regedit /S "$run/setup.reg" >/dev/null 2>&1
    for folder in "$WINEPREFIX"/drive_c/users/*/*; do
        if [ -L "$folder" ]; then rm "$folder"; mkdir "$folder"; fi
    done
    cp /usr/share/wine/fonts/*.ttf "$WINEPREFIX/drive_c/windows/Fonts/" 2>/dev/null || true
    wineserver -k || true
    wineserver -w || true
    mv "$WINEPREFIX" "$base/template"
}
(
    flock 9
    [ -d "$base/template" ] || prepare_template
) 9>"$base/lock"

# Hard links make the copy quick; the registry files are written in place, so they must be real copies.
if [ "$user" = yes ]; then prefix="$base/user"; else prefix="$run/prefix"; fi
if [ ! -d "$prefix" ]; then
    cp -al "$base/template" "$prefix"
    for f in "$prefix"/*.reg; do cp "$f" "$f.copy" && mv "$f.copy" "$f"; done
    # The user's own display has a window manager.
    [ "$user" = no ] || sed -i 's/^"Managed"="N"/"Managed"="Y"/' "$prefix/user.reg"
fi
export WINEPREFIX="$prefix"
if [ "$user" = no ]; then
    # One program stays until the end, and with it Wine's own: started by a test, they would hold the test's
    # output open, and starting them anew costs half a second each time.
    sleep infinity | wine cmd /c pause >/dev/null 2>&1 &
    # The first window brings up Wine's desktop, which stays: not from within a test either.
    wine rundll32 user32.dll,GetDesktopWindow >/dev/null 2>&1
fi
"$@"
