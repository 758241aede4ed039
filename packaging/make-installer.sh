#!/bin/bash
# packaging/make-installer.sh STAGE VERSION SETUP_EXE: an installer (packaging/skyvault.nsi) of everything in the
# folder STAGE. The list of files is written here, once for installing and once for uninstalling, so that the
# uninstaller removes just what the installer brought.
set -euo pipefail
stage=$(realpath "$1") version=$2 setup=$(realpath -m "$3")
here=$(dirname "$(realpath "$0")")
export LC_ALL=C.UTF-8

lists=$(mktemp -d)
trap 'rm -rf "$lists"' EXIT
cd "$stage"
# NSIS reads $ as the start of a variable; nothing else that a Windows file name may hold is special to it.
windows_path() { sed 's/\$/$$/g; s|/|\\|g'; }
find . -mindepth 1 -type d -printf '%P\n' | sort | windows_path >"$lists/folders"
find . -type f -printf '%P\n' | sort >"$lists/files"
{
    sed 's/.*/CreateDirectory "$INSTDIR\\&"/' "$lists/folders"
    while IFS= read -r file; do
        printf 'File "/oname=%s" "%s"\n' "$(windows_path <<<"$file")" "${stage//\$/\$\$}/${file//\$/\$\$}"
    done <"$lists/files"
} >"$lists/install.nsh"
{
    windows_path <"$lists/files" | sed 's/.*/Delete "$INSTDIR\\&"/'
    # Folders within others first. One that holds files of the user's stays.
    sort -r "$lists/folders" | sed 's/.*/RMDir "$INSTDIR\\&"/'
} >"$lists/uninstall.nsh"

makensis -V2 -WX -NOCD -INPUTCHARSET UTF8 \
    "-DVERSION=$version" "-DSETUP=$setup" "-DROOT=$(dirname "$here")" "-DLISTS=$lists" \
    "-DSIZE=$(du -sk --apparent-size . | cut -f1)" "$here/skyvault.nsi"
