#!/bin/sh
# Runs a Windows test program under Wine in the prepared environment (tools/wine-environment.sh), and ends
# one that hangs.
: "${WINEPREFIX:?run it through tools/wine-environment.sh}" "${DISPLAY:?}"
export WINEARCH=win64 WINEDEBUG="${WINEDEBUG:--all}" WINEDLLOVERRIDES="mscoree,mshtml,winedbg.exe,winemenubuilder.exe=d"
exec timeout -k 5 "${WINE_TEST_TIMEOUT:-3600}" wine "$@"
