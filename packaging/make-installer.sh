#!/bin/bash
# packaging/make-installer.sh STAGE VERSION SETUP_EXE: an installer (packaging/skyvault.nsi) of everything in the
# folder STAGE. The list of files is written here, once for installing and once for uninstalling, so that the
# uninstaller removes just what the installer brought.
set -euo pipefail
stage=$(realpath "$1") version=$2 setup=$(realpath -m "$3")
here=$(dirname "$(realpath "$0")")
export LC_ALL=C.UTF-8

parts=$(mktemp -d)
trap 'rm -rf "$parts"' EXIT
cd "$stage"
# In what the installer does, $ starts a variable; nothing else that a Windows file name may hold is special.
windows_path() { sed 's/\$/$$/g; s|/|\\|g'; }
find . -mindepth 1 -type d -printf '%P\n' | sort | windows_path >"$parts/folders"
find . -type f -printf '%P\n' | sort >"$parts/files"
{
    sed 's/.*/CreateDirectory "$INSTDIR\\&"/' "$parts/folders"
    while IFS= read -r file; do
        printf 'File "/oname=%s" "%s"\n' "$(windows_path <<<"$file")" "$stage/$file"
    done <"$parts/files"
} >"$parts/install.nsh"
{
    windows_path <"$parts/files" | sed 's/.*/Delete "$INSTDIR\\&"/'
    # Folders within others first. One that holds files of the user's stays.
    sort -r "$parts/folders" | sed 's/.*/RMDir "$INSTDIR\\&"/'
} >"$parts/uninstall.nsh"

# The picture beside the first and the last page, at twice the size of the page's own units.
convert "$here/../Media/Examples/Mountain lake.jpg" -crop 706x1352+2750+240 +repage -resize '328x628!' -type TrueColor \
    "BMP3:$parts/side.bmp"
touch -r "$stage" "$parts/side.bmp"

makensis -V2 -WX -NOCD -INPUTCHARSET UTF8 \
    "-DVERSION=$version" "-DSETUP=$setup" "-DROOT=$(dirname "$here")" "-DPARTS=$parts" \
    "-DSIZE=$(du -sk --apparent-size . | cut -f1)" "$here/skyvault.nsi"
