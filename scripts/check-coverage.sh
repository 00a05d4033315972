#!/usr/bin/env bash
# How many lines of the engine and of the list the tests run through: check-coverage.sh BUILD [PERCENT]
# BUILD is a build folder of the preset "coverage" whose tests were just run. Prints a line a folder, then
# the total, and exits with 1 when that is below PERCENT (90), with 77 where there is no gcovr.
# The lines that no test reaches are in BUILD/uncovered.txt.
set -u

root=$(cd -- "$(dirname -- "${BASH_SOURCE[0]}")/.." && pwd) || exit 1
build=$(cd -- "${1:?names no build folder}" && pwd) || exit 1
command -v gcovr >/dev/null || {
    echo "There is no gcovr here."
    exit 77
}
# Lines that only clean up on the way of an exception are counted as they are; nothing is left out.
gcovr --root "$root" --object-directory "$build" --filter engine/ --filter filelist/ \
    -j "$(getconf _NPROCESSORS_ONLN)" --exclude-throw-branches \
    --txt "$build/uncovered.txt" --csv "$build/lines.csv" "$build/engine" "$build/filelist" || exit 1
awk -F , -v least="${2:-90}" '
    function show(name, total, covered) {
        printf "%-20s %6d lines %6.1f %%\n", name, total, 100 * covered / total
    }
    NR == 1 { for (i = 1; i <= NF; i++) column[$i] = i; next }
    {
        folder = $column["filename"]
        sub(/\/[^\/]*$/, "", folder)
        if (!(folder in total)) names[++count] = folder
        total[folder] += $column["line_total"]
        covered[folder] += $column["line_covered"]
        all += $column["line_total"]
        reached += $column["line_covered"]
    }
    END {
        if (!all) { print "no line was counted"; exit 1 }
        for (i = 1; i <= count; i++) show(names[i], total[names[i]], covered[names[i]])
        show("together", all, reached)
        if (100 * reached < least * all) { print "less than " least " %"; exit 1 }
    }' "$build/lines.csv"
