#!/usr/bin/env bash
# Runs a plan in sixteen shards by GNU parallel, kills one shard in mid-run and GNU parallel itself in the next attempt:
# parallel.sh [SOURCES]
#
# Started again each time, it does what is left; at the end every line of the plan is done exactly once. A shard that
# ends with 75 is tried again, one that ends with 1 is not. Installs parallel where it is missing.
# shellcheck disable=SC2154,SC2034
set -u
name=parallel
# shellcheck source=tests/fleet/fleet.sh disable=SC1091
. "$(dirname -- "${BASH_SOURCE[0]}")/fleet.sh"

need_packages parallel
find_program
make_scratch
trap 'rm -rf "$scratch"' EXIT
recipe=$root/packaging/fleet/parallel.sh
export RETRY_AFTER=1

make_sources "${1:-160}"

# A shard that is killed is tried again in the same run; parallel itself is then killed as well.
"$recipe" --will-cite 2>first.txt &
run=$!
wait_until 120 is_written 25 || die "not a quarter was written after two minutes"
shard=$(for process in $(pgrep -x pagestack-conve); do
    [ "$(readlink "/proc/$process/cwd")" != "$scratch/ground" ] || echo "$process"
done | tail -n 1)
kill -KILL "$shard" || die "no shard runs"
wait_until 120 is_written 50 || die "not half was written after two minutes"
killed=$(pgrep -P "$run" | head -n 1)
# shellcheck disable=SC2046
kill -KILL "$run" "$killed" $(pgrep -P "$killed")
wait "$run" 2>/dev/null
awk -F '\t' 'NR > 1 { print $7 ":" $8 }' shards.log | sort | uniq -c
awk -F '\t' 'NR > 1 && $8 == 9 { found = 1 } END { exit !found }' shards.log || die "no shard is listed as killed"
"$recipe" --will-cite || die "the second start ended with exit code $?"
awk -F '\t' 'NR > 1 { last[$1] = $7 ":" $8 } END { for (seq in last) print last[seq] }' shards.log | sort | uniq -c
judge

# The retry rule, by a program that ends as it is told: shard 3 twice with 75, shard 5 with 1.
mkdir "$scratch/rule" "$scratch/stand-in" && cd "$scratch/rule" || exit 1
cat >"$scratch/stand-in/pagestack-convert" <<'END'
#!/bin/sh
case $5 in
3/16) echo >>tries3; [ "$(wc -l <tries3)" -gt 2 ] || exit 75 ;;
5/16) echo >>tries5; exit 1 ;;
esac
END
chmod +x "$scratch/stand-in/pagestack-convert"
PATH=$scratch/stand-in:$PATH "$recipe" --will-cite 2>/dev/null && die "a shard that failed for good did not show"
[ "$(wc -l <tries3)" = 3 ] || die "exit code 75: $(wc -l <tries3) tries instead of three"
echo "parallel: exit code 75 was tried again, twice"
