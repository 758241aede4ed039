#!/bin/bash
# Installs what is missing, builds the product and packs it: the portable zip and the installer, in build/packages/.
set -euo pipefail
cd "$(dirname "$0")"
tools/install-dependencies.sh package
export CMAKE_CXX_COMPILER_LAUNCHER=ccache
cmake --preset windows >/dev/null
cmake --build --preset windows --target Skyvault skyvault-cli -- -j"$(nproc)"
packaging/make-packages.sh build/windows build/packages
ls -lh build/packages/*.zip build/packages/*.exe
