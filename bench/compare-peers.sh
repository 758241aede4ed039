#!/bin/bash
# bench/compare-peers.sh [--repeats N] [--threads N ...]: times skyvault-cli beside ffmpeg's v360 filter, Hugin's
# nona and OpenCV's remap on the same pictures, prints the tables and puts them into docs/performance.md.
# Installs those three when they are missing; nothing else in the project needs them.
set -euo pipefail
cd "$(dirname "$0")/.."
sudo=""
[ "$(id -u)" -eq 0 ] || sudo=sudo

missing=()
for package in ffmpeg hugin-tools python3-opencv; do
    dpkg -s $package >/dev/null 2>&1 || missing+=($package)
done
if [ ${#missing[@]} -gt 0 ]; then
    $sudo apt-get update -qq
    $sudo apt-get install -y -qq --no-install-recommends "${missing[@]}"
fi

if [ ! -x build/native/bin/skyvault-cli ]; then
    tools/install-dependencies.sh test
    cmake --preset native >/dev/null
    cmake --build --preset native --target skyvault-cli
fi

# In memory where possible: a slow or busy disk would hide the difference between the programs.
memory=()
[ ! -w /dev/shm ] || memory=(-p /dev/shm)
pictures=$(mktemp -d "${memory[@]}" skyvault-peers.XXXXXX)
trap 'rm -rf "$pictures"' EXIT
# Debian's own Python, which its OpenCV belongs to.
/usr/bin/python3 bench/compare_peers.py "$pictures" "$@"
