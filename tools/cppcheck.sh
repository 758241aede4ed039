#!/bin/bash
# tools/cppcheck.sh: static checks over the sources of both systems; fails on any remark that
# tools/cppcheck-suppressions.txt does not explain. Half a minute of one core.
set -euo pipefail
cd "$(dirname "$0")/.."
cppcheck -q -j "$(nproc)" --std=c++20 --enable=warning,performance,portability --library=std,posix,windows -I . \
    --suppressions-list=tools/cppcheck-suppressions.txt --inline-suppr --error-exitcode=1 \
    --template='{file}:{line}: {id}: {message}' \
    app cli codecs generators image platform projection qtvr session settings webexport
