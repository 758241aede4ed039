#!/bin/bash
# Part of ./run.sh: the example in every layout, and screenshots of the window, under out/.
# Runs inside tools/wine-environment.sh.
set -euo pipefail
. "$(dirname "$0")/await-window.sh"
cd "$(dirname "$0")/../build/windows/bin"
export WINEDEBUG=-all
out=../../../out
example="Media/Examples/Mountain lake.jpg"

# As the help lists them.
layouts=$(wine ./skyvault-cli.exe convert --help | tr -d '\r' | sed -n '/Layouts to write/,/^$/p' | tail -n +2)
for layout in $layouts; do
    echo "== $layout"
    case $layout in dds) extension=dds ;; qtvr) extension=mov ;; *) extension=jpg ;; esac
    wine ./skyvault-cli.exe convert --from equirectangular --to "$layout" "$example" "$out/$layout.$extension"
done

echo "== window"
wine ./Skyvault.exe >/dev/null 2>&1 &
await "Skyvault"
sleep 1
# FILE > Import 360° photo > Equirectangular...
eval "$(xdotool search --onlyvisible --name '^Skyvault' getwindowgeometry --shell)"
xdotool mousemove $((X + 18)) $((Y + 34)) click 1
sleep 0.5
xdotool key Down Return
sleep 0.3
xdotool key Return
await "Select equirectangular"
sleep 0.5
xdotool type --delay 20 "Mountain lake.jpg"
xdotool key Return
await "Skyvault - Mountain lake.jpg"
sleep 3
import -window root -crop "${WIDTH}x${HEIGHT}+$X+$Y" +repage "$out/window-equirectangular.png"
xdotool key F11
sleep 3
import -window root -crop "${WIDTH}x${HEIGHT}+$X+$Y" +repage "$out/window-preview.png"
xdotool key alt+F4
wait
cd "$out"
echo "Look at:"
ls -1 "$PWD"/*
