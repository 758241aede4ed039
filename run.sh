#!/bin/bash
# Installs what is missing, builds the product and starts the desktop program with the example panoramas at
# hand. Without a display it says so, converts the shipped example into every layout under out/, opens the
# window on a virtual display and leaves its screenshots there.
set -euo pipefail
cd "$(dirname "$0")"
tools/install-dependencies.sh build
export CMAKE_CXX_COMPILER_LAUNCHER=ccache
cmake --preset windows >/dev/null
cmake --build --preset windows --target Skyvault skyvault-cli media -- -j"$(nproc)"

if [ -n "${DISPLAY:-}" ]; then
    echo "Starting Skyvault. FILE > Import 360° photo > Equirectangular... opens in the example folder."
    exec tools/wine-environment.sh --user wine build/windows/bin/Skyvault.exe
fi
echo "There is no display: converting the example, and opening the window on a virtual one."
rm -rf out
mkdir -p out
exec tools/wine-environment.sh tools/show-without-display.sh
