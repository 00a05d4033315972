#!/usr/bin/env bash
# The window program on a display of its own, driven by keys from its command line to its end:
# journey.sh PROGRAM SAMPLES. Exit 77: a tool is not installed.
set -euo pipefail
program=$(realpath "$1")
samples=$(realpath "$2")
for tool in Xvfb xdotool; do
    command -v "$tool" > /dev/null || { echo "skipped: $tool is not installed"; exit 77; }
done
home=$(mktemp -d)
server='' bus='' window_program=''
finish() {
    kill $window_program $server $bus 2> /dev/null || true
    wait
    rm -rf "$home"
}
trap finish EXIT

fail() {
    echo "journey: $*" >&2
    cat "$home/program.log" >&2
    exit 1
}
# until_true COMMAND...: waits for the command to succeed.
until_true() {
    for _ in $(seq 300); do
        ! "$@" > /dev/null 2>&1 || return 0
        sleep 0.1
    done
    fail "in vain: $*"
}
windows() { # TITLE
    xdotool search --onlyvisible --name "^$1\$" 2> /dev/null || true
}
has_windows() { # TITLE NUMBER
    [ "$(windows "$1" | wc -l)" -eq "$2" ]
}
# press TITLE KEY: in the newest window of the title; there is no window manager to choose one.
press() {
    xdotool windowfocus "$(windows "$1" | tail -1)"
    xdotool key "$2"
}
asks() { # whether to begin; not before the files are loaded
    has_windows Pagestack 2 || press Pagestack ctrl+Return
    sleep 0.2
    has_windows Pagestack 2
}
images() { # FOLDER
    find "$1" -name '*.jpg' | wc -l
}
has_some() {
    [ "$(images "$home/many")" -ge 5 ]
}
has_ended() {
    ! kill -0 "$window_program"
}
start() {
    "$program" "$@" 2>> "$home/program.log" &
    window_program=$!
    until_true has_windows Pagestack 1
}
ends_with() { # CODE
    local code=0
    until_true has_ended
    wait "$window_program" || code=$?
    window_program=''
    [ "$code" -eq "$1" ] || fail "the program ended with $code instead of $1"
}

export HOME=$home XDG_CONFIG_HOME=$home/config XDG_DATA_HOME=$home/data XDG_RUNTIME_DIR=$home/run
export QT_QPA_PLATFORM=xcb LC_ALL=C.UTF-8
unset WAYLAND_DISPLAY DBUS_SESSION_BUS_ADDRESS
mkdir -m 700 "$home"/{samples,many,data,run}
cp "$samples"/*.tif "$home/samples"
cp "$samples/text-page.tif" "$home/first.tif"
copies=800 # enough for a run that can be ended in its midst
for copy in $(seq $copies); do
    ln "$home/first.tif" "$home/many/$copy.tif"
done
mkfifo "$home/display"
Xvfb -displayfd 3 -screen 0 1280x800x24 -noreset -nolisten tcp 3> "$home/display" 2> /dev/null &
server=$!
read -r number < "$home/display"
export DISPLAY=:$number

# A second start hands its files to the first, and the window is there once.
if command -v dbus-daemon > /dev/null; then
    exec 4< <(exec dbus-daemon --session --nofork --print-address 2> /dev/null)
    bus=$!
    read -r DBUS_SESSION_BUS_ADDRESS <&4
    export DBUS_SESSION_BUS_ADDRESS
    start "$home/first.tif"
    (cd "$home" && timeout 20 "$program" samples) || fail "a second start did not hand over its files"
    has_windows Pagestack 1 || fail "a second start opened a window"
    sleep 1 # what comes together is loaded together
else
    start "$home/first.tif" "$home/samples"
fi
until_true asks
press Pagestack Return
until_true grep -rq '</Log>' "$home/data"
[ -f "$home/first1.jpg" ] && [ "$(images "$home/samples")" -eq 7 ] || fail "not every image is there"
until_true has_windows Finished 1
press Finished Return
until_true has_windows Finished 0
press Pagestack ctrl+q
ends_with 0

start "$home/many"
until_true asks
press Pagestack Return
until_true has_some
kill -TERM "$window_program"
ends_with 143
[ "$(find "$home/data" -name '*.log' | wc -l)" -eq 2 ] || fail "a run has no log"
grep -q WINDOW "$home/config/Corvanta/Pagestack1.json" || fail "the settings were not saved"
made=$(images "$home/many")
[ "$made" -lt "$copies" ] || fail "the run was not ended"
[ -z "$(find "$home" -name '.pagestack*' -o -name '*.jpg' -size 0)" ] || fail "something torn is left"
echo "8 and $made images"
