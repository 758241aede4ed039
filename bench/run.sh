#!/bin/bash
# bench/run.sh [native|windows] [benchmark arguments…]: builds and runs the benchmarks, in release.
#   bench/run.sh native --benchmark_filter=Turned
# For Windows, Google Benchmark is built from Debian's source package with mingw-w64.
set -euo pipefail
cd "$(dirname "$0")/.."
kind=${1:-native}
[ $# -eq 0 ] || shift
tools/install-dependencies.sh test
sudo=""
[ "$(id -u)" -eq 0 ] || sudo=sudo

if [ "$kind" = native ]; then
    dpkg -s libbenchmark-dev >/dev/null 2>&1 || $sudo apt-get install -y -qq libbenchmark-dev
    cmake --preset native >/dev/null
    cmake --build --preset native --target skyvault-bench
    exec build/native/bin/skyvault-bench "$@"
fi

source=build/benchmark-source
if [ ! -d $source/benchmark ]; then
    # The source package, through lists of our own: the machine's configuration stays as it is.
    mkdir -p $source/parts $source/lists/partial $source/cache
    for list in /etc/apt/sources.list.d/*.sources; do
        sed 's/^Types:.*/Types: deb-src/' "$list" >"$source/parts/$(basename "$list")"
    done
    options=(-o Dir::Etc::SourceList=/dev/null -o "Dir::Etc::SourceParts=$PWD/$source/parts"
        -o "Dir::State::Lists=$PWD/$source/lists" -o "Dir::Cache=$PWD/$source/cache")
    $sudo apt-get "${options[@]}" update -qq
    (cd $source && apt-get "${options[@]}" source --download-only -qq benchmark)
    mkdir $source/benchmark
    tar -xf $source/benchmark_*.orig.tar.gz -C $source/benchmark --strip-components=1
fi
cmake --preset windows -DSKYVAULT_BENCH=ON -DSKYVAULT_BENCHMARK_SOURCE="$PWD/$source/benchmark" >/dev/null
cmake --build --preset windows --target skyvault-bench
exec tools/wine-environment.sh wine build/windows/bin/skyvault-bench.exe "$@"
