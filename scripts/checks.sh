# What ./test --all runs beyond ./test, which sources it.
# shellcheck shell=bash disable=SC2154

# check TITLE COMMAND...: counts as one test. Exit 77 says that it could not be made here.
check() {
    local title=$1
    shift
    printf '== %s\n' "$title"
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
    names=$(ctest --test-dir "$root/build/asan" --show-only --label-regex '^threads$' 2>/dev/null |
        sed -n 's/^ *Test *#[0-9]*: //p')
    [ -n "$names" ] || return 0
    # shellcheck disable=SC2086
    build tsan $names && run_tests tsan tsan --label-regex '^threads$'
}

check_coverage() {
    build coverage || return 0
    # Counters add up from run to run.
    find "$root/build/coverage" -name '*.gcda' -delete
    # The corpus has limits of time, which this build is too slow for.
    run_tests coverage coverage --label-exclude lint --exclude-regex '^corpus$'
    check "coverage" "$root/scripts/check-coverage.sh" "$root/build/coverage"
}

run_checks() {
    # A tool that cannot be installed is missed by its check.
    ensure_packages checks
    check_threads
    check "clang-tidy" "$root/scripts/check-tidy.py" "$root/build/release"
    check "cppcheck" "$root/scripts/check-cppcheck.sh"
    check_coverage
    check "fuzz targets" env FUZZ_JOBS="$cores" "$root/tests/fuzz/run.sh" 60
}
