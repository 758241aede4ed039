#!/bin/bash
# Installs what is missing, builds the engine natively with sanitizers and the product for Windows, and runs
# every test of both (the Windows ones under Wine, on a virtual display of their own). Says when each step began.
#   ./test.sh           everything
#   ./test.sh native    only the native half; ./test.sh windows: only the Windows half; ./test.sh style
set -euo pipefail
cd "$(dirname "$0")"
what=${1:-all}
case $what in all | native | windows | style) ;; *) echo "usage: ./test.sh [native|windows|style]" >&2 && exit 2 ;; esac
tools/install-dependencies.sh test
# ccache keeps what was compiled with a precompiled header only when it may be careless about these.
export CMAKE_CXX_COMPILER_LAUNCHER=ccache CCACHE_SLOPPINESS=pch_defines,time_macros CTEST_OUTPUT_ON_FAILURE=1
jobs=$(nproc)
step() { echo "== $* (after ${SECONDS} s)"; }

if [ "$what" = all ] || [ "$what" = style ]; then
    step style
    find . -path ./build -prune -o \( -name '*.cpp' -o -name '*.h' \) -print0 | xargs -0 clang-format --dry-run -Werror
fi
if [ "$what" = all ] || [ "$what" = native ]; then
    step "native, with sanitizers"
    cmake --preset native-sanitize >/dev/null
    cmake --build --preset native-sanitize -- -j"$jobs"
    if [ "$what" = all ]; then
        step clang-tidy
        tools/clang-tidy.sh build/native-sanitize
        step cppcheck
        tools/cppcheck.sh
    fi
    ctest --preset native-sanitize -j"$jobs"
fi
if [ "$what" = all ] || [ "$what" = windows ]; then
    step "Windows, under Wine"
    cmake --preset windows >/dev/null
    cmake --build --preset windows -- -j"$jobs"
    tools/wine-environment.sh ctest --preset windows -j"$jobs"
fi
