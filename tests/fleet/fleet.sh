# Shared by the checks of engines, which source it: a scratch folder, sources, and what has to hold at the end.
# Expects the name of the check in $name. Functions end the script after having said why.
# shellcheck shell=bash disable=SC2154,SC2034

root=$(cd -- "$(dirname -- "${BASH_SOURCE[0]}")/../.." && pwd)

die() {
    echo "$name: $*" >&2
    exit 1
}

# Packages of Debian that this check alone needs.
need_packages() {
    local missing
    # shellcheck source=scripts/setup.sh disable=SC1091
    . "$root/scripts/setup.sh"
    missing=$(missing_packages "$@")
    [ -n "$missing" ] || return 0
    [ "$(id -u)" = 0 ] || die "needs these packages: $missing"
    # shellcheck disable=SC2086
    DEBIAN_FRONTEND=noninteractive apt-get install -qq -y --no-install-recommends $missing >/dev/null </dev/null ||
        die "could not install $missing"
}

# The program under test becomes the first of its name in PATH.
find_program() {
    local folder
    for folder in "${PAGESTACK_BIN-}" "$root/build/cli/bin" "$root/build/release/bin"; do
        if [ -x "$folder/pagestack-convert" ]; then
            PATH=$folder:$PATH
            return
        fi
    done
    die "build pagestack-convert first: cmake --preset cli && cmake --build --preset cli"
}

# Everything of the check lies in $scratch, which goes when all that it has started has ended.
make_scratch() {
    scratch=$(mktemp -d "${TMPDIR:-/tmp}/pagestack-$name-XXXXXX") || exit 1
    export HOME=$scratch/home LC_ALL=C.UTF-8
    mkdir -p "$scratch/home" "$scratch/ground"
}

# make_sources COUNT: COUNT sources in two folders of the scratch folder, of one to nine pages each, and their plan.
make_sources() {
    local number
    cd "$scratch/ground" || exit 1
    mkdir -p seeds in/first in/second
    /usr/bin/python3 -B "$root/tests/fleet/make_seeds.py" seeds || die "no sources could be made"
    set -- "$1" seeds/*.tif
    for ((number = 0; number < $1; number++)); do
        cp -- "${@:2 + number % ($# - 1):1}" "in/$([ $((number % 2)) = 0 ] && echo first || echo second)/scan$number.tif"
    done
    pagestack-convert plan -r -f png --verify --mirror -o out in >plan.jsonl || die "no plan"
    mkdir -p out
}

# How many files have been written.
written() { find out -type f ! -name '.*' | wc -l; }

# is_written SHARE: that many per cent of all targets are there.
is_written() { [ "$(written)" -ge "$(($(field targets plan.jsonl) * $1 / 100))" ]; }

# field NAME FILE: the number NAME of the last line of a file of JSON lines.
field() { tail -n 1 "$2" | sed -n "s/.*\"$1\":\([0-9]*\).*/\1/p"; }

# What has to hold at the end: every line of the plan was done exactly once, every output is what its state says,
# and nothing else is there.
judge() {
    local targets merged
    targets=$(field targets plan.jsonl)
    merged=$(pagestack-convert merge-logs --plan plan.jsonl state-*.jsonl --verify --json) ||
        die "merge-logs ended with exit code $?: $merged"
    printf '%s\n' "$merged" | tail -n 1
    [ "$(written)" = "$targets" ] || die "$(written) files instead of $targets"
    [ -z "$(find out -name '.*' -type f)" ] || die "left behind: $(find out -name '.*' -type f)"
    echo "$name: all $targets outputs are there, each done once"
}

# Waits at most $1 seconds until the command $2... succeeds.
wait_until() {
    local limit=$((SECONDS + $1))
    shift
    until "$@"; do
        [ "$SECONDS" -lt "$limit" ] || return 1
        sleep 0.2
    done
}
