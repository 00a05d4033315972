#!/usr/bin/env bash
# cppcheck over the product's code. Exits with 1 where something is found, with 77 where there is no
# cppcheck. What it takes for faults and are none is in cppcheck-suppressions.txt beside this script.
set -u

root=$(cd -- "$(dirname -- "${BASH_SOURCE[0]}")/.." && pwd) || exit 1
command -v cppcheck >/dev/null || {
    echo "There is no cppcheck here."
    exit 77
}
cd "$root" || exit 1
exec cppcheck -j "$(getconf _NPROCESSORS_ONLN)" --quiet --error-exitcode=1 --std=c++20 --library=qt -I . \
    -D'Q_COREAPP_STARTUP_FUNCTION(x)=' --enable=warning,performance,portability --inline-suppr \
    --suppressions-list=scripts/cppcheck-suppressions.txt \
    engine filelist mainwindow cli
