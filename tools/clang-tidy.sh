#!/bin/bash
# tools/clang-tidy.sh BUILD_FOLDER: static checks (.clang-tidy) over the sources of that native build, which has to
# be complete: by its list of what every source includes, one is checked again only when it, a header of ours or
# the checks have changed since it passed.
set -euo pipefail
cd "$(dirname "$0")/.."
export build=$1
export passed=$build/clang-tidy
mkdir -p "$passed"
checks=$({ cat .clang-tidy tools/clang-tidy.sh cmake/SkyvaultTargets.cmake; clang-tidy --version; } | sha256sum)
export checks

# check SOURCE: what it is made of has one sum; the one that passed is kept.
check() {
    local stamp=$passed/${1//\//-} files key
    files=$(awk -v source="$1" '$1 == source { print $2 }' "$passed/includes")
    [ -n "$files" ] || { echo "$1 has not been built" && return 1; }
    key=$({ echo "$checks" && cd "$build" && cat $files; } | sha256sum)
    [ "$(cat "$stamp" 2>/dev/null)" != "$key" ] || return 0
    clang-tidy -p "$build" --quiet --warnings-as-errors='*' "$1" 2>/dev/null
    echo "$key" >"$stamp"
}
export -f check

# "SOURCE FILE" for every file of ours that a source includes, itself among them: it is the first of each list.
ninja -C "$build" -t deps |
    awk -v root="$PWD/" '/^[^ ]/ { source = ""; next }
        NF == 0 || /\/usr\/(include|lib|src)\// { next }
        source == "" { source = $1; sub("^" root, "", source); gsub(/^(\.\.\/)+/, "", source) }
        { print source, $1 }' >"$passed/includes"

# The largest first, so that the cores finish together.
ls -S {platform,image,codecs,codecs/oiio,settings,projection,generators,qtvr,webexport,session,cli}/*.cpp |
    grep -v '_win[^/]*\.cpp$\|_directxtex\.cpp$' |
    xargs -P "$(nproc)" -I SOURCE bash -euo pipefail -c 'check SOURCE'
