# Shared by ./run and ./test, which source it: installing packages, configuring and building.
# Works with the bash 3.2 of macOS. Expects the root of the repository in $root.
# Functions return 1 after having said why on standard error.
# shellcheck shell=bash disable=SC2154,SC2024

say() { printf '%s\n' "$*" >&2; }

# Holds the lock named $1 until fd 9 is closed: two scripts started at once take turns.
take_lock() {
    mkdir -p "$root/build" || return 1
    exec 9>"$root/build/.$1.lock" || return 1
    if command -v flock >/dev/null; then
        flock -n 9 || { say "Waiting until another start has ended its work here" && flock 9; }
    else
        perl -MFcntl=:flock -e 'open(my $lock, ">&=", 9) or die "lock: $!\n";
            flock($lock, LOCK_EX) or die "lock: $!\n"'
    fi
}

# The package names of the lists $@ (such as "build" and "test"), one a line.
packages_in() {
    local list
    for list in "$@"; do
        sed -e 's/#.*//' -e 's/[[:space:]]//g' -e '/^$/d' "$root/scripts/packages-$list.txt"
    done
}

# What of the packages $@ dpkg does not know as installed.
missing_packages() {
    dpkg-query -W -f '${db:Status-Status} ${Package}\n' "$@" 2>/dev/null |
        awk 'BEGIN { for (i = 1; i < ARGC; i++) wanted[i] = ARGV[i]; count = ARGC; ARGC = 1 }
             $1 == "installed" { have[$2] = 1 }
             END { for (i = 1; i < count; i++) if (!(wanted[i] in have)) print wanted[i] }' "$@"
}

# The missing tools or libraries, for systems that do not use dpkg. Libraries are looked for once there
# are the tools to find them with.
missing_tools() {
    local tool module pdf missing=no
    for tool in c++ cmake ninja pkg-config; do
        command -v "$tool" >/dev/null || { echo "$tool" && missing=yes; }
    done
    [ "$missing" = no ] || return 0
    case " $* " in *" window "* | *" test "*) pdf=libqpdf ;; esac
    for module in libtiff-4 libjpeg libdeflate libpng nettle zlib lcms2 ${pdf-}; do
        pkg-config --exists "$module" 2>/dev/null || echo "$module"
    done
    command -v qmake6 >/dev/null || command -v qtpaths6 >/dev/null ||
        pkg-config --exists Qt6Core 2>/dev/null || echo "Qt 6 (qtbase)"
    printf '#include <stdio.h>\n#include <gif_lib.h>\n' |
        c++ -I/opt/homebrew/include -I/usr/local/include -E -x c - >/dev/null 2>&1 || echo "giflib"
    case " $* " in *" test "*)
        for tool in python3 clang-format tiffinfo; do
            command -v "$tool" >/dev/null || echo "$tool"
        done
        ;;
    esac
}

# Says why ($1) the packages $2, one a line, are missing still.
complain_missing() {
    say "These packages are missing and cannot be installed from here ($1):"
    printf '%s\n' "$2" | sed 's/^/    /' >&2
    command -v apt-get >/dev/null || return 0
    say "Whoever may install packages here can do it by"
    # shellcheck disable=SC2086
    say "    apt-get install --no-install-recommends" $2
}

# Runs $@ as root, quietly; fd 9 stays with us so that no service started by a package keeps the lock.
as_root() {
    local log=$root/build/packages.log
    if [ "$(id -u)" = 0 ]; then
        "$@" >>"$log" 2>&1 </dev/null 9>&-
    elif [ -t 0 ]; then
        sudo "$@" >>"$log" 9>&-
    else
        sudo -n "$@" >>"$log" 2>&1 </dev/null 9>&-
    fi
}

apt_install() {
    local ticker status
    # Hundreds of packages take minutes on a bare system.
    (while sleep 20 >/dev/null 2>&1 && kill -0 $$ 2>/dev/null; do
        say "  still installing, after $SECONDS s"
    done) 9>&- >/dev/null &
    ticker=$!
    as_root env DEBIAN_FRONTEND=noninteractive apt-get install -y --no-install-recommends \
        -o DPkg::Lock::Timeout=300 "$@"
    status=$?
    kill "$ticker" 2>/dev/null
    wait "$ticker" 2>/dev/null
    return "$status"
}

# Sees to it that every package of the lists $@ is installed.
ensure_packages() {
    local missing
    if ! command -v dpkg-query >/dev/null; then
        # Only before the first build, since asking every tool takes long.
        [ -e "$root/build/.tools-$*" ] && return 0
        missing=$(missing_tools "$@")
        if [ -n "$missing" ]; then
            complain_missing "no apt on this system" "$missing"
            return 1
        fi
        mkdir -p "$root/build" && : >"$root/build/.tools-$*"
        return 0
    fi
    # Package names have no spaces and are split into words on purpose.
    # shellcheck disable=SC2046
    [ -z "$(missing_packages $(packages_in "$@"))" ] || (take_lock packages && install_missing "$@")
}

# Installs what is missing of the lists $@.
# shellcheck disable=SC2046,SC2086
install_missing() {
    local missing
    missing=$(missing_packages $(packages_in "$@"))
    [ -z "$missing" ] && return 0
    if ! command -v apt-get >/dev/null; then
        complain_missing "no apt-get" "$missing"
        return 1
    fi
    if [ "$(id -u)" != 0 ]; then
        if ! command -v sudo >/dev/null; then
            complain_missing "neither root nor sudo" "$missing"
            return 1
        fi
        if [ ! -t 0 ] && ! sudo -n true 2>/dev/null; then
            complain_missing "sudo asks for a password" "$missing"
            return 1
        fi
    fi
    say "Installing" $missing
    : >"$root/build/packages.log"
    # The lists of packages are fetched only where the ones at hand do not do.
    apt_install $missing || { as_root apt-get update && apt_install $missing; } ||
        tail -n 20 "$root/build/packages.log" >&2
    missing=$(missing_packages $missing)
    if [ -n "$missing" ]; then
        complain_missing "apt-get failed, see build/packages.log" "$missing"
        return 1
    fi
    # A new package may bring what the last configuration did without.
    rm -f "$root"/build/*/.configured
}

# Warnings are errors where CI says so.
werror() {
    case ${CI:-} in '' | 0 | false | no) echo OFF ;; *) echo ON ;; esac
}

# Copies what ninja says, and shows on standard error how far it is: in one line of a terminal, elsewhere in
# a line now and then.
with_steps() {
    local line step last=$SECONDS shown=no
    while IFS= read -r line; do
        printf '%s\n' "$line"
        case $line in
        \[[0-9]*/[0-9]*\]*)
            step=${line%%]*}
            step=${step#[}
            if [ -t 2 ]; then
                printf '\r  %s of %s ' "${step%/*}" "${step#*/}" >&2
                shown=yes
            elif [ $((SECONDS - last)) -ge 20 ]; then
                say "  ${step%/*} of ${step#*/}"
                last=$SECONDS
            fi
            ;;
        esac
    done
    [ "$shown" = no ] || printf '\r                    \r' >&2
}

# What a configuration is made of; another one is configured anew.
configuration() { printf '%s -DPAGESTACK_WERROR=%s\n' "$root" "$(werror)"; }

# is_built PRESET TARGET...: there is nothing to be done.
is_built() {
    local folder=$root/build/$1
    [ "$(cat "$folder/.configured" 2>/dev/null)" = "$(configuration)" ] &&
        [ ! "$root/CMakePresets.json" -nt "$folder/.configured" ] &&
        ninja -C "$folder" -n "${@:2}" 2>/dev/null | grep -q 'no work to do'
}

# build_preset PRESET [TARGET...]: configures where needed and builds. Says nothing when all is well,
# shows the log of the step that failed.
build_preset() {
    local preset=$1 folder=$root/build/$1 log
    shift
    mkdir -p "$folder" || return 1
    log=$folder/build.log
    # ninja itself configures again when a CMakeLists.txt changes, but knows nothing of presets.
    if [ "$(cat "$folder/.configured" 2>/dev/null)" != "$(configuration)" ] ||
        [ "$root/CMakePresets.json" -nt "$folder/.configured" ]; then
        say "Building Pagestack ($preset), which takes a few minutes the first time"
        rm -f "$folder/.configured"
        if ! (cd "$root" && cmake --preset "$preset" --fresh "-DPAGESTACK_WERROR=$(werror)") \
            >"$log" 2>&1 </dev/null 9>&-; then
            cat "$log" >&2
            say "Configuring failed ($preset)."
            return 1
        fi
        configuration >"$folder/.configured"
    fi
    cmake --build "$folder" --target "${@:-all}" -- -k 0 2>&1 </dev/null 9>&- | with_steps >"$log"
    if [ "${PIPESTATUS[0]}" != 0 ]; then
        grep -v '^\[[0-9]*/[0-9]*\] ' "$log" >&2
        say "Building failed ($preset)."
        return 1
    fi
}
