#!/bin/bash
# tools/window-pictures.sh FOLDER: part of make_doc_pictures.sh. Opens the example in the real window and leaves
# pictures of it, its menu and its dialogs in FOLDER. Runs inside tools/wine-environment.sh.
set -euo pipefail
cd "$(dirname "$0")/.."
. tools/await-window.sh
out=$(realpath "$1")
# From a folder like a user's, for dialogs show it.
folder=$WINEPREFIX/drive_c/Skyvault
mkdir -p "$folder"
cp -r build/windows/bin/Skyvault.exe Media "$folder"
cd "$folder"

wine ./Skyvault.exe >/dev/null 2>&1 &
# shot TITLE NAME: the window whose title begins so, as it is on the screen.
shot() {
    eval "$(xdotool search --onlyvisible --name "^$1" getwindowgeometry --shell | head -6)"
    import -window root -crop "${WIDTH}x${HEIGHT}+$X+$Y" +repage "$out/$2.png"
}
# view KEY NAME
view() {
    xdotool key "$1"
    sleep 3
    shot "Skyvault - Mountain" "$2"
}
# Opens the menu that is this far from the left.
menu() { xdotool mousemove $((X + $1)) $((Y + 34)) click 1 && sleep 0.5; }

await Skyvault
sleep 1
main=$(xdotool search --onlyvisible --name '^Skyvault' getwindowgeometry --shell)
eval "$main"
# FILE > Import 360° photo > Equirectangular...
menu 18
xdotool key Down Return
sleep 0.7
import -window root -crop "440x290+$X+$Y" +repage "$out/menu.png"
xdotool key Return
await "Select equirectangular"
sleep 0.5
xdotool type --delay 20 "Mountain lake.jpg"
xdotool key Return
await "Skyvault - Mountain lake.jpg"
sleep 2
view F1 window-equirectangular
view F11 window-preview
xdotool key Tab
view F11 window-crosshair
xdotool key Tab
view F6 window-single-files
import -window root -crop "$((WIDTH - 8))x$((HEIGHT - 50))+$((X + 4))+$((Y + 46))" +repage "$out/single-files.png"
view F9 window-heart
view F1 window-equirectangular

# dialog X KEYS TITLE NAME [MORE]: opens a dialog from a menu, presses more keys in it and takes its picture.
dialog() {
    menu "$1"
    xdotool key $2
    if await "$3"; then
        sleep 1
        if [ -n "${5:-}" ]; then
            xdotool key $5
            sleep 1
        fi
        shot "$3" "$4"
    fi
    xdotool key Escape
    sleep 1
}
eval "$main"
dialog 225 "Down Return" "Skyvault - Options" options
eval "$main"
dialog 18 "Down Down Down Return" "Skyvault - Batch" batch "alt+y h"
# The program ends with the display it runs on.
