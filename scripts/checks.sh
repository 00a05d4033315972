# What ./test --all runs beyond ./test, which sources it.
# shellcheck shell=bash disable=SC2154

# check TITLE COMMAND...: counts as one test. Exit 77 says that it could not be made here.
check() {
    local title=$1
    shift
    begin "$title"
    "$@" </dev/null 9>&-
    case $? in
    0) passed=$((passed + 1)) ;;
    77) echo "1 skipped" ;;
    *)
        echo "The check of $title failed."
        failed=$((failed + 1))
        ;;
    esac
}

# The tests that use several threads, under the thread sanitizer. Nothing else is built for it.
check_threads() {
    local names
    # The names of these tests are those of their programs.
    names=$(ctest --test-dir "$root/build/$sanitized" --show-only --label-regex '^threads$' 2>/dev/null |
        sed -n 's/^ *Test *#[0-9]*: //p')
    [ -n "$names" ] || return 0
    # shellcheck disable=SC2086
    build tsan $names && run_tests tsan tsan --label-regex '^threads$'
}

# Where the commits since the last full run are not known, the newest ones stand for them.
is_new() { ! (cd "$root" && git rev-parse -q --verify HEAD~30 >/dev/null && git diff --quiet HEAD~30 -- "$@"); }

# All targets at a time: a minute when their code is new, some seconds when it had its minute before.
check_fuzz() {
    local seconds=10
    is_new engine/files engine/image engine/settings engine/support tests/fuzz && seconds=60
    FUZZ_JOBS=3 "$root/tests/fuzz/run.sh" "$seconds" readPages writePages readSettings
}

run_checks() {
    check_threads
    check "clang-tidy" "$root/scripts/check-tidy.py" "$root/build/release"
    check "cppcheck" "$root/scripts/check-cppcheck.sh"
    check "fuzz targets" check_fuzz
}
