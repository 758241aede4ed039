#!/bin/bash
# packaging/make-packages.sh BUILD_FOLDER OUTPUT_FOLDER
#
# Makes the portable zip and the installer from the programs built in BUILD_FOLDER, and leaves what both hold in
# OUTPUT_FOLDER/Skyvault-VERSION. The same sources give the same bytes: files carry the time of the last commit
# (SOURCE_DATE_EPOCH, where that is set).
set -euo pipefail
build=$(realpath "$1")
mkdir -p "$2"
output=$(realpath "$2")
here=$(dirname "$(realpath "$0")")
export LC_ALL=C.UTF-8 TZ=UTC
SOURCE_DATE_EPOCH=${SOURCE_DATE_EPOCH:-$(git -C "$here" log -1 --format=%ct 2>/dev/null || echo 1577836800)}
export SOURCE_DATE_EPOCH

version=$(sed -n 's/^CMAKE_PROJECT_VERSION:STATIC=//p' "$build/CMakeCache.txt")
name="Skyvault-$version"
stage="$output/$name"
rm -rf "$stage" "$output/$name-portable.zip" "$output/$name-setup.exe"

cmake --install "$build" --prefix "$stage" --strip >/dev/null
# The notices that what is linked into the programs asks to be passed on.
for package in libcli11-dev libstb-dev libz-mingw-w64-dev mingw-w64-common; do
    printf '==== %s ====\n\n' "$package"
    cat "/usr/share/doc/$package/copyright"
    echo
done | sed 's/\r*$/\r/' >"$stage/third-party.txt"
find "$stage" -exec touch -d "@$SOURCE_DATE_EPOCH" {} +

(cd "$output" && find "$name" | LC_ALL=C sort | zip -q -X -9 -@ "$name-portable.zip")
"$here/make-installer.sh" "$stage" "$version" "$output/$name-setup.exe"
