#!/bin/bash
# Runs a plan with GNU parallel, sixteen shards, as many at a time as there are processors:
#
#     pagestack-convert plan -r -o out -f png scans > plan.jsonl
#     bash parallel.sh
#     pagestack-convert merge-logs --plan plan.jsonl state-*.jsonl --verify
#
# Start it where the plan lies. Started again, it does what is not done yet. With --sshloginfile HOSTS --workdir . it
# uses several machines that share the folder; its arguments are those of parallel.
set -u
shards=16
for attempt in 1 2 3 4; do
    parallel --joblog shards.log --resume-failed --termseq TERM,60000,KILL,25 "$@" \
        pagestack-convert run --plan plan.jsonl --shard "{}/$shards" --resume "state-{}.jsonl" \
        --jobs 1 --no-log --quiet ::: $(seq 0 $((shards - 1)))
    code=$?
    # Another attempt is made for what ended with 75 (a full disk, an I/O error, want of memory) or by a signal, not
    # for what failed for good.
    again=$(awk -F '\t' 'NR > 1 { code[$1] = $7; by[$1] = $8 }
        END { for (seq in code) if (code[seq] == 75 || by[seq] != 0) shards++; print shards + 0 }' shards.log)
    [ "$again" != 0 ] || break
    echo "attempt $attempt: $again of $shards shards are to be tried again" >&2
    sleep "${RETRY_AFTER:-60}"
done
exit "$code"
