#!/usr/bin/env bash
# Builds the fuzzers with Clang and runs each of them for a while from seeds that it makes.
#
#   tests/fuzz/run.sh SECONDS [TARGET...]    all targets when none is named
#
# Exits with 1 when there are findings and with 77 when there is no Clang with libFuzzer. README.md
# tells the rest; FUZZ_BUILD is another build folder.
set -u
root=$(cd -- "$(dirname -- "${BASH_SOURCE[0]}")/../.." && pwd) || exit 1
export build=${FUZZ_BUILD:-$root/build/fuzz} seconds=${1-}
corpus=${PAGESTACK_CORPUS:-$root/../shared/corpus}
[[ $seconds =~ ^[0-9]+$ ]] || { echo "usage: tests/fuzz/run.sh SECONDS [TARGET...]" >&2 && exit 2; }
shift
[ $# -gt 0 ] || set -- readPages writePages readSettings

scratch=/dev/shm
[ -w "$scratch" ] || scratch=${TMPDIR:-/tmp}
scratch=$(mktemp -d "$scratch/pagestack-fuzz-XXXXXX") || exit 1
trap 'rm -rf "$scratch"' EXIT

probe=$scratch/probe
printf 'extern "C" int LLVMFuzzerTestOneInput(const char*, unsigned long) { return 0; }' |
    clang++ -fsanitize=fuzzer,address -x c++ - -o "$probe" 2>/dev/null || {
    echo "There is no Clang with libFuzzer here (Debian: clang, libclang-rt-14-dev)."
    exit 77
}
# The leak check stops every process by ptrace, which some containers forbid.
export leaks=1
"$probe" -runs=1 >/dev/null 2>&1 || leaks=0

(cd "$root" && cmake --preset fuzz -B "$build" && cmake --build "$build" --target pagestack_fuzzers) \
    >"$scratch/build.log" 2>&1 || {
    tail -n 40 "$scratch/build.log"
    exit 1
}

make_seeds() {
    local file name size part ways=0
    rm -rf "$build/seeds"
    mkdir -p "$build/seeds"
    cp -r "$root"/tests/data/fuzz/* "$build/seeds/"
    while IFS= read -r file; do
        name=$(basename -- "$(dirname -- "$file")")-$(basename -- "$file")
        size=$(($(wc -c <"$file")))
        for part in "$size" $((size * 2 / 3)); do
            head -c "$part" -- "$file" >"$build/seeds/readPages/$name-$part"
            # One way to write after the other, see writePages in FuzzTargets.h.
            { printf '%b' "\\0$((ways % 7))\\0$((ways / 7 % 5))\\07" && head -c "$part" -- "$file"; } \
                >"$build/seeds/writePages/$name-$part"
            ways=$((ways + 1))
        done
    done <<<"$(find "$root/samples" "$corpus" -name '*.tif*' -size -64k 2>/dev/null | sort)"
    printf '%%PDF-1.4\n1 0 obj <</Type/Catalog/Pages 2 0 R>> endobj\n2 0 obj <</Type/Pages/Kids[3 0 R]
/Count 1>> endobj\n3 0 obj <</Type/Page/Parent 2 0 R/MediaBox[0 0 9 9]>> endobj\nxref\n0 0
trailer <</Root 1 0 R/Size 4>>\nstartxref\n0\n%%%%EOF\n' >"$build/seeds/readPages/one-page.pdf"
    printf '\0[SETTINGS]\noutputType=2\nisSetCurrentAsDefaultOutputFolderPath=true
outputFolderPath="/a, \\"b\\\\;\\x263a"\nseparator=@Invalid()\njpegQuality=@@7\n' \
        >"$build/seeds/readSettings/ini"
    printf '\1{"SETTINGS": {"outputType": 2, "isSetCurrentAsDefaultOutputFolderPath": true,
"outputFolderPath": "/a\\u263a", "separator": null, "jpegQuality": 1e9}, "ON": [true, {}]}' \
        >"$build/seeds/readSettings/store"
}

# Some tags of TIFF files in both byte orders, and the names and notations of the settings file.
make_dictionaries() {
    local number
    for number in {256..259} 262 266 273 274 {277..279} 284 317 {320..325} 338 339 347 {529..532}; do
        printf '"\\x%02x\\x%02x"\n"\\x%02x\\x%02x"\n' $((number % 256)) $((number / 256)) \
            $((number / 256)) $((number % 256))
    done >"$build/tiff.dict"
    sed -n 's/.*Q_PROPERTY([a-zA-Z]* \([a-zA-Z]*\).*/"\1"/p' "$root/engine/settings/Settings.h" \
        >"$build/settings.dict"
    printf '"%s"\n' SETTINGS '@Invalid()' @@ null >>"$build/settings.dict"
}

make_seeds
make_dictionaries
export TMPDIR=$scratch
# Freed memory is kept back for a while to find its users; a little of it is enough.
export ASAN_OPTIONS=quarantine_size_mb=16:allocator_may_return_null=1:detect_stack_use_after_return=1:${ASAN_OPTIONS-}
export UBSAN_OPTIONS=print_stacktrace=1:${UBSAN_OPTIONS-}
# fuzz TARGET: fails when it has findings.
fuzz() {
    local target=$1 dictionary=$build/tiff.dict status files
    mkdir -p "$build/corpus/$target" "$build/findings/$target"
    [ "$target" != readSettings ] || dictionary=$build/settings.dict
    # shellcheck disable=SC2086
    "$build/fuzzers/fuzz_$target" -max_total_time="$seconds" -seed=1 -rss_limit_mb=500 -timeout=60 \
        -report_slow_units=60 \
        -detect_leaks=$leaks -print_final_stats=1 -dict="$dictionary" \
        -artifact_prefix="$build/findings/$target/" ${FUZZ_OPTIONS-} \
        "$build/corpus/$target" "$build/seeds/$target" >"$build/$target.log" 2>&1
    status=$?
    files=$(find "$build/findings/$target" -type f | wc -l)
    echo "$target: findings: $files, $(grep -o 'cov: [0-9]*' "$build/$target.log" | tail -n 1)," \
        "$(grep -E 'executed_units|peak_rss' "$build/$target.log" | tr -s '\n ' ' ')"
    [ "$status" = 0 ] && [ "$files" = 0 ] && return
    grep -E 'ERROR:|SUMMARY:|runtime error|what\(\)|Test unit written' "$build/$target.log"
    return 1
}

export -f fuzz
printf '%s\n' "$@" | xargs -P "${FUZZ_JOBS:-1}" -I % bash -c 'fuzz %' || exit 1
