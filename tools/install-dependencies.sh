#!/bin/bash
# Installs the Debian packages that building and testing need; does nothing when all are there.
#   tools/install-dependencies.sh build     what ./run.sh needs
#   tools/install-dependencies.sh package   that, and what ./package.sh needs
#   tools/install-dependencies.sh test      that, and what ./test.sh needs
set -euo pipefail

build=(
    cmake ninja-build ccache                                    # build system
    g++-mingw-w64-x86-64-posix binutils-mingw-w64-x86-64        # compiler for Windows
    libcli11-dev                                                # console arguments
    libz-mingw-w64-dev                                          # packed OpenEXR files
    libstb-dev                                                  # encoder of compressed DDS files
    libz-mingw-w64-dev                                          # packed colour profiles in PNG files
    googletest                                                  # tests
    wine wine64 xvfb libgl1-mesa-dri                            # running the Windows build
    fonts-liberation fonts-wine                                 # its fonts
    xdotool imagemagick                                         # keys and screenshots
)
package=(
    nsis zip unzip                                              # the installer, the portable zip
)
test=(
    g++ pkg-config libopenimageio-dev zlib1g-dev                # the engine and the console on Linux
    libjpeg62-turbo-dev libpng-dev libtiff-dev libwebp-dev      # its pictures
    clang-format clang-tidy cppcheck                            # style and static checks
)

packages=("${build[@]}")
[ "${1:-test}" = build ] || packages+=("${package[@]}")
[ "${1:-test}" != test ] || packages+=("${test[@]}")

missing=()
for package in "${packages[@]}"; do
    dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'ok installed' || missing+=("$package")
done
[ ${#missing[@]} -eq 0 ] && exit 0

echo "Installing: ${missing[*]}"
sudo=""
[ "$(id -u)" -eq 0 ] || sudo=sudo
$sudo apt-get update -qq
$sudo env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
