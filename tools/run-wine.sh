#!/bin/sh
# Runs a Windows program under Wine in the prepared environment (tools/wine-environment.sh).
: "${WINEPREFIX:?run it through tools/wine-environment.sh}" "${DISPLAY:?}"
export WINEARCH=win64 WINEDEBUG="${WINEDEBUG:--all}" WINEDLLOVERRIDES="mscoree,mshtml,winedbg.exe=d"
exec timeout -k 5 "${WINE_TEST_TIMEOUT:-300}" wine "$@"
