#!/bin/bash
# tools/clang-tidy.sh BUILD_FOLDER: static checks (.clang-tidy) over the sources of that native build.
set -euo pipefail
cd "$(dirname "$0")/.."
printf '%s\n' {platform,image,image/oiio,settings,projection,generators,qtvr,webexport,session,cli}/*.cpp |
    grep -v '_win[^/]*\.cpp$\|_directxtex\.cpp$' |
    xargs -P "$(nproc)" -n 3 clang-tidy -p "$1" --quiet --warnings-as-errors='*' 2>/dev/null
