#!/bin/bash
# tests/packages.sh BUILD_FOLDER: makes the packages, and does with them what a user would: unpacks the zip and
# runs it, installs over an older version, starts the program, uninstalls. In a Wine prefix of its own.
set -Eeuo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
if [ "${1:-}" != inside ]; then
    exec env LC_ALL=C.UTF-8 "$root/tools/wine-environment.sh" "$root/tests/packages.sh" inside "$(realpath "$1")"
fi
build=$2
output="$build/packages-test"
drive="$WINEPREFIX/drive_c"
entry='HKCU\Software\Microsoft\Windows\CurrentVersion\Uninstall\Skyvault'

step() { echo "== $* (${SECONDS} s)"; }
fail() {
    echo "FAILED: $*" >&2
    exit 1
}
trap 'echo "FAILED: line $LINENO: $BASH_COMMAND" >&2' ERR

# Waits until the command succeeds, on a busy machine too: for ten minutes at least.
await() {
    for _ in $(seq 6000); do
        "$@" >/dev/null 2>&1 && return
        sleep 0.1
    done
    fail "waited in vain for: $*"
}
window_is_open() { xdotool search --onlyvisible --name '^Skyvault$'; }
no_window() { ! window_is_open; }
# Closes the program that runs as a job of this script, as a user does; it must end well.
close_program() {
    xdotool key alt+F4
    wait "$1" || fail "the program ended with exit code $?"
    no_window || fail "the window is still there"
}
# Runs a program of Windows, which must end with that exit code.
expect_exit() {
    local expected=$1 code=0
    shift
    wine "$@" || code=$?
    [ "$code" = "$expected" ] || fail "exit code $code instead of $expected from: $*"
}
registered() { wine reg query "$entry" 2>/dev/null; }
# The entry in Windows' list of programs is the last thing that uninstalling removes.
not_registered() { ! registered >/dev/null; }
# What is on the drive, without Windows' own and temporary files.
files_on_drive() {
    find "$drive" \( -path "$drive/windows" -o -path '*/Temp' \) -prune -o -printf '%P\n' | sort
}

step "making them"
rm -rf "$output"
"$root/packaging/make-packages.sh" "$build" "$output"
stage=$(echo "$output"/Skyvault-*[0-9])
version=${stage##*-}
setup="$stage-setup.exe"
# The same files a second time.
"$root/packaging/make-packages.sh" "$build" "$output/again" &
again=$!
for program in Skyvault skyvault-cli; do
    [ "$(x86_64-w64-mingw32-nm "$stage/$program.exe" 2>&1 | grep -c 'no symbols')" = 1 ] ||
        fail "$program.exe is not stripped"
done

step "the portable zip, in a folder with a space and an umlaut"
place="$drive/Ordner für Tests"
mkdir "$place"
unzip -q "$stage-portable.zip" -d "$place"
portable="$place/Skyvault-$version"
diff -r "$stage" "$portable"
[ "$(wine "$portable/skyvault-cli.exe" --version | tr -d '\r')" = "skyvault-cli $version" ]
# The page's own files come from Media/www beside the program.
(cd "$portable" && expect_exit 0 ./skyvault-cli.exe convert --from equirectangular --to html \
    'Media\Examples\Test card.png' 'C:\Ordner für Tests\card.jpg' >/dev/null)
[ "$(identify -format %w "$place/card.jpg")" -gt 100 ]
ls "$place"/*.html >/dev/null

wine "$portable/Skyvault.exe" &
program=$!
await window_is_open
close_program $program
settings=$(echo "$drive"/users/*/AppData/Roaming/"Brambleworks Studio/Skyvault/Skyvault.txt")
[ "$(od -An -tx1 -N2 "$settings")" = " ff fe" ] || fail "no settings were written"
diff -r "$stage" "$portable"

step "an older version, and files of the user's"
cp -r "$stage" "$output/older"
rm "$output/older/skyvault-cli.exe" "$output/older/Media/Examples/Mountain lake.jpg"
echo old >"$output/older/Skyvault.exe"
mkdir "$output/older/Media/Old"
echo old | tee "$output/older/Media/Old/For \$5, or ü.txt" >"$output/older/Media/www/old.txt"
"$root/packaging/make-installer.sh" "$output/older" 0.0.1 "$output/older-setup.exe"
files_on_drive >"$output/before"
expect_exit 0 "$output/older-setup.exe" /S
installed=$(echo "$drive"/users/*/AppData/Local/Programs/Skyvault)
diff -r -x Uninstall.exe "$output/older" "$installed"
echo mine | tee "$installed/Mine.txt" >"$installed/Media/Examples/Mine too.txt"

step "the new version over it"
expect_exit 0 "$setup" /S
# Nothing but the user's two files is more than what was packed.
diff -r -x Uninstall.exe -x 'Mine*.txt' "$stage" "$installed"
windows_folder=$(winepath -w "$installed")
diff - <(registered | tr -d '\r' | sed -n 's/^    //p' | grep -v EstimatedSize) <<EXPECTED
DisplayIcon    REG_SZ    $windows_folder\\Skyvault.exe,0
DisplayName    REG_SZ    Skyvault
DisplayVersion    REG_SZ    $version
InstallLocation    REG_SZ    $windows_folder
NoModify    REG_DWORD    0x1
NoRepair    REG_DWORD    0x1
Publisher    REG_SZ    Brambleworks Studio
QuietUninstallString    REG_SZ    "$windows_folder\\Uninstall.exe" /S
UninstallString    REG_SZ    "$windows_folder\\Uninstall.exe"
EXPECTED
size=$(($(registered | tr -d '\r' | sed -n 's/.*EstimatedSize *REG_DWORD *//p')))
bytes=$(find "$stage" -type f -printf '%s\n' | awk '{ sum += $1 } END { print sum }')
[ $((size - bytes / 1024)) -ge 0 ] && [ $((size - bytes / 1024)) -lt 100 ] || fail "$size KiB for $bytes bytes"

step "while the program runs, started from the start menu, nothing changes"
shortcut=$(echo "$drive"/users/*/AppData/Roaming/Microsoft/Windows/"Start Menu/Programs/Skyvault.lnk")
wine start /wait /unix "$shortcut" &
program=$!
await window_is_open
expect_exit 2 "$setup" /S
expect_exit 2 "$installed/Uninstall.exe" /S "_?=$windows_folder"
diff -r -x Uninstall.exe -x 'Mine*.txt' "$stage" "$installed"
registered >/dev/null
close_program $program

step "uninstalled, only what is the user's stays"
cp "$settings" "$output/settings"
expect_exit 0 "$installed/Uninstall.exe" /S
await not_registered
diff - <(files_on_drive | { diff "$output/before" - || true; } | grep '^[<>]' | sed "s|users/[^/]*|users/ME|") <<EXPECTED
> users/ME/AppData/Local/Programs
> users/ME/AppData/Local/Programs/Skyvault
> users/ME/AppData/Local/Programs/Skyvault/Media
> users/ME/AppData/Local/Programs/Skyvault/Media/Examples
> users/ME/AppData/Local/Programs/Skyvault/Media/Examples/Mine too.txt
> users/ME/AppData/Local/Programs/Skyvault/Mine.txt
EXPECTED
cmp "$settings" "$output/settings"

step "a folder of choice; what cannot be installed whole is not installed in part"
# Wine would quote an argument with spaces, and /D= takes none.
chosen=('/D=C:\Ordner' für 'Tests\Skyvault')
files_on_drive >"$output/before"
mkdir -p "$place/Skyvault/Media/www/skyvault.js"
expect_exit 2 "$setup" /S "${chosen[@]}"
not_registered || fail "registered although it failed"
rmdir -p --ignore-fail-on-non-empty "$place/Skyvault/Media/www/skyvault.js"
files_on_drive | diff "$output/before" -
expect_exit 0 "$setup" /S "${chosen[@]}"
diff -r -x Uninstall.exe "$stage" "$place/Skyvault"
expect_exit 0 "$place/Skyvault/Uninstall.exe" /S
await not_registered
files_on_drive | diff "$output/before" -

step "made twice, they are the same"
wait $again
cmp "$stage-portable.zip" "$output/again/Skyvault-$version-portable.zip"
cmp "$setup" "$output/again/Skyvault-$version-setup.exe"
